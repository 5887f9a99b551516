"""Figures as ratios of sums over residues, with bootstrap intervals over proteins."""

import numpy as np

RESAMPLES = 2000
SEED = 20261123
LEVELS = (2.5, 97.5)


class Bootstrap:
    """Resamples whole proteins: residues of one protein are not independent of each other."""

    def __init__(self, proteins):
        self.proteins = proteins
        rng = np.random.default_rng(SEED)
        self.weights = rng.multinomial(proteins, np.full(proteins, 1.0 / proteins), RESAMPLES)

    def ratio(self, protein, where, values, root=False):
        """(mean of `values` over the residues `where`, low, high); `root` takes the square root of the mean.
        None when no residue counts."""
        if not where.any():
            return None
        counts = np.bincount(protein[where], minlength=self.proteins)
        sums = np.bincount(protein[where], np.asarray(values, float)[where], minlength=self.proteins)
        total, below = self.weights @ sums, self.weights @ counts
        means = total[below > 0] / below[below > 0]
        figures = np.array([sums.sum() / counts.sum(), *np.percentile(means, LEVELS)])
        return tuple(np.sqrt(figures)) if root else tuple(figures)

    def share(self, protein, part, whole):
        """Percentage of the residues `whole` that are also `part`."""
        figure = self.ratio(protein, whole, part & whole)
        return figure and tuple(100.0 * value for value in figure)

    def calibration(self, protein, probability, right, where, edges):
        """Per bin of the probability: [low edge, high edge, residues, mean probability, share right]; the
        figures in percent, empty bins left out."""
        rows = []
        for low, high in zip(edges[:-1], edges[1:]):
            below = probability <= high if high == edges[-1] else probability < high
            inside = where & (probability >= low) & below
            if inside.any():
                rows.append(
                    [
                        low,
                        high,
                        int(inside.sum()),
                        100.0 * float(probability[inside].mean()),
                        self.share(protein, right, inside),
                    ]
                )
        return rows


class Figures:
    """Headline figures of one variant; every figure is (value, low, high) or None."""

    def __init__(self, results, bootstrap):
        self.results, self.bootstrap = results, bootstrap

    def share(self, part, whole):
        return self.bootstrap.share(self.results.protein, part, whole)

    def rmsd(self, error, where):
        return self.bootstrap.ratio(self.results.protein, where, np.nan_to_num(error) ** 2, root=True)

    def mean_error(self, error, where):
        return self.bootstrap.ratio(self.results.protein, where, np.abs(np.nan_to_num(error)))

    def torsions(self, where=None):
        """Coverage and errors over the residues `where` with known torsions."""
        r = self.results
        known = r.known if where is None else r.known & where
        accepted = r.accepted & known
        good = accepted & ~r.wrong
        return {
            "residues": int(known.sum()),
            "searched": self.share(r.searched, known),
            "accepted": self.share(accepted, known),
            "accepted of searched": self.share(accepted, known & r.searched),
            "wrong": self.share(r.wrong, accepted),
            "RMSD phi": self.rmsd(r.phi_error, good),
            "RMSD psi": self.rmsd(r.psi_error, good),
            "MAE phi": self.mean_error(r.phi_error, good),
            "MAE psi": self.mean_error(r.psi_error, good),
            "MAE phi, all accepted": self.mean_error(r.phi_error, accepted),
            "MAE psi, all accepted": self.mean_error(r.psi_error, accepted),
        }

    def structure(self):
        r = self.results
        shifts = r.ss_source == "shifts"
        return {
            "from shifts": self.share(shifts, r.ss != ""),
            "Q3 shifts": self.share(r.right_structure, shifts),
            "Q3 sequence": self.share(r.right_structure, r.ss_source == "sequence"),
            "Q3": self.share(r.right_structure, r.ss != ""),
        }

    def chi1(self, where=None):
        r = self.results
        with_chi1 = r.has_chi1 if where is None else r.has_chi1 & where
        called = r.called & with_chi1
        return {
            "residues": int(with_chi1.sum()),
            "class": self.share(called, with_chi1),
            "right": self.share(r.right_rotamer, called),
            "MAE chi1": self.mean_error(r.chi1_error, r.right_rotamer & with_chi1),
        }

    def confusion(self, where):
        """3 x 3 counts, rows DSSP, columns prediction, both in the order helix, strand, coil."""
        r = self.results
        return [
            [int((where & (r.state == true) & (r.ss == predicted)).sum()) for predicted in "HEL"]
            for true in "HEL"
        ]

    def by_distance(self, bins, scored=False):
        """Accepted residues whose DIST is a distance (or a score) in `bins` groups of equal size by it: [low,
        high, median, residues, RMSD phi, RMSD psi, wrong]."""
        r = self.results
        where = r.accepted & np.isfinite(r.dist) & (r.scored == scored)
        if where.sum() < bins:
            return []
        edges = np.quantile(r.dist[where], np.linspace(0.0, 1.0, bins + 1))
        rows = []
        for k in range(bins):
            inside = where & (r.dist >= edges[k]) & ((r.dist < edges[k + 1]) | (k == bins - 1))
            good = inside & ~r.wrong
            if good.any():
                rows.append(
                    [
                        edges[k],
                        edges[k + 1],
                        float(np.median(r.dist[inside])),
                        int(inside.sum()),
                        self.rmsd(r.phi_error, good),
                        self.rmsd(r.psi_error, good),
                        self.share(r.wrong, inside),
                    ]
                )
        return rows


def correlation(x, y):
    """Pearson's coefficient over the residues where both are known; None for fewer than ten or a constant."""
    both = np.isfinite(x) & np.isfinite(y)
    if both.sum() < 10 or x[both].std() == 0.0 or y[both].std() == 0.0:
        return None
    return float(np.corrcoef(x[both], y[both])[0, 1])


def ranks(values):
    """Ranks with ties shared."""
    _, place, counts = np.unique(values, return_inverse=True, return_counts=True)
    return (np.cumsum(counts) - 0.5 * (counts - 1))[place]


def rank_correlation(x, y):
    """Spearman's coefficient, as `correlation`."""
    both = np.isfinite(x) & np.isfinite(y)
    return correlation(ranks(x[both]), ranks(y[both])) if both.any() else None
