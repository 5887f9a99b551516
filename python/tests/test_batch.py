"""One group of a batch over the real programs: what is done is kept, whatever ends the run, and never done twice."""

import json
import lzma
import os
import signal
import subprocess
import sys
import time

import pytest
from conftest import ROOT, UBIQUITIN

import orbeln
from orbeln.batch import collect, entry, identity, plan, run

ENVIRONMENT = dict(os.environ, PYTHONPATH=str(ROOT / "python"))


def write_part(path, last):
    """The example cut after residue `last`: a quick entry."""
    lines = [line for line in UBIQUITIN.read_text().splitlines() if not line.startswith("DATA SEQUENCE")]
    rows = [line for line in lines if not (line[:4].strip().isdigit() and int(line[:4]) > last)]
    sequence = orbeln.read_shifts(UBIQUITIN).attrs["sequence"][:last]
    path.write_text("\n".join(["DATA SEQUENCE " + sequence, *rows]) + "\n")


@pytest.fixture
def shifts(tmp_path):
    """Three short entries with names that the core could not take."""
    folder = tmp_path / "my shift-lists"
    folder.mkdir()
    for number, name in enumerate(("a-b c.tab", "a b-c.tab", "z.tab")):
        write_part(folder / name, 20 + number)
    return folder


def make(inputs, results, programs=None, **settings):
    return plan.make({"inputs": str(inputs), "min_free_mb": 1, **settings}, str(results), programs)


def group(results, number=1):
    with open(results / "groups" / f"{number:05d}.json") as handle:
        return {record["id"]: record for record in json.load(handle)["entries"]}


def start(results):
    command = [sys.executable, "-m", "orbeln.batch.run", str(results), "00001"]
    return subprocess.Popen(
        command, env=ENVIRONMENT, start_new_session=True, stdout=subprocess.PIPE, text=True
    )


def test_names_lists_and_tables(tmp_path, shifts):
    (shifts / "sub").mkdir()
    (shifts / "notes.md").write_text("no shifts")
    write_part(shifts / "sub" / "Z.tab", 20)
    rows = plan.read_inputs(str(shifts))
    assert [os.path.basename(row["file"]) for row in rows] == ["a b-c.tab", "a-b c.tab", "z.tab"]
    (tmp_path / "list.txt").write_text(
        "# mine\nmy shift-lists/z.tab\n\nmy shift-lists/sub/Z.tab\nmy shift-lists/z.tab\n"
    )
    listed = plan.read_inputs(str(tmp_path / "list.txt"))
    known = plan.assign_ids(listed, {})
    assert [row["id"] for row in listed] == [
        "z",
        "Z_2",
    ]  # one file system in two tells Z from z; twice is once
    both = [{"file": row["file"]} for row in rows + listed]
    assert plan.assign_ids(both, known).items() >= known.items()  # new inputs move no ID
    assert [row["id"] for row in both] == ["a_b_c", "a_b_c_2", "z", "Z_2"]
    table = tmp_path / "table.tsv"
    table.write_text(
        "file\tname\tchain\toptions\nmy shift-lists/z.tab\tfirst one\t\t-iso\nmy shift-lists/z.tab\t\tB\t\n"
    )
    named = plan.read_inputs(str(table))
    plan.assign_ids(named, {})
    assert [row["id"] for row in named] == ["first_one", "z_B"]
    for text, words in (
        ("name\nx\n", ":1: no column file"),
        ("file\tcolour\nx\ty\n", "unknown column 'colour'"),
        ("file\toptions\nx\t-in y\n", "table.tsv:2: option -in: a batch takes"),
        ("file\toptions\nx\t-count -3\n", "needs a value without a hyphen"),
        ("file\tname\n\ty\n", ":2: no file"),
    ):
        table.write_text(text)
        with pytest.raises(orbeln.OrbelnError, match=words):
            plan.read_inputs(str(table))
    for setting, words in (
        ({"group_size": 0}, "1 or more"),
        ({"restraints": "amber"}, "amber"),
        ({"timeout": "x"}, "'x'"),
    ):
        with pytest.raises(orbeln.OrbelnError, match=words):
            plan.settings_of(setting)


def test_bad_entries_stop_nothing(tmp_path, shifts):
    (shifts / "no-protein.csv").write_text("resid,resname,atom,shift\n1,DA,C1',85.1\n2,DG,C1',84.0\n")
    (shifts / "chains.csv").write_text("chain,resid,resname,atom,shift\nA,1,A,CA,52\nB,1,A,CA,52\n")
    (tmp_path / "list.txt").write_text(
        "\n".join(f"my shift-lists/{n}" for n in ("gone.str", "no-protein.csv", "chains.csv", "a-b c.tab"))
    )
    results = tmp_path / "res-ults 1"
    assert make(tmp_path / "list.txt", results) == 1
    assert run.main([str(results), "00001"]) == 0
    records = group(results)
    assert [records[name]["status"] for name in ("gone", "no_protein", "chains", "a_b_c")] == [
        "failed"
    ] * 3 + ["done"]
    assert "No such file" in records["gone"]["reason"]
    assert (
        "--chain" in records["chains"]["reason"] and str(shifts / "chains.csv") in records["chains"]["reason"]
    )
    folder = results / "entries" / "a_b_c"
    names = {
        "input.tab",
        "pred.tab",
        "predAll.tab",
        "report.html",
        "report.json",
        "restraints.tbl",
        "restraints.aco",
    }
    assert names <= set(os.listdir(folder)) and os.path.getsize(folder / "logs" / "predict.log")
    batch = collect.collect(str(results), "residues.tsv.xz")
    assert (batch["done"], batch["failed"], batch["residues"]) == (1, 3, 20)
    with lzma.open(results / "residues.tsv.xz", "rt") as handle:
        lines = handle.read().splitlines()
    assert len(lines) == 21 and lines[1].startswith("a_b_c\t1\tM")
    failures = [line.split("\t") for line in (results / "failures.tsv").read_text().splitlines()]
    assert [row[0] for row in failures] == ["id", "gone", "no_protein", "chains"] and all(
        len(row) == 5 for row in failures
    )
    page = (results / "index.html").read_text()
    assert 'href="entries/a_b_c/report.html"' in page and page.count("No such file") == 1
    # Failures are results too: nothing is tried again until the input changes.
    marks = {name: os.stat(results / "entries" / name / entry.RECORD).st_mtime_ns for name in records}
    (shifts / "gone.str").write_bytes(UBIQUITIN.read_bytes())
    assert run.main([str(results), "00001"]) == 0 and group(results)["gone"]["status"] == "done"
    again = {name: os.stat(results / "entries" / name / entry.RECORD).st_mtime_ns for name in records}
    assert [name for name in marks if marks[name] != again[name]] == ["gone"]


@pytest.mark.parametrize("how", [signal.SIGKILL, signal.SIGTERM, signal.SIGINT])
def test_ended_at_any_point_and_run_again(how, tmp_path, shifts):
    results = tmp_path / "r"
    make(shifts, results)
    process = start(results)
    deadline = time.monotonic() + 60
    while not (results / "entries" / "a_b_c").exists() and time.monotonic() < deadline:
        time.sleep(0.01)
    time.sleep(0.1)  # into the second entry
    os.kill(process.pid, how)
    assert process.wait() != 0
    assert not (results / "groups" / "00001.json").exists()
    if how != signal.SIGKILL:
        assert list((results / "work").iterdir()) == []
    done = {name: os.stat(results / "entries" / name).st_ino for name in os.listdir(results / "entries")}
    assert "a_b_c" in done and "z" not in done
    output, _ = start(results).communicate(timeout=120)
    assert list((results / "work").iterdir()) == []
    assert {name: os.stat(results / "entries" / name).st_ino for name in done} == done  # nothing twice
    assert output.count("done before") == len(done) and output.count("\n") == 3
    assert all(record["status"] == "done" for record in group(results).values()) and len(group(results)) == 3
    assert (results / "groups" / "00001.tsv").read_text().count("\n") == 1 + 20 + 21 + 22


def test_two_runs_of_a_group_do_its_work_once(tmp_path, shifts):
    """A job that outlives its killed scheduler, and the one that is started anew."""
    results = tmp_path / "r"
    make(shifts, results)
    outputs = [process.communicate(timeout=120)[0] for process in (start(results), start(results))]
    assert sum(output.count(": done (") for output in outputs) == 3
    assert sum(output.count("done before") for output in outputs) == 3


def test_full_disk_keeps_nothing_half(tmp_path, shifts, monkeypatch, capsys):
    results = tmp_path / "r"
    make(shifts, results, min_free_mb=100)
    free = iter([500.0, 500.0, 500.0, 3.0])  # before and after each entry: full when the second has run
    monkeypatch.setattr(run, "free_megabytes", lambda folder: next(free))
    assert run.main([str(results), "00001"]) == run.STOPPED
    assert "only 3.0 MB are free" in capsys.readouterr().out
    assert os.listdir(results / "entries") == ["a_b_c"] and list((results / "work").iterdir()) == []
    monkeypatch.undo()
    assert run.main([str(results), "00001"]) == 0 and len(group(results)) == 3


def fake(tmp_path, programs, name, script):
    """Programs of which one is a script."""
    folder = tmp_path / "bin"
    folder.mkdir(exist_ok=True)
    for each in identity.PROGRAMS:
        if each != name and programs.has(each) and not (folder / each).exists():
            os.symlink(programs.path(each), folder / each)
    (folder / name).write_text("#!/bin/sh\n" + script)
    (folder / name).chmod(0o755)
    return orbeln.Programs((str(folder),), programs.install_dir)


def test_cut_tables_and_killed_programs(tmp_path, shifts, programs):
    for name in ("a b-c.tab", "z.tab"):
        (shifts / name).unlink()
    real = programs.path("orbeln")
    cut = fake(tmp_path, programs, "orbeln", f'{real} "$@"; truncate -s 1000 predSS.tab\n')
    make(shifts, tmp_path / "r", cut)
    assert run.main([str(tmp_path / "r"), "00001"]) == 0
    assert "left no complete predSS.tab" in group(tmp_path / "r")["a_b_c"]["reason"]
    killed = fake(tmp_path, programs, "orbeln", "kill -9 $$\n")
    make(shifts, tmp_path / "k", killed)
    assert [run.main([str(tmp_path / "k"), "00001"]) for _ in range(3)] == [
        1,
        1,
        0,
    ]  # then it counts as failed
    assert group(tmp_path / "k")["a_b_c"]["reason"] == "orbeln was ended by signal 9"


def test_changed_installation_is_never_mixed_in(tmp_path, shifts, programs, capsys):
    install = tmp_path / "tables with-hyphen"
    (install / "tab").mkdir(parents=True)
    for name in os.listdir(os.path.join(programs.install_dir, "tab")):
        os.symlink(os.path.join(programs.install_dir, "tab", name), install / "tab" / name)
    own = install / "tab" / "weight.tab"
    text = own.read_text()
    own.unlink()
    own.write_text(text)
    mine = orbeln.Programs(programs.folders, str(install))
    results = tmp_path / "r"
    make(shifts, results, mine)
    os.utime(own, (1, 1))  # another time, the same contents: goes on
    first = json.load(open(results / "plan" / "00001.json"))
    assert identity.changed(first["identity"], mine) == []
    real = programs.path("orbeln")
    changing = f'{real} "$@"\necho "REMARK new" >> "{own}"\n'
    other = fake(tmp_path, programs, "orbeln", changing)
    changed = orbeln.Programs(other.folders, str(install))
    make(shifts, results, changed)
    before = json.load(open(results / "plan" / "00001.json"))["identity"]["id"]
    assert run.main([str(results), "00001"]) == run.STOPPED
    assert "installation has changed" in capsys.readouterr().out and os.listdir(results / "entries") == []
    make(shifts, results, mine)
    assert run.main([str(results), "00001"]) == 0
    after = {record["installation"] for record in group(results).values()}
    assert len(after) == 1 and after != {before}
    assert collect.collect(str(results), "residues.tsv.xz")["installations"] == sorted(after)


def test_accuracy_by_hand():
    pd = pytest.importorskip("pandas")
    from orbeln.batch import accuracy

    # Residue 1 right, 2 wrong (psi 100 off), 3 not accepted, 4 no known torsions; valine's chi1 counts 120 lower.
    rows = {
        "entry": "e_1", "resid": [1, 2, 3, 4], "resname": ["A", "V", "L", "G"],
        "class": ["Strong", "Generous", "Warn", "Strong"], "phi": [-60.0, -60, -60, 80], "psi": [-40.0, 60, -40, 0],
        "ss_class": ["H", "H", "e", "L"], "ss_confidence": [0.9, 0.9, 0.5, 0.0],
        "chi1_class": ["na", "g+", None, "na"], "chi1": [None, 60.0, None, None],
    }  # fmt: skip
    truth = pd.DataFrame(
        {
            "protein": "e 1", "resid": [1, 2, 3, 4], "aa": ["A", "V", "L", "S"], "phi": [-63.0, -60, -60, None],
            "psi": [-36.0, -40, -40, 0], "chi1": [None, 175.0, -65, 60], "ss8": ["H", "E", "H", "-"],
        }  # fmt: skip
    )
    figures = accuracy.measure(pd.DataFrame(rows), {"e_1": "e 1"}, truth)
    assert figures["residues with known torsions"] == 3 and figures["accepted, %"] == 66.67
    assert figures["wrong of the accepted, %"] == 50.0
    assert (figures["RMSD phi, degrees"], figures["RMSD psi, degrees"]) == (3.0, 4.0)
    assert (
        figures["structure from shifts, residues"] == 2 and figures["structure from shifts right, %"] == 50.0
    )
    assert figures["residues with a rotamer"] == 2 and figures["chi1 class given, %"] == 50.0
    assert figures["chi1 right of those given, %"] == 100.0
    assert figures["residues of another type than in the truth table"] == 1
