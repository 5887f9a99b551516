#!/usr/bin/python3
"""Which residues and chains the training kit takes, and how it weighs the candidates of the chi1 networks.

Status 77 (ctest: skipped) where numpy or PyTorch is missing."""

import os
import sys
import unittest
from types import SimpleNamespace

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "training"))
try:
    import numpy as np

    import settings
    from data import structures
    from networks import chi1
except ImportError as error:
    print(f"skipped: {error}")
    sys.exit(77)


def chain(name, cluster):
    return SimpleNamespace(name=name, cluster=cluster, variants=["observed"])


class DisorderedResidues(unittest.TestCase):
    def test_high_b_alone_or_against_the_chain(self):
        placeholder = np.full(41, 10.05, np.float32)  # its mean in single precision is smaller
        outlier = np.full(40, 20.0)
        outlier[7] = 45.0  # 6 standard deviations of 3.9 above the mean of 20.6
        partly = outlier.copy()
        partly[20:] = np.nan
        hot = settings.LARGEST_B + np.arange(1.0, 41.0)
        for name, b, expected in (
            ("placeholder", placeholder, []),
            ("high placeholder", np.full(40, 100.0), []),
            ("one mobile residue", outlier, [7]),
            ("the same in other units", outlier / 79.0, [7]),
            ("all mobile", hot, list(range(40))),
            ("no B factors", np.full(40, np.nan), []),
            ("B factors of half a chain", partly, [7]),
        ):
            with self.subTest(name):
                self.assertEqual(list(np.nonzero(structures.disordered(b))[0]), expected)


class SimulatedRelatives(unittest.TestCase):
    def test_only_chains_that_one_fold_holds_out(self):
        proteins = [SimpleNamespace(name=name) for name in ("P0", "P1", "Q1", "R2")]
        extra = SimpleNamespace(
            relatives={"P0": {"a", "shared"}, "P1": {"b"}, "Q1": {"b", "shared"}},
            simulated=[chain("x", "b"), chain("y", "unrelated"), chain("z", "a"), chain("w", "shared")],
        )
        chosen, folds = chi1.simulated_relatives(proteins, np.array([0, 1, 1, 2]), extra)
        self.assertEqual([(protein.name, fold) for protein, fold in zip(chosen, folds)], [("x", 1), ("z", 0)])


class Candidates(unittest.TestCase):
    def test_rotamers_of_a_query_weigh_the_same(self):
        query = np.array([4] * 5 + [9] * 3)
        state = np.array([0, 0, 0, 0, 2, 1, 1, 1])
        real = query == 4
        weight = chi1.fragment_weights(query, state, real)
        self.assertAlmostEqual(weight.mean(), 1.0, places=6)
        sums = [weight[(query == q) & (state == s)].sum() for q, s in ((4, 0), (4, 2), (9, 1))]
        np.testing.assert_allclose(
            np.array(sums) / sums[2], [settings.CHI1_REAL_WEIGHT] * 2 + [1.0], rtol=1e-6
        )

    def test_mean_of_the_ten_best_of_each_rotamer(self):
        rng = np.random.default_rng(3)
        query = np.repeat([2, 5], [60, 9])
        angle = np.concatenate(
            [rng.uniform(-180.0, 180.0, 60), [-60.0] * 2 + [60.0] * 3 + [180.0] * 3 + [9999.0]]
        )
        score = rng.random(69)
        queries, means = chi1.rotamer_means(query, angle, score)
        self.assertEqual(list(queries), [2, 5])
        for q, found in zip(queries, means):
            for state, (low, high) in enumerate(((-120.0, 0.0), (0.0, 120.0), (None, None))):
                inside = (
                    (angle <= -120.0) | ((angle > 120.0) & (angle < 999.0))
                    if low is None
                    else (angle > low) & (angle <= high)
                )
                best = sorted(score[(query == q) & inside])[:10]
                self.assertAlmostEqual(found[state], sum(best) / len(best) if len(best) >= 3 else 1.0)


if __name__ == "__main__":
    unittest.main()
