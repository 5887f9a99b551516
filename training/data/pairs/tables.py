"""Rows of the two training inputs, and of the protein and chain tables beside them."""

import os

from data.pairs.errors import InputError
from data.pairs.star import ATOMS

PAIRED = ("protein resid aa phi psi chi1 chi2 ss8 b_factor " + " ".join(ATOMS)).split()
PROTEINS = (
    "protein bmrb cluster n_res identity resolution " + " ".join("n_" + atom for atom in ATOMS)
).split()
STRUCTURES = (
    "chain resid ins aa phi psi omega chi1 chi2 ss8 bmc flags "
    + " ".join(atom + axis for atom in ("N", "CA", "C", "O", "CB") for axis in "xyz")
    + " ring"
).split()
CHAINS = (
    "chain table class method resolution rfree length breaks bfac left top8000 cl90 cl50 cl30 source file "
    "paired"
).split()
MAIN_CHAIN = ("N", "CA", "C", "O")
OXIDISED_CB = 34.0  # ppm; cysteines at or above count as oxidised
LARGEST_STEP, UNKNOWN_STEP = 60, 4  # of the numbering at a break
SHARPEST = 2.5  # A, resolution of class xray


def append_rows(path, columns, rows):
    """Appends to the table, which is begun with its header when it does not exist."""
    new = not os.path.exists(path)
    if not new:
        with open(path) as handle:
            if handle.readline().rstrip("\n").split("\t") != list(columns):
                raise InputError(f"{path}: has other columns than {' '.join(columns)}; name another file")
    with open(path, "a") as handle:
        if new:
            handle.write("\t".join(columns) + "\n")
        for row in rows:
            handle.write("\t".join(row) + "\n")


def angle(value):
    """One decimal in -180..180; empty for a missing angle."""
    return (
        ""
        if value is None
        else f"{value:.1f}".replace("-0.0", "0.0")
        if abs(value) < 0.05
        else f"{value:.1f}"
    )


def number(value, digits):
    return "" if value is None else f"{value:.{digits}f}"


def has_b_factors(chain):
    """False when the file carries none (all alike)."""
    values = {round(b, 2) for residue in chain.residues for b in residue.b_factors.values()}
    return len(values) > 1


def ascending_numbers(chain):
    """(residue numbers, whether they are the file's): the file's own where they ascend, else counted on."""
    own = [residue.resid for residue in chain.residues]
    if not any(residue.ins for residue in chain.residues) and all(a < b for a, b in zip(own, own[1:])):
        return own, True
    numbers = [own[0]]
    for k in range(1, len(own)):
        step = own[k] - own[k - 1] if chain.residues[k].after_break else 1
        numbers.append(numbers[-1] + (step if 1 <= step <= LARGEST_STEP else UNKNOWN_STEP))
    return numbers, False


def paired_rows(name, match, shift_list, letters):
    """One row per residue of the 20 types; without shifts where the residue has no equal partner."""
    chain, rows = match.chain, []
    with_b = has_b_factors(chain)
    numbers = ascending_numbers(chain)[0]
    for residue, partner, resid, letter in zip(chain.residues, match.partner, numbers, letters):
        if residue.code == "X":
            continue
        shifts = shift_list.shifts[partner] if partner is not None else {}
        code = residue.code
        if code in "cC" and "CB" in shifts:
            code = "c" if shifts["CB"] >= OXIDISED_CB else "C"
        rows.append(
            [
                name,
                str(resid),
                code,
                angle(residue.phi),
                angle(residue.psi),
                angle(residue.chi1),
                angle(residue.chi2),
                letter.replace("P", "-"),
                number(residue.mean_b(), 1) if with_b else "",
                *(f"{shifts[atom]:.3f}".rstrip("0").rstrip(".") if atom in shifts else "" for atom in ATOMS),
            ]
        )
    return rows


def protein_row(name, match, entry, rows):
    """Every protein is a cluster of its own until homologous ones are given one label by hand."""
    counts = [sum(bool(row[PAIRED.index(atom)]) for row in rows) for atom in ATOMS]
    return [
        name,
        entry,
        name,
        str(len(rows)),
        f"{match.identity:.3f}",
        number(match.chain.resolution, 2),
        *map(str, counts),
    ]


def flags(residue):
    return "b" * residue.after_break + "a" * residue.alternate + "g" * residue.distorted


def structure_rows(name, chain, letters):
    with_b = has_b_factors(chain)
    rows = []
    for residue, letter in zip(chain.residues, letters):
        places = []
        for atom in (*MAIN_CHAIN, "CB"):
            where = residue.atoms.get(atom)
            places += [f"{value:.3f}" for value in where.tolist()] if where else ["", "", ""]
        ring = ";".join(",".join(f"{value:.3f}" for value in atom.tolist()) for atom in residue.ring())
        rows.append(
            [
                name,
                str(residue.resid),
                residue.ins,
                residue.code,
                angle(residue.phi),
                angle(residue.psi),
                angle(residue.omega),
                angle(residue.chi1),
                angle(residue.chi2),
                letter,
                number(residue.mean_b(MAIN_CHAIN), 1) if with_b else "",
                flags(residue),
                *places,
                ring,
            ]
        )
    return rows


def chain_row(name, chain, path, pair):
    """`pair` names the paired protein that the chain holds; the chain is a cluster of its own."""
    kind = "other"
    if "X-RAY" in chain.method.upper():
        sharp = chain.resolution is None or chain.resolution <= SHARPEST
        kind = "xray" if chain.resolution is not None and sharp else "xray?" if sharp else "xray-low"
    elif "NMR" in chain.method.upper():
        kind = "nmr"
    others = [residue for residue in chain.residues if residue.code != "G" and residue.phi is not None]
    left = sum(residue.phi > 0.0 for residue in others) / max(len(others), 1)
    return [
        name,
        "residues",
        kind,
        chain.method,
        number(chain.resolution, 2),
        "",
        str(len(chain.residues)),
        str(sum(residue.after_break for residue in chain.residues)),
        "y" if has_b_factors(chain) else "n",
        f"{left:.3f}",
        "n",
        "",
        name,
        name,
        "own",
        os.path.basename(path),
        pair,
    ]
