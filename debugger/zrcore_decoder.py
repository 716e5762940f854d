"""Turns the library's values into text, for debuggers and other tools that can only read memory.

    decode(tag word, address of the value, read)                 such as "ZR_VT_I4 5"
    describe("ZRSTR", the bytes of a variable of the type, read)  such as '"Mars"'

`read(address, size)` returns that many bytes of the process. If it raises an exception or doesn't return all bytes, the
part of the text that can't be read is "<invalid>".

The decoder raises no exception itself, and calls no function of the process, so it also works on core files. It always
ends, whatever the memory contains: a chain of records that leads back to itself ends in "<cycle>", and the number of
values and the length of texts are limited. A text has one line, and only characters that can be printed.
"""

import datetime
import functools
import json
import re
import struct
import uuid
from typing import Any, Callable, Dict, List, Optional, Tuple, TypeVar, cast

# ---- Written by tools/debugger-names from abi/zrcore.txt ----
TYPE_MASK = 0x0FFF
ARRAY = 0x2000
BYREF = 0x4000
TAGS = {
    0: "EMPTY", 1: "BOOL", 2: "I1", 3: "I2", 4: "I4", 5: "I8", 6: "UI1", 7: "UI2", 8: "UI4", 9: "UI8", 10: "R4",
    11: "R8", 12: "TIME", 13: "DATETIME", 15: "CY", 17: "BYTE", 18: "WORD", 19: "DWORD", 20: "QWORD", 21: "BLOB",
    25: "UNKNOWN", 26: "OPAQUE", 27: "CHAR32", 48: "VARIANT", 49: "UUID", 50: "STR", 51: "REF", 52: "SREF",
    53: "DISPATCH",
}
RESULTS = {
    0x00000000: "OK", 0x000000CA: "SAME_VALUE", 0x80000000: "FAILED", 0x80000001: "NOT_SUPPORTED",
    0x80000002: "CANCELLED", 0x80000003: "TIMEOUT", 0x80000004: "INVALID_ARGUMENTS", 0x80000005: "ACCESS_DENIED",
    0x80000006: "INVALID_POINTER", 0x80000007: "FILE_NOT_FOUND", 0x80000008: "NO_INIT", 0x80000009: "NO_INTERFACE",
    0x8000000A: "INVALID_OBJECT_STATE", 0x8000000B: "UNEXPECTED", 0x8000000C: "EXISTS", 0x8000000D: "ABANDONED",
    0x8000000E: "REQUEST_ABORTED", 0x8000000F: "UNKNOWN_IDENTIFIER", 0x80000010: "INCONSISTENT_CONFIGURATION",
    0x80000011: "REQUEST_REJECTED", 0x80000012: "SUBSCRIPTION_LOST", 0x80000013: "NOT_IMPLEMENTED",
    0x80000014: "EMPTY_VALUE", 0x80000015: "NO_AGGREGATION", 0x80000016: "CONNECTION_LOST",
    0x80000017: "INVALID_SUBSCRIPTION", 0x80000018: "INVALID_SYSTEM", 0x80000019: "INVALID_CREF",
    0x8000001A: "INVALID_OTYPE", 0x8000001B: "INVALID_LANGUAGE", 0x8000001C: "NOT_EXISTING", 0x8000001D: "NO_MEMORY",
    0x80000020: "ALREADY_REGISTERED", 0x80000021: "CLASS_NOT_REGISTERED",
}
# ---- End of the part that tools/debugger-names writes ----

INVALID, CYCLE, MORE = "<invalid>", "<cycle>", "..."
MOST_ELEMENTS = 20    # of one array
MOST_DIMENSIONS = 32
MOST_BYTES = 32       # of one blob
MOST_DEPTH = 16       # of variants and arrays in each other
MOST_VALUES = 500     # of one text: arrays of variants can contain arrays
MOST_UNITS = 4096     # of all strings of one text

# How a value is stored, as a format of `struct`. "Q" is also the address of a value that is stored elsewhere.
LAYOUTS = {
    "BOOL": "B", "I1": "b", "I2": "h", "I4": "i", "I8": "q", "UI1": "B", "UI2": "H", "UI4": "I", "UI8": "Q",
    "R4": "f", "R8": "d", "TIME": "q", "DATETIME": "q", "CY": "q", "BYTE": "B", "WORD": "H", "DWORD": "I",
    "QWORD": "Q", "BLOB": "Q", "UNKNOWN": "Q", "OPAQUE": "Q", "CHAR32": "I", "VARIANT": "Q", "UUID": "Q", "STR": "Q",
    "REF": "Q", "SREF": "Q", "DISPATCH": "Q",
}

Read = Callable[[int, int], Optional[bytes]]
Method = TypeVar("Method", bound=Callable[..., str])


class Unreadable(Exception):
    """Memory can't be read, or contains what no value of the library contains."""


def decode(tag_word: int, address: int, read: Read) -> str:
    """The text of a value. `address` is the address of its 8 bytes, such as the field Value of a ZRVARIANT."""
    return Decoder(read).value_at(tag_word, address)


def describe(type_name: str, data: bytes, read: Read) -> str:
    """The text of a variable. `type_name` is a key of TYPES, and `data` the bytes of the variable."""
    return Decoder(read).variable(type_name, data)


# ---- Values that are stored where they are used ----

def uuid_text(data: bytes) -> str:
    """16 bytes of a ZRUUID, in braces and capital letters."""
    return "{%s}" % str(uuid.UUID(bytes_le=data)).upper()


def ref_text(data: bytes) -> str:
    """24 bytes of a ZRREF: its six numbers, separated by points."""
    return ".".join(str(word) for word in struct.unpack("<6I", data))


def result_text(code: int) -> str:
    """A ZRRESULT: the name of the code if it has one, and its 32 bits."""
    code &= 0xFFFFFFFF
    return f"ZR_R_{RESULTS[code]} (0x{code:08X})" if code in RESULTS else f"0x{code:08X}"


def time_span_text(count: int) -> str:
    """A ZRTIMESPAN: the count of 100 ns ticks, and the duration as days, hours, minutes and seconds."""
    seconds, ticks = divmod(abs(count), 10_000_000)
    days, seconds = divmod(seconds, 86400)
    clock = f"{seconds // 3600:02d}:{seconds // 60 % 60:02d}:{seconds % 60:02d}.{ticks:07d}"
    return f"{count} ({'-' if count < 0 else ''}{f'{days}.' if days else ''}{clock})"


def date_time_text(count: int) -> str:
    """A ZRDATETIME: the count of 100 ns ticks since 1601, and the date and time if Python can represent it."""
    try:
        time = datetime.datetime(1601, 1, 1) + datetime.timedelta(microseconds=count // 10)
    except OverflowError:
        return str(count)
    # Not strftime: it doesn't fill up the year 999 with a zero on every system.
    return f"{count} ({time.isoformat(' ', 'seconds')}.{count % 10_000_000:07d})"


def real_text(number: float, layout: str) -> str:
    """A decimal number that converts back to this binary32 ("f") or binary64 ("d"), with few digits."""
    for digits in range(6, 18):
        text = f"{number:.{digits}g}"
        try:
            if struct.pack(layout, float(text)) == struct.pack(layout, number):
                break
        except OverflowError:   # the greatest binary32, with too few digits
            continue
    return text


def character_text(code_point: int) -> str:
    """A code point, and its character if it can be printed."""
    printable = code_point < 0x110000 and chr(code_point).isprintable()
    return f"{code_point} '{chr(code_point)}'" if printable else str(code_point)


def object_text(address: int) -> str:
    """The address of an object, whose content is unknown."""
    return hex(address) if address != 0 else "null"


def quoted(text: str) -> str:
    """A JSON text. Characters that can't be printed, such as a surrogate without its partner, are escape sequences."""
    return re.sub("[^ -~]", lambda found: found[0] if found[0].isprintable() else json.dumps(found[0])[1:-1],
                  json.dumps(text, ensure_ascii=False))


# ---- Values that are read ----

def guarded(method: Method) -> Method:
    """Whatever fails becomes the text "<invalid>"."""
    @functools.wraps(method)
    def run(*arguments: Any) -> str:
        try:
            return method(*arguments)
        except Exception:   # each debugger raises its own
            return INVALID
    return cast(Method, run)


class Decoder:
    """Decodes one text. Make a new one for each text: it counts what it has shown."""

    def __init__(self, read: Read) -> None:
        self._read = read
        self._path: List[int] = []   # addresses of the variants and arrays that contain the current value
        self._values = 0
        self._units = 0
        # The text of a stored value. The others are numbers.
        self._texts: Dict[str, Callable[[Any], str]] = {
            "TIME": time_span_text, "DATETIME": date_time_text, "CHAR32": character_text,
            "R4": lambda number: real_text(number, "f"), "R8": lambda number: real_text(number, "d"),
            "BLOB": self.blob, "UUID": self.uuid, "STR": self.string, "REF": self.ref, "SREF": self.sref,
            "UNKNOWN": object_text, "DISPATCH": object_text, "OPAQUE": hex, "VARIANT": hex,
        }

    def bytes_at(self, address: int, size: int) -> bytes:
        if address <= 0 or address + size > 1 << 64:
            raise Unreadable
        data = self._read(address, size)
        if data is None or len(data) != size:
            raise Unreadable
        return bytes(data)

    def numbers_at(self, address: int, layout: str) -> Tuple[Any, ...]:
        return struct.unpack("<" + layout, self.bytes_at(address, struct.calcsize("<" + layout)))

    @guarded
    def variable(self, type_name: str, data: bytes) -> str:
        layout, text_of = TYPES[type_name]
        return text_of(self, *struct.unpack("<" + layout, data))

    # ---- Handles and addresses of records. Null is "null". ----

    @guarded
    def string(self, handle: int) -> str:
        """A ZRSTR, with all code units that its header counts, including zeros."""
        if handle == 0:
            return "null"
        length = self.numbers_at(handle - 4, "I")[0] // 2 - 1   # the header counts the terminator
        if length < 0:
            return INVALID
        shown = min(length, MOST_UNITS - self._units)
        data = self.bytes_at(handle, 2 * shown) if shown > 0 else b""
        self._units += shown
        return quoted(data.decode("utf-16-le", "surrogatepass")) + (MORE if shown < length else "")

    @guarded
    def blob(self, handle: int) -> str:
        """A ZRBLOB: the number of its bytes, and the first bytes in hexadecimal digits."""
        if handle == 0:
            return "null"
        # The handle has a pointer to the element, and the element has a pointer to the block, after its table.
        block, element = self.numbers_at(handle, "QQ")
        if block == 0 or element == 0:
            return INVALID
        length, capacity, data = self.numbers_at(self.numbers_at(element, "8xQ")[0], "II8xQ")
        if length > capacity:
            return INVALID
        content = self.bytes_at(data, min(length, MOST_BYTES)) if length > 0 else b""
        return f"[{length}] {{{content.hex(' ')}{' ' + MORE if length > MOST_BYTES else ''}}}"

    @guarded
    def uuid(self, address: int) -> str:
        return uuid_text(self.bytes_at(address, 16)) if address != 0 else "null"

    @guarded
    def ref(self, address: int) -> str:
        return ref_text(self.bytes_at(address, 24)) if address != 0 else "null"

    @guarded
    def sref(self, address: int) -> str:
        return self.sref_of(*self.numbers_at(address, "QQ")) if address != 0 else "null"

    def sref_of(self, ref: int, text: int) -> str:
        """A ZRSREF: its reference and its text."""
        return f"{{ref {self.ref(ref)}, text {self.string(text)}}}"

    @guarded
    def array(self, handle: int) -> str:
        """A ZRSAFEARRAY: the element type, the number of elements per dimension, and the first elements."""
        return self._nested(handle, self._array) if handle != 0 else "null"

    def _array(self, handle: int) -> str:
        dimensions, count, tag, data, bounds = self.numbers_at(handle, "IIH14xQQ")
        name, title = TAGS.get(tag), f"{tag_text(tag)}[{self._counts(dimensions, bounds)}]"
        if name is None or name == "EMPTY" or data == 0:
            return title
        some: List[str] = []
        for index in range(min(count, MOST_ELEMENTS)):
            if self._values >= MOST_VALUES:
                break
            some.append(self._element(name, data, index))
        return f"{title} {{{', '.join(some + [MORE] if len(some) < count else some)}}}"

    @guarded
    def _counts(self, dimensions: int, bounds: int) -> str:
        shown = min(dimensions, MOST_DIMENSIONS)
        counts = self.numbers_at(bounds, "I4x" * shown) if shown > 0 else ()
        return "][".join([str(count) for count in counts] + ([MORE] if shown < dimensions else []))

    def _element(self, name: str, data: int, index: int) -> str:
        if name == "VARIANT":
            return self.variant_at(data + 16 * index)
        if name == "UUID":
            self._values += 1
            return self.uuid(data + 16 * index)
        return self._stored_at(name, data + struct.calcsize(LAYOUTS[name]) * index)

    # ---- Variants ----

    @guarded
    def variant_at(self, address: int) -> str:
        """A ZRVARIANT at an address."""
        return self._nested(address, lambda at: self.variant(*self.numbers_at(at, "H6x8s")))

    @guarded
    def value_at(self, tag_word: int, address: int) -> str:
        try:
            payload = self.bytes_at(address, 8)
        except Exception:
            return f"{tag_text(tag_word)} {INVALID}"
        return self.variant(tag_word, payload)

    @guarded
    def variant(self, tag_word: int, payload: bytes) -> str:
        """The tag and the 8 bytes of Value of a ZRVARIANT. A value by reference is read through its address."""
        name, title = TAGS.get(tag_word & TYPE_MASK, "EMPTY"), tag_text(tag_word)
        address = struct.unpack("<Q", payload)[0]
        if not tag_word & ARRAY and name == "EMPTY":
            return title
        if tag_word & BYREF:
            return f"{title} by reference, {self._target(tag_word, name, address) if address != 0 else 'null'}"
        if tag_word & ARRAY:
            text = self.array(address)
            return text if text.startswith(f"{title}[") else f"{title}[] {text}"
        return f"{title} {self._stored(name, payload)}"

    @guarded
    def _target(self, tag_word: int, name: str, address: int) -> str:
        if tag_word & ARRAY:
            return self.array(self.numbers_at(address, "Q")[0])
        return self.variant_at(address) if name == "VARIANT" else self._stored_at(name, address)

    @guarded
    def _stored_at(self, name: str, address: int) -> str:
        return self._stored(name, self.bytes_at(address, struct.calcsize(LAYOUTS[name])))

    def _stored(self, name: str, data: bytes) -> str:
        """The text of a value whose bytes are at the start of `data`."""
        self._values += 1
        return self._texts.get(name, str)(struct.unpack_from("<" + LAYOUTS[name], data)[0])

    def _nested(self, address: int, method: Callable[[int], str]) -> str:
        if address in self._path:
            return CYCLE
        if len(self._path) >= MOST_DEPTH or self._values >= MOST_VALUES:
            return MORE
        self._values += 1
        self._path.append(address)
        try:
            return method(address)
        finally:
            self._path.pop()


def tag_text(tag_word: int) -> str:
    tag = tag_word & TYPE_MASK
    return f"ZR_VT_{TAGS[tag]}" if tag in TAGS else f"ZR_VT_{tag} (not assigned)"


# The types of variables: how they are stored, and the text of what is stored.
TYPES: Dict[str, Tuple[str, Callable[..., str]]] = {
    "ZRVARIANT": ("H6x8s", Decoder.variant),
    "ZRSTR": ("Q", Decoder.string),
    "ZRBLOB": ("Q", Decoder.blob),
    "ZRSAFEARRAY": ("Q", Decoder.array),
    "ZRUUID": ("16s", lambda _, data: uuid_text(data)),
    "ZRREF": ("24s", lambda _, data: ref_text(data)),
    "ZRSREF": ("QQ", Decoder.sref_of),
    "ZRDATETIME": ("q", lambda _, count: date_time_text(count)),
    "ZRTIMESPAN": ("q", lambda _, count: time_span_text(count)),
    "ZRRESULT": ("i", lambda _, code: result_text(code)),
    "zr::Sref": ("Q", Decoder.sref),
}
# The records' names in C, and the classes of the C++ layer. An object of such a class has the bytes of one record or
# handle. A class template has its name without the arguments.
TYPES.update((name, TYPES[other]) for name, other in (
    ("tagZRVARIANT", "ZRVARIANT"), ("tagZRUUID", "ZRUUID"), ("tagZRREF", "ZRREF"), ("tagZRSREF", "ZRSREF"),
    ("zr::Variant", "ZRVARIANT"), ("zr::String", "ZRSTR"), ("zr::Blob", "ZRBLOB"), ("zr::AnyArray", "ZRSAFEARRAY"),
    ("zr::Array", "ZRSAFEARRAY"), ("zr::Uuid", "ZRUUID"), ("zr::Ref", "ZRREF"), ("zr::DateTime", "ZRDATETIME"),
    ("zr::TimeSpan", "ZRTIMESPAN")))


def known_type(name: str) -> Optional[str]:
    """The key of TYPES for the name of a type in C or C++, or None."""
    key = re.sub(r"\b(const|volatile) |<.*>$", "", name)
    return key if key in TYPES else None
