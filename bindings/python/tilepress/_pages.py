"""Pages, and views of them."""

from __future__ import annotations

import ctypes
import weakref
from collections.abc import Callable, Iterable, Sequence
from dataclasses import dataclass

from tilepress import plain
from tilepress._errors import ArgumentError, Damage, Kind, check
from tilepress._picture import FORMATS, Picture, picture_type

Progress = Callable[[int, int], object]

_MODES = {"grey": 0, "coverage": 1, "ink": 2, "nearest": 3}
_POLICIES = {"fail": 0, "white": 1, "keep": 2}
_BORROW = 1
_RECORDS = 256  # damaged tiles that are told apart in one call


def version() -> str:
    """The version of the library that was loaded."""
    number = plain.library().tp_version()
    return f"{number >> 16 & 255}.{number >> 8 & 255}.{number & 255}"


def _choice(table: dict[str, int], name: str) -> int:
    try:
        return table[name]
    except KeyError:
        raise ArgumentError(f"{name!r} is none of {', '.join(table)}") from None


@dataclass(frozen=True)
class View:
    """A rectangle of a page and how it is drawn."""

    #: Size of the picture, as a share of the rectangle's; 1 when `size` is not given either.
    scale: float | None = None
    #: (left, top, width, height) in pixels of the page as it is stored; all of it when not given.
    rect: tuple[int, int, int, int] | None = None
    #: (width, height) of the picture, after it has been turned.
    size: tuple[int, int] | None = None
    #: What a pixel is made of that has more than one pixel of the page: "grey" (its share of ink, on a curve that keeps
    #: thin lines dark), "coverage" (its share of ink), "ink" (ink if any of them is), "nearest" (the top left one).
    mode: str = "grey"
    #: "grey", "bits", "rgba" or "bgra": see Picture.
    format: str = "grey"
    #: 1 to 8 as TIFF's tag has it; the page's own when not given, so that pictures are upright.
    orientation: int | None = None
    #: Ink and paper change places.
    invert: bool = False
    #: Colours of "rgba" and "bgra" as 0xAARRGGBB.
    ink: int = 0xFF000000
    paper: int = 0xFFFFFFFF


class Page:
    """A page: `width` by `height` pixels of ink and paper, immutable, for any number of threads at once."""

    def __init__(self, width: int, height: int, tiles: Sequence[bytes | None], *, tile_width: int = 0,
                 tile_height: int = 0, fill_order: int = 1, photometric: int = 0, orientation: int = 1,
                 resolution: tuple[float, float] | None = None, max_pixels: int = 0, max_bytes: int = 0) -> None:
        """A page of coded tiles or strips in the byte order of files, row by row; None is a tile of paper. Nothing is
        decoded here, and the tiles are kept, not copied.

        Args:
            tile_width, tile_height: in pixels; 0 is the page's. A page in strips has tiles as wide as itself.
            fill_order: 1 when the highest bit of a byte comes first, 2 when the lowest does.
            photometric: 0 when coded black is ink, 1 when coded white is.
            orientation: how pictures are turned by default, 1 to 8 as TIFF's tag has it.
            resolution: pixels an inch, across and down; only kept.
            max_pixels, max_bytes: what the page may have and hold at most; 0 is no limit.

        Raises:
            ArgumentError: a size of 0, or not as many tiles as the sizes say.
            LimitError: a limit would be passed.
        """
        if not all(0 <= number < 2**32 for number in (width, height, tile_width, tile_height, fill_order, photometric)):
            raise ArgumentError("sizes are whole numbers from 0 to 4294967295")
        self.width, self.height = width, height
        self.orientation, self.resolution = orientation, resolution
        self._lib = plain.library()
        info = plain.PageInfo(ctypes.sizeof(plain.PageInfo), width, height, tile_width, tile_height, fill_order,
                              photometric, _BORROW, plain.Limits(max_pixels, max_bytes))
        coded = (plain.Coded * len(tiles))(*((tile, len(tile)) if tile is not None else (None, 0) for tile in tiles))
        handle = ctypes.c_void_p()
        check(self._lib.tp_page_open(info, coded, len(tiles), handle))
        self._handle = handle
        weakref.finalize(self, _release, self._lib, handle, tuple(tiles))  # which must outlive the library's page

    @property
    def size(self) -> tuple[int, int]:
        """Width and height in pixels, as the page is stored."""
        return self.width, self.height

    @property
    def memory(self) -> int:
        """Bytes that the library holds for the page, the tiles left out; more after `prepare`."""
        return int(self._lib.tp_page_memory(self._handle))

    def render(self, scale: float | None = None, *, rect: tuple[int, int, int, int] | None = None,
               size: tuple[int, int] | None = None, mode: str = "grey", format: str = "grey",
               orientation: int | None = None, invert: bool = False, ink: int = 0xFF000000, paper: int = 0xFFFFFFFF,
               on_damage: str = "fail", progress: Progress | None = None, max_pixels: int = 0,
               max_bytes: int = 0) -> Picture:
        """Draws a rectangle of the page. The first arguments are those of View, the others those of render_views."""
        view = View(scale, rect, size, mode, format, orientation, invert, ink, paper)
        return self.render_views([view], on_damage=on_damage, progress=progress, max_pixels=max_pixels,
                                 max_bytes=max_bytes)[0]

    def render_views(self, views: Iterable[View], *, on_damage: str = "fail", progress: Progress | None = None,
                     max_pixels: int = 0, max_bytes: int = 0) -> list[Picture]:
        """Draws several pictures for which the page is decoded once.

        Args:
            on_damage: "fail" raises DamagedError; "white" leaves the rest of a damaged tile white and "keep" lets its
                last good row go on, and the pictures' `damage` says where.
            progress: called now and then with the rows done and all rows; ends the call by returning true.
            max_pixels: of each picture, 0 is no limit.
            max_bytes: of memory that the call takes beside the pictures, 0 is no limit.

        Raises:
            ArgumentError: a rectangle outside the page, a size of 0, an unknown name.
            DamagedError, LimitError, NoMemoryError, CancelledError: nothing was drawn to the end.
        """
        asked = list(views)
        records = (plain.ViewRecord * len(asked))()
        pictures = [self._picture(view, record, max_pixels) for view, record in zip(asked, records)]
        _, damage = self._call(self._lib.tp_page_render, records, len(asked), on_damage=on_damage, progress=progress,
                               max_pixels=max_pixels, max_bytes=max_bytes)
        for picture in pictures:
            picture.damage = damage
        return pictures

    def verify(self, *, progress: Progress | None = None) -> list[Damage]:
        """Decodes every row; what is wrong with each tile, at most 256 of them."""
        return list(self._call(self._lib.tp_page_verify, progress=progress)[1])

    def prepare(self, *, progress: Progress | None = None, max_bytes: int = 0) -> bool:
        """Lays the page out anew in memory, once, so that every view costs what it shows and not what lies above it:
        for viewers. A damaged page stays as it is: false."""
        return self._call(self._lib.tp_page_prepare, progress=progress, max_bytes=max_bytes)[0] == 0

    def __repr__(self) -> str:
        return f"<tilepress.Page {self.width} x {self.height}>"

    def _picture(self, view: View, record: plain.ViewRecord, max_pixels: int) -> Picture:
        left, top, width, height = view.rect or (0, 0, self.width, self.height)
        orientation = view.orientation or self.orientation
        if view.size:
            out_width, out_height = view.size
        else:
            scale = 1 if view.scale is None else view.scale
            out_width, out_height = max(1, round(width * scale)), max(1, round(height * scale))
            if orientation > 4:
                out_width, out_height = out_height, out_width
        if min(left, top, width, height) < 0 or min(out_width, out_height) < 1 or left + width > self.width or (
                top + height > self.height):
            raise ArgumentError("a rectangle outside the page, or a size of 0")
        if max_pixels and out_width * out_height > max_pixels:
            check(-3)
        form = _choice(FORMATS, view.format)
        try:
            picture = picture_type(out_width, out_height, view.format)()
        except (MemoryError, OverflowError):
            check(-2)
            raise
        record.__init__(ctypes.sizeof(record), left, top, width, height, out_width, out_height,  # type: ignore[misc]
                        _choice(_MODES, view.mode), form, orientation, int(view.invert), view.ink, view.paper,
                        ctypes.addressof(picture), ctypes.sizeof(picture) // out_height)  # type: ignore[arg-type]
        return picture

    def _call(self, function: Callable[..., int], *arguments: object, on_damage: str = "fail",
              progress: Progress | None = None, max_pixels: int = 0,
              max_bytes: int = 0) -> tuple[int, tuple[Damage, ...]]:
        damage = (plain.DamageRecord * _RECORDS)()
        raised: list[BaseException] = []

        def report(_user: object, done: int, total: int) -> int:
            try:
                return bool(progress and progress(done, total))
            except BaseException as error:  # a callback has no caller to raise it in
                raised.append(error)
                return 1

        options = plain.Options(ctypes.sizeof(plain.Options), _choice(_POLICIES, on_damage),
                                plain.Limits(max_pixels, max_bytes),
                                plain.ProgressCallback(report) if progress else plain.ProgressCallback(), None, damage,
                                _RECORDS)
        status = function(self._handle, *arguments, options)
        if raised:
            raise raised[0]
        found = [Damage(r.tile, r.row, r.byte, Kind(r.kind), r.column, r.top)
                 for r in damage[:min(options.damage_count, _RECORDS)]]
        check(status, found)
        return status, tuple(found)


def _release(lib: ctypes.CDLL, handle: ctypes.c_void_p, _tiles: object) -> None:
    lib.tp_page_release(handle)
