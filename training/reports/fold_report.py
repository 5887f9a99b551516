#!/usr/bin/python3
"""The whole program on paired proteins that nothing behind its torsions has seen: for choices that must not
be made on validation proteins.

Takes one fold (homology clusters) out of the box networks of both levels, the hybrid network, the fragment
database and the triplet library, and runs the program over its proteins that have more than half of their
shifts, as observed. Prints the map error of both levels, the share accepted, the share wrong and the RMSD of
phi and psi. Structure and chi1 networks are those of the installation and have seen the proteins, so their
figures are not printed. Needs the cache of build.py with the stages inputs and folds; the second level and
the hybrid network of the fold are trained here once (15 minutes on one core) and kept there.
"""

import argparse
import csv
import json
import os
import subprocess
import sys

import numpy as np
import torch

sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.abspath(__file__))))

import build
import settings
from data import inputs as input_tables
from data.paired import assign_folds, read_training
from networks import boxes, chi1
from networks.ensemble import RELATED, UNRELATED
from networks.write_tables import write_level
from reference import database
from reference import tables as reference_tables

SCRIPTS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "scripts")


def fold_networks(proteins, extra, fold, cache):
    """(fold models, level 2 and hybrid network that have not seen the fold)."""
    data = input_tables.prepare(proteins + extra.simulated, None, None, cache.folder, extra.pool)
    per_protein = assign_folds(proteins, settings.FOLDS, settings.SEED)
    per_protein += [RELATED if protein.related else UNRELATED for protein in extra.simulated]
    folds = np.array(per_protein)[data.chain]
    fold_model = cache.get("surf20-folds", None)
    level2 = cache.get(
        f"surf20-level2-without{fold}",
        lambda: boxes.train_level2(
            boxes.BoxWindows(data, "surf20"), fold_model, folds, settings.BOX_LEVEL2_EPOCHS, fold
        ),
    )
    hybrid = cache.get(
        f"surf20-hyb-without{fold}",
        lambda: boxes.train_level1(
            boxes.BoxWindows(data, "surf20_hyb"), settings.HYBRID_EPOCHS, "surf20_hyb", folds, fold
        ),
    )
    print_map_errors(boxes.BoxWindows(data, "surf20"), fold_model, level2, folds, fold)
    return fold_model, level2, hybrid


@torch.no_grad()
def print_map_errors(windows, fold_model, level2, folds, fold):
    """Squared difference from the bump, summed over the boxes, on the windows of the fold with their shifts
    as observed."""
    observed = windows.inputs.variants.index("observed")
    maps = boxes.level1_maps(fold_model, windows, observed, folds)
    centres = np.nonzero(windows.usable[observed] & windows.inputs.real & (folds == fold))[0]
    around = maps[windows.rows[observed][centres]]
    second = np.concatenate(
        [
            level2(torch.from_numpy(part)).mean(dim=0).numpy()
            for part in np.array_split(around, len(around) // 2048 + 1)
        ]
    )
    errors = [
        ((found - windows.targets(centres)) ** 2).sum(axis=1).mean() for found in (around[:, 2], second)
    ]
    print("map error of {} windows: level 1 {:.4f}, level 2 {:.4f}".format(len(centres), *errors), flush=True)


def fold_installation(options, proteins, own, extra, networks, cache):
    """Writes the installation without the proteins `own`; returns its folder."""
    fold_model, level2, hybrid = networks
    weights = boxes.box_weights()
    home = chi1.fold_home(
        options.home, os.path.join(cache.folder, "report"), fold_model, options.fold, weights
    )
    tab = os.path.join(home, "tab")
    for name in os.listdir(tab):
        if name.startswith(("surf20.level2.", "surf20_hyb.", "orbel.tab", "orbel_obsCS.tab")):
            os.remove(os.path.join(tab, name))
    write_level(tab, "surf20", 2, boxes.smoothed(level2.layers(weights), weights), "Fold held out")
    write_level(tab, "surf20_hyb", 1, boxes.smoothed(hybrid.layers(weights), weights), "Fold held out")
    database.write_libraries(
        tab,
        proteins,
        reference_tables.fit_reference(proteins),
        extra.paired,
        extra.database,
        own | chi1.related_chains(own, extra),
    )
    return home


def write_proteins(folder, proteins):
    """Input tables and truth.tsv of the proteins; returns their number."""
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, "truth.tsv"), "w", newline="") as handle:
        rows = csv.writer(handle, delimiter="\t")
        rows.writerow(("protein", "resid", "aa", "phi", "psi", "chi1", "ss8"))
        for protein in proteins:
            input_tables.write_input(
                os.path.join(folder, protein.name + ".tab"), protein, np.isfinite(protein.shifts)
            )
            for values in zip(
                protein.resid, protein.code, protein.phi, protein.psi, protein.chi1, protein.ss8
            ):
                rows.writerow([protein.name, *("" if value != value else value for value in values)])
    return len(proteins)


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter
    )
    parser.add_argument("--paired", required=True, help="folder of the paired data, as for build.py")
    parser.add_argument("--structures", required=True, help="folder of the structures data, as for build.py")
    parser.add_argument("--cache", required=True, help="folder of the results of build.py's stages")
    parser.add_argument("--home", required=True, help="installation that these stages made")
    parser.add_argument("--program", required=True, help="the built program")
    parser.add_argument(
        "--fold", type=int, default=0, choices=range(settings.FOLDS), help="default %(default)s"
    )
    parser.add_argument(
        "--smoothing",
        type=float,
        default=settings.BOX_SMOOTHING,
        help="of the maps, boxes; default %(default)s",
    )
    options = parser.parse_args()
    settings.BOX_SMOOTHING = options.smoothing
    torch.set_num_threads(settings.THREADS)
    torch.set_flush_denormal(True)
    options.home = os.path.abspath(options.home)
    for name in ("predicted.pt", "inputs.npz", "surf20-folds.pt"):
        if not os.path.exists(os.path.join(options.cache, name)):
            sys.exit(f"no {name} in {options.cache}: run build.py first")
    if not os.path.isdir(os.path.join(options.home, "tab")):
        sys.exit(
            f"no folder tab in {options.home}: give --home the folder that build.py wrote to (its --out)"
        )
    cache = build.Cache(options.cache)
    proteins = read_training(options.paired)
    folds = assign_folds(proteins, settings.FOLDS, settings.SEED)
    extra = build.predict_shifts(proteins, reference_tables.fit_reference(proteins), options, cache)
    networks = fold_networks(proteins, extra, options.fold, cache)
    own = {protein.name for protein, fold in zip(proteins, folds) if fold == options.fold}
    home = fold_installation(options, proteins, own, extra, networks, cache)

    inputs = os.path.join(cache.folder, "report", f"inputs{options.fold}")
    count = write_proteins(
        inputs,
        [
            protein
            for protein in read_training(options.paired, corrected=False)
            if protein.name in own and np.isfinite(protein.shifts).mean() > 0.5
        ],
    )
    figures = os.path.join(inputs, "figures.json")
    subprocess.run(
        [
            sys.executable,
            os.path.join(SCRIPTS, "accuracy.py"),
            "--program",
            options.program,
            "--inputs",
            inputs,
            "--truth",
            os.path.join(inputs, "truth.tsv"),
            "--variants",
            "observed",
            "--json",
            figures,
        ],
        check=True,
        env=dict(os.environ, ORBELN_DIR=home),
        stdout=subprocess.DEVNULL,
    )
    with open(figures) as handle:
        torsions = json.load(handle)["observed"]["torsions"]
    print(
        f"{count} proteins of fold {options.fold}; percent or degrees, in brackets the 95 % interval over proteins:"
    )
    for label in ("searched", "accepted", "accepted of searched", "wrong", "RMSD phi", "RMSD psi"):
        print(f"  {label:22s}" + "{:6.2f}  ({:.2f} to {:.2f})".format(*torsions[label]))


if __name__ == "__main__":
    main()
