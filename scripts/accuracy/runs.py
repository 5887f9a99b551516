"""Runs the program on one protein and reads the tables that it writes."""

import collections
import os
import struct
import subprocess
import sys
import tempfile

import numpy as np
from accuracy import proteins

# title; which shifts are kept (function of protein name and table); program options
Variant = collections.namedtuple("Variant", "title keep options")
VARIANTS = {
    "observed": Variant("all observed shifts", lambda name, text: text, ()),
    "no-1H": Variant(
        "no 1H (`-noproton`)",
        lambda name, text: proteins.only_atoms(text, {"N", "C", "CA", "CB"}),
        ("-noproton",),
    ),
    "CA-CB-N-HN": Variant(
        "CA CB N HN only", lambda name, text: proteins.only_atoms(text, {"CA", "CB", "N", "HN"}), ()
    ),
    "missing-20": Variant("20 % missing at random", proteins.random_missing, ()),
    "HN-N": Variant("HN and N only", lambda name, text: proteins.only_atoms(text, {"HN", "N"}), ()),
}
CHECKPOINT = ("-seqSS", "-blast_check", "in.check", "-in", "in.tab")
CHECKPOINT_ORDER = "ARNDCQEGHILKMFPSTWYV"

Output = collections.namedtuple("Output", "torsions structure chi1 order scored failure")


def read_rows(path):
    """Rows of an output table by residue number; empty when the file is missing."""
    rows, columns = {}, []
    if not os.path.exists(path):
        return rows
    with open(path) as handle:
        for line in handle:
            words = line.split()
            if words[:1] == ["VARS"]:
                columns = words[1:]
            elif columns and len(words) == len(columns) and words[0].lstrip("-").isdigit():
                rows[int(words[0])] = dict(zip(columns, words))
    return rows


def scored_residues(path):
    """Residues whose DIST is a matching score and no distance: the lowest of their matches in the table of all
    matches is not positive (docs/COLUMNS.md)."""
    scored, columns = set(), []
    if not os.path.exists(path):
        return scored
    with open(path) as handle:
        for line in handle:
            words = line.split()
            if words[:1] == ["VARS"]:
                columns = words[1:]
            elif columns and len(words) == len(columns) and words[0].isdigit():
                if float(words[columns.index("DIST")]) <= 0.0:
                    scored.add(int(words[columns.index("RESID_Q_CENTER")]))
    return scored


def run(program, files, arguments):
    """Runs the program in a folder of its own that holds `files` (name -> bytes)."""
    # Option values cannot hold a hyphen, so the inputs are named relative to the folder.
    with tempfile.TemporaryDirectory() as folder:
        for name, content in files.items():
            with open(os.path.join(folder, name), "wb") as handle:
                handle.write(content)
        result = subprocess.run(
            [program, *arguments], cwd=folder, capture_output=True, text=True, errors="replace", check=False
        )
        tables = [read_rows(os.path.join(folder, f"pred{part}.tab")) for part in ("", "SS", "Chi1", "S2")]
        scored = scored_residues(os.path.join(folder, "predAll.tab"))
    last = (result.stderr.strip().splitlines() or ["no message"])[-1].strip()
    return Output(
        *tables, scored, "" if result.returncode == 0 and tables[1] else f"status {result.returncode}: {last}"
    )


def predict(program, text, options):
    """The whole prediction from an input table."""
    return run(program, {"in.tab": text.encode()}, ["-in", "in.tab", *options])


def predict_from_profile(program, text, checkpoint):
    """Secondary structure from a sequence profile alone; the input table gives the residue numbers."""
    return run(program, {"in.tab": text.encode(), "in.check": checkpoint}, CHECKPOINT)


def pseudo_checkpoint(sequence):
    """Checkpoint of a sequence without relatives: a column holds the frequencies that substitution scores
    predict."""
    training = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "training")
    if training not in sys.path:
        sys.path.append(training)
    from reference import literature  # BLOSUM62 in half bits and background frequencies

    background = np.array([literature.BACKGROUND[code] for code in CHECKPOINT_ORDER])
    content = struct.pack("=i", len(sequence)) + sequence.encode()
    for code in sequence.upper():
        column = background
        if code in CHECKPOINT_ORDER:
            scores = np.array([literature.BLOSUM62[code][other] for other in CHECKPOINT_ORDER], float)
            column = background * np.exp(0.5 * np.log(2.0) * scores)
        content += struct.pack("=20d", *(column / column.sum()))
    return content


def find_checkpoint(folder, name):
    """Bytes of the protein's checkpoint in the folder; None when there is none."""
    for ending in (".check", ".chk"):
        path = os.path.join(folder, name + ending)
        if os.path.exists(path):
            with open(path, "rb") as handle:
                return handle.read()
    return None
