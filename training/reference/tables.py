"""Reference tables: random-coil shifts, adjustments, limits, homology, triplet weights, BLOSUM62."""

import os

import numpy as np

import settings
from data.textables import write_table
from reference import literature

CODES = settings.RESIDUE_CODES
ATOMS = settings.ATOMS
SOURCE = "Derived from observed shifts (BMRB, RefDB) and crystal torsions of %d proteins."


def trimmed_mean(values, prior):
    """Mean without the outer `TRIM` shares, shrunk towards 0 by n / (n + prior)."""
    values = np.sort(np.asarray(values))
    values = values[np.isfinite(values)]
    count = len(values)
    if count == 0:
        return 0.0
    cut = int(settings.TRIM * count)
    return float(values[cut : count - cut].mean()) * count / (count + prior)


class Reference:
    """Random-coil model: value of a residue type plus own, preceding and following adjustments (types x 6,
    ppm)."""

    def __init__(self):
        self.coil = np.array([literature.RANDOM_COIL[code] for code in CODES])
        self.own = np.zeros_like(self.coil)
        self.previous = np.zeros_like(self.coil)
        self.following = np.zeros_like(self.coil)

    def expected(self, protein):
        """Reference shift of every residue and atom (nan where the type has none). Neighbours count only
        where the numbering is continuous, as the program sees gaps as residues of unknown type."""
        types = [CODES.index(code) for code in protein.code]
        result = self.coil[types] + self.own[types]
        for k, number in enumerate(protein.resid):
            if k and protein.resid[k - 1] == number - 1:
                result[k] += self.previous[types[k - 1]]
            if k + 1 < len(types) and protein.resid[k + 1] == number + 1:
                result[k] += self.following[types[k + 1]]
        result[result > 999.0] = np.nan
        return result

    def secondary(self, protein):
        """Secondary shifts as the program computes them, nan where missing."""
        return protein.shifts - self.expected(protein)


def fit_reference(proteins):
    """Backfits own and neighbour adjustments on coil and turn residues."""
    reference = Reference()
    kinds, before, after, coil, observed = [], [], [], [], []
    for protein in proteins:
        types = [CODES.index(code) for code in protein.code]
        number = protein.resid
        kinds += types
        before += [types[k - 1] if k and number[k - 1] == number[k] - 1 else -1 for k in range(len(types))]
        after += [
            types[k + 1] if k + 1 < len(types) and number[k + 1] == number[k] + 1 else -1
            for k in range(len(types))
        ]
        coil += [letter in settings.COIL_CLASSES for letter in protein.ss8]
        observed.append(protein.shifts)
    kinds, before, after, coil = (np.array(item) for item in (kinds, before, after, coil))
    base = reference.coil.copy()
    base[base > 999.0] = np.nan
    residual = (np.concatenate(observed) - base[kinds])[coil]
    kinds, before, after = kinds[coil], before[coil], after[coil]
    blocks = (
        (reference.own, kinds, settings.ADJUSTMENT_PRIOR),
        (reference.previous, before, settings.NEIGHBOUR_PRIOR),
        (reference.following, after, settings.NEIGHBOUR_PRIOR),
    )
    for _ in range(settings.BACKFITTING_ROUNDS):
        for block, label, prior in blocks:
            total = sum(
                np.where(lab[:, None] >= 0, blk[lab], 0.0) for blk, lab, _ in blocks if blk is not block
            )
            left = residual - total
            for code in range(len(CODES)):
                rows = left[label == code]
                for atom in range(6):
                    block[code, atom] = trimmed_mean(rows[:, atom], prior)
    carbons = [ATOMS.index(atom) for atom in ("CA", "CB")]
    there = reference.coil[:, carbons] < 999.0
    reference.own[:, carbons] += carbon_offset(proteins, reference) * there
    return reference


def carbon_offset(proteins, reference):
    """What the program's referencing check (-check) reads for CA and CB of all proteins together, ppm.

    The check draws a line through secondary CA against d = CA - CB, apart for d < 0 and d >= 0, and expects
    the intercepts of settings.CARBON_INTERCEPTS. These do not follow from the coil zero, which leaves the
    common zero of CA and CB to the table: with a zero mean over coil residues the check would call one
    well-referenced protein in three wrong.
    """
    secondary = np.concatenate([reference.secondary(protein) for protein in proteins])
    codes = np.concatenate([list(protein.code) for protein in proteins])
    alpha = secondary[:, ATOMS.index("CA")]
    difference = alpha - secondary[:, ATOMS.index("CB")]
    usable = np.isfinite(difference) & ~np.isin(codes, ("P", "C", "c"))
    total = 0.0
    for side, expected in zip(
        (usable & (difference < 0.0), usable & (difference >= 0.0)), settings.CARBON_INTERCEPTS
    ):
        _, intercept = np.polyfit(difference[side], alpha[side], 1)
        total += (intercept - expected) * side.sum()
    return total / usable.sum()


def limits(proteins, reference):
    """Lower and upper limit of the secondary shift per type and atom; rare types lean on all types
    together."""
    secondary = np.concatenate([reference.secondary(protein) for protein in proteins])
    kinds = np.concatenate([[CODES.index(code) for code in protein.code] for protein in proteins])
    low, high = settings.LIMIT_PERCENTILES
    result = np.zeros((len(CODES), 6, 2))
    for atom in range(6):
        column = secondary[:, atom]
        pooled = np.nanpercentile(column, (low, high))
        for code in range(len(CODES)):
            values = column[(kinds == code) & np.isfinite(column)]
            if len(values) == 0:
                result[code, atom] = (-999.0, 998.0)  # no reference value: nothing to limit
                continue
            share = len(values) / (len(values) + settings.LIMIT_PRIOR)
            result[code, atom] = share * np.percentile(values, (low, high)) + (1.0 - share) * pooled
    return result


def homology_distance(first, second):
    """sqrt((Bii + Bjj) / 2 - Bij) from BLOSUM62; the two cysteine states are one apart."""
    if first == second:
        return 0.0
    if first in "Cc" and second in "Cc":
        return 1.0
    matrix, first, second = literature.BLOSUM62, first.upper(), second.upper()
    return float(np.sqrt(0.5 * (matrix[first][first] + matrix[second][second]) - matrix[first][second]))


def isotope_shifts():
    """Isotope shift of CA and CB per type for a fully deuterated side chain, ppm (negative)."""
    one, two, three = literature.ISOTOPE_PER_BOND
    rows = []
    for code in CODES:
        alpha, beta, gamma, delta = literature.CARBON_HYDROGENS[code]
        ca = one * alpha + two * beta + three * gamma
        cb = 0.0 if code == "G" else one * beta + two * (alpha + gamma) + three * delta
        rows.append((code, ca, cb))
    return rows


def triplet_weights(proteins, reference):
    """Rows R1, R2, R3, AVG: inverse variances of the secondary shifts (outer residues down-weighted), weight
    of the homology term, and the cost of a missing shift in units of the variance."""
    secondary = np.concatenate([reference.secondary(protein) for protein in proteins])
    variance = np.nanvar(np.clip(secondary, *np.nanpercentile(secondary, (0.5, 99.5), axis=0)), axis=0)
    rows = []
    for label, scale, homology in zip(
        ("R1", "R2", "R3"),
        (settings.TRIPLET_OUTER_WEIGHT, 1.0, settings.TRIPLET_OUTER_WEIGHT),
        settings.TRIPLET_HOMOLOGY,
    ):
        rows.append((label, *(settings.TRIPLET_SCALE * scale / variance), settings.TRIPLET_SCALE * homology))
    rows.append(("AVG", *variance, settings.TRIPLET_MISSING_COST))
    return rows


def write_triplet_weights(proteins, reference, folder):
    """The weight table of the triplet distance alone."""
    write_table(
        os.path.join(folder, "weight.tab"),
        ("RESNAME",) + ATOMS + ("W",),
        ("%-3s",) + ("%12.6f",) * 7,
        triplet_weights(proteins, reference),
        (
            "Triplet distance: R1, R2, R3 = weights of the squared shift differences of the three residues",
            "(inverse variances) and, in W, of the squared homology distance; AVG x W = cost of a missing shift",
            "(variances, ppm^2, times W).",
            SOURCE % len(proteins),
        ),
    )


def write_reference_tables(proteins, folder):
    """Fits and writes every small table into `folder`; returns the reference model."""
    os.makedirs(folder, exist_ok=True)
    reference = fit_reference(proteins)
    source = SOURCE % len(proteins)
    columns, formats = ("RESNAME",) + ATOMS, ("%-3s",) + ("%9.3f",) * 6

    def table(name, values, *remarks):
        write_table(
            os.path.join(folder, name),
            columns,
            formats,
            [(code, *row) for code, row in zip(CODES, values)],
            remarks,
        )

    table(
        "randcoil.tab",
        reference.coil,
        "Random-coil shifts, ppm (DSS); 9999 = the residue has no such nucleus.",
        "D. S. Wishart et al., J. Biomol. NMR 5, 67-81 (1995), GGXAGG peptides, 25 C, pH 5.",
        "c: oxidised cysteine, C: reduced cysteine.",
    )
    table(
        "rcadj.tab",
        reference.own,
        "Own-residue adjustment of the random-coil shifts, ppm.",
        "Trimmed mean residual of coil and turn residues, shrunk by n/(n+%g);" % settings.ADJUSTMENT_PRIOR,
        "CA and CB then moved together to where the referencing check reads 0 for the same proteins.",
        source,
    )
    table(
        "rcprev.tab",
        reference.previous,
        "Adjustment by the preceding residue (its type in RESNAME), ppm.",
        "Fitted jointly with rcadj on coil and turn residues, shrunk by n/(n+%g)." % settings.NEIGHBOUR_PRIOR,
        source,
    )
    table(
        "rcnext.tab",
        reference.following,
        "Adjustment by the following residue (its type in RESNAME), ppm.",
        "Fitted jointly with rcadj on coil and turn residues, shrunk by n/(n+%g)." % settings.NEIGHBOUR_PRIOR,
        source,
    )
    write_table(
        os.path.join(folder, "isoadj.tab"),
        ("RESNAME", "CA", "CB"),
        ("%-3s", "%7.3f", "%7.3f"),
        isotope_shifts(),
        (
            "Deuterium isotope shifts of 13CA and 13CB in perdeuterated residues, ppm, added to the reference.",
            "Per deuteron one, two, three bonds away %g, %g, %g ppm:" % literature.ISOTOPE_PER_BOND,
            "R. A. Venters et al., J. Mol. Biol. 264, 1101-1116 (1996).",
        ),
    )
    bounds = limits(proteins, reference)
    write_table(
        os.path.join(folder, "sslimit.tab"),
        ("RESNAME",) + tuple(f"{atom}_{side}" for atom in ATOMS for side in ("MIN", "MAX")),
        ("%-3s",) + ("%9.3f",) * 12,
        [(code, *bounds[k].ravel()) for k, code in enumerate(CODES)],
        ("Limits of the secondary shifts, ppm: percentiles %g and %g." % settings.LIMIT_PERCENTILES, source),
    )
    write_table(
        os.path.join(folder, "homology.tab"),
        ("RESNAME",) + tuple(CODES),
        ("%-3s",) + ("%6.3f",) * len(CODES),
        [(a, *(homology_distance(a, b) for b in CODES)) for a in CODES],
        (
            "Distances between residue types, sqrt((Bii + Bjj)/2 - Bij) with B = BLOSUM62.",
            "The two states of cysteine (C reduced, c oxidised) are 1 apart.",
        ),
    )
    write_triplet_weights(proteins, reference, folder)
    order = literature.BLOSUM_ORDER
    write_table(
        os.path.join(folder, "BLOSUM62.tab"),
        ("RESNAME",) + tuple(order),
        ("%-3s",) + ("%3d",) * 20,
        [(a, *(literature.BLOSUM62[a][b] for b in order)) for a in order],
        ("BLOSUM62, half-bit units: S. Henikoff, J. G. Henikoff, PNAS 89, 10915-10919 (1992).",),
    )
    return reference
