"""DSSP letters of one chain: by the program mkdssp where it is installed, else by the rules of W. Kabsch and
C. Sander, Biopolymers 22, 2577-2637 (1983), with pi helices before alpha and PPII stretches (P) as in DSSP
4."""

import os
import shutil
import subprocess
import tempfile

import gemmi
import numpy as np

from data.pairs.errors import InputError

LARGEST_CA_DISTANCE = 9.0  # A, beyond it no hydrogen bond is looked for
COUPLING = -27.888  # kcal/mol A, charges 0.42 and 0.20 e
BOND_ENERGY = -0.5  # kcal/mol
LONGEST_PEPTIDE_BOND = 2.5  # A, as DSSP takes it
BEND = 70.0  # degrees
PPII_PHI, PPII_PSI, PPII_WIDTH = -75.0, 145.0, 29.0


def assign(chain, method="auto"):
    """(letters per residue, what made them); method auto, mkdssp or own."""
    program = shutil.which("mkdssp")
    if method == "mkdssp" and program is None:
        raise InputError("mkdssp is not installed (Debian: dssp)")
    if method == "own" or program is None:
        return kabsch_sander(chain), "own rules"
    return run_mkdssp(program, chain), "mkdssp"


# ---- mkdssp ------------------------------------------------------------------------------------------------


def write_pdb(path, chain):
    """The chain with residues numbered from 1, unknown types as alanine (DSSP reads the main chain only)."""
    structure, model, new = gemmi.Structure(), gemmi.Model("1"), gemmi.Chain("A")
    names = []
    for number, residue in enumerate(chain.residues, 1):
        item = gemmi.Residue()
        item.name = gemmi.expand_protein_one_letter(residue.code.upper().replace("X", "A"))
        item.seqid, item.subchain, item.label_seq = gemmi.SeqId(str(number)), "Axp", number
        item.entity_type = gemmi.EntityType.Polymer
        for name in ("N", "CA", "C", "O", "CB"):
            if name in residue.atoms:
                atom = gemmi.Atom()
                atom.name, atom.pos, atom.element = name, residue.atoms[name], gemmi.Element(name[0])
                atom.occ = 1.0
                item.add_atom(atom)
        new.add_residue(item)
        names.append(item.name)
    model.add_chain(new)
    structure.add_model(model)
    entity = gemmi.Entity("1")
    entity.subchains, entity.full_sequence = ["Axp"], names
    entity.entity_type, entity.polymer_type = gemmi.EntityType.Polymer, gemmi.PolymerType.PeptideL
    structure.entities.append(entity)
    structure.cell = gemmi.UnitCell(1, 1, 1, 90, 90, 90)
    structure.write_pdb(path)
    with open(path) as handle:
        lines = [line for line in handle if not line.startswith("HEADER")]
    with open(path, "w") as handle:  # mkdssp knows a PDB file by its complete first line
        handle.write("HEADER    PROTEIN                                 01-JAN-00   0XXX              \n")
        handle.writelines(lines)


def run_mkdssp(program, chain):
    with tempfile.TemporaryDirectory() as folder:
        source, target = os.path.join(folder, "in.pdb"), os.path.join(folder, "out.dssp")
        write_pdb(source, chain)
        result = subprocess.run(
            [program, "--output-format", "dssp", source, target],
            capture_output=True,
            text=True,
            errors="replace",
            check=False,
        )
        letters = ["-"] * len(chain.residues)
        seen = 0
        if os.path.exists(target):
            with open(target) as handle:
                lines = handle.read().split("  #  RESIDUE AA")[-1].splitlines()[1:]
            for line in lines:
                if line[5:10].strip():
                    letters[int(line[5:10]) - 1] = line[16] if line[16] != " " else "-"
                    seen += 1
    if seen == 0:
        raise InputError(
            f"chain {chain.name}: mkdssp assigned nothing: {result.stderr.strip()[-200:]}; try --dssp own"
        )
    return "".join(letters)


# ---- own rules ---------------------------------------------------------------------------------------------


def hydrogen_bonds(xyz, donors, joined):
    """bonds[i, j]: the N-H of i binds the C=O of j, among the two best of i. xyz: atom name -> n x 3."""
    count = len(donors)
    hydrogen = xyz["N"].copy()
    direction = xyz["C"][:-1] - xyz["O"][:-1]
    hydrogen[1:] += direction / np.linalg.norm(direction, axis=1, keepdims=True)
    donors = donors & np.concatenate([[False], joined])

    def inverse(first, second):
        distance = np.linalg.norm(first[:, None] - second[None], axis=2)
        return 1.0 / np.maximum(distance, 0.5)

    energy = -COUPLING * (
        inverse(hydrogen, xyz["C"])
        - inverse(hydrogen, xyz["O"])
        + inverse(xyz["N"], xyz["O"])
        - inverse(xyz["N"], xyz["C"])
    )
    near = np.linalg.norm(xyz["CA"][:, None] - xyz["CA"][None], axis=2) <= LARGEST_CA_DISTANCE
    index = np.arange(count)
    own = (index[:, None] == index[None]) | (index[:, None] == index[None] + 1)
    energy = np.where(near & ~own & donors[:, None], np.round(energy, 3), 0.0)
    bonds = np.zeros((count, count), bool)
    for i in range(count):
        best = np.argsort(energy[i])[:2]
        bonds[i, best] = energy[i, best] < BOND_ENERGY
    return bonds


def find_ladders(bonds, together):
    """Ladders [parallel, residues of one strand, residues of the other], bulges joined. together(i, j): no
    break."""
    count = len(bonds)
    ladders = []
    for i in range(1, count - 1):
        for j in range(i + 3, count - 1):
            if not (together(i - 1, i + 1) and together(j - 1, j + 1)):
                continue
            parallel = (bonds[i + 1, j] and bonds[j, i - 1]) or (bonds[j + 1, i] and bonds[i, j - 1])
            if not parallel and not (
                (bonds[i + 1, j - 1] and bonds[j + 1, i - 1]) or (bonds[j, i] and bonds[i, j])
            ):
                continue
            for ladder in ladders:
                if (
                    ladder[0] == parallel
                    and ladder[1][-1] == i - 1
                    and ladder[2][-1] == j - (1 if parallel else -1)
                ):
                    ladder[1].append(i)
                    ladder[2].append(j)
                    break
            else:
                ladders.append([parallel, [i], [j]])
    ladders.sort(key=lambda ladder: ladder[1][0])
    return join_bulges([[p, i, sorted(j)] for p, i, j in ladders], together)


def join_bulges(ladders, together):
    """Ladders of one kind with at most one extra residue on one strand and four on the other become one."""
    k = 0
    while k < len(ladders):
        parallel, i, j = ladders[k]
        for m in range(k + 1, len(ladders)):
            other, i2, j2 = ladders[m]
            if other != parallel or i2[0] - i[-1] >= 6 or (i[-1] >= i2[0] and i[0] <= i2[-1]):
                continue
            if not (
                together(min(i[0], i2[0]), max(i[-1], i2[-1]))
                and together(min(j[0], j2[0]), max(j[-1], j2[-1]))
            ):
                continue
            step = j2[0] - j[-1] if parallel else j[0] - j2[-1]
            if 0 <= step and ((step < 6 and i2[0] - i[-1] < 3) or step < 3):
                ladders[k] = [parallel, i + i2, sorted(j + j2)]
                del ladders[m]
                break
        else:
            k += 1
    return ladders


def helices(letters, bonds, together):
    """Alpha, 3-10 and pi helices; returns the turns' starts by length."""
    count = len(letters)
    starts = {
        n: np.array([i + n < count and bonds[i + n, i] and together(i, i + n) for i in range(count)])
        for n in (3, 4, 5)
    }
    for n, letter, over in ((4, "H", None), (3, "G", "-G"), (5, "I", "-IH")):
        for i in range(1, count - n):
            if (
                starts[n][i]
                and starts[n][i - 1]
                and (over is None or all(x in over for x in letters[i : i + n]))
            ):
                letters[i : i + n] = letter * n
    return starts


def turns_and_bends(letters, starts, ca, together):
    count = len(letters)
    for i in range(1, count - 1):
        if letters[i] != "-":
            continue
        if any(i - k >= 0 and starts[n][i - k] for n in (3, 4, 5) for k in range(1, n)):
            letters[i] = "T"
        elif 2 <= i < count - 2 and together(i - 2, i + 2):
            back, ahead = ca[i] - ca[i - 2], ca[i + 2] - ca[i]
            cosine = np.dot(back, ahead) / np.linalg.norm(back) / np.linalg.norm(ahead)
            if np.degrees(np.arccos(np.clip(cosine, -1.0, 1.0))) > BEND:
                letters[i] = "S"


def ppii(letters, residues):
    """Stretches of three or more residues with PPII torsions, where nothing else is assigned."""
    inside = [
        residue.phi is not None
        and residue.psi is not None
        and abs(residue.phi - PPII_PHI) <= PPII_WIDTH
        and abs(residue.psi - PPII_PSI) <= PPII_WIDTH
        for residue in residues
    ]
    for i in range(1, len(letters) - 1):
        if inside[i - 1] and inside[i] and inside[i + 1]:
            for k in (i - 1, i, i + 1):
                letters[k] = "P" if letters[k] == "-" else letters[k]


def kabsch_sander(chain):
    """One letter per residue. Residues without O bind nothing."""
    residues = chain.residues
    far = gemmi.Position(1e4, 1e4, 1e4)
    xyz = {
        name: np.array([residue.atoms.get(name, far).tolist() for residue in residues])
        for name in ("N", "CA", "C", "O")
    }
    joined = np.linalg.norm(xyz["C"][:-1] - xyz["N"][1:], axis=1) <= LONGEST_PEPTIDE_BOND
    piece = np.concatenate([[0], np.cumsum(~joined)])

    def together(first, last):
        return piece[first] == piece[last]

    bonds = hydrogen_bonds(xyz, np.array([residue.code != "P" for residue in residues]), joined)
    letters = ["-"] * len(residues)
    for _, i, j in find_ladders(bonds, together):
        for strand in (i, j):
            for k in range(strand[0], strand[-1] + 1):
                letters[k] = "E" if len(i) > 1 or letters[k] == "E" else "B"
    starts = helices(letters, bonds, together)
    turns_and_bends(letters, starts, xyz["CA"], together)
    ppii(letters, residues)
    return "".join(letters)
