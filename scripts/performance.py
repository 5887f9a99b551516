#!/usr/bin/env python3
"""Turns Google Benchmark's JSON into docs/PERFORMANCE.md.

usage: performance.py BENCHMARK.json PERFORMANCE.md [IDENTITY.txt]

IDENTITY.txt holds what scripts/same_output.py printed for the builds before and after the last change of a
kernel; its last line is quoted.
"""
import json
import platform
import sys
from datetime import date

# what, benchmark, figure of its row, unit, at least (+) or at most (-)
TARGETS = [
    ("layer evaluation, level 1", "layer/180/160/1000", "ratio", "x plain", +8),
    ("layer evaluation, level 2", "layer/1620/1620/1000", "ratio", "x plain", +8),
    ("pre-screen of one residue", "prescreen", "ratio", "x plain", +20),
    ("database loading", "databaseLoad", "ratio", "x sscanf loop", +5),
    ("database loading", "databaseLoad", "MB/s", "MB/s", +300),
    ("weight reading", "weightTable", "MB/s", "MB/s", +150),
    ("ubiquitin, full-size installation", "fullSize", "s", "s", -0.6),
    ("ubiquitin, full-size installation, memory of its own", "fullSize", "own", "MB", -60),
    ("ubiquitin, full-size installation, peak memory", "fullSize", "peak", "MB", -450),
    ("ubiquitin, shipped installation", "shipped", "s", "s", -0.25),
    ("ubiquitin, shipped installation, memory of its own", "shipped", "own", "MB", -60),
]

# stage, benchmark whose rate of items bounds it, what the stage cannot do without
BOUNDS = {
    "runABP_Prediction": ("layer/1620/1620/15", "weights that are not zero times residues, at the kernel's best rate"),
    "loadDatabase": ("memoryRead", "every byte of the database's image, read once"),
    "runFirstPass": ("ranking", "distances of the 1000 best fragments of each list"),
    "writePredAll": ("numberCell", "every number as text, and as a column"),
}


def processor():
    try:
        with open("/proc/cpuinfo", encoding="ascii") as lines:
            return next(line.split(":")[1].strip() for line in lines if line.startswith("model name"))
    except (OSError, StopIteration):
        return platform.machine()


def title(row):
    return (
        row["name"]
        .split("/iterations")[0]
        .split("/repeats")[0]
        .replace("/real_time", "")
        .replace("/manual_time", "")
    )


def is_wall(row):
    return "real_time" in row["name"] or "manual_time" in row["name"]


def shown_time(row):
    return row["real_time"] if is_wall(row) else row["cpu_time"]


def fastest(rows):
    """The fastest repetition of every benchmark, in the order of the report."""
    best = {}
    for row in rows:
        name = title(row)
        if row.get("error_occurred"):
            best.setdefault(name, row)
        elif name not in best or best[name].get("error_occurred") or shown_time(row) < shown_time(best[name]):
            best[name] = row
    return best


def checksum(row):
    return f"{int(row['checksum']):06d}" if "checksum" in row else ""


def rate(row):
    parts = []
    if "items_per_second" in row:
        parts.append(f"{row['items_per_second']:.3g} items/s")
    if "bytes_per_second" in row:
        parts.append(f"{row['bytes_per_second'] / 1e6:.0f} MB/s")
    if "processor_ms" in row:
        parts.append(f"processor {row['processor_ms']:.0f} ms")
    if "peak_MB" in row:
        parts.append(f"peak {row['peak_MB']:.0f} MB")
    if "own_MB" in row:
        parts.append(f"own {row['own_MB']:.0f} MB")
    return ", ".join(parts)


def plain_of(row, best):
    """The plain rendering of the same work in the same run, if there is one."""
    name, _, arguments = title(row).partition("/")
    return best.get(name + "Plain" + ("/" + arguments if arguments else ""))


def ratio(row, best):
    other = plain_of(row, best)
    return other["cpu_time"] / row["cpu_time"] if other is not None else None


def figure(name, what, best):
    row = best.get(name)
    if row is None or row.get("error_occurred"):
        return None
    seconds = shown_time(row) * {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}[row["time_unit"]]
    return {
        "ratio": lambda: ratio(row, best),
        "MB/s": lambda: row["bytes_per_second"] / 1e6,
        "s": lambda: seconds,
        "peak": lambda: row["peak_MB"],
        "own": lambda: row["own_MB"],
    }[what]()


def target_lines(best):
    lines = ["## Targets", "", "| what | target | measured |", "| --- | --- | --- |"]
    for what, name, kind, unit, limit in TARGETS:
        value = figure(name, kind, best)
        if value is None:
            measured = "not measured"
        else:
            met = value >= limit if limit > 0 else value <= -limit
            measured = f"{value:.3g} {unit}" + ("" if met else " (missed)")
            if kind == "s":
                measured += f", processor time {best[name]['processor_ms'] / 1e3:.2f} s"
        bound = "at least" if limit > 0 else "at most"
        lines.append(f"| {what} | {bound} {abs(limit)} {unit} | {measured} |")
    return lines


def bound(stage, row, best):
    """Milliseconds that the stage cannot go below, None where no bound is known."""
    kernel = best.get(BOUNDS[stage][0]) if stage in BOUNDS else None
    if kernel is None or "work" not in row or "items_per_second" not in kernel:
        return None
    return 1e3 * row["work"] / kernel["items_per_second"]


def with_bound(stage, row, best):
    if row is None:
        return "| "
    time, least = shown_time(row), bound(stage, row, best)
    if least is None:
        return f"{time:.1f} | "
    return f"{time:.1f} | {least:.1f} ({time / least:.1f} x)" if least > 0 else f"{time:.1f} | "


def stage_lines(best):
    """One row per stage, a column per installation."""
    stages = {}
    for name, row in best.items():
        parts = name.split("/")
        if parts[0] == "stage" and not row.get("error_occurred"):
            stages.setdefault(parts[2], {})[parts[1]] = row
    lines = ["## Stages of the ubiquitin run", "",
             "Processor time in milliseconds, inside one process; in brackets how many times its bound a stage takes.", "",
             "| stage | full-size installation | bound | shipped installation | bound | shipped, from text |",
             "| --- | --- | --- | --- | --- | --- |"]
    for stage, rows in stages.items():
        cells = [with_bound(stage, rows.get(which), best) for which in ("fullSize", "shipped")]
        text = f"{shown_time(rows['shippedText']):.1f}" if "shippedText" in rows else ""
        lines.append(f"| {stage} | {cells[0]} | {cells[1]} | {text} |")
    sums = [sum(shown_time(rows[which]) for rows in stages.values() if which in rows)
            for which in ("fullSize", "shipped", "shippedText")]
    lines += [f"| all | {sums[0]:.0f} | | {sums[1]:.0f} | | {sums[2]:.0f} |", "", "Bounds: "]
    lines[-1] += "; ".join(f"{stage}: {what}" for stage, (_, what) in BOUNDS.items()) + "."
    return lines


def benchmark_lines(best):
    lines = [
        "## Benchmarks",
        "",
        "| benchmark | time | rate | checksum | times faster than plain |",
        "| --- | --- | --- | --- | --- |",
    ]
    for name, row in best.items():
        if row.get("error_occurred"):
            lines.append(f"| {name} | failed: {row['error_message']} | | | |")
            continue
        if name.startswith("stage/"):
            continue
        faster = ratio(row, best)
        text = f"{faster:.1f}" if faster is not None else ""
        if faster is not None and checksum(plain_of(row, best)) != checksum(row):
            text += " (RESULTS DIFFER)"
        lines.append(
            f"| {name} | {shown_time(row):.3g} {row['time_unit']} | {rate(row)} | {checksum(row)} | {text} |"
        )
    return lines


def main():
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__)
    with open(sys.argv[1], encoding="utf-8") as source:
        report = json.load(source)
    best = fastest([row for row in report["benchmarks"] if row.get("run_type") != "aggregate"])
    lines = [
        "# Performance",
        "",
        f"`make bench`, {date.today().isoformat()}, {processor()}, one core used; the fastest of the",
        "repetitions. Times are of one call (kernels) or one run of the program (wall time, start and reading of all",
        "tables included). The database has 2,330,110 records unless a row says otherwise; kernels with a plain",
        "rendering are compared with it in the same run, and",
        "equal checksums show equal results. The plain renderings are those that the tests compare bit for bit.",
        "",
    ]
    if len(sys.argv) == 4:
        with open(sys.argv[3], encoding="utf-8") as source:
            lines += [
                f"Output before and after the last change of the kernels (`scripts/same_output.py`): "
                f"{source.read().strip().splitlines()[-1]}.",
                "",
            ]
    lines += target_lines(best) + [""] + stage_lines(best) + [""] + benchmark_lines(best)
    with open(sys.argv[2], "w", encoding="utf-8") as out:
        out.write("\n".join(lines) + "\n")
    if any("DIFFER" in line for line in lines):
        sys.exit("results differ between a kernel and its plain rendering")


if __name__ == "__main__":
    main()
