#!/usr/bin/env python3
"""Runs two builds of orbeln on the same inputs and compares every byte they produce.

usage: same_output.py BEFORE AFTER INSTALLATION [CASES]

Compared are exit status, standard output, standard error and all output files; only the line with the running
time may differ. CASES is a text file of command lines (optionally a name and a tab in front) that run beside
its folder's files. Without it, the ubiquitin example and inputs derived from it are run with several option
sets.
"""
import os
import re
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

HERE = os.path.dirname(os.path.abspath(__file__))
EXAMPLE = os.path.join(HERE, "..", "examples", "ubiquitin", "ubiquitin.tab")
OPTIONS = [
    "",
    "-verb -path",
    "-noproton -verb",
    "-offset -iso",
    "-noclip -count 5",
    "-alignLen 5 -verb",
    "-alignLen 8 -first 5 -last 40",
    "-check -path",
    "-excl 1A7GE -count 25",
    "-out other.tab -path",
]
RUNNING_TIME = re.compile(rb"^ Running time: .*$", re.MULTILINE)


def derived_inputs():
    """File name -> content: the example and what users may bring instead."""
    with open(EXAMPLE, "rb") as source:
        lines = source.read().split(b"\n")
    header = [line for line in lines if not line.strip()[:1].isdigit()]
    rows = [line for line in lines if line.strip()[:1].isdigit()]

    def without(drop):
        return b"\n".join(header + [row for row in rows if not drop(row.split())]) + b"\n"

    return {
        "whole.tab": without(lambda cells: False),
        "noprotons.tab": without(lambda cells: cells[2] in (b"HA", b"HN", b"H")),
        "gap.tab": without(lambda cells: 20 <= int(cells[0]) <= 27),
        "sparse.tab": without(lambda cells: (7 * int(cells[0]) + len(cells[2]) + cells[2][0]) % 3 == 0),
        "carbons.tab": without(lambda cells: cells[2] not in (b"CA", b"CB")),
        "middle.tab": without(lambda cells: not 15 <= int(cells[0]) <= 60),
    }


def default_cases(folder):
    for name, content in derived_inputs().items():
        with open(os.path.join(folder, name), "wb") as out:
            out.write(content)
    return [f"-in {name} {options}".strip() for name in derived_inputs() for options in OPTIONS]


def read_cases(path):
    with open(path, encoding="utf-8") as lines:
        return [line.rstrip("\n").split("\t")[-1] for line in lines if line.strip()]


def run(program, options, installation, inputs):
    """Everything one run produces, by name."""
    with tempfile.TemporaryDirectory() as folder:
        for name in os.listdir(inputs):
            os.symlink(os.path.join(inputs, name), os.path.join(folder, name))
        given = set(os.listdir(folder))
        done = subprocess.run(
            [program] + options.split(),
            cwd=folder,
            capture_output=True,
            check=False,
            env={**os.environ, "ORBELN_DIR": installation},
        )
        result = {
            "exit status": str(done.returncode).encode(),
            "standard output": RUNNING_TIME.sub(b"", done.stdout),
            "standard error": done.stderr,
        }
        for name in sorted(set(os.listdir(folder)) - given):
            with open(os.path.join(folder, name), "rb") as output:
                result[name] = output.read()
        return result


def main():
    if len(sys.argv) not in (4, 5):
        sys.exit(__doc__)
    before, after, installation = (os.path.abspath(path) for path in sys.argv[1:4])
    with tempfile.TemporaryDirectory() as scratch:
        inputs = scratch if len(sys.argv) == 4 else os.path.dirname(os.path.abspath(sys.argv[4]))
        cases = default_cases(scratch) if len(sys.argv) == 4 else read_cases(sys.argv[4])
        files = differing = 0
        with ThreadPoolExecutor(2) as pool:
            runs = [
                [pool.submit(run, program, case, installation, inputs) for program in (before, after)]
                for case in cases
            ]
            for case, pair in zip(cases, runs):
                old, new = (future.result() for future in pair)
                files += len(old)
                wrong = sorted(name for name in old.keys() | new.keys() if old.get(name) != new.get(name))
                if wrong:
                    differing += 1
                    print(f"{case or '(no option)'}: {', '.join(wrong)} differ")
    print(f"{len(cases)} runs, {files} outputs compared, {differing} runs differ")
    sys.exit(1 if differing else 0)


if __name__ == "__main__":
    main()
