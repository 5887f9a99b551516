#!/usr/bin/python3
"""How well the triplet library predicts hidden shifts, for the settings of the triplet distance and for
others.

Hides shifts of paired proteins (variant masks of inputs.py), lets the program's own averaging estimate them
from a library without the protein's homology cluster (orbeln-dump inputs), and prints the RMSD per nucleus
beside two that need no library: the coil value (secondary shift 0) and the mean of the residue type. `--vary`
tries other settings one by one.
"""

import argparse
import os
import shutil
import sys
import tempfile

import numpy as np

sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.abspath(__file__))))

import settings
from data import inputs as input_tables
from data.paired import read_training
from reference import tables as reference_tables

HIDING = ("nuclei", "random_heavy")
COLUMNS = [settings.VECTOR_ATOMS.index(atom) for atom in settings.ATOMS]
OTHERS = {
    "TRIPLET_OUTER_WEIGHT": (0.22, 0.5),
    "TRIPLET_MISSING_COST": (0.8, 1.6),
    "TRIPLET_HOMOLOGY": ((0.06, 0.10, 0.06), (0.24, 0.40, 0.24), (0.48, 0.80, 0.48)),
}


def hidden_shifts(data):
    """(true, estimated, residue type) of all hidden shifts with an estimate: one array per nucleus in atom
    order each."""
    shown = data.vectors[0]
    true, estimated, types = [[] for _ in COLUMNS], [[] for _ in COLUMNS], [[] for _ in COLUMNS]
    kinds = np.frombuffer(data.code.encode(), np.uint8)
    for name in HIDING:
        vectors = data.vectors[data.variants.index(name)]
        for k, column in enumerate(COLUMNS):
            hidden = (shown[:, 2 * column + 1] == 0.0) & (vectors[:, 2 * column + 1] == 1.0)
            hidden &= vectors[:, 2 * column] != 0.0  # 0 = the triplet was not complete enough
            true[k].append(shown[hidden, 2 * column])
            estimated[k].append(vectors[hidden, 2 * column])
            types[k].append(kinds[hidden])
    return [[np.concatenate(part) for part in parts] for parts in (true, estimated, types)]


def type_means(data):
    """Mean secondary shift per residue type and nucleus: {(type, place in atom order): ppm}."""
    kinds = np.frombuffer(data.code.encode(), np.uint8)
    means = {}
    for k, column in enumerate(COLUMNS):
        value = np.where(data.vectors[0][:, 2 * column + 1] == 0.0, data.vectors[0][:, 2 * column], np.nan)
        for kind in np.unique(kinds):
            known = value[(kinds == kind) & np.isfinite(value)]
            means[kind, k] = known.mean() if len(known) else 0.0
    return means


def rms(errors):
    return float(np.sqrt(np.mean(np.square(errors))))


def line(label, values, spread):
    score = np.mean([value / s for value, s in zip(values, spread)])
    print(f"{label:44s}" + "".join(f"{value:8.3f}" for value in values) + f"{score:8.3f}", flush=True)


def estimates(proteins, everyone, tool, home):
    """Inputs of the proteins with the weight table of the current settings."""
    reference = reference_tables.fit_reference(everyone)
    with tempfile.TemporaryDirectory(prefix="triplets") as folder:
        tab = os.path.join(folder, "tab")
        shutil.copytree(
            os.path.join(home, "tab"),
            tab,
            ignore=lambda _, names: {
                name for name in names if ".level" in name or name in ("orbel.tab", "weight.tab")
            },
        )
        reference_tables.write_triplet_weights(everyone, reference, tab)
        return input_tables.prepare(proteins, tool, folder, folder)


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter
    )
    parser.add_argument("--paired", required=True, help="folder of the paired data, as for build.py")
    parser.add_argument(
        "--home", required=True, help="installation whose tab/ holds the reference tables and the library"
    )
    parser.add_argument("--dump", required=True, help="path of the built orbeln-dump")
    parser.add_argument("--every", type=int, default=4, help="takes every n-th protein (default %(default)s)")
    parser.add_argument("--vary", action="store_true", help="also tries other settings, one at a time")
    options = parser.parse_args()
    everyone = read_training(options.paired)
    proteins = everyone[:: options.every]
    settings.VARIANTS = {name: settings.VARIANTS[name] for name in ("observed",) + HIDING}
    home, tool = os.path.abspath(options.home), os.path.abspath(options.dump)

    data = estimates(proteins, everyone, tool, home)
    true, estimated, kinds = hidden_shifts(data)
    means = type_means(data)
    print(
        f"{len(proteins)} proteins, hidden shifts "
        + " ".join(f"{atom} {len(values)}" for atom, values in zip(settings.ATOMS, true))
    )
    print(f"{'RMSD, ppm':44s}" + "".join(f"{atom:>8s}" for atom in settings.ATOMS) + "   score")
    spread = [rms(values) for values in true]
    line("coil value", spread, spread)
    line(
        "mean of the type",
        [rms(values - [means[kind, k] for kind in kinds[k]]) for k, values in enumerate(true)],
        spread,
    )
    line("triplets", [rms(a - b) for a, b in zip(true, estimated)], spread)
    for name, values in (OTHERS if options.vary else {}).items():
        kept = getattr(settings, name)
        for value in values:
            setattr(settings, name, value)
            true, estimated, _ = hidden_shifts(estimates(proteins, everyone, tool, home))
            line(f"{name} {value}", [rms(a - b) for a, b in zip(true, estimated)], spread)
        setattr(settings, name, kept)
    return 0


if __name__ == "__main__":
    sys.exit(main())
