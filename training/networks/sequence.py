"""Training of the sequence networks: seqSS (BLOSUM columns, known structure of neighbours as context) and
seqSS15."""

import numpy as np
import torch

import settings
from networks.ensemble import Ensemble, adamw, member_mse, shuffled, standardisation, train
from networks.sequence_data import windows

# name: (half width, hidden units, level-2 hidden units, members)
NETWORKS = {"seqSS": (6, 60, 15, 3), "seqSS15": (7, 70, 15, 5)}
CHUNK = 8192
# Share of training windows with some known neighbours.
KNOWN_WINDOWS = 0.75


def _loss(net, x, y, share):
    return member_mse(net(x), y, share)


def _outputs(model, x):
    """Members x rows x 3."""
    with torch.no_grad():
        return model(torch.from_numpy(x)).numpy()


def _part(layers, members):
    return [(weight[members], bias[members]) for weight, bias in layers]


def known_pattern(rng, count, half):
    """Which positions of a window are known, windows x positions: a run of unknown residues of random reach
    around the centre, all others known, or nothing known. The centre never is: the program asks this network
    only for residues that the shifts do not decide."""
    offsets = np.arange(-half, half + 1)
    before, after = rng.geometric(0.35, count) - 1, rng.geometric(0.35, count) - 1
    known = (offsets[None, :] < -before[:, None]) | (offsets[None, :] > after[:, None])
    known &= rng.random((count, 1)) < KNOWN_WINDOWS
    return known & (rng.random(known.shape) > 0.05) & (offsets != 0)


class SequenceNetwork:
    """Both levels of one network. Members 0..FOLDS-1 of a model are evaluated on sequences held out of them
    (`held`: sequences x folds), the others, which the installation gets, see everything."""

    def __init__(self, name, residues, profiles, held, context=None, seed=settings.SEED):
        self.name, self.residues, self.profiles, self.context = name, residues, profiles, context
        self.half, self.hidden, self.hidden2, self.members = NETWORKS[name]
        self.seed = seed
        self.steps = len(residues.centres) // settings.BATCH
        shares = np.ones((settings.FOLDS + self.members, len(held)), np.float32)
        shares[: settings.FOLDS] = ~held.T
        self.shares = shares
        self.held_fold = held.argmax(axis=1)

    def _batches(self, features, rng):
        """`features(rows)` are the inputs of the windows around `rows`."""
        centres = self.residues.centres
        for index in shuffled(len(centres), settings.BATCH, rng):
            rows = centres[index]
            yield (
                torch.from_numpy(features(rows)),
                torch.from_numpy(self.residues.target[rows]),
                torch.from_numpy(self.shares[:, self.residues.owner[rows]]),
            )

    def _train(self, features_of_epoch, rng, hidden, epochs, label):
        sample = features_of_epoch()(self.residues.centres[::7])
        centre, scale = standardisation(sample)
        model = Ensemble(len(self.shares), sample.shape[1], hidden, 3, centre, scale, self.seed)
        return train(
            model,
            lambda: self._batches(features_of_epoch(), rng),
            _loss,
            epochs,
            self.steps,
            f"{self.name} {label}",
            adamw(model),
        )

    def train_level1(self):
        rng = np.random.default_rng([self.seed, 1])

        def features_of_epoch():
            table = self.profiles.draw(rng)
            return lambda rows: windows(table, rows, self.half)

        epochs = getattr(settings, f"{self.name.upper()}_EPOCHS")
        return self._train(features_of_epoch, rng, self.hidden, epochs, "level 1")

    def level1_outputs(self, table, rows=None):
        """Flagged table of out-of-fold outputs; of all residues, or of `rows` only."""
        rows = self.residues.inside if rows is None else rows
        result = np.zeros((self.residues.count, 3), np.float32)
        for part in np.array_split(rows, len(rows) // CHUNK + 1):
            outputs = _outputs(self.level1, windows(table, part, self.half))
            result[part] = outputs[self.held_fold[self.residues.owner[part]], np.arange(len(part))]
        return self.residues.flagged(result)

    def level2_inputs(self, table, rows, known=None, context=None):
        """Windows of level-1 outputs; where `known` (windows x positions) the context stands in for the
        output."""
        if known is None:
            return windows(table, rows, self.half)
        around = rows[:, None] + np.arange(-self.half, self.half + 1)
        x = table[around]
        replaced = context[around]
        usable = known & np.isfinite(replaced[:, :, 0])
        x[:, :, 1:] = np.where(usable[:, :, None], replaced, x[:, :, 1:])
        return np.delete(x.reshape(len(rows), -1), self.half * 4, axis=1)

    def train_level2(self):
        rng = np.random.default_rng([self.seed, 2])
        table = self.level1_outputs(self.profiles.draw(rng))

        def features_of_epoch():
            if self.context is None:
                return lambda rows: self.level2_inputs(table, rows)
            context = self.context.draw(rng)
            return lambda rows: self.level2_inputs(
                table, rows, known_pattern(rng, len(rows), self.half), context
            )

        return self._train(features_of_epoch, rng, self.hidden2, settings.SEQ_LEVEL2_EPOCHS, "level 2")

    def train(self, cache):
        """Both levels, kept in the cache as NAME-level1 and NAME-level2."""
        self.level1 = cache.get(self.name + "-level1", self.train_level1)
        self.level2 = cache.get(self.name + "-level2", self.train_level2)

    def layers(self):
        """(level 1, level 2) of the members for the installation."""
        final = slice(settings.FOLDS, None)
        return _part(self.level1.layers(), final), _part(self.level2.layers(), final)

    def held_out(self, table, rows, known=None):
        """Out-of-fold outputs of both levels (rows x 3 each) for some rows of paired proteins."""
        sequences = np.unique(self.residues.owner[rows])
        inside = self.residues.inside[np.isin(self.residues.owner[self.residues.inside], sequences)]
        first = self.level1_outputs(table, inside)
        context = None if known is None else self.context.observed
        pattern = None if known is None else np.broadcast_to(known, (len(rows), 2 * self.half + 1))
        second = _outputs(self.level2, self.level2_inputs(first, rows, pattern, context))
        return first[rows, 1:], second[self.held_fold[self.residues.owner[rows]], np.arange(len(rows))]

    def right(self, outputs, rows):
        """Percent of rows whose largest output is their class."""
        return 100.0 * np.mean(outputs.argmax(axis=1) == self.residues.state[rows])


def report(network, rows, sources):
    """Prints the out-of-fold share of right classes: `sources` = {label: profile table}."""
    for label, table in sources.items():
        first, second = network.held_out(table, rows)
        print(
            f"  {network.name}, {label}: level 1 {network.right(first, rows):.1f} %, level 2 "
            f"{network.right(second, rows):.1f} % of {len(rows)} paired residues out of fold",
            flush=True,
        )
    if network.context is None:
        return
    around = np.arange(-network.half, network.half + 1)
    there = network.residues.owner[rows[:, None] + around] == network.residues.owner[rows, None]
    known = np.isfinite(network.context.observed[rows[:, None] + around, 0])
    surrounded = rows[(known | ~there | (around == 0)).all(axis=1)]
    table = next(iter(sources.values()))
    for label, pattern in (("no neighbour", None), ("all neighbours", around != 0)):
        second = network.held_out(table, surrounded, pattern)[1]
        print(
            f"  {network.name}, {label} known, where all could be: level 2 {network.right(second, surrounded):.1f} % "
            f"of {len(surrounded)}",
            flush=True,
        )
