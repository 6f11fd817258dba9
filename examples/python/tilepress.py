"""Tilepress's plain functions, by ctypes.

    import tilepress
    lib = tilepress.load("libtilepress.so.0")
    lib.cit_enable_decode_gr4()

Python's own memory is none that the library may release: what it takes over
must come from MemAllocate, and what it returns goes back with MemFree.
"""

import ctypes
from ctypes import POINTER, c_double, c_int, c_int16, c_int32, c_size_t, c_uint8, c_uint16, c_uint32, c_void_p


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

# Name: (result, arguments)
FUNCTIONS = {
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


def load(path):
    """The library at `path`, every function declared."""
    library = ctypes.CDLL(path)  # cdecl
    for name, (result, arguments) in FUNCTIONS.items():
        function = getattr(library, name)
        function.restype, function.argtypes = result, arguments
    return library
