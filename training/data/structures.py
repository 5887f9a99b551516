"""Reads the structures data: chains with torsions and DSSP letters, no shifts."""

import csv
import lzma
import math
import os
from dataclasses import dataclass

import numpy as np

import settings

TABLES = {"residues": "residues.tsv.xz", "phipsi": "phipsi_dssp.tsv.xz"}
ANGLES = ("phi", "psi", "omega", "chi1", "chi2")
# Withdrawn as not supported by data.
WITHDRAWN = ("2a01A", "1g40A")
LARGEST_LEFT_SHARE = 0.15  # of residues with positive phi, glycine not counted; more is suspect
# A break whose numbering does not tell how many residues are missing, and the longest one that is believed.
UNNUMBERED_BREAK = 3
LONGEST_BREAK = 30


@dataclass
class Chain:
    """Residues of one chain in chain order; absent numbers are nan."""

    name: str
    cl30: str
    cl50: str
    paired: tuple  # names of paired proteins that the chain holds
    klass: str
    source: str
    resolution: float
    left: float
    place: np.ndarray  # position along the chain from 0, missing residues counted
    code: str  # one letter a residue, c = cysteine in a disulfide
    ss8: str
    breaks: np.ndarray  # True where the chain is broken before the residue
    angles: np.ndarray  # residues x 5: phi, psi, omega, chi1, chi2, degrees
    b: np.ndarray  # mean B factor of N CA C O, square angstrom

    def __len__(self):
        return len(self.code)

    @property
    def phi(self):
        return self.angles[:, 0]

    @property
    def psi(self):
        return self.angles[:, 1]

    @property
    def chi1(self):
        return self.angles[:, 3]

    def sequence(self):
        """Upper-case sequence with X for missing residues: letter k belongs to place k."""
        letters = ["X"] * (int(self.place[-1]) + 1)
        for place, code in zip(self.place, self.code):
            letters[place] = code.upper()
        return "".join(letters)


def usable(chain):
    """False for withdrawn entries and likely models."""
    model = chain.klass == "xray?" and chain.source == "somanayr/LSP"
    return not model and chain.name not in WITHDRAWN and not chain.left > LARGEST_LEFT_SHARE


def _number(text):
    return float(text) if text else math.nan


def table_rows(path, wanted):
    """(chain name, wanted columns as lists of text) of every chain; rows of one chain are contiguous."""
    with lzma.open(path, "rt") as handle:
        header = handle.readline().rstrip("\n").split("\t")
        picks = [header.index(name) if name in header else None for name in wanted]
        name, rows = None, []
        for line in handle:
            cells = line.rstrip("\n").split("\t")
            if cells[0] != name:
                if rows:
                    yield name, list(zip(*rows))
                name, rows = cells[0], []
            rows.append([cells[k] if k is not None else "" for k in picks])
        if rows:
            yield name, list(zip(*rows))


def _breaks(flags, angles):
    """Where the chain is broken before the residue: by flag, or, in tables without flags, no phi inside the
    chain."""
    if any(flags):
        return np.array(["b" in flag for flag in flags])
    return np.isnan(angles[:, 0]) & (np.arange(len(angles)) > 0) & np.isnan(np.roll(angles[:, 1], 1))


def _places(resid, breaks):
    """Positions along the chain; a break counts as many missing residues as the numbering skips."""
    steps = np.ones(len(resid), int)
    skipped = np.diff(resid, prepend=resid[0])
    for k in np.nonzero(breaks)[0]:
        believed = 1 < skipped[k] <= LONGEST_BREAK
        steps[k] = skipped[k] if believed else 1 + UNNUMBERED_BREAK
    steps[0] = 0
    return np.cumsum(steps)


def _parse(folder, cache):
    """Reads both packed tables and stores them as arrays over all residues (the slow step, run once)."""
    names, lengths, arrays, text = (
        [],
        [],
        {key: [] for key in ("angles", "breaks", "place", "b")},
        {"code": [], "ss8": []},
    )
    for file in TABLES.values():
        print(f"reading {file} ...", flush=True)
        for name, (resid, aa, ss8, flags, b, *angle_columns) in table_rows(
            os.path.join(folder, file), ("resid", "aa", "ss8", "flags", "bmc") + ANGLES
        ):
            angles = np.array([[_number(cell) for cell in column] for column in angle_columns], np.float32).T
            breaks = _breaks(flags, angles)
            names.append(name)
            lengths.append(len(resid))
            arrays["angles"].append(angles)
            arrays["breaks"].append(breaks)
            arrays["b"].append(np.array([_number(cell) for cell in b], np.float32))
            arrays["place"].append(_places(np.array(resid, int), breaks))
            text["code"].append("".join(aa))
            text["ss8"].append("".join(letter or "-" for letter in ss8))
    np.savez(
        cache,
        names=np.array(names),
        lengths=np.array(lengths),
        code="".join(text["code"]),
        ss8="".join(text["ss8"]),
        **{key: np.concatenate(parts) for key, parts in arrays.items()},
    )


def disordered(b):
    """Which residues of a chain are too mobile for their torsions to be believed: B high, or far above the
    chain's mean. One value throughout is a placeholder and tells nothing; the mean is compared, since some
    files give B in other units.
    """
    if not np.isfinite(b).any() or np.nanmin(b) == np.nanmax(b):
        return np.zeros(len(b), bool)
    return (b > settings.LARGEST_B) | (b > np.nanmean(b) + settings.LARGEST_B_DEVIATION * np.nanstd(b))


def read_chains(folder, cache_folder):
    """All chains of the folder in the order of chains.tsv. The parsed tables are kept as structures.npz in
    `cache_folder`."""
    os.makedirs(cache_folder, exist_ok=True)
    cache = os.path.join(cache_folder, "structures.npz")
    if not os.path.exists(cache):
        _parse(folder, cache)
    with np.load(cache) as stored:
        names, lengths = stored["names"], stored["lengths"]
        code, ss8 = str(stored["code"]), str(stored["ss8"])
        angles, breaks, place, b = (stored[key] for key in ("angles", "breaks", "place", "b"))
    ends = np.cumsum(lengths)
    spans = {name: slice(end - length, end) for name, length, end in zip(names.tolist(), lengths, ends)}
    chains = []
    with open(os.path.join(folder, "chains.tsv"), newline="") as handle:
        for row in csv.DictReader(handle, delimiter="\t"):
            span = spans[row["chain"]]
            paired = tuple(name for name in row["paired"].split(",") if name)
            chains.append(
                Chain(
                    row["chain"],
                    row["cl30"],
                    row["cl50"],
                    paired,
                    row["class"],
                    row["source"],
                    _number(row["resolution"]),
                    _number(row["left"]),
                    place[span],
                    code[span],
                    ss8[span],
                    breaks[span],
                    angles[span],
                    b[span],
                )
            )
    return chains
