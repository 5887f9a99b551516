"""Chains of the structures data as training proteins: predicted shifts plus errors as the prediction makes
them."""

import zlib

import numpy as np

import settings
from data.paired import Protein

ATOMS = settings.ATOMS
LETTERS = settings.AMINO_ACIDS + "c"


def as_protein(chain):
    """The chain without shifts as a training protein; non-standard residues are gaps of the numbering."""
    keep = np.array([letter in LETTERS for letter in chain.code])
    protein = Protein(chain.name, chain.cl30)
    protein.resid = [int(place) + 1 for place in chain.place[keep]]
    protein.code = [letter for letter, good in zip(chain.code, keep) if good]
    protein.ss8 = [letter if letter in "HBEGITS" else "-" for letter, good in zip(chain.ss8, keep) if good]
    protein.phi, protein.psi, protein.chi1 = (
        np.asarray(angle, float)[keep] for angle in (chain.phi, chain.psi, chain.chi1)
    )
    protein.shifts = np.full((len(protein.resid), len(ATOMS)), np.nan)
    return protein, keep


def error_pool(errors, starts):
    """Errors (rows x 6 in units of the expected error, nan = no shift) with the holes filled by draws from
    the same nucleus, and the rows where a stretch of `ERROR_STRETCH` residues may start."""
    rng = np.random.default_rng(settings.SEED)
    filled = errors.copy()
    for atom in range(filled.shape[1]):
        known = np.isfinite(filled[:, atom])
        filled[~known, atom] = rng.choice(filled[known, atom], (~known).sum())
    limit = settings.LARGEST_ERROR
    length = settings.ERROR_STRETCH
    chains = np.cumsum(starts)
    first = np.nonzero(chains[:-length] == chains[length:])[0]
    return np.clip(filled, -limit, limit), first


def draw_errors(count, pool, first, rng):
    """Errors of `count` residues: stretches of real ones, so that neighbours and nuclei stay correlated."""
    length = settings.ERROR_STRETCH
    picks = rng.choice(first, count // length + 1)
    return np.concatenate([pool[start : start + length] for start in picks])[:count]


def assigned_nuclei(proteins):
    """Sets of nuclei assigned in real proteins (share of residues above a third), to be imitated."""
    sets = []
    for protein in proteins:
        good = np.isfinite(protein.shifts).mean(axis=0) > 0.33
        if good.sum() >= 3:
            sets.append(good)
    return np.array(sets)


def simulated(chains, secondary, expected_error, reference, pool, patterns):
    """Training proteins of `chains` with simulated shifts (ppm). secondary, expected_error: per chain
    residues x 6."""
    rows, first = pool
    proteins = []
    for chain, shift, sigma in zip(chains, secondary, expected_error):
        protein, keep = as_protein(chain)
        protein.predicted, protein.error = shift[keep], sigma[keep]
        rng = np.random.default_rng([settings.SEED, zlib.crc32(chain.name.encode())])
        shift = protein.predicted + protein.error * draw_errors(len(protein), rows, first, rng)
        shift = shift + reference.expected(protein)  # nan where the type has no such nucleus
        shift[:, ~patterns[rng.integers(len(patterns))]] = np.nan
        shift[rng.random(shift.shape) < settings.SIMULATED_LACK] = np.nan
        protein.shifts = shift
        others = [name for name in settings.VARIANTS if name != "observed"]
        weight = np.array([sum(settings.VARIANTS[name]) for name in others])
        protein.variants = [
            "observed",
            *rng.choice(others, settings.SIMULATED_VARIANTS - 1, False, weight / weight.sum()),
        ]
        proteins.append(protein)
    return proteins
