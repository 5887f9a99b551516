#!/usr/bin/python3
"""How often, and how large, the program estimates a referencing offset for shifts whose referencing is known
to be right.

  ORBELN_DIR=build/release/install scripts/referencing.py --program build/release/orbeln --inputs FOLDER

Runs `orbeln -check` on every input shift table of the folder and prints, per group of nuclei, the share of
tables with an estimate, the mean and the standard deviation of these estimates in ppm. For well-referenced
shifts the share should be small and the mean 0.
"""

import argparse
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile

LINE = re.compile(r"Estimated Referencing Offset for (\S+):\s+(-?[\d.]+) \+/-\s+([\d.]+)ppm")
GROUPS = ("CA/CB", "HA", "C'")


def estimates(program, table):
    """{group: offset} that the program reports for one input table."""
    with tempfile.TemporaryDirectory(prefix="referencing") as folder:
        shutil.copy(table, os.path.join(folder, "in.tab"))  # names with a hyphen cannot be given
        run = subprocess.run(
            [os.path.abspath(program), "-in", "in.tab", "-check"], cwd=folder, capture_output=True, text=True
        )
    if "Checking Chemical Shift Referencing" not in run.stdout:
        sys.exit(f"{table}: the program did not come to the referencing check\n{run.stderr}")
    return {group: float(offset) for group, offset, _ in LINE.findall(run.stdout)}


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter
    )
    parser.add_argument(
        "--program", required=True, help="the built program; ORBELN_DIR names the installation"
    )
    parser.add_argument("--inputs", required=True, help="folder of input shift tables *.tab")
    options = parser.parse_args()
    if not os.access(options.program, os.X_OK):
        sys.exit(f"{options.program}: no such program")
    if not os.path.isdir(options.inputs):
        sys.exit(f"{options.inputs}: no such folder")
    tables = sorted(name for name in os.listdir(options.inputs) if name.endswith(".tab"))
    if not tables:
        sys.exit(f"{options.inputs}: no input table (*.tab)")
    found = [estimates(options.program, os.path.join(options.inputs, name)) for name in tables]
    for group in GROUPS:
        values = [entry[group] for entry in found if group in entry]
        spread = statistics.stdev(values) if len(values) > 1 else 0.0
        mean = f"mean {statistics.mean(values):+.3f}, s.d. {spread:.3f} ppm" if values else "none"
        print(f"{group:6s} {len(values)} of {len(tables)}: {mean}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
