"""Coding pixels."""

from __future__ import annotations

import ctypes
from typing import Any

from tilepress import plain
from tilepress._errors import ArgumentError, check


def encode(pixels: Any, width: int | None = None, *, fill_order: int = 1) -> bytes:
    """Codes pixels as one Group 4 strip, end-of-block included, as files have it.

    Args:
        pixels: rows in which 1 is ink (coded black): a numpy array of booleans of two dimensions, a Picture in the
            format "bits", a PIL image of mode "1" (whose black is ink), or, with `width`, any buffer of packed rows of
            (width + 7) // 8 bytes, the highest bit first.
        width: pixels in a row, of packed rows.
        fill_order: 1 puts the first bit into the highest of a byte, 2 into the lowest.

    Raises:
        ArgumentError: other pixels, or no whole rows of them.
    """
    rows, width = _packed_rows(pixels, width)
    row_bytes = (width + 7) // 8
    if not rows or len(rows) % row_bytes:
        raise ArgumentError("pixels are whole rows, at least one")
    lib = plain.library()
    encoder, data, size = ctypes.c_void_p(), ctypes.c_void_p(), ctypes.c_size_t()
    check(lib.tp_encoder_open(width, fill_order, None, encoder))
    try:
        check(lib.tp_encoder_add_bits(encoder, rows, row_bytes, len(rows) // row_bytes))
        check(lib.tp_encoder_finish(encoder, data, size))
        return ctypes.string_at(data, size.value)
    finally:
        lib.tp_encoder_close(encoder)


def _packed_rows(pixels: Any, width: int | None) -> tuple[bytes, int]:
    if width is not None:
        if not 0 < width < 2**32:
            raise ArgumentError("a width of 0, or one of more than 32 bits")
        return bytes(pixels), width
    if getattr(pixels, "format", None) == "bits":  # a Picture
        return pixels.tobytes(), pixels.width
    if getattr(pixels, "mode", None) == "1":  # a PIL image
        return pixels.tobytes("raw", "1;I"), pixels.width
    if getattr(pixels, "ndim", None) == 2 and str(getattr(pixels, "dtype", "")) == "bool":
        import numpy

        return numpy.packbits(pixels, axis=1).tobytes(), pixels.shape[1]
    raise ArgumentError("pixels are booleans in two dimensions, packed rows with a width, or an image of one bit")
