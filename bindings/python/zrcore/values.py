"""Values of variants: Python's types, types for values that Python has none for, and explicit types.

    Python value                              type in a variant         back in Python
    None                                      EMPTY                     None
    bool                                      BOOL                      bool
    int, numpy's integers                     I8, above 2^63 - 1 UI8    int
    float                                     R8                        float
    str                                       STR                       str
    bytes, bytearray, memoryview              BLOB                      bytes
    uuid.UUID                                 UUID                      uuid.UUID
    datetime.datetime without time zone       DATETIME                  datetime.datetime, or Typed
    datetime.timedelta                        TIME                      datetime.timedelta, or Typed
    Ref, Sref                                 REF, SREF                 Ref, Sref
    Array                                     an array of its type      Array, a copy
    an Interface                              UNKNOWN                   Interface; None for null
    Typed, such as i4(5)                      its own type              by its type; CY, CHAR32 and OPAQUE are Typed

Any other Python type raises TypeError. An int becomes a 64-bit number in a variant, and a float becomes a ZR_VT_R8. To
choose another type, name it:

    >>> import zrcore
    >>> zrcore.i4(5)
    i4(5)
    >>> zrcore.convert(zrcore.i4(5), zrcore.Type.STR)
    '5'

A number that doesn't fit its type raises Error; it is never truncated. A ZR_VT_R4 is rounded to binary32.

Date and time: the library counts 100 ns since 1601 and stores no time zone, so a datetime must be naive: whether it is
UTC or local time is between the caller and native code. A datetime with a time zone raises ValueError; one before 1601
raises Error, since the library cannot show it. Python's types count microseconds. A count that they can't hold exactly,
or that is outside the years 1601 to 9999, is returned as Typed:

    >>> zrcore.convert(zrcore.i8(10), zrcore.Type.DATETIME)
    datetime.datetime(1601, 1, 1, 0, 0, 0, 1)
    >>> zrcore.convert(zrcore.i8(11), zrcore.Type.DATETIME)
    date_time(11)

Values are immutable; any thread may use them at any time.
"""
import datetime as _datetime
import struct
from typing import Any, Callable, Dict, NamedTuple, Optional

from ._abi import Code, Type
from ._errors import Error

__all__ = [
    "Ref", "Sref", "Typed", "byte", "char32", "cy", "date_time", "dispatch", "dword", "i1", "i2", "i4", "i8", "opaque",
    "qword", "r4", "r8", "time_span", "ui1", "ui2", "ui4", "ui8", "word",
]

# How a value that a variant holds as a number is stored, for each type.
LAYOUTS: Dict[int, struct.Struct] = {kind: struct.Struct("<" + layout) for kind, layout in {
    Type.BOOL: "?", Type.I1: "b", Type.I2: "h", Type.I4: "i", Type.I8: "q", Type.UI1: "B", Type.UI2: "H",
    Type.UI4: "I", Type.UI8: "Q", Type.R4: "f", Type.R8: "d", Type.TIME: "q", Type.DATETIME: "q", Type.CY: "q",
    Type.BYTE: "B", Type.WORD: "H", Type.DWORD: "I", Type.QWORD: "Q", Type.CHAR32: "I", Type.OPAQUE: "Q",
}.items()}
REALS = frozenset((Type.R4, Type.R8))
INTEGERS = frozenset(LAYOUTS) - REALS - {Type.BOOL}

_EPOCH = _datetime.datetime(1601, 1, 1)
_MICROSECOND = _datetime.timedelta(microseconds=1)
_LAST = (_datetime.datetime.max - _EPOCH) // _MICROSECOND * 10


class Ref(NamedTuple):
    """A reference by six unsigned 32-bit words. Its text is the six numbers with dots between them.

        >>> import zrcore
        >>> str(zrcore.Ref(1, 2, 3))
        '1.2.3.0.0.0'
        >>> zrcore.convert("1.2.3.0.0.0", zrcore.Type.REF)
        Ref(word0=1, word1=2, word2=3, word3=0, word4=0, word5=0)

    The constructor doesn't check the words. A word that doesn't fit raises Error when the Ref is used.
    """

    word0: int = 0
    word1: int = 0
    word2: int = 0
    word3: int = 0
    word4: int = 0
    word5: int = 0

    def __str__(self) -> str:
        return ".".join(str(word) for word in self)


class Sref(NamedTuple):
    """A reference by numbers, by text, or by both: Sref(Ref(1, 2)), Sref(text="Mars"). str() returns the text of the
    numbers, if there are any, otherwise the text."""

    ref: Optional[Ref] = None
    text: Optional[str] = None

    def __str__(self) -> str:
        return str(self.ref) if self.ref is not None else self.text or ""


class Typed:
    """A value with an explicit type.

    type   any type that a variant holds as a number, or Type.DISPATCH for an interface object
    value  the number; a ZR_VT_BOOL is a bool, a ZR_VT_CHAR32 is its code point, and a ZR_VT_DATETIME or ZR_VT_TIME is
           its count of 100 ns. A ZR_VT_DISPATCH is the Interface.

    The constructor accepts what the functions i1 to time_span accept. It raises Error for a number that doesn't fit the
    type, and TypeError for a value that is not a number. Two Typed are equal if type and value are equal.
    """

    __slots__ = ("type", "value")
    type: Type
    value: Any

    def __init__(self, type: Type, value: Any) -> None:
        kind = type if type.__class__ is Type else Type(type)
        if kind in LAYOUTS:
            value = LAYOUTS[kind].unpack(pack(kind, value))[0]
        elif kind != Type.DISPATCH:
            raise TypeError(f"a value of the type {kind.name} needs no explicit type")
        object.__setattr__(self, "type", kind)
        object.__setattr__(self, "value", value)

    def __setattr__(self, name: str, value: Any) -> None:
        raise AttributeError("a Typed is immutable")

    def __delattr__(self, name: str) -> None:
        raise AttributeError("a Typed is immutable")

    def __reduce__(self) -> Any:
        return Typed, (self.type, self.value)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Typed):
            return NotImplemented
        return self.type == other.type and bool(self.value == other.value)

    def __hash__(self) -> int:
        return hash((self.type, self.value))

    def __repr__(self) -> str:
        name = {Type.DATETIME: "date_time", Type.TIME: "time_span"}.get(self.type, self.type.name.lower())
        return f"{name}({self.value!r})"


# ---- Plain numbers --------------------------------------------------------------------------------------------------

def date_ticks(value: _datetime.datetime) -> int:
    """The count of 100 ns since 1601 of a naive datetime."""
    if value.tzinfo is not None:
        raise ValueError("the library stores no time zone: convert the datetime to UTC or to local time, and remove "
                         "tzinfo")
    if value < _EPOCH:
        raise Error(Code.INVALID_ARGUMENTS, f"{value} is before 1601")
    return (value - _EPOCH) // _MICROSECOND * 10


def span_ticks(value: _datetime.timedelta) -> int:
    """The count of 100 ns of a timedelta. It may exceed 64 bits."""
    return value // _MICROSECOND * 10


def read_date(ticks: int) -> Any:
    """A datetime, or Typed if it can't hold the count."""
    if ticks % 10 == 0 and 0 <= ticks <= _LAST:
        return _EPOCH + _datetime.timedelta(microseconds=ticks // 10)
    return Typed(Type.DATETIME, ticks)


def read_span(ticks: int) -> Any:
    """A timedelta, or Typed if it can't hold the count."""
    return _datetime.timedelta(microseconds=ticks // 10) if ticks % 10 == 0 else Typed(Type.TIME, ticks)


def _bool(value: Any) -> Any:
    # The format "?" accepts every object, by its truth.
    if not hasattr(value, "__index__"):
        raise TypeError(f"BOOL needs a bool, not {type(value).__name__}")
    if value not in (0, 1):
        raise refusal(Type.BOOL, value)
    return bool(value)


# What turns a Python value into a number, for the types whose values are not numbers in Python.
_PLAIN: Dict[int, Callable[[Any], Any]] = {
    Type.BOOL: _bool,
    Type.CHAR32: lambda value: ord(value) if isinstance(value, str) else value,
    Type.DATETIME: lambda value: date_ticks(value) if isinstance(value, _datetime.datetime) else value,
    Type.TIME: lambda value: span_ticks(value) if isinstance(value, _datetime.timedelta) else value,
}


def plain(kind: int, value: Any) -> Any:
    """The number of a value for a type; it may not fit the type. A Typed must have the type."""
    if isinstance(value, Typed):
        if value.type != kind:
            raise TypeError(f"{Type(kind).name} is needed, not {value.type.name}")
        return value.value
    convert = _PLAIN.get(kind)
    return value if convert is None else convert(value)


def pack(kind: int, value: Any) -> bytes:
    """The bytes of a value in a type that is stored as a number. Raises Error or TypeError if the value doesn't fit."""
    value = plain(kind, value)
    try:
        return LAYOUTS[kind].pack(value)
    except (struct.error, OverflowError):
        raise refusal(kind, value) from None


def refusal(kind: int, value: Any) -> Exception:
    """The exception for a value that doesn't fit a type that is stored as a number."""
    if hasattr(value, "__index__") or (kind in REALS and isinstance(value, float)):
        return Error(Code.INVALID_ARGUMENTS, f"{shown(value)} does not fit {Type(kind).name}")
    return TypeError(f"{Type(kind).name} needs {'an integer' if kind in INTEGERS else 'a number'}, "
                     f"not {type(value).__name__}")


def shown(value: Any) -> str:
    """The text of a value for a message."""
    try:
        text = repr(value)
    except ValueError:   # Python limits the digits of a number's text
        text = "the number" if hasattr(value, "__index__") else f"the {type(value).__name__}"
    return text if len(text) <= 40 else text[:40] + "..."


# ---- Explicit types -------------------------------------------------------------------------------------------------

def _typed(kind: Type, name: str, needs: str) -> Callable[[Any], Typed]:
    def make(value: Any) -> Typed:
        return Typed(kind, value)
    make.__name__ = make.__qualname__ = name
    make.__doc__ = (f"Returns {needs} with the type ZR_VT_{kind.name}.\n\n"
                    "Raises Error with ZR_R_INVALID_ARGUMENTS if it doesn't fit the type, and TypeError for another "
                    "Python type.")
    return make


i1, i2 = _typed(Type.I1, "i1", "an integer"), _typed(Type.I2, "i2", "an integer")
i4, i8 = _typed(Type.I4, "i4", "an integer"), _typed(Type.I8, "i8", "an integer")
ui1, ui2 = _typed(Type.UI1, "ui1", "an integer"), _typed(Type.UI2, "ui2", "an integer")
ui4, ui8 = _typed(Type.UI4, "ui4", "an integer"), _typed(Type.UI8, "ui8", "an integer")
byte, word = _typed(Type.BYTE, "byte", "an integer"), _typed(Type.WORD, "word", "an integer")
dword, qword = _typed(Type.DWORD, "dword", "an integer"), _typed(Type.QWORD, "qword", "an integer")
r4, r8 = _typed(Type.R4, "r4", "a number"), _typed(Type.R8, "r8", "a number")
cy, opaque = _typed(Type.CY, "cy", "an integer"), _typed(Type.OPAQUE, "opaque", "an integer")
char32 = _typed(Type.CHAR32, "char32", "a code point, or the code point of a str with one character,")
date_time = _typed(Type.DATETIME, "date_time", "a count of 100 ns since 1601, or a naive datetime,")
time_span = _typed(Type.TIME, "time_span", "a count of 100 ns, or a timedelta,")


def dispatch(value: Any) -> Typed:
    """Returns an interface object with the type ZR_VT_DISPATCH; without an explicit type, it has ZR_VT_UNKNOWN."""
    return Typed(Type.DISPATCH, value)
