"""The errors of the library."""

from __future__ import annotations

from typing import NamedTuple


class Location(NamedTuple):
    """Where in the library an error was raised."""

    timestamp: str
    source: str
    function: str
    line: int


class SeluError(RuntimeError):
    """Something that cannot be done; the text is the library's message.

    Attributes
    ----------
    location : Location or None
        Where in the library it was raised.
    """

    location: Location | None

    def __init__(self, message: str, location: Location | None = None) -> None:
        super().__init__(message)
        self.location = location

    def __reduce__(self) -> tuple[type[SeluError], tuple[str, Location | None]]:
        return type(self), (str(self), self.location)


class BadParameter(SeluError, ValueError):
    """An argument that is refused, before anything is changed.

    >>> from seluutils import texture
    >>> texture.offsets(4)
    Traceback (most recent call last):
    ...
    seluutils._errors.BadParameter: dimension 4 is not 1, 2 or 3
    """
