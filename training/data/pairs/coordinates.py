"""One protein chain from a PDB or mmCIF file (also gzipped), read by gemmi: atoms, torsions, flags."""

import math
from dataclasses import dataclass, field

import gemmi

from data.pairs.errors import InputError

BREAK = 1.9  # A: C-N above this is no peptide bond
DISULFIDE = 2.5  # A between SG atoms
# Main-chain geometry beyond these limits (A, degrees) gives no meaningful angles.
N_CA, CA_C, N_CA_C = (1.29, 1.63), (1.37, 1.68), (93.0, 131.0)
SHORTEST_CHAIN = 10
OLD_PDB_WIDTH = 72
RINGS = {
    "F": "CG CD1 CE1 CZ CE2 CD2",
    "Y": "CG CD1 CE1 CZ CE2 CD2",
    "H": "CG ND1 CE1 NE2 CD2",
    "W": "CG CD1 NE1 CE2 CD2 CE3 CZ3 CH2 CZ2",
}
GAMMA = {"V": "CG1", "I": "CG1", "T": "OG1", "S": "OG", "C": "SG"}
NO_CHI1, NO_CHI2 = "AGX", "AGXCSTV"
DELTA = {
    "D": "OD1",
    "N": "OD1",
    "H": "ND1",
    "M": "SD",
    "F": "CD1",
    "Y": "CD1",
    "W": "CD1",
    "L": "CD1",
    "I": "CD1",
}


@dataclass
class Residue:
    """Missing angles are None; `after_break` says that no peptide bond leads here from the residue before."""

    resid: int
    ins: str
    code: str
    atoms: dict = field(default_factory=dict)  # name -> gemmi.Position
    b_factors: dict = field(default_factory=dict)
    alternate: bool = False
    after_break: bool = False
    distorted: bool = False
    phi: float = None
    psi: float = None
    omega: float = None
    chi1: float = None
    chi2: float = None

    def mean_b(self, names=None):
        values = [b for name, b in self.b_factors.items() if names is None or name in names]
        return sum(values) / len(values) if values else None

    def ring(self):
        """Ring atoms in the tables' order; empty when one is missing or the type has no ring."""
        names = RINGS.get(self.code, "").split()
        return (
            [self.atoms[name] for name in names]
            if names and all(name in self.atoms for name in names)
            else []
        )


@dataclass
class Chain:
    name: str
    residues: list
    resolution: float  # A, None when unknown
    method: str
    entry: str  # PDB code, empty when the file has none

    def codes(self):
        return "".join(residue.code for residue in self.residues)


def load(path):
    try:
        try:
            structure = gemmi.read_structure(path)
        except (RuntimeError, ValueError) as error:
            if "charge" not in str(error):
                raise
            # Before 1996 columns 73 to 80 held the entry's name and a line number.
            structure = gemmi.read_pdb(path, max_line_length=OLD_PDB_WIDTH)
    except (RuntimeError, ValueError, OSError, IndexError) as error:
        reason = str(error).removeprefix(path + ": ")
        raise InputError(f"{path}: no readable PDB or mmCIF file: {reason}") from error
    if len(structure) == 0:
        raise InputError(f"{path}: holds no atoms")
    return structure


def letter(name):
    """One-letter code, M for selenomethionine, X for other than the 20."""
    if name == "MSE":
        return "M"
    info = gemmi.find_tabulated_residue(name)
    code = info.one_letter_code if info is not None and info.is_amino_acid() else "X"
    return code if code.isupper() else "X"


def make_residue(group):
    """Residue of one number from its conformers: for every atom the best occupancy, None without N, CA and C.
    Atoms of occupancy 0 were not seen; negative ones stand for none given."""
    best = {}
    alternate = len(group) > 1
    names = {}
    for residue in group:
        for atom in residue:
            names[residue.name] = max(names.get(residue.name, 0.0), atom.occ)
    name = max(names, key=names.get) if names else ""
    for residue in group:
        for atom in residue if residue.name == name else ():
            alternate |= atom.altloc != "\0"
            if (
                atom.occ != 0.0
                and not atom.is_hydrogen()
                and (atom.name not in best or atom.occ > best[atom.name].occ)
            ):
                best[atom.name] = atom
    if not {"N", "CA", "C"} <= set(best) or best["CA"].element != gemmi.Element("C"):
        return None
    if name == "MSE" and "SE" in best:
        best["SD"] = best.pop("SE")
    number = group[0].seqid
    return Residue(
        number.num,
        number.icode.strip(),
        letter(name),
        {key: atom.pos for key, atom in best.items()},
        {key: atom.b_iso for key, atom in best.items()},
        alternate,
    )


def bonded(first, second):
    return first.atoms["C"].dist(second.atoms["N"]) <= BREAK


def polymer(chain):
    """Residues of the chain in file order. Residues of other types count when a peptide bond joins them."""
    groups = {}
    for residue in chain:
        groups.setdefault((residue.seqid.num, residue.seqid.icode), []).append(residue)
    residues = [residue for residue in map(make_residue, groups.values()) if residue is not None]
    kept = []
    for k, residue in enumerate(residues):
        joined = (k > 0 and bonded(residues[k - 1], residue)) or (
            k + 1 < len(residues) and bonded(residue, residues[k + 1])
        )
        if residue.code != "X" or joined:
            kept.append(residue)
    return kept


def dihedral(*positions):
    return math.degrees(gemmi.calculate_dihedral(*positions))


def is_distorted(residue):
    n, ca, c = (residue.atoms[name] for name in ("N", "CA", "C"))
    angle = math.degrees(gemmi.calculate_angle(n, ca, c))
    limits = ((n.dist(ca), N_CA), (ca.dist(c), CA_C), (angle, N_CA_C))
    return any(not low <= value <= high for value, (low, high) in limits)


def side_chain_angles(residue):
    """Sets chi1 and chi2 where the type has them and all atoms are there."""
    code, atoms = residue.code.upper(), residue.atoms
    gamma = GAMMA.get(code, "CG")
    if code in NO_CHI1 or not {"CB", gamma} <= set(atoms):
        return
    residue.chi1 = dihedral(atoms["N"], atoms["CA"], atoms["CB"], atoms[gamma])
    delta = DELTA.get(code, "CD")
    if code not in NO_CHI2 and delta in atoms:
        residue.chi2 = dihedral(atoms["CA"], atoms["CB"], atoms[gamma], atoms[delta])


def set_angles(residues):
    """Breaks, distorted residues and all torsions. Residues of distorted geometry keep no angle, nor do their
    neighbours those that need its atoms."""
    for residue in residues:
        residue.distorted = is_distorted(residue)
        if not residue.distorted:
            side_chain_angles(residue)
    for before, after in zip(residues, residues[1:]):
        after.after_break = not bonded(before, after)
        if after.after_break:
            continue
        n1, ca1, c1 = (before.atoms[name] for name in ("N", "CA", "C"))
        n2, ca2, c2 = (after.atoms[name] for name in ("N", "CA", "C"))
        if not before.distorted:
            before.psi = dihedral(n1, ca1, c1, n2)
        if not after.distorted:
            after.phi = dihedral(c1, n2, ca2, c2)
            after.omega = dihedral(ca1, c1, n2, ca2)


def mark_disulfides(model, residues):
    """Cysteines whose SG lies near another SG of the model become `c`."""
    sulfurs = [
        atom.pos
        for chain in model
        for residue in chain
        if residue.name == "CYS"
        for atom in residue
        if atom.name == "SG"
    ]
    for residue in residues:
        own = residue.atoms.get("SG")
        # Alternates of the own SG lie near it as well, but never as far as a bond.
        if residue.code == "C" and own and any(1.5 < own.dist(other) <= DISULFIDE for other in sulfurs):
            residue.code = "c"


def read_chains(path, wanted=None):
    """The protein chains of the first model, or the one named. InputError when there is none."""
    structure = load(path)
    model = structure[0]
    method = structure.info["_exptl.method"] if "_exptl.method" in structure.info else ""
    entry = structure.info["_entry.id"] if "_entry.id" in structure.info else ""
    chains = []
    for chain in model:
        residues = polymer(chain)
        if len(residues) < SHORTEST_CHAIN or (wanted is not None and chain.name != wanted):
            continue
        mark_disulfides(model, residues)
        set_angles(residues)
        chains.append(Chain(chain.name, residues, structure.resolution or None, method, entry))
    if not chains:
        names = ", ".join(chain.name or "(blank)" for chain in model)
        wish = f"chain {wanted} is no protein chain" if wanted is not None else "no protein chain"
        raise InputError(
            f"{path}: {wish} of {SHORTEST_CHAIN} residues or more with N, CA and C; chains: {names}"
        )
    return chains
