"""The report in Markdown."""

import math

import numpy as np
from accuracy.figures import RESAMPLES, correlation, rank_correlation

GROUPS = ("Strong", "Generous", "Warn", "Dyn", "None")
STATE_NAMES = {"H": "helix", "E": "strand", "L": "coil"}
TENTHS = [k / 10.0 for k in range(11)]
CLASS_EDGES = [0.6, 0.7, 0.8, 0.9, 1.0]
DISTANCE_BINS = 10
SCORE_BINS = 3
# Goals of this installation: (what, variant, part of the headline figures, figure, at least or at most,
# value, unit)
GOALS = (
    ("accepted, of the searched", "observed", "torsions", "accepted of searched", ">=", 90.0, "%"),
    ("wrong, of the accepted", "observed", "torsions", "wrong", "<=", 3.5, "%"),
    ("RMSD phi of the rest", "observed", "torsions", "RMSD phi", "<=", 14.0, "degrees"),
    ("RMSD psi of the rest", "observed", "torsions", "RMSD psi", "<=", 12.5, "degrees"),
    ("wrong, CA CB N HN only", "CA-CB-N-HN", "torsions", "wrong", "<=", 6.0, "%"),
    ("secondary structure from shifts", "observed", "structure", "Q3 shifts", ">=", 88.0, "%"),
    ("secondary structure from profiles", "profile", "structure", "Q3", ">=", 70.0, "%"),
    ("chi1 class given", "observed", "chi1", "class", ">=", 45.0, "%"),
    ("chi1 class right", "observed", "chi1", "right", ">=", 87.0, "%"),
)


def cell(figure, digits=1):
    """Value with its interval; empty when nothing was counted."""
    if figure is None:
        return ""
    value, low, high = figure
    return f"{value:.{digits}f} ({low:.{digits}f}-{high:.{digits}f})"


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "| " + " | ".join("---" for _ in head) + " |"]
    lines += ["| " + " | ".join(str(word) for word in row) + " |" for row in rows]
    return "\n".join(lines) + "\n"


def goals(headlines):
    rows = []
    for what, variant, part, name, sign, wanted, unit in GOALS:
        figure = headlines.get(variant, {}).get(part, {}).get(name)
        if figure is None:
            continue
        met = figure[0] >= wanted if sign == ">=" else figure[0] <= wanted
        rows.append(
            (
                what,
                f"{'at least' if sign == '>=' else 'at most'} {wanted:g} {unit}",
                cell(figure, 2),
                "yes" if met else "no",
            )
        )
    return table(("figure", "goal", "reached", "met"), rows)


def torsion_row(title, figures):
    return (
        title,
        figures["residues"],
        cell(figures["searched"]),
        cell(figures["accepted of searched"]),
        cell(figures["accepted"]),
        cell(figures["wrong"], 2),
        cell(figures["RMSD phi"]),
        cell(figures["RMSD psi"]),
        cell(figures["MAE phi"]),
        cell(figures["MAE psi"]),
    )


TORSION_HEAD = (
    "residues",
    "searched %",
    "accepted, of searched %",
    "accepted, of all %",
    "wrong %",
    "RMSD phi",
    "RMSD psi",
    "MAE phi",
    "MAE psi",
)


def completeness(headlines, titles):
    text = table(
        ("input", *TORSION_HEAD),
        [
            torsion_row(titles[name], parts["torsions"])
            for name, parts in headlines.items()
            if "torsions" in parts
        ],
    )
    text += "\n" + table(
        (
            "input",
            "structure from shifts, of all %",
            "right, from shifts %",
            "right, from sequence %",
            "right, all %",
            "chi1 class given %",
            "chi1 class right %",
            "chi1 MAE, right class",
        ),
        [
            (
                titles[name],
                *(cell(parts["structure"][key]) for key in ("from shifts", "Q3 shifts", "Q3 sequence", "Q3")),
                *(cell(parts.get("chi1", {}).get(key)) for key in ("class", "right", "MAE chi1")),
            )
            for name, parts in headlines.items()
        ],
    )
    return text


def classes(figures):
    """Every class, with the errors of all its predictions."""
    r, rows = figures.results, []
    for group in GROUPS:
        where = r.known & (r.group == group)
        predicted = where & r.predicted
        good = predicted & ~r.wrong
        rows.append(
            (
                group,
                int(where.sum()),
                cell(figures.share(where, r.known)),
                cell(figures.share(r.wrong, predicted), 2),
                cell(figures.rmsd(r.phi_error, good)),
                cell(figures.rmsd(r.psi_error, good)),
                cell(figures.mean_error(r.phi_error, good)),
                cell(figures.mean_error(r.psi_error, good)),
            )
        )
    return table(
        ("class", "residues", "of all %", "wrong %", "RMSD phi", "RMSD psi", "MAE phi", "MAE psi"), rows
    )


def breakdown(figures, head, groups):
    """Torsion figures of groups of residues: (title, where)."""
    return table(
        (head, *TORSION_HEAD),
        [torsion_row(title, figures.torsions(where)) for title, where in groups if where.any()],
    )


def structures_groups(r):
    return [(STATE_NAMES[state], r.state == state) for state in "HEL"] + [("termini", r.terminus)]


def type_groups(r):
    return [(code, np.char.upper(r.aa) == code) for code in sorted(set(np.char.upper(r.aa)))]


def shift_count_groups(r):
    return [
        (f"{low}-{high}", (r.shifts >= low) & (r.shifts <= high))
        for low, high in ((0, 3), (4, 6), (7, 9), (10, 12), (13, 15), (16, 18))
    ]


DIST_KINDS = """DIST is the mean over the matches of either a distance (small is good) or, where fewer than 25
fragments fit the predicted map, of the score that they were chosen by (high is good); see COLUMNS.md. The picture
shows distances."""


def distance(rows, head):
    return table(
        (head, "residues", "RMSD phi", "RMSD psi", "wrong %"),
        [(f"{row[0]:.2f} to {row[1]:.2f}", row[3], cell(row[4]), cell(row[5]), cell(row[6])) for row in rows],
    )


def confusion(figures, where):
    counts = figures.confusion(where)
    columns = [sum(row[k] for row in counts) for k in range(3)]
    rows = [
        (STATE_NAMES[state], *row, f"{100.0 * row[k] / max(sum(row), 1):.1f}")
        for k, (state, row) in enumerate(zip("HEL", counts))
    ]
    shares = [f"{100.0 * counts[k][k] / max(columns[k], 1):.1f}" for k in range(3)]
    rows.append(("right of the predicted %", *shares, ""))
    return table(("DSSP", "predicted helix", "strand", "coil", "found %"), rows)


def calibration(rows, head="probability"):
    return table(
        (head, "residues", "mean stated %", "right %", "difference"),
        [
            (f"{low:.1f} to {high:.1f}", count, f"{stated:.1f}", cell(right), f"{right[0] - stated:+.1f}")
            for low, high, count, stated, right in rows
        ],
    )


def chi1_types(figures):
    r, rows = figures.results, []
    for code in sorted(set(np.char.upper(r.aa[r.has_chi1]))):
        part = figures.chi1(np.char.upper(r.aa) == code)
        rows.append(
            (
                code,
                part["residues"],
                cell(part["class"], 0),
                cell(part["right"], 0),
                cell(part["MAE chi1"], 0),
            )
        )
    return table(
        ("type", "residues with chi1", "class given %", "class right %", "MAE of chi1, right class"), rows
    )


def chi1_confusion(results):
    names = ("g-", "g+", "t")
    rows = [
        (
            true,
            *(
                int((results.called & (results.rotamer == true) & (results.pred_rotamer == other)).sum())
                for other in names
            ),
        )
        for true in names
    ]
    return table(("crystal", "predicted g-", "g+", "t"), rows)


def rotamer_probabilities(figures):
    """Calibration of every probability of the three, of residues for which the program has a say."""
    r = figures.results
    undecided = (np.abs(r.q_gm - r.q_gp) < 1e-3) & (np.abs(r.q_gm - r.q_t) < 1e-3)
    spoken = r.has_chi1 & np.isfinite(r.best_rotamer) & ~undecided
    probability = np.concatenate([r.q_gm, r.q_gp, r.q_t])
    right = np.concatenate([r.rotamer == name for name in ("g-", "g+", "t")])
    return figures.bootstrap.calibration(
        np.tile(r.protein, 3), probability, right, np.tile(spoken, 3), TENTHS
    )


def number(value):
    return "" if value is None or math.isnan(value) else f"{value:.2f}"


def order_means(r):
    known = np.isfinite(r.s2)
    rows = []
    for title, where in structures_groups(r):
        inside = where & known & (r.terminus if title == "termini" else ~r.terminus)
        if inside.any():
            with_contact = inside & np.isfinite(r.s2_contact)
            rows.append(
                (
                    title if title == "termini" else title + ", without termini",
                    int(inside.sum()),
                    f"{r.s2[inside].mean():.3f}",
                    f"{r.s2[inside].std():.3f}",
                    f"{r.s2_contact[with_contact].mean():.3f}" if with_contact.any() else "",
                )
            )
    return table(("residues", "number", "mean S2", "s.d.", "mean contact S2"), rows)


def order_correlations(r):
    """Per protein: residues, correlation of S2 with -B and with the contact model (Pearson, Spearman)."""
    rows = []
    for k, name in enumerate(r.names):
        own = r.protein == k
        rows.append(
            (
                name,
                int((own & np.isfinite(r.s2)).sum()),
                correlation(r.s2[own], -r.b_factor[own]),
                rank_correlation(r.s2[own], -r.b_factor[own]),
                correlation(r.s2[own], r.s2_contact[own]),
                rank_correlation(r.s2[own], r.s2_contact[own]),
            )
        )
    return rows


def order_summary(rows):
    lines = []
    for title, column in (
        ("-B, Pearson", 2),
        ("-B, Spearman", 3),
        ("contact model, Pearson", 4),
        ("contact model, Spearman", 5),
    ):
        values = np.array([row[column] for row in rows if row[column] is not None])
        if len(values):
            lines.append(
                (
                    title,
                    len(values),
                    f"{np.median(values):.2f}",
                    f"{np.quantile(values, 0.25):.2f} to {np.quantile(values, 0.75):.2f}",
                    int((values > 0.0).sum()),
                )
            )
    return table(("correlation of S2 with", "proteins", "median", "quartiles", "positive in"), lines)


def protein_rows(figures, order):
    r, rows = figures.results, []
    for k, name in enumerate(r.names):
        own = r.protein == k
        known, accepted = own & r.known, own & r.accepted
        good = accepted & ~r.wrong
        shifts = own & (r.ss_source == "shifts")
        called = own & r.called

        def rate(part, whole):
            return f"{100.0 * (part & whole).sum() / whole.sum():.1f}" if whole.any() else ""

        def root(error):
            return f"{np.sqrt(np.mean(error[good] ** 2)):.1f}" if good.any() else ""

        rows.append(
            (
                name,
                int(known.sum()),
                rate(r.accepted, known & r.searched),
                rate(r.wrong, accepted),
                root(r.phi_error),
                root(r.psi_error),
                rate(r.right_structure, shifts),
                rate(r.called, own & r.has_chi1),
                rate(r.right_rotamer, called),
                number(order[k][2]),
                number(order[k][4]),
            )
        )
    return table(
        (
            "protein",
            "residues",
            "accepted, of searched %",
            "wrong %",
            "RMSD phi",
            "RMSD psi",
            "structure from shifts right %",
            "chi1 class %",
            "chi1 right %",
            "S2 and -B",
            "S2 and contact",
        ),
        rows,
    )


def overview(headlines):
    """Headline figures without intervals, one row a variant: the table of the README."""

    def plain(figure, digits=1):
        return "" if figure is None else f"{figure[0]:.{digits}f}"

    rows = []
    for name, parts in headlines.items():
        torsions, chi1, structure = parts.get("torsions", {}), parts.get("chi1", {}), parts["structure"]
        both = " / ".join(plain(torsions.get("RMSD " + angle)) for angle in ("phi", "psi"))
        rows.append(
            (
                name,
                plain(torsions.get("accepted")),
                plain(torsions.get("accepted of searched")),
                plain(torsions.get("wrong"), 2),
                both.strip(" /"),
                plain(structure["Q3 shifts"]),
                plain(structure["Q3"]),
                plain(chi1.get("class")),
                plain(chi1.get("right")),
            )
        )
    return table(
        (
            "input",
            "accepted, all %",
            "accepted, of searched %",
            "wrong %",
            "RMSD phi / psi",
            "SS from shifts %",
            "SS all %",
            "chi1 class %",
            "chi1 right %",
        ),
        rows,
    )


DEFINITIONS = f"""Definitions. Residues: those with known phi and psi in the crystal structure. Searched: with enough
shifts of their own and around them. Accepted: class Strong or Generous. Wrong: phi and psi together 60 degrees or more
off the crystal (80 where the crystal lies in a sparsely populated box), the program's own rule for Bad. RMSD and
MAE (mean absolute error) in degrees, over those that are not wrong. Structure: DSSP in three states, H G I helix, E B
strand, the rest coil; from shifts = classes H E L, without the chain ends, where the program writes coil unasked. chi1:
residues with a crystal chi1; a class is given from a probability of 0.6 on; right = the crystal's rotamer; valine is
named by the program's rule. In brackets: 95 % interval, {RESAMPLES} bootstrap samples of whole proteins, fixed seed.
"""
