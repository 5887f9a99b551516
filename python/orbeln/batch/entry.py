"""One entry: convert, predict, trust, report and restraints in a folder of its own."""

from __future__ import annotations

import glob
import hashlib
import json
import os
import resource
import signal
import time
from typing import Any, Optional

from ..errors import OrbelnError
from ..programs import Programs, Run, message_of
from .files import read_json, sha256, write_json
from .plan import sequence_files

RECORD = "entry.json"
ATTEMPTS = 3  # an entry whose program is killed from outside this often counts as failed
_ENDED_FROM_OUTSIDE = (signal.SIGKILL, signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGXCPU)
_NO_ROOM = ("No space left on device", "Disk quota exceeded", "Input/output error")
_RESTRAINTS = {"xplor": "restraints.tbl", "cyana": "restraints.aco", "nef": "restraints.nef"}
_TABLES = [f"pred{part}.tab" for part in ("", "All", "Chi1", "SS", "S2", "ABP", "AdjCS")]


class StepFailed(Exception):
    """A step of an entry failed; `outside` when something else than the entry is the reason."""

    def __init__(self, step: str, reason: str, outside: bool = False) -> None:
        super().__init__(reason)
        self.step, self.reason, self.outside = step, reason, outside


def fingerprint(entry: dict[str, str], settings: dict[str, Any], identity_id: str) -> str:
    """Of everything that decides the result: contents of the input, choices, settings, programs and tables."""
    parts: list[Any] = [identity_id, settings["restraints"], settings["options"], settings["convert_options"]]
    parts += [entry.get(key, "") for key in ("file", "name", "chain", "list", "options")]
    for path in (entry["file"], *sequence_files(entry)):
        try:
            parts.append(sha256(path))
        except OSError as error:
            parts.append(error.strerror)
    return hashlib.sha256(json.dumps(parts).encode()).hexdigest()


def finished(folder: str, mark: str) -> Optional[dict[str, Any]]:
    """The record of an entry that needs no further work, else None."""
    record = read_json(os.path.join(folder, RECORD))
    if not isinstance(record, dict) or record.get("fingerprint") != mark:
        return None
    if record.get("status") == "done" and not os.path.exists(os.path.join(folder, "report.tsv")):
        return None
    return record if record.get("status") in ("done", "failed") else None


class EntryRun:
    """Runs the steps of one entry in `folder`, each with a log in logs/."""

    def __init__(
        self, entry: dict[str, str], settings: dict[str, Any], programs: Programs, folder: str
    ) -> None:
        self.entry, self.settings, self.programs, self.folder = entry, settings, programs, folder
        self.seconds: dict[str, float] = {}
        os.makedirs(os.path.join(folder, "logs"))

    def _path(self, name: str) -> str:
        return os.path.join(self.folder, name)

    def _step(self, step: str, program: str, arguments: list[str], products: list[str]) -> None:
        start = time.monotonic()
        try:
            run = self.programs.run(program, arguments, self.folder, self.settings["timeout"])
        except OrbelnError as error:
            raise StepFailed(step, str(error)) from None
        self.seconds[step] = self.seconds.get(step, 0.0) + time.monotonic() - start
        with open(self._path(f"logs/{step}.log"), "w", encoding="utf-8", errors="replace") as log:
            log.write(run.log)
        if run.status != 0 or not all(self._is_whole(name) for name in products):
            self._fail(step, run, products)

    def _is_whole(self, name: str) -> bool:
        """Whether a product is there with a last line that ends: what a full disk cuts off does not."""
        try:
            with open(self._path(name), "rb") as handle:
                handle.seek(-1, os.SEEK_END)
                return handle.read(1) == b"\n"
        except OSError:
            return False

    def _fail(self, step: str, run: Run, products: list[str]) -> None:
        message, file, line = message_of(run)
        place = "" if not file else f"{file}: " if line is None else f"{file}:{line}: "
        if run.status == 0 and message.endswith("no message"):
            absent = [name for name in products if not self._is_whole(name)]
            message = f"{run.program} left no complete {', '.join(absent)}"
        outside = run.status in [-number for number in _ENDED_FROM_OUTSIDE] or any(
            w in run.errors for w in _NO_ROOM
        )
        raise StepFailed(step, place + message, outside)

    def run(self) -> dict[str, Any]:
        """The summary of the entry. StepFailed when a step fails; nothing of later steps is made then."""
        if not os.path.isfile(self.entry["file"]):
            raise StepFailed("convert", f"{self.entry['file']}: No such file or directory")
        self._step("convert", "orbeln-convert", self._convert_arguments(), ["input.tab"])
        words = [*self.settings["options"], *self.entry.get("options", "").split()]
        self._step("predict", "orbeln", ["-in", "input.tab", *words], _TABLES)
        if self.programs.has("orbeln-trust"):
            self._step("trust", "orbeln-trust", ["."], ["predTrust.tab"])
        products = ["report.html", "report.json", "report.tsv"]
        arguments = [
            ".",
            "-o",
            products[0],
            "--json",
            products[1],
            "--tsv",
            products[2],
            "--log",
            "logs/predict.log",
        ]
        self._step("report", "orbeln-report", [*arguments, f"--title={self.entry['name']}"], products)
        for form in self.settings["restraints"]:
            name = _RESTRAINTS[form]
            arguments = ["pred.tab", "--chi1", "predChi1.tab", f"--format={form}", "-o", name]
            self._step(f"restraints_{form}", "orbeln-restraints", arguments, [name])
        return self._summary()

    def _convert_arguments(self) -> list[str]:
        arguments = ["--output", "input.tab", *self.settings["convert_options"]]
        for option in ("chain", "list"):
            if self.entry.get(option):
                arguments.append(f"--{option}={self.entry[option]}")
        sequences = sequence_files(self.entry)
        if self.entry.get("sequence") or (sequences and not sequences[0].endswith(".seq")):
            arguments.append(f"--sequence={sequences[0]}")
        return [*arguments, "--", self.entry["file"]]

    def _summary(self) -> dict[str, Any]:
        report = read_json(self._path("report.json"))
        if not isinstance(report, dict):
            raise StepFailed("report", "report.json cannot be read back")
        residues = report["residues"]
        with open(self._path("report.tsv"), encoding="utf-8") as handle:
            rows = sum(1 for _ in handle) - 1
        if rows != len(residues):
            raise StepFailed("report", f"report.tsv has {rows} rows of {len(residues)} residues")
        with open(self._path("input.tab"), encoding="utf-8", errors="replace") as handle:
            shifts = sum(1 for line in handle if line[:1] == " " and len(line.split()) == 4)
        classes: dict[str, int] = {}
        states: dict[str, int] = {}
        for residue in residues:
            classes[residue["class"]] = classes.get(residue["class"], 0) + 1
            state = str((residue.get("ss") or {}).get("class", "x")).upper()
            states[state] = states.get(state, 0) + 1
        check = report.get("check") or {}
        return {
            "residues": len(residues),
            "shifts": shifts,
            "classes": classes,
            "helix": states.get("H", 0),
            "strand": states.get("E", 0),
            "chi1": sum(1 for r in residues if (r.get("chi1") or {}).get("class", "na") not in ("na", None)),
            "offsets": check.get("offsets", []),
            "outliers": len(check.get("outliers", [])),
            "input": report.get("input", ""),
        }


def run_entry(
    entry: dict[str, str],
    settings: dict[str, Any],
    programs: Programs,
    folder: str,
    identity_id: str,
    attempts: int,
) -> dict[str, Any]:
    """Runs an entry in `folder` and leaves its record there; the record tells how it went."""
    mark = fingerprint(entry, settings, identity_id)
    job = EntryRun(entry, settings, programs, folder)
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    record: dict[str, Any] = {
        "id": entry["id"],
        "name": entry["name"],
        "file": entry["file"],
        "status": "done",
    }
    try:
        record.update(job.run())
    except StepFailed as failed:
        tried = attempts + 1
        again = failed.outside and tried < ATTEMPTS
        record.update(
            status="interrupted" if again else "failed",
            step=failed.step,
            reason=failed.reason,
            attempts=tried,
        )
        for name in glob.glob(os.path.join(glob.escape(folder), "*.part")):
            os.unlink(name)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    cpu = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    record.update(
        fingerprint=mark,
        installation=identity_id,
        seconds={step: round(value, 4) for step, value in job.seconds.items()},
        cpu_seconds=round(cpu, 4),
        peak_mb=round(after.ru_maxrss / 1024.0, 1),
    )
    write_json(os.path.join(folder, RECORD), record)
    return record
