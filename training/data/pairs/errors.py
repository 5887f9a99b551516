"""The one error of the tool: what is wrong, where, and why."""


class InputError(Exception):
    """Message for the user; the tool ends with status 1."""
