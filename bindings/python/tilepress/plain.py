"""The library's plain functions as they are, by ctypes; the rest of the package stands on them.

    from tilepress import plain
    lib = plain.library()
    lib.cit_enable_decode_gr4()

Python's own memory is none that the library may release: what it takes over
must come from MemAllocate, and what it returns goes back with MemFree.
"""

from __future__ import annotations

import ctypes
import functools
import os
import pathlib
import sys
from ctypes import (POINTER, c_char_p, c_double, c_int, c_int16, c_int32, c_size_t, c_ssize_t, c_uint8, c_uint16,
                    c_uint32, c_uint64, c_void_p)


class ColorMapEntry(ctypes.Structure):
    _fields_ = [("red", c_int32), ("green", c_int32), ("blue", c_int32)]


class ColorTable(ctypes.Structure):
    _fields_ = [("capacity", c_int32), ("count", c_int32), ("maximum", c_int32), ("entries", POINTER(ColorMapEntry))]


class ColorXfm(ctypes.Structure):
    _fields_ = [("key", c_int32), ("count", c_int32), ("index", POINTER(c_int32))]


class SysParms(ctypes.Structure):
    _fields_ = [("reserved", c_uint16), ("byteOrder", c_uint16)]


class ImgHandle(ctypes.Structure):
    """An image. Its operations are addresses: make them callable with an *Op type below."""


Handle = POINTER(ImgHandle)
_words = POINTER(c_int32)

Img1CreateOp = ctypes.CFUNCTYPE(c_uint32, Handle, c_uint32, c_uint32, c_uint32, c_void_p)
FreeOp = ctypes.CFUNCTYPE(c_void_p, POINTER(Handle), c_void_p)
RenderOp = ctypes.CFUNCTYPE(Handle, Handle, c_uint32, c_uint32, c_void_p, c_uint32, c_uint32, c_uint32)
RotateOp = ctypes.CFUNCTYPE(Handle, Handle, c_double)
MirrorOp = ctypes.CFUNCTYPE(Handle, Handle, c_int)
CloneOp = ctypes.CFUNCTYPE(Handle, Handle)

ImgHandle._fields_ = [("type", c_uint32), ("header", c_void_p), ("data", c_void_p)] + [
    (name, c_void_p)
    for name in ("create free render rotate mirror subImage reserved convert getWidth getHeight "
                 "serialize deserialize clone rasOp1 rasOp2").split()]

_decode = [_words, c_int32, c_int32, POINTER(c_uint16), _words, _words, POINTER(c_uint8), _words, _words, c_int32]
_detect = [c_uint32, POINTER(c_uint8), c_int32, POINTER(c_uint32), POINTER(c_uint32)]
_encode = [_words, c_int32, _words, c_int32, POINTER(c_uint16), _words]
_strip = [POINTER(c_uint8), POINTER(POINTER(c_uint8)), c_int32, c_int32, c_int32]
_rasop1 = [Handle, c_void_p, c_uint32]
_rasop2 = [Handle, c_void_p, Handle]

# --- pages ----------------------------------------------------------------------

ProgressCallback = ctypes.CFUNCTYPE(c_int32, c_void_p, c_uint64, c_uint64)


class Limits(ctypes.Structure):
    _fields_ = [("max_pixels", c_uint64), ("max_bytes", c_uint64)]


class DamageRecord(ctypes.Structure):
    _fields_ = [("tile", c_uint32), ("row", c_uint32), ("byte", c_uint64), ("kind", c_uint32), ("column", c_uint32),
                ("top", c_uint32)]


class Options(ctypes.Structure):
    _fields_ = [("size", c_uint32), ("on_damage", c_uint32), ("limits", Limits), ("progress", ProgressCallback),
                ("user", c_void_p), ("damage", POINTER(DamageRecord)), ("damage_capacity", c_uint32),
                ("damage_count", c_uint32)]


class Coded(ctypes.Structure):
    _fields_ = [("data", c_char_p), ("size", c_size_t)]


class PageInfo(ctypes.Structure):
    _fields_ = [(name, c_uint32) for name in
                "size width height tile_width tile_height fill_order photometric flags".split()] + [("limits", Limits)]


class ViewRecord(ctypes.Structure):
    _fields_ = [(name, c_uint32) for name in ("size left top width height out_width out_height mode format orientation "
                                              "flags ink paper").split()] + [("pixels", c_void_p), ("stride", c_ssize_t)]


_options = POINTER(Options)

# Name: (result, arguments)
FUNCTIONS = {
    "tp_version": (c_uint32, []),
    "tp_status_text": (c_char_p, [c_int32]),
    "tp_alloc": (c_void_p, [c_size_t]),
    "tp_free": (None, [c_void_p]),
    "tp_page_open": (c_int32, [POINTER(PageInfo), POINTER(Coded), c_size_t, POINTER(c_void_p)]),
    "tp_page_retain": (c_void_p, [c_void_p]),
    "tp_page_release": (None, [c_void_p]),
    "tp_page_describe": (c_int32, [c_void_p, POINTER(PageInfo)]),
    "tp_page_memory": (c_uint64, [c_void_p]),
    "tp_page_prepare": (c_int32, [c_void_p, _options]),
    "tp_page_verify": (c_int32, [c_void_p, _options]),
    "tp_page_render": (c_int32, [c_void_p, POINTER(ViewRecord), c_size_t, _options]),
    "tp_reader_open": (c_int32, [c_void_p, c_uint32, c_uint32, c_uint32, c_uint32, _options, POINTER(c_void_p)]),
    "tp_reader_next": (c_int32, [c_void_p, POINTER(POINTER(c_uint32)), POINTER(c_uint32)]),
    "tp_reader_close": (None, [c_void_p]),
    "tp_encoder_open": (c_int32, [c_uint32, c_uint32, POINTER(Limits), POINTER(c_void_p)]),
    "tp_encoder_add_bits": (c_int32, [c_void_p, c_void_p, c_ssize_t, c_uint32]),
    "tp_encoder_add_changes": (c_int32, [c_void_p, POINTER(c_uint32), c_uint32]),
    "tp_encoder_finish": (c_int32, [c_void_p, POINTER(c_void_p), POINTER(c_size_t)]),
    "tp_encoder_close": (None, [c_void_p]),
    "CCITT_EnableG4Decode": (c_int32, []),
    "CCITT_DisableG4Decode": (None, []),
    "CCITT_EnableDetectChanges": (None, []),
    "CCITT_DisableDetectChanges": (None, []),
    "CCITT_EnableG4Encode": (None, []),
    "CCITT_DisableG4Encode": (None, []),
    "CCITT_G4Decode": (c_int16, _decode),
    "cit_enable_decode_gr4": (c_int16, []),
    "cit_disable_decode_gr4": (None, []),
    "cit_decode_tiff_gr4": (c_int16, _decode),
    "cit_enable_detect_changes": (None, []),
    "cit_disable_detect_changes": (None, []),
    "cit_enable_detect_changes_tmp": (None, []),
    "cit_disable_detect_changes_tmp": (None, []),
    "cit_detect_changes": (None, _detect),
    "cit_detect_changes_tmp": (None, _detect),
    "cit_enable_encode_gr4": (c_int16, []),
    "cit_disable_encode_gr4": (None, []),
    "cit_enable_encode_gr4_tmp": (c_int16, []),
    "cit_disable_encode_gr4_tmp": (None, []),
    "cit_encode_gr4": (None, _encode),
    "cit_encode_gr4_tmp": (None, _encode),
    "create_g4_tiff_strip": (c_int32, _strip),
    "create_g4_tiff_strip_tmp": (c_int32, _strip),
    "ImgNew": (Handle, [c_uint32]),
    "ImgGetWidth": (c_uint32, [Handle]),
    "ImgGetHeight": (c_uint32, [Handle]),
    "ImgSetDstRect": (Handle, [Handle, _words]),
    "ImgSetRotation": (Handle, [Handle, c_double]),
    "ImgSetMirFlag": (Handle, [Handle, c_int32]),
    "ImgTIFFG4Free": (c_void_p, [POINTER(Handle), c_void_p]),
    "TiffG4Serialize": (c_uint32, [Handle, POINTER(c_void_p), POINTER(c_uint32)]),
    "TiffG4Deserialize": (c_uint32, [POINTER(Handle), c_void_p]),
    "Img1RasOp1": (Handle, _rasop1),
    "Img8RasOp1": (Handle, _rasop1),
    "Img24RasOp1": (Handle, _rasop1),
    "Img32RasOp1": (Handle, _rasop1),
    "Img1RasOp2": (Handle, _rasop2),
    "Img8RasOp2": (Handle, _rasop2),
    "Img24RasOp2": (Handle, _rasop2),
    "Img32RasOp2": (Handle, _rasop2),
    "Img24BitColorToPixRGB": (POINTER(c_uint8), [POINTER(c_uint8), c_uint32]),
    "create_reverse_byte_table": (POINTER(c_uint8), []),
    "MemAllocate": (c_int, [c_int, c_size_t, c_int, POINTER(c_void_p)]),
    "MemSetPointer": (c_int, [c_int, c_void_p, c_void_p]),
    "MemFree": (c_int, [c_int, c_void_p]),
    "ColOpen": (POINTER(ColorTable), [c_int32, c_int32]),
    "ColGetClosestColor": (c_int, [POINTER(ColorMapEntry), POINTER(ColorTable), _words]),
    "ColOpenXfm": (POINTER(ColorXfm), [c_int32]),
    "ColMapColors": (c_int, [POINTER(ColorTable), POINTER(ColorTable), POINTER(ColorXfm)]),
    "ColCloseXfm": (None, [POINTER(POINTER(ColorXfm))]),
    "tra_swap_4": (None, [c_void_p]),
    "tra_swap_2": (None, [c_void_p]),
    "osh_get_sys_parms": (POINTER(SysParms), []),
}


def load(path: str | os.PathLike[str]) -> ctypes.CDLL:
    """The library at `path`, every function declared."""
    loaded = ctypes.CDLL(os.fspath(path))  # cdecl; the interpreter's lock is released during each call
    for name, (result, arguments) in FUNCTIONS.items():
        function = getattr(loaded, name)
        function.restype, function.argtypes = result, arguments
    return loaded


@functools.lru_cache(maxsize=None)
def library() -> ctypes.CDLL:
    """The library that TILEPRESS_LIBRARY names, else the one within this package, else the system's."""
    named = os.environ.get("TILEPRESS_LIBRARY")
    if named:
        return load(named)
    within = pathlib.Path(__file__).with_name("tilepress.dll" if sys.platform == "win32" else "libtilepress.so")
    return load(within if within.exists() else "tilepress.dll" if sys.platform == "win32" else "libtilepress.so.0")
