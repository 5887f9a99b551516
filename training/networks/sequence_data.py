"""Residues of paired proteins and of chains without shifts in one long table, as the sequence networks see
them."""

import numpy as np

import profiles as profile_tools
import settings
from networks.structure import states

GAP = 8  # rows between two sequences, above the half width of every window
OUTSIDE, UNKNOWN = -1, 20  # residue types beyond the 20 amino acids
NONE = 3  # state of a row without structure


class Residues:
    """One row per residue number of every sequence, missing ones included, with `GAP` empty rows between
    sequences. A window is then a run of rows.

    kind: residue type 0..19 in checkpoint order, UNKNOWN or OUTSIDE; state: 0 helix, 1 strand, 2 coil or
    NONE; owner: number of the sequence, -1 outside; centres: rows with a structure.
    """

    def __init__(self, sequences, places, ss8):
        """Lists over sequences: text with X for missing residues, places of the residues with structure,
        letters."""
        lengths = np.array([len(text) for text in sequences])
        self.start = np.cumsum(np.concatenate([[0], lengths[:-1] + GAP])) + GAP
        self.count = int(self.start[-1] + lengths[-1] + GAP)
        self.sequences, self.lengths = sequences, lengths
        self.kind = np.full(self.count, OUTSIDE, np.int8)
        self.owner = np.full(self.count, -1)
        self.state = np.full(self.count, NONE, np.int8)
        self.rows = []  # of the residues with structure, per sequence
        for k, (text, place, letters) in enumerate(zip(sequences, places, ss8)):
            span = slice(self.start[k], self.start[k] + len(text))
            found = [profile_tools.ORDER.find(code) for code in text]
            self.kind[span] = [UNKNOWN if number < 0 else number for number in found]
            self.owner[span] = k
            rows = self.start[k] + np.asarray(place)
            self.state[rows] = states(letters)
            self.rows.append(rows)
        self.inside = np.nonzero(self.kind != OUTSIDE)[0]
        self.centres = np.concatenate(self.rows)
        self.target = np.eye(4, 3, dtype=np.float32)[self.state]

    def spread(self, per_sequence):
        """Profiles (residues x 20) of some sequences, {number: array}, laid out as rows (zero elsewhere)."""
        table = np.zeros((self.count, 20), np.float32)
        for k, profile in per_sequence.items():
            table[self.start[k] : self.start[k] + len(profile)] = profile
        return table

    def flagged(self, values):
        """Rows x (1 + width): the flag of absent residues, then the values (zero for absent ones)."""
        outside = self.kind == OUTSIDE
        table = np.concatenate([outside[:, None], values], axis=1).astype(np.float32)
        table[outside, 1:] = 0.0
        return table


def windows(table, rows, half):
    """Network inputs from a flagged table: the blocks of rows -half..half around each row, the centre without
    flag."""
    width = table.shape[1]
    x = table[rows[:, None] + np.arange(-half, half + 1)].reshape(len(rows), -1)
    return np.delete(x, half * width, axis=1)


class BlosumColumns:
    """Profiles of seqSS: the BLOSUM62 row of every residue, zeros for an unknown one."""

    def __init__(self, residues):
        scores = np.vstack([profile_tools.SCORES, np.zeros((2, 20))]).astype(np.float32)
        self.table = residues.flagged(scores[residues.kind])

    def draw(self, _rng):
        return self.table


class Profiles:
    """Profiles of seqSS15, percent in alphabetical order of the codes. `sources` are lists of {sequence
    number: profile}; a sequence gets one of those it has, or a pseudo-profile, at random."""

    def __init__(self, residues, sources):
        self.residues = residues
        rows = np.vstack(
            [profile_tools.substitution_probabilities(), profile_tools.BACKGROUND, np.zeros(20)]
        ).astype(np.float32)
        self.single = rows[residues.kind]
        self.identity = np.eye(22, 20, dtype=np.float32)[residues.kind]
        self.tables = [residues.spread(source) for source in sources]
        self.has = np.zeros((len(residues.sequences), 1 + len(sources)), bool)
        self.has[:, 0] = True
        for k, source in enumerate(sources):
            self.has[list(source), k + 1] = True
        self.alphabetical = [profile_tools.ORDER.index(code) for code in settings.AMINO_ACIDS]

    def pseudo(self, rng):
        """Single-sequence profiles; of every second sequence with random conservation and noise."""
        changed = (rng.random(len(self.residues.sequences)) < 0.5)[self.residues.owner, None]
        conserved = rng.beta(1.2, 2.0, (len(self.single), 1)).astype(np.float32)
        profile = conserved * self.identity + (1.0 - conserved) * self.single
        profile[self.residues.kind == UNKNOWN] = profile_tools.BACKGROUND
        profile *= rng.standard_gamma(6.0, profile.shape, np.float32)
        profile /= np.maximum(profile.sum(axis=1, keepdims=True), 1e-9)
        return np.where(changed, profile, self.single)

    def _finished(self, frequencies):
        return self.residues.flagged(100.0 * frequencies[:, self.alphabetical])

    def draw(self, rng):
        chance = self.has * np.array(settings.PROFILE_SHARES)[: self.has.shape[1]]
        cumulated = np.cumsum(chance / chance.sum(axis=1, keepdims=True), axis=1)
        choice = (rng.random((len(chance), 1)) > cumulated).sum(axis=1)[self.residues.owner]
        frequencies = self.pseudo(rng)
        for k, table in enumerate(self.tables):
            picked = choice == k + 1
            frequencies[picked] = table[picked]
        return self._finished(frequencies)

    def fixed(self, source):
        """All sequences that have it with one source (0 = the sequence alone), the others with the sequence
        alone."""
        if source == 0:
            return self._finished(self.single)
        has = self.has[self.residues.owner, source] & (self.residues.kind != OUTSIDE)
        return self._finished(np.where(has[:, None], self.tables[source - 1], self.single))


class Context:
    """Structure of neighbours as the shift-based networks tell it: their out-of-fold outputs for paired
    proteins, for other chains such outputs of paired residues in the same surroundings, drawn in runs of
    three residues."""

    def __init__(self, residues, observed, paired):
        """observed: rows x 3, nan where unknown; paired: number of paired proteins, the first sequences."""
        self.residues, self.observed = residues, observed.astype(np.float32)
        state = np.concatenate([[NONE, NONE], residues.state, [NONE, NONE]]).astype(int)
        self.key = sum(4**k * state[k : k + residues.count] for k in range(5))
        usable = np.isfinite(observed).all(axis=1)
        middle = np.nonzero(usable)[0]
        donors = middle[usable[middle - 1] & usable[middle + 1]]
        self.donors = donors[np.argsort(self.key[donors], kind="stable")]
        self.first = np.searchsorted(self.key[self.donors], np.arange(4**5 + 1))
        self.receivers = residues.inside[residues.owner[residues.inside] >= paired]

    def draw(self, rng):
        table = self.observed.copy()
        middle = self.receivers[(self.receivers + rng.integers(3)) % 3 == 0]
        low, high = self.first[self.key[middle]], self.first[self.key[middle] + 1]
        middle, low, high = middle[high > low], low[high > low], high[high > low]
        donor = self.donors[low + (rng.random(len(low)) * (high - low)).astype(int)]
        for step in (-1, 0, 1):
            rows = middle + step
            good = (self.residues.state[rows] != NONE) & (
                self.residues.owner[rows] == self.residues.owner[middle]
            )
            table[rows[good]] = self.observed[donor[good] + step]
        return table
