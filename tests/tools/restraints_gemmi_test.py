"""Restraint files read back by gemmi, a reader that knows nothing of ORBEL-N.

Usage: restraints_gemmi_test.py ORBELN_RESTRAINTS. Exit status 77 where gemmi is not installed.
"""
import math
import pathlib
import subprocess
import sys
import tempfile

try:
    from gemmi import cif
except ImportError:
    print("gemmi for Python is not installed: skipped")
    sys.exit(77)

SEQUENCE = "MKVTAC"
TORSIONS = {2: (-120.0, 130.0), 3: (175.0, -175.0), 4: (-63.2, -42.1), 5: (60.0, 45.0)}
HEAD = "DATA FIRST_RESID 1\nDATA SEQUENCE " + SEQUENCE + "\n\n"
# The mandatory items of the format's dictionary, all with a value.
NEF_ITEMS = {
    "nef_nmr_meta_data": ["sf_category", "sf_framecode", "format_name", "format_version", "program_name",
                          "program_version", "creation_date", "uuid"],
    "nef_molecular_system": ["sf_category", "sf_framecode"],
    "nef_chemical_shift_list": ["sf_category", "sf_framecode"],
    "nef_dihedral_restraint_list": ["sf_category", "sf_framecode", "potential_type"]}
NEF_LOOPS = {
    "nef_sequence": ["index", "chain_code", "sequence_code", "residue_name"],
    "nef_chemical_shift": ["chain_code", "sequence_code", "residue_name", "atom_name", "value"],
    "nef_dihedral_restraint": ["index", "restraint_id", "weight", "lower_limit", "upper_limit"] + [
        item + "_" + atom for atom in "1234"
        for item in ("chain_code", "sequence_code", "residue_name", "atom_name")]}


def tables(folder):
    rows = "".join(f" {r} {SEQUENCE[r - 1]} {p:8.3f} {q:8.3f} 5.000 5.000 1.000 0.850 25 18 Strong\n"
                   for r, (p, q) in TORSIONS.items())
    (folder / "pred.tab").write_text(
        HEAD + "VARS RESID RESNAME PHI PSI DPHI DPSI DIST S2 COUNT CS_COUNT CLASS\n"
        "FORMAT %4d %s %8.3f %8.3f %8.3f %8.3f %8.3f %5.3f %2d %2d %s\n\n" + rows)
    (folder / "input.tab").write_text(
        "REMARK ENTRY it's a \"test\"\n" + HEAD + "VARS RESID RESNAME ATOMNAME SHIFT\nFORMAT %4d %1s %4s %8.3f\n\n"
        + "".join(f"{r} {SEQUENCE[r - 1]} CA {50 + r}.5\n" for r in range(1, 7)))
    (folder / "predS2.tab").write_text(
        "VARS RESID RESNAME CS_CNT CS_CNT_R2 S2\nFORMAT %4d %1s %2d %2d %8.3f\n\n2 K 6 18 0.912\n3 V 6 18 0.850\n")
    (folder / "predSS.tab").write_text(
        "VARS RESID RESNAME CS_CNT CS_CNT_R2 Q_H Q_E Q_L CONFIDENCE SS_CLASS\n"
        "FORMAT %4d %1s %2d %2d %8.3f %8.3f %8.3f %4.2f %s\n\n" +
        "".join(f"{r} {SEQUENCE[r - 1]} 18 6 0.1 0.8 0.1 0.7 {c}\n" for r, c in zip(range(1, 7), "LEEEHh")))


def frames(path):
    block = cif.read(str(path)).sole_block()
    return [item.frame for item in block if item.frame is not None]


def columns(loop):
    return {tag.split(".")[1]: [loop.val(row, k) for row in range(loop.length())]
            for k, tag in enumerate(loop.tags)}


def loops(frame):
    return {item.loop.tags[0].split(".")[0][1:]: item.loop for item in frame if item.loop is not None}


def check_angles(lower, upper, atoms):
    found = {}
    for low, high, residue, atom in zip(lower, upper, atoms[0], atoms[1]):
        assert float(low) < float(high)
        centre = (float(low) + float(high)) / 2
        expected = TORSIONS[int(residue)][0 if atom == "N" else 1]
        assert abs(math.remainder(centre - expected, 360)) < 0.1, (residue, centre, expected)
        found[residue, atom] = True
    assert len(found) == 8, found


def check_nef(path):
    seen = {}
    for frame in frames(path):
        items = {i.pair[0].split(".")[1]: i.pair[1] for i in frame if i.pair is not None}
        category = items["sf_category"]
        assert frame.name == items["sf_framecode"] and frame.name.startswith(category)
        for name in NEF_ITEMS[category]:
            assert items[name] not in (".", "?"), name
        for name, loop in loops(frame).items():
            assert loop.length() > 0, name
            values = columns(loop)
            for tag in NEF_LOOPS[name]:
                assert "." not in values[tag], (name, tag)
            seen[name] = values
    assert set(seen) == set(NEF_LOOPS)
    rows = seen["nef_dihedral_restraint"]
    # The second atom is N of the residue for PHI and CA for PSI.
    check_angles(rows["lower_limit"], rows["upper_limit"], (rows["sequence_code_2"], rows["atom_name_2"]))


def check_star(path):
    seen = {name: columns(loop) for frame in frames(path) for name, loop in loops(frame).items()}
    rows = seen["Torsion_angle_constraint"]
    check_angles(rows["Angle_lower_bound_val"], rows["Angle_upper_bound_val"],
                 (rows["Comp_index_ID_2"], rows["Atom_ID_2"]))
    order = seen["Order_param"]
    assert list(zip(order["Comp_index_ID"], order["Comp_ID"], order["Order_param_val"])) == [
        ("2", "LYS", "0.912"), ("3", "VAL", "0.850")]
    parts = seen["Secondary_struct"]
    assert list(zip(parts["Name"], parts["Comp_index_ID_start"], parts["Comp_index_ID_end"])) == [
        ("strand", "2", "4"), ("helix", "5", "5")]


def main():
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        tables(folder)

        def write(*options):
            subprocess.run([sys.argv[1], folder / "pred.tab", "-q", *options], check=True)

        write("--format", "nef", "-o", folder / "alone.nef")
        check_nef(folder / "alone.nef")
        mine = (folder / "alone.nef").read_text().split("# Dihedral")[0]
        (folder / "mine.nef").write_text(mine)
        write("--into", folder / "mine.nef", "-o", folder / "added.nef")
        assert (folder / "added.nef").read_text().startswith(mine)
        check_nef(folder / "added.nef")
        write("--format", "star", "-o", folder / "frames.str")
        check_star(folder / "frames.str")


main()
