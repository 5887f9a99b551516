"""Accuracy of a batch against known torsions, by the definitions of docs/ACCURACY.md."""

from __future__ import annotations

import os
from typing import Any

import numpy as np
import numpy.typing as npt
import pandas as pd

from ..errors import OrbelnError

# Boxes of 20 degrees (18 x phi index + psi index) that are densely populated: 60 degrees off is wrong there, 80 in
# the others.
_DENSE = [
    int(box)
    for box in """
33 34 35 50 51 52 53 62 68 69 70 71 78 79 80 81 86 87 88 89 95 96 97 98 99 104
105 106 107 113 114 115 116 123 124 132 133
""".split()
]
_NEEDED = ("protein", "resid", "phi", "psi")
_STATES = {**dict.fromkeys("HGI", "H"), **dict.fromkeys("EB", "E")}  # DSSP letters; any other is coil

Array = npt.NDArray[np.float64]


def read_truth(path: str) -> pd.DataFrame:
    """A table (tab-separated, also .xz or .gz) with protein, resid, phi, psi and, for more, aa, chi1 and ss8."""
    try:
        truth = pd.read_csv(
            path,
            sep="\t",
            dtype={"protein": str, "aa": str, "ss8": str},
            keep_default_na=False,
            na_values=[""],
        )
    except (OSError, ValueError) as error:
        raise OrbelnError(str(error), file=path) from error
    missing = [column for column in _NEEDED if column not in truth]
    if missing:
        raise OrbelnError(f"no column {', '.join(missing)}", file=path, line=1)
    twice = truth.duplicated(["protein", "resid"])
    if twice.any():
        row = truth[twice].iloc[0]
        raise OrbelnError(
            f"residue {row.resid} of {row.protein} stands twice", file=path, line=int(np.argmax(twice)) + 2
        )
    return truth


def difference(first: Any, second: Any) -> Any:
    """Difference of angles in -180..180."""
    return (first - second + 180.0) % 360.0 - 180.0


def _wrong(phi: Array, psi: Array, phi_error: Array, psi_error: Array) -> npt.NDArray[np.bool_]:
    box = 18 * ((phi + 180.0) / 20.0).astype(int) + ((psi + 180.0) / 20.0).astype(int)
    limit = np.where(np.isin(box, _DENSE), 3600.0, 6400.0)
    far = phi_error**2 + psi_error**2 >= limit
    return np.asarray(far & (box > 0) & (box < 324))


def _rotamer(chi1: "pd.Series[float]") -> npt.NDArray[np.object_]:
    names = np.where((chi1 > -120) & (chi1 <= 0), "g-", np.where((chi1 > 0) & (chi1 <= 120), "g+", "t"))
    return np.asarray(names, dtype=object)


def _share(part: int, whole: int) -> float:
    return round(100.0 * part / whole, 2) if whole else float("nan")


def _root_mean_square(values: Array) -> float:
    return round(float(np.sqrt(np.mean(values**2))), 2) if len(values) else float("nan")


def measure(residues: pd.DataFrame, names: dict[str, str], truth: pd.DataFrame) -> dict[str, Any]:
    """Figures over the residues of all entries; `names` gives the protein of the truth table for every entry ID."""
    own = residues.assign(protein=residues["entry"].map(names))
    columns = [name for name in ("protein", "resid", "phi", "psi", "aa", "chi1", "ss8") if name in truth]
    both = own.merge(truth[columns], on=["protein", "resid"], suffixes=("", "_true"), how="inner")
    if "aa" in both:  # another numbering would compare other residues
        same = both["aa"].str.upper() == both["resname"].str.upper()
        other = both.loc[~same & both["aa"].ne("X") & both["resname"].ne("X")]
    else:
        other = both.iloc[:0]
    known = both[both["phi_true"].notna() & both["psi_true"].notna()]
    predicted = known[
        known["class"].isin(("Strong", "Generous")) & known["phi"].notna() & known["psi"].notna()
    ]
    phi_error = difference(predicted["phi"], predicted["phi_true"]).to_numpy(dtype=float)
    psi_error = difference(predicted["psi"], predicted["psi_true"]).to_numpy(dtype=float)
    wrong = _wrong(
        predicted["phi_true"].to_numpy(float), predicted["psi_true"].to_numpy(float), phi_error, psi_error
    )
    figures: dict[str, Any] = {
        "proteins": int(both["protein"].nunique()),
        "residues with known torsions": len(known),
        "residues of another type than in the truth table": len(other),
        "accepted, %": _share(len(predicted), len(known)),
        "wrong of the accepted, %": _share(int(wrong.sum()), len(predicted)),
        "RMSD phi, degrees": _root_mean_square(phi_error[~wrong]),
        "RMSD psi, degrees": _root_mean_square(psi_error[~wrong]),
    }
    if "ss8" in both:
        state = both["ss8"].fillna("-").map(_STATES).fillna("L")
        from_shifts = both["ss_class"].isin(list("HEL")) & (both["ss_confidence"] != 0.0)
        right = state == both["ss_class"]
        figures["structure from shifts, residues"] = int(from_shifts.sum())
        figures["structure from shifts right, %"] = _share(
            int((right & from_shifts).sum()), int(from_shifts.sum())
        )
    if "chi1_true" in both:
        figures.update(_chi1(both))
    return figures


def _chi1(both: pd.DataFrame) -> dict[str, Any]:
    """Rotamers in the program's naming: valine is taken 120 degrees lower; none for Ala and Gly, nor for Pro."""
    sided = both[both["chi1_true"].notna() & ~both["resname"].str.upper().isin(list("AGPX"))]
    true = sided["chi1_true"].where(sided["resname"] != "V", difference(sided["chi1_true"] - 120.0, 0.0))
    called = sided["chi1_class"].isin(
        ("g-", "g+", "t")
    )  # na: no class; empty: a residue without a row in the table
    right = called & (sided["chi1_class"].to_numpy() == _rotamer(true))
    return {
        "residues with a rotamer": len(sided),
        "chi1 class given, %": _share(int(called.sum()), len(sided)),
        "chi1 right of those given, %": _share(int(right.sum()), int(called.sum())),
    }


def markdown(figures: dict[str, Any], truth: str) -> str:
    lines = [
        f"# Accuracy\n\nAgainst {os.path.basename(truth)}; definitions as in the accuracy report of ORBEL-N.\n"
    ]
    lines += ["| figure | value |", "| --- | --- |"]
    lines += [f"| {name} | {value} |" for name, value in figures.items()]
    return "\n".join(lines) + "\n"
