"""gdb pretty-printers for the library's values: `print v` shows ZR_VT_I4 5 instead of sixteen bytes.

gdb loads this file automatically if the library is installed under /usr or below a folder in gdb's auto-load path.
Otherwise load it with `source zrcore_gdb.py`. It reads memory and calls no function, so it also works on core files.
The installed file contains the decoder. In the source tree the decoder is a file of its own beside this one.
"""

import os  # not in the installed file
import sys  # not in the installed file

import gdb
import gdb.printing

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))  # not in the installed file
from zrcore_decoder import INVALID, TYPES, describe, known_type  # not in the installed file


def read_memory(address, size):
    return bytes(gdb.selected_inferior().read_memory(address, size))


def bytes_of(value):
    """The bytes of a value, which need not have an address: it can be the result of a function."""
    kind = value.type.strip_typedefs()
    if kind.code == gdb.TYPE_CODE_ARRAY:
        first, last = kind.range()
        return b"".join(bytes_of(value[index]) for index in range(first, last + 1))
    if kind.code not in (gdb.TYPE_CODE_STRUCT, gdb.TYPE_CODE_UNION):
        return (int(value) & (1 << 8 * kind.sizeof) - 1).to_bytes(kind.sizeof, "little")
    data = bytearray(kind.sizeof)
    # The first field of ZRVARIANTVALUE has all its bytes. Static members and methods have no place.
    for field in kind.fields()[:1] if kind.code == gdb.TYPE_CODE_UNION else kind.fields():
        if hasattr(field, "bitpos"):
            part = bytes_of(value[field])
            data[field.bitpos // 8:field.bitpos // 8 + len(part)] = part
    return bytes(data)


def printable(text):
    """Replaces characters that the terminal doesn't have: gdb would print an error instead of the text."""
    try:
        charset = gdb.host_charset()
        return text.encode(charset, "backslashreplace").decode(charset)
    except (AttributeError, LookupError):   # gdb 11 and older; a charset that Python doesn't know
        return text.encode("ascii", "backslashreplace").decode()


class Printer:
    def __init__(self, name, value):
        self.name = name
        self.value = value

    def to_string(self):
        try:
            return printable(describe(self.name, bytes_of(self.value), read_memory))
        except gdb.error:   # such as a variable that was optimised out
            return INVALID


class Printers(gdb.printing.PrettyPrinter):
    def __init__(self):
        super().__init__("zrcore", [gdb.printing.SubPrettyPrinter(name) for name in TYPES])

    def __call__(self, value):
        if value.type.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
            value = value.referenced_value()
        kind, name = value.type, known_type(value.type.name or "")
        while name is None and kind.code == gdb.TYPE_CODE_TYPEDEF:
            kind = kind.target()
            name = known_type(kind.name or "")
        return Printer(name, value) if name is not None else None


gdb.printing.register_pretty_printer(gdb.current_objfile(), Printers(), replace=True)
