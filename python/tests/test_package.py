"""The package over the real programs: numbers as in the tables, errors with place, nothing left behind."""

import concurrent.futures
import os
import pickle
import shutil
import subprocess
import sys

import numpy as np
import pandas as pd
import pytest
from conftest import ROOT, UBIQUITIN

import orbeln
from orbeln.prediction import core_arguments
from orbeln.programs import Run, message_of

SHIFTS = "resid,resname,atom,shift\n"


def test_frames_hold_what_the_program_wrote(ubiquitin, programs, tmp_path):
    (tmp_path / "in.tab").write_bytes(UBIQUITIN.read_bytes())
    run = programs.run("orbeln", ["-in", "in.tab"], tmp_path)
    assert run.status == 0
    rows = [line.split() for line in (tmp_path / "pred.tab").read_text().splitlines()]
    row = next(words for words in rows if words[:2] == ["23", "I"])
    mine = ubiquitin.torsions.loc[23]
    assert [mine.phi, mine.psi, mine.dphi, mine.dist] == [
        float(word) for word in (row[2], row[3], row[4], row[6])
    ]
    assert mine["class"] == row[-1] == "Strong"
    assert np.isnan(ubiquitin.torsions.phi[1]) and len(ubiquitin.torsions) == 76  # 9999 in the table

    boxes = next(
        w for w in (x.split() for x in (tmp_path / "predABP.tab").read_text().splitlines()) if w[:1] == ["23"]
    )
    helix = 18 * int((-62 + 180) / 20) + int((-35 + 180) / 20)
    assert ubiquitin.maps.shape == (76, 18, 18)
    assert ubiquitin.map_of(23)[5, 7] == float(boxes[6 + helix]) > 0.5
    assert np.isnan(ubiquitin.map_of(1)).all()  # no map of the first residue

    matches = ubiquitin.matches[ubiquitin.matches.resid_q_center == 23]
    assert 10 <= len(matches) and abs(matches.phi.median() - mine.phi) < 10
    assert ubiquitin.chi1["class"].isin(["g-", "g+", "t", "na"]).all()
    assert ubiquitin.ss.loc[26, "ss_class"] == "H" and 0 < ubiquitin.s2.s2[76] < 0.3 < ubiquitin.s2.s2[26]
    assert set(ubiquitin.shifts.atomname) == {"N", "HA", "C", "CA", "CB", "HN"}
    assert ubiquitin.sequence.startswith("MQIFVKTLTG") and ubiquitin.summary()["ss"]["H"] == 19


def test_frame_in_gives_the_same_prediction(ubiquitin, no_leftovers):
    shifts = orbeln.read_shifts(UBIQUITIN)
    assert shifts.attrs["first_resid"] == 1 and len(shifts.attrs["sequence"]) == 76
    with_sequence = orbeln.predict(shifts)
    assert with_sequence.torsions.equals(ubiquitin.torsions)
    # Lists of others: three-letter names, H for HN, no sequence attached, residues in any order, gaps in the shifts.
    names = {"M": "MET", "Q": "GLN", "G": "GLY", "K": "LYS"}
    own = pd.DataFrame(
        {
            "Seq_ID": shifts.resid + 100,
            "Comp_ID": shifts.resname.replace(names),
            "Atom_ID": shifts.atom.replace("HN", "H"),
            "Val": shifts["shift"],
        }
    ).sample(frac=1.0, random_state=3)
    own = own.rename(columns={"Val": "value"})
    own.loc[own.index[0], "value"] = np.nan
    moved = orbeln.predict(own, shifts.attrs["sequence"])
    assert moved.torsions.index[0] == 101 and moved.sequence == ubiquitin.sequence
    close = (moved.torsions.phi.to_numpy() - ubiquitin.torsions.phi.to_numpy())[2:70]
    assert np.median(np.abs(close)) < 1.0  # one shift of 451 is missing


def test_options_reach_the_program(no_leftovers, tmp_path):
    part = orbeln.predict(UBIQUITIN, first=20, last=40, noproton=True, s2_thresh=0.99)
    assert part.torsions.index.min() >= 18 and part.torsions.index.max() <= 42
    assert not part.torsions.cs_count.gt(12).any()  # four nuclei of three residues
    assert (part.torsions["class"] == "Dyn").sum() > 10
    with pytest.raises(ValueError, match="hyphen"):
        orbeln.predict(UBIQUITIN, first=-3)
    assert core_arguments({"iso": True}, {"count": 8}, ["1UBQ"]) == [
        "-in", "input.tab", "-iso", "-count", "8", "-excl", "1UBQ"]  # fmt: skip


@pytest.mark.parametrize(
    "name, text, kind, line, words",
    [
        ("my-list 1.csv", SHIFTS + "1,A,CA,52\n2,C,CA,fifty\n", orbeln.ConversionError, 3, "fifty"),
        ("empty.str", "", orbeln.ConversionError, None, "empty"),
        ("two.csv", SHIFTS + "1,A,CA,52.1\n1,A,CA,53.2\n", orbeln.ConversionError, 3, "--keep-first"),
        (
            "chains.csv",
            "chain,resid,resname,atom,shift\nA,1,A,CA,52\nB,1,A,CA,52\n",
            orbeln.ChoiceError,
            None,
            "--chain",
        ),
        ("absent.str", None, orbeln.ConversionError, None, "No such file"),
    ],
)
def test_bad_input_tells_file_line_and_reason(name, text, kind, line, words, tmp_path, no_leftovers):
    path = tmp_path / name
    if text is not None:
        path.write_text(text)
    with pytest.raises(kind, match=words) as caught:
        orbeln.predict(path)
    assert caught.value.file == str(path) and caught.value.line == line
    assert str(caught.value).startswith(str(path) + (f":{line}: " if line else ": "))
    again = pickle.loads(pickle.dumps(caught.value))
    assert str(again) == str(caught.value) and again.status == caught.value.status and type(again) is kind


def test_bad_frames_tell_the_row(no_leftovers):
    frame = pd.DataFrame({"resid": [1, 1], "resname": "A", "atom": "CA", "shift": [52.0, 53.0]}, index=[7, 8])
    with pytest.raises(orbeln.ConversionError, match="row 1: "):
        orbeln.predict(frame)
    with pytest.raises(orbeln.ConversionError, match="no column atom"):
        orbeln.predict(frame.drop(columns="atom"))
    with pytest.raises(orbeln.ConversionError, match="no sequence of letters"):
        orbeln.predict(frame.iloc[:1], "no/such file.fasta")


def test_programs_and_installation_are_named_when_missing(tmp_path, monkeypatch, programs, no_leftovers):
    with pytest.raises(orbeln.ProgramNotFoundError, match="ORBELN_BIN"):
        orbeln.predict(UBIQUITIN, programs=orbeln.Programs((str(tmp_path),), str(tmp_path)))
    with pytest.raises(orbeln.InstallationError, match="no folder tab"):
        orbeln.Programs.find(install_dir=tmp_path)
    (tmp_path / "tab").mkdir()
    empty = orbeln.Programs(
        programs.folders, str(tmp_path)
    )  # tables are missing: the program ends with status 0
    with pytest.raises(orbeln.PredictionError, match="Can't open file .*tab for reading") as caught:
        orbeln.predict(UBIQUITIN, programs=empty)
    assert "system for predicting" not in str(caught.value)  # the banner is no message
    monkeypatch.chdir(tmp_path)  # ORBELN_DIR without '/' would be ignored by the program
    os.symlink(programs.install_dir, "tables-with-hyphen")
    monkeypatch.setenv("ORBELN_DIR", "tables-with-hyphen")
    assert orbeln.predict(UBIQUITIN).summary()["residues"] == 76
    assert message_of(Run("orbeln", -9, "", ""))[0] == "orbeln was ended by signal 9"


def test_time_limit_ends_the_program(tmp_path, no_leftovers):
    folder = tmp_path / "bin"
    folder.mkdir()
    for name in ("orbeln", "orbeln-convert"):
        (folder / name).write_text("#!/bin/sh\nexec sleep 60\n")
        (folder / name).chmod(0o755)
    with pytest.raises(orbeln.OrbelnError, match="did not end within 0.3 seconds"):
        orbeln.predict(UBIQUITIN, timeout=0.3, programs=orbeln.Programs((str(folder),), str(tmp_path)))


def test_threads_and_processes(ubiquitin, tmp_path, no_leftovers):
    bad = tmp_path / "bad.str"
    bad.write_text("nothing\n")
    results = list(orbeln.predict_many([UBIQUITIN, bad, UBIQUITIN], workers=3))
    assert [source for source, _ in results] == [UBIQUITIN, bad, UBIQUITIN]
    assert isinstance(results[1][1], orbeln.ConversionError)
    assert results[0][1].tables == results[2][1].tables == ubiquitin.tables
    with concurrent.futures.ProcessPoolExecutor(2) as pool:
        one, two = pool.map(orbeln.predict, [UBIQUITIN, UBIQUITIN])
        with pytest.raises(orbeln.ConversionError, match="shift"):
            pool.submit(orbeln.predict, bad).result()
    assert one.torsions.equals(two.torsions) and one.tables == ubiquitin.tables


def test_restraints_and_report(ubiquitin, tmp_path, no_leftovers):
    text = ubiquitin.to_restraints("cyana", tmp_path / "r-1.aco", classes="Strong", chi1=False, factor=3)
    assert (tmp_path / "r-1.aco").read_text() == text and "half width 3 x SD" in text and "0 chi1" in text
    with pytest.raises(orbeln.OutputError, match="coordinates"):
        ubiquitin.to_restraints("gromacs")
    with pytest.raises(orbeln.OutputError, match="format"):
        ubiquitin.to_restraints("nonsense")
    page = ubiquitin.to_report(tmp_path / "page.html")
    assert "<svg" in page and "ubiquitin.tab" in page


def test_pictures_and_notebook_view(ubiquitin):
    pytest.importorskip("matplotlib")
    overview, map_of = ubiquitin.plot(), ubiquitin.plot(residue=23)
    assert overview._repr_png_().startswith(b"\x89PNG") and map_of._repr_png_().startswith(b"\x89PNG")
    drawn = map_of.axes[0].images[0].get_array()
    assert np.unravel_index(np.argmax(drawn), drawn.shape) == (7, 5)  # rows are psi, columns phi
    assert "I23" in map_of.axes[0].get_title()
    ubiquitin.plot(residue=1)  # no map, no prediction
    with pytest.raises(KeyError, match="no residue 400"):
        ubiquitin.plot(residue=400)
    view = ubiquitin._repr_html_()
    assert "70 Strong" in view and view.count("<span") > 76 and "ubiquitin.tab" in repr(ubiquitin)


def test_trust_is_none_until_there_is_a_table(ubiquitin, programs, tmp_path, no_leftovers):
    if not programs.has("orbeln-trust"):
        assert ubiquitin.trust is None and "no program orbeln-trust" in ubiquitin.trust_note
    folder = tmp_path / "bin"
    folder.mkdir()
    for name in ("orbeln", "orbeln-convert"):
        os.symlink(programs.path(name), folder / name)
    script = folder / "orbeln-trust"
    script.write_text(
        "#!/bin/sh\n[ -s $1/pred.tab ] || exit 1\n"
        "printf 'VARS RESID CLASS P\\nFORMAT %%4d %%s %%5.3f\\n\\n 2 Strong 0.970\\n' > $1/predTrust.tab\n"
    )
    script.chmod(0o755)
    other = orbeln.Programs((str(folder),), programs.install_dir)
    assert orbeln.predict(UBIQUITIN, programs=other).trust.p[2] == 0.97
    script.write_text("#!/bin/sh\necho 'orbeln-trust: no model' >&2\nexit 1\n")
    result = orbeln.predict(UBIQUITIN, programs=other)
    assert result.trust is None and result.trust_note == "no trust: no model"


def test_package_is_typed_and_imports_lazily():
    code = "import sys, orbeln, orbeln.batch.run; assert 'pandas' not in sys.modules; orbeln.predict"
    subprocess.run(
        [sys.executable, "-c", code], check=True, env=dict(os.environ, PYTHONPATH=str(ROOT / "python"))
    )
    assert (ROOT / "python" / "orbeln" / "py.typed").exists()
    for name in orbeln.__all__:
        assert getattr(orbeln, name).__doc__, name


@pytest.mark.parametrize("kind", ["pip", "deb"])
def test_installed_package_is_complete(kind, tmp_path, programs):
    """Every module and the marker of types, and outside of the source tree it finds the programs by ORBELN_BIN."""
    if kind == "deb":
        if shutil.which("dpkg-deb") is None:
            pytest.skip("no dpkg-deb")
        subprocess.run([ROOT / "python" / "make_deb.sh", tmp_path], check=True, capture_output=True)
        (package,) = tmp_path.glob("python3-orbeln_*_all.deb")
        subprocess.run(["dpkg-deb", "-x", package, tmp_path], check=True)
        target = tmp_path / "usr" / "lib" / "python3" / "dist-packages"
        workflow = tmp_path / "usr" / "share" / "orbeln" / "workflow"
        assert {"Snakefile", "rules", "config", "profiles", "envs"} <= set(os.listdir(workflow))
    else:
        pytest.importorskip("pip")
        source, target = tmp_path / "source", tmp_path / "site"
        shutil.copytree(ROOT / "python", source)
        words = [
            "install",
            "--quiet",
            "--no-build-isolation",
            "--no-deps",
            "--no-index",
            "--target",
            target,
            source,
        ]
        subprocess.run([sys.executable, "-m", "pip", *words], check=True, capture_output=True)
    own = {path.relative_to(ROOT / "python") for path in (ROOT / "python" / "orbeln").rglob("*.py")}
    assert (
        own <= {path.relative_to(target) for path in target.rglob("*.py")}
        and (target / "orbeln" / "py.typed").exists()
    )
    code = f"import orbeln; orbeln.predict({str(UBIQUITIN)!r}).summary(); print(orbeln.__file__)"
    environment = {
        "PATH": "/usr/bin:/bin",
        "PYTHONPATH": str(target),
        "ORBELN_BIN": os.path.dirname(programs.path("orbeln")),
    }
    done = subprocess.run(
        [sys.executable, "-c", code], cwd=tmp_path, env=environment, capture_output=True, text=True
    )
    assert done.stdout.startswith(str(target)), done.stderr
