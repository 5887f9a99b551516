#!/usr/bin/python3
"""Training rows from public files: a chain built from known torsions, with shifts of a longer sequence.

Status 77 (ctest: skipped) where gemmi or numpy is missing."""

import contextlib
import csv
import io
import math
import os
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "training"))
try:
    import gemmi
    import make_pairs
    import numpy as np
except (ImportError, SystemExit) as error:
    print(f"skipped: {error}")
    sys.exit(77)

NAMES = {"A": "ALA", "G": "GLY", "V": "VAL", "S": "SER", "C": "CYS", "L": "LEU", "K": "LYS", "T": "THR"}
CHI1 = {"V": ("CG1", 170.0), "S": ("OG", 62.0), "T": ("OG1", -58.0), "C": ("SG", -65.0)}
SEQUENCE = "AKVLSGTCVKLAKVALSGKA"
BREAK_AFTER = 15  # residues; the rest is moved away
HELIX, STRAND = (-63.0, -42.0), (-120.0, 130.0)


def place(a, b, c, length, angle, torsion):
    """Atom at `length` from c with the angle b-c-d and the torsion a-b-c-d."""
    forward = (c - b) / np.linalg.norm(c - b)
    normal = np.cross(b - a, forward)
    normal /= np.linalg.norm(normal)
    angle, torsion = math.radians(angle), math.radians(torsion)
    local = (-math.cos(angle), math.sin(angle) * math.cos(torsion), math.sin(angle) * math.sin(torsion))
    return c + length * (local[0] * forward + local[1] * np.cross(normal, forward) + local[2] * normal)


def build(torsions):
    """[{atom: xyz}] of SEQUENCE with a phi and psi per residue, omega 178."""
    n, ca = np.zeros(3), np.array([1.458, 0.0, 0.0])
    c = place(np.array([0.0, 1.0, 0.0]), n, ca, 1.525, 111.0, 60.0)
    residues = []
    for code, (phi, psi) in zip(SEQUENCE, torsions):
        if residues:
            c = place(residues[-1]["C"], n, ca, 1.525, 111.0, phi)
        atoms = {"N": n, "CA": ca, "C": c, "O": place(n, ca, c, 1.231, 120.5, psi + 180.0)}
        if code != "G":
            atoms["CB"] = place(n, c, ca, 1.53, 110.0, -122.5)
        if code in CHI1:
            atoms[CHI1[code][0]] = place(n, ca, atoms["CB"], 1.5, 110.0, CHI1[code][1])
        residues.append(atoms)
        n = place(atoms["N"], ca, c, 1.329, 116.5, psi)
        ca = place(ca, c, n, 1.458, 121.5, 178.0)
    return residues


def pdb_text(residues, first=101):
    """PDB text; the residues after BREAK_AFTER lie 30 A away and are numbered 5 on. The first serine has two
    conformers."""
    lines, serial = [], 0
    for k, (code, atoms) in enumerate(zip(SEQUENCE, residues)):
        moved = k >= BREAK_AFTER
        for name, xyz in atoms.items():
            x, y, z = xyz + (30.0 if moved else 0.0)
            versions = [("A", 0.6, 0.0), ("B", 0.4, 1.0)] if (k, name) == (4, "OG") else [(" ", 1.0, 0.0)]
            for altloc, occupancy, shift in versions:
                serial += 1
                lines.append(
                    f"ATOM  {serial:5d}  {name:<3s}{altloc}{NAMES[code]} A{first + k + 5 * moved:4d}    "
                    f"{x + shift:8.3f}{y:8.3f}{z:8.3f}{occupancy:6.2f}{10.0 + k:6.2f}          {name[0]:>2s}"
                )
    return "\n".join(lines) + "\nEND\n"


def star_text(codes, rows):
    """NMR-STAR 3 with an unquoted $ value and a text block that holds one. Rows: number, atom, value,
    ambiguity."""
    sequence = "".join(f"{k} {NAMES[code]} 1\n" for k, code in enumerate(codes, 1))
    shifts = "".join(
        f"{number} {NAMES[codes[number - 1]]} {atom} {value} {ambiguity} 1 1\n"
        for number, atom, value, ambiguity in rows
    )
    return (
        "data_1\nsave_entity\n_Entity.Citation $cited\n_Entity.Details\n;\nabout $5 save_ loop_\n;\nloop_\n"
        f"_Entity_poly_seq.Num\n_Entity_poly_seq.Mon_ID\n_Entity_poly_seq.Entity_ID\n{sequence}stop_\nsave_\n"
        "save_shifts\nloop_\n_Atom_chem_shift.Comp_index_ID\n_Atom_chem_shift.Comp_ID\n_Atom_chem_shift.Atom_ID\n"
        "_Atom_chem_shift.Val\n_Atom_chem_shift.Ambiguity_code\n_Atom_chem_shift.Entity_ID\n"
        f"_Atom_chem_shift.Assigned_chem_shift_list_ID\n{shifts}stop_\nsave_\n"
    )


class MakePairs(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = lambda name: os.path.join(folder.name, name)
        self.torsions = [HELIX] * 10 + [STRAND] * 10
        self.write("a.pdb", pdb_text(build(self.torsions)))

    def write(self, name, text):
        with open(self.path(name), "w") as handle:
            handle.write(text)

    def run_tool(self, *arguments):
        """(status, standard output, standard error)"""
        out, err = io.StringIO(), io.StringIO()
        with contextlib.redirect_stdout(out), contextlib.redirect_stderr(err):
            status = make_pairs.main(["--coordinates", self.path("a.pdb"), "--dssp", "own", *arguments])
        return status, out.getvalue(), err.getvalue()

    def rows(self, name):
        with open(self.path(name), newline="") as handle:
            return list(csv.DictReader(handle, delimiter="\t"))

    def test_torsions_flags_and_structure_of_a_built_chain(self):
        status, _, _ = self.run_tool("--structures", self.path("s.tsv"), "--chains", self.path("c.tsv"))
        self.assertEqual(status, 0)
        rows = self.rows("s.tsv")
        self.assertEqual("".join(row["aa"] for row in rows), SEQUENCE)
        for k, (row, (phi, psi)) in enumerate(zip(rows, self.torsions)):
            starts, ends = k in (0, BREAK_AFTER), k in (BREAK_AFTER - 1, len(rows) - 1)
            wanted = {
                "phi": "" if starts else phi,
                "psi": "" if ends else psi,
                "omega": "" if starts else 178.0,
                "chi1": CHI1.get(row["aa"], ("", ""))[1],
                "chi2": "",
            }
            for angle, value in wanted.items():
                with self.subTest(residue=row["resid"], angle=angle):
                    # Three decimals of the coordinates leave the torsions 0.1 degrees.
                    self.assertTrue(row[angle] == value or abs(float(row[angle]) - value) < 0.15, row[angle])
            self.assertEqual(row["flags"], "b" if k == BREAK_AFTER else "a" if k == 4 else "")
        # i, i+4 bonds begin at residues 1 to 6 (psi of the tenth residue leaves the helix).
        self.assertEqual("".join(row["ss8"] for row in rows)[1:9], "HHHHHHHH")
        self.assertEqual({row["ss8"] for row in rows[11:]} & {"H", "G", "I"}, set())
        self.assertEqual((self.rows("c.tsv")[0]["breaks"], self.rows("c.tsv")[0]["bfac"]), ("1", "y"))

    def test_same_rows_from_mmcif_and_from_old_pdb_files(self):
        structure = gemmi.read_structure(self.path("a.pdb"))
        structure.make_mmcif_document().write_file(self.path("b.cif"))
        lines = pdb_text(build(self.torsions)).splitlines()
        self.write("old.pdb", "\n".join(f"{line[:72]:72s}1ABC{k:4d}" for k, line in enumerate(lines)) + "\n")
        self.run_tool("--structures", self.path("s.tsv"), "--name", "x")
        for name in ("b.cif", "old.pdb"):
            table = self.path(name + ".tsv")
            self.run_tool("--structures", table, "--name", "x", "--coordinates", self.path(name))
            self.assertEqual(self.rows("s.tsv"), self.rows(name + ".tsv"), name)

    def test_shifts_go_to_identical_residues_only(self):
        # The entry has a tag of three residues, valine 3 mutated to alanine, and the piece that the break
        # hides (LLLLL, before a leucine: only the break tells which of them it is).
        codes = "GSG" + SEQUENCE[:2] + "A" + SEQUENCE[3:BREAK_AFTER] + "LLLLL" + SEQUENCE[BREAK_AFTER:]
        rows = [(k, "CA", 50.0 + 0.1 * k, 1) for k in range(1, len(codes) + 1)]
        rows += [
            (9, "HA2", 3.9, 2),
            (9, "HA3", 4.1, 2),
            (5, "H", 8.25, 1),
            (7, "N", 120.0, 5),
            (8, "CB", 630.0, 1),
            (11, "CB", 41.0, 1),
            (5, "QB", 1.0, 1),
        ]
        self.write("a.str", star_text(codes, rows))
        status, out, err = self.run_tool(
            "--shifts", self.path("a.str"), "--paired", self.path("p.tsv"), "--name", "P"
        )
        self.assertEqual((status, err), (0, ""))
        self.assertIn("1 ambiguous values left out", out)
        self.assertIn("1 implausible values left out", out)
        table = self.rows("p.tsv")
        partners = [k + 4 for k in range(BREAK_AFTER)] + [k + 9 for k in range(BREAK_AFTER, len(SEQUENCE))]
        for k, row in enumerate(table):
            wanted = "" if k == 2 else f"{50.0 + 0.1 * partners[k]:.3f}".rstrip("0").rstrip(".")
            self.assertEqual(row["CA"], wanted, row)
        self.assertEqual([row["resid"] for row in table][14:16], ["115", "121"])
        self.assertEqual(
            (table[5]["HA"], table[1]["HN"], table[3]["N"], table[4]["CB"]), ("4", "8.25", "", "")
        )
        self.assertEqual((table[7]["aa"], table[7]["CB"]), ("c", "41"))  # oxidised by its shift

    def test_refusals(self):
        other = star_text("GLSKTAVLSAGTKVLASGTK", [(k, "CA", 55.0, 1) for k in range(1, 21)])
        one_list, end = star_text(SEQUENCE, [(1, "CA", 52.0, 1)]).rsplit("stop_", 1)
        two_lists = one_list + "2 LYS CA 55 1 1 2\nstop_" + end
        cases = {
            "other protein": (other, "identical residues"),
            "two lists": (two_lists, "choose one with --list"),
            "no shifts": ("data_x\n_Entity.ID 1\n", "no table of assigned chemical shifts"),
            "cut off": (other[:-40] + "\nsave_\n", "not a readable NMR-STAR file"),
            "shifts of other residues": (
                star_text(SEQUENCE, [(1, "CA", 52.0, 1)]).replace("1 ALA CA", "1 VAL CA"),
                "differ from the sequence",
            ),
        }
        for name, (text, message) in cases.items():
            with self.subTest(name):
                self.write("bad.str", text)
                status, _, err = self.run_tool(
                    "--shifts", self.path("bad.str"), "--paired", self.path("p.tsv")
                )
                self.assertEqual(status, 1)
                self.assertIn(message, err)
                self.assertFalse(os.path.exists(self.path("p.tsv")))

    def test_a_table_of_other_columns_is_left_alone(self):
        self.write("s.tsv", "chain\tresid\nkept\t1\n")
        status, _, err = self.run_tool("--structures", self.path("s.tsv"))
        self.assertEqual((status, "other columns" in err, len(self.rows("s.tsv"))), (1, True, 1))


if __name__ == "__main__":
    unittest.main()
