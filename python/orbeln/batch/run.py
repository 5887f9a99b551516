"""One group of entries: what a job of the workflow does. Standard library only, so that it starts quickly.

An entry is made in work/GROUP/ and moved to entries/ID when it is complete, so that a folder in entries/ is never
half done. Ended at any moment, the next run goes on with the entries that have no record; a lock makes it wait for
a run of the same group that outlived its scheduler."""

from __future__ import annotations

import argparse
import os
import signal
import sys
import time
from typing import Any, Optional

from ..errors import OrbelnError
from ..programs import Programs
from . import identity
from .entry import RECORD, finished, fingerprint, run_entry
from .files import FULL, free_megabytes, locked, read_json, remove, write_json, write_text
from .plan import VERSION

STOPPED = 1
LEFT_MB = 5  # less than this after an entry means that the disk may have been full while it was made


class Stop(Exception):
    """The group cannot go on; nothing that is done is lost, and the next run goes on from here."""


def _say(text: str) -> None:
    print(time.strftime("%Y-%m-%d %H:%M:%S ") + text, flush=True)


def _check_space(results: str, least: int) -> None:
    free = free_megabytes(results)
    if free < least:
        raise Stop(f"only {free:.1f} MB are free in {results}, {least} are wanted: make room and run again")


def _check_installation(known: dict[str, Any], programs: Programs) -> None:
    moved = identity.changed(known, programs)
    if moved:
        names = ", ".join(moved[:5]) + (f" and {len(moved) - 5} more" if len(moved) > 5 else "")
        raise Stop(f"the installation has changed since the plan was made ({names}): run again to plan anew")


def _move_in(work: str, target: str) -> None:
    """Puts a finished folder in place; an older one is moved to the work folder first and removed."""
    old = work + ".old"
    if os.path.lexists(target):
        os.rename(target, old)
    os.rename(work, target)
    remove(old)


def _one(
    entry: dict[str, str], plan: dict[str, Any], programs: Programs, results: str, work: str
) -> dict[str, Any]:
    """The record of an entry: the one it has, or that of a new run."""
    settings, known = plan["settings"], plan["identity"]
    target = os.path.join(results, "entries", entry["id"])
    record = finished(target, fingerprint(entry, settings, known["id"]))
    if record is not None:
        _say(f"{entry['id']}: {record['status']} before")
        return record
    _check_space(results, settings["min_free_mb"])
    _check_installation(known, programs)
    earlier = read_json(os.path.join(target, RECORD)) or {}
    attempts = earlier.get("attempts", 0) if earlier.get("status") == "interrupted" else 0
    folder = os.path.join(work, entry["id"])
    remove(folder)
    os.makedirs(folder)
    record = run_entry(entry, settings, programs, folder, known["id"], attempts)
    # What a disk that ran full, or tables that changed under the programs, left behind is not kept.
    _check_space(results, LEFT_MB)
    _check_installation(known, programs)
    _move_in(folder, target)
    words = (
        record["status"]
        if record["status"] == "done"
        else f"{record['status']}: {record['step']}: {record['reason']}"
    )
    _say(f"{entry['id']}: {words} ({sum(record['seconds'].values()):.2f} s)")
    return record


def _rows(results: str, records: list[dict[str, Any]]) -> str:
    """Rows of all residues of the entries that are done, with the entry in the first column."""
    header = ""
    parts = []
    for record in records:
        if record["status"] != "done":
            continue
        with open(os.path.join(results, "entries", record["id"], "report.tsv"), encoding="utf-8") as handle:
            head, *lines = handle.read().splitlines()
        header = header or head
        if head != header:
            raise Stop(
                f"report.tsv of {record['id']} has other columns than the entries before it: remove its folder"
            )
        parts += [f"{record['id']}\t{line}\n" for line in lines]
    return (f"entry\t{header}\n" if header else "") + "".join(parts)


def run_group(results: str, group: str) -> int:
    """Does the entries of a group and writes groups/GROUP.json and .tsv; returns how many were interrupted."""
    plan = read_json(os.path.join(results, "plan", group + ".json"))
    if not isinstance(plan, dict) or plan.get("version") != VERSION:
        raise Stop(f"{results}/plan/{group}.json is missing or of another version: run the batch again")
    programs = Programs(tuple(plan["identity"]["folders"]), plan["identity"]["install_dir"])
    work = os.path.join(results, "work", group)
    for folder in ("entries", "groups"):
        os.makedirs(os.path.join(results, folder), exist_ok=True)
    with locked(os.path.join(results, "locks", group)):
        remove(work)  # of a run that was killed: the lock says that nobody is in it
        os.makedirs(work)
        start = time.monotonic()
        try:
            records = [_one(entry, plan, programs, results, work) for entry in plan["entries"]]
        finally:
            remove(work)
        lost = [record for record in records if record["status"] == "interrupted"]
        if not lost:
            summary = {
                "entries": records,
                "seconds": round(time.monotonic() - start, 3),
                "host": os.uname().nodename,
            }
            write_text(os.path.join(results, "groups", group + ".tsv"), _rows(results, records))
            write_json(os.path.join(results, "groups", group + ".json"), summary)
    return len(lost)


def main(arguments: Optional[list[str]] = None) -> int:
    parser = argparse.ArgumentParser(
        prog="orbeln.batch.run", description="Does one group of a planned batch."
    )
    parser.add_argument("results", help="results folder")
    parser.add_argument("group", help="number of the group, as in RESULTS/plan")
    options = parser.parse_args(arguments)
    signal.signal(
        signal.SIGTERM, lambda number, frame: sys.exit(128 + number)
    )  # ends the program and cleans up
    try:
        lost = run_group(os.path.abspath(options.results), options.group)
    except Stop as stop:
        _say(f"stopped: {stop}")
        return STOPPED
    except OSError as error:
        if error.errno in FULL:
            _say(f"stopped: {error.filename or options.results}: {error.strerror}: make room and run again")
            return STOPPED
        raise
    except OrbelnError as error:
        _say(f"stopped: {error}")
        return STOPPED
    except KeyboardInterrupt:
        _say("interrupted; run again to go on")
        return 130
    if lost:
        _say(f"{lost} entries were ended from outside; run again to try them once more")
    return STOPPED if lost else 0


if __name__ == "__main__":
    sys.exit(main())
