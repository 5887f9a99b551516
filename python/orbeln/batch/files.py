"""Small files written completely or not at all, and locks that end with their process."""

from __future__ import annotations

import contextlib
import errno
import fcntl
import hashlib
import json
import os
import shutil
from collections.abc import Iterator
from typing import Any

FULL = (errno.ENOSPC, errno.EDQUOT)


def write_text(path: str, text: str) -> None:
    beside = f"{path}.{os.getpid()}.part"
    try:
        with open(beside, "w", encoding="utf-8", errors="surrogateescape") as handle:
            handle.write(text)
        os.replace(beside, path)
    except BaseException:
        with contextlib.suppress(OSError):
            os.unlink(beside)
        raise


def write_json(path: str, content: Any) -> None:
    write_text(path, json.dumps(content, indent=1) + "\n")


def read_json(path: str) -> Any:
    """None when the file is missing or no JSON, as after a crash of the machine."""
    try:
        with open(path, encoding="utf-8") as handle:
            return json.load(handle)
    except (OSError, ValueError):
        return None


def sha256(path: str) -> str:
    digest = hashlib.sha256()
    with open(path, "rb") as handle:
        while block := handle.read(1 << 20):
            digest.update(block)
    return digest.hexdigest()


def free_megabytes(folder: str) -> float:
    state = os.statvfs(folder)
    return state.f_bavail * state.f_frsize / 1e6


def remove(folder: str) -> None:
    shutil.rmtree(folder, ignore_errors=True)


@contextlib.contextmanager
def locked(path: str, wait: bool = True) -> Iterator[None]:
    """Holds a lock that the system takes back when the process ends, however it ends. BlockingIOError when another
    process holds it and `wait` is false."""
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "a", encoding="utf-8") as handle:
        fcntl.lockf(handle, fcntl.LOCK_EX | (0 if wait else fcntl.LOCK_NB))
        yield
