#!/usr/bin/python3
"""Makes rows of the training inputs from public files, one protein a call; rows are appended to the tables
named.

  make_pairs.py --coordinates 1ubq.cif --shifts bmr17769.str --paired train.tsv --proteins proteins.tsv
  make_pairs.py --coordinates 1ubq.cif --chain A --structures residues.tsv --chains chains.tsv

Coordinates: PDB or mmCIF, also .gz (first model). Shifts: NMR-STAR 3 or 2.1. Needs gemmi (Debian:
python3-gemmi, python3-numpy); the DSSP letters come from mkdssp (Debian: dssp) where it is installed, else
from the same rules here.
"""

import argparse
import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
try:
    from data.pairs import coordinates, dssp, match, star, tables
    from data.pairs.errors import InputError
except ModuleNotFoundError as error:
    if error.name not in ("gemmi", "numpy"):
        raise
    sys.exit(
        f"{sys.executable} has no {error.name}: install Debian's python3-{error.name} and run /usr/bin/python3 "
        f"{sys.argv[0]}"
    )


def parse(arguments):
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter
    )
    parser.add_argument("--coordinates", required=True, metavar="FILE", help="PDB or mmCIF file")
    parser.add_argument("--chain", help="its chain; without it, the one that fits the shifts, or all")
    parser.add_argument("--shifts", metavar="FILE", help="NMR-STAR file")
    parser.add_argument("--list", help="shift list ID, where the file has several")
    parser.add_argument(
        "--assembly", help="Entity_assembly_ID of the chain, where shifts of several are given"
    )
    parser.add_argument("--name", help="name of protein and chain; default the file's PDB code and the chain")
    parser.add_argument(
        "--dssp", choices=("auto", "mkdssp", "own"), default="auto", help="default %(default)s"
    )
    parser.add_argument("--paired", metavar="TSV", help="table of shifts with torsions, one row per residue")
    parser.add_argument("--proteins", metavar="TSV", help="table of one row per paired protein")
    parser.add_argument(
        "--structures", metavar="TSV", help="table of torsions and coordinates, one row per residue"
    )
    parser.add_argument("--chains", metavar="TSV", help="table of one row per chain of --structures")
    options = parser.parse_args(arguments)
    if not (options.paired or options.structures):
        parser.error("nothing to write: give --paired, --structures or both")
    if options.paired and not options.shifts:
        parser.error("--paired needs --shifts")
    return options


def chain_name(options, chain, upper):
    if options.name:
        return options.name
    code = chain.entry or os.path.basename(options.coordinates).split(".")[0]
    return (code.upper() if upper else code.lower()) + chain.name


def write_pair(options, chains):
    """Returns the matched chain and the protein's name."""
    shift_list = star.read_shifts(options.shifts, options.list, options.assembly)
    found = match.best_match(chains, shift_list, f"{options.shifts} with {options.coordinates}")
    letters, source = dssp.assign(found.chain, options.dssp)
    name = chain_name(options, found.chain, True)
    rows = tables.paired_rows(name, found, shift_list, letters)
    tables.append_rows(options.paired, tables.PAIRED, rows)
    if options.proteins:
        tables.append_rows(
            options.proteins, tables.PROTEINS, [tables.protein_row(name, found, shift_list.entry, rows)]
        )
    values = sum(bool(cell) for row in rows for cell in row[tables.PAIRED.index("N") :])
    print(
        f"{name}: {len(rows)} residues, {values} shifts; {100 * found.identity:.1f} % identity over "
        f"{100 * found.coverage:.1f} % of the residues with shifts; DSSP by {source}"
    )
    for remark in shift_list.remarks:
        print(f"{name}: {remark}")
    if not tables.ascending_numbers(found.chain)[1]:
        print(f"{name}: residues renumbered, the file's numbers do not ascend one by one")
    return found.chain, name


def main(arguments=None):
    options = parse(arguments)
    try:
        chains = coordinates.read_chains(options.coordinates, options.chain)
        pair = ""
        if options.paired:
            chain, pair = write_pair(options, chains)
            chains = [chain]
        for chain in chains if options.structures else ():
            letters, source = dssp.assign(chain, options.dssp)
            name = chain_name(options, chain, False)
            tables.append_rows(
                options.structures, tables.STRUCTURES, tables.structure_rows(name, chain, letters)
            )
            if options.chains:
                tables.append_rows(
                    options.chains, tables.CHAINS, [tables.chain_row(name, chain, options.coordinates, pair)]
                )
            print(f"{name}: {len(chain.residues)} residues with coordinates; DSSP by {source}")
    except InputError as error:
        print(f"make_pairs.py: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
