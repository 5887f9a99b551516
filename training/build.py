#!/usr/bin/python3
"""Builds an installation (a folder of tables) from the paired data: python3 build.py --help"""

import argparse
import os
import sys
import time
from types import SimpleNamespace

import numpy as np
import torch

import settings
from data import inputs as input_tables
from data import structures
from data.paired import assign_folds, read_training, shift_entries
from networks import boxes, chi1, sequence_stage, structure
from networks.ensemble import RELATED, UNRELATED, evaluate_layers
from networks.write_tables import read_level, write_level
from reference import database
from reference import tables as reference_tables
from shift_model.predict import PredictedShifts

QUICK_PROTEINS = 40
QUICK_CHAINS = 40
STAGES = ("reference", "inputs", "folds", "hybrid", "level1", "structure", "sequence", "chi1")
NO_STRUCTURES = SimpleNamespace(paired={}, database=[], simulated=[], relatives={}, pool=None)


class Cache:
    """Results of finished stages, one file each; delete a file (or the folder) to run its stage again."""

    def __init__(self, folder):
        self.folder = folder
        os.makedirs(folder, exist_ok=True)

    def get(self, name, make):
        path = os.path.join(self.folder, name + ".pt")
        if os.path.exists(path):
            return torch.load(path)
        start = time.time()
        print(f"{name} ...", flush=True)
        result = make()
        torch.save(result, path)
        print(f"{name}: {time.time() - start:.0f} s", flush=True)
        return result


def write_checked(tab, name, level, layers, remark):
    """Writes one level and compares the written tables with the layers on random inputs."""
    write_level(tab, name, level, layers, remark)
    stored = read_level(tab, name, level, len(layers[0][0]))
    x = np.random.default_rng(0).standard_normal((32, layers[0][0].shape[2]))
    wanted, got = evaluate_layers(layers, x), evaluate_layers(stored, x)
    worst = np.abs(wanted - got).max() / max(1.0, np.abs(wanted).max())
    if worst > 5e-3:
        raise RuntimeError(
            f"{name} level {level}: written tables differ by {worst:.2g} of the largest output"
        )


def build_boxes(data, folds, cache, tab, stages):
    """folds: the fold models and the second level on their maps; hybrid, level1: networks of all proteins."""
    weights = boxes.box_weights()
    remark = "Phi/psi box network, output times box weight = exp(-d^2/%g), d in boxes."
    width = 2.0 * (1.0 + settings.BOX_SMOOTHING**2)
    if "folds" in stages:
        windows = boxes.BoxWindows(data, "surf20")
        fold_model = cache.get(
            "surf20-folds",
            lambda: boxes.train_level1(windows, settings.BOX_FOLD_EPOCHS, "surf20 folds", folds),
        )
        level2 = cache.get(
            "surf20-level2",
            lambda: boxes.train_level2(windows, fold_model, folds, settings.BOX_LEVEL2_EPOCHS),
        )
        write_checked(tab, "surf20", 2, boxes.smoothed(level2.layers(weights), weights), remark % width)
    if "hybrid" in stages:
        hybrid = cache.get(
            "surf20-hyb",
            lambda: boxes.train_level1(
                boxes.BoxWindows(data, "surf20_hyb"), settings.HYBRID_EPOCHS, "surf20_hyb"
            ),
        )
        write_checked(tab, "surf20_hyb", 1, boxes.smoothed(hybrid.layers(weights), weights), remark % width)
    if "level1" in stages:
        level1 = cache.get(
            "surf20-level1",
            lambda: boxes.train_level1(
                boxes.BoxWindows(data, "surf20"), settings.BOX_EPOCHS, "surf20 level 1"
            ),
        )
        write_checked(tab, "surf20", 1, level1.layers(weights), remark % 2)


def build_structure(data, folds, cache, tab):
    """All shift-based networks; returns the out-of-fold combined prediction as context of the sequence
    network."""
    held_out = {}
    for number, name in enumerate(structure.NETWORKS):
        level1, level2, held_out[name] = cache.get(
            name, lambda: structure.train_network(data, name, folds, settings.SEED + number)
        )
        remark = "Secondary structure from shifts; outputs helix, strand, coil."
        write_checked(tab, name, 1, level1, remark)
        write_checked(tab, name, 2, level2, remark)
    return structure.normalised(0.5 * (held_out["ss"] + held_out["ss5"]))


def build_sequence(data, protein_folds, context, options, cache, tab):
    """seqSS and seqSS15, on the paired proteins and, where given, the chains without shifts."""
    chains = structures.read_chains(options.structures, options.cache) if options.structures else []
    chains = [chain for chain in chains if structures.usable(chain)][
        : QUICK_CHAINS if options.quick else None
    ]
    proteins = [protein for protein in data.proteins if protein.variants is None]
    stage = sequence_stage.SequenceStage(proteins, protein_folds[: len(proteins)], chains, options.cache)
    networks = {
        "seqSS": sequence_stage.train_seqss(stage, context[: sum(map(len, proteins))], cache),
        "seqSS15": sequence_stage.train_seqss15(stage, options.blastdb, cache),
    }
    for name, (level1, level2) in networks.items():
        remark = "Secondary structure from sequence; outputs helix, strand, coil."
        write_checked(tab, name, 1, level1, remark)
        write_checked(tab, name, 2, level2, remark)


def predict_shifts(proteins, reference, options, cache):
    """Shifts of the chains without shifts: database records and simulated training proteins."""
    if not options.structures:
        return NO_STRUCTURES

    def make():
        entries = shift_entries(options.paired)
        return PredictedShifts(proteins, entries, reference, options.structures, options.cache)

    predicted = cache.get("predicted", make)
    related = cache.get("relatives", lambda: predicted.relatives_of(proteins, options.cache))
    return SimpleNamespace(
        paired=predicted.paired,
        database=predicted.database_chains(),
        relatives=related,
        pool=predicted.pool,
        simulated=predicted.simulated(proteins, reference, set().union(*related.values())),
    )


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument(
        "--paired", required=True, help="folder of train.tsv.xz, train-more.tsv.xz, proteins*.tsv"
    )
    parser.add_argument(
        "--structures",
        help="folder of chains.tsv, residues.tsv.xz, phipsi_dssp.tsv.xz, "
        "refdb_map.tsv, refdb_residues.tsv.xz",
    )
    parser.add_argument("--blastdb", help="large BLAST database for the profiles of the sequence networks")
    parser.add_argument("--out", required=True, help="installation folder; the tables go to its tab/")
    parser.add_argument("--cache", required=True, help="folder of the stages' results")
    parser.add_argument("--dump", required=True, help="path of the built orbeln-dump")
    parser.add_argument("--stages", default=",".join(STAGES), help="stages to run, default all: %(default)s")
    parser.add_argument("--threads", type=int, default=settings.THREADS, help="threads of one process")
    parser.add_argument(
        "--quick", action="store_true", help="a few proteins and one epoch each: a test of the kit"
    )
    options = parser.parse_args()
    stages = options.stages.split(",")
    unknown = set(stages) - set(STAGES)
    if unknown:
        parser.error(f"no such stage: {', '.join(sorted(unknown))} (stages: {', '.join(STAGES)})")
    torch.set_num_threads(options.threads)
    torch.set_flush_denormal(True)
    tab, cache = os.path.join(options.out, "tab"), Cache(options.cache)
    os.makedirs(tab, exist_ok=True)
    home, tool = os.path.abspath(options.out), os.path.abspath(options.dump)

    proteins = read_training(options.paired)
    if options.quick:
        proteins = proteins[:QUICK_PROTEINS]
        for name in [name for name in vars(settings) if name.endswith("_EPOCHS")]:
            setattr(settings, name, 1)
    reference = reference_tables.fit_reference(proteins)
    extra = predict_shifts(proteins, reference, options, cache)
    if "reference" in stages:
        reference_tables.write_reference_tables(proteins, tab)
        print(
            "database records, triplets:",
            database.write_libraries(tab, proteins, reference, extra.paired, extra.database),
        )
    protein_folds = np.array(
        assign_folds(proteins, settings.FOLDS, settings.SEED)
        + [RELATED if protein.related else UNRELATED for protein in extra.simulated]
    )
    boxes_wanted = {"folds", "hybrid", "level1"} & set(stages)
    if boxes_wanted | {"inputs", "structure", "sequence"} & set(stages):
        data = input_tables.prepare(
            proteins + extra.simulated, tool, home, os.path.abspath(options.cache), extra.pool
        )
        folds = protein_folds[data.chain]
    if boxes_wanted:
        build_boxes(data, folds, cache, tab, boxes_wanted)
    if {"structure", "sequence"} & set(stages):
        context = build_structure(data, folds, cache, tab)
    if "sequence" in stages:
        build_sequence(data, protein_folds, context, options, cache, tab)
    if "chi1" in stages:
        own_folds = protein_folds[: len(proteins)]
        fold_model = cache.get(
            "surf20-folds", lambda: sys.exit("stage chi1 needs the fold models of stage folds")
        )
        simulated, simulated_folds = chi1.simulated_relatives(proteins, own_folds, extra)
        if options.quick:
            simulated, simulated_folds = simulated[:QUICK_CHAINS], simulated_folds[:QUICK_CHAINS]
        queries, query_folds = proteins + simulated, np.concatenate([own_folds, simulated_folds])
        candidates = chi1.dump_candidates(
            queries,
            query_folds,
            reference,
            extra,
            fold_model,
            boxes.box_weights(),
            tool,
            home,
            os.path.abspath(options.cache),
        )
        chi1.train_all(queries, query_folds, candidates, tab)


if __name__ == "__main__":
    main()
