#!/usr/bin/env python3
"""Prints the notes of one release from CHANGELOG.md: release_notes.py [VERSION], by default the newest."""
import re
import sys
from pathlib import Path

CHANGELOG = Path(__file__).resolve().parent.parent / "CHANGELOG.md"


def releases(text):
    """Version -> what stands below its heading, newest first."""
    parts = re.split(r"^## (\S+).*$", text, flags=re.M)[1:]
    return {version: notes.strip() for version, notes in zip(parts[::2], parts[1::2])}


def main():
    if len(sys.argv) > 2 or sys.argv[1:2] in (["-h"], ["--help"]):
        sys.exit(__doc__)
    known = releases(CHANGELOG.read_text())
    version = sys.argv[1].removeprefix("v") if len(sys.argv) > 1 else next(iter(known), "")
    if version not in known:
        sys.exit(f"release_notes: CHANGELOG.md has no release '{version}', only {', '.join(known)}")
    # One line a paragraph or item: pages of releases keep line ends.
    print(f"# ORBEL-N {version}\n\n" + re.sub(r"(?<=\S)\n +(?=\S)", " ", known[version]))


if __name__ == "__main__":
    main()
