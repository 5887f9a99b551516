#!/usr/bin/python3
"""Runs one part of the tests: `run.py package|notebook|workflow`. Status 77 (skipped) when a package is missing."""

import importlib.util
import os
import shutil
import sys

PARTS = {
    "package": (("numpy", "pandas", "pytest"), (), ("test_package.py", "test_tables.py", "test_batch.py")),
    "notebook": (
        ("numpy", "pandas", "pytest", "matplotlib", "nbclient", "ipykernel"),
        (),
        ("test_notebook.py",),
    ),
    "workflow": (("numpy", "pandas", "pytest", "snakemake"), ("snakemake", "ps"), ("test_workflow.py",)),
}


def main():
    modules, commands, files = PARTS[sys.argv[1]]
    missing = [name for name in modules if importlib.util.find_spec(name) is None]
    missing += [name for name in commands if shutil.which(name) is None]
    if missing:
        print(
            f"skipped: {sys.executable} has no {', '.join(missing)} (make python-test installs what is missing)"
        )
        return 77
    import pytest

    folder = os.path.dirname(os.path.abspath(__file__))
    return pytest.main(
        ["-q", "-p", "no:cacheprovider", *sys.argv[2:], *(os.path.join(folder, name) for name in files)]
    )


if __name__ == "__main__":
    sys.dont_write_bytecode = True
    sys.exit(main())
