"""One row per residue of the truth table, with what the program predicted for it, as columns of arrays."""

import math

import numpy as np
from accuracy.proteins import DSSP_STATES

STATES = "HEL"
PREDICTED_STATES = {"H": "H", "h": "H", "E": "E", "e": "E", "L": "L", "c": "L"}
# Boxes of 20 degrees (18 x phi index + psi index) whose density is 0.06 or more: 60 degrees off is wrong
# there, 80 in the sparse rest.
DENSE_BOXES = (
    33,
    34,
    35,
    50,
    51,
    52,
    53,
    62,
    68,
    69,
    70,
    71,
    78,
    79,
    80,
    81,
    86,
    87,
    88,
    89,
    95,
    96,
    97,
    98,
    99,
    104,
    105,
    106,
    107,
    113,
    114,
    115,
    116,
    123,
    124,
    132,
    133,
)
TERMINUS = 3  # residues at either end of the chain that count as its terminus
COLUMNS = {
    "protein": int,
    "resid": int,
    "aa": "U1",
    "state": "U1",
    "terminus": bool,
    "phi": float,
    "psi": float,
    "chi1": float,
    "b_factor": float,
    "s2_contact": float,
    "searched": bool,
    "group": "U8",
    "pred_phi": float,
    "pred_psi": float,
    "dist": float,
    "scored": bool,
    "shifts": int,
    "ss": "U1",
    "ss_source": "U8",
    "confidence": float,
    "ss_probability": float,
    "q_gm": float,
    "q_gp": float,
    "q_t": float,
    "rotamer": "U2",
    "pred_rotamer": "U2",
    "pred_chi1": float,
    "s2": float,
}


def difference(first, second):
    """Difference of two angles in -180..180."""
    return (first - second + 180.0) % 360.0 - 180.0


def rotamer(chi1):
    """Name of the rotamer of a chi1 angle."""
    if -120.0 < chi1 <= 0.0:
        return "g-"
    return "g+" if 0.0 < chi1 <= 120.0 else "t"


def named_chi1(residue):
    """chi1 in the program's naming: valine is taken 120 degrees lower. nan where there is none to predict."""
    if not residue.aa or residue.aa.upper() in "AGPX":
        return math.nan
    if residue.aa != "V":
        return residue.chi1
    return difference(residue.chi1 - 120.0, 0.0)


def value(row, column):
    """Cell of an output row as a number; nan when there is no row, no cell or a missing value."""
    number = float(row.get(column, "nan")) if row else math.nan
    return math.nan if number >= 999.0 else number


def structure_source(row):
    """Where a predicted structure comes from: shifts, sequence, or the uncounted coil of the chain's ends."""
    if not row or row["SS_CLASS"] not in PREDICTED_STATES:
        return ""
    if row["SS_CLASS"].islower():
        return "sequence"
    return "ends" if float(row["CONFIDENCE"]) == 0.0 else "shifts"


def residue_row(number, residue, ends, searched, output):
    """Values in the order of COLUMNS."""
    torsions, structure = output.torsions.get(residue.resid, {}), output.structure.get(residue.resid, {})
    chi1 = output.chi1.get(residue.resid, {})
    chi1_known = named_chi1(residue)
    return (
        number,
        residue.resid,
        residue.aa,
        DSSP_STATES.get(residue.ss8, "L"),
        residue.resid < ends[0] + TERMINUS or residue.resid > ends[1] - TERMINUS,
        residue.phi,
        residue.psi,
        chi1_known,
        residue.b_factor,
        residue.s2_contact,
        residue.resid in searched,
        torsions.get("CLASS", "None"),
        value(torsions, "PHI"),
        value(torsions, "PSI"),
        value(torsions, "DIST"),
        residue.resid in output.scored,
        int(torsions.get("CS_COUNT", 0)),
        PREDICTED_STATES.get(structure.get("SS_CLASS", ""), ""),
        structure_source(structure),
        value(structure, "CONFIDENCE"),
        max((value(structure, "Q_" + state) for state in STATES), default=math.nan),
        value(chi1, "Q_Gm"),
        value(chi1, "Q_Gp"),
        value(chi1, "Q_T"),
        "" if math.isnan(chi1_known) else rotamer(chi1_known),
        chi1.get("CLASS", "na"),
        value(chi1, "CHI1"),
        value(output.order.get(residue.resid, {}), "S2"),
    )


class Results:
    """Columns of COLUMNS as attributes, and what follows from them."""

    def __init__(self, truth, searched, outputs):
        """All arguments are dictionaries by protein name; `searched` holds sets of residue numbers."""
        self.names = sorted(outputs)
        rows = []
        for number, name in enumerate(self.names):
            ends = truth[name][0].resid, truth[name][-1].resid
            rows += [
                residue_row(number, residue, ends, searched[name], outputs[name]) for residue in truth[name]
            ]
        for (column, kind), values in zip(COLUMNS.items(), zip(*rows)):
            setattr(self, column, np.array(values, kind))
        self.failures = [f"{name}: {outputs[name].failure}" for name in self.names if outputs[name].failure]
        self.known = np.isfinite(self.phi) & np.isfinite(self.psi)
        self.predicted = self.known & np.isfinite(self.pred_phi) & np.isfinite(self.pred_psi)
        self.accepted = self.predicted & np.isin(self.group, ("Strong", "Generous"))
        self.phi_error = difference(self.pred_phi, self.phi)
        self.psi_error = difference(self.pred_psi, self.psi)
        self.wrong = self.predicted & self._wrong()
        self.right_structure = (self.ss == self.state) & (self.ss != "")
        self.has_chi1 = self.rotamer != ""
        self.called = self.has_chi1 & (self.pred_rotamer != "na")
        self.right_rotamer = self.called & (self.pred_rotamer == self.rotamer)
        self.chi1_error = difference(self.pred_chi1, self.chi1)
        self.best_rotamer = np.fmax(self.q_gm, np.fmax(self.q_gp, self.q_t))

    def _wrong(self):
        """The program's own rule for a bad prediction."""
        phi, psi = np.nan_to_num(self.phi), np.nan_to_num(self.psi)
        box = 18 * ((phi + 180.0) / 20.0).astype(int) + ((psi + 180.0) / 20.0).astype(int)
        limit = np.where(np.isin(box, DENSE_BOXES), 3600.0, 6400.0)
        far = np.nan_to_num(self.phi_error) ** 2 + np.nan_to_num(self.psi_error) ** 2 >= limit
        return far & (box > 0) & (box < 324)
