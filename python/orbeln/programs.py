"""Finds the programs and the installation, and runs a program in a folder. Standard library only."""

from __future__ import annotations

import dataclasses
import os
import re
import shutil
import subprocess
from collections.abc import Callable, Iterable, Sequence
from typing import Optional, Union

from .errors import InstallationError, OrbelnError, ProgramNotFoundError

PathLike = Union[str, "os.PathLike[str]"]

_PLACED = re.compile(
    r"(?P<program>orbeln(?:-\w+)?): (?P<file>.*?)(?::(?P<line>\d+))?: (?P<kind>error|warning): "
)
_PLAIN = re.compile(r"orbeln(?:-\w+)?: (?:error: )?")
_BANNER = re.compile(r"^\*-{60,}\*\n.*?^\*-{60,}\*\n", re.DOTALL | re.MULTILINE)


@dataclasses.dataclass(frozen=True)
class Run:
    """How a program ended; `output` and `errors` are what it printed."""

    program: str
    status: int
    output: str
    errors: str

    @property
    def log(self) -> str:
        return self.output + self.errors


def _is_program(path: str) -> bool:
    return os.path.isfile(path) and os.access(path, os.X_OK)


def _beside() -> list[str]:
    """Folders of programs beside this package: the build of a source tree."""
    root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    return [os.path.join(root, "build", "release")]


def _holds_tables(folder: str) -> bool:
    return os.path.isdir(os.path.join(folder, "tab"))


@dataclasses.dataclass(frozen=True)
class Programs:
    """Where the programs and their installation are; `Programs.find()` looks at the usual places.

    `folders` are searched in order for each program; `install_dir` is the folder that holds `tab`."""

    folders: tuple[str, ...]
    install_dir: str

    @classmethod
    def find(cls, bin_dir: Optional[PathLike] = None, install_dir: Optional[PathLike] = None) -> "Programs":
        """Programs: `bin_dir`, else ORBELN_BIN, else PATH and then the build of the source tree that holds this
        package. Installation: `install_dir`, else ORBELN_DIR, else beside the program `orbeln`."""
        given = os.fspath(bin_dir) if bin_dir is not None else os.environ.get("ORBELN_BIN", "")
        if given:
            folders = [os.path.abspath(given)]
        else:
            folders = [
                os.path.abspath(p) for p in os.environ.get("PATH", "").split(os.pathsep) if p
            ] + _beside()
        program = _search("orbeln", folders)
        return cls(tuple(folders), _find_installation(install_dir, program))

    def path(self, name: str) -> str:
        """The program `name`, or ProgramNotFoundError."""
        return _search(name, self.folders)

    def has(self, name: str) -> bool:
        return any(_is_program(os.path.join(folder, name)) for folder in self.folders)

    def run(
        self, name: str, arguments: Iterable[str], folder: PathLike, timeout: Optional[float] = None
    ) -> Run:
        """Runs a program in `folder`. OrbelnError when it does not end within `timeout` seconds."""
        environment = dict(os.environ, ORBELN_DIR=self.install_dir, LC_ALL="C")
        command = [self.path(name), *arguments]
        try:
            done = subprocess.run(
                command,
                cwd=folder,
                env=environment,
                stdin=subprocess.DEVNULL,
                stdout=subprocess.PIPE,
                stderr=subprocess.PIPE,
                timeout=timeout,
                check=False,
            )
        except subprocess.TimeoutExpired:
            raise OrbelnError(f"{name} did not end within {timeout:g} seconds", program=name) from None
        texts = [stream.decode("utf-8", "replace") for stream in (done.stdout, done.stderr)]
        return Run(name, done.returncode, *texts)


def _search(name: str, folders: Sequence[str]) -> str:
    for folder in folders:
        path = os.path.join(folder, name)
        if _is_program(path):
            return path
    places = folders[0] if len(folders) == 1 else "PATH"
    raise ProgramNotFoundError(
        f"no program {name} in {places}; set ORBELN_BIN to the folder that holds it", program=name
    )


def _find_installation(given: Optional[PathLike], program: str) -> str:
    """Absolute, since the programs run in other folders and want a '/' in it."""
    named = os.fspath(given) if given is not None else os.environ.get("ORBELN_DIR", "")
    if named:
        if not _holds_tables(named):
            what = "install_dir" if given is not None else "ORBELN_DIR"
            raise InstallationError(f"{what} is {named}, which holds no folder tab", file=named)
        return os.path.abspath(named)
    here = os.path.dirname(os.path.realpath(program))
    for place in ("install", "../install", "../share/orbeln"):
        candidate = os.path.join(here, place)
        if _holds_tables(candidate):
            return os.path.realpath(candidate)
    raise InstallationError(f"no tables beside {program}; set ORBELN_DIR to the folder that holds tab")


def copy_in(source: PathLike, folder: PathLike, name: str) -> None:
    """Copies a user's file into a working folder under a plain name."""
    try:
        shutil.copyfile(source, os.path.join(os.fspath(folder), name))
    except OSError as error:
        raise OrbelnError(error.strerror or str(error), file=os.fspath(source)) from error


def message_of(run: Run) -> tuple[str, Optional[str], Optional[int]]:
    """(message, file, line) of a program that failed, from its standard error stream."""
    text = _BANNER.sub("", run.errors).strip()
    lines = [line.strip() for line in text.splitlines() if line.strip()]
    for line in lines:
        found = _PLACED.match(line)
        if found and found["kind"] == "error":
            number = found["line"]
            return line[found.end() :], found["file"], None if number is None else int(number)
    if not lines:
        if run.status < 0:
            return f"{run.program} was ended by signal {-run.status}", None, None
        return f"{run.program} ended with status {run.status} and no message", None, None
    return _PLAIN.sub("", " ".join(lines), count=1), None, None


def failure(kind: type[OrbelnError], run: Run, renamed: Optional[dict[str, str]] = None) -> OrbelnError:
    """The error for a program that failed; `renamed` gives the user's names for files of the working folder."""
    message, file, line = message_of(run)
    for working, own in (renamed or {}).items():
        if file in (working, "./" + working):
            file = own
        # A function, since a plain replacement would read backslashes in a name as escapes.
        message = re.sub(rf"(?<![\w./-]){re.escape(working)}(?![\w.])", _constant(own), message)
    return kind(message, file=file, line=line, program=run.program, status=run.status, log=run.log)


def _constant(text: str) -> Callable[[re.Match[str]], str]:
    return lambda found: text
