"""Tables of the house format, to a frame and back."""

import os
import stat

import numpy as np
import pandas as pd
import pytest
from conftest import UBIQUITIN

import orbeln


def test_round_trip_keeps_rows_remarks_and_sequence(tmp_path):
    table = orbeln.read_table(UBIQUITIN)
    assert list(table.columns) == ["RESID", "RESNAME", "ATOMNAME", "SHIFT"]
    assert table.attrs["first_resid"] == 1 and table.attrs["sequence"].startswith("MQIFVKTLTGKT")
    assert table.attrs["remarks"][0].startswith("Human ubiquitin")
    orbeln.write_table(table, tmp_path / "a-b c.tab")
    again = orbeln.read_table(tmp_path / "a-b c.tab")
    assert again.equals(table) and again.attrs["sequence"] == table.attrs["sequence"]
    assert (
        again.attrs["remarks"] == table.attrs["remarks"] and again.attrs["formats"] == table.attrs["formats"]
    )
    assert orbeln.predict(tmp_path / "a-b c.tab").summary()["residues"] == 76
    os.umask(mask := os.umask(0))
    assert stat.S_IMODE(os.stat(tmp_path / "a-b c.tab").st_mode) == 0o666 & ~mask


def test_missing_values_and_formats(tmp_path):
    frame = pd.DataFrame({"N": [1, 2], "X": [np.nan, -1.5], "NAME": ["a", "b"]})
    orbeln.write_table(frame, tmp_path / "t.tab", remarks=["one"], sequence="ACD" * 20, first_resid=-3)
    text = (tmp_path / "t.tab").read_text()
    assert "9999.000" in text and "FORMAT %d %.3f %s" in text and "DATA FIRST_RESID -3" in text
    again = orbeln.read_table(tmp_path / "t.tab")
    assert again.equals(frame) and again.attrs["sequence"] == "ACD" * 20 and again.attrs["first_resid"] == -3
    assert orbeln.read_table(tmp_path / "t.tab", missing=None).X[0] == 9999.0
    empty = orbeln.read_table(_text(tmp_path, "VARS A B\nFORMAT %d %s\n"))
    assert len(empty) == 0 and list(empty.columns) == ["A", "B"]


def _text(folder, text):
    path = folder / "given.tab"
    path.write_text(text)
    return path


@pytest.mark.parametrize(
    "text, line, words",
    [
        ("", None, "VARS and a FORMAT"),
        ("VARS A B\nFORMAT %d\n", 2, "2 columns but 1 formats"),
        ("VARS A\nFORMAT %x\n", 2, "no column format"),
        ("VARS A A\nFORMAT %d %d\n", 1, "twice"),
        ("VARS A B\nFORMAT %d %f\n\n1 2\n3 4,5\n", 5, "B is '4,5', which is no number"),
        ("VARS A B\nFORMAT %d %f\n1.5 2\n", 3, "A is '1.5', which is no integer"),
        ("VARS A\nFORMAT %d\n99999999999999999999\n", 3, "no integer"),
    ],
)
def test_bad_tables_tell_the_line(text, line, words, tmp_path):
    path = _text(tmp_path, text)
    with pytest.raises(orbeln.TableError, match=words) as caught:
        orbeln.read_table(path)
    assert (caught.value.file, caught.value.line) == (str(path), line)


def test_rows_are_told_by_their_length_alone(tmp_path):
    text = "VARS A B\nFORMAT %s %s\n# a comment\n1 2\n\n1 2 3\nREMARK two\nVARS C\nFORMAT %s\nx\r\n"
    table = orbeln.read_table(_text(tmp_path, text))
    assert table.to_dict("list") == {"C": ["x"]}  # a later VARS line empties the rows


@pytest.mark.parametrize(
    "frame, options, words",
    [
        (pd.DataFrame({"A": ["x y"]}), {}, "row 0: A is 'x y'"),
        (pd.DataFrame({"A": [None]}), {}, "row 0: A is None"),
        (pd.DataFrame({"A B": [1]}), {}, "column names"),
        (pd.DataFrame({"A": ["x"]}), {"formats": ["%d"]}, "no number"),
        (pd.DataFrame({"A": [1]}), {"formats": ["%d", "%d"]}, "one format a column"),
    ],
)
def test_what_is_no_table_is_not_written(frame, options, words, tmp_path):
    (tmp_path / "kept.tab").write_text("before")
    with pytest.raises(orbeln.TableError, match=words):
        orbeln.write_table(frame, tmp_path / "kept.tab", **options)
    assert (tmp_path / "kept.tab").read_text() == "before" and len(list(tmp_path.iterdir())) == 1
