"""What is made of all groups: one table of residues, one of entries, one of failures, the index page, the accuracy."""

from __future__ import annotations

import glob
import importlib.util
import lzma
import os
import time
from typing import Any, Optional

from ..errors import OrbelnError
from .files import read_json, write_json, write_text
from .index import page

CLASSES = ("Strong", "Generous", "Warn", "Dyn", "None")
_COUNTS = ("residues", "shifts", "accepted", *CLASSES, "helix", "strand", "chi1", "offsets", "outliers")
COLUMNS = ("id", "name", "file", *_COUNTS, "seconds", "cpu_seconds", "installation")


def table_name(kind: str) -> str:
    """File of the residues: Parquet where pyarrow is at hand, else tab-separated text in .xz."""
    if kind not in ("auto", "parquet", "tsv.xz"):
        raise OrbelnError(f"setting table: {kind}; it is auto, parquet or tsv.xz")
    if kind == "auto":
        kind = "parquet" if importlib.util.find_spec("pyarrow") else "tsv.xz"
    return "residues." + kind


def _cell(value: Any) -> str:
    """A cell of a tab-separated table."""
    text = "" if value is None else str(value)
    return " ".join(text.replace("\t", " ").splitlines()).encode("utf-8", "replace").decode()


def entry_row(record: dict[str, Any]) -> dict[str, Any]:
    classes = record.get("classes", {})
    row = {key: record.get(key, "") for key in COLUMNS}
    row.update({name: classes.get(name, 0) for name in CLASSES})
    row["accepted"] = classes.get("Strong", 0) + classes.get("Generous", 0)
    row["offsets"] = "; ".join(_offset(item) for item in record.get("offsets", []))
    row["seconds"] = round(sum(record.get("seconds", {}).values()), 3)
    return row


def _offset(found: dict[str, Any]) -> str:
    """Nuclei, offset and error (ppm), as the report names them: "HA -0.229 +- 0.037"."""
    error = found.get("error")
    text = f"{found.get('nuclei')} {found.get('offset')}" + ("" if error is None else f" +- {error}")
    return text + (" (subtracted)" if found.get("applied") else "")


def read_groups(results: str) -> tuple[list[dict[str, Any]], list[str]]:
    """(records of all entries, files of residue rows) of the groups in the plan. OrbelnError when one is missing."""
    records: list[dict[str, Any]] = []
    rows = []
    for plan in sorted(glob.glob(os.path.join(glob.escape(results), "plan", "*.json"))):
        group = os.path.splitext(os.path.basename(plan))[0]
        summary = read_json(os.path.join(results, "groups", group + ".json"))
        if summary is None:
            raise OrbelnError(f"group {group} is not done", file=results)
        records += summary["entries"]
        rows.append(os.path.join(results, "groups", group + ".tsv"))
    return records, rows


def _write_tsv(path: str, columns: tuple[str, ...], rows: list[dict[str, Any]]) -> None:
    lines = ["\t".join(columns)]
    lines += ["\t".join(_cell(row.get(column, "")) for column in columns) for row in rows]
    write_text(path, "\n".join(lines) + "\n")


def _write_xz(path: str, files: list[str]) -> int:
    """Joins the residue rows of the groups; returns their number. Preset 1: a third larger, ten times faster."""
    header, count = "", 0
    beside = path + ".part"
    with lzma.open(beside, "wt", preset=1, encoding="utf-8", newline="\n") as out:
        for name in files:
            with open(name, encoding="utf-8") as handle:
                head = handle.readline()
                if head and head != header:
                    if header:
                        raise OrbelnError(
                            "other columns than in the groups before it: remove results/groups", file=name
                        )
                    header = head
                    out.write(head)
                for line in handle:
                    out.write(line)
                    count += 1
    os.replace(beside, path)
    return count


def write_residues(path: str, files: list[str]) -> int:
    """The table of all residues; returns the number of rows."""
    if not path.endswith(".parquet"):
        return _write_xz(path, files)
    import pandas as pd

    parts = [
        pd.read_csv(name, sep="\t", keep_default_na=False, na_values=[""])
        for name in files
        if os.path.getsize(name)
    ]
    frame = pd.concat(parts, ignore_index=True) if parts else pd.DataFrame()
    beside = path + ".part"
    frame.to_parquet(beside, index=False)
    os.replace(beside, path)
    return len(frame)


def _measure(results: str, files: list[str], records: list[dict[str, Any]], truth: str) -> dict[str, Any]:
    import pandas as pd

    from . import accuracy

    known = accuracy.read_truth(truth)
    parts = [
        pd.read_csv(name, sep="\t", keep_default_na=False, na_values=[""])
        for name in files
        if os.path.getsize(name)
    ]
    if not parts:
        return {"proteins": 0}
    names = {record["id"]: record["name"] for record in records}
    figures = accuracy.measure(pd.concat(parts, ignore_index=True), names, known)
    write_text(os.path.join(results, "accuracy.md"), accuracy.markdown(figures, truth))
    return figures


def collect(results: str, table: str, truth: Optional[str] = None) -> dict[str, Any]:
    """Writes everything that belongs to the whole batch; returns what batch.json holds."""
    records, files = read_groups(results)
    done = [record for record in records if record["status"] == "done"]
    failed = [record for record in records if record["status"] != "done"]
    rows = [entry_row(record) for record in done]
    _write_tsv(os.path.join(results, "entries.tsv"), COLUMNS, rows)
    _write_tsv(os.path.join(results, "failures.tsv"), ("id", "name", "file", "step", "reason"), failed)
    residues = write_residues(os.path.join(results, table), files)
    installations = sorted({record["installation"] for record in records})
    plan = read_json(sorted(glob.glob(os.path.join(glob.escape(results), "plan", "*.json")))[0])
    batch: dict[str, Any] = {
        "finished": time.strftime("%Y-%m-%dT%H:%M:%S"),
        "entries": len(records),
        "done": len(done),
        "failed": len(failed),
        "residues": residues,
        "program_seconds": round(sum(sum(record["seconds"].values()) for record in records), 2),
        "program_cpu_seconds": round(sum(record["cpu_seconds"] for record in records), 2),
        "peak_mb": max((record["peak_mb"] for record in records), default=0.0),
        "installations": installations,
        "install_dir": plan["identity"]["install_dir"],
        "sums": plan["identity"]["sums"],
        "settings": plan["settings"],
    }
    if truth:
        batch["accuracy"] = _measure(results, files, records, truth)
    write_text(os.path.join(results, "index.html"), page(batch, rows, failed, table))
    write_json(os.path.join(results, "batch.json"), batch)
    return batch
