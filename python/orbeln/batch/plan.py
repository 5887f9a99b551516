"""Which entries there are, what each is called, and which group does it."""

from __future__ import annotations

import csv
import hashlib
import os
import re
import unicodedata
from typing import Any, Optional

from ..errors import OrbelnError
from ..programs import Programs
from . import identity
from .files import read_json, remove, write_json

VERSION = 1
NO_SHIFTS = (
    ".seq .fasta .fa .pdb .cif .gro .md .log .html .json .yaml .yml .py .sh .xz .gz .zip .check"
).split()
COLUMNS = ("file", "name", "chain", "list", "sequence", "options")
CORE_SWITCHES = ("iso", "noproton", "offset", "noclip", "noOxiCysCheck")
CORE_VALUES = ("s2Thresh", "count", "alignLen", "excl")
DEFAULTS: dict[str, Any] = {
    "group_size": 50,
    "restraints": ["xplor", "cyana"],
    "options": "",
    "convert_options": "",
    "timeout": 900,
    "min_free_mb": 200,
}


def read_inputs(source: str) -> list[dict[str, str]]:
    """Entries of a folder, a list (one path a line) or a table (.tsv or .csv with a column file), paths absolute.

    Relative paths are relative to the list or table. Nothing is opened here: a missing file fails as an entry.
    """
    if os.path.isdir(source):
        names = sorted(os.listdir(source))
        wanted = [
            n for n in names if not n.startswith(".") and os.path.splitext(n)[1].lower() not in NO_SHIFTS
        ]
        files = [os.path.join(os.path.abspath(source), name) for name in wanted]
        return [{"file": path} for path in files if os.path.isfile(path)]
    if not os.path.isfile(source):
        raise OrbelnError("no such file or folder", file=source)
    with open(source, encoding="utf-8-sig", errors="surrogateescape", newline="") as handle:
        lines = handle.read().splitlines()
    ending = os.path.splitext(source)[1].lower()
    if ending in (".tsv", ".csv"):
        rows = _table(source, lines, "\t" if ending == ".tsv" else ",")
    else:
        rows = [
            {"file": line.strip()} for line in lines if line.strip() and not line.lstrip().startswith("#")
        ]
    folder = os.path.dirname(os.path.abspath(source))
    for row in rows:
        for column in ("file", "sequence"):
            if row.get(column):
                row[column] = os.path.normpath(os.path.join(folder, row[column]))
    return rows


def sequence_files(entry: dict[str, str]) -> list[str]:
    """Sequence files of an entry: the one given, else NAME.fasta, NAME.fa (passed on to the conversion) or NAME.seq
    (which it finds itself) beside it."""
    if entry.get("sequence"):
        return [entry["sequence"]]
    stem = os.path.splitext(entry["file"])[0]
    return [stem + ending for ending in (".fasta", ".fa", ".seq") if os.path.isfile(stem + ending)]


def input_stamps(source: str) -> str:
    """Changes with every input that is added, removed or changed: a digest of names, sizes and times."""
    digest = hashlib.sha256()
    for row in read_inputs(source):
        digest.update(repr(sorted(row.items())).encode())
        for path in (row["file"], *sequence_files(row)):
            try:
                state = os.stat(path)
                digest.update(repr((path, state.st_size, state.st_mtime_ns)).encode())
            except OSError as error:
                digest.update(repr((path, error.errno)).encode())
    return digest.hexdigest()


def _table(source: str, lines: list[str], separator: str) -> list[dict[str, str]]:
    reader = csv.DictReader(lines, delimiter=separator)
    columns = [column.strip().lower() for column in reader.fieldnames or ()]
    unknown = sorted(set(columns) - set(COLUMNS))
    if "file" not in columns or unknown:
        problem = f"unknown column {unknown[0]!r}" if unknown else "no column file"
        raise OrbelnError(f"{problem}; columns are {', '.join(COLUMNS)}", file=source, line=1)
    reader.fieldnames = columns
    rows = []
    for row in reader:
        given = {key: (row[key] or "").strip() for key in columns if isinstance(row.get(key), str)}
        if None in row:
            raise OrbelnError(f"more cells than columns ({len(columns)})", file=source, line=reader.line_num)
        if not given.get("file"):
            raise OrbelnError("no file in this row", file=source, line=reader.line_num)
        core_words(given.get("options", ""), f"{source}:{reader.line_num}")
        rows.append(given)
    return rows


def core_words(options: str, where: str) -> list[str]:
    """Options of the core as words; only those that make sense for a whole batch, since the core ignores the others."""
    words = options.split()
    at = 0
    while at < len(words):
        name = words[at].lstrip("-")
        if not words[at].startswith("-") or name not in (*CORE_SWITCHES, *CORE_VALUES):
            allowed = ", ".join("-" + known for known in (*CORE_SWITCHES, *CORE_VALUES))
            raise OrbelnError(f"{where}: option {words[at]}: a batch takes {allowed}")
        words[at] = "-" + name
        at += 1
        if name in CORE_VALUES:
            if at == len(words) or "-" in words[at]:
                raise OrbelnError(f"{where}: option -{name} needs a value without a hyphen")
            at += 1
    return words


def plain_name(text: str) -> str:
    """Letters, digits, dots and underscores: safe as a folder, in a link and on every command line."""
    latin = unicodedata.normalize("NFKD", text).encode("ascii", "ignore").decode()
    plain = re.sub(r"[^A-Za-z0-9_.]+", "_", latin).strip("._")
    return plain[:80] or "entry"


def assign_ids(rows: list[dict[str, str]], known: dict[str, str]) -> dict[str, str]:
    """Adds "id" and "name" to every row; returns {key of the row: ID}, the known ones kept.

    A key is the file with the chosen chain and list, so that one file may give several entries. IDs differ in more
    than case, for file systems that do not tell it."""
    given = dict(known)
    taken = {value.lower() for value in given.values()}
    unique = []
    seen = set()
    for row in rows:
        key = "\t".join([row["file"], row.get("chain", ""), row.get("list", ""), row.get("options", "")])
        if key in seen:
            continue  # the same entry twice in a list
        seen.add(key)
        stem = os.path.splitext(os.path.basename(row["file"]))[0]
        choice = "_".join(row[part] for part in ("chain", "list") if row.get(part))
        row["name"] = row.get("name") or (f"{stem} {choice}" if choice else stem)
        if key not in given:
            base, number = plain_name(row["name"]), 1
            while (candidate := base if number == 1 else f"{base}_{number}").lower() in taken:
                number += 1
            given[key] = candidate
            taken.add(candidate.lower())
        row["id"] = given[key]
        unique.append(row)
    rows[:] = unique
    return given


def settings_of(config: dict[str, Any]) -> dict[str, Any]:
    """The settings that decide results, checked. OrbelnError for what makes no sense."""
    settings = {key: config.get(key, default) for key, default in DEFAULTS.items()}
    for key in ("group_size", "timeout", "min_free_mb"):
        try:
            settings[key] = int(settings[key])
        except (TypeError, ValueError):
            raise OrbelnError(f"setting {key}: {settings[key]!r} is no whole number") from None
    if settings["group_size"] < 1 or settings["timeout"] < 1:
        raise OrbelnError("settings group_size and timeout must be 1 or more")
    formats = settings["restraints"] or []
    formats = formats.replace(",", " ").split() if isinstance(formats, str) else list(formats)
    unknown = sorted(set(formats) - {"xplor", "cyana", "nef"} - {"none"})
    if unknown:
        raise OrbelnError(f"setting restraints: {unknown[0]}; a batch writes xplor, cyana, nef or none")
    settings["restraints"] = [name for name in formats if name != "none"]
    settings["options"] = core_words(str(settings["options"] or ""), "setting options")
    words = str(settings["convert_options"] or "").split()
    for word in words:
        if word not in ("--keep-first", "--skip-ambiguous", "--mse-as-met", "--strict"):
            raise OrbelnError(
                f"setting convert_options: {word}; a batch takes --keep-first, --skip-ambiguous, --mse-as-met, --strict"
            )
    settings["convert_options"] = words
    return settings


def make(config: dict[str, Any], results: str, programs: Optional[Programs] = None) -> int:
    """Writes results/plan; returns the number of groups. The plan replaces an earlier one as a whole."""
    programs = programs or Programs.find()
    settings = settings_of(config)
    rows = read_inputs(str(config["inputs"]))
    if not rows:
        raise OrbelnError("no entries: the folder, list or table names no file", file=str(config["inputs"]))
    names = os.path.join(results, "names.json")
    os.makedirs(results, exist_ok=True)
    write_json(names, assign_ids(rows, read_json(names) or {}))
    made_by = identity.describe(programs)
    target = os.path.join(results, "plan")
    beside = target + ".part"
    remove(beside)
    os.makedirs(beside)
    size = settings["group_size"]
    groups = [rows[start : start + size] for start in range(0, len(rows), size)]
    for number, entries in enumerate(groups, 1):
        content = {"version": VERSION, "settings": settings, "identity": made_by, "entries": entries}
        write_json(os.path.join(beside, f"{number:05d}.json"), content)
    remove(target)
    os.replace(beside, target)
    return len(groups)
