"""Command line: runs the proteins of all input variants and writes the report with its pictures."""

import argparse
import concurrent.futures
import datetime
import json
import os
import shutil
import sys
import time

from accuracy import pictures, proteins, report, runs
from accuracy.figures import Bootstrap, Figures
from accuracy.results import Results

USAGE = """Accuracy of the built program on proteins of known structure.

  ORBELN_DIR=build/release/install scripts/accuracy.py --program build/release/orbeln \\
      --inputs dev-input.tar.xz --truth dev.tsv.xz --profiles FOLDER --looked 6 --report docs/ACCURACY.md

Inputs: a folder or .tar archive of input shift tables PROTEIN.tab. Truth: a tab-separated table (plain or .xz) with the
columns protein, resid, aa, phi, psi, chi1, ss8 (DSSP), and for the order parameter b_factor and s2_contact. Profiles: a
folder of PSI-BLAST checkpoints PROTEIN.check. Needs numpy (Debian: python3-numpy)."""
SEQUENCE_TITLES = {"single": "sequence alone, without relatives", "profile": "sequence profile alone"}


def parse(arguments):
    parser = argparse.ArgumentParser(description=USAGE, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument(
        "--program", required=True, help="the built program; ORBELN_DIR names the installation"
    )
    parser.add_argument("--inputs", required=True, help="folder or archive of input shift tables")
    parser.add_argument("--truth", required=True, help="table of torsions and DSSP classes")
    parser.add_argument("--profiles", help="folder of PSI-BLAST checkpoints PROTEIN.check")
    parser.add_argument("--variants", default="all", help="of " + ",".join(runs.VARIANTS) + "; default all")
    parser.add_argument("--jobs", type=int, default=2, help="programs run at a time")
    parser.add_argument(
        "--looked",
        type=int,
        help="how often the validation proteins were looked at, this run\n"
        "included, for the report; give it for proteins kept for validation only",
    )
    parser.add_argument(
        "--report",
        help="file of the report; its pictures go beside it. Without it only\n"
        "the headline figures are printed",
    )
    parser.add_argument("--json", help="file for the headline figures as JSON")
    options = parser.parse_args(arguments)
    options.variants = list(runs.VARIANTS) if options.variants == "all" else options.variants.split(",")
    unknown = set(options.variants) - set(runs.VARIANTS)
    if unknown:
        parser.error("unknown variant " + ", ".join(sorted(unknown)))
    program = shutil.which(options.program)
    if program is None:
        parser.error(f"no program {options.program}: build it first (make build)")
    options.program = os.path.abspath(program)
    for path in (options.inputs, options.truth, options.profiles or options.truth):
        if not os.path.exists(path):
            parser.error(f"{path} does not exist")
    home = os.environ.get("ORBELN_DIR", "")
    if home and not os.path.isdir(os.path.join(home, "tab")):
        parser.error(
            f"ORBELN_DIR is {home}, which holds no folder tab (make build unpacks build/release/install)"
        )
    return options


def progress(title, done, total):
    if sys.stderr.isatty():
        print(f"\r{title}: {done}/{total} ", end="\n" if done == total else "", file=sys.stderr, flush=True)


def run_all(title, job, names, jobs):
    """{name: job(name)} with a progress line."""
    outputs = {}
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        waiting = {pool.submit(job, name): name for name in names}
        for done, future in enumerate(concurrent.futures.as_completed(waiting), 1):
            outputs[waiting[future]] = future.result()
            progress(title, done, len(waiting))
    return outputs


def evaluate_shifts(options, inputs, truth):
    """{variant: Results}"""
    results = {}
    for key in options.variants:
        variant = runs.VARIANTS[key]
        texts = {name: variant.keep(name, text) for name, text in inputs.items()}
        outputs = run_all(
            variant.title,
            lambda name: runs.predict(options.program, texts[name], variant.options),
            texts,
            options.jobs,
        )
        no_proton = "-noproton" in variant.options
        searched = {name: proteins.searched_residues(text, no_proton) for name, text in texts.items()}
        results[key] = Results(truth, searched, outputs)
    return results


def evaluate_sequence(options, inputs, truth):
    """{"single", "profile": Results}; proteins without a checkpoint are left out of the second."""
    checkpoints = {
        "single": {
            name: runs.pseudo_checkpoint(proteins.sequence_of(text)[1]) for name, text in inputs.items()
        }
    }
    if options.profiles:
        found = {name: runs.find_checkpoint(options.profiles, name) for name in inputs}
        checkpoints["profile"] = {name: content for name, content in found.items() if content}
        missing = sorted(set(found) - set(checkpoints["profile"]))
        if missing:
            print(f"{options.profiles}: no checkpoint of {', '.join(missing)}", file=sys.stderr)
    results = {}
    for key, contents in checkpoints.items():
        if contents:
            outputs = run_all(
                SEQUENCE_TITLES[key],
                lambda name: runs.predict_from_profile(options.program, inputs[name], contents[name]),
                contents,
                options.jobs,
            )
            results[key] = Results(truth, {name: set() for name in contents}, outputs)
    return results


def headlines(shifts, sequence):
    """({variant: {"torsions", "structure", "chi1": figures}}, {variant: Figures})"""
    figures = {
        key: Figures(results, Bootstrap(len(results.names)))
        for key, results in {**shifts, **sequence}.items()
    }
    parts = {}
    for key, own in figures.items():
        parts[key] = {"structure": own.structure()}
        if key in shifts:
            parts[key].update(torsions=own.torsions(), chi1=own.chi1())
    return parts, figures


def observed_sections(figures, folder, name):
    """Report sections of the first variant, with the pictures written to `folder`."""
    r = figures.results
    rows = figures.by_distance(report.DISTANCE_BINS)
    called = figures.bootstrap.calibration(
        r.protein, r.best_rotamer, r.right_rotamer, r.called, report.CLASS_EDGES
    )
    shifts = r.ss_source == "shifts"
    structure = figures.bootstrap.calibration(
        r.protein, r.ss_probability, r.right_structure, shifts, report.TENTHS
    )
    confidence = figures.bootstrap.calibration(
        r.protein, r.confidence, r.right_structure, shifts, report.TENTHS
    )
    yield "Classes", report.classes(figures)
    yield "Torsions by structure", report.breakdown(figures, "structure", report.structures_groups(r))
    yield "Torsions by residue type", report.breakdown(figures, "type", report.type_groups(r))
    yield "Torsions by number of shifts in the residue and its neighbours", report.breakdown(
        figures, "shifts", report.shift_count_groups(r)
    )
    if rows:
        pictures.draw_distance(os.path.join(folder, name + "-distance.svg"), rows)
        scores = figures.by_distance(report.SCORE_BINS, scored=True)
        tables = [report.distance(rows, "distance")] + ([report.distance(scores, "score")] if scores else [])
        picture = f"![Error against DIST]({name}-distance.svg)"
        yield "Error and DIST", "\n\n".join(
            [report.DIST_KINDS, picture, *(table.rstrip() for table in tables)]
        )
    if called and structure:
        pictures.draw_reliability(
            os.path.join(folder, name + "-reliability.svg"),
            [("chi1 classes", 40.0, called), ("secondary structure from shifts", 20.0, structure)],
        )
        yield "Reliability of the stated probabilities", f"![Reliability diagrams]({name}-reliability.svg)\n"
    yield "Secondary structure from shifts", (
        report.confusion(figures, shifts)
        + "\nBy the largest of the three probabilities:\n\n"
        + report.calibration(structure)
        + "\nBy the confidence (largest minus second largest probability):\n\n"
        + report.calibration(confidence, "confidence")
    )
    yield "chi1", (
        report.chi1_types(figures)
        + "\n"
        + report.chi1_confusion(r)
        + "\nProbability of the class given:\n\n"
        + report.calibration(called)
        + "\nEvery probability of g-, g+ and t:\n\n"
        + report.calibration(report.rotamer_probabilities(figures))
    )
    order = report.order_correlations(r)
    yield "Order parameter", (
        "S2 from shifts beside two properties of the crystal structure, which are no measurements of S2: B factors\n"
        "(low = ordered) and the contact model of the truth table. Termini: the first and last three residues of the "
        "chain.\n\n" + report.order_means(r) + "\n" + report.order_summary(order)
    )
    yield "Proteins", (
        "<details><summary>One row per protein; the last two columns are correlations of S2 (Pearson)."
        "</summary>\n\n" + report.protein_rows(figures, order) + "\n</details>\n"
    )


def write_report(options, parts, figures, seconds):
    folder, name = os.path.split(os.path.abspath(options.report))
    name = os.path.splitext(name)[0].lower()
    titles = {key: variant.title for key, variant in runs.VARIANTS.items()} | SEQUENCE_TITLES
    first = next(iter(parts))
    r = figures[first].results
    looked = (
        ""
        if options.looked is None
        else (
            "\nThey are kept for validation: none is homologous to a protein behind the installation, and nothing was\n"
            f"fitted to them. They were looked at {options.looked} times in all, this run included."
        )
    )
    command = "scripts/accuracy.py --program build/release/orbeln --inputs INPUTS --truth TORSIONS.tsv"
    command += " --profiles PROFILES" if options.profiles else ""
    text = (
        f"# Accuracy\n\nMeasured on {len(r.names)} proteins of known crystal structure ({int(r.known.sum())} "
        f"residues with known torsions).{looked}\n\nMade by\n\n"
        f"    ORBELN_DIR=build/release/install {command} --report docs/ACCURACY.md\n\n"
        f"on {datetime.date.today().isoformat()}, {seconds:.0f} s with {options.jobs} programs at a time. What the "
        "inputs must look like: `scripts/accuracy.py --help`.\n\n" + report.DEFINITIONS
    )
    text += "\n## Goals\n\n" + report.goals(parts)
    text += "\n## By completeness of the input\n\n" + report.completeness(parts, titles)
    for key in ("single", "profile"):
        if key in figures:
            text += f"\n### {SEQUENCE_TITLES[key].capitalize()}\n\n" + report.confusion(
                figures[key], figures[key].results.ss != ""
            )
    text += f"\nThe rest of this report is about {titles[first]}.\n"
    for title, body in observed_sections(figures[first], folder, name):
        text += f"\n## {title}\n\n{body}"
    failures = [failure for own in figures.values() for failure in own.results.failures]
    if failures:
        text += "\n## Failed runs\n\n" + "".join(f"- {failure}\n" for failure in failures)
    with open(options.report, "w") as handle:
        handle.write(text)


def print_headlines(parts):
    for key, own in parts.items():
        for part, numbers in own.items():
            words = [
                f"{name} {report.cell(figure, 2) if isinstance(figure, tuple) else figure}"
                for name, figure in numbers.items()
                if figure is not None
            ]
            print(f"{key:11} {part:9} " + "; ".join(words))
    print("\n" + report.overview(parts))


def main(arguments=None):
    options = parse(arguments)
    if os.environ.get("ORBELN_DIR"):
        os.environ["ORBELN_DIR"] = os.path.abspath(os.environ["ORBELN_DIR"])
    truth, inputs = proteins.read_truth(options.truth), proteins.read_inputs(options.inputs)
    unknown = sorted(set(inputs) - set(truth))
    if unknown:
        print(f"not in the truth table: {', '.join(unknown)}", file=sys.stderr)
    inputs = {name: inputs[name] for name in sorted(set(inputs) & set(truth))}
    if not inputs:
        sys.exit("no input table has a protein of the truth table")
    start = time.time()
    shifts = evaluate_shifts(options, inputs, truth)
    parts, figures = headlines(shifts, evaluate_sequence(options, inputs, truth))
    print_headlines(parts)
    if options.json:
        with open(options.json, "w") as handle:
            json.dump(parts, handle, indent=1, default=float)
    if options.report:
        write_report(options, parts, figures, time.time() - start)
    for own in figures.values():
        for failure in own.results.failures:
            print(failure, file=sys.stderr)
        unsearched = own.results.predicted & ~own.results.searched
        if unsearched.any():
            print(
                f"{int(unsearched.sum())} predicted residues do not pass the gate as this script reads it",
                file=sys.stderr,
            )
    return 1 if any(own.results.failures for own in figures.values()) else 0
