"""Chemical shifts in: files of any format that orbeln-convert reads, or a data frame."""

from __future__ import annotations

import dataclasses
import os
import tempfile
from typing import Any, Optional, Union

import pandas as pd

from .errors import ChoiceError, ConversionError, OrbelnError
from .programs import PathLike, Programs, failure
from .tables import read_table, table_text

Source = Union[PathLike, pd.DataFrame]

TABLE = "input.tab"  # plain names: the program cuts its command line at every hyphen
_COLUMNS = {
    "resid": ("resid", "seq_id", "residue_number", "resnum"),
    "resname": ("resname", "comp_id", "residue_name", "aa"),
    "atom": ("atom", "atomname", "atom_id", "atom_name"),
    "shift": ("shift", "value", "ppm", "cs_obs"),
}
_CHOICE = 3  # exit status of orbeln-convert: several chains or shift lists


@dataclasses.dataclass(frozen=True)
class Conversion:
    """Options of orbeln-convert, by its names."""

    chain: Optional[str] = None
    shift_list: Optional[Union[str, int]] = None
    format: Optional[str] = None
    first_resid: Optional[int] = None
    keep_first: bool = False
    skip_ambiguous: bool = False
    mse_as_met: bool = False
    strict: bool = False

    def arguments(self) -> list[str]:
        # One word each, "--chain=X": a value may begin with a hyphen.
        values = (
            ("--chain", self.chain),
            ("--list", self.shift_list),
            ("--format", self.format),
            ("--first-resid", self.first_resid),
        )
        switches = (
            ("--keep-first", self.keep_first),
            ("--skip-ambiguous", self.skip_ambiguous),
            ("--mse-as-met", self.mse_as_met),
            ("--strict", self.strict),
        )
        words: list[str] = []
        for option, value in values:
            if value is not None:
                words.append(f"{option}={value}")
        return words + [option for option, given in switches if given]


def read_shifts(
    source: Source,
    sequence: Optional[str] = None,
    *,
    chain: Optional[str] = None,
    shift_list: Optional[Union[str, int]] = None,
    format: Optional[str] = None,
    first_resid: Optional[int] = None,
    keep_first: bool = False,
    skip_ambiguous: bool = False,
    mse_as_met: bool = False,
    strict: bool = False,
    programs: Optional[Programs] = None,
) -> pd.DataFrame:
    """The backbone shifts of one chain as a frame with the columns resid, resname, atom and shift (ppm).

    `source` is a file in any format of orbeln-convert or a frame (see `predict`); `sequence` is a FASTA or .seq file or
    the letters themselves. `frame.attrs` holds "sequence", "first_resid" and "remarks" (what was taken, renamed and
    skipped). ConversionError names the file and line, ChoiceError the chains and lists to choose from."""
    how = Conversion(chain, shift_list, format, first_resid, keep_first, skip_ambiguous, mse_as_met, strict)
    with tempfile.TemporaryDirectory(prefix="orbeln") as folder:
        convert(source, sequence, how, programs or Programs.find(), folder)
        return shifts_of_table(os.path.join(folder, TABLE))


def shifts_of_table(path: PathLike) -> pd.DataFrame:
    """An input table as the frame of `read_shifts`."""
    table = read_table(path)
    frame = table.rename(
        columns={"RESID": "resid", "RESNAME": "resname", "ATOMNAME": "atom", "SHIFT": "shift"}
    )
    frame.attrs = {
        key: value for key, value in table.attrs.items() if key in ("sequence", "first_resid", "remarks")
    }
    frame.attrs.setdefault("first_resid", 1)
    return frame


def convert(
    source: Source,
    sequence: Optional[str],
    how: Conversion,
    programs: Programs,
    folder: str,
    timeout: Optional[float] = None,
) -> str:
    """Writes input.tab into `folder`; returns what the conversion reported."""
    arguments = how.arguments()
    renamed: dict[str, str] = {}
    if isinstance(source, pd.DataFrame):
        path, more = _frame_file(source, sequence, how, folder)
        arguments += more
        renamed[path] = "data frame"
        sequence = None if more else sequence
    else:
        path = os.path.abspath(os.fspath(source))
        renamed[path] = os.fspath(source)
    if sequence is not None:
        arguments += ["--sequence", _sequence_file(sequence, folder)]
    run = programs.run("orbeln-convert", ["--output", TABLE, *arguments, "--", path], folder, timeout)
    if run.status == 0 and os.path.exists(os.path.join(folder, TABLE)):
        return run.log
    error = failure(ChoiceError if run.status == _CHOICE else ConversionError, run, renamed)
    if isinstance(source, pd.DataFrame) and error.line is not None:
        error.message = _row_message(source, path, folder, error)
        error.line = None
    raise error


def _frame_file(
    source: pd.DataFrame, sequence: Optional[str], how: Conversion, folder: str
) -> tuple[str, list[str]]:
    """Writes the frame for orbeln-convert: (name of the file, further arguments).

    With a sequence and the number of its first residue (`read_shifts` gives both) as an input table, else as CSV, whose
    residue numbers place the sequence."""
    frame = shift_columns(source)
    first = how.first_resid if how.first_resid is not None else source.attrs.get("first_resid")
    letters = source.attrs.get("sequence") if sequence is None else sequence
    if letters is not None and first is not None and not os.path.exists(letters):
        frame.columns = pd.Index(["RESID", "RESNAME", "ATOMNAME", "SHIFT"])
        text = table_text(
            frame, formats=("%d", "%s", "%s", "%.4f"), remarks=(), sequence=letters, first_resid=first
        )
        name = "frame.tab"
        more = ["--format", "table"] if how.format is None else []
    else:
        text = str(frame.to_csv(index=False))
        name, more = "frame.csv", []
    with open(os.path.join(folder, name), "w", encoding="utf-8") as handle:
        handle.write(text)
    return name, more


def shift_columns(source: pd.DataFrame) -> pd.DataFrame:
    """The columns resid, resname, atom and shift of a frame, by any of their usual names; missing shifts left out."""
    by_name = {str(column).lower(): column for column in source.columns}
    chosen: dict[str, Any] = {}
    for wanted, names in _COLUMNS.items():
        found = [by_name[name] for name in names if name in by_name]
        if found:
            chosen[wanted] = source[found[0]]
        elif wanted == "resid" and source.index.name and str(source.index.name).lower() in names:
            chosen[wanted] = source.index.to_series()
        else:
            raise ConversionError(f"the data frame has no column {wanted} (or {', '.join(names[1:])})")
    frame = pd.DataFrame(chosen)
    return frame[frame["shift"].notna()]


def _row_message(source: pd.DataFrame, path: str, folder: str, error: OrbelnError) -> str:
    """The message with the row of the frame in place of the line of the file that was written for it."""
    with open(os.path.join(folder, path), encoding="utf-8") as handle:
        lines = handle.read().splitlines()
    rows = len(shift_columns(source))
    row = (error.line or 0) - 1 - (len(lines) - rows)
    return f"row {row}: {error.message}" if 0 <= row < rows else error.message


def _sequence_file(sequence: str, folder: str) -> str:
    """A sequence by letters as a FASTA file in the folder; the path of a file as it is."""
    if os.path.exists(sequence):
        return os.path.abspath(sequence)
    letters = "".join(sequence.split())
    if not letters.isalpha():
        raise ConversionError("no such file, and no sequence of letters", file=sequence)
    with open(os.path.join(folder, "sequence.fasta"), "w", encoding="ascii", errors="replace") as handle:
        handle.write(f">sequence\n{letters}\n")
    return "sequence.fasta"
