"""Which sequences must not be trained on when a paired protein is evaluated: cluster labels and blastp."""

import os
import subprocess

import numpy as np

import settings


def make_database(sequences, folder):
    """BLAST database of {name: sequence} in `folder`; returns its name."""
    os.makedirs(folder, exist_ok=True)
    base = os.path.join(folder, "sequences")
    with open(base + ".fa", "w") as handle:
        handle.writelines(f">{name}\n{sequence}\n" for name, sequence in sequences.items())
    subprocess.run(
        ["makeblastdb", "-in", base + ".fa", "-dbtype", "prot", "-out", base],
        check=True,
        stdout=subprocess.DEVNULL,
    )
    return base


def blast_pairs(sequences, database, folder):
    """Set of (query, subject) names with a local alignment below settings.RELATED_EVALUE."""
    query, table = os.path.join(folder, "query.fa"), os.path.join(folder, "pairs.tsv")
    with open(query, "w") as handle:
        handle.writelines(f">{name}\n{sequence}\n" for name, sequence in sequences.items())
    subprocess.run(
        [
            "blastp",
            "-query",
            query,
            "-db",
            database,
            "-evalue",
            str(settings.RELATED_EVALUE),
            "-max_target_seqs",
            "5000",
            "-outfmt",
            "6 qseqid sseqid",
            "-out",
            table,
        ],
        check=True,
        stderr=subprocess.DEVNULL,
    )
    with open(table) as handle:
        return {tuple(line.split()) for line in handle}


def hold_out(proteins, folds, chains, pairs, names):
    """Sequences x settings.FOLDS, boolean: True where the sequence is held out of the fold's model.

    Sequences are the paired proteins, then the chains, `names` in this order. A chain is held out of fold k
    when its 30 % cluster holds a protein of fold k or a blastp hit of one; chains without paired relatives
    get one fold per cluster, so that every sequence has a model that has not seen it.
    """
    row = {name: k for k, name in enumerate(names)}
    held = np.zeros((len(names), settings.FOLDS), bool)
    held[np.arange(len(proteins)), folds] = True
    own = held[: len(proteins)].copy()
    fold_of = {protein.name: fold for protein, fold in zip(proteins, folds)}
    by_cluster = {}
    for k, chain in enumerate(chains):
        by_cluster.setdefault(chain.cl30, []).append(len(proteins) + k)
        for name in chain.paired:
            if name in fold_of:
                held[len(proteins) + k, fold_of[name]] = True
    for query, subject in pairs:
        held[row[subject]] |= own[row[query]]
    rng = np.random.default_rng(settings.SEED)
    for label in sorted(by_cluster):
        members = by_cluster[label]
        held[members] = held[members].any(axis=0)
        if not held[members[0]].any():
            held[members, rng.integers(settings.FOLDS)] = True
    return held
