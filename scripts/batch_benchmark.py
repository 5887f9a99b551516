#!/usr/bin/python3
"""Measures a batch over generated entries: real shift tables with noise added and rows left out.

  scripts/batch_benchmark.py --inputs TABLES --entries 500 --work FOLDER --json build/batch-500.json

TABLES is a folder or .tar archive of input tables; FOLDER must not exist and is kept with --keep only. What is printed
goes into docs/BATCH.md. Needs Debian's snakemake and python3-pandas, and the built programs (ORBELN_BIN)."""

import argparse
import json
import os
import random
import resource
import shutil
import subprocess
import sys
import tarfile
import threading
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
NOISE = {
    "N": 0.3,
    "HN": 0.04,
    "H": 0.04,
    "HA": 0.03,
    "HA2": 0.03,
    "HA3": 0.03,
    "C": 0.2,
    "CA": 0.2,
    "CB": 0.2,
}  # ppm, s.d.
LEFT_OUT = 0.03  # share of the rows
SAMPLE = 0.5  # seconds between two looks at the memory
ARCHIVE, CLUSTER = 15000, 64  # entries, cores: what the last line is about


def read_tables(path):
    """Texts of the input tables in a folder or archive, in the order of their names."""
    if os.path.isdir(path):
        names = sorted(name for name in os.listdir(path) if name.endswith(".tab"))
        return [open(os.path.join(path, name), encoding="utf-8").read() for name in names]
    with tarfile.open(path) as archive:
        members = sorted((m for m in archive if m.isfile() and m.name.endswith(".tab")), key=lambda m: m.name)
        return [archive.extractfile(member).read().decode() for member in members]


def vary(text, generator):
    """The table with noise on every shift and some rows left out."""
    lines = []
    for line in text.splitlines():
        words = line.split()
        if len(words) == 4 and words[0].lstrip("-").isdigit() and words[2] in NOISE:
            if generator.random() < LEFT_OUT:
                continue
            shift = float(words[3]) + generator.gauss(0.0, NOISE[words[2]])
            line = f"{words[0]:>4} {words[1]:>3} {words[2]:>4} {shift:10.3f}"
        lines.append(line)
    return "\n".join(lines) + "\n"


def generate(tables, number, folder):
    generator = random.Random(number)
    os.makedirs(folder)
    for at in range(number):
        with open(os.path.join(folder, f"entry-{at:05d}.tab"), "w", encoding="utf-8") as handle:
            handle.write(vary(tables[at % len(tables)], generator))


def session_memory(session):
    """Megabytes of all processes of a session, shared pages divided among those that share them."""
    total = 0
    for pid in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{pid}/stat", encoding="utf-8", errors="replace") as handle:
                if int(handle.read().rsplit(")", 1)[1].split()[3]) != session:
                    continue
            with open(f"/proc/{pid}/smaps_rollup", encoding="utf-8") as handle:
                total += next(int(line.split()[1]) for line in handle if line.startswith("Pss:"))
        except (OSError, StopIteration):
            continue  # it has ended
    return total / 1024.0


def run(command):
    """(status, wall seconds, processor seconds, peak megabytes) of a command with all its children."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    start = time.monotonic()
    with open(os.devnull, "w", encoding="utf-8") as nowhere:
        process = subprocess.Popen(command, stdout=nowhere, stderr=nowhere, start_new_session=True)
    peak, ended = [0.0], threading.Event()

    def watch():
        while not ended.wait(SAMPLE):
            peak[0] = max(peak[0], session_memory(process.pid))

    watcher = threading.Thread(target=watch)
    watcher.start()
    status = process.wait()
    wall = time.monotonic() - start
    ended.set()
    watcher.join()
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return status, wall, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime, peak[0]


def figures(batch, cores, group_size, measured):
    _, wall, cpu, peak = measured
    programs, program_cpu = batch["program_seconds"], batch["program_cpu_seconds"]
    # Core seconds that went by, against those in which a program of an entry was at work.
    overhead = (wall * cores - programs) / programs
    return {
        "entries": batch["entries"],
        "failed": batch["failed"],
        "residues": batch["residues"],
        "cores": cores,
        "entries in a group": group_size,
        "load of the machine at the end (1 minute)": round(os.getloadavg()[0], 1),
        "wall time, s": round(wall, 1),
        "entries per minute": round(60.0 * batch["entries"] / wall, 1),
        "processor time, s": round(cpu, 1),
        "entries per processor second": round(batch["entries"] / cpu, 3),
        "programs, processor time, s": program_cpu,
        "engine, share of the programs' processor time, %": round(
            100.0 * (cpu - program_cpu) / program_cpu, 1
        ),
        "engine, share of the programs' wall time, %": round(100.0 * overhead, 1),
        "peak memory of one program, MB": batch["peak_mb"],
        "peak memory of everything, MB": round(peak, 0),
        # Of processor time: on a machine that does nothing else the wall time says the same.
        f"{ARCHIVE} entries like these on {CLUSTER} cores, a core for each job, minutes": round(
            ARCHIVE * cpu / batch["entries"] / CLUSTER / 60.0, 1
        ),
    }


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter
    )
    parser.add_argument("--inputs", required=True, help="folder or .tar archive of input tables")
    parser.add_argument("--entries", type=int, default=500)
    parser.add_argument("--work", required=True, help="folder for inputs and results; must not exist")
    parser.add_argument("--cores", type=int, default=os.cpu_count())
    parser.add_argument("--group-size", type=int, default=50)
    parser.add_argument("--json", help="file for the figures")
    parser.add_argument("--keep", action="store_true", help="keep the folder")
    options = parser.parse_args()
    tables = read_tables(options.inputs)
    if not tables:
        sys.exit(f"{options.inputs}: no input tables (.tab)")
    shifts, results = os.path.join(options.work, "shifts"), os.path.join(options.work, "results")
    generate(tables, options.entries, shifts)
    command = [
        os.path.join(ROOT, "workflow", "orbeln-batch"),
        shifts,
        "-o",
        results,
        "-j",
        str(options.cores),
    ]
    measured = run([*command, "--group-size", str(options.group_size)])
    try:
        with open(os.path.join(results, "batch.json"), encoding="utf-8") as handle:
            batch = json.load(handle)
    except OSError:
        sys.exit(f"the batch ended with status {measured[0]} and without results; logs are in {results}/logs")
    found = figures(batch, options.cores, options.group_size, measured)
    again = run([*command, "--group-size", str(options.group_size)])
    found["run again with nothing to do, s"] = round(again[1], 1)
    print("| figure | value |\n| --- | --- |")
    for name, value in found.items():
        print(f"| {name} | {value} |")
    if options.json:
        with open(options.json, "w", encoding="utf-8") as handle:
            json.dump(found, handle, indent=1)
    if not options.keep:
        shutil.rmtree(options.work)


if __name__ == "__main__":
    main()
