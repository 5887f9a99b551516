"""Ensembles of the program's three-layer perceptrons, trained side by side as one batched model."""

import math

import numpy as np
import torch
from torch import nn

import settings

# Instead of a fold number, for chains without shifts: no relative of a real protein, and one.
UNRELATED, RELATED = -1, -2


class Ensemble(nn.Module):
    """Members of one network level: a square tanh layer, a tanh hidden layer and a linear output layer each.

    Inputs are standardised with fixed means and scales, and outputs are in the units of the training target;
    both are folded into the weights by `layers`, so that the written network takes raw inputs.
    """

    def __init__(self, members, inputs, hidden, outputs, centre=None, scale=None, seed=settings.SEED):
        super().__init__()
        torch.manual_seed(seed)
        self.register_buffer(
            "centre", torch.zeros(inputs) if centre is None else torch.as_tensor(centre).float()
        )
        self.register_buffer("scale", torch.ones(inputs) if scale is None else torch.as_tensor(scale).float())
        shapes = ((inputs, inputs), (inputs, hidden), (hidden, outputs))
        self.weights = nn.ParameterList(
            nn.Parameter(torch.randn(members, m, n) / math.sqrt(m)) for m, n in shapes
        )
        self.biases = nn.ParameterList(nn.Parameter(torch.zeros(members, 1, n)) for _, n in shapes)

    def forward(self, x):
        """x: batch x inputs, or members x batch x inputs. Returns members x batch x outputs."""
        x = (x - self.centre) / self.scale
        if x.dim() == 2:
            x = x.expand(self.weights[0].shape[0], -1, -1)
        x = torch.tanh(torch.baddbmm(self.biases[0], x, self.weights[0]))
        x = torch.tanh(torch.baddbmm(self.biases[1], x, self.weights[1]))
        return torch.baddbmm(self.biases[2], x, self.weights[2])

    def layers(self, output_divisor=None):
        """[(weights, biases)] of the three layers, members x units x inputs and members x units, for raw
        inputs. `output_divisor` (one per output) turns the trained output into the network's own units."""
        arrays = [
            (w.detach().double().numpy().transpose(0, 2, 1).copy(), b.detach().double().numpy()[:, 0].copy())
            for w, b in zip(self.weights, self.biases)
        ]
        centre, scale = self.centre.double().numpy(), self.scale.double().numpy()
        weight, bias = arrays[0]
        bias -= (weight * (centre / scale)).sum(axis=2)
        weight /= scale
        if output_divisor is not None:
            weight, bias = arrays[2]
            weight /= output_divisor[:, None]
            bias /= output_divisor
        return arrays


def evaluate_layers(layers, x):
    """Reference evaluation in double precision, members x rows x outputs; x as in Ensemble.forward."""
    for k, (weight, bias) in enumerate(layers):
        x = np.matmul(x, weight.transpose(0, 2, 1)) + bias[:, None, :]
        if k < 2:
            x = np.tanh(x)
    return x


def standardisation(x):
    """Mean and spread per input; inputs that hardly vary keep the scale 1."""
    centre, scale = x.mean(axis=0), x.std(axis=0)
    return centre, np.where(scale > 1e-3, scale, 1.0)


class Orthogonalised(torch.optim.Optimizer):
    """Momentum whose matrix is made orthogonal before the step (Muon; Jordan et al., 2024): a quintic
    Newton-Schulz iteration brings all singular values near 1, so that weak directions of the gradient are
    learned as fast as strong ones. Parameters are members x inputs x outputs."""

    MOMENTUM = 0.95
    QUINTIC = (3.4445, -4.7750, 2.0315)

    def __init__(self, parameters, rate):
        super().__init__(parameters, {"lr": rate})

    def _orthogonal(self, matrix):
        a, b, c = self.QUINTIC
        x = matrix / (matrix.norm(dim=(1, 2), keepdim=True) + 1e-7)
        turned = x.shape[1] > x.shape[2]
        if turned:
            x = x.transpose(1, 2)
        for _ in range(5):
            square = x @ x.transpose(1, 2)
            x = a * x + (b * square + c * square @ square) @ x
        return x.transpose(1, 2) if turned else x

    @torch.no_grad()
    def step(self):
        for group in self.param_groups:
            for weight in group["params"]:
                state = self.state[weight]
                if not state:
                    state["momentum"] = torch.zeros_like(weight)
                momentum = state["momentum"].lerp_(weight.grad, 1.0 - self.MOMENTUM)
                update = self._orthogonal(weight.grad.lerp(momentum, self.MOMENTUM))
                size = math.sqrt(max(1.0, weight.shape[2] / weight.shape[1]))
                weight.add_(update, alpha=-group["lr"] * size)


def orthogonalised(model, rate):
    """Steppers of an ensemble: orthogonalised steps for its matrices, AdamW for its biases."""
    return [
        Orthogonalised(list(model.weights), rate),
        torch.optim.AdamW(list(model.biases), lr=settings.BIAS_RATE, weight_decay=0.0),
    ]


def adamw(model, rate=settings.LEARNING_RATE):
    """Steppers of any model: AdamW for everything."""
    return [torch.optim.AdamW(model.parameters(), lr=rate, weight_decay=settings.WEIGHT_DECAY)]


def train(model, batches, loss, epochs, steps, name, steppers):
    """Steps of `steppers` with cosine decay of their rates. `batches()` yields the argument tuples of one
    epoch, `loss(model, *batch)` is minimised; `steps` is the number of batches per epoch."""
    schedules = [
        torch.optim.lr_scheduler.OneCycleLR(
            stepper,
            stepper.param_groups[0]["lr"],
            total_steps=epochs * steps,
            pct_start=0.03,
            cycle_momentum=False,
            div_factor=10.0,
            final_div_factor=1e3,
        )
        for stepper in steppers
    ]
    done = 0
    for epoch in range(epochs):
        total = 0.0
        count = 0
        for batch in batches():
            if done >= epochs * steps:
                break
            value = loss(model, *batch)
            model.zero_grad(set_to_none=True)
            value.backward()
            for stepper in (*steppers, *schedules):
                stepper.step()
            total += float(value.detach())
            count += 1
            done += 1
        if epoch % 10 == 9 or epoch == epochs - 1 or epochs < 8:
            print(f"  {name}: epoch {epoch + 1}/{epochs}, loss {total / max(count, 1):.4f}", flush=True)
    return model


def member_mse(output, target, share=None):
    """Sum over members of the squared error per sample (summed over outputs); `share` (members x batch) is
    the weight of a sample for a member, 0 for its held-out fold."""
    error = ((output - target) ** 2).sum(dim=2)
    if share is None:
        return error.mean(dim=1).sum()
    return ((error * share).sum(dim=1) / share.sum(dim=1).clamp(min=1.0)).sum()


def hold_out_shares(folds, members, leave_out=None):
    """members x samples: 1 where the member may see the sample: not its held-out fold (member k holds out
    fold k modulo FOLDS, or all of them `leave_out`), not RELATED."""
    held = (
        torch.arange(members)[:, None] % settings.FOLDS
        if leave_out is None
        else torch.full((members, 1), leave_out)
    )
    folds = torch.as_tensor(folds)[None, :]
    return ((folds != held) & (folds != RELATED)).float()


def shuffled(count, batch, generator):
    """Index batches of one epoch, the incomplete last one dropped."""
    order = generator.permutation(count)
    for start in range(0, count - batch + 1, batch):
        yield order[start : start + batch]


def mixed(real, share, batch, generator):
    """Index batches of one epoch: every real sample and `share` times as many of the others, drawn at
    random."""
    own, other = np.nonzero(real)[0], np.nonzero(~real)[0]
    drawn = generator.permutation(other)[: int(share * len(own))]
    order = generator.permutation(np.concatenate([own, drawn]))
    for start in range(0, len(order) - batch + 1, batch):
        yield order[start : start + batch]


def mixed_steps(real, share, batch):
    """Number of batches that `mixed` yields."""
    own = int(real.sum())
    return (own + min(len(real) - own, int(share * own))) // batch
