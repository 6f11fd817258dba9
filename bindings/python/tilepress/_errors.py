"""What can go wrong, as exceptions and as records of damage."""

from __future__ import annotations

import enum
from typing import NamedTuple

from tilepress import plain


class Kind(enum.IntEnum):
    """What is wrong with a tile."""

    BAD_CODE = 1     #: bits that are no code, or a code of the extensions
    BACKWARDS = 2    #: a code that leads left of where the row already is
    PAST_END = 3     #: a code that leads past the end of the row
    OUT_OF_DATA = 4  #: the bytes, or an end-of-block, ended before the rows did
    LEFT_OVER = 5    #: all rows are good, but coded bytes follow them; only `verify` reports it


class Damage(NamedTuple):
    """Where and how a tile is damaged."""

    tile: int    #: number of the tile or strip, row by row, from 0
    row: int     #: its first row that cannot be decoded, from 0
    byte: int    #: about where in the tile's bytes
    kind: Kind
    column: int  #: the tile's left column on the page
    top: int     #: the page's row that `row` is

    def __str__(self) -> str:
        what = self.kind.name.lower().replace("_", " ")
        return f"tile {self.tile}, row {self.row} (row {self.top} of the page), byte {self.byte}: {what}"


class Error(Exception):
    """The base of all errors of this package."""


class ArgumentError(Error, ValueError):
    """A size of 0, a rectangle outside the page, an unknown value."""


class FormatError(Error, ValueError):
    """A file that is no TIFF file, or a page of it that is not one bit a pixel in Group 4 codes."""


class LimitError(Error):
    """A limit of the caller's, or one of the codec, would be passed; nothing was allocated."""


class NoMemoryError(Error, MemoryError):
    """Memory ran out."""


class CancelledError(Error):
    """The progress callback asked for the end."""


class DamagedError(Error):
    """A page could not be decoded: `damage` says in which tile and row, where it is known."""

    def __init__(self, message: str, damage: Damage | None) -> None:
        super().__init__(f"{message}: {damage}" if damage else message)
        self.damage = damage


_ERRORS = {-1: ArgumentError, -2: NoMemoryError, -3: LimitError, -5: CancelledError, -6: LimitError}
_DAMAGED = -4


def check(status: int, damage: list[Damage] | None = None) -> None:
    """Raises what a negative status stands for."""
    if status >= 0:
        return
    text = plain.library().tp_status_text(status).decode()
    if status == _DAMAGED:
        raise DamagedError(text, damage[0] if damage else None)
    raise _ERRORS.get(status, Error)(text)
