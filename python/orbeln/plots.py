"""Pictures of a prediction. They need matplotlib and no display, and keep no global state."""

from __future__ import annotations

import io
from typing import TYPE_CHECKING, Any

import numpy as np

try:
    from matplotlib.figure import Figure
    from matplotlib.patches import Rectangle
except ImportError as error:  # pragma: no cover
    raise ImportError("pictures need matplotlib (Debian: python3-matplotlib)") from error

if TYPE_CHECKING:
    from .result import Result

CLASS_COLOURS = {
    "Strong": "#1a7f4b",
    "Generous": "#8cc63f",
    "Warn": "#f0a030",
    "Dyn": "#5b8fd6",
    "Bad": "#d04040",
    "None": "#c8c8c8",
}
STATE_COLOURS = {"H": "#c0392b", "E": "#2c6fbb", "L": "#b0b0b0"}
MAP_COLOURS = "Blues"


class Picture(Figure):  # type: ignore[misc]
    """A figure that notebooks show without a plotting back end."""

    def _repr_png_(self) -> bytes:
        out = io.BytesIO()
        self.savefig(out, format="png")
        return out.getvalue()


def overview(result: "Result") -> Figure:
    """Structure and class, phi and psi with errors, S2 and chi1 probabilities along the sequence."""
    torsions = result.torsions
    resid = torsions.index.to_numpy()
    figure = Picture(figsize=(min(16.0, max(7.0, 0.11 * len(resid) + 2.0)), 7.5), layout="constrained")
    heights = [0.7, 2.0, 2.0, 1.2, 1.4]
    strip, phi, psi, order, chi1 = figure.subplots(5, 1, sharex=True, height_ratios=heights)
    figure.suptitle(f"{result.title}: {len(result.accepted)} of {len(resid)} residues accepted", fontsize=11)
    _strip(strip, result)
    for axes, name in ((phi, "phi"), (psi, "psi")):
        for group, colour in CLASS_COLOURS.items():
            rows = torsions[(torsions["class"] == group) & torsions[name].notna()]
            if len(rows):
                axes.errorbar(
                    rows.index, rows[name], rows["d" + name], fmt="o", ms=3, lw=0.8, color=colour, label=group
                )
        axes.set(ylim=(-180, 180), yticks=range(-180, 181, 90), ylabel=f"{name} / °")
        axes.grid(axis="y", lw=0.3)
    if phi.get_legend_handles_labels()[0]:
        phi.legend(fontsize=7, ncol=5, loc="upper right")
    order.plot(result.s2.index, result.s2["s2"], color="black", lw=1)
    order.set(ylim=(0, 1), ylabel="S2")
    bottom = np.zeros(len(result.chi1))
    for column, label, colour in (
        ("q_gm", "g-", "#4c72b0"),
        ("q_gp", "g+", "#dd8452"),
        ("q_t", "t", "#55a868"),
    ):
        values = result.chi1[column].fillna(0.0).to_numpy()
        chi1.bar(result.chi1.index, values, bottom=bottom, width=0.9, color=colour, label=label)
        bottom = bottom + values
    chi1.set(ylim=(0, 1), ylabel="chi1", xlabel="residue", xlim=(resid.min() - 1, resid.max() + 1))
    if len(result.chi1):
        chi1.legend(fontsize=7, ncol=3, loc="lower right", bbox_to_anchor=(1.0, 1.0), borderaxespad=0.1)
    return figure


def _strip(axes: Any, result: "Result") -> None:
    for resid, state in result.ss["ss_class"].items():
        colour = STATE_COLOURS.get(str(state).upper().replace("C", "L"), "white")
        axes.add_patch(
            Rectangle((resid - 0.5, 1), 1, 0.9, color=colour, alpha=1.0 if state in "HEL" else 0.4, lw=0)
        )
    for resid, group in result.torsions["class"].items():
        axes.add_patch(Rectangle((resid - 0.5, 0), 1, 0.9, color=CLASS_COLOURS.get(group, "white"), lw=0))
    axes.set(ylim=(0, 2), yticks=(0.45, 1.45), yticklabels=("class", "SS"))


def ramachandran(result: "Result", residue: int) -> Figure:
    """The map of a residue, its matches (open: outside the chosen cluster) and the prediction with its error."""
    boxes = result.map_of(residue)
    row = result.torsions.loc[residue]
    figure = Picture(figsize=(5.2, 4.6), layout="constrained")
    axes = figure.subplots()
    if np.isfinite(boxes).any():
        image = axes.imshow(
            boxes.T,
            origin="lower",
            extent=(-180, 180, -180, 180),
            cmap=MAP_COLOURS,
            vmin=0,
            interpolation="nearest",
        )
        figure.colorbar(image, label="score of the map")
    found = result.matches[result.matches["resid_q_center"] == residue]
    for used, fill, label in (
        (found["w"] > 0, "#d05000", "matches"),
        (found["w"] <= 0, "none", "matches not used"),
    ):
        if used.any():
            rows = found[used]
            axes.plot(rows["phi"], rows["psi"], "o", ms=4, mfc=fill, mec="#d05000", label=label, lw=0)
    if np.isfinite(row["phi"]):
        axes.errorbar(
            row["phi"],
            row["psi"],
            row["dpsi"],
            row["dphi"],
            fmt="s",
            color="black",
            capsize=3,
            label="prediction",
        )
    if axes.get_legend_handles_labels()[0]:
        axes.legend(fontsize=8, loc="lower right")
    ticks = range(-180, 181, 60)
    axes.set(
        xlim=(-180, 180), ylim=(-180, 180), xticks=ticks, yticks=ticks, xlabel="phi / °", ylabel="psi / °"
    )
    axes.set_title(f"{result.title}: {row['resname']}{residue}, {row['class']}", fontsize=10)
    return figure
