#!/usr/bin/env python3
"""Runs the argument lines of tests/golden with a program and packs what it wrote.

    scripts/golden.py build/release/orbeln                # writes tests/golden/expected.tar.xz
    scripts/golden.py build/release/orbeln --into FOLDER  # leaves the outputs unpacked in FOLDER instead

Only outputs that a second computation, or a person, has checked may be packed.
"""
import argparse
import os
import pathlib
import shutil
import subprocess
import tarfile
import tempfile

GOLDEN = pathlib.Path(__file__).resolve().parent.parent / "tests" / "golden"


def run_line(program, arguments, inputs, results):
    """One run in a copy of `inputs`; what it wrote, printed and returned goes to the folder `results`."""
    with tempfile.TemporaryDirectory(prefix="golden") as scratch:
        scratch = pathlib.Path(scratch)
        # By a relative name, so that no path of this machine is printed.
        (scratch / "home").symlink_to(inputs.parent)
        folder = scratch / "run"
        shutil.copytree(inputs, folder)
        environment = dict(os.environ, ORBELN_DIR="../home")
        done = subprocess.run(
            [program, *arguments], cwd=folder, env=environment, capture_output=True, check=False
        )
        results.mkdir(parents=True)
        for file in sorted(folder.iterdir()):
            if not (inputs / file.name).exists():
                shutil.copy(file, results / file.name)
        (results / "stdout.txt").write_bytes(done.stdout)
        (results / "stderr.txt").write_bytes(done.stderr)
        (results / "status.txt").write_text(f"{done.returncode}\n")


def anonymous(member):
    """Archive members without a time or an owner: the same outputs give the same archive."""
    member.mtime, member.uid, member.gid, member.uname, member.gname = 0, 0, 0, "", ""
    return member


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter
    )
    parser.add_argument("program", type=pathlib.Path)
    parser.add_argument("--into", type=pathlib.Path)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as scratch:
        scratch = pathlib.Path(scratch)
        with tarfile.open(GOLDEN / "installation.tar.xz") as archive:
            archive.extractall(scratch)
        results = (options.into or scratch) / "expected"
        for number, line in enumerate((GOLDEN / "runs.txt").read_text().split("\n")[:-1], 1):
            inputs = scratch / "installation" / "in"
            run_line(options.program.resolve(), line.split(), inputs, results / f"{number:02d}")
        if options.into is None:
            with tarfile.open(GOLDEN / "expected.tar.xz", "w:xz", preset=9) as archive:
                archive.add(results, "expected", filter=anonymous)


if __name__ == "__main__":
    main()
