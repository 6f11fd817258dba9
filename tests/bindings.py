#!/usr/bin/env python3
"""Compares the declarations for other languages with the public headers: every
plain function is there, with as many arguments; for Python also of the same kinds.
"""

import ctypes
import importlib.util
import pathlib
import re
import sys

root = pathlib.Path(__file__).resolve().parent.parent
sys.dont_write_bytecode = True
spec = importlib.util.spec_from_file_location("plain", root / "bindings/python/tilepress/plain.py")
plain = importlib.util.module_from_spec(spec)
spec.loader.exec_module(plain)

KINDS = {"int16_t": ctypes.c_int16, "int32_t": ctypes.c_int32, "uint32_t": ctypes.c_uint32, "int": ctypes.c_int,
         "uint64_t": ctypes.c_uint64, "size_t": ctypes.c_size_t, "ptrdiff_t": ctypes.c_ssize_t,
         "tp_status": ctypes.c_int32, "double": ctypes.c_double, "ImgErrResult": ctypes.c_int32, "void": None}


def kind(declaration):
    """The ctypes type of a C type with or without a name behind it; any pointer is "pointer"."""
    if "*" in declaration:
        return "pointer"
    return KINDS[declaration.replace("const ", "").split()[0]]


def kind_of_ctypes(declared):
    pointer = declared in (ctypes.c_void_p, ctypes.c_char_p) or (declared is not None and hasattr(declared, "contents"))
    return "pointer" if pointer else declared


def split(arguments, separator=","):
    return [] if arguments.strip() in ("", "void") else arguments.split(separator)


prototypes = {}
for header in (root / "include/tilepress").glob("*.h"):
    for result, name, arguments in re.findall(r"^TILEPRESS_API ([\w *]+?)\s*TILEPRESS_CALL\s+(\w+)\(([^)]*)\)",
                                              header.read_text(), re.M):
        prototypes[name] = kind(result), [kind(a) for a in split(arguments)]

faults = []
listed = (root / "src/dll/plain_names.txt").read_text().split()
if sorted(listed) != sorted(prototypes):
    faults.append(f"headers and list differ: {set(listed) ^ set(prototypes)}")

for name, (result, arguments) in prototypes.items():
    declared = plain.FUNCTIONS.get(name)
    if not declared or (kind_of_ctypes(declared[0]), [kind_of_ctypes(a) for a in declared[1]]) != (result, arguments):
        faults.append(f"Python: {name}")

csharp = (root / "bindings/csharp/Tilepress.cs").read_text()
found = {name: len(split(arguments.replace("[In]", "")))
         for name, arguments in re.findall(r"static extern \w+ (\w+)\(([^)]*)\)", csharp)}
pascal = (root / "bindings/pascal/tilepress.pas").read_text()
found_pascal = {name: sum(len(group.split(":")[0].split(",")) for group in split(arguments, ";"))
                for name, arguments in re.findall(r"^(?:function|procedure) (\w+)(?:\(([^)]*)\))?[:;]", pascal, re.M)}
expected = {name: len(arguments) for name, (_, arguments) in prototypes.items()}
for language, counts in (("C#", found), ("Pascal", found_pascal)):
    faults += [f"{language}: {name}" for name in sorted(set(expected.items()) ^ set(counts.items()))]

for fault in faults:
    print(fault, file=sys.stderr)
sys.exit(bool(faults) or not prototypes)
