"""The whole workflow under Snakemake: ended with -9 and by Ctrl-C and run again, inputs that change, mistakes, lint."""

import contextlib
import csv
import json
import lzma
import os
import re
import signal
import subprocess
import sys
import time

import pytest
from conftest import ROOT
from test_batch import write_part

import orbeln
from orbeln.batch import command

ENVIRONMENT = dict(os.environ, PYTHONPATH=str(ROOT / "python"))
NAMES = ("entry-0 x", "entry-1 x", "-lead", 'a{b}\'s "$(touch y)"', "new\nline é")  # of files that users have
ENTRIES = len(NAMES)


@pytest.fixture
def shifts(tmp_path):
    folder = tmp_path / "shift lists-2026"
    folder.mkdir()
    for number, name in enumerate(NAMES):
        write_part(folder / f"{name}.tab", 20 + number)
    (folder / "bad.str").write_text("nothing\n")
    return folder


def start(shifts, results, *more):
    words = [
        sys.executable,
        "-m",
        "orbeln.batch.command",
        str(shifts),
        "-o",
        str(results),
        "--group-size",
        "2",
        "-j",
        "2",
    ]
    return subprocess.Popen(
        [*words, *more],
        env=ENVIRONMENT,
        start_new_session=True,
        text=True,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
    )


def finish(shifts, results, *more):
    process = start(shifts, results, *more)
    output, _ = process.communicate(timeout=300)
    assert process.returncode == 0, output
    return output


def entries(results):
    folder = results / "entries"
    return {name: os.stat(folder / name).st_ino for name in os.listdir(folder)} if folder.exists() else {}


def wait_for_entries(results, number):
    deadline = time.monotonic() + 120
    while len(entries(results)) < number and time.monotonic() < deadline:
        time.sleep(0.02)
    return entries(results)


def rows(path):
    with open(path, newline="") as handle:
        return list(csv.DictReader(handle, delimiter="\t", quoting=csv.QUOTE_NONE))


def test_killed_interrupted_and_finished(tmp_path, shifts):
    results = tmp_path / "results {of} mine"  # braces are special to the engine, blanks to shells
    process = start(shifts, results)
    wait_for_entries(results, 1)
    family = subprocess.run(
        ["ps", "-o", "pid=", "-s", str(process.pid)], capture_output=True, text=True
    ).stdout.split()
    for pid in family:
        with contextlib.suppress(ProcessLookupError):
            os.kill(int(pid), signal.SIGKILL)  # command, engine, groups and programs
    process.wait()
    first = entries(results)
    assert 0 < len(first) < ENTRIES + 1 and not (results / "batch.json").exists()

    process = start(shifts, results)
    second = wait_for_entries(results, len(first) + 1)
    os.killpg(process.pid, signal.SIGINT)  # Ctrl-C in a terminal reaches the whole group
    output, _ = process.communicate(timeout=120)
    assert process.returncode != 0 and "run the same command again" in output
    left = subprocess.run(
        ["ps", "-o", "pid=", "-s", str(process.pid)], capture_output=True, text=True
    ).stdout.split()
    assert left == []

    finish(shifts, results)
    last = entries(results)
    assert len(last) == ENTRIES + 1 and list((results / "work").iterdir()) == []
    assert first.items() <= second.items() <= last.items()  # what was done was not done again
    batch = json.loads((results / "batch.json").read_text())
    assert (batch["entries"], batch["done"], batch["failed"]) == (ENTRIES + 1, ENTRIES, 1)
    with lzma.open(results / "residues.tsv.xz", "rt") as handle:
        names = [line.split("\t")[0] for line in handle][1:]
    assert len(names) == sum(20 + number for number in range(ENTRIES)) and len(set(names)) == ENTRIES
    assert [row["id"] for row in rows(results / "failures.tsv")] == ["bad"]
    assert sorted(row["name"] for row in rows(results / "entries.tsv")) == sorted(
        " ".join(n.split()) for n in NAMES
    )
    assert f"{ENTRIES} of {ENTRIES + 1} entries" in (results / "index.html").read_text()

    stamp = os.stat(results / "batch.json").st_mtime_ns
    assert (
        "Nothing to be done" in finish(shifts, results)
        and os.stat(results / "batch.json").st_mtime_ns == stamp
    )

    # One more input, one changed: two entries are made, the others keep their folders and names.
    write_part(shifts / "entry 1-x.tab", 30)
    write_part(shifts / "entry-0 x.tab", 31)
    finish(shifts, results)
    now = entries(results)
    assert {name for name in now if now[name] != last.get(name)} == {"entry_0_x", "entry_1_x_2"}
    assert {row["id"]: row["residues"] for row in rows(results / "entries.tsv")}["entry_0_x"] == "31"


def test_mistakes_are_told_before_anything_runs(tmp_path, shifts, capsys):
    results = str(tmp_path / "r")
    for words, message in (
        ([str(tmp_path / "none"), "-o", results], "none: no such file or folder"),
        ([str(shifts), "-o", results, "--restraints", "amber"], "amber; a batch writes"),
        ([str(shifts), "-o", results, "--options=-in x"], "option -in"),
        ([str(shifts), "-o", results, "--truth", "none.tsv"], "none.tsv: no such file"),
        ([str(shifts), "-o", results, "--configfile", str(shifts / "bad.str")], "no settings"),
    ):
        assert command.main(words) == 2
        assert message in capsys.readouterr().err
        assert not os.path.exists(results)


def test_lint_and_slurm_status(tmp_path, shifts):
    words = ["snakemake", "--snakefile", str(ROOT / "workflow" / "Snakefile"), "--lint"]
    words += ["--config", f"inputs={shifts}", f"results={tmp_path / 'r'}"]
    lint = subprocess.run(words, env=ENVIRONMENT, capture_output=True, text=True, cwd=tmp_path)
    assert lint.returncode == 0 and "good condition" in lint.stdout + lint.stderr, lint.stdout + lint.stderr
    status = ROOT / "workflow" / "profiles" / "slurm" / "status.py"
    answers = {
        "COMPLETED": "success",
        "RUNNING": "running",
        "PENDING": "running",
        "TIMEOUT": "failed",
        "": "failed",
    }
    for state, expected in answers.items():
        (tmp_path / "sacct").write_text(f"#!/bin/sh\n[ $7 = 17 ] || exit 1\necho '{state}'\n")
        (tmp_path / "scontrol").write_text("#!/bin/sh\nexit 1\n")
        (tmp_path / "sacct").chmod(0o755), (tmp_path / "scontrol").chmod(0o755)
        text = status.read_text().replace("TRIES = 5", "TRIES = 1")
        path = f"{tmp_path}:{os.environ['PATH']}"
        done = subprocess.run(
            [sys.executable, "-", "17;mine"],
            input=text,
            env={**os.environ, "PATH": path},
            capture_output=True,
            text=True,
        )
        assert done.stdout.strip() == expected, state


def test_versions_agree():
    project = re.search(r"project\(orbeln VERSION (\S+)", (ROOT / "CMakeLists.txt").read_text())[1]
    metadata = re.search(
        r'^version = "(.*)"', (ROOT / "python" / "pyproject.toml").read_text(), re.MULTILINE
    )[1]
    assert project == metadata == orbeln.__version__
