#!/usr/bin/env python3
"""Turns Google Benchmark's JSON into docs/PERFORMANCE.md.

usage: performance.py BENCHMARK.json PERFORMANCE.md
"""
import json
import platform
import sys
from datetime import date


def processor():
    try:
        with open("/proc/cpuinfo", encoding="ascii") as lines:
            return next(line.split(":")[1].strip() for line in lines if line.startswith("model name"))
    except (OSError, StopIteration):
        return platform.machine()


def rate(row):
    parts = []
    if "items_per_second" in row:
        parts.append(f"{row['items_per_second']:.3g} items/s")
    if "bytes_per_second" in row:
        parts.append(f"{row['bytes_per_second'] / 1e6:.0f} MB/s")
    if "peak_MB" in row:
        parts.append(f"peak {row['peak_MB']:.0f} MB")
    return ", ".join(parts)


def title(row):
    return row["name"].split("/iterations")[0]


def plain_rows(rows):
    """Benchmark title -> the plain rendering of the same work in the same run."""
    return {title(row).replace("Plain", "", 1): row for row in rows if "Plain" in row["name"]}


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    with open(sys.argv[1], encoding="utf-8") as source:
        report = json.load(source)
    rows = [row for row in report["benchmarks"] if row.get("run_type") != "aggregate"]
    plain = plain_rows(rows)
    lines = [
        "# Performance",
        "",
        f"`make bench`, {date.today().isoformat()}, {processor()}, one core used. Times are of one call (kernels) or one",
        "run of the program (wall time, start and reading of all tables included). The database has 2,330,110 records",
        "unless a row says otherwise; kernels with a plain rendering are compared with it in the same run, and equal",
        "checksums show equal results. The plain renderings are those that the tests compare bit for bit.",
        "",
        "| benchmark | time | rate | checksum | times faster than plain |",
        "| --- | --- | --- | --- | --- |",
    ]
    for row in rows:
        if row.get("error_occurred"):
            lines.append(f"| {row['name']} | failed: {row['error_message']} | | | |")
            continue
        ratio = ""
        other = plain.get(title(row))
        if other is not None and "Plain" not in row["name"]:
            ratio = f"{other['cpu_time'] / row['cpu_time']:.1f}"
            if int(other["checksum"]) != int(row["checksum"]):
                ratio += " (RESULTS DIFFER)"
        time = row["real_time"] if "real_time" in row["name"] else row["cpu_time"]
        lines.append(
            f"| {title(row)} | {time:.3g} {row['time_unit']} | {rate(row)} |"
            f" {int(row['checksum']):06d} | {ratio} |"
        )
    with open(sys.argv[2], "w", encoding="utf-8") as out:
        out.write("\n".join(lines) + "\n")
    if any("DIFFER" in line for line in lines):
        sys.exit("results differ between a kernel and its plain rendering")


if __name__ == "__main__":
    main()
