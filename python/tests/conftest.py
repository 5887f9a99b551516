"""Tests run the built programs: ORBELN_BIN names their folder, else the build of the tree is taken."""

import pathlib
import sys

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "python"))
sys.dont_write_bytecode = True

import orbeln  # noqa: E402

UBIQUITIN = ROOT / "examples" / "ubiquitin" / "ubiquitin.tab"


@pytest.fixture(scope="session")
def programs():
    return orbeln.Programs.find()


@pytest.fixture(scope="session")
def ubiquitin(programs):
    """The prediction of the example, made once."""
    return orbeln.predict(UBIQUITIN, programs=programs)


@pytest.fixture
def no_leftovers(tmp_path, monkeypatch):
    """Temporary folders are made in a folder of their own, which must be empty afterwards."""
    folder = tmp_path / "temporary files"  # with a blank: users have such folders
    folder.mkdir()
    monkeypatch.setattr("tempfile.tempdir", str(folder))
    yield folder
    assert list(folder.iterdir()) == []
