"""orbeln-batch: runs the workflow on a folder, list or table of inputs, and runs it again after whatever happened."""

from __future__ import annotations

import argparse
import glob
import os
import shutil
import subprocess
import sys
from typing import Any, Optional

from ..errors import OrbelnError
from ..programs import Programs
from .files import locked, read_json, remove, write_json
from .plan import read_inputs, settings_of

_DESCRIPTION = """Predicts many entries: a folder of shift files, a list of paths, or a table (.tsv or .csv with the
column file). Every entry gets a folder RESULTS/entries/NAME; RESULTS/index.html, entries.tsv, failures.tsv and one
table of all residues are about all of them. Run the same command again after an interruption, a full disk or new
inputs: what is done is not done again. Settings: config/config.yaml of the workflow; words after -- go to snakemake."""
_PLACES = (
    os.path.join(os.path.dirname(__file__), "..", "..", "..", "workflow"),
    os.path.join(sys.prefix, "share", "orbeln", "workflow"),
    "/usr/share/orbeln/workflow",
)


def workflow_folder() -> str:
    """ORBELN_WORKFLOW, else the workflow of the source tree or of the installation."""
    given = os.environ.get("ORBELN_WORKFLOW")
    for place in [given] if given else _PLACES:
        if os.path.isfile(os.path.join(place, "Snakefile")):
            return os.path.realpath(place)
    raise OrbelnError("no workflow found; set ORBELN_WORKFLOW to the folder that holds Snakefile", file=given)


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(prog="orbeln-batch", description=_DESCRIPTION)
    parser.add_argument("inputs", help="folder, list or table of inputs")
    parser.add_argument(
        "-o", "--output", required=True, metavar="RESULTS", help="results folder, made when missing"
    )
    parser.add_argument(
        "-j", "--cores", type=int, help="programs at a time [all cores]; on a cluster jobs at a time"
    )
    parser.add_argument(
        "--profile", default="local", help="local, slurm or the folder of a Snakemake profile [local]"
    )
    parser.add_argument(
        "--configfile", metavar="FILE", help="settings (YAML or JSON); the options below go before it"
    )
    parser.add_argument("--group-size", type=int, metavar="N", help="entries in one job")
    parser.add_argument("--restraints", metavar="LIST", help="xplor, cyana, nef separated by commas, or none")
    parser.add_argument(
        "--options", metavar="TEXT", help='options of orbeln for all entries, as --options="-iso"'
    )
    parser.add_argument("--convert-options", metavar="TEXT", help="options of orbeln-convert for all entries")
    parser.add_argument("--truth", metavar="FILE", help="known torsions (tab-separated): writes accuracy.md")
    parser.add_argument(
        "--table", choices=("auto", "parquet", "tsv.xz"), help="format of the table of all residues"
    )
    parser.add_argument("--retry-failed", action="store_true", help="do the entries that failed once more")
    parser.add_argument("-v", "--verbose", action="store_true", help="show every job as it starts and ends")
    parser.add_argument("-n", "--dry-run", action="store_true", help="show what would be done")
    return parser


def _own_settings(path: str) -> dict[str, Any]:
    import yaml  # type: ignore[import]  # comes with snakemake

    try:
        with open(path, encoding="utf-8") as handle:
            content = yaml.safe_load(handle)
    except (OSError, ValueError, yaml.YAMLError) as error:
        raise OrbelnError(str(error), file=path) from None
    if not isinstance(content, dict):
        raise OrbelnError("no settings", file=path)
    folder = os.path.dirname(os.path.abspath(path))
    if content.get("truth"):
        content["truth"] = os.path.join(folder, str(content["truth"]))
    return content


def _settings(options: argparse.Namespace) -> dict[str, Any]:
    settings: dict[str, Any] = _own_settings(options.configfile) if options.configfile else {}
    for name in ("group_size", "restraints", "options", "convert_options", "table"):
        value = getattr(options, name)
        if value is not None:
            settings[name] = value
    if options.truth:
        settings["truth"] = os.path.abspath(options.truth)
        if not os.path.isfile(options.truth):
            raise OrbelnError("no such file", file=options.truth)
    settings.update(
        inputs=os.path.abspath(options.inputs), results="."
    )  # snakemake runs in the results folder
    settings_of(settings)
    if not read_inputs(settings["inputs"]):
        raise OrbelnError("no entries: the folder, list or table names no file", file=options.inputs)
    return settings


def _forget_failures(results: str) -> None:
    """Removes the folders of failed entries and the results of their groups."""
    for path in glob.glob(os.path.join(glob.escape(results), "groups", "*.json")):
        failed = [e["id"] for e in (read_json(path) or {"entries": []})["entries"] if e["status"] == "failed"]
        for name in failed:
            remove(os.path.join(results, "entries", name))
        if failed:
            os.unlink(path)


def _snakemake(options: argparse.Namespace, rest: list[str], results: str) -> list[str]:
    program = shutil.which("snakemake")
    if program is None:
        raise OrbelnError("no snakemake on PATH (Debian: apt-get install snakemake)")
    folder = workflow_folder()
    known = os.path.join(folder, "profiles", options.profile)
    profile = known if os.path.isdir(known) else os.path.abspath(options.profile)
    command = [program, "--snakefile", os.path.join(folder, "Snakefile"), "--directory", results]
    command += ["--configfile", os.path.join(results, "settings.json"), "--profile", profile]
    # The lock of this command goes away with its process; snakemake's own would outlive a kill.
    command += ["--nolock", "--rerun-incomplete"]
    if options.cores is not None:
        command += ["--cores" if options.profile == "local" else "--jobs", str(options.cores)]
    if not options.verbose and not options.dry_run:
        command += ["--quiet", "rules"]
    return command + (["--dry-run"] if options.dry_run else []) + rest


def _run(options: argparse.Namespace, rest: list[str]) -> int:
    Programs.find()
    settings = _settings(options)
    results = os.path.abspath(options.output)
    os.makedirs(results, exist_ok=True)
    with locked(os.path.join(results, "locks", "batch"), wait=False):
        if options.retry_failed and not options.dry_run:
            _forget_failures(results)
        write_json(os.path.join(results, "settings.json"), settings)
        command = _snakemake(options, rest, results)
        status = _wait_for(command)
        return status if options.dry_run else _report(options.output, results, status)


def _wait_for(command: list[str]) -> int:
    with subprocess.Popen(command) as process:
        while True:
            try:
                return process.wait()
            except KeyboardInterrupt:  # snakemake got it too: let it end its jobs
                continue


def _report(shown: str, results: str, status: int) -> int:
    batch = read_json(os.path.join(results, "batch.json"))
    if status != 0 or batch is None:
        print(
            f"orbeln-batch: not finished; run the same command again to go on (logs in {shown}/logs)",
            file=sys.stderr,
        )
        return status or 1
    page = os.path.join(shown, "index.html")
    print(f"{batch['done']} of {batch['entries']} entries done, {batch['failed']} failed: {page}")
    return 0


def main(arguments: Optional[list[str]] = None) -> int:
    words = sys.argv[1:] if arguments is None else arguments
    at = words.index("--") if "--" in words else len(words)
    options = _parser().parse_args(words[:at])
    try:
        return _run(options, words[at + 1 :])
    except BlockingIOError:
        print(f"orbeln-batch: another orbeln-batch is at work in {options.output}", file=sys.stderr)
        return 2
    except (OrbelnError, OSError) as error:
        print(f"orbeln-batch: {error}", file=sys.stderr)
        return 2


if __name__ == "__main__":
    sys.exit(main())
