"""Backbone shifts of one chain from an NMR-STAR file (3.x, or 2.1), read by gemmi."""

import gzip
import math
import re
from dataclasses import dataclass, field

import gemmi

from data.pairs.errors import InputError

ATOMS = ("N", "HA", "C", "CA", "CB", "HN")
# Values outside are misassigned, folded or mistyped.
PLAUSIBLE = {
    "N": (95.0, 140.0),
    "HA": (1.5, 7.0),
    "C": (165.0, 186.0),
    "CA": (40.0, 72.0),
    "CB": (13.0, 76.0),
    "HN": (4.5, 12.5),
}
AMBIGUOUS = {"4", "5", "6", "9"}  # within the residue, between residues, between molecules, undefined
MISMATCH_SHARE = 0.10
# Column names of the shift loop: NMR-STAR 3, then 2.1.
COLUMNS = {
    "number": ("comp_index_id", "seq_id", "residue_seq_code"),
    "name": ("comp_id", "residue_label"),
    "atom": ("atom_id", "atom_name"),
    "value": ("val", "chem_shift_value"),
    "ambiguity": ("ambiguity_code", "chem_shift_ambiguity_code"),
    "entity": ("entity_id",),
    "assembly": ("entity_assembly_id",),
    "list": ("assigned_chem_shift_list_id",),
}


@dataclass
class ShiftList:
    """`codes` holds one letter per residue, X for what is not one of the 20; `shifts` per position atom ->
    ppm."""

    entry: str = ""  # BMRB number, as far as the data block's name tells
    codes: str = ""
    shifts: list = field(default_factory=list)
    remarks: list = field(default_factory=list)


def clean(text):
    """The text with `$` values quoted, which gemmi takes for an error; text blocks are left alone."""
    lines, block = [], False
    for line in text.replace("\r\n", "\n").split("\n"):
        if line.startswith(";"):
            block = not block
        elif not block and "$" in line:
            line = re.sub(r"(?<!\S)(\$\S+)", r"'\1'", line)
        lines.append(line)
    return "\n".join(lines)


def load(path):
    try:
        opener = gzip.open if path.endswith(".gz") else open
        with opener(path, "rt", errors="replace") as handle:
            return gemmi.cif.read_string(clean(handle.read()))
    except OSError as error:
        raise InputError(f"{path}: cannot be read ({error.strerror})") from error
    except (RuntimeError, ValueError) as error:
        raise InputError(f"{path}: not a readable NMR-STAR file: {error}") from error


def loops(items):
    """All loops of a block and its frames, as lists of rows {column in lower case without category: text}."""
    for item in items:
        if item.frame is not None:
            yield from loops(item.frame)
        elif item.loop is not None:
            columns = [tag.lower().lstrip("_") for tag in item.loop.tags]
            category = columns[0].split(".")[0] if "." in columns[0] else ""
            columns = [column.split(".")[-1] for column in columns]
            width = item.loop.width()
            values = [gemmi.cif.as_string(value) for value in item.loop.values]
            yield category, [dict(zip(columns, values[k : k + width])) for k in range(0, len(values), width)]


def cell(row, key):
    """First filled cell among the column names of the key."""
    return next((row[column] for column in COLUMNS[key] if row.get(column)), "")


def number(text):
    try:
        return int(text)
    except ValueError:
        return None


def one_letter(name):
    """Letter of a residue name of one or three letters; X for other than the 20."""
    name = name.upper()
    if len(name) == 1:
        return name if name in "ACDEFGHIKLMNPQRSTVWY" else "X"
    info = gemmi.find_tabulated_residue(name)
    code = info.one_letter_code if info is not None else "X"
    return code if info is not None and info.is_amino_acid() and code.isupper() else "X"


def choose(path, rows, key, wanted, what, option):
    """Rows of the one list or chain that the user named, or of the only one there is."""
    found = sorted({cell(row, key) for row in rows}, key=lambda text: (len(text), text))
    if wanted is None and len(found) > 1:
        raise InputError(f"{path}: {len(found)} {what}s ({', '.join(found)}): choose one with {option}")
    if wanted is not None and wanted not in found:
        raise InputError(f"{path}: no {what} {wanted}; there is {', '.join(found) or 'none'}")
    return [row for row in rows if wanted is None or cell(row, key) == wanted]


def sequence_loop(all_loops, entity):
    """{residue number: name} from the sequence loops of the entity; empty when the file has none."""
    for category, index, name in (
        ("entity_poly_seq", ("comp_index_id", "num"), "mon_id"),
        ("entity_comp_index", ("id",), "comp_id"),
        ("", ("residue_seq_code",), "residue_label"),
    ):
        for found, rows in all_loops:
            if found != category or not rows or name not in rows[0] or "chem_shift_value" in rows[0]:
                continue
            rows = [row for row in rows if not entity or row.get("entity_id", entity) in ("", entity)]
            numbers = {
                number(next((row[key] for key in index if row.get(key)), "")): row[name] for row in rows
            }
            numbers.pop(None, None)
            if numbers:
                return numbers
    return {}


def backbone_name(name, code):
    """Name of the backbone atom in the tables' use; None for any other atom."""
    name = name.upper()
    if code == "G" and name in ("HA2", "HA3", "HA1"):
        return "HA"
    name = {"H": "HN", "HN": "HN", "CO": "C"}.get(name, name)
    return None if name not in ATOMS or (code == "G" and name == "CB") else name


def read_shifts(path, list_id=None, assembly=None):
    """The shift list of one chain. InputError when the file is unreadable, holds no shifts, or holds several
    lists or chains and none was chosen."""
    document = load(path)
    all_loops = [loop for block in document for loop in loops(block)]
    rows = [row for _, table in all_loops for row in table if cell(row, "value") and cell(row, "atom")]
    if not rows:
        raise InputError(f"{path}: no table of assigned chemical shifts")
    rows = choose(path, rows, "list", list_id, "shift list", "--list")
    rows = choose(path, rows, "assembly", assembly, "chain (Entity_assembly_ID)", "--assembly")
    entity = cell(rows[0], "entity")
    result = ShiftList("".join(filter(str.isdigit, document[0].name)))
    named = {}
    for row in rows:
        position = number(cell(row, "number"))
        if position is not None:
            named.setdefault(position, one_letter(cell(row, "name")))
    sequence = {key: one_letter(name) for key, name in sequence_loop(all_loops, entity).items()}
    if not sequence:
        sequence = named
        result.remarks.append("no sequence in the file: taken from the shift rows")
    differing = [key for key in named if sequence.get(key) != named[key]]
    if len(differing) > MISMATCH_SHARE * len(named):
        raise InputError(
            f"{path}: {len(differing)} of {len(named)} residues with shifts differ from the sequence of "
            f"entity {entity or '?'} (first at {differing[0]}): wrong chain or numbering"
        )
    first, last = min(sequence), max(sequence)
    result.codes = "".join(sequence.get(key, "X") for key in range(first, last + 1))
    result.shifts = collect(rows, first, result)
    return result


def collect(rows, first, result):
    """Shifts per position of result.codes; what is left out is counted in the remarks."""
    values = [{} for _ in result.codes]
    skipped = {"ambiguous": 0, "implausible": 0, "repeated": 0}
    for row in rows:
        position = number(cell(row, "number"))
        if position is None or not 0 <= position - first < len(result.codes):
            continue
        code = result.codes[position - first]
        atom = backbone_name(cell(row, "atom"), code)
        if code == "X" or code != one_letter(cell(row, "name")) or atom is None:
            continue
        try:
            shift = float(cell(row, "value"))
        except ValueError:
            shift = math.nan
        own = values[position - first].setdefault(atom, {})
        if cell(row, "ambiguity") in AMBIGUOUS:
            skipped["ambiguous"] += 1
        elif not PLAUSIBLE[atom][0] <= shift <= PLAUSIBLE[atom][1]:
            skipped["implausible"] += 1
        elif cell(row, "atom").upper() in own:
            skipped["repeated"] += 1  # the first value stays
        else:
            own[cell(row, "atom").upper()] = shift
    result.remarks += [f"{count} {what} values left out" for what, count in skipped.items() if count]
    # Glycine's two alpha protons, or what is known of them, are averaged.
    return [
        {atom: sum(own.values()) / len(own) for atom, own in residue.items() if own} for residue in values
    ]
