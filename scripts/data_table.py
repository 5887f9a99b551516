#!/usr/bin/env python3
"""Rewrites the list of tables in docs/DATA.md from a built installation, with counts, sizes and loading
times.

usage: data_table.py --install build/release/install --dump build/release/orbeln-dump --data data docs/DATA.md
"""

import argparse
import collections
import datetime
import os
import subprocess
import sys

BEGIN, END = "<!-- tables: written by scripts/data_table.py -->", "<!-- end of tables -->"
# Table or network: (training stage, content, origin). Rows appear in this order.
ORIGINS = {
    "randcoil.tab": ("reference", "random-coil shifts", "Wishart et al. 1995"),
    "rcadj.tab": ("reference", "adjustment by the own residue", "paired proteins, coil and turn"),
    "rcprev.tab": ("reference", "adjustment by the residue before", "paired proteins, coil and turn"),
    "rcnext.tab": ("reference", "adjustment by the residue after", "paired proteins, coil and turn"),
    "isoadj.tab": ("reference", "deuterium isotope shifts", "Venters et al. 1996"),
    "sslimit.tab": ("reference", "limits of secondary shifts", "paired proteins, percentiles"),
    "homology.tab": ("reference", "distances of residue types", "BLOSUM62, Henikoff and Henikoff 1992"),
    "weight.tab": ("reference", "weights of the triplet distance", "paired proteins, masked shifts"),
    "BLOSUM62.tab": ("reference", "substitution scores", "Henikoff and Henikoff 1992"),
    "orbel.tab": ("reference", "fragment database", "paired proteins and X-ray chains"),
    "orbel_obsCS.tab": ("reference", "triplet library", "paired proteins"),
    "surf20": ("level1, folds", "phi/psi map", "paired proteins and X-ray chains with simulated shifts"),
    "surf20_hyb": (
        "hybrid",
        "phi/psi map of sparse data",
        "paired proteins and X-ray chains with simulated shifts",
    ),
    "ss": (
        "structure",
        "structure, three residues",
        "paired proteins and X-ray chains with simulated shifts",
    ),
    "ss.center": ("structure", "the same without shifts of the residue", "as ss"),
    "ss.prev": ("structure", "the same without shifts of the residue before", "as ss"),
    "ss.next": ("structure", "the same without shifts of the residue after", "as ss"),
    "ss5": ("structure", "structure, five residues", "as ss"),
    "seqSS": ("sequence", "structure from sequence and neighbours", "paired proteins and X-ray chains"),
    "seqSS15": (
        "sequence",
        "structure from a sequence profile",
        "paired proteins and X-ray chains, PSI-BLAST",
    ),
    "chi1_*": ("chi1", "17 networks, one a residue type", "fragments of the second search pass"),
    "chi1.tab": ("chi1", "rotamer probabilities by score", "proteins held out of the chi1 networks"),
}


def group_of(name):
    """Networks go by their name, the chi1 networks of all types together."""
    if name.startswith("chi1_"):
        return "chi1_*"
    return name.split(".level")[0] if ".level" in name else name


def table_times(dump, install):
    """{group: [files, bytes, rows, milliseconds]}"""
    environment = dict(os.environ, ORBELN_DIR=os.path.abspath(install))
    result = subprocess.run(
        [os.path.abspath(dump), "times"], env=environment, capture_output=True, text=True, check=False
    )
    if result.returncode != 0:
        sys.exit(f"{dump} times: {result.stderr.strip()}")
    groups = collections.defaultdict(lambda: [0, 0, 0, 0.0])
    for line in result.stdout.splitlines():
        name, size, rows, milliseconds = line.split("\t")
        numbers = (1, int(size), int(rows), float(milliseconds))
        groups[group_of(name)] = [a + b for a, b in zip(groups[group_of(name)], numbers)]
    return groups


def database_counts(path):
    """(records of paired proteins, their number, records of other chains, their number); the names of paired
    proteins are in capitals."""
    records = collections.Counter()
    with open(path) as handle:
        for line in handle:
            if not line.startswith("#"):
                records[line.split(" ", 1)[0]] += 1
    paired = [name for name in records if name[:4] == name[:4].upper()]
    inside = sum(records[name] for name in paired)
    return inside, len(paired), sum(records.values()) - inside, len(records) - len(paired)


def section(options):
    groups = table_times(options.dump, options.install)
    unknown = set(groups) - set(ORIGINS)
    if unknown:
        sys.exit(f"{sys.argv[0]}: no origin known of {', '.join(sorted(unknown))}: add it to ORIGINS")
    packed = {
        name: os.path.getsize(os.path.join(options.data, name))
        for name in sorted(os.listdir(options.data))
        if name.endswith(".tar.xz")
    }
    plain = os.path.join(options.data, "tab")
    plain_size = sum(os.path.getsize(os.path.join(plain, name)) for name in os.listdir(plain))
    total = sum(packed.values()) + plain_size
    inside, proteins, others, chains = database_counts(os.path.join(options.install, "tab", "orbel.tab"))
    lines = [
        BEGIN,
        "",
        f"As of {datetime.date.today().isoformat()}. Committed: "
        + ", ".join(f"{name} {size / 1e6:.2f} MB" for name, size in packed.items())
        + f", tab/ {plain_size / 1e3:.0f} kB; {total / 1e6:.1f} MB in all. Unpacked: "
        f"{sum(group[1] for group in groups.values()) / 1e6:.0f} MB.",
        f"Database: {inside:,} records of {proteins} proteins with observed shifts, {others:,} of {chains:,} chains",
        "with predicted shifts. Loading: fastest of three readings by the program's own reader, one core.",
        "",
        "| table or network | stage | content | from | files | rows | kB | loading, ms |",
        "| --- | --- | --- | --- | --- | --- | --- | --- |",
    ]
    for name, (stage, content, origin) in ORIGINS.items():
        if name in groups:
            files, size, rows, milliseconds = groups[name]
            lines.append(
                f"| {name} | {stage} | {content} | {origin} | {files} | {rows:,} | {size / 1e3:,.0f} | "
                f"{milliseconds:.1f} |"
            )
    lines += ["", f"All tables: {sum(group[3] for group in groups.values()):.0f} ms.", "", END]
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter
    )
    parser.add_argument("--install", required=True, help="installation folder (holds tab/)")
    parser.add_argument("--dump", required=True, help="path of the built orbeln-dump")
    parser.add_argument("--data", required=True, help="the project's data folder")
    parser.add_argument("document", help="file with the section to rewrite")
    options = parser.parse_args()
    with open(options.document) as handle:
        text = handle.read()
    if BEGIN not in text or END not in text:
        sys.exit(f"{options.document}: lacks the lines '{BEGIN}' and '{END}'")
    text = text[: text.index(BEGIN)] + section(options) + text[text.index(END) + len(END) :]
    with open(options.document, "w") as handle:
        handle.write(text)


if __name__ == "__main__":
    main()
