"""ORBEL-N from Python: protein torsion angles from NMR chemical shifts.

    import orbeln
    result = orbeln.predict("entry.str")
    result.torsions, result.chi1, result.maps, result.plot(), result.to_restraints("cyana", "entry.aco")

The work is done by the programs `orbeln`, `orbeln-convert`, `orbeln-restraints` and `orbeln-report`, found in
ORBELN_BIN, on PATH, or in the build of the source tree that holds this package; their tables by ORBELN_DIR or
beside the programs."""

from __future__ import annotations

import importlib
from typing import TYPE_CHECKING, Any

from .errors import (
    ChoiceError,
    ConversionError,
    InstallationError,
    OrbelnError,
    OutputError,
    PredictionError,
    ProgramNotFoundError,
    TableError,
)
from .programs import Programs

if TYPE_CHECKING:
    from .prediction import predict, predict_many
    from .result import Result
    from .shifts import read_shifts
    from .tables import read_table, write_table

__version__ = "0.2.0"
__all__ = [
    "ChoiceError",
    "ConversionError",
    "InstallationError",
    "OrbelnError",
    "OutputError",
    "PredictionError",
    "ProgramNotFoundError",
    "Programs",
    "Result",
    "TableError",
    "predict",
    "predict_many",
    "read_shifts",
    "read_table",
    "write_table",
]

# Loaded when first used: the jobs of a batch need the programs but not pandas, whose import takes half a second.
_LATER = {
    "predict": "prediction",
    "predict_many": "prediction",
    "Result": "result",
    "read_shifts": "shifts",
    "read_table": "tables",
    "write_table": "tables",
}


def __getattr__(name: str) -> Any:
    if name in _LATER:
        return getattr(importlib.import_module("." + _LATER[name], __name__), name)
    raise AttributeError(f"module '{__name__}' has no attribute '{name}'")


def __dir__() -> list[str]:
    return sorted({*globals(), *__all__})
