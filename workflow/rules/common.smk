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


def settings_text(wildcards):
    """The settings that decide results, as text in a fixed order."""
    chosen = {key: config.get(key, default) for key, default in planning.DEFAULTS.items()}
    return json.dumps({**chosen, "inputs": str(config["inputs"])}, sort_keys=True)


def installation_stamps(wildcards):
    try:
        return json.dumps(identity.stamps(Programs.find()), sort_keys=True)
    except (OrbelnError, OSError) as error:
        raise WorkflowError(str(error))


def input_stamps(wildcards):
    """Changes with every input that is added, removed or changed. The files are no inputs of the rule: one that is missing
    fails as an entry and stops nothing, and names with braces mean something else to the workflow."""
    try:
        return planning.input_stamps(str(config["inputs"]))
    except (OrbelnError, OSError) as error:
        raise WorkflowError(str(error))


def group_files(ending):
    def files(wildcards):
        folder = Path(checkpoints.plan.get().output[0])
        return [at(f"groups/{path.stem}.{ending}") for path in sorted(folder.glob("*.json"))]

    return files


def truth_file(wildcards):
    return [str(config["truth"])] if config.get("truth") else []


def truth_words(wildcards):
    return ["--truth", str(config["truth"])] if config.get("truth") else []
