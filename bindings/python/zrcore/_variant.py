"""Variants: Python values to records of the library and back, conversion and comparison.

The type of a variant follows from the Python value, as the table in `values` says. Any object with __index__ is an int,
such as the integers of numpy.

Back in Python, dates and times that Python cannot hold exactly are Typed. UNKNOWN and DISPATCH are Interface, or None
for null. An array is copied.

A value by reference is read through its address. ZR_VT_VARIANT without a reference has no Python value: reading it
raises Error with ZR_R_NOT_SUPPORTED.
"""
import datetime
import operator
import re
import struct
import uuid
from ctypes import c_uint8
from typing import Any, Callable, Dict, NoReturn, Optional, Tuple

from ._abi import VARIANT_MARKERS, ZR_VT_ARRAY, ZR_VT_BYREF, ZR_VT_TYPEMASK, ZRVARIANT, Code, Type
from ._errors import Error, check
from ._handles import HANDLES
from ._library import functions
from .values import LAYOUTS, Ref, Sref, Typed, date_ticks, read_date, read_span, refusal, shown, span_ticks

_clear, _copy = functions["ZrVariantClear"], functions["ZrVariantCopyInd"]
_change, _compare = functions["ZrVariantChangeType"], functions["ZrVariantCompare"]
VALUE = ZRVARIANT.Value.offset

# How a value is written to a record, by its Python type, and read from one, by its tag. Other modules add their types.
writers: Dict[type, Callable[[ZRVARIANT, Any], None]] = {}
readers: Dict[int, Callable[[ZRVARIANT], Any]] = {}
# How a value of a Python type is converted, if not by its record.
converters: Dict[type, Callable[[Any, Type], Any]] = {}


# ---- Writing --------------------------------------------------------------------------------------------------------

_MARKERS = int.from_bytes(struct.pack("<HHHH", 0, *VARIANT_MARKERS), "little")


def _record_layout(layout: str) -> struct.Struct:
    """A whole record: the tag word with the marker words, and a number with zeros after it."""
    return struct.Struct(f"<Q{layout}{8 - struct.calcsize('<' + layout)}x")


_RECORDS = {kind: _record_layout(layout.format[1:]) for kind, layout in LAYOUTS.items()}
_HANDLE = _record_layout("Q")


def _write_number(record: ZRVARIANT, kind: int, number: Any) -> None:
    try:
        _RECORDS[kind].pack_into(record, 0, _MARKERS | kind, number)
    except struct.error:
        raise refusal(kind, number) from None


def _write_int(record: ZRVARIANT, value: int) -> None:
    _write_number(record, Type.UI8 if value >= 1 << 63 else Type.I8, value)


def write_handle(record: ZRVARIANT, tag: int, handle: Optional[int]) -> None:
    _HANDLE.pack_into(record, 0, _MARKERS | tag, handle or 0)


def _write_typed(record: ZRVARIANT, value: Typed) -> None:
    if value.type in LAYOUTS:
        _write_number(record, value.type, value.value)
    else:
        write_handle(record, value.type, HANDLES[value.type].new(value.value))


def _handle_writer(kind: Type) -> Callable[[ZRVARIANT, Any], None]:
    new = HANDLES[kind].new
    return lambda record, value: write_handle(record, kind, new(value))


writers[type(None)] = lambda record, value: write_handle(record, Type.EMPTY, None)
writers[bool] = lambda record, value: _write_number(record, Type.BOOL, value)
writers[int] = _write_int
writers[float] = lambda record, value: _write_number(record, Type.R8, value)
writers[datetime.datetime] = lambda record, value: _write_number(record, Type.DATETIME, date_ticks(value))
writers[datetime.timedelta] = lambda record, value: _write_number(record, Type.TIME, span_ticks(value))
writers[Typed] = _write_typed
for _type, _kind in ((str, Type.STR), (bytes, Type.BLOB), (bytearray, Type.BLOB), (memoryview, Type.BLOB),
                     (uuid.UUID, Type.UUID), (Ref, Type.REF), (Sref, Type.SREF)):
    writers[_type] = _handle_writer(_kind)


def _row(table: Dict[type, Any], value: Any) -> Any:
    """The row of a value's type or of its next base; None if there is no row."""
    for base in type(value).__mro__:
        if base in table:
            return table[base]
    return None


def write(record: ZRVARIANT, value: Any) -> None:
    """Overwrites a record with a value that the record then owns. What the record held is not released. If an exception
    is raised, the record is unchanged."""
    writer = writers.get(type(value)) or _row(writers, value)
    if writer is not None:
        writer(record, value)
    elif hasattr(value, "__index__"):
        _write_int(record, operator.index(value))
    else:
        raise TypeError(f"a variant can't hold {type(value).__name__}")


# ---- Reading --------------------------------------------------------------------------------------------------------

def _number_reader(kind: int) -> Callable[[ZRVARIANT], Any]:
    unpack = LAYOUTS[kind].unpack_from
    if kind == Type.TIME:
        return lambda record: read_span(unpack(record, VALUE)[0])
    if kind == Type.DATETIME:
        return lambda record: read_date(unpack(record, VALUE)[0])
    if kind in (Type.CY, Type.CHAR32, Type.OPAQUE):
        return lambda record: Typed(Type(kind), unpack(record, VALUE)[0])
    return lambda record: unpack(record, VALUE)[0]


def handle_reader(kind: int) -> Callable[[ZRVARIANT], Any]:
    read_handle = HANDLES[kind].read
    return lambda record: read_handle(record.Value.address)


readers.update({kind: _number_reader(kind) for kind in LAYOUTS})
readers.update({kind: handle_reader(kind) for kind in HANDLES})
readers[Type.EMPTY] = lambda record: None


def read(record: ZRVARIANT) -> Any:
    """Copies the value of a record. The record keeps what it owns."""
    tag = record.Type
    reader = readers.get(tag) or readers.get(tag & (ZR_VT_TYPEMASK | ZR_VT_ARRAY | ZR_VT_BYREF))
    if reader is not None:
        return reader(record)
    if tag & ZR_VT_BYREF:
        value = ZRVARIANT()
        try:
            check(_copy(value, record), f"a reference with the tag word 0x{tag:04X} can't be read")
            return read(value)
        finally:
            _clear(value)
    raise Error(Code.NOT_SUPPORTED, f"a value with the tag word 0x{tag:04X} has no Python value")


def take(record: ZRVARIANT) -> Any:
    """Reads a record and releases what it owns."""
    if record.Type in LAYOUTS:
        return readers[record.Type](record)
    try:
        return read(record)
    finally:
        _clear(record)


def release(record: ZRVARIANT) -> None:
    """Releases what a record owns."""
    if record.Type not in LAYOUTS:
        _clear(record)


class Variant:
    """Owns one record: `with Variant(value) as record`. The end of the block releases the value."""

    __slots__ = ("record",)

    def __init__(self, value: Any = None) -> None:
        self.record = ZRVARIANT()
        write(self.record, value)

    def __enter__(self) -> ZRVARIANT:
        return self.record

    def __exit__(self, *exception: object) -> None:
        release(self.record)


# ---- Conversion -----------------------------------------------------------------------------------------------------

# Targets with 64 bits. The library lets some numbers pass that don't fit them: a number changes its sign or becomes
# 0x8000000000000000, and a text becomes the nearest number that fits.
WIDE: Dict[int, Tuple[int, int]] = {kind: (-1 << 63, (1 << 63) - 1)
                                    for kind in (Type.I8, Type.CY, Type.TIME, Type.DATETIME)}
WIDE.update({kind: (0, (1 << 64) - 1) for kind in (Type.UI8, Type.QWORD)})
# A hexadecimal text is converted to a ZR_VT_R8 by a signed number of 64 bits.
_LIMITS: Dict[int, Tuple[Any, ...]] = {**WIDE, Type.R8: (float(-1 << 63), float(1 << 63))}
_INTEGER = re.compile(r"(0[xX][0-9a-fA-F]+)|\s*([+-]?[0-9]+)")


def _number_of(value: Any) -> Any:
    """The number of a value that is one, as the library sees it. None for other values."""
    if isinstance(value, Typed):
        return value.value if value.type in LAYOUTS else None
    return value if isinstance(value, (int, float)) else operator.index(value) if hasattr(value, "__index__") else None


def _refuse(value: Any, target: int) -> NoReturn:
    raise Error(Code.INVALID_ARGUMENTS, f"{shown(value)} does not fit {Type(target).name}")


def _check_text(text: str, target: int, result: Any) -> None:
    """Raises Error if a text became the nearest number that fits."""
    number = result.value if isinstance(result, Typed) else result
    if number not in _LIMITS[target]:
        return
    found = _INTEGER.match(text)
    if target == Type.R8:
        fits = not (found and found[1]) or float(int(found[1], 16)) == number
    else:
        fits = not found or (int(found[1], 16) if found[1] else int(found[2])) == number
    if not fits:
        _refuse(text, target)


def convert(value: Any, target: Type) -> Any:
    """Converts a value to another type by the rules of ZrVariantChangeType, and returns it as a Python value.

    A fraction is cut off, as by int(). A number that doesn't fit the type is an error: where the library would change
    the sign of a number or take the nearest number that fits, Error is raised.

        >>> import zrcore
        >>> zrcore.convert("0x10", zrcore.Type.I4), zrcore.convert(2.9, zrcore.Type.I4)
        (16, 2)
        >>> zrcore.convert(300, zrcore.Type.UI1)
        Traceback (most recent call last):
        zrcore.Error: ZR_R_INVALID_ARGUMENTS: 300 does not convert to UI1

    value   any value that a variant can hold, see help(zrcore.values). An Array is converted as by Array.astype.
    target  a member of Type; anything else raises ValueError

    Raises Error with the result of ZrVariantChangeType: ZR_R_NOT_SUPPORTED if the types don't convert, ZR_R_FAILED if a
    text is not a number, ZR_R_INVALID_ARGUMENTS if a number or text doesn't fit. Raises TypeError if a variant can't
    hold the value. Any thread, any time.
    """
    if target.__class__ is not Type:
        target = Type(target)
    converter = converters.get(type(value))
    if converter is not None:
        return converter(value, target)
    if target in WIDE:
        number, (least, most) = _number_of(value), WIDE[target]
        if number is not None and not least <= number <= most:
            _refuse(value, target)
    if isinstance(value, Typed) and value.type == Type.QWORD and target == Type.DATETIME:
        value = Typed(Type.UI8, value.value)   # the library would take the number for an address
    source, result = ZRVARIANT(), ZRVARIANT()
    write(source, value)
    try:
        code = _change(result, source, 0, target)
    finally:
        release(source)
    if code < 0:   # the result is empty
        text = repr(value) if len(repr(value)) <= 40 else f"the {type(value).__name__}"
        raise Error(code, f"{text} does not convert to {Type(target).name}")
    converted = take(result)
    if isinstance(value, str) and target in _LIMITS:
        _check_text(value, target, converted)
    return converted


# ---- Comparison -----------------------------------------------------------------------------------------------------

def compare(left: Any, right: Any) -> bool:
    """Returns whether two values have the same type and are equal by the rules of ZrVariantCompare.

    Nothing is converted: 5 and 5.0 are different. Two floats are equal if they differ by at most one epsilon.

        >>> import zrcore
        >>> zrcore.compare("a", "a"), zrcore.compare(5, 5.0), zrcore.compare(0.1 + 0.2, 0.3)
        (True, False, True)

    Raises Error with ZR_R_NOT_SUPPORTED for interface objects, and TypeError if a variant can't hold a value. Any
    thread, any time.
    """
    with Variant(left) as first, Variant(right) as second:
        equal = c_uint8(2)
        code = _compare(first, second, equal)
        if code < 0 and equal.value == 2:   # a comparison of references may return a failure with a result
            raise Error(code, f"{type(left).__name__} and {type(right).__name__} do not compare")
        return equal.value == 1
