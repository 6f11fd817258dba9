"""A picture into a Group 4 strip and back; then as a handle, mirrored: the plain functions at work."""

import ctypes
import sys

from tilepress import plain

WIDTH, ROWS = 16, [0b0000000110000000, 0b0000001111000000, 0b0000011111100000, 0b0000111111110000]


def encode(lib, pixels):
    strip = ctypes.POINTER(ctypes.c_uint8)()
    rows = (ctypes.c_uint8 * (len(pixels) + 1))(*pixels)  # change detection borrows the byte after a row
    length = lib.create_g4_tiff_strip(rows, ctypes.byref(strip), WIDTH, WIDTH // 8, len(ROWS))
    coded = bytes(strip[:length])
    lib.MemFree(0, strip)
    return coded


def decode(lib, coded):
    coded += b"\0" * (len(coded) % 2)
    words = (ctypes.c_uint16 * (len(coded) // 2))(*(high << 8 | low for high, low in zip(coded[::2], coded[1::2])))
    row_type = ctypes.c_int32 * (WIDTH + 4)
    reference, coding = row_type(0, WIDTH + 1, WIDTH + 1, WIDTH + 1), row_type()
    count, byte, bit = ctypes.c_int32(4), ctypes.c_int32(0), ctypes.c_int32(1)
    for _ in ROWS:
        if lib.cit_decode_tiff_gr4(reference, count.value, WIDTH, words, byte, bit, None, coding, count, len(coded)):
            raise ValueError("the strip is damaged")
        edges = coding[1:count.value]
        yield sum(1 << WIDTH - column for start, end in zip(edges[::2], edges[1::2]) for column in range(start, end))
        reference, coding = coding, reference


def mirrored(lib, pixels):
    image = lib.ImgNew(1)
    create = plain.Img1CreateOp(image.contents.create)
    if not create(image, WIDTH, len(ROWS), 8, None):
        raise MemoryError
    ctypes.memmove(image.contents.data, pixels, len(pixels))
    other = plain.MirrorOp(image.contents.mirror)(image, 1)
    result = ctypes.string_at(other.contents.data, len(pixels))
    for handle in (image, other):
        plain.FreeOp(handle.contents.free)(ctypes.byref(handle), None)
    return result


def main():
    lib = plain.library()
    lib.cit_enable_detect_changes()
    if not lib.cit_enable_encode_gr4() or not lib.cit_enable_decode_gr4():
        sys.exit("out of memory")
    pixels = b"".join(row.to_bytes(2, "big") for row in ROWS)
    coded = encode(lib, pixels)
    decoded = list(decode(lib, coded))
    print(f"{len(pixels)} bytes as {len(coded)}:")
    for row in decoded:
        print(f"{row:0{WIDTH}b}".replace("0", ".").replace("1", "#"))
    turned = mirrored(lib, pixels)
    if decoded != ROWS or turned != b"".join(row.to_bytes(2, "big") for row in ROWS[::-1]):
        sys.exit("the picture came back changed")


main()
