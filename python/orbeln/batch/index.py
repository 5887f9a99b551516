"""The index page of a batch: one file, sorted and filtered in the browser, no network."""

from __future__ import annotations

import html
import urllib.parse
from typing import Any

_COLUMNS = (
    ("name", "entry"),
    ("residues", "residues"),
    ("shifts", "shifts"),
    ("share", "accepted %"),
    ("Strong", "Strong"),
    ("Generous", "Generous"),
    ("Warn", "Warn"),
    ("Dyn", "Dyn"),
    ("None", "None"),
    ("helix", "helix"),
    ("strand", "strand"),
    ("chi1", "chi1"),
    ("outliers", "outliers"),
    ("offsets", "referencing"),
)
_STYLE = """
body{font:14px/1.4 sans-serif;margin:1.5em;color:#222}table{border-collapse:collapse;margin:.6em 0}
th,td{padding:2px 8px;border-bottom:1px solid #ddd;text-align:right}th:first-child,td:first-child,td.t{text-align:left}
th button{all:unset;cursor:pointer;font-weight:bold}th button:focus{outline:2px solid #36c}
thead th{position:sticky;top:0;background:#f4f4f4}input{padding:3px;width:18em}
"""
_SCRIPT = """
const body=document.querySelector('#entries tbody');const rows=[...body.rows];let last=-1,up=true;
const value=(row,at)=>{const text=row.cells[at].textContent;const n=parseFloat(text);return isNaN(n)?text:n};
document.querySelectorAll('#entries th button').forEach((button,at)=>button.onclick=()=>{
 up=at===last?!up:at===0;last=at;
 const keyed=rows.map(row=>[at===0?row.cells[0].textContent.toLowerCase():value(row,at),row]);
 keyed.sort((a,b)=>{const c=typeof a[0]===typeof b[0]?(a[0]<b[0]?-1:a[0]>b[0]?1:0):typeof a[0]==='number'?-1:1;
  return up?c:-c});
 body.append(...keyed.map(pair=>pair[1]));
 document.querySelectorAll('#entries th').forEach((th,k)=>th.setAttribute('aria-sort',
  k===at?(up?'ascending':'descending'):'none'))});
document.querySelector('#filter').oninput=event=>{const text=event.target.value.toLowerCase();
 rows.forEach(row=>row.hidden=!row.cells[0].textContent.toLowerCase().includes(text))};
"""


def _escape(value: Any) -> str:
    return html.escape(str(value).encode("utf-8", "replace").decode())


def _entry(row: dict[str, Any]) -> str:
    share = 100.0 * row["accepted"] / row["residues"] if row["residues"] else 0.0
    cells = {**row, "share": f"{share:.1f}"}
    link = f"entries/{urllib.parse.quote(row['id'])}/report.html"
    first = f'<td><a href="{link}" title="{_escape(row["file"])}">{_escape(row["name"])}</a></td>'
    return "<tr>" + first + "".join(f"<td>{_escape(cells[key])}</td>" for key, _ in _COLUMNS[1:]) + "</tr>"


def _failures(failed: list[dict[str, Any]]) -> str:
    if not failed:
        return "<p>No entry failed.</p>"
    lines = [
        f"<tr><td>{_escape(record['name'])}</td><td class=t>{_escape(record['step'])}</td>"
        f"<td class=t>{_escape(record['reason'])}</td></tr>"
        for record in failed
    ]
    return (
        f"<h2 id=failures>Failures: {len(failed)}</h2><table><thead><tr><th>entry</th><th>step</th><th>reason</th></tr>"
        f"</thead><tbody>{''.join(lines)}</tbody></table>"
    )


def page(batch: dict[str, Any], rows: list[dict[str, Any]], failed: list[dict[str, Any]], table: str) -> str:
    heads = "".join(f"<th><button>{title}</button></th>" for _, title in _COLUMNS)
    mixed = ""
    if len(batch["installations"]) > 1:
        mixed = "<p><b>The entries were made with more than one installation; see the column in entries.tsv.</b></p>"
    accuracy = ""
    if batch.get("accuracy"):
        lines = "".join(
            f"<tr><td>{_escape(k)}</td><td>{_escape(v)}</td></tr>" for k, v in batch["accuracy"].items()
        )
        accuracy = f"<h2>Accuracy</h2><table><tbody>{lines}</tbody></table>"
    return f"""<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><title>ORBEL-N batch: {batch['done']} entries</title>
<style>{_STYLE}</style></head><body><h1>ORBEL-N batch</h1>
<p>{batch['done']} of {batch['entries']} entries, {batch['residues']} residues, finished {batch['finished']}.
{batch['failed']} failed. Tables: <a href="entries.tsv">entries.tsv</a>, <a href="failures.tsv">failures.tsv</a>,
<a href="{table}">{table}</a>. Installation {_escape(', '.join(batch['installations']))}.</p>{mixed}{accuracy}
<p><label>Filter <input id="filter" placeholder="part of a name"></label> Click a heading to sort.</p>
<table id="entries"><thead><tr>{heads}</tr></thead><tbody>
{chr(10).join(_entry(row) for row in rows)}
</tbody></table>
{_failures(failed)}
<script>{_SCRIPT}</script></body></html>
"""
