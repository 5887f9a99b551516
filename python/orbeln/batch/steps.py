"""The two steps of the workflow that are about all entries: plan and collect."""

from __future__ import annotations

import argparse
import json
import os
import sys
from typing import Optional

from ..errors import OrbelnError
from . import collect, plan


def main(arguments: Optional[list[str]] = None) -> int:
    parser = argparse.ArgumentParser(prog="orbeln.batch.steps")
    commands = parser.add_subparsers(dest="command", required=True)
    planned = commands.add_parser("plan", help="write RESULTS/plan")
    planned.add_argument("settings", help="settings as JSON")
    planned.add_argument("results")
    collected = commands.add_parser("collect", help="write the tables and the index page")
    collected.add_argument("results")
    collected.add_argument("table", help="residues.parquet or residues.tsv.xz")
    collected.add_argument("--truth", help="table of known torsions")
    options = parser.parse_args(arguments)
    try:
        if options.command == "plan":
            groups = plan.make(json.loads(options.settings), os.path.abspath(options.results))
            print(f"{groups} groups")
        else:
            batch = collect.collect(os.path.abspath(options.results), options.table, options.truth)
            print(f"{batch['done']} of {batch['entries']} entries, {batch['failed']} failed")
    except (OrbelnError, OSError) as error:
        print(f"orbeln-batch: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
