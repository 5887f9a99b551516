"""Training of the secondary-structure networks from shifts: ss, ss.center, ss.prev, ss.next and ss5."""

import numpy as np
import torch

import settings
from networks.ensemble import (
    Ensemble,
    adamw,
    evaluate_layers,
    hold_out_shares,
    member_mse,
    mixed,
    mixed_steps,
    orthogonalised,
    standardisation,
    train,
)

# name: (window reach, position in the window whose shifts are hidden or None, hidden units)
NETWORKS = {
    "ss": (1, None, 20),
    "ss.center": (1, 1, 20),
    "ss.prev": (1, 0, 20),
    "ss.next": (1, 2, 20),
    "ss5": (2, None, 40),
}
LEVEL2_HIDDEN = 6
STATES = {"H": 0, "G": 0, "I": 0, "E": 1, "B": 1}
NO_RESIDUE_5 = np.concatenate([[1.0], np.zeros(20), np.tile((0.0, 1.0), 6)]).astype(np.float32)
NO_OUTPUT_5 = np.array([1.0, 0.0, 0.0, 0.0], np.float32)


def states(ss8):
    """Three-state class per residue: 0 helix (H, G, I), 1 strand (E, B), 2 coil."""
    return np.array([STATES.get(letter, 2) for letter in ss8])


class Windows:
    """Rows of the neighbours per variant; -1 = outside the range of vectors (ss5 only), windows across gaps
    dropped."""

    def __init__(self, inputs, name):
        self.inputs = inputs
        self.reach, self.hidden_position, _ = NETWORKS[name]
        self.name = name
        self.rows, self.good = [], []
        for v in range(len(inputs.variants)):
            rows, good = self._windows(v)
            self.rows.append(rows)
            self.good.append(good)
        self.rows, self.good = np.array(self.rows), np.array(self.good)
        share = np.array([settings.VARIANTS[variant][2] for variant in inputs.variants])
        self.target = np.eye(3, dtype=np.float32)[states(inputs.ss8)]
        used = self.good & self._used()
        chance = used * share[:, None]
        self.centres = np.nonzero(chance.sum(axis=0) > 0.0)[0]
        cumulated = np.cumsum(chance[:, self.centres], axis=0)
        self.cumulated = cumulated / cumulated[-1]
        spread = [
            np.nanstd(inputs.vectors[0][inputs.vectors[0][:, 2 * k + 1] == 0.0, 2 * k]) for k in range(6)
        ]
        self.value_noise = settings.VALUE_NOISE * np.array(spread, np.float32)
        self.offset_noise = np.array(
            [settings.OFFSET_NOISE[atom] for atom in settings.VECTOR_ATOMS], np.float32
        )

    def _windows(self, variant):
        inputs = self.inputs
        present = np.isfinite(inputs.vectors[variant]).all(axis=1)
        rows = inputs.neighbours(self.reach)
        rows[~present[rows]] = -1
        good = present & (rows[:, self.reach - 1] >= 0) & (rows[:, self.reach + 1] >= 0)
        if self.reach == 2:
            first, last = self._range(present)
            resid = inputs.resid
            good &= (rows[:, 0] >= 0) | (resid - 2 < first[inputs.chain])
            good &= (rows[:, 4] >= 0) | (resid + 2 > last[inputs.chain])
        return rows, good

    def _range(self, present):
        """First and last residue number with a vector, per chain."""
        first, last = [], []
        for chain in range(len(self.inputs.proteins)):
            span = slice(self.inputs.start[chain], self.inputs.start[chain + 1])
            numbers = self.inputs.resid[span][present[span]]
            first.append(numbers.min() if len(numbers) else 0)
            last.append(numbers.max() if len(numbers) else 0)
        return np.array(first), np.array(last)

    def _used(self):
        """Where the program would take this network: it counts a residue with four or more missing shifts as
        bare."""
        bare = np.concatenate([self.inputs.missing >= 4, np.ones((len(self.rows), 1), bool)], axis=1)
        around = np.stack([bare[v][self.rows[v]] for v in range(len(self.rows))])
        if self.reach == 2:
            return ~around[:, :, 1:4].any(axis=2) | (around[:, :, 1:4].sum(axis=2) == 1)
        if self.hidden_position is None:
            return ~around.any(axis=2)
        others = [k for k in range(3) if k != self.hidden_position]
        return ~around[:, :, others].any(axis=2)

    def inputs_of(self, variants, centres, rng=None):
        """Level-1 inputs of the windows; with `rng` noise is added to the shifts."""
        rows = self.rows[variants, centres]
        x = self.inputs.vectors[np.asarray(variants)[..., None], rows].copy()
        if rng is not None:
            self.inputs.redraw_errors(x[:, :, 0:12:2], x[:, :, 1:12:2], rows, rng)
            noise = (
                rng.standard_normal((len(x), 1, 6), np.float32) * self.offset_noise
                + rng.standard_normal(x.shape[:2] + (6,), np.float32) * self.value_noise
            )
            x[:, :, 0:12:2] += noise
        if self.reach == 1:
            parts = [x[:, k, 12:] if k == self.hidden_position else x[:, k] for k in range(3)]
            return np.concatenate(parts, axis=1)
        turned = np.concatenate([x[:, :, 12:] * 10.0, x[:, :, :12]], axis=2)
        flagged = np.concatenate([np.zeros(turned.shape[:2] + (1,), np.float32), turned], axis=2)
        flagged[rows < 0] = NO_RESIDUE_5
        parts = [flagged[:, k, 1:] if k == 2 else flagged[:, k] for k in range(5)]
        return np.concatenate(parts, axis=1)

    def batches(self, rng, shares):
        variants = (rng.random(len(self.centres)) > self.cumulated).sum(axis=0).clip(max=len(self.rows) - 1)
        for index in mixed(self.inputs.real[self.centres], settings.SS_SIMULATED_SHARE, settings.BATCH, rng):
            centres = self.centres[index]
            yield (
                torch.from_numpy(self.inputs_of(variants[index], centres, rng)),
                torch.from_numpy(self.target[centres]),
                None if shares is None else shares[:, centres],
            )

    def level1_outputs(self, layers, variant, folds):
        """Level-1 outputs of every real residue of a variant, from the member that held the residue out.
        Residues without a window get the program's fill vector."""
        result = np.full((self.inputs.count, 3), np.nan)
        centres = np.nonzero(self.good[variant] & self.inputs.real)[0]
        x = self.inputs_of(np.full(len(centres), variant), centres)
        for fold in range(settings.FOLDS):
            part = folds[centres] == fold
            result[centres[part]] = evaluate_member(layers, fold, x[part])
        present = np.isfinite(self.inputs.vectors[variant]).all(axis=1)
        for chain in range(len(self.inputs.proteins)):
            span = slice(self.inputs.start[chain], self.inputs.start[chain + 1])
            block = result[span]
            filled = np.isfinite(block[:, 0])
            if filled.any():
                total = block[filled].sum(axis=0)
                block[~filled & present[span]] = total / total.sum()
        return result

    def level2_inputs(self, outputs, variant, centres):
        """Level-2 inputs from level-1 outputs."""
        rows = self.rows[variant, centres]
        x = outputs[rows]
        if self.reach == 1:
            return x.reshape(len(centres), 9)
        flagged = np.concatenate([np.zeros(x.shape[:2] + (1,)), x], axis=2)
        flagged[rows < 0] = NO_OUTPUT_5
        return np.concatenate([flagged[:, k, 1:] if k == 2 else flagged[:, k] for k in range(5)], axis=1)


def evaluate_member(layers, member, x):
    """Outputs of one member of an ensemble, rows x outputs."""
    single = [(weight[member : member + 1], bias[member : member + 1]) for weight, bias in layers]
    return evaluate_layers(single, x.astype(float))[0]


def _loss(net, x, y, share):
    return member_mse(net(x), y, share)


def train_network(inputs, name, folds, seed):
    """Both levels of one network. Returns (level-1 layers, level-2 layers, out-of-fold level-2 outputs of the
    first variant); `folds` holds the fold of every residue."""
    windows = Windows(inputs, name)
    hidden = NETWORKS[name][2]
    rng = np.random.default_rng(seed)
    real = windows.centres[inputs.real[windows.centres]]
    sample = windows.inputs_of(np.zeros(len(real[::5]), int), real[::5])
    sample = sample[np.isfinite(sample).all(axis=1)]
    centre, scale = standardisation(sample)
    level1_steps = mixed_steps(inputs.real[windows.centres], settings.SS_SIMULATED_SHARE, settings.BATCH)
    steps = len(real) // settings.BATCH

    def level1(members, shares, label):
        model = Ensemble(members, sample.shape[1], hidden, 3, centre, scale, seed)
        train(
            model,
            lambda: windows.batches(rng, shares),
            _loss,
            settings.SS_EPOCHS,
            level1_steps,
            f"{name} {label}",
            orthogonalised(model, settings.SS_RATE),
        )
        return model.layers()

    fold_layers = level1(settings.FOLDS, hold_out_shares(folds, settings.FOLDS), "folds")
    final_layers = level1(3, None, "level 1")

    variants = [v for v, variant in enumerate(inputs.variants) if settings.VARIANTS[variant][2] > 0.0]
    features, targets, owners = [], [], []
    for v in variants:
        outputs = windows.level1_outputs(fold_layers, v, folds)
        centres = real[windows.good[v, real]]
        features.append(windows.level2_inputs(outputs, v, centres))
        targets.append(windows.target[centres])
        owners.append(centres)
    features = np.concatenate(features).astype(np.float32)
    targets, owners = np.concatenate(targets), np.concatenate(owners)

    def level2_batches(shares):
        order = rng.permutation(len(features))[: steps * settings.BATCH]
        for index in np.split(order, steps):
            yield (
                torch.from_numpy(features[index]),
                torch.from_numpy(targets[index]),
                None if shares is None else shares[:, owners[index]],
            )

    centre2, scale2 = standardisation(features)

    def level2(members, shares, label):
        model = Ensemble(members, features.shape[1], LEVEL2_HIDDEN, 3, centre2, scale2, seed)
        train(
            model,
            lambda: level2_batches(shares),
            _loss,
            settings.SS_LEVEL2_EPOCHS,
            steps,
            f"{name} {label}",
            adamw(model),
        )
        return model.layers()

    fold_level2 = level2(settings.FOLDS, hold_out_shares(folds, settings.FOLDS), "level 2 folds")
    final_level2 = level2(3, None, "level 2")
    first = windows.good[variants[0], real].sum()
    held_out = np.full((inputs.count, 3), np.nan)
    for fold in range(settings.FOLDS):
        part = np.nonzero(folds[owners[:first]] == fold)[0]
        held_out[owners[part]] = evaluate_member(fold_level2, fold, features[part])
    right = held_out[owners[:first]].argmax(axis=1) == targets[:first].argmax(axis=1)
    print(f"  {name}: out of fold {100.0 * right.mean():.1f} % right of {first}", flush=True)
    return final_layers, final_level2, held_out


def normalised(outputs):
    """Clamped to 0..1 and divided by their sum, as the program does with level-2 outputs."""
    clamped = np.clip(outputs, 0.0, 1.0)
    return clamped / np.maximum(clamped.sum(axis=1, keepdims=True), 1e-9)
