"""Fragment database orbel.tab and triplet library orbel_obsCS.tab from observed secondary shifts."""

import os

import numpy as np

import settings
from data.paired import box_of
from data.textables import write_table

ATOMS = settings.ATOMS


def observed_scales(secondary):
    """Scale (expected error, ppm) of observed shifts; 0 = missing."""
    return np.where(np.isfinite(secondary), [settings.DATABASE_SCALES[atom] for atom in ATOMS], 0.0)


def with_predictions(secondary, predicted, error):
    """Observed secondary shifts drawn halfway to the predicted ones, holes filled by them; values and
    scales."""
    known = np.isfinite(secondary)
    foretold = np.isfinite(predicted)
    values = np.where(known & foretold, 0.5 * (secondary + predicted), np.where(known, secondary, predicted))
    scales = np.where(known, observed_scales(secondary), np.where(foretold, error, 0.0))
    return values, scales


def existing(protein, reference, scales):
    """Scales with 0 (missing) for nuclei that the residue does not have: the shift model predicts all six."""
    return np.where(np.isfinite(reference.expected(protein)), scales, 0.0)


def write_records(handle, protein, values, scales):
    """Records of every residue with phi and psi; a residue without them is left out, so that its number is a
    gap. Negative numbering is moved up to start at 1. Returns the number of records."""
    count = 0
    offset = 1 - protein.resid[0] if protein.resid[0] < 0 else 0
    for k, number in enumerate(protein.resid):
        phi, psi, chi1 = protein.phi[k], protein.psi[k], protein.chi1[k]
        if not (np.isfinite(phi) and np.isfinite(psi)):
            continue
        pairs = " ".join(
            "%.*f %.2g" % (1 if atom == "N" else 2, value, scale) if scale > 0.0 else "0 0"
            for atom, value, scale in zip(ATOMS, values[k], scales[k])
        )
        handle.write(
            "%s %s %d %.1f %.1f %.1f %d %s\n"
            % (
                protein.name,
                protein.code[k].upper(),
                number + offset,
                phi,
                psi,
                chi1 if np.isfinite(chi1) else 9999.0,
                box_of(phi, psi),
                pairs,
            )
        )
        count += 1
    return count


def write_database(path, proteins, reference, predicted, structures, leave_out=()):
    """All records. predicted: {protein: (secondary, error)} of observed proteins whose coordinates are at
    hand; structures: [(protein, secondary, error)] of chains without shifts. Returns the number of
    records."""
    count = 0
    with open(path, "w") as handle:
        handle.write(
            "# source type number phi psi chi1 box, then value and scale of N HA C CA CB HN (ppm);"
            " scale 0 = missing\n"
        )
        for protein in proteins:
            if protein.name in leave_out:
                continue
            secondary = reference.secondary(protein)
            nothing = np.full(secondary.shape, np.nan)
            values, scales = with_predictions(secondary, *predicted.get(protein.name, (nothing, nothing)))
            count += write_records(handle, protein, values, existing(protein, reference, scales))
        for protein, secondary, error in structures:
            if protein.name not in leave_out:
                count += write_records(handle, protein, secondary, existing(protein, reference, error))
    return count


def write_triplets(path, proteins, reference, leave_out=()):
    """The most complete triplets of consecutive residues; ties keep file order. Returns the number of
    rows."""
    rows = []
    for protein in proteins:
        if protein.name in leave_out:
            continue
        secondary = reference.secondary(protein)
        for k in range(1, len(protein) - 1):
            if protein.resid[k + 1] - protein.resid[k - 1] != 2:
                continue
            window = secondary[k - 1 : k + 2]
            present = np.isfinite(window).sum(axis=1)
            # The centre counts most: its shifts are what the averages are made of.
            rank = 2 * present[1] + present[0] + present[2]
            if present[1] >= 2:
                values = np.where(np.isfinite(window), window, 9999.0).ravel()
                rows.append((-rank, len(rows), protein.name, *protein.code[k - 1 : k + 2], *values))
    rows.sort(key=lambda row: row[:2])
    rows = sorted(rows[: settings.LIBRARY_ROWS], key=lambda row: row[1])
    names = ("RESNAME_R1", "RESNAME_R2", "RESNAME_R3")
    columns = ("SOURCE",) + names + tuple(f"{atom}_R{p}" for p in (1, 2, 3) for atom in ATOMS)
    write_table(
        path,
        columns,
        ("%s",) + ("%s",) * 3 + ("%.3f",) * 18,
        [row[2:] for row in rows],
        ("Secondary shifts (ppm) of triplets of consecutive residues; 9999 = missing.",),
    )
    return len(rows)


def write_libraries(folder, proteins, reference, predicted, structures, leave_out=()):
    """Both libraries under their installation names."""
    os.makedirs(folder, exist_ok=True)
    return (
        write_database(
            os.path.join(folder, "orbel.tab"), proteins, reference, predicted, structures, leave_out
        ),
        write_triplets(os.path.join(folder, "orbel_obsCS.tab"), proteins, reference, leave_out),
    )
