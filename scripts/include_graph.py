#!/usr/bin/env python3
"""The includes of src/ and tools/ from room to room (a room is a folder), and whether they run one way.

    scripts/include_graph.py            rooms with what they include, and the files behind each wrong arrow
    scripts/include_graph.py --dot      the same for Graphviz: | dot -Tsvg > rooms.svg
    scripts/include_graph.py --check    status 1 when an arrow goes against ALLOWED
"""
import argparse
import re
import sys
from collections import defaultdict
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
FOLDERS = ("src", "tools")
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.M)

# What a room may include beside itself, from the ground up.
KERNELS = {"base", "tables"}
ALLOWED = {
    "base": set(),
    "tables": {"base"},
    "shifts": KERNELS,
    "ann": KERNELS,
    "rci": KERNELS,
    "search": KERNELS,
    "driver": KERNELS | {"shifts", "ann", "rci", "search"},
    "common": KERNELS,
    "predictions": KERNELS | {"common"},
    "convert": KERNELS | {"common"},
    "restraints": KERNELS | {"common", "predictions"},
    "report": KERNELS | {"common", "predictions"},
    "run": KERNELS | {"common", "convert", "predictions"},
    "dump": KERNELS | {"common", "driver", "shifts", "ann", "rci", "search"},
}

# Stages are members of the driver: the source that defines one may see its declaration, no other file may.
DRIVER_HEADER = "driver/ORBEL.h"
DEFINES_MEMBER = re.compile(r"^(?!\s|//).*\bORBEL::~?\w+\(.*\{$", re.M)


def rooms():
    """Room -> its folder."""
    return {path.name: path for folder in FOLDERS for path in (ROOT / folder).iterdir() if path.is_dir()}


def arrows():
    """(room, included room) -> the includes behind it, "file -> header"; without stages that see their class."""
    folders, found = rooms(), defaultdict(list)
    for room, folder in folders.items():
        for path in sorted(folder.glob("*.cpp")) + sorted(folder.glob("*.h")):
            text = path.read_text()
            for header in INCLUDE.findall(text):
                other = header.split("/")[0]
                if header == DRIVER_HEADER and DEFINES_MEMBER.search(text):
                    continue
                if "/" in header and other in folders and other != room:
                    found[room, other].append(f"{path.relative_to(ROOT)} -> {header}")
    return found


def is_allowed(room, other):
    return other in ALLOWED.get(room, set())


def print_text(found):
    for room in [name for name in ALLOWED if name in rooms()] + sorted(set(rooms()) - set(ALLOWED)):
        others = [
            f"{other} {len(found[room, other])}{'' if is_allowed(room, other) else ' (!)'}"
            for other in sorted(rooms())
            if (room, other) in found
        ]
        print(f"{room:12} -> {', '.join(others) or 'nothing'}")
    for (room, other), includes in sorted(found.items()):
        if not is_allowed(room, other):
            print(f"\nagainst the order, {room} -> {other}:")
            print("\n".join(f"  {line}" for line in includes))


def print_dot(found):
    print('digraph rooms {\n  rankdir=BT;\n  node [shape=box, fontname="sans-serif"];')
    for (room, other), includes in sorted(found.items()):
        colour = "" if is_allowed(room, other) else ", color=red"
        print(f'  "{room}" -> "{other}" [label="{len(includes)}"{colour}];')
    print("}")


def check(found):
    """0 when every arrow is allowed."""
    faults = [f"{room} is not in the table of this script" for room in sorted(set(rooms()) - set(ALLOWED))]
    for (room, other), includes in sorted(found.items()):
        if not is_allowed(room, other):
            faults.append(f"{room} must not include {other}:\n  " + "\n  ".join(includes))
    for fault in faults:
        print(f"include_graph: {fault}", file=sys.stderr)
    return 1 if faults else 0


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter
    )
    parser.add_argument("--dot", action="store_true", help="for Graphviz")
    parser.add_argument("--check", action="store_true", help="fail on arrows against the order")
    options = parser.parse_args()
    found = arrows()
    if options.check:
        sys.exit(check(found))
    print_dot(found) if options.dot else print_text(found)


if __name__ == "__main__":
    main()
