#!/usr/bin/python3
"""Accuracy of the built program on proteins of known structure: accuracy.py --help. The code is in
accuracy/."""

import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
try:
    from accuracy.command import main  # the package beside this file comes before this module
except ModuleNotFoundError as error:
    if error.name != "numpy":
        raise
    sys.exit(
        f"{sys.executable} has no numpy: install Debian's python3-numpy and run /usr/bin/python3 {sys.argv[0]}"
    )

if __name__ == "__main__":
    sys.exit(main())
