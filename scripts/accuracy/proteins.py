"""Validation proteins: known torsions and input shift tables, and which shifts an input variant keeps."""

import collections
import csv
import lzma
import math
import os
import tarfile
import zlib

import numpy as np

ATOM_NAMES = {"H": "HN", "HA2": "HA", "HA3": "HA"}
PROTONS = {"HA", "HN"}
ATOMS = ("N", "HA", "C", "CA", "CB", "HN")
RANDOM_SHARE = 0.20
DSSP_STATES = dict.fromkeys("HGI", "H") | dict.fromkeys("EB", "E")  # any other letter is coil

Residue = collections.namedtuple("Residue", "resid aa phi psi chi1 ss8 b_factor s2_contact")


def read_truth(path):
    """{protein: [Residue]} in the table's order; numbers are nan where unknown or where the column is
    missing."""
    opener = lzma.open if path.endswith(".xz") else open
    truth = collections.defaultdict(list)
    with opener(path, "rt", newline="") as handle:
        rows = csv.DictReader(handle, delimiter="\t")
        missing = {"protein", "resid", "aa", "phi", "psi", "chi1", "ss8"} - set(rows.fieldnames or ())
        if missing:
            raise SystemExit(f"{path}: no column {', '.join(sorted(missing))}")
        for row in rows:
            numbers = {
                key: float(row.get(key) or math.nan)
                for key in ("phi", "psi", "chi1", "b_factor", "s2_contact")
            }
            # A negative contact order parameter marks a chain end where the model is not defined.
            if numbers["s2_contact"] < 0.0:
                numbers["s2_contact"] = math.nan
            truth[row["protein"]].append(
                Residue(int(row["resid"]), row["aa"], ss8=row["ss8"] or "-", **numbers)
            )
    return dict(truth)


def read_inputs(path):
    """{protein: text of its input table} from a folder or an archive."""
    tables = {}
    if os.path.isdir(path):
        for name in sorted(os.listdir(path)):
            if name.endswith(".tab"):
                with open(os.path.join(path, name)) as handle:
                    tables[name[:-4]] = handle.read()
        return tables
    with tarfile.open(path) as archive:
        for member in archive:
            if member.isfile() and member.name.endswith(".tab"):
                tables[os.path.basename(member.name)[:-4]] = archive.extractfile(member).read().decode()
    return tables


def is_shift_row(words):
    return len(words) == 4 and words[0].lstrip("-").isdigit()


def filter_shifts(text, keep):
    """The input table with the shift rows for which keep(atom, resid) holds; glycine's HA2 and HA3 count as
    HA."""
    lines = []
    for line in text.splitlines():
        words = line.split()
        if not is_shift_row(words) or keep(ATOM_NAMES.get(words[2], words[2]), int(words[0])):
            lines.append(line)
    return "\n".join(lines) + "\n"


def only_atoms(text, atoms):
    return filter_shifts(text, lambda atom, resid: atom in atoms)


def random_missing(name, text, share=RANDOM_SHARE):
    """Drops a share of the shifts at random; the choice depends on the protein's name only."""
    rng = np.random.default_rng(zlib.crc32(name.encode()))
    dropped = {}

    def keep(atom, resid):
        if (atom, resid) not in dropped:
            dropped[atom, resid] = rng.random() < share
        return not dropped[atom, resid]

    return filter_shifts(text, keep)


def sequence_of(text):
    """(number of the first residue, sequence) of an input table."""
    first, sequence = 1, ""
    for line in text.splitlines():
        words = line.split()
        if words[:2] == ["DATA", "FIRST_RESID"]:
            first = int(words[2])
        elif words[:2] == ["DATA", "SEQUENCE"]:
            sequence += "".join(words[2:])
    return first, sequence


def searched_residues(text, no_proton):
    """Residues that pass the completeness gate: at most one of r-1, r, r+1 misses more than its allowance."""
    first, sequence = sequence_of(text)
    present = collections.defaultdict(set)
    for line in text.splitlines():
        words = line.split()
        if is_shift_row(words) and float(words[3]) < 999.0:
            present[int(words[0])].add(ATOM_NAMES.get(words[2], words[2]))
    if not present:
        return set()
    counted = set(ATOMS) - (PROTONS if no_proton else set())
    end = first + len(sequence) - 1
    lowest, highest = min(present), max(present)
    highest += highest < end

    def incomplete(resid):
        code = sequence[resid - first] if first <= resid <= end else ""
        allowance = 4 if code == "P" or (code == "G" and no_proton) else 3
        return 6 - len(present.get(resid, set()) & counted) > allowance

    return {
        r
        for r in range(max(lowest, first) + 1, min(highest, end))
        if sum(incomplete(q) for q in (r - 1, r, r + 1)) <= 1
    }
