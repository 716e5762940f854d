"""gdb pretty-printers for the library's values: `print v` shows ZR_VT_I4 5 instead of sixteen bytes.

gdb loads this file automatically if the library is installed under /usr or below a folder in gdb's auto-load path.
Otherwise load it with `source zrcore_gdb.py`. It reads memory and calls no function, so it also works on core files.
"""

import datetime
import json
import uuid

import gdb
import gdb.printing

# For each tag: its name, and the member of ZRVARIANTVALUE that contains the value.
TAGS = {
    0: ("EMPTY", None), 1: ("BOOL", "boolean"), 2: ("I1", "i1"), 3: ("I2", "i2"), 4: ("I4", "i4"), 5: ("I8", "i8"),
    6: ("UI1", "ui1"), 7: ("UI2", "ui2"), 8: ("UI4", "ui4"), 9: ("UI8", "ui8"), 10: ("R4", "r4"), 11: ("R8", "r8"),
    12: ("TIME", "time"), 13: ("DATETIME", "dateTime"), 15: ("CY", "cy"), 17: ("BYTE", "ui1"), 18: ("WORD", "ui2"),
    19: ("DWORD", "ui4"), 20: ("QWORD", "ui8"), 21: ("BLOB", "blob"), 25: ("UNKNOWN", "unknown"),
    26: ("OPAQUE", "ui8"), 27: ("CHAR32", "char32"), 48: ("VARIANT", "address"), 49: ("UUID", "uuid"),
    50: ("STR", "string"), 51: ("REF", "ref"), 52: ("SREF", "sref"), 53: ("DISPATCH", "dispatch"),
}
ARRAY, BYREF, TYPE_MASK = 0x2000, 0x4000, 0x0FFF
# The names of the failure codes from 0x80000000 on, in order; "-" is a code without a name.
FAILURES = """FAILED NOT_SUPPORTED CANCELLED TIMEOUT INVALID_ARGUMENTS ACCESS_DENIED INVALID_POINTER FILE_NOT_FOUND
NO_INIT NO_INTERFACE INVALID_OBJECT_STATE UNEXPECTED EXISTS ABANDONED REQUEST_ABORTED UNKNOWN_IDENTIFIER
INCONSISTENT_CONFIGURATION REQUEST_REJECTED SUBSCRIPTION_LOST NOT_IMPLEMENTED EMPTY_VALUE NO_AGGREGATION
CONNECTION_LOST INVALID_SUBSCRIPTION INVALID_SYSTEM INVALID_CREF INVALID_OTYPE INVALID_LANGUAGE NOT_EXISTING NO_MEMORY
- - ALREADY_REGISTERED CLASS_NOT_REGISTERED""".split()
RESULTS = {0: "OK", 0xCA: "SAME_VALUE", **{0x80000000 + at: name for at, name in enumerate(FAILURES) if name != "-"}}
RECORDS = {"UUID": "ZRUUID", "VARIANT": "ZRVARIANT"}  # stored in arrays by value, not by address
MOST_ELEMENTS = 20


def member_type(name):
    return next(f.type for f in gdb.lookup_type("ZRVARIANTVALUE").strip_typedefs().fields() if f.name == name)


def at(address, value_type):
    return gdb.Value(int(address)).cast(value_type.pointer()).dereference()


def word(address, type_name):
    return int(at(address, gdb.lookup_type(type_name)))


def shown(value):
    """Formats a value. A pointer to a record is followed, and a one-byte integer is a number, not a character."""
    kind = value.type.strip_typedefs()
    if kind.code == gdb.TYPE_CODE_INT and kind.sizeof == 1:
        return str(int(value))
    if kind.code == gdb.TYPE_CODE_PTR and kind.target().name in ("ZRUUID", "ZRREF", "ZRSREF") and int(value) != 0:
        return shown(value.dereference())
    return value.format_string()


class Printer:
    """Base class: stores the value. Each subclass formats it in to_string."""

    def __init__(self, value):
        self.value = value


class StringPrinter(Printer):
    """A ZRSTR, with all code units that its header counts, including zeros."""

    def to_string(self):
        if int(self.value) == 0:
            return "null"
        length = word(int(self.value) - 4, "uint32_t") // 2 - 1
        text = self.value.string("utf-16-le", "surrogatepass", length) if length > 0 else ""
        return json.dumps(text, ensure_ascii=False)


class UuidPrinter(Printer):
    """A ZRUUID in braces and capital letters."""

    def to_string(self):
        fields = [int(self.value[name]) for name in ("data1", "data2", "data3")]
        rest = bytes(int(self.value["data4"][i]) for i in range(8))
        return "{%s}" % str(uuid.UUID(fields=(*fields, *rest[:2], int.from_bytes(rest[2:], "big")))).upper()


class RefPrinter(Printer):
    """A ZRREF as its six numbers, separated by points."""

    def to_string(self):
        return ".".join(str(int(self.value["words"][i])) for i in range(6))


class SrefPrinter(Printer):
    """A ZRSREF: its reference and its text."""

    def to_string(self):
        ref = shown(self.value["ref"]) if int(self.value["ref"]) != 0 else "null"
        return f"{{ref {ref}, text {shown(self.value['text'])}}}"


class ResultPrinter(Printer):
    """A ZRRESULT: the name of the code if it has one, and its number."""

    def to_string(self):
        code = int(self.value) & 0xFFFFFFFF
        return f"ZR_R_{RESULTS[code]} (0x{code:08X})" if code in RESULTS else f"0x{code:08X}"


class TimeSpanPrinter(Printer):
    """A ZRTIMESPAN: the count of 100 ns ticks, and the duration as days, hours, minutes and seconds."""

    def to_string(self):
        count = int(self.value)
        seconds, ticks = divmod(abs(count), 10_000_000)
        days, seconds = divmod(seconds, 86400)
        clock = f"{seconds // 3600:02d}:{seconds // 60 % 60:02d}:{seconds % 60:02d}.{ticks:07d}"
        return f"{count} ({'-' if count < 0 else ''}{f'{days}.' if days else ''}{clock})"


class DateTimePrinter(Printer):
    """A ZRDATETIME: the count of 100 ns ticks since 1601, and the date and time if Python can represent it."""

    def to_string(self):
        count = int(self.value)
        try:
            time = datetime.datetime(1601, 1, 1) + datetime.timedelta(microseconds=count // 10)
        except OverflowError:
            return str(count)
        return f"{count} ({time:%Y-%m-%d %H:%M:%S}.{count % 10_000_000:07d})"


class ArrayPrinter(Printer):
    """A ZRSAFEARRAY: the element type, the number of elements per dimension, and the first elements."""

    def to_string(self):
        array = int(self.value)
        if array == 0:
            return "null"
        # The layout of the descriptor: dimensions, element count, tag; owner; data; a pointer to the bounds, each of
        # which is an element count and a lower bound.
        dimensions, count = word(array, "uint32_t"), word(array + 4, "uint32_t")
        data, bounds = word(array + 24, "uint64_t"), word(array + 32, "uint64_t")
        name, member = TAGS.get(word(array + 8, "uint16_t"), ("?", None))
        counts = "".join(f"[{word(bounds + 8 * i, 'uint32_t')}]" for i in range(dimensions))
        if member is None or data == 0:
            return f"ZR_VT_{name}{counts}"
        element = gdb.lookup_type(RECORDS[name]) if name in RECORDS else member_type(member)
        some = [shown(at(data + i * element.sizeof, element)) for i in range(min(count, MOST_ELEMENTS))]
        return f"ZR_VT_{name}{counts} {{{', '.join(some)}{', ...' if count > MOST_ELEMENTS else ''}}}"


class VariantPrinter(Printer):
    """A ZRVARIANT: its tag and its value. A value by reference is read through its address."""

    def to_string(self):
        tag_word = int(self.value["Type"])
        value = self.value["Value"]
        name, member = TAGS.get(tag_word & TYPE_MASK, (f"{tag_word & TYPE_MASK} (not assigned)", None))
        if tag_word & ARRAY:
            member = "array"
        if member is None:
            return f"ZR_VT_{name}"
        if not tag_word & BYREF:
            return shown(value[member]) if tag_word & ARRAY else f"ZR_VT_{name} {shown(value[member])}"
        address = int(value["address"])
        if address == 0:
            return f"ZR_VT_{name} by reference, null"
        target = gdb.lookup_type("ZRVARIANT") if member == "address" else member_type(member)
        return f"ZR_VT_{name} by reference, {shown(at(address, target))}"


def printers():
    collection = gdb.printing.RegexpCollectionPrettyPrinter("zrcore")
    for type_name, printer in (("tagZRVARIANT", VariantPrinter), ("ZRSTR", StringPrinter), ("tagZRUUID", UuidPrinter),
                               ("tagZRREF", RefPrinter), ("tagZRSREF", SrefPrinter), ("ZRDATETIME", DateTimePrinter),
                               ("ZRTIMESPAN", TimeSpanPrinter), ("ZRRESULT", ResultPrinter),
                               ("ZRSAFEARRAY", ArrayPrinter)):
        collection.add_printer(type_name, f"^{type_name}$", printer)
    return collection


gdb.printing.register_pretty_printer(gdb.current_objfile(), printers(), replace=True)
