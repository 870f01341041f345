"""The errors of the library."""

from __future__ import annotations

from typing import NamedTuple


class Location(NamedTuple):
    """Where in the library an error was raised.

    Examples
    --------
    >>> from seluutils import random
    >>> try:
    ...     random.Poisson(-1)
    ... except SeluError as error:
    ...     error.location.function
    'ORVA::CExactPoisson::CExactPoisson'
    """

    timestamp: str
    source: str
    function: str
    line: int


for _name, _says in {
    "timestamp": "When that part of the library was built: the date and the time of day.",
    "source": "The source in the library.",
    "function": "The function's full name.",
    "line": "The number of the line in the source.",
}.items():
    getattr(Location, _name).__doc__ = _says


class SeluError(RuntimeError):
    """Something that cannot be done; the text is the library's message.

    Attributes
    ----------
    location : Location or None
        Where in the library it was raised.

    Examples
    --------
    >>> from seluutils import random
    >>> try:
    ...     random.Fixed(float("nan"))
    ... except SeluError as error:
    ...     print(error)
    Invalid Parameter! nan or 0 or 0.
    """

    location: Location | None

    def __init__(self, message: str, location: Location | None = None) -> None:
        super().__init__(message)
        self.location = location

    def __reduce__(self) -> tuple[type[SeluError], tuple[str, Location | None]]:
        return type(self), (str(self), self.location)


class BadParameter(SeluError, ValueError):
    """An argument that is refused, before anything is changed.

    Examples
    --------
    >>> from seluutils import texture
    >>> texture.offsets(4)
    Traceback (most recent call last):
    ...
    seluutils._errors.BadParameter: dimension 4 is not 1, 2 or 3
    """
