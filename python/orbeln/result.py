"""What a prediction gives: its tables as data frames, pictures, restraints and a report."""

from __future__ import annotations

import functools
import io
import os
import tempfile
from typing import TYPE_CHECKING, Any, Iterable, Optional

import numpy as np
import numpy.typing as npt
import pandas as pd

from .errors import OutputError
from .programs import PathLike, Programs, copy_in, failure
from .tables import read_table

if TYPE_CHECKING:
    from matplotlib.figure import Figure

TABLES = {
    "torsions": "pred.tab",
    "matches": "predAll.tab",
    "chi1": "predChi1.tab",
    "ss": "predSS.tab",
    "s2": "predS2.tab",
    "maps": "predABP.tab",
    "shifts": "predAdjCS.tab",
}
TRUST = "predTrust.tab"
ACCEPTED = ("Strong", "Generous")
BOXES = 18  # a side of the phi/psi map, 20 degrees a box


class Result:
    """A prediction. The frames have the columns of the output tables in lower case and NaN for missing values;
    all but `matches` and `shifts` are indexed by residue number. They are read from the tables when first asked for.

    `torsions`, `chi1`, `ss`, `s2`: one row a residue. `maps`: array (residues of `torsions`, 18 phi, 18 psi), NaN where
    there is no map. `matches`: the fragments behind each prediction. `shifts`: secondary shifts. `trust`: probability
    that a prediction is right, or None; `trust_note` then says why. `conversion` and `log`: what the programs
    printed. `tables`: the bytes of every table by file name."""

    def __init__(
        self,
        title: str,
        tables: dict[str, bytes],
        conversion: str,
        log: str,
        trust_note: str,
        programs: Programs,
    ) -> None:
        self.title = title
        self.tables = tables
        self.conversion = conversion
        self.log = log
        self.trust_note = trust_note
        self._programs = programs

    def _frame(self, file: str, index: bool) -> pd.DataFrame:
        handle = io.StringIO(self.tables[file].decode("utf-8", "replace"))
        handle.name = file
        frame = read_table(handle)
        frame.columns = [column.lower() for column in frame.columns]
        return frame.set_index("resid") if index else frame

    @functools.cached_property
    def torsions(self) -> pd.DataFrame:
        return self._frame(TABLES["torsions"], True)

    @functools.cached_property
    def chi1(self) -> pd.DataFrame:
        return self._frame(TABLES["chi1"], True)

    @functools.cached_property
    def ss(self) -> pd.DataFrame:
        return self._frame(TABLES["ss"], True)

    @functools.cached_property
    def s2(self) -> pd.DataFrame:
        return self._frame(TABLES["s2"], True)

    @functools.cached_property
    def matches(self) -> pd.DataFrame:
        return self._frame(TABLES["matches"], False)

    @functools.cached_property
    def shifts(self) -> pd.DataFrame:
        return self._frame(TABLES["shifts"], False)

    @functools.cached_property
    def trust(self) -> Optional[pd.DataFrame]:
        return self._frame(TRUST, True) if TRUST in self.tables else None

    @functools.cached_property
    def map_table(self) -> pd.DataFrame:
        """The map table as it is: clusters and 324 boxes a residue."""
        return self._frame(TABLES["maps"], True)

    @functools.cached_property
    def maps(self) -> npt.NDArray[np.float64]:
        boxes = [f"q_{box}" for box in range(BOXES * BOXES)]
        values = self.map_table[boxes].reindex(self.torsions.index).to_numpy(dtype=np.float64)
        array: npt.NDArray[np.float64] = values.reshape(-1, BOXES, BOXES)
        return array

    def map_of(self, resid: int) -> npt.NDArray[np.float64]:
        """The map of one residue: 18 phi x 18 psi boxes from -180 on."""
        if resid not in self.torsions.index:
            raise KeyError(f"no residue {resid}: {self.torsions.index.min()} to {self.torsions.index.max()}")
        values: npt.NDArray[np.float64] = self.maps[self.torsions.index.get_loc(resid)]
        return values

    @property
    def sequence(self) -> str:
        return "".join(self.torsions["resname"])

    @property
    def accepted(self) -> pd.DataFrame:
        """The torsions that can be used: classes Strong and Generous."""
        return self.torsions[self.torsions["class"].isin(ACCEPTED)]

    def save(self, folder: PathLike) -> None:
        """Writes the tables and the log into a folder, which is made when missing."""
        os.makedirs(folder, exist_ok=True)
        for name, content in self.tables.items():
            with open(os.path.join(folder, name), "wb") as handle:
                handle.write(content)
        with open(os.path.join(folder, "orbeln.log"), "w", encoding="utf-8") as log:
            log.write(self.log)

    def to_restraints(
        self,
        format: str = "xplor",
        path: Optional[PathLike] = None,
        *,
        chi1: bool = True,
        classes: Iterable[str] = ACCEPTED,
        factor: Optional[float] = None,
        floor: Optional[float] = None,
        cap: Optional[float] = None,
        chi1_floor: Optional[float] = None,
        chi1_probability: Optional[float] = None,
        force: Optional[float] = None,
        chain: Optional[str] = None,
        coordinates: Optional[PathLike] = None,
        residue_offset: Optional[int] = None,
        wrap: bool = False,
    ) -> str:
        """Dihedral restraints as text, also written to `path`; format xplor, cyana, nef, gromacs or amber.

        The options are those of orbeln-restraints; gromacs and amber need `coordinates` (.pdb or .gro). OutputError
        carries the message."""
        values = {
            "--classes": classes if isinstance(classes, str) else ",".join(classes),
            "--factor": factor,
            "--floor": floor,
            "--cap": cap,
            "--chi1-floor": chi1_floor,
            "--chi1-probability": chi1_probability,
            "--force": force,
            "--chain": chain,
            "--residue-offset": residue_offset,
        }
        arguments = ["pred.tab", f"--format={format}", "-o", "restraints.out", "--quiet"]
        arguments += [f"{option}={value}" for option, value in values.items() if value is not None]
        arguments += ["--chi1", "predChi1.tab"] if chi1 else []
        arguments += ["--wrap"] if wrap else []
        with tempfile.TemporaryDirectory(prefix="orbeln") as folder:
            self.save(folder)
            if coordinates is not None:
                ending = os.path.splitext(os.fspath(coordinates))[1]
                arguments += ["--coordinates", "coordinates" + ending]
                copy_in(coordinates, folder, "coordinates" + ending)
            text = self._make("orbeln-restraints", arguments, folder, "restraints.out")
        if path is not None:
            with open(path, "w", encoding="utf-8") as handle:
                handle.write(text)
        return text

    def to_report(self, path: Optional[PathLike] = None) -> str:
        """The HTML page of orbeln-report as text, also written to `path`."""
        arguments = [".", "-o", "report.html", "--log", "orbeln.log", "--quiet", f"--title={self.title}"]
        with tempfile.TemporaryDirectory(prefix="orbeln") as folder:
            self.save(folder)
            text = self._make("orbeln-report", arguments, folder, "report.html")
        if path is not None:
            with open(path, "w", encoding="utf-8") as handle:
                handle.write(text)
        return text

    def _make(self, program: str, arguments: list[str], folder: str, product: str) -> str:
        run = self._programs.run(program, arguments, folder)
        product = os.path.join(folder, product)
        if run.status != 0 or not os.path.exists(product):
            raise failure(OutputError, run)
        with open(product, encoding="utf-8") as handle:
            return handle.read()

    def plot(self, residue: Optional[int] = None) -> "Figure":
        """A picture (needs matplotlib): the protein along its sequence, or with `residue` its phi/psi map with the
        matches and the prediction. A matplotlib Figure, shown by notebooks; `savefig` writes it."""
        from . import plots

        return plots.overview(self) if residue is None else plots.ramachandran(self, residue)

    def summary(self) -> dict[str, Any]:
        """Counts of residues, classes, structure and rotamers."""
        classes = self.torsions["class"].value_counts().to_dict()
        states = self.ss["ss_class"].str.upper().replace("C", "L").value_counts().to_dict()
        return {
            "title": self.title,
            "residues": len(self.torsions),
            "accepted": len(self.accepted),
            "classes": {str(name): int(number) for name, number in classes.items()},
            "ss": {str(name): int(number) for name, number in states.items()},
            "chi1": int((self.chi1["class"] != "na").sum()),
        }

    def __repr__(self) -> str:
        counts = ", ".join(f"{number} {name}" for name, number in self.summary()["classes"].items())
        return f"<orbeln.Result {self.title}: {len(self.torsions)} residues ({counts})>"

    def _repr_html_(self) -> str:
        from . import page

        return page.html(self)
