"""Stage of the sequence networks: gathers sequences and profiles, decides what is held out, trains and
reports."""

import os

import numpy as np

import profiles as profile_tools
import settings
from data import relatives
from networks import sequence
from networks.sequence_data import BlosumColumns, Context, Profiles, Residues


def _paired_sequence(protein):
    letters = ["X"] * (protein.resid[-1] - protein.resid[0] + 1)
    for number, code in zip(protein.resid, protein.code):
        letters[number - protein.resid[0]] = code.upper()
    return "".join(letters)


class SequenceStage:
    """Sequences are the paired proteins, then the usable chains; `folder` keeps databases and profiles."""

    def __init__(self, proteins, protein_folds, chains, folder):
        self.proteins, self.chains, self.folder = proteins, chains, os.path.join(folder, "sequences")
        self.names = ["p_" + protein.name for protein in proteins] + ["s_" + chain.name for chain in chains]
        texts = [_paired_sequence(protein) for protein in proteins] + [chain.sequence() for chain in chains]
        places = [np.array(protein.resid) - protein.resid[0] for protein in proteins]
        self.residues = Residues(
            texts,
            places + [chain.place for chain in chains],
            ["".join(protein.ss8) for protein in proteins] + [chain.ss8 for chain in chains],
        )
        self.texts = dict(zip(self.names, texts))
        self.database = relatives.make_database(self.texts, self.folder)
        queries = {name: self.texts[name] for name in self.names[: len(proteins)]}
        pairs = relatives.blast_pairs(queries, self.database, self.folder)
        self.held = relatives.hold_out(proteins, protein_folds, chains, pairs, self.names)
        self.paired_rows = np.concatenate(self.residues.rows[: len(proteins)])

    def context(self, structure):
        """`structure`: out-of-fold shift-based vectors of the paired residues, nan where there is none."""
        observed = np.full((self.residues.count, 3), np.nan)
        observed[self.paired_rows] = structure
        return Context(self.residues, observed, len(self.proteins))

    def _searched(self, folder, database, wanted):
        found = profile_tools.search_all(
            {name: self.texts[name] for name in wanted},
            database,
            os.path.join(self.folder, folder),
            settings.PROFILE_PROCESSES,
        )
        return {self.names.index(name): profile for name, profile in found.items()}

    def _deep_names(self):
        """The paired proteins and the best chain of each 30 % cluster, up to settings.DEEP_CHAINS of them."""
        seen, wanted = set(), self.names[: len(self.proteins)]
        for chain in self.chains:
            if chain.cl30 not in seen and len(chain) <= settings.DEEP_LENGTH:
                seen.add(chain.cl30)
                wanted = wanted + ["s_" + chain.name]
        return wanted[: len(self.proteins) + settings.DEEP_CHAINS]

    def profiles(self, database):
        """Profiles against the sequences at hand and, where `database` names one, against it and a large
        BLAST database together (which then serve the chains, too)."""
        sources = [
            self._searched(
                "thin", self.database, self.names[: len(self.proteins)] if database else self.names
            )
        ]
        if database:
            sources.append(self._searched("deep", f"{database} {self.database}", self._deep_names()))
        return Profiles(self.residues, sources)


def train_seqss(stage, structure, cache):
    columns = BlosumColumns(stage.residues)
    network = sequence.SequenceNetwork(
        "seqSS", stage.residues, columns, stage.held, stage.context(structure), settings.SEED + 100
    )
    network.train(cache)
    sequence.report(network, stage.paired_rows, {"no neighbour known": columns.table})
    return network.layers()


def train_seqss15(stage, database, cache):
    profiles = stage.profiles(database)
    network = sequence.SequenceNetwork(
        "seqSS15", stage.residues, profiles, stage.held, None, settings.SEED + 101
    )
    network.train(cache)
    labels = ("sequence alone", "profile of the sequences at hand", "profile of the large database")
    sequence.report(
        network,
        stage.paired_rows,
        {label: profiles.fixed(k) for k, label in enumerate(labels[: 1 + len(profiles.tables)])},
    )
    return network.layers()
