"""Which programs and tables made a result: results of two installations are never mixed without a word."""

from __future__ import annotations

import hashlib
import os
from typing import Any

from ..programs import Programs
from .files import sha256

PROGRAMS = ("orbeln", "orbeln-convert", "orbeln-report", "orbeln-restraints", "orbeln-trust")


def _files(programs: Programs) -> dict[str, str]:
    """{name: path} of every program, of what lies in the installation folder, and of all tables."""
    found = {name: programs.path(name) for name in PROGRAMS if name != "orbeln-trust" or programs.has(name)}
    top = programs.install_dir
    names = [name for name in os.listdir(top) if os.path.isfile(os.path.join(top, name))]
    for folder, _, inside in os.walk(os.path.join(top, "tab")):
        names += [os.path.relpath(os.path.join(folder, name), top) for name in inside]
    found.update({name: os.path.join(top, name) for name in names if not name.startswith(".")})
    return found


def stamps(programs: Programs) -> dict[str, list[int]]:
    """{name: [size, time of modification in ns]}: cheap to look at before and after every entry."""
    found = {}
    for name, path in sorted(_files(programs).items()):
        state = os.stat(path)
        found[name] = [state.st_size, state.st_mtime_ns]
    return found


def describe(programs: Programs) -> dict[str, Any]:
    """Identity: "id" depends on the contents alone, "stamps" and "sums" tell what changed."""
    seen = stamps(programs)
    sums = {name: sha256(path) for name, path in sorted(_files(programs).items())}
    return {
        "id": _id(sums),
        "folders": list(programs.folders),
        "install_dir": programs.install_dir,
        "stamps": seen,
        "sums": sums,
    }


def _id(sums: dict[str, str]) -> str:
    return hashlib.sha256(repr(sorted(sums.items())).encode()).hexdigest()[:16]


def changed(identity: dict[str, Any], programs: Programs) -> list[str]:
    """Names of programs and tables whose contents differ from `identity`, which takes over the new stamps of equal
    contents."""
    try:
        now = stamps(programs)
    except OSError as error:
        return [os.path.basename(str(error.filename))]
    known = identity["stamps"]
    differ = [name for name in sorted({*now, *known}) if now.get(name) != known.get(name)]
    if not differ:
        return []
    paths = _files(programs)
    moved = [
        name for name in differ if name not in paths or sha256(paths[name]) != identity["sums"].get(name)
    ]
    if not moved:
        known.update({name: now[name] for name in differ})
    return moved
