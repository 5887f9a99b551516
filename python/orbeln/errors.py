"""What can go wrong, with the program's own message and the place in the user's file."""

from __future__ import annotations

from typing import Optional


class OrbelnError(Exception):
    """Base of all errors of this package.

    `file` and `line` (from 1) say where, when the program said so; `program` and `status` which program ended how;
    `log` holds all that it printed."""

    def __init__(
        self,
        message: str,
        *,
        file: Optional[str] = None,
        line: Optional[int] = None,
        program: Optional[str] = None,
        status: Optional[int] = None,
        log: str = "",
    ) -> None:
        super().__init__(message)
        self.message = message
        self.file = file
        self.line = line
        self.program = program
        self.status = status
        self.log = log

    def __str__(self) -> str:
        place = (
            ""
            if self.file is None
            else f"{self.file}: "
            if self.line is None
            else f"{self.file}:{self.line}: "
        )
        return place + self.message

    def __reduce__(self) -> tuple[object, ...]:
        # Keyword-only arguments: without this an error could not come back from a process pool.
        return _rebuild, (type(self), self.message, dict(self.__dict__))


def _rebuild(kind: type[OrbelnError], message: str, state: dict[str, object]) -> OrbelnError:
    error = kind(message)
    error.__dict__.update(state)
    return error


class ProgramNotFoundError(OrbelnError):
    """A program of ORBEL-N is neither in ORBELN_BIN, nor on PATH, nor beside this package."""


class InstallationError(OrbelnError):
    """The tables of ORBEL-N (ORBELN_DIR) cannot be found or read."""


class ConversionError(OrbelnError):
    """The input cannot be converted to an input table."""


class ChoiceError(ConversionError):
    """The input holds several chains or shift lists: give `chain` or `shift_list`."""


class PredictionError(OrbelnError):
    """The prediction ended without its tables."""


class OutputError(OrbelnError):
    """Restraints or a report could not be made."""


class TableError(OrbelnError, ValueError):
    """A file is no table of the house format, or a frame cannot be written as one."""
