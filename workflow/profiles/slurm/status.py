#!/usr/bin/env python3
"""Says whether a Slurm job is running, success or failed, from the accounting or else from the controller."""

import re
import subprocess
import sys
import time

RUNNING = {
    "PENDING",
    "CONFIGURING",
    "COMPLETING",
    "RUNNING",
    "RESIZING",
    "SUSPENDED",
    "REQUEUED",
    "STAGE_OUT",
}
TRIES = 5


def ask(*command):
    try:
        done = subprocess.run(
            command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False, timeout=60
        )
    except (OSError, subprocess.TimeoutExpired):
        return ""
    return done.stdout.decode("utf-8", "replace") if done.returncode == 0 else ""


def state(job):
    words = ask("sacct", "-X", "-n", "-P", "-o", "State", "-j", job).split()
    if words:
        return words[0]
    found = re.search(r"JobState=(\w+)", ask("scontrol", "show", "job", "-o", job))
    return found[1] if found else ""


def main():
    job = sys.argv[1].split(";")[0]  # "ID;cluster" with several clusters
    for attempt in range(TRIES):
        known = state(job)
        if known:
            break
        time.sleep(attempt)
    # A job that nobody knows any more counts as failed: what it has done is found and not done again.
    print("success" if known == "COMPLETED" else "running" if known in RUNNING else "failed")


if __name__ == "__main__":
    main()
