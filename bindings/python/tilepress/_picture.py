"""Pictures: pixels that other packages take without a copy."""

from __future__ import annotations

import ctypes
import functools
from typing import TYPE_CHECKING, Any

if TYPE_CHECKING:
    from PIL.Image import Image

    from tilepress._errors import Damage

FORMATS = {"bits": 0, "grey": 1, "rgba": 2, "bgra": 3}


class Picture:
    """Pixels of a page. An object with the buffer protocol: `numpy.asarray(picture)` and `memoryview(picture)` share
    its bytes, whose shape is (height, width) in format "grey" (0 is ink, 255 paper), (height, width, 4) in "rgba" and
    "bgra", and (height, (width + 7) // 8) in "bits" (1 is ink, the highest bit first). `PIL.Image.fromarray(picture)`
    takes it likewise, but for "bits"; `picture.image()` takes every format.
    """

    width: int
    height: int
    format: str  #: "bits", "grey", "rgba" or "bgra"
    damage: tuple[Damage, ...]  #: what could not be decoded and was filled in, where the caller allowed that

    @property
    def size(self) -> tuple[int, int]:
        """Width and height in pixels."""
        return self.width, self.height

    @property
    def __array_interface__(self) -> dict[str, Any]:
        return {"version": 3, "typestr": "|u1", "shape": _shape(self.width, self.height, self.format),
                "data": (ctypes.addressof(self), False)}  # type: ignore[arg-type]

    def tobytes(self) -> bytes:
        """A copy of all rows."""
        return bytes(self)  # type: ignore[call-overload]

    def image(self) -> Image:
        """A PIL image, which shares the pixels in the formats "grey" and "rgba" and copies them in the others."""
        from PIL import Image

        mode, raw = {"bits": ("1", "1;I"), "grey": ("L", "L"), "rgba": ("RGBA", "RGBA"),
                     "bgra": ("RGBA", "BGRA")}[self.format]
        return Image.frombuffer(mode, self.size, self, "raw", raw, 0, 1)

    def __repr__(self) -> str:
        return f"<tilepress.Picture {self.width} x {self.height}, {self.format}>"


def _shape(width: int, height: int, form: str) -> tuple[int, ...]:
    if form == "bits":
        return height, (width + 7) // 8
    return (height, width) if form == "grey" else (height, width, 4)


@functools.lru_cache(maxsize=64)
def picture_type(width: int, height: int, form: str) -> type[Picture]:
    """The class of pictures of one size. A ctypes array is what has the buffer protocol before Python 3.12."""
    array: Any = ctypes.c_uint8
    for extent in reversed(_shape(width, height, form)):
        array = array * extent
    fields = {"width": width, "height": height, "format": form, "damage": ()}
    return type("Picture", (Picture, array), fields)
