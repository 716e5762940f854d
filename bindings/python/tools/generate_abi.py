#!/usr/bin/env python3
"""Writes zrcore/_abi.py and zrcore/_host_abi.py from the tables of the binary interfaces.

  tools/generate_abi.py           writes the files
  tools/generate_abi.py --check   writes nothing; exit status 1 if a file differs

Nothing of the binary interface is typed by hand in this package. Handles, interface pointers and texts become
ctypes.c_void_p, so a caller of zrcore.raw passes and receives addresses. Pointers to records and to numbers keep their
type, so ctypes refuses a wrong variable. A const char pointer becomes c_char_p and reads bytes.
"""
import argparse
import pathlib
import re
import sys

TYPE = '''"""The type tags of values: the constants ZR_VT_* of the C headers.

    I1, I2, I4, I8; UI1 to UI8  integers of so many bytes, with and without a sign
    BYTE, WORD, DWORD, QWORD    as UI1, UI2, UI4, UI8
    R4, R8                      binary32, binary64
    DATETIME, TIME              64-bit counts of 100 ns
    CY                          a 64-bit count of a unit that the programs agree on
    CHAR32, OPAQUE              a code point; 64 bits that don't convert
    STR, BLOB, UUID, REF, SREF  texts, bytes, identifiers, references
    UNKNOWN, DISPATCH           objects
    VARIANT                     the type of arrays whose elements are variants
    """'''
CODE = '''"""The result codes: the constants ZR_R_* of the C headers. A negative code is a failure."""'''

PACKAGE = pathlib.Path(__file__).resolve().parent.parent
TABLES = PACKAGE.parent.parent / "abi"
HEADER = PACKAGE.parent.parent / "include" / "zrcore" / "base.h"

NUMBERS = {
    "int8_t": "c_int8", "int16_t": "c_int16", "int32_t": "c_int32", "int64_t": "c_int64",
    "uint8_t": "c_uint8", "uint16_t": "c_uint16", "uint32_t": "c_uint32", "uint64_t": "c_uint64",
    "float": "c_float", "double": "c_double", "bool": "c_bool",
}
# Members of these types are read as int or float; the others have an annotation of their own.
FLOATS = ("c_float", "c_double")
# WCHAR is char16_t here and wchar_t on Windows; char and char32_t texts are memory of the caller. All are addresses.
OPAQUE = {"void", "WCHAR", "char", "char32_t"}


class Table:
    """The rows of a table, by kind, with the types that they name, also those of the table on which it is based."""

    def __init__(self, name, base=None):
        self.rows = {}
        for line in (TABLES / name).read_text(encoding="utf-8").splitlines():
            if line and not line.startswith("#"):
                _, kind, name, *rest = line.split(None, 3)
                self.rows.setdefault(kind, []).append((name, rest[0] if rest else ""))
        self.aliases, self.records, self.interfaces = (
            {**(getattr(base, part) if base else {}), **dict(self.rows.get(kind, []))}
            for part, kind in (("aliases", "type"), ("records", "record"), ("interfaces", "interface")))

    def ctype(self, name):
        """The ctypes expression for a type of the table; None for void."""
        name = name.strip().removesuffix(" const")
        constant = name.startswith("const ")
        name = name[6:] if constant else name
        if name == "void":
            return "None"
        if name in NUMBERS:
            return NUMBERS[name]
        if name in self.records:
            return name
        if name.endswith("*"):
            target = name[:-1]
            if target == "char" and constant:
                return "c_char_p"
            if target in OPAQUE or target in self.interfaces or target.startswith(("tag", "ZrSafeArrayDescriptor")):
                return "c_void_p"
            if target == "ZRCRITICALSECTION":   # the address of the caller's handle
                return "POINTER(c_void_p)"
            return f"POINTER({self.ctype(target)})"
        found = re.fullmatch(r"(.+)\[(\d+)\]", name)
        if found:
            return f"{self.ctype(found[1])} * {found[2]}"
        alias = self.aliases[name]
        found = re.fullmatch(r"(.+)\(\*\)\((.*)\)", alias)
        if found:
            return "CFUNCTYPE(" + ", ".join([self.ctype(found[1])] + self.arguments(found[2])) + ")"
        return self.ctype(alias)

    def arguments(self, text):
        return [self.ctype(part) for part in text.split(",")] if text.strip() else []

    def signature(self, text):
        """The result type and the argument types of "RESULT(ARGUMENTS) noexcept"."""
        found = re.fullmatch(r"(.+?)\((.*)\)(?: noexcept)?", text)
        arguments = self.arguments(found[2])
        return f"({self.ctype(found[1])}, ({', '.join(arguments)}{',' if len(arguments) == 1 else ''}))"


def annotation(ctype):
    if ctype in FLOATS:
        return "float"
    if ctype == "c_void_p":
        return "Optional[int]"
    if ctype.startswith("c_") and "*" not in ctype:
        return "int"
    return "Any" if not ctype.isidentifier() else ctype


def number(text):
    """The value of a constant; None if it is not a number."""
    words = text.split()
    if len(words) != 2:
        return None
    value = int(words[1], 0)
    return value - (1 << 32) if words[0] == "ZRRESULT" and value >= 1 << 31 else value


def version():
    """The version of the library, which the table doesn't contain."""
    return ".".join(re.findall(r"^#define ZRCORE_VERSION_\w+ (\d+)", HEADER.read_text(encoding="utf-8"), re.MULTILINE))


def soname(table):
    return [f'SONAME = "{table.rows["soname"][0][0]}"', ""]


def constants(table):
    values = [(name, number(rest)) for name, rest in table.rows["constant"]]
    return [f"{name} = {value}" for name, value in values if value is not None]


def records(table):
    lines = []
    for name, rest in table.rows["record"]:
        if name == "CZrException":   # a C++ exception, which no record of a caller contains
            continue
        kind = "Union" if rest.startswith("union") else "Structure"
        fields = [(field.split(".")[1], table.ctype(row.split(None, 1)[1]))
                  for field, row in table.rows["field"] if field.split(".")[0] == name]
        lines.append(f"class {name}({kind}):")
        lines += [f"    {field}: {annotation(ctype)}" for field, ctype in fields]
        lines.append("    _fields_ = [")
        lines += [f'        ("{field}", {ctype}),' for field, ctype in fields]
        lines += ["    ]", "", ""]
    return lines


def functions(table):
    return ["# The result type and the argument types of each export.",
            "FUNCTIONS: Dict[str, Tuple[Any, Tuple[Any, ...]]] = {",
            *(f'    "{name}": {table.signature(row)},' for name, row in table.rows["function"]), "}", ""]


def generate_host(table):
    return "\n".join([
        '"""The binary interface of the host kit: constants, records and functions.',
        "", "Generated by tools/generate_abi.py from the table of the binary interface. Do not edit.", '"""',
        "from ctypes import POINTER, Structure, c_int32, c_uint32, c_void_p",
        "from typing import Any, Dict, Optional, Tuple", "", "from ._abi import ZRUUID", "",
        *soname(table), *constants(table), "", "", *records(table), *functions(table)])


def generate(table):
    lines = ['"""The binary interface of the library: constants, records, interfaces and functions.',
             "",
             "Generated by tools/generate_abi.py from the table of the binary interface. Do not edit.",
             '"""',
             "import enum",
             "from ctypes import (CFUNCTYPE, POINTER, Structure, Union, " + ", ".join(
                 sorted({*NUMBERS.values(), "c_void_p", "c_char_p"})) + ")",
             "from typing import Any, Dict, Optional, Tuple",
             "",
             f'VERSION = "{version()}"', *soname(table), *constants(table)]
    words = dict(table.rows["constant"])["ZR_VARIANT_INIT"]
    lines.append(f"VARIANT_MARKERS = ({', '.join(re.findall('0x[0-9A-F]{4}', words))})")
    lines += ["", "", "class Type(enum.IntEnum):", f"    {TYPE}", ""]
    lines += [f"    {name[len('ZR_VT_'):]} = {value}" for name, value in table.rows["tag"]]
    lines += ["", "", "class Code(enum.IntEnum):", f"    {CODE}", ""]
    for name, value in table.rows["code"]:
        bits = int(value, 0)
        lines.append(f"    {name[len('ZR_R_'):]} = {bits - (1 << 32) if bits >= 1 << 31 else bits}")
    lines += ["", "", *records(table)]
    lines.append("# For each interface, its base and its own operations in table order: name, result and arguments.")
    lines.append("INTERFACES: Dict[str, Tuple[Optional[str], Tuple[Tuple[str, Any, Any], ...]]] = {")
    for name, rest in table.rows["interface"]:
        base = re.match(r"extends (\w+)", rest)
        lines.append(f'    "{name}": ({repr(base[1]) if base else None}, (')
        for slot, row in table.rows["slot"]:
            owner, operation = slot.split(".")
            if owner == name:
                lines.append(f'        ("{operation}", *{table.signature(row.split(None, 1)[1])}),')
        lines.append("    )),")
    lines += ["}", "", *functions(table)]
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--check", action="store_true")
    arguments = parser.parse_args()
    table = Table("zrcore.txt")
    texts = {"_abi.py": generate(table), "_host_abi.py": generate_host(Table("zrhost.txt", table))}
    for name, text in texts.items():
        output = PACKAGE / "zrcore" / name
        if not arguments.check:
            output.write_text(text, encoding="utf-8")
        elif not output.exists() or output.read_text(encoding="utf-8") != text:
            sys.exit(f"{output} differs from the table in {TABLES}: run tools/generate_abi.py")


if __name__ == "__main__":
    main()
