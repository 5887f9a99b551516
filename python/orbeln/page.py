"""What notebooks show of a result."""

from __future__ import annotations

import html as markup
from typing import TYPE_CHECKING

if TYPE_CHECKING:
    from .result import Result

COLOURS = {
    "Strong": "#1a7f4b",
    "Generous": "#6a9a20",
    "Warn": "#c07000",
    "Dyn": "#3b6fb6",
    "Bad": "#c03030",
    "None": "#808080",
}
_WIDTH = 60  # residues in a line


def html(result: "Result") -> str:
    """Title, counts, and the sequence coloured by class over its secondary structure."""
    counts = result.summary()
    classes = ", ".join(
        f"<span style='color:{COLOURS.get(name, 'inherit')}'>{number} {name}</span>"
        for name, number in counts["classes"].items()
    )
    text = f"<div><b>{markup.escape(result.title)}</b>: {counts['residues']} residues, {classes}; "
    text += f"chi1 of {counts['chi1']}</div>"
    if result.trust is None:
        text += f"<div><small>{markup.escape(result.trust_note)}</small></div>"
    states = result.ss["ss_class"].to_dict()
    lines = []
    rows = list(result.torsions[["resname", "class"]].itertuples())
    for start in range(0, len(rows), _WIDTH):
        part = rows[start : start + _WIDTH]
        letters = "".join(
            f"<span style='color:{COLOURS.get(row[2], 'inherit')}'>{row[1]}</span>" for row in part
        )
        structure = "".join(str(states.get(row[0], " ")) for row in part)
        lines.append(f"{part[0][0]:>6} {letters}\n{'':6} {markup.escape(structure)}")
    return text + "<pre style='line-height:1.2'>" + "\n".join(lines) + "</pre>"
