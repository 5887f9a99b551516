"""Training of the phi/psi box networks surf20 (two levels) and surf20_hyb (one level)."""

import os

import numpy as np
import torch

import settings
from networks.ensemble import (
    Ensemble,
    adamw,
    hold_out_shares,
    member_mse,
    mixed,
    mixed_steps,
    orthogonalised,
    standardisation,
    train,
)

BOXES = 324
WIDTH = 18
TRIO = 3  # members of the program's ensemble
ABSENT = np.concatenate([np.zeros(20), np.tile((0.0, 1.0), 6)]).astype(np.float32)
VARIANT_WEIGHT = {"surf20": 0, "surf20_hyb": 1}


def box_weights():
    """The program's box weights max(0.03, sqrt(D)); D is its fixed box density table."""
    density = np.loadtxt(os.path.join(os.path.dirname(os.path.abspath(__file__)), "box_density.txt"))
    return np.maximum(0.03, np.sqrt(density.ravel()))


def axis_bump(angle):
    """exp(-d^2/2) along one axis, d = periodic distance in boxes between the angle and the 18 box centres."""
    position = (np.asarray(angle, np.float32)[..., None] + 180.0) / 20.0 - 0.5
    distance = np.abs(position - np.arange(WIDTH, dtype=np.float32))
    distance = np.minimum(distance, WIDTH - distance)
    return np.exp(-0.5 * distance * distance).astype(np.float32)


def smoothed(layers, weights):
    """The layers with maps smoothed by a periodic Gaussian of BOX_SMOOTHING boxes: bumps get wider and keep
    their height.

    The program compares regions by their highest boxes; smoothed, these tell the probability of a region
    rather than how narrow it is. `weights` are the box weights (map = output x weight)."""
    width = settings.BOX_SMOOTHING
    if width == 0.0:
        return layers
    step = np.arange(WIDTH)
    step = np.minimum(step, WIDTH - step)
    line = np.exp(-0.5 * (step / width) ** 2)
    circle = (line / line.sum())[(np.arange(WIDTH)[:, None] - np.arange(WIDTH)[None, :]) % WIDTH]
    kernel = (1.0 + width * width) * np.kron(circle, circle) * weights / weights[:, None]
    weight, bias = layers[2]
    return [*layers[:2], (np.matmul(kernel, weight), bias @ kernel.T)]


class BoxWindows:
    """Windows of five residues per variant: centre rows, five row numbers each (`count` = the absent
    residue)."""

    def __init__(self, inputs, network):
        self.inputs = inputs
        self.network = network
        self.known = np.isfinite(inputs.phi) & np.isfinite(inputs.psi)
        # residue type first, whole BLOSUM62 units, then the shift pairs; the last row is the absent residue
        self.vectors = np.empty((len(inputs.variants), inputs.count + 1, 32), np.float32)
        self.vectors[:, :-1, :20] = inputs.vectors[:, :, 12:] * 10.0
        self.vectors[:, :-1, 20:] = inputs.vectors[:, :, :12]
        self.vectors[:, -1] = ABSENT
        self.rows = [self._rows(v) for v in range(len(inputs.variants))]
        self.stacked = np.stack(self.rows)
        self.usable = np.array([self._usable(v) for v in range(len(inputs.variants))])
        self.bump_phi = axis_bump(np.where(self.known, inputs.phi, 0.0))
        self.bump_psi = axis_bump(np.where(self.known, inputs.psi, 0.0))
        share = np.array([settings.VARIANTS[name][VARIANT_WEIGHT[network]] for name in inputs.variants])
        chance = self.usable * share[:, None]
        self.centres = np.nonzero(chance.sum(axis=0) > 0.0)[0]
        cumulated = np.cumsum(chance[:, self.centres], axis=0)
        self.cumulated = cumulated / cumulated[-1]
        offset = [settings.OFFSET_NOISE[atom] for atom in settings.VECTOR_ATOMS]
        observed = self.vectors[0, :-1]
        spread = [np.nanstd(observed[observed[:, 21 + 2 * k] == 0.0, 20 + 2 * k]) for k in range(6)]
        self.offset_noise = np.array(offset, np.float32)
        self.value_noise = settings.VALUE_NOISE * np.array(spread, np.float32)

    def _rows(self, variant):
        """Five rows around each residue in the variant; -1 = not to be had. At the ends of the range of
        vectors the hybrid network sees one absent residue."""
        inputs = self.inputs
        present = np.isfinite(inputs.vectors[variant]).all(axis=1)
        rows = inputs.neighbours(2)
        rows[~present[rows]] = -1
        rows[~present] = -1
        if self.network == "surf20_hyb":
            for chain in range(len(inputs.proteins)):
                inside = (
                    np.nonzero(present[inputs.start[chain] : inputs.start[chain + 1]])[0]
                    + inputs.start[chain]
                )
                if len(inside) >= 3:
                    rows[inside[1], 0] = rows[inside[-2], 4] = inputs.count
        return rows

    def _usable(self, variant):
        """Windows on which the program would use this network, centre with known torsions."""
        rows = self.rows[variant]
        missing = np.append(self.inputs.missing[variant], 6)[rows]
        good = (rows >= 0).all(axis=1) & self.known
        if self.network == "surf20":
            return good & (missing <= 4).all(axis=1)
        return good & (missing.sum(axis=1) < 25)

    def pick_variants(self, rng):
        """A random variant per centre by the settings' shares."""
        return (rng.random(len(self.centres)) > self.cumulated).sum(axis=0).clip(max=len(self.rows) - 1)

    def inputs_of(self, variant, centres):
        """Network inputs of one variant, windows x 160."""
        return self.vectors[variant, self.rows[variant][centres]].reshape(len(centres), 160)

    def targets(self, centres):
        """Bump values, windows x 324."""
        return (self.bump_phi[centres][:, :, None] * self.bump_psi[centres][:, None, :]).reshape(-1, BOXES)

    def add_noise(self, x, rng):
        """Referencing offset per window and nucleus plus noise per value, on the shift entries of present
        residues."""
        view = x.reshape(len(x), 5, 32)
        real = np.abs(view[:, :, :20]).sum(axis=2, keepdims=True) > 0.0
        noise = (
            rng.standard_normal((len(x), 1, 6), np.float32) * self.offset_noise
            + rng.standard_normal((len(x), 5, 6), np.float32) * self.value_noise
        )
        view[:, :, 20::2] += noise * real
        return view.reshape(len(x), 160)

    def batches(self, rng, shares, simulated):
        """One epoch of (inputs, targets, member weights): every real window and `simulated` times as many
        others."""
        variants = self.pick_variants(rng)
        for index in mixed(self.inputs.real[self.centres], simulated, settings.BATCH, rng):
            centres, picked = self.centres[index], variants[index]
            rows = self.stacked[picked, centres]
            if self.network == "surf20_hyb":
                absent = rng.random((len(index), 2)) < settings.HYBRID_ABSENT
                rows[absent[:, 0], 0] = rows[absent[:, 1], 4] = self.inputs.count
            x = self.vectors[picked[:, None], rows]
            self.inputs.redraw_errors(x[:, :, 20::2], x[:, :, 21::2], rows, rng)
            x = self.add_noise(x.reshape(len(index), 160), rng)
            yield (
                torch.from_numpy(x),
                torch.from_numpy(self.targets(centres)),
                None if shares is None else shares[:, centres],
            )


def train_level1(windows, epochs, name, folds=None, leave_out=None, seed=settings.SEED):
    """Three members; with `folds` (per residue) three per fold, member k never sees fold k modulo FOLDS; with
    `leave_out` three that never see this one. Each is fitted alone: fitting the mean of three overfits (map
    error 1.007 against 0.996 on proteins kept out).
    """
    rng = np.random.default_rng(seed)
    members = TRIO * (1 if folds is None or leave_out is not None else settings.FOLDS)
    shares = None if folds is None else hold_out_shares(folds, members, leave_out)
    sample = np.concatenate(
        [
            windows.inputs_of(v, np.nonzero(windows.usable[v] & windows.inputs.real)[0][::7])
            for v in range(len(windows.rows))
        ]
    )
    centre, scale = standardisation(sample)
    model = Ensemble(members, 160, 180, BOXES, centre, scale, seed)
    simulated = settings.SIMULATED_SHARE
    return train(
        model,
        lambda: windows.batches(rng, shares, simulated),
        lambda net, x, y, share: member_mse(net(x), y, share),
        epochs,
        mixed_steps(windows.inputs.real[windows.centres], simulated, settings.BATCH),
        name,
        orthogonalised(model, settings.BOX_RATE),
    )


@torch.no_grad()
def level1_maps(model, windows, variant, folds):
    """Maps (bump units) of every real residue in the variant, rows x 324, each the mean of the members that
    held the residue out. Residues without a window get the mean of their protein's maps, as in the
    program."""
    inputs = windows.inputs
    good = np.nonzero((windows.rows[variant] >= 0).all(axis=1) & inputs.real)[0]
    maps = np.full((inputs.count, BOXES), np.nan, np.float32)
    for part in np.array_split(good, max(1, len(good) // 4096)):
        output = model(torch.from_numpy(windows.inputs_of(variant, part)))
        for fold in range(settings.FOLDS):
            own = folds[part] == fold
            maps[part[own]] = output[fold :: settings.FOLDS, torch.as_tensor(own)].mean(dim=0).numpy()
    present = np.isfinite(inputs.vectors[variant]).all(axis=1)
    for chain in range(len(inputs.proteins)):
        span = slice(inputs.start[chain], inputs.start[chain + 1])
        block = maps[span]
        filled = np.isfinite(block[:, 0])
        if filled.any():
            block[~filled & present[span]] = block[filled].mean(axis=0)
    return maps


def box_neighbours(reach=2):
    """324 x 324 matrix: 1 where two boxes are at most `reach` apart on both axes (periodic)."""
    step = np.abs(np.arange(WIDTH)[:, None] - np.arange(WIDTH)[None, :])
    near = np.minimum(step, WIDTH - step) <= reach
    return np.kron(near, near).astype(np.float32)


class Level2(torch.nn.Module):
    """Second level on five level-1 maps: starts as a pass-through of the centre map, corrections are local.

    Input layer: unit (d, box) sees the boxes within two of its own in the map of residue d. Hidden layer: 324
    units that see their own neighbourhood in all five residues, the others see everything. Maps are scaled
    down by `gain` on the way in, so that tanh stays near its linear part, and up again by the output layer.
    """

    def __init__(self, members, gain=0.35, free=36, seed=settings.SEED):
        super().__init__()
        torch.manual_seed(seed)
        near = torch.from_numpy(box_neighbours())
        identity = torch.eye(BOXES)
        self.gain = gain
        self.members = members
        self.register_buffer("mask_in", near.expand(5, -1, -1).clone())
        mask_hidden = torch.cat([near.repeat(1, 5), torch.ones(free, 5 * BOXES)])
        self.register_buffer("mask_hidden", mask_hidden)
        start_hidden = torch.zeros(BOXES + free, 5 * BOXES)
        start_hidden[:BOXES, 2 * BOXES : 3 * BOXES] = identity
        start_hidden[BOXES:] = 0.02 * torch.randn(free, 5 * BOXES)
        start_output = torch.cat([identity / gain, torch.zeros(BOXES, free)], dim=1)
        self.w_in = torch.nn.Parameter(
            (gain * identity).expand(members, 5, -1, -1) + 0.002 * torch.randn(members, 5, BOXES, BOXES)
        )
        self.b_in = torch.nn.Parameter(torch.zeros(members, 5, BOXES))
        self.w_hidden = torch.nn.Parameter(
            start_hidden.expand(members, -1, -1) + 0.002 * torch.randn(members, BOXES + free, 5 * BOXES)
        )
        self.b_hidden = torch.nn.Parameter(torch.zeros(members, BOXES + free))
        self.w_out = torch.nn.Parameter(
            start_output.expand(members, -1, -1) + 0.002 * torch.randn(members, BOXES, BOXES + free)
        )
        self.b_out = torch.nn.Parameter(torch.zeros(members, BOXES))

    def forward(self, x):
        """x: batch x 5 x 324 maps in bump units; members x batch x 324."""
        count = x.shape[0]
        weight = (self.w_in * self.mask_in).transpose(2, 3).reshape(self.members * 5, BOXES, BOXES)
        maps = x.transpose(0, 1).repeat(self.members, 1, 1)
        y = torch.tanh(torch.baddbmm(self.b_in.reshape(-1, 1, BOXES), maps, weight))
        y = y.reshape(self.members, 5, count, BOXES).transpose(1, 2).reshape(self.members, count, 5 * BOXES)
        y = torch.tanh(
            torch.baddbmm(self.b_hidden[:, None], y, (self.w_hidden * self.mask_hidden).transpose(1, 2))
        )
        return torch.baddbmm(self.b_out[:, None], y, self.w_out.transpose(1, 2))

    def layers(self, weights):
        """Dense layers for raw level-1 outputs (map / box weight); entries outside the masks are exactly
        0."""
        dense = np.zeros((self.members, 5 * BOXES, 5 * BOXES))
        local = (self.w_in * self.mask_in).detach().double().numpy() * weights
        for d in range(5):
            dense[:, d * BOXES : (d + 1) * BOXES, d * BOXES : (d + 1) * BOXES] = local[:, d]
        return [
            (dense, self.b_in.detach().double().numpy().reshape(self.members, -1)),
            (
                (self.w_hidden * self.mask_hidden).detach().double().numpy(),
                self.b_hidden.detach().double().numpy(),
            ),
            (
                self.w_out.detach().double().numpy() / weights[:, None],
                self.b_out.detach().double().numpy() / weights,
            ),
        ]


LEVEL2_VARIANTS = ("observed", "random_light", "random_heavy", "nuclei", "ca_cb_n_hn")


def train_level2(windows, fold_model, folds, epochs, leave_out=None, seed=settings.SEED):
    """Second level on out-of-fold level-1 maps of some variants; never sees the fold `leave_out`."""
    rng = np.random.default_rng(seed)
    picked = [windows.inputs.variants.index(name) for name in LEVEL2_VARIANTS]
    maps = np.stack([level1_maps(fold_model, windows, v, folds) for v in picked])
    slots, centres = np.nonzero(windows.usable[picked] & windows.inputs.real & (folds != leave_out))
    rows = np.stack([windows.rows[v] for v in picked])[slots, centres]
    error = ((maps[slots, centres] - windows.targets(centres)) ** 2).sum(axis=1).mean()
    print(f"  surf20 level 2: level-1 error out of fold {error:.4f}, {len(slots)} windows", flush=True)
    steps = int((windows.inputs.real & (folds != leave_out))[windows.centres].sum()) // settings.BATCH

    def batches():
        for index in np.split(rng.permutation(len(slots))[: steps * settings.BATCH], steps):
            yield (
                torch.from_numpy(maps[slots[index][:, None], rows[index]]),
                torch.from_numpy(windows.targets(centres[index])),
            )

    model = Level2(TRIO, seed=seed)
    return train(
        model,
        batches,
        lambda net, x, y: member_mse(net(x), y),
        epochs,
        steps,
        "surf20 level 2",
        adamw(model, settings.BOX_LEVEL2_RATE),
    )
