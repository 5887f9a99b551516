"""Secondary shifts from structure: boosted trees and small networks on torsions and surroundings, with
expected errors.

Inputs of a residue: its own and its neighbours' torsions (sine and cosine), hydrogen bonds, ring currents,
peptide fields, neighbour counts, DSSP class and relative B factor, and the types of the three residues. Half
of the prediction comes from gradient-boosted trees (scikit-learn, one model per nucleus), half from an
ensemble of perceptrons.
"""

import numpy as np
import torch
from sklearn.ensemble import HistGradientBoostingRegressor
from torch import nn

import settings

# Terms of surroundings.COLUMNS are brought to about unit spread: (term - centre) * scale.
TERM_SCALE = np.array([1] * 4 + [0.3] * 4 + [12] * 6 + [40, 20, 40, 40] + [0.2, 0.08, 0.12, 0.12], np.float32)
TERM_CENTRE = np.array(
    [0] * 4 + [10, 11.7, 10, 11.7] + [0] * 6 + [0, 0.03, 0.0125, 0] + [9, 27.5, 12.5, 15], np.float32
)
TORSIONS = (0, 1, 3, 4)  # phi, psi, chi1, chi2 of phi, psi, omega, chi1, chi2


def _turned(angles):
    """Sine, cosine and whether the angle is known, side by side."""
    known = np.isfinite(angles)
    radians = np.radians(np.where(known, angles, 0.0))
    return np.stack([np.sin(radians) * known, np.cos(radians) * known, known], axis=-1).reshape(
        len(angles), -1
    )


def _relative_b(b):
    """B factors as multiples of their robust spread in the chain."""
    if not np.isfinite(b).any():
        return np.zeros(len(b))
    middle = np.nanmedian(b)
    spread = 1.5 * np.nanmedian(np.abs(b - middle)) + 1.0
    return np.clip(np.nan_to_num(b - middle) / spread, -2.0, 4.0)


def features(chain):
    """Inputs of every residue of a structures.Chain with terms and B factors, residues x 199."""
    count = len(chain.code)
    terms = np.clip((chain.terms - TERM_CENTRE) * TERM_SCALE, -4.0, 4.0)
    classes = np.array([[letter in "HGI", letter in "EB", letter == "T"] for letter in chain.ss8], float)
    cis = np.abs(chain.angles[:, 2:3]) < 90.0
    torsions = _turned(chain.angles[:, TORSIONS])
    own = np.concatenate([torsions, terms, _relative_b(chain.b)[:, None], classes, cis], axis=1)
    kinds = np.zeros((count, len(settings.RESIDUE_CODES) + 1))
    kinds[
        np.arange(count), [settings.RESIDUE_CODES.find(letter) for letter in chain.code]
    ] = 1.0  # last: unknown
    piece = np.cumsum(chain.breaks)

    def beside(table, step):
        """Rows of the residue `step` further along an unbroken chain, else zeros."""
        result = np.zeros_like(table)
        rows = np.arange(max(0, -step), min(count, count - step))
        rows = rows[piece[rows] == piece[rows + step]]
        result[rows] = table[rows + step]
        return result

    ones = np.ones((count, 1))
    proline = kinds[:, [settings.RESIDUE_CODES.index("P")]]
    blocks = [
        own,
        beside(own, -1),
        beside(own, 1),
        kinds,
        beside(kinds, -1),
        beside(kinds, 1),
        beside(torsions[:, :6], -2),
        beside(torsions[:, :6], 2),
        beside(proline, -2),
        beside(proline, 2),
        beside(ones, -1),
        beside(ones, 1),
    ]
    return np.concatenate(blocks, axis=1).astype(np.float32)


class Perceptrons(nn.Module):
    """Members side by side: two hidden layers, six outputs in units of the nucleus's spread."""

    def __init__(self, members, inputs, hidden, seed):
        super().__init__()
        torch.manual_seed(seed)
        shapes = ((inputs, hidden), (hidden, hidden), (hidden, 6))
        self.weights = nn.ParameterList(
            nn.Parameter(torch.randn(members, m, n) / m**0.5) for m, n in shapes
        )
        self.biases = nn.ParameterList(nn.Parameter(torch.zeros(members, 1, n)) for _, n in shapes)

    def forward(self, x):
        x = x.expand(len(self.weights[0]), -1, -1)
        for weight, bias in zip(list(self.weights)[:2], list(self.biases)[:2]):
            x = nn.functional.silu(torch.baddbmm(bias, x, weight))
        return torch.baddbmm(self.biases[2], x, self.weights[2])


def _train_perceptrons(x, y, spread, shares, members):
    """Huber loss on the known shifts; `shares` (members x rows) is 0 where a member must not look."""
    batch, rate = settings.MODEL_BATCH, settings.LEARNING_RATE
    net = Perceptrons(members, x.shape[1], settings.MODEL_HIDDEN, settings.SEED)
    steps = len(x) // batch
    optimiser = torch.optim.AdamW(net.parameters(), lr=rate, weight_decay=0.05)
    schedule = torch.optim.lr_scheduler.OneCycleLR(
        optimiser, rate, settings.MODEL_EPOCHS * steps, pct_start=0.1
    )
    known = np.isfinite(y)
    inputs, weight = torch.from_numpy(x), torch.from_numpy(known.astype(np.float32))
    target = torch.from_numpy(np.where(known, y / spread, 0.0).astype(np.float32))
    share = torch.ones(members, len(x)) if shares is None else torch.as_tensor(shares, dtype=torch.float32)
    rng = np.random.default_rng(settings.SEED)
    for epoch in range(settings.MODEL_EPOCHS):
        for rows in np.split(rng.permutation(len(x))[: steps * batch], steps):
            rows = torch.from_numpy(rows)
            gap = net(inputs[rows]) - target[rows]
            loss = nn.functional.huber_loss(gap, torch.zeros_like(gap), reduction="none", delta=1.0)
            loss = (loss * weight[rows] * share[:, rows, None]).sum() / batch
            optimiser.zero_grad(set_to_none=True)
            loss.backward()
            optimiser.step()
            schedule.step()
    return net


@torch.no_grad()
def _evaluate(net, x, spread):
    """Outputs of all members, members x rows x 6, ppm."""
    parts = [net(torch.from_numpy(part)).numpy() for part in np.array_split(x, max(1, len(x) // 8192))]
    return np.concatenate(parts, axis=1) * spread


def _trees(**changes):
    options = {
        "learning_rate": 0.06,
        "max_iter": settings.MODEL_TREES,
        "max_leaf_nodes": 24,
        "min_samples_leaf": 20,
        "l2_regularization": 1.0,
        "random_state": settings.SEED,
    }
    return HistGradientBoostingRegressor(**{**options, **changes})


def _error_trees():
    return _trees(
        loss="absolute_error", max_iter=60, max_leaf_nodes=8, min_samples_leaf=60, l2_regularization=0.0
    )


class ShiftModel:
    """Prediction of the six secondary shifts (ppm) and of their expected errors.

    held_out: predictions of the training rows by models that never saw their homology cluster.
    """

    def fit(self, x, y, folds):
        """x: rows x features, y: secondary shifts (nan = missing), folds: fold number per row."""
        count = settings.MODEL_FOLDS
        self.spread = np.nanstd(y, axis=0)
        shares = np.stack([folds != k % count for k in range(2 * count)])
        members = _evaluate(_train_perceptrons(x, y, self.spread, shares, 2 * count), x, self.spread)
        rows = np.arange(len(x))
        from_nets = 0.5 * (members[folds, rows] + members[folds + count, rows])
        self.nets = _train_perceptrons(x, y, self.spread, None, settings.MODEL_MEMBERS)
        from_trees = np.full(y.shape, np.nan)
        self.trees, self.error_trees = [], []
        for atom in range(6):
            known = np.isfinite(y[:, atom])
            for fold in range(count):
                fit = known & (folds != fold)
                from_trees[folds == fold, atom] = _trees().fit(x[fit], y[fit, atom]).predict(x[folds == fold])
            self.trees.append(_trees().fit(x[known], y[known, atom]))
            print(f"  shift model: trees of {settings.ATOMS[atom]} done", flush=True)
        self.held_out = 0.5 * (from_nets + from_trees)
        # The median absolute error is learnt on a square-root scale; 1.4826 times it is a standard deviation.
        error = np.sqrt(np.abs(y - self.held_out))
        for atom in range(6):
            known = np.isfinite(error[:, atom])
            self.error_trees.append(_error_trees().fit(x[known], error[known, atom]))
        return self

    def rmsd(self, y):
        """Held-out RMSD per nucleus, ppm."""
        return np.sqrt(np.nanmean((y - self.held_out) ** 2, axis=0))

    def predict(self, x):
        """Secondary shifts, rows x 6, ppm."""
        trees = np.stack([model.predict(x) for model in self.trees], axis=1)
        return 0.5 * (trees + _evaluate(self.nets, x, self.spread).mean(axis=0))

    def expected_error(self, x):
        """Standard deviation of the prediction error, rows x 6, ppm."""
        return np.stack([1.4826 * model.predict(x) ** 2 for model in self.error_trees], axis=1)
