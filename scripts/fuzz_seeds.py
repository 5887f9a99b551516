#!/usr/bin/env python3
"""Seed inputs and a dictionary for the fuzzing harnesses, made from the tests, the example and a short run.

    scripts/fuzz_seeds.py --install build/release/install --program build/release/orbeln OUT

OUT/NAME/ gets the seeds of harness NAME, those of all converter harnesses in OUT/convert/; OUT/words.dict the
words that the readers look for.
"""
import argparse
import ast
import os
import re
import struct
import subprocess
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
RAW = re.compile(r'R"(\w*)\((.*?)\)\1"', re.S)
QUOTED = r'"(?:[^"\\\n]|\\.)*"'
RUN = re.compile(rf"{QUOTED}(?:\s*{QUOTED})*")
LETTERS = "ARNDCQEGHILKMFPSTWYV"


def literals(source):
    """The string literals of C++ text, adjacent ones joined."""
    found = [body for _, body in RAW.findall(source)]
    for match in RUN.finditer(RAW.sub(" ", source)):
        parts = re.findall(QUOTED, match.group())
        try:
            found.append("".join(ast.literal_eval(part) for part in parts))
        except (SyntaxError, ValueError):
            continue
    return found


def literals_of(pattern):
    for path in sorted(ROOT.glob(pattern)):
        yield from literals(path.read_text())


def put(out, name, contents):
    folder = out / name
    folder.mkdir(parents=True, exist_ok=True)
    for number, content in enumerate(contents):
        data = content if isinstance(content, bytes) else content.encode("utf-8", "surrogateescape")
        (folder / f"seed{number:03}").write_bytes(data)


def shortened(text, rows):
    """A table with its header and the first rows."""
    lines = text.splitlines(keepends=True)
    start = next((i for i, line in enumerate(lines) if line.startswith("FORMAT")), len(lines)) + 1
    return "".join(lines[: start + 1 + rows])


def run_tables(program, install, folder):
    """The seven tables of the first residues of the example, and what the check says."""
    example = shortened((ROOT / "examples/ubiquitin/ubiquitin.tab").read_text(), 75)
    (folder / "in.tab").write_text(example)
    run = subprocess.run(
        [program, "-in", "in.tab"],
        cwd=folder,
        env={**os.environ, "ORBELN_DIR": str(install)},
        capture_output=True,
        text=True,
        check=True,
    )
    rows = {"predABP.tab": 2, "predAll.tab": 30, "predAdjCS.tab": 20, "pred.tab": 10}
    tables = {
        path.name: shortened(path.read_text(), rows.get(path.name, 8)) for path in folder.glob("pred*.tab")
    }
    return example, tables, run.stdout


def structure():
    """Atoms of four residues; the last is a cysteine."""
    lines = []
    for resid, name in enumerate(("ALA", "GLY", "ALA", "CYS"), 1):
        atoms = ["N", "CA", "C", "O", "CB", "SG" if name == "CYS" else "H"]
        for k, atom in enumerate(atoms):
            number = 6 * resid + k
            where = "".join(
                f"{value:8.3f}" for value in (1.3 * number % 7, 2.1 * number % 5, 3.7 * number % 11)
            )
            lines.append(
                f"ATOM  {number:5} {' ' + atom:4} {name:3} A{resid:4}    {where}{1.0:6.2f}{20.0:6.2f}\n"
            )
    return "".join(lines) + "END\n"


def checkpoint():
    return struct.pack("<i", 6) + b"MQIFVK" + struct.pack("<120d", *[0.05] * 120)


def sections(files):
    return "".join(f"%%% {name}\n{content}" for name, content in files.items())


def words():
    """What readers compare with: short literals of their sources, quoted for libFuzzer."""
    found = set(LETTERS)
    for pattern in (
        "src/tables/*.cpp",
        "tools/convert/*.cpp",
        "tools/restraints/*.cpp",
        "tools/report/check_log.cpp",
    ):
        found.update(text for text in literals_of(pattern) if 1 < len(text) < 40)
    for word in sorted(found):
        data = word.encode()
        quoted = "".join(chr(c) if 32 <= c < 127 and c not in (34, 92) else f"\\x{c:02X}" for c in data)
        yield f'"{quoted}"\n'


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--install", type=Path, required=True, help="installation folder")
    parser.add_argument("--program", type=Path, required=True, help="orbeln")
    parser.add_argument("out", type=Path)
    options = parser.parse_args()
    out, tab = options.out, options.install.resolve() / "tab"
    with tempfile.TemporaryDirectory() as folder:
        example, tables, log = run_tables(options.program.resolve(), options.install.resolve(), Path(folder))
    texts = [text for text in literals_of("tests/t*/*.cpp") if "\n" in text and len(text) > 20]
    table_texts = [text for text in texts if "VARS" in text]
    put(out, "table", [example, *tables.values(), *table_texts])
    weights = "VARS 1 2 3 b\nFORMAT %f %f %f %f\n\n" + "1 -2.5 3e-2 .5\n" * 6
    small = tab / "chi1_A.level1.WL2.tab"
    small = small if small.exists() else tab / "chi1_C.level1.WL2.tab"
    put(out, "weights", [weights, shortened(small.read_text(), 3), *table_texts])
    with open(tab / "orbel.tab") as lines:
        put(out, "database", ["".join(line for _, line in zip(range(40), lines))])
    with open(tab / "orbel_obsCS.tab") as lines:
        put(out, "triplets", ["".join(line for _, line in zip(range(30), lines))])
    put(out, "structure", [structure(), *(text for text in texts if "ATOM" in text)])
    put(out, "coordinates", [structure(), *(text for text in texts if "ATOM" in text or "WAT" in text)])
    put(out, "checkpoint", [checkpoint()])
    put(out, "shifts", [example, *table_texts])
    put(out, "numbers", ["1 -2.5 3e-2 .5 1e400 0x1p3 9999.000 12345678.12345678 4.940656458412465e-324"])
    put(out, "command_line", ["-in\ninput.tab\n-noproton\n-s2Thresh\n0.6\n-seqSS\n-blast_check\np.chk"])
    put(out, "arguments", ["in.str\n-o\nout.tab\n--output=x\n-q\n--\n-x"])
    whole = {**tables, "run.log": log, "ref.pdb": structure()}
    put(out, "report", [sections(whole), sections({"pred.tab": tables["pred.tab"]})])
    put(out, "restraints", [sections({name: tables[name] for name in ("pred.tab", "predChi1.tab")})])
    sequence = "\n%%% sequence\n>p\nMQIFVKTLTGKTITLEVEPS\n"
    put(out, "convert", [example, *texts, *(text + sequence for text in texts[::3])])
    (out / "words.dict").write_text("".join(words()))


if __name__ == "__main__":
    main()
