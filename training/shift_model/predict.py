"""Predicted shifts of the chains without shifts: surroundings, fit on the paired proteins, prediction of
every chain."""

import csv
import difflib
import multiprocessing
import os
from types import SimpleNamespace

import numpy as np

import settings
from data import relatives, structures
from data.paired import assign_folds
from shift_model import simulate, surroundings
from shift_model.model import ShiftModel, features

COORDINATES = tuple(f"{atom}{axis}" for atom in ("N", "CA", "C", "O", "CB") for axis in "xyz")
COLUMNS = ("aa", "ss8", "flags", "bmc") + structures.ANGLES + COORDINATES + ("ring",)
RING_ATOMS = {"F": 6, "Y": 6, "H": 5, "W": 9}
SHORTEST_BLOCK = 4  # residues of an aligned piece


def _numbers(column):
    return np.array([float(cell) if cell else np.nan for cell in column])


def _rings(code, column):
    """(residue, type, atoms x 3) of every complete aromatic ring."""
    rings = []
    for k, text in enumerate(column):
        atoms = np.array([[float(x) for x in atom.split(",")] for atom in text.split(";")]) if text else ()
        if len(atoms) and len(atoms) == RING_ATOMS.get(code[k]):
            rings.append((k, code[k], atoms))
    return rings


def _describe(item):
    """Everything the shift model needs of one chain."""
    name, (aa, ss8, flags, b, *numeric, ring) = item
    angles = np.stack([_numbers(column) for column in numeric[:5]], axis=1).astype(np.float32)
    xyz = np.stack([_numbers(column) for column in numeric[5:]], axis=1).reshape(-1, 5, 3)
    breaks = np.array(["b" in flag for flag in flags])
    bonded = ~breaks
    bonded[0] = False
    with np.errstate(invalid="ignore"):
        terms = surroundings.surroundings(xyz, bonded, aa, _rings(aa, ring))
    return SimpleNamespace(
        name=name,
        code="".join(aa),
        ss8="".join(letter or "-" for letter in ss8),
        angles=angles,
        breaks=breaks,
        b=_numbers(b),
        terms=terms,
    )


def described_chains(folder, table):
    """{name: chain} of one packed table with coordinates (multiprocessing, some minutes for the large
    one)."""
    with multiprocessing.Pool(settings.PROCESSES) as pool:
        rows = structures.table_rows(os.path.join(folder, table), COLUMNS)
        chains = {}
        for count, chain in enumerate(pool.imap(_describe, rows, chunksize=8), 1):
            chains[chain.name] = chain
            if count % 500 == 0:
                print(f"  surroundings: {count} chains of {table}", flush=True)
    return chains


def _same_residues(protein, chain):
    """Row of the chain for every residue of the protein, -1 = none."""
    rows = np.full(len(protein), -1)
    matcher = difflib.SequenceMatcher(None, "".join(protein.code).upper(), chain.code.upper(), autojunk=False)
    for first, second, size in matcher.get_matching_blocks():
        if size >= SHORTEST_BLOCK:
            rows[first : first + size] = np.arange(second, second + size)
    return rows


def _agreement(protein, chain, rows):
    """Share of the matched residues whose phi and psi agree within 30 degrees."""
    known = rows >= 0
    gaps = [
        np.abs((own[known] - chain.angles[rows[known], k] + 180.0) % 360.0 - 180.0)
        for k, own in enumerate((protein.phi, protein.psi))
    ]
    return ((gaps[0] < 30.0) & (gaps[1] < 30.0)).mean()


def coordinates_of(proteins, entries, folder, described):
    """[(protein, chain, rows)] of the paired proteins whose crystal chain is among the described ones: the
    chain that covers most with the same torsions. entries: {protein: shift entry number}."""
    candidates = {protein.name: set() for protein in proteins}
    with open(os.path.join(folder, "chains.tsv"), newline="") as handle:
        for row in csv.DictReader(handle, delimiter="\t"):
            for name in filter(None, row["paired"].split(",")):
                if row["class"] == "xray" and name in candidates:
                    candidates[name].add(row["chain"])
    by_entry = {}
    with open(os.path.join(folder, "refdb_map.tsv"), newline="") as handle:
        for row in csv.DictReader(handle, delimiter="\t"):
            if (
                row["method"] == "xray"
                and row["resolution"]
                and float(row["resolution"]) <= settings.WORST_RESOLUTION
            ):
                by_entry.setdefault(row["bmrb"], set()).add(row["chain"])
    found = []
    for protein in proteins:
        best = (0.0, None, None)
        for name in sorted(candidates[protein.name] | by_entry.get(entries.get(protein.name), set())):
            chain = described.get(name)
            if chain is None:
                continue
            rows = _same_residues(protein, chain)
            covered = (rows >= 0).mean()
            if covered >= 0.6 and _agreement(protein, chain, rows) > 0.75:
                best = max(
                    best, (covered * _agreement(protein, chain, rows), chain, rows), key=lambda item: item[0]
                )
        if best[1] is not None:
            found.append((protein, best[1], best[2]))
    return found


class PredictedShifts:
    """Secondary shifts and expected errors (ppm) of all chains and of the paired proteins with coordinates.

    paired: {protein: (secondary, error)}, by models that never saw the protein's cluster, nan where unmatched
    chains: [structures.Chain], best first, with `secondary` and `error` in the same order; no withdrawn
    entries pool: prediction errors of the paired proteins in units of the expected error, see
    simulate.error_pool
    """

    def __init__(self, proteins, entries, reference, folder, cache_folder):
        chains = [
            chain
            for chain in structures.read_chains(folder, cache_folder)
            if chain.klass == "xray"
            and structures.usable(chain)
            and chain.resolution <= settings.WORST_RESOLUTION
        ]
        described = described_chains(folder, "residues.tsv.xz")
        known = coordinates_of(
            proteins, entries, folder, {**described_chains(folder, "refdb_residues.tsv.xz"), **described}
        )
        x = np.concatenate([features(chain)[rows[rows >= 0]] for _, chain, rows in known])
        y = np.concatenate([reference.secondary(protein)[rows >= 0] for protein, _, rows in known])
        sizes = [(rows >= 0).sum() for _, _, rows in known]
        folds = np.repeat(
            assign_folds([item[0] for item in known], settings.MODEL_FOLDS, settings.SEED), sizes
        )
        model = ShiftModel().fit(x, y, folds)
        print(
            f"  shift model: {len(known)} proteins, {len(x)} residues, held-out RMSD "
            + ", ".join(f"{atom} {value:.3f}" for atom, value in zip(settings.ATOMS, model.rmsd(y))),
            flush=True,
        )
        errors = model.expected_error(x)
        self.paired, row = {}, 0
        for (protein, _, rows), size in zip(known, sizes):
            table = np.full((2, len(protein), 6), np.nan)
            table[:, rows >= 0] = model.held_out[row : row + size], errors[row : row + size]
            self.paired[protein.name] = (table[0], table[1])
            row += size
        starts = np.zeros(len(x), bool)
        starts[np.cumsum([0] + sizes[:-1])] = True
        self.pool = simulate.error_pool((y - model.held_out) / errors, starts)
        self.chains, self.secondary, self.error = chains, [], []
        for count, chain in enumerate(chains, 1):
            inputs = features(described[chain.name])
            self.secondary.append(model.predict(inputs).astype(np.float32))
            self.error.append(model.expected_error(inputs).astype(np.float32))
            if count % 250 == 0:
                print(f"  predicted shifts: {count} of {len(chains)} chains", flush=True)

    def relatives_of(self, proteins, cache_folder):
        """{protein: clusters (cl30) with a chain that holds it or resembles it}."""
        folder = os.path.join(cache_folder, "blast")
        database = relatives.make_database({chain.name: chain.sequence() for chain in self.chains}, folder)
        queries = {protein.name: "".join(protein.code).upper() for protein in proteins}
        cluster = {chain.name: chain.cl30 for chain in self.chains}
        related = {name: set() for name in queries}
        for query, subject in relatives.blast_pairs(queries, database, folder):
            related[query].add(cluster[subject])
        for chain in self.chains:
            for name in chain.paired:
                related.setdefault(name, set()).add(chain.cl30)
        return related

    def _one_per_cluster(self, good):
        """Indices of the first (best) chain of every 50 % cluster among those that pass `good`."""
        seen, picked = set(), []
        for k, chain in enumerate(self.chains):
            if chain.cl50 not in seen and good(chain):
                seen.add(chain.cl50)
                picked.append(k)
        return picked

    def simulated(self, proteins, reference, related):
        """Training proteins with simulated shifts from all chains; those of the clusters `related` to paired
        proteins are marked, for networks that must not have seen these."""
        picked = [
            k
            for k, chain in enumerate(self.chains)
            if len(chain) >= settings.SIMULATED_LENGTH and chain.resolution <= settings.SIMULATED_RESOLUTION
        ]
        result = simulate.simulated(
            [self.chains[k] for k in picked],
            [self.secondary[k] for k in picked],
            [self.error[k] for k in picked],
            reference,
            self.pool,
            simulate.assigned_nuclei(proteins),
        )
        for protein in result:
            protein.related = protein.cluster in related
        return result

    def database_chains(self):
        """[(protein, secondary, error)] of the fragment database: chains that hold no paired protein.
        Residues that are disordered in the crystal keep no torsions, and so get no record."""
        result = []
        for k in self._one_per_cluster(
            lambda chain: not chain.paired and chain.resolution <= settings.DATABASE_RESOLUTION
        ):
            protein, keep = simulate.as_protein(self.chains[k])
            protein.phi[structures.disordered(self.chains[k].b)[keep]] = np.nan
            result.append((protein, self.secondary[k][keep], self.error[k][keep]))
        return result
