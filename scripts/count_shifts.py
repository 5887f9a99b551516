#!/usr/bin/env python3
"""Counts the backbone shifts of NMR-STAR and NEF files with a reader of its own (gemmi) and compares them with
the tables that orbeln-convert makes of the same files: every value must be found, none may be added.

    scripts/count_shifts.py --convert build/release/orbeln-convert FILE...

One line a file: what the program did, the rows of the file (backbone atoms with a value, in the list and chain
that were converted), the rows of the table, and what differs. Where the program asks for a chain or a list,
every choice it names is converted. Exit status 1 when a value differs or appears that the file does not have.
Needs Debian's python3-gemmi.
"""

import argparse
import collections
import os
import re
import subprocess
import sys
import tempfile

import gemmi

BACKBONE = {"N": "N", "H": "HN", "HN": "HN", "C": "C", "CO": "C", "C'": "C", "CA": "CA", "CB": "CB", "HA": "HA"}
GLYCINE = {"HA", "HA1", "HA2", "HA3", "HAX", "HAY", "QA", "HA%", "HA#", "HA*", "1HA", "2HA"}
MISSING = {"", ".", "?", "@"}
QUOTED_OR_DOLLAR = r"""(?<!\S)(?:'.*?'(?!\S)|".*?"(?!\S)|(\$\S*))"""
Row = collections.namedtuple("Row", "frame number block chain residue name atom value")


def decoded(path):
    """The text of a file in UTF-8 or UTF-16 with plain line ends."""
    data = open(path, "rb").read()
    for mark, codec in ((b"\xff\xfe", "utf-16"), (b"\xfe\xff", "utf-16"), (b"\xef\xbb\xbf", "utf-8-sig")):
        if data.startswith(mark):
            return data.decode(codec).replace("\r\n", "\n").replace("\r", "\n")
    return data.decode("utf-8", "replace").replace("\r\n", "\n").replace("\r", "\n")


def strict_star(text):
    """What a CIF parser wants: a block in front, frames closed, values with $ quoted, no stray brace."""
    lines, inside, in_text = [], False, False
    for line in text.split("\n"):
        if line.startswith(";"):
            in_text = not in_text
        if in_text or line.startswith(";"):
            lines.append(line)
            continue
        words = line.split()
        first = words[0].lower() if words else ""
        if first == "save_":
            if not inside:
                continue
            inside = False
        elif first.startswith("save_") or first.startswith("data_"):
            if inside:
                lines.append("save_")
            inside = first.startswith("save_")
        if line.strip() == "}":
            continue
        lines.append(re.sub(QUOTED_OR_DOLLAR, lambda m: f'"{m[1]}"' if m[1] else m[0], line))
    if inside:
        lines.append("save_")
    text = "\n".join(lines) + "\n"
    return text if re.search(r"(?im)^\s*data_", text) else "data_x\n" + text


def text_of(cell):
    return "" if cell in MISSING else gemmi.cif.as_string(cell)


def loops(block):
    for item in block:
        if item.loop is not None:
            yield block.name, item.loop
        elif item.frame is not None:
            for inner in item.frame:
                if inner.loop is not None:
                    yield item.frame.name, inner.loop


class Columns:
    """The columns of a loop by the end of their tags, the first name that there is."""

    def __init__(self, loop):
        self.names = {tag.lower().split(".")[-1].lstrip("_"): i for i, tag in enumerate(loop.tags)}

    def at(self, *names):
        return next((self.names[n] for n in names if n in self.names), None)


def rows_of_loop(frame, block, loop):
    tags = [tag.lower() for tag in loop.tags]
    kinds = ("_atom_chem_shift.", "_nef_chemical_shift.", "_chem_shift_value", "_assigned_peak_chem_shift.")
    if not any(tag.startswith(kinds) for tag in tags):
        return
    columns = Columns(loop)
    value = columns.at("val", "chem_shift_val", "chem_shift_value", "value")
    atom = columns.at("atom_id", "atom_name")
    if value is None or atom is None:
        return
    index = columns.at("comp_index_id", "sequence_code", "residue_seq_code", "seq_id")
    author = columns.at("auth_seq_id", "author_seq_code", "residue_author_seq_code")
    name = columns.at("comp_id", "residue_name", "residue_type", "residue_label")
    chain = columns.at("chain_code", "entity_assembly_id", "auth_asym_id")
    letter = columns.at("auth_asym_id")
    number = columns.at("assigned_chem_shift_list_id")
    cells, width = loop.values, loop.width()
    for row in range(loop.length()):
        def cell(column, row=row):
            return text_of(cells[row * width + column]) if column is not None else ""
        yield Row(frame, cell(number), block, {cell(chain), cell(letter)}, {cell(index), cell(author)} - {""},
                  cell(name), cell(atom).upper(), cell(value))


def authors_of(document):
    """Author's numbers that stand beside the sequence only."""
    authors = collections.defaultdict(set)
    for block in document:
        for _, loop in loops(block):
            columns = Columns(loop)
            index = columns.at("residue_seq_code") if columns.at("atom_name") is None else None
            if index is None and loop.tags[0].lower().startswith("_entity_comp_index."):
                index = columns.at("id")
            author = columns.at("residue_author_seq_code", "auth_seq_id", "author_seq_code")
            if index is not None and author is not None:
                for row in range(loop.length()):
                    cells = loop.values[row * loop.width():(row + 1) * loop.width()]
                    authors[text_of(cells[index])].add(text_of(cells[author]))
    return authors


def read(path):
    document = gemmi.cif.read_string(strict_star(decoded(path)))
    authors = authors_of(document)
    rows = [row for block in document for frame, loop in loops(block)
            for row in rows_of_loop(frame, block.name, loop)]
    for row in rows:
        for number in list(row.residue):
            row.residue.update(authors.get(number, set()) - {""})
    return rows


def backbone(row):
    """Name of a row's atom in the table, empty for other atoms and rows without a value."""
    glycine = row.name.upper() in ("GLY", "G")
    if glycine and row.atom in GLYCINE:
        atom = "HA*"
    elif row.name.upper() in ("PRO", "P") and row.atom in ("H", "HN"):
        atom = ""
    else:
        atom = BACKBONE.get(row.atom, "")
    try:
        usable = 0 != float(row.value) < 999
    except ValueError:
        usable = False
    return atom if usable and not (glycine and atom == "CB") else ""


class Table:
    def __init__(self, path):
        self.marks, self.rows, self.numbers, self.letters, self.first = {}, [], {}, "", 1
        for line in open(path):
            words = line.split()
            if words[:1] == ["REMARK"] and len(words) > 2:
                if words[1] == "NUMBER":
                    self.numbers[words[2]] = words[3]
                self.marks.setdefault(words[1], " ".join(words[2:]))
            elif words[:2] == ["DATA", "SEQUENCE"]:
                self.letters += "".join(words[2:])
            elif words[:2] == ["DATA", "FIRST_RESID"]:
                self.first = int(words[2])
            elif len(words) == 4 and words[0].lstrip("-").isdigit() and words[2] != "%4s":
                self.rows.append(words)


def compare(rows, table):
    """(rows of the file, rows of the table, values of the file that the table lacks, values it adds)"""
    wanted = collections.Counter()
    for resid, letter, atom, value in table.rows:
        if float(value) < 999:
            wanted[table.numbers.get(resid, resid), "HA*" if atom in ("HA2", "HA3") else atom,
                   float(value)] += 1
    have, labels = collections.Counter(), collections.defaultdict(list)
    for row in rows:
        atom = backbone(row)
        if not atom:
            continue
        key = (frozenset(row.residue), row.name, atom, float(row.value))
        have[key] += 1
        for number in row.residue:
            labels[number, atom, float(row.value)].append(key)
    added = 0
    for label, count in wanted.items():
        for _ in range(count):
            key = next((k for k in labels.get(label, ()) if have[k] > 0), None)
            if key is None:
                added += 1
            else:
                have[key] -= 1
    left = sum(have.values())
    return left + sum(wanted.values()) - added, sum(wanted.values()), left, added


def chosen(rows, table):
    """The rows of the file in the list and chain of the table."""
    name, chain = table.marks.get("LIST"), table.marks.get("CHAIN")
    if name:
        of_list = [r for r in rows if r.frame.lower().endswith(name.lower()) or r.number == name]
        rows = of_list or rows
    if chain:
        of_chain = [r for r in rows if chain.split(":")[-1].split("/")[0] in r.chain]
        rows = of_chain or rows
    return rows


def convert(program, path, output, options):
    run = subprocess.run([program, path, "-o", output] + options, capture_output=True, text=True)
    return run.returncode, run.stdout + run.stderr


def choices(text):
    """The identifiers that the program offers, with the option that takes them."""
    option = "--chain" if "--chain" in text else "--list"
    behind = text.split(option + ": ", 1)[-1]
    entries = re.split(r"; |\n\s*", behind)
    for entry in entries:
        found = re.match(r"(.+?)(?: \(.*\))?: (?:\d+ residues, )?(\d+) backbone shifts", entry.strip())
        if found and found.group(2) != "0":
            yield [option, found.group(1)]


def outcomes(program, path, folder, options=()):
    output = os.path.join(folder, "table.tab")
    status, text = convert(program, path, output, list(options))
    if status == 3 and len(options) < 4:
        for choice in choices(text):
            yield from outcomes(program, path, folder, list(options) + choice)
        return
    if status != 0 and "--keep-first" in text and "--keep-first" not in options:
        yield from outcomes(program, path, folder, list(options) + ["--keep-first"])
        return
    yield list(options), status, text, Table(output) if status == 0 else None


def report(program, path, folder):
    try:
        rows = read(path)
    except (ValueError, RuntimeError) as error:
        print(f"{os.path.basename(path)}\tgemmi: {error}")
        rows = None
    good = True
    for options, status, text, table in outcomes(program, path, folder):
        name = os.path.basename(path) + "".join(" " + o for o in options)
        if table is None:
            print(f"{name}\trefused\t{text.strip().splitlines()[-1].split('error: ')[-1][:150]}")
            continue
        words = ["asked" if options else "accepted"]
        if rows is None:
            words.append(f"{len(table.rows)} rows, not compared")
        else:
            file_rows, table_rows, left, added = compare(chosen(rows, table), table)
            words.append(f"{file_rows} in the file, {table_rows} in the table, {left} left out, {added} added")
            good = good and added == 0
        words.append(f"{len(table.letters)} residues from {table.first}")
        warning = re.search(r"warning: (.*)", text)
        print("\t".join([name] + words + ([warning.group(1)[:110]] if warning else [])))
    return good


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--convert", required=True, help="the program orbeln-convert")
    parser.add_argument("files", nargs="+")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        good = [report(arguments.convert, path, folder) for path in arguments.files]
    sys.exit(0 if all(good) else 1)


if __name__ == "__main__":
    main()
