"""TIFF files: their directories are read by tifffile, their pages by the library."""

from __future__ import annotations

import os
import threading
from collections.abc import Iterator, Sequence
from types import TracebackType
from typing import Any, overload

import tifffile

from tilepress._errors import ArgumentError, Error, FormatError
from tilepress._pages import Page

_GROUP_4 = 4
_INCH, _CENTIMETRE = 2, 3


def open(path: str | os.PathLike[str], *, max_pixels: int = 0, max_bytes: int = 0) -> Document:
    """The pages of a TIFF file.

    Args:
        max_pixels, max_bytes: what a page may have and hold at most; 0 is no limit.

    Raises:
        OSError: the file cannot be read.
        FormatError: it is no TIFF file.
    """
    return Document(path, max_pixels=max_pixels, max_bytes=max_bytes)


class Document(Sequence[Page]):
    """The pages of a TIFF file, a sequence. Each page is read when it is asked for, and stays usable when the document
    has been closed. Ends with `close` or a `with` statement."""

    def __init__(self, path: str | os.PathLike[str], *, max_pixels: int = 0, max_bytes: int = 0) -> None:
        self._limits = {"max_pixels": max_pixels, "max_bytes": max_bytes}
        self._reading = threading.Lock()  # a file has one position
        try:
            self._file = tifffile.TiffFile(os.fspath(path))
        except OSError:
            raise
        except Exception as error:  # tifffile's own, and what broken files cause in it
            raise FormatError(f"{os.fspath(path)}: {error}") from error

    def close(self) -> None:
        """Closes the file."""
        self._file.close()

    def __enter__(self) -> Document:
        return self

    def __exit__(self, kind: type[BaseException] | None, value: BaseException | None,
                 trace: TracebackType | None) -> None:
        self.close()

    def __len__(self) -> int:
        with self._reading:
            return len(self._file.pages)

    @overload
    def __getitem__(self, index: int) -> Page: ...
    @overload
    def __getitem__(self, index: slice) -> Sequence[Page]: ...

    def __getitem__(self, index: int | slice) -> Page | Sequence[Page]:
        """A page, or a list of them.

        Raises:
            FormatError: the page is not one bit a pixel in Group 4 codes, or its directory is broken.
        """
        count = len(self)
        if isinstance(index, slice):
            return [self[number] for number in range(*index.indices(count))]
        number = range(count)[index]
        try:
            with self._reading:
                return self._page(self._file.pages[number])
        except (FormatError, ArgumentError) as error:
            raise FormatError(f"page {number}: {error}") from error
        except (Error, OSError):
            raise
        except Exception as error:  # what a broken directory causes in tifffile, or among its values
            raise FormatError(f"page {number}: its directory is broken: {error}") from error

    def __iter__(self) -> Iterator[Page]:
        return (self[number] for number in range(len(self)))

    def _page(self, page: Any) -> Page:
        if (page.compression, page.bitspersample, page.samplesperpixel) != (_GROUP_4, 1, 1) or (
                page.photometric not in (0, 1)):
            raise FormatError(f"compression {int(page.compression)}, {page.samplesperpixel} samples of "
                              f"{page.bitspersample} bits, not one bit a pixel in Group 4 codes")
        tiled = page.is_tiled
        height = page.tilelength if tiled else min(page.rowsperstrip or page.imagelength, page.imagelength)
        return Page(page.imagewidth, page.imagelength, self._tiles(page, height),
                    tile_width=page.tilewidth if tiled else 0, tile_height=height,
                    fill_order=2 if page.fillorder == 2 else 1,  # others stand in broken files
                    photometric=int(page.photometric), orientation=_orientation(page), resolution=_resolution(page),
                    **self._limits)

    def _tiles(self, page: Any, height: int) -> list[bytes | None]:
        across = -(-page.imagewidth // page.tilewidth) if page.is_tiled else 1
        count = across * -(-page.imagelength // max(height, 1))
        offsets, counts = list(page.dataoffsets), list(page.databytecounts)
        if count > len(offsets) + self._file.filehandle.size:  # nothing that is in the file
            raise FormatError(f"{count} tiles in a file of {self._file.filehandle.size} bytes")
        ends = sorted(offsets) + [self._file.filehandle.size]
        tiles: list[bytes | None] = []
        for k in range(count):
            offset = offsets[k] if k < len(offsets) else 0
            # Old files leave the counts out: a tile then ends where another begins.
            length = counts[k] if k < len(counts) else next((end - offset for end in ends if end > offset), 0)
            if offset == 0 and length == 0 and k < len(offsets):
                tiles.append(None)
            else:
                tiles.append(self._read(offset, length) if offset else b"")
        return tiles

    def _read(self, offset: int, length: int) -> bytes:
        handle = self._file.filehandle
        if offset >= handle.size:
            return b""
        handle.seek(offset)
        return bytes(handle.read(min(length, handle.size - offset)))


def _orientation(page: Any) -> int:
    tag = page.tags.get("Orientation")
    return int(tag.value) if tag and tag.value in range(1, 9) else 1


def _resolution(page: Any) -> tuple[float, float] | None:
    unit = page.tags.get("ResolutionUnit")
    factor = {_INCH: 1.0, _CENTIMETRE: 2.54}.get(int(unit.value) if unit else _INCH)
    values = [page.tags.get(name) for name in ("XResolution", "YResolution")]
    if factor is None or not all(tag and tag.value[1] for tag in values):
        return None
    across, down = (factor * tag.value[0] / tag.value[1] for tag in values)
    return across, down
