"""Structural surroundings of every residue, computed from backbone, CB and ring coordinates.

All terms are the classical ones: hydrogen-bond energies of Kabsch and Sander (Biopolymers 22, 2577, 1983),
ring currents of Haigh and Mallion (Mol. Phys. 18, 737, 1970) with the ring intensities of Osapay and Case
(JACS 113, 9436, 1991), electric fields of the peptide groups' partial charges (Buckingham, Can. J. Chem. 38,
300, 1960) and neighbour counts.
"""

import numpy as np

N, CA, C, O, CB = range(5)
# Relative ring-current intensities.
INTENSITY = {"F": 1.00, "Y": 0.84, "H": 0.90, "W6": 1.02, "W5": 1.04}
CHARGE = (0.42, -0.42, -0.20, 0.20)  # C, O, N, H of a peptide group, electron charges
FAR = 8.0  # angstrom, stands for "no partner"
# Columns of `surroundings`.
COLUMNS = (
    ["nh1", "nh2", "co1", "co2", "d_hn_o", "d_ha_o", "d_o_hn", "d_o_ha"]
    + [f"ring_{atom}" for atom in ("N", "HA", "C", "CA", "CB", "HN")]
    + ["field_HA", "field_HN", "field_C", "field_CA", "near8", "near12", "up", "down"]
)


def unit(vector):
    return vector / np.maximum(np.linalg.norm(vector, axis=-1, keepdims=True), 1e-6)


def virtual_cb(xyz):
    """CB at ideal geometry, for glycine."""
    b, c = xyz[:, CA] - xyz[:, N], xyz[:, C] - xyz[:, CA]
    a = np.cross(b, c)
    return -0.58273431 * a + 0.56802827 * b - 0.54067466 * c + xyz[:, CA]


def hydrogens(xyz, bonded, code):
    """HN (nan at chain starts and proline) and the one or two HA (both equal unless glycine), angstrom."""
    hn = np.full((len(xyz), 3), np.nan)
    hn[1:] = xyz[1:, N] + unit(xyz[:-1, C] - xyz[:-1, O])
    hn[~bonded] = np.nan
    hn[np.array(code) == "P"] = np.nan
    to_n, to_c, to_cb = (unit(xyz[:, k] - xyz[:, CA]) for k in (N, C, CB))
    ha = xyz[:, CA] - 1.09 * unit(to_n + to_c + to_cb)
    glycine = np.array(code) == "G"
    ha2 = ha.copy()
    ha2[glycine] = xyz[glycine, CA] + 1.09 * to_cb[glycine]
    return hn, ha, ha2


def distances(a, b):
    """All distances, len(a) x len(b)."""
    square = (a * a).sum(1)[:, None] + (b * b).sum(1)[None] - 2.0 * a @ b.T
    return np.sqrt(np.maximum(square, 0.01))


def hydrogen_bonds(xyz, hn):
    """Kabsch-Sander energies, kcal/mol, donor x acceptor residue; 0 where there is no bond to speak of."""
    n, c, o = xyz[:, N], xyz[:, C], xyz[:, O]
    energy = 27.9 * (
        1.0 / distances(n, o) + 1.0 / distances(hn, c) - 1.0 / distances(hn, o) - 1.0 / distances(n, c)
    )
    energy = np.where(np.isfinite(energy), np.clip(energy, -9.9, 0.0), 0.0)
    index = np.arange(len(xyz))
    energy[np.abs(index[:, None] - index[None]) < 2] = 0.0
    return np.where(energy > -0.05, 0.0, energy)


def ring_current(points, rings, owner):
    """Haigh-Mallion ring-current sums, len(points); own rings left out (the residue's torsions tell of
    them)."""
    total = np.zeros(len(points))
    for residue, kind, atoms in rings:
        centre = atoms.mean(axis=0)
        near = np.nonzero((np.abs(points - centre).max(axis=1) < 15.0) & (owner != residue))[0]
        if len(near) == 0:
            continue
        p = points[near]
        following = np.roll(atoms, -1, axis=0)
        normal = unit(np.cross(atoms, following).sum(axis=0))
        cube = ((p[:, None] - atoms[None]) ** 2).sum(axis=2) ** -1.5
        a, b = atoms[None] - p[:, None], following[None] - p[:, None]
        area = 0.5 * (np.cross(a, b) @ normal)
        total[near] += INTENSITY[kind] * (area * (cube + np.roll(cube, -1, axis=1))).sum(axis=1)
    return total


def peptide_field(points, direction, xyz, hn, owner):
    """Electric field of the peptide groups at least two residues away along `direction`, charges / square
    angstrom."""
    result = np.zeros(len(points))
    index = np.arange(len(xyz))
    distant = np.abs(owner[:, None] - index[None]) >= 2
    close = distances(points, xyz[:, CA]) < 12.0
    for charge, place in zip(CHARGE, (xyz[:, C], xyz[:, O], xyz[:, N], hn)):
        vector = points[:, None] - place[None]
        square = np.maximum((vector**2).sum(axis=2), 2.0)
        field = charge * (vector * direction[:, None]).sum(axis=2) * square**-1.5
        result += np.where(distant & close & np.isfinite(field), field, 0.0).sum(axis=1)
    return result


def two_lowest(energy):
    ordered = np.sort(np.concatenate([energy, np.zeros((len(energy), 2))], axis=1), axis=1)
    return ordered[:, 0], ordered[:, 1]


def nearest(a, b):
    """Distance to the nearest point of another residue at least two away."""
    d = distances(a, b)
    index = np.arange(len(a))
    d[np.abs(index[:, None] - index[None]) < 2] = FAR
    d[~np.isfinite(d)] = FAR
    return np.minimum(d.min(axis=1), FAR)


def surroundings(xyz, bonded, code, rings):
    """Terms of every residue, residues x len(COLUMNS); nan coordinates give neutral values.
    xyz: residues x 5 x 3 (N CA C O CB), bonded: whether a residue follows the one before it."""
    xyz = xyz.copy()
    lacking = ~np.isfinite(xyz[:, CB]).all(axis=1)
    xyz[lacking, CB] = virtual_cb(xyz)[lacking]
    hn, ha, ha2 = hydrogens(xyz, bonded, code)
    energy = hydrogen_bonds(xyz, hn)
    columns = [*two_lowest(energy), *two_lowest(energy.T)]
    o = xyz[:, O]
    columns += [nearest(hn, o), np.minimum(nearest(ha, o), nearest(ha2, o)), nearest(o, hn), nearest(o, ha)]
    count = len(xyz)
    owner = np.arange(count)
    pieces = []
    for residue, kind, atoms in rings:
        pieces += (
            [(residue, "W5", atoms[:5]), (residue, "W6", atoms[3:])]
            if kind == "W"
            else [(residue, kind, atoms)]
        )
    points = (xyz[:, N], ha, xyz[:, C], xyz[:, CA], xyz[:, CB], hn, ha2)
    flat = ring_current(np.nan_to_num(np.concatenate(points), nan=1e4), pieces, np.tile(owner, 7)).reshape(
        7, count
    )
    columns += [flat[0], 0.5 * (flat[1] + flat[6]), *flat[2:6]]
    for place, base in ((ha, xyz[:, CA]), (hn, xyz[:, N]), (xyz[:, C], xyz[:, O]), (xyz[:, CA], xyz[:, CB])):
        direction = unit(place - base)
        columns.append(peptide_field(np.nan_to_num(place), np.nan_to_num(direction), xyz, hn, owner))
    d = distances(xyz[:, CB], xyz[:, CB])
    columns += [(d < 8.0).sum(axis=1), (d < 12.0).sum(axis=1)]
    ca = xyz[:, CA]
    side = ((ca[None] - ca[:, None]) * unit(xyz[:, CB] - ca)[:, None]).sum(axis=2)
    close = (distances(ca, ca) < 12.0) & (owner[:, None] != owner[None])
    columns += [(close & (side > 0)).sum(axis=1), (close & (side <= 0)).sum(axis=1)]
    return np.nan_to_num(np.stack(columns, axis=1)).astype(np.float32)
