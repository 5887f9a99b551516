"""Reads the paired data: one protein = residues with observed shifts and crystal torsions."""

import csv
import lzma
import math
import os
from dataclasses import dataclass, field

import numpy as np

import settings


@dataclass
class Protein:
    """Residues of one chain in ascending order; absent numbers are nan."""

    name: str
    cluster: str
    resid: list = field(default_factory=list)
    code: list = field(default_factory=list)  # one letter, c = oxidised cysteine
    ss8: list = field(default_factory=list)
    phi: np.ndarray = None
    psi: np.ndarray = None
    chi1: np.ndarray = None
    shifts: np.ndarray = None  # residues x 6 in atom order, ppm
    # A protein with simulated shifts only; None of a real one, which shows all variants:
    variants: list = None  # its input variants
    predicted: np.ndarray = None  # residues x 6, secondary shifts without errors, ppm
    error: np.ndarray = None  # their expected errors, ppm
    related: bool = False  # resembles a real protein

    def __len__(self):
        return len(self.resid)


def _number(text):
    return float(text) if text else math.nan


def _read_proteins(path):
    """Cluster label and referencing offset (ppm, atom order) of every protein of a protein table."""
    clusters, offsets = {}, {}
    with open(path, newline="") as handle:
        for row in csv.DictReader(handle, delimiter="\t"):
            clusters[row["protein"]] = row["cluster"] or row["protein"]
            offsets[row["protein"]] = [_offset(row, atom) for atom in settings.ATOMS]
    return clusters, offsets


def _offset(row, atom):
    """The table's median difference from the shifts expected of the structure, drawn to 0 where few shifts
    tell."""
    value, count = _number(row.get("off_" + atom, "")), _number(row.get("n_" + atom, ""))
    if not (math.isfinite(value) and count > 0):
        return 0.0
    return value * count / (count + settings.OFFSET_PRIOR)


def _close_jumps(resid):
    """Residue numbers with jumps of the numbering shortened, so that gap filling stays short."""
    numbers, shift = [], 0
    for k, number in enumerate(resid):
        if k and number - resid[k - 1] > settings.LARGEST_GAP:
            shift += number - resid[k - 1] - settings.JUMP_REPLACEMENT
        numbers.append(number - shift)
    return numbers


def read_table(path, clusters):
    """All proteins of one paired table (plain or .xz), in file order."""
    rows = {}
    opener = lzma.open if path.endswith(".xz") else open
    with opener(path, "rt", newline="") as handle:
        for row in csv.DictReader(handle, delimiter="\t"):
            rows.setdefault(row["protein"], []).append(row)
    proteins = []
    for name, table in rows.items():
        protein = Protein(name, clusters.get(name, name))
        protein.resid = _close_jumps([int(row["resid"]) for row in table])
        protein.ss8 = [row["ss8"] or "-" for row in table]
        protein.phi, protein.psi, protein.chi1 = (
            np.array([_number(row[key]) for row in table]) for key in ("phi", "psi", "chi1")
        )
        protein.shifts = np.array([[_number(row[atom]) for atom in settings.ATOMS] for row in table])
        cb = protein.shifts[:, settings.ATOMS.index("CB")]
        # The program knows a disulfide only by the CB shift; the letters follow the same rule.
        protein.code = [
            ("c" if cb[k] >= 34.0 else "C") if row["aa"] in "cC" else row["aa"] for k, row in enumerate(table)
        ]
        proteins.append(protein)
    return proteins


def shift_entries(folder):
    """Shift database entry number of every protein."""
    entries = {}
    for name in ("proteins.tsv", "proteins-more.tsv"):
        with open(os.path.join(folder, name), newline="") as handle:
            entries.update((row["protein"], row["bmrb"]) for row in csv.DictReader(handle, delimiter="\t"))
    return entries


def read_training(folder, corrected=True):
    """Proteins of train and train-more without the excluded ones, each nucleus's referencing corrected or as
    it is."""
    clusters, offsets = _read_proteins(os.path.join(folder, "proteins.tsv"))
    for known, more in zip((clusters, offsets), _read_proteins(os.path.join(folder, "proteins-more.tsv"))):
        known.update(more)
    proteins = []
    for name in ("train.tsv.xz", "train-more.tsv.xz"):
        proteins += read_table(os.path.join(folder, name), clusters)
    for protein in proteins if corrected else ():
        protein.shifts -= offsets.get(protein.name, 0.0)
    return [protein for protein in proteins if protein.name not in settings.EXCLUDED_PROTEINS]


def assign_folds(proteins, count, seed):
    """Fold number per protein; homologous proteins share a fold and folds have about equal residue
    numbers."""
    sizes = {}
    for protein in proteins:
        sizes[protein.cluster] = sizes.get(protein.cluster, 0) + len(protein)
    order = sorted(sizes)
    np.random.default_rng(seed).shuffle(order)
    load, fold = [0] * count, {}
    for cluster in order:
        smallest = load.index(min(load))
        fold[cluster] = smallest
        load[smallest] += sizes[cluster]
    return [fold[protein.cluster] for protein in proteins]


def box_of(phi, psi):
    """Number of the 20-degree phi/psi box, 18 x phi index + psi index."""
    return 18 * min(int((phi + 180.0) / 20.0), 17) + min(int((psi + 180.0) / 20.0), 17)
