"""The text tables of ORBEL-N as data frames: REMARK and DATA lines, VARS with the columns, FORMAT, rows."""

from __future__ import annotations

import io
import os
import re
import tempfile
from collections.abc import Sequence
from typing import IO, Any, Optional, Union

import numpy as np
import pandas as pd

from .errors import TableError
from .programs import PathLike

MISSING = 9999.0
_FORMAT = re.compile(r"%[-.0-9]*([sdf])")
_KEYWORDS = ("REMARK", "DATA", "VARS", "FORMAT")


def read_table(source: Union[PathLike, IO[str]], *, missing: Optional[float] = MISSING) -> pd.DataFrame:
    """Reads a table; the columns keep their names. Floating-point cells equal to `missing` become NaN (None: kept).

    What is not rows stands in `frame.attrs`: "remarks" and "data" (lists of lines without the keyword), "formats" (one
    a column), and where the table has them "sequence" and "first_resid". TableError names the file and line.
    """
    if isinstance(source, (str, os.PathLike)):
        name = os.fspath(source)
        try:
            with open(source, encoding="utf-8", errors="replace") as handle:
                return _parse(handle.read(), name, missing)
        except OSError as error:
            raise TableError(error.strerror or str(error), file=name) from error
    return _parse(source.read(), str(getattr(source, "name", "table")), missing)


def _parse(text: str, name: str, missing: Optional[float]) -> pd.DataFrame:
    remarks: list[str] = []
    data: list[str] = []
    columns: list[str] = []
    formats: list[str] = []
    rows: list[list[str]] = []
    numbers: list[int] = []
    for number, line in enumerate(text.split("\n"), 1):
        words = line.split()
        if not words:
            continue
        if formats and len(words) == len(columns):
            rows.append(words)
            numbers.append(number)
        keyword = words[0].upper()
        if keyword == "REMARK":
            remarks.append(line[len(keyword) + 1 :].rstrip("\r"))
        elif keyword == "DATA":
            data.append(" ".join(words[1:]))
        elif keyword == "VARS":
            columns, rows, numbers = words[1:], [], []
            if len(set(columns)) != len(columns):
                raise TableError("VARS names a column twice", file=name, line=number)
        elif keyword == "FORMAT":
            formats, rows, numbers = words[1:], [], []
            for cell in formats:
                if not _FORMAT.fullmatch(cell):
                    raise TableError(f"'{cell}' is no column format", file=name, line=number)
            if len(formats) != len(columns):
                raise TableError(f"{len(columns)} columns but {len(formats)} formats", file=name, line=number)
    if not formats:
        raise TableError("no table: a VARS and a FORMAT line are needed", file=name)
    cells = list(zip(*rows)) if rows else [()] * len(columns)
    series = {
        column: _convert(values, form[-1], column, numbers, name, missing)
        for column, form, values in zip(columns, formats, cells)
    }
    frame = pd.DataFrame(series, columns=columns)
    frame.attrs.update(remarks=remarks, data=data, formats=formats, **_sequence(data))
    return frame


def _convert(
    values: Sequence[str], kind: str, column: str, numbers: list[int], name: str, missing: Optional[float]
) -> Any:
    if kind == "s":
        return np.array(values, dtype=object)
    try:
        if kind == "d":
            return np.array([int(value) for value in values], dtype=np.int64)
        result = np.array([float(value) for value in values], dtype=np.float64)
    except (ValueError, OverflowError):
        convert = int if kind == "d" else float
        for value, number in zip(values, numbers):
            try:
                np.int64(convert(value)) if kind == "d" else convert(value)
            except (ValueError, OverflowError):
                what = "integer" if kind == "d" else "number"
                raise TableError(
                    f"{column} is '{value}', which is no {what}", file=name, line=number
                ) from None
        raise
    if missing is not None:
        result[result == missing] = np.nan
    return result


def _sequence(data: list[str]) -> dict[str, Any]:
    """The sequence of all DATA SEQUENCE lines together, and the number of its first residue."""
    found: dict[str, Any] = {}
    sequence = [line.split(None, 1)[1:] for line in data if line.upper().split(None, 1)[:1] == ["SEQUENCE"]]
    if sequence:
        found["sequence"] = "".join("".join(part).replace(" ", "") for part in sequence)
    first = [line.split()[1:2] for line in data if line.upper().split(None, 1)[:1] == ["FIRST_RESID"]]
    if first and first[0]:
        try:
            found["first_resid"] = int(first[0][0])
        except ValueError:
            pass  # the program reads such a line as far as a number goes; a frame says nothing instead
    return found


def write_table(
    frame: pd.DataFrame,
    path: PathLike,
    *,
    formats: Optional[Sequence[str]] = None,
    remarks: Optional[Sequence[str]] = None,
    sequence: Optional[str] = None,
    first_resid: Optional[int] = None,
    missing: float = MISSING,
) -> None:
    """Writes a frame as a table, completely or not at all; NaN becomes `missing`.

    Formats are those given, else those of `frame.attrs` where their number fits, else `%d`, `%.3f` and `%s` by the kind
    of the column. Remarks, sequence and first residue are also taken from `frame.attrs` when not given."""
    text = table_text(
        frame, formats=formats, remarks=remarks, sequence=sequence, first_resid=first_resid, missing=missing
    )
    target = os.fspath(path)
    folder = os.path.dirname(os.path.abspath(target))
    handle, beside = tempfile.mkstemp(dir=folder, prefix=".orbeln")
    try:
        with os.fdopen(handle, "w", encoding="utf-8") as file:
            file.write(text)
        os.chmod(beside, 0o666 & ~_umask())
        os.replace(beside, target)
    except BaseException:
        os.unlink(beside)
        raise


def _umask() -> int:
    """The umask without changing it, which would be seen by other threads."""
    try:
        with open("/proc/self/status", encoding="ascii", errors="replace") as handle:
            for line in handle:
                if line.startswith("Umask:"):
                    return int(line.split()[1], 8)
    except OSError:
        pass
    return 0o022


def table_text(
    frame: pd.DataFrame,
    *,
    formats: Optional[Sequence[str]] = None,
    remarks: Optional[Sequence[str]] = None,
    sequence: Optional[str] = None,
    first_resid: Optional[int] = None,
    missing: float = MISSING,
) -> str:
    """The text that `write_table` writes."""
    columns = [str(column) for column in frame.columns]
    if not columns or any(not column or len(column.split()) != 1 for column in columns):
        raise TableError("column names must be words without blanks")
    known = frame.attrs.get("formats", [])
    if formats is None:
        formats = known if len(known) == len(columns) else [_default_format(frame[c]) for c in frame.columns]
    bad = [form for form in formats if not _FORMAT.fullmatch(form)]
    if bad or len(formats) != len(columns):
        raise TableError(f"'{bad[0]}' is no column format" if bad else "there must be one format a column")
    out = io.StringIO()
    for remark in frame.attrs.get("remarks", []) if remarks is None else remarks:
        out.write("REMARK " + remark.replace("\n", " ") + "\n")
    out.write("\n")
    if first_resid is None:
        first_resid = frame.attrs.get("first_resid")
    if sequence is None:
        sequence = frame.attrs.get("sequence")
    if first_resid is not None:
        out.write(f"DATA FIRST_RESID {int(first_resid)}\n")
    for start in range(0, len(sequence or ""), 50):
        part = (sequence or "")[start : start + 50]
        out.write("DATA SEQUENCE " + " ".join(part[k : k + 10] for k in range(0, len(part), 10)) + "\n")
    out.write("\nVARS   " + " ".join(columns) + "\nFORMAT " + " ".join(formats) + "\n\n")
    cells = [_column_cells(frame[c], str(c), form, missing) for c, form in zip(frame.columns, formats)]
    for row in zip(*cells):
        out.write(" ".join(row) + "\n")
    return out.getvalue()


def _default_format(series: "pd.Series[Any]") -> str:
    return (
        "%d"
        if pd.api.types.is_integer_dtype(series)
        else "%.3f"
        if pd.api.types.is_float_dtype(series)
        else "%s"
    )


def _column_cells(series: "pd.Series[Any]", name: str, form: str, missing: float) -> list[str]:
    cells = []
    for index, value in series.items():
        absent = value is None or value is pd.NA or (isinstance(value, float) and np.isnan(value))
        try:
            if form[-1] == "s":
                cell = "" if absent else form % str(value)
            elif form[-1] == "d":
                cell = form % int(missing if absent else value)
            else:
                cell = form % float(missing if absent else value)
        except (TypeError, ValueError, OverflowError):
            raise TableError(f"row {index}: {name} is {value!r}, which is no number") from None
        if len(cell.split()) != 1:
            raise TableError(f"row {index}: {name} is {value!r}; a cell is one word without blanks")
        cells.append(cell)
    return cells
