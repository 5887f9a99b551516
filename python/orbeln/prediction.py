"""Runs the programs on one entry, or on many at a time, in temporary folders."""

from __future__ import annotations

import concurrent.futures
import os
import tempfile
from collections.abc import Iterable, Iterator
from typing import Any, Optional, Union

import pandas as pd

from .errors import OrbelnError, PredictionError
from .programs import PathLike, Programs, copy_in, failure
from .result import TABLES, TRUST, Result
from .shifts import TABLE, Conversion, Source, convert

TRUST_PROGRAM = "orbeln-trust"
_REFERENCE = "reference.pdb"


def predict(
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
    iso: bool = False,
    noproton: bool = False,
    offset: bool = False,
    noclip: bool = False,
    oxi_cys_check: bool = True,
    s2_thresh: Optional[float] = None,
    count: Optional[int] = None,
    align_len: Optional[int] = None,
    first: Optional[int] = None,
    last: Optional[int] = None,
    excl: Iterable[str] = (),
    ref: Optional[PathLike] = None,
    title: Optional[str] = None,
    timeout: Optional[float] = None,
    programs: Optional[Programs] = None,
) -> Result:
    """Predicts the torsion angles of one protein.

    `source`: a file in any format of orbeln-convert, or a frame with the columns resid, resname, atom and shift (the
    names of the input table and of NMR-STAR are understood too). `sequence`: a FASTA or .seq file, or the letters.

    `chain` to `strict` choose and read as orbeln-convert does, `iso` to `ref` are options of orbeln: `iso` deuterated
    protein, `noproton` ignore HA and HN, `offset` subtract referencing offsets, `noclip`, `oxi_cys_check=False` take
    cysteines as the sequence says, `s2_thresh` residues below are Dyn, `count` matches that must agree, `align_len`
    residues in a fragment, `first` and `last` residues to predict, `excl` sources left out of the triplet averaging,
    `ref` structure (PDB) to compare with. `timeout` is in seconds, for each program.

    Raises ConversionError (ChoiceError), PredictionError, ProgramNotFoundError or InstallationError; all are
    OrbelnError. Temporary folders are removed in every case. Safe in threads and processes."""
    programs = programs or Programs.find()
    how = Conversion(chain, shift_list, format, first_resid, keep_first, skip_ambiguous, mse_as_met, strict)
    switches = {
        "iso": iso,
        "noproton": noproton,
        "offset": offset,
        "noclip": noclip,
        "noOxiCysCheck": not oxi_cys_check,
    }
    values = {"s2Thresh": s2_thresh, "count": count, "alignLen": align_len, "first": first, "last": last}
    arguments = core_arguments(switches, values, excl)
    name = title if title is not None else _name_of(source)
    with tempfile.TemporaryDirectory(prefix="orbeln") as folder:
        if ref is not None:
            copy_in(ref, folder, _REFERENCE)
            arguments += ["-ref", _REFERENCE]
        conversion = convert(source, sequence, how, programs, folder, timeout)
        log = _run_core(programs, arguments, folder, name, timeout)
        note = _run_trust(programs, folder, timeout)
        texts = {}
        for table in (*TABLES.values(), TABLE, TRUST):
            path = os.path.join(folder, table)
            if os.path.exists(path):
                with open(path, "rb") as handle:
                    texts[table] = handle.read()
    return Result(name, texts, conversion, log, note, programs)


def core_arguments(switches: dict[str, bool], values: dict[str, Any], excl: Iterable[str] = ()) -> list[str]:
    """Words of the core's command line. ValueError for what cannot be said there: it is cut at every hyphen."""
    words = ["-in", TABLE] + ["-" + name for name, given in switches.items() if given]
    chosen = {name: str(value) for name, value in values.items() if value is not None}
    sources = [excl] if isinstance(excl, str) else list(excl)
    if sources:
        chosen["excl"] = " ".join(sources)
    for name, value in chosen.items():
        if "-" in value:
            raise ValueError(f"the option {name} cannot have the value {value}: values hold no hyphen")
        words += ["-" + name, value]
    return words


def _name_of(source: Source) -> str:
    return "data frame" if isinstance(source, pd.DataFrame) else os.path.basename(os.fspath(source))


def _run_core(
    programs: Programs, arguments: list[str], folder: str, name: str, timeout: Optional[float]
) -> str:
    run = programs.run("orbeln", arguments, folder, timeout)
    missing = [table for table in TABLES.values() if not os.path.exists(os.path.join(folder, table))]
    if run.status != 0 or missing:  # a table that cannot be read ends the program with status 0
        raise failure(PredictionError, run, {TABLE: name})
    return run.log


def _run_trust(programs: Programs, folder: str, timeout: Optional[float]) -> str:
    """Why there is no table of trust; empty when there is one."""
    if not programs.has(TRUST_PROGRAM):
        return f"no trust: this installation has no program {TRUST_PROGRAM}"
    run = programs.run(TRUST_PROGRAM, ["."], folder, timeout)
    if run.status != 0:
        return f"no trust: {failure(OrbelnError, run)}"
    return ""


def predict_many(
    sources: Iterable[Source], *, workers: Optional[int] = None, **options: Any
) -> Iterator[tuple[Source, Union[Result, OrbelnError]]]:
    """Predicts many entries, `workers` at a time (default: processors), in the order of `sources`.

    Yields (source, result); for an entry that fails the error stands in place of the result, and the rest goes on. The
    options are those of `predict`. Threads suffice: the work is done by the programs."""
    workers = workers or os.cpu_count() or 1
    options.setdefault("programs", Programs.find())

    def one(source: Source) -> Union[Result, OrbelnError]:
        try:
            return predict(source, **options)
        except OrbelnError as error:
            return error

    with concurrent.futures.ThreadPoolExecutor(workers) as pool:
        waiting: list[tuple[Source, concurrent.futures.Future[Union[Result, OrbelnError]]]] = []
        try:
            for source in sources:
                waiting.append((source, pool.submit(one, source)))
                if (
                    len(waiting) > 2 * workers
                ):  # results are as large as their tables: do not run ahead of the reader
                    first, future = waiting.pop(0)
                    yield first, future.result()
            for first, future in waiting:
                yield first, future.result()
        finally:
            for _, future in waiting:
                future.cancel()
