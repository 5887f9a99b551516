"""Training of the sequence networks: seqSS (BLOSUM profile, known structure of neighbours as context) and seqSS15."""

import numpy as np
import torch

import literature
import settings
from networks import (Ensemble, confidence_mean, evaluate_layers, hold_out_shares, member_mse, shuffled,
                      standardisation, train)
from structure import states

# name: (half width, hidden units, level-2 hidden units, members)
NETWORKS = {"seqSS": (6, 60, 15, 3), "seqSS15": (7, 70, 15, 5)}
HALF_BIT = 0.5 * np.log(2.0)
# Share of training windows with some known neighbours.
KNOWN_WINDOWS = 0.75


class Windows:
    """Residue numbers filled up to whole sequences: every number from the first to the last, gaps as unknown type."""

    def __init__(self, inputs, name):
        self.inputs = inputs
        self.half, self.hidden, self.hidden2, self.members = NETWORKS[name]
        self.name = name
        first = {c: inputs.resid[inputs.start[c]] for c in range(len(inputs.proteins))}
        last = {c: inputs.resid[inputs.start[c + 1] - 1] for c in range(len(inputs.proteins))}
        self.rows = inputs.neighbours(self.half)
        steps = inputs.resid[:, None] + np.arange(-self.half, self.half + 1)
        low = np.array([first[c] for c in inputs.chain])[:, None]
        high = np.array([last[c] for c in inputs.chain])[:, None]
        self.outside = (steps < low) | (steps > high)
        self.target = np.eye(3, dtype=np.float32)[states(inputs.ss8)]
        self.types = np.array([literature.BLOSUM_ORDER.index(code.upper()) for code in inputs.code])
        scores = np.array([[literature.BLOSUM62[a][b] for b in literature.BLOSUM_ORDER]
                           for a in literature.BLOSUM_ORDER], float)
        self.scores = np.vstack([scores, np.zeros(20)])
        background = np.array([literature.BACKGROUND[a] for a in literature.BLOSUM_ORDER])
        conditional = background * np.exp(HALF_BIT * scores)
        self.conditional = conditional / conditional.sum(axis=1, keepdims=True)
        self.background = background
        self.alphabetical = [literature.BLOSUM_ORDER.index(a) for a in settings.AMINO_ACIDS]

    def profiles(self, rng=None):
        """Profile of every residue and, in the last row, of a residue of unknown type."""
        if self.name == "seqSS":
            return np.vstack([self.scores[self.types], np.zeros(20)]).astype(np.float32)
        # Pseudo-profiles: from one sequence (substitution probabilities) to well-conserved columns.
        count = len(self.types)
        conserved = np.full((count, 1), 0.3) if rng is None else rng.beta(1.2, 2.0, (count, 1))
        profile = conserved * np.eye(20)[self.types] + (1.0 - conserved) * self.conditional[self.types]
        if rng is not None:
            profile *= rng.gamma(6.0, 1.0 / 6.0, profile.shape)
            profile /= profile.sum(axis=1, keepdims=True)
        profile = np.vstack([profile, self.background])
        return (100.0 * profile[:, self.alphabetical]).astype(np.float32)

    def inputs_of(self, profiles, centres):
        """Level-1 inputs: flag and profile of each neighbour, profile alone of the centre."""
        rows = self.rows[centres]
        x = profiles[np.where(rows < 0, len(profiles) - 1, rows)]
        flag = self.outside[centres]
        x[flag] = 0.0
        x = np.concatenate([flag[:, :, None].astype(np.float32), x], axis=2)
        parts = [x[:, k, 1:] if k == self.half else x[:, k] for k in range(2 * self.half + 1)]
        return np.concatenate(parts, axis=1)

    def level2_inputs(self, outputs, centres, known=None, context=None):
        """Level-2 inputs; where `known` (windows x positions) the context's vector stands in for the output. The
        centre is never known: the network is asked only for residues without shifts."""
        rows = self.rows[centres]
        x = np.where(rows[:, :, None] < 0, 1.0 / 3.0, outputs[rows])
        if known is not None:
            usable = known & (rows >= 0) & np.isfinite(context[rows]).all(axis=2)
            usable[:, self.half] = False
            x = np.where(usable[:, :, None], context[rows], x)
        flag = self.outside[centres]
        x[flag] = 0.0
        x = np.concatenate([flag[:, :, None].astype(float), x], axis=2)
        parts = [x[:, k, 1:] if k == self.half else x[:, k] for k in range(2 * self.half + 1)]
        return np.concatenate(parts, axis=1)

    def known_pattern(self, rng, count):
        """Random runs of known residues around the centre: a block of unknown residues of random reach at the centre,
        all others known or not by window."""
        offsets = np.arange(-self.half, self.half + 1)
        before, after = rng.geometric(0.35, count) - 1, rng.geometric(0.35, count) - 1
        known = (offsets[None, :] < -before[:, None]) | (offsets[None, :] > after[:, None])
        known &= rng.random((count, 1)) < KNOWN_WINDOWS
        return known & (rng.random(known.shape) > 0.05)


def _loss(net, x, y, share):
    return member_mse(net(x), y, share)


def train_network(inputs, name, folds, context, seed):
    """Both levels; `context` is the out-of-fold shift-based structure (rows of nan where there is none).
    Returns (level-1 layers, level-2 layers)."""
    windows = Windows(inputs, name)
    rng = np.random.default_rng(seed)
    everyone = np.arange(inputs.count)
    steps = inputs.count // settings.BATCH
    members = windows.members
    with_context = context is not None

    def level1_batches(shares):
        profiles = windows.profiles(rng)
        for index in shuffled(inputs.count, settings.BATCH, rng):
            yield (torch.from_numpy(windows.inputs_of(profiles, index)), torch.from_numpy(windows.target[index]),
                   None if shares is None else shares[:, index])

    plain = windows.profiles()
    sample = windows.inputs_of(plain, everyone[::7])
    centre, scale = standardisation(sample)

    def level1(count, shares, label):
        model = Ensemble(count, sample.shape[1], windows.hidden, 3, centre, scale, seed)
        train(model, lambda: level1_batches(shares), _loss, settings.SEQ_EPOCHS, steps, f"{name} {label}")
        return model.layers()

    fold_layers = level1(settings.FOLDS, hold_out_shares(folds, settings.FOLDS), "folds")
    final_layers = level1(members, None, "level 1")
    outputs = np.zeros((inputs.count, 3))
    for part in np.array_split(everyone, 16):
        block = evaluate_layers(fold_layers, windows.inputs_of(plain, part).astype(float))
        outputs[part] = block[folds[part], np.arange(len(part))]

    def features(index):
        known = windows.known_pattern(rng, len(index)) if with_context else None
        return windows.level2_inputs(outputs, index, known, context).astype(np.float32)

    def level2_batches():
        for index in shuffled(inputs.count, settings.BATCH, rng):
            yield torch.from_numpy(features(index)), torch.from_numpy(windows.target[index]), None

    centre2, scale2 = standardisation(features(everyone[::7]))
    model = Ensemble(members, len(centre2), windows.hidden2, 3, centre2, scale2, seed)
    train(model, level2_batches, _loss, settings.SEQ_LEVEL2_EPOCHS, steps, f"{name} level 2")
    right = outputs.argmax(axis=1) == windows.target.argmax(axis=1)
    second = confidence_mean(evaluate_layers(model.layers(), windows.level2_inputs(outputs, everyone)))
    right2 = second.argmax(axis=1) == windows.target.argmax(axis=1)
    print(f"  {name}: level 1 out of fold {100.0 * right.mean():.1f} % right, level 2 without context "
          f"{100.0 * right2.mean():.1f} %", flush=True)
    return final_layers, model.layers()
