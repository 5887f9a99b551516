#!/usr/bin/python3
"""Sequence profiles by psiblast, in the checkpoint form that the program reads with -blast_check: profiles.py
--help"""

import argparse
import os
import re
import struct
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

import numpy as np

from data.textables import read_table
from reference import literature

ORDER = literature.BLOSUM_ORDER  # columns of a checkpoint row
STANDARD_ORDER = "-ABCDEFGHIKLMNPQRSTVWXYZU*OJ"  # rows of a column of psiblast's PSSM
# Iterations and inclusion limit; more iterations on a small database only let errors in.
SEARCH = ("-num_iterations", "3", "-inclusion_ethresh", "0.001", "-evalue", "0.001", "-num_threads", "1")
HALF_BIT = 0.5 * np.log(2.0)
BACKGROUND = np.array([literature.BACKGROUND[code] for code in ORDER])
SCORES = np.array([[literature.BLOSUM62[a][b] for b in ORDER] for a in ORDER], float)
REAL = re.compile(r"\{ (-?\d+), 10, (-?\d+) \}")


def substitution_probabilities():
    """20 x 20: the profile row of a residue with no relative, by its type; rows sum to 1."""
    rows = BACKGROUND * np.exp(HALF_BIT * SCORES)
    return rows / rows.sum(axis=1, keepdims=True)


def single_sequence_profile(sequence):
    """Profile (residues x 20) of a sequence alone; residues of unknown type get the background."""
    rows = np.vstack([substitution_probabilities(), BACKGROUND])
    return rows[[ORDER.find(code) for code in sequence]]


def _frequencies(text, sequence):
    """Frequencies (residues x 20, ORDER) in a PSSM written by -out_pssm; columns without any stay
    single-sequence."""
    profile = single_sequence_profile(sequence)
    start = text.find("freqRatios {")
    if start < 0:
        return profile
    block = text[start : text.index("}\n      }", start) + 1]
    values = [float(f"{mantissa}e{exponent}") for mantissa, exponent in REAL.findall(block)]
    table = np.array(values).reshape(-1, len(STANDARD_ORDER))[
        :, [STANDARD_ORDER.index(code) for code in ORDER]
    ]
    if len(table) != len(sequence):
        raise ValueError("PSSM and sequence differ in length")
    total = table.sum(axis=1)
    good = total > 0.5
    profile[good] = table[good] / total[good, None]
    return profile


def search(sequence, database):
    """Profile (residues x 20, rows sum to 1) of one sequence by psiblast against a BLAST database."""
    with tempfile.TemporaryDirectory() as folder:
        query, pssm = os.path.join(folder, "query.fa"), os.path.join(folder, "pssm")
        with open(query, "w") as handle:
            handle.write(f">query\n{sequence}\n")
        command = [
            "psiblast",
            "-query",
            query,
            "-db",
            database,
            *SEARCH,
            "-outfmt",
            "6",
            "-out",
            os.devnull,
            "-out_pssm",
            pssm,
            "-save_pssm_after_last_round",
        ]
        done = subprocess.run(command, capture_output=True, text=True, check=False)
        if done.returncode != 0:
            raise RuntimeError(f"psiblast failed: {done.stderr.strip()}")
        if not os.path.exists(pssm) or os.path.getsize(pssm) == 0:  # no relative found
            return single_sequence_profile(sequence)
        with open(pssm) as handle:
            return _frequencies(handle.read(), sequence)


def search_all(sequences, database, folder, processes):
    """Profiles of {name: sequence}, kept one file each in `folder`; only those not there yet are searched."""
    os.makedirs(folder, exist_ok=True)
    path = {name: os.path.join(folder, name + ".npy") for name in sequences}
    missing = [name for name in sequences if not os.path.exists(path[name])]

    def one(name):
        profile = search(sequences[name], database).astype(np.float32)
        np.save(path[name] + ".part.npy", profile)
        os.replace(path[name] + ".part.npy", path[name])

    with ThreadPoolExecutor(processes) as pool:
        for count, _ in enumerate(pool.map(one, missing), 1):
            if count % 10 and count < len(missing):
                continue
            bar = "#" * (40 * count // len(missing))
            print(f"\r  profiles [{bar:40}] {count}/{len(missing)}", end="", file=sys.stderr, flush=True)
    if missing:
        print(file=sys.stderr)
    return {name: np.load(path[name]) for name in sequences}


def write_checkpoint(path, sequence, profile):
    """32-bit length, one letter a residue, then 20 doubles a residue."""
    with open(path, "wb") as handle:
        handle.write(struct.pack("=i", len(sequence)))
        handle.write(sequence.encode())
        handle.write(np.ascontiguousarray(profile, np.float64).tobytes())


def read_sequence(path):
    """Sequence of a FASTA file (first record) or of an input shift table (DATA SEQUENCE lines)."""
    with open(path) as handle:
        lines = handle.read().splitlines()
    if lines and lines[0].startswith(">"):
        end = next((k for k, line in enumerate(lines[1:], 1) if line.startswith(">")), len(lines))
        text = "".join(lines[1:end])
    else:
        text = read_table(path)[1].get("SEQUENCE", "")
    return "".join(text.split()).upper()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--database", required=True, help="BLAST database (makeblastdb -dbtype prot)")
    parser.add_argument(
        "--input", required=True, help="FASTA file, or input shift table with DATA SEQUENCE lines"
    )
    parser.add_argument("--out", required=True, help="checkpoint file for -blast_check")
    options = parser.parse_args()
    sequence = read_sequence(options.input)
    if not sequence:
        sys.exit(f"no sequence in {options.input}")
    write_checkpoint(options.out, sequence, search(sequence, options.database))


if __name__ == "__main__":
    main()
