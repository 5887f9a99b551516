# Settings and functions of the workflow. What the rules do is in the Python package orbeln.batch.
import json
import os
import sys

from snakemake.exceptions import WorkflowError

_PACKAGE = Path(workflow.basedir).parent / "python"
if (_PACKAGE / "orbeln").is_dir():  # in the source tree; else the installed package is taken
    sys.path.insert(0, str(_PACKAGE))
    os.environ.update(PYTHONPATH=os.pathsep.join(filter(None, [str(_PACKAGE), os.getenv("PYTHONPATH")])))

from orbeln import OrbelnError, Programs
from orbeln.batch import collect as collecting
from orbeln.batch import identity, plan as planning

RESULTS = os.path.normpath(str(config["results"]))
if "{" in RESULTS or "}" in RESULTS:
    raise WorkflowError("setting results: braces in a path mean something else to the workflow")

try:
    TABLE = collecting.table_name(str(config.get("table", "auto")))
    planning.settings_of(config)
except OrbelnError as error:
    raise WorkflowError(str(error))


def at(name):
    """A path in the results folder."""
    return name if RESULTS == "." else os.path.join(RESULTS, name)


def results_folder(wildcards):
    return RESULTS


def python(wildcards):
    return sys.executable


def settings_text():
    """The settings that decide results, as text in a fixed order."""
    chosen = {key: config.get(key, default) for key, default in planning.DEFAULTS.items()}
    return json.dumps({**chosen, "inputs": str(config["inputs"])}, sort_keys=True)


def installation_stamps():
    try:
        return json.dumps(identity.stamps(Programs.find()), sort_keys=True)
    except (OrbelnError, OSError) as error:
        raise WorkflowError(str(error))


def existing_inputs(wildcards):
    """Every input file that is there; one that is missing fails as an entry and stops nothing."""
    source = str(config["inputs"])
    try:
        rows = planning.read_inputs(source)
    except OrbelnError as error:
        raise WorkflowError(str(error))
    files = [] if os.path.isdir(source) else [source]
    files += [row[key] for row in rows for key in ("file", "sequence") if row.get(key) and os.path.isfile(row[key])]
    # Snakemake takes a leading or trailing blank and a line break in a name as a mistake: such names are not watched.
    return sorted({name for name in files if name.strip() == name and "\n" not in name and name.isprintable()})


def group_files(ending):
    def files(wildcards):
        folder = Path(checkpoints.plan.get().output[0])
        return [at(f"groups/{path.stem}.{ending}") for path in sorted(folder.glob("*.json"))]

    return files


def truth_file(wildcards):
    return [str(config["truth"])] if config.get("truth") else []


def truth_words(wildcards):
    return ["--truth", str(config["truth"])] if config.get("truth") else []
