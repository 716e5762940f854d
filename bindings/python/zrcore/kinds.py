"""The kinds of arguments of interface operations, for zrcore.operation.

    kind                        C type                            Python type
    int8 ... int64, uint8 ...   int8_t ... uint64_t               int
    float32, float64            float, double                     float
    boolean                     uint8_t                           bool
    date_time, time_span        ZRDATETIME, ZRTIMESPAN            naive datetime, timedelta; or Typed, see zrcore.values
    string                      ZRSTR                             str
    blob, ref, sref             ZRBLOB, ZRREF*, ZRSREF*           bytes, Ref, Sref
    guid                        const ZRUUID*                     uuid.UUID
    variant                     const ZRVARIANT*                  any value that a variant can hold
    array                       ZRSAFEARRAY                       Array; None is null
    interface(I)                I*                                an Interface; None is null
    address                     any pointer                       int; None is null

The C type of a result, zrcore.out(kind), is a pointer to the type; for guid and variant it is ZRUUID* and ZRVARIANT*.

Native code reads an argument only during the call, and gives each result to its caller: it must not store something
that somebody else owns. A Python implementation gets copies of its arguments, and its results are copied. An Interface
that it gets has a reference of its own. An Array for the kind `array` is not copied for native code: while a view of it
lives, native code can't access its elements. An Array for `variant` is copied.

A number that doesn't fit its kind raises Error with ZR_R_INVALID_ARGUMENTS, and a wrong Python type raises TypeError.
"""
import ctypes
from ctypes import POINTER, c_void_p
from typing import Any, Callable, List, Tuple

from . import _handles, _variant
from ._abi import ZRUUID, ZRVARIANT, Code, Type
from ._array import Array
from ._errors import Error
from ._objects import add_reference, release
from .values import LAYOUTS, pack, read_date, read_span

__all__ = [
    "Kind", "address", "array", "blob", "boolean", "date_time", "float32", "float64", "guid", "int16", "int32", "int64",
    "int8", "interface", "ref", "sref", "string", "time_span", "uint16", "uint32", "uint64", "uint8", "variant",
]

Keep = List[Tuple[Callable[[Any], Any], Any]]


class Kind:
    """A type of arguments. Programs use the objects of this module.

    A Python caller uses lend() for an argument, and receive() or drop() for the cell of a result. A Python
    implementation uses read() for an argument, and fill() and drop() for a cell that is copied to its caller.
    """

    ctype: Any   # of an argument
    cell: Any    # the variable of a result; its zero bytes own nothing

    def lend(self, value: Any, keep: Keep) -> Any:
        """The native argument. `keep` receives what must be released after the call: functions and their arguments."""
        raise NotImplementedError

    def read(self, native: Any) -> Any:
        """The Python value of an argument that native code lends."""
        raise NotImplementedError

    def receive(self, cell: Any) -> Any:
        """The Python value of a result. What the cell owns is released, even if an exception is raised."""
        raise NotImplementedError

    def fill(self, cell: Any, value: Any) -> None:
        """Stores a result in a cell, which then owns it."""
        raise NotImplementedError

    def drop(self, cell: Any) -> None:
        """Releases what a cell owns."""


class _Number(Kind):
    """A number in the layout of a type."""

    def __init__(self, kind: Type, ctype: Any, shown: Callable[[Any], Any] = lambda number: number) -> None:
        self._type, self._unpack, self._shown = kind, LAYOUTS[kind].unpack, shown
        self.ctype = self.cell = ctype

    def lend(self, value: Any, keep: Keep) -> Any:
        return self._unpack(pack(self._type, value))[0]

    def read(self, native: Any) -> Any:
        return self._shown(native)

    def receive(self, cell: Any) -> Any:
        return self._shown(cell.value)

    def fill(self, cell: Any, value: Any) -> None:
        cell.value = self._unpack(pack(self._type, value))[0]


class _Handle(Kind):
    """A value that is stored by a handle of the library."""

    ctype = cell = c_void_p

    def __init__(self, handle: _handles.Handle) -> None:
        self._new, self._read, self._free = handle

    def lend(self, value: Any, keep: Keep) -> Any:
        handle = self._new(value)
        keep.append((self._free, handle))
        return handle

    def read(self, native: Any) -> Any:
        return self._read(native)

    def receive(self, cell: Any) -> Any:
        try:
            return self._read(cell.value)
        finally:
            self.drop(cell)

    def fill(self, cell: Any, value: Any) -> None:
        cell.value = self._new(value)

    def drop(self, cell: Any) -> None:
        if cell.value:
            self._free(cell.value)


class _Uuid(Kind):
    ctype = POINTER(ZRUUID)
    cell = ZRUUID

    def lend(self, value: Any, keep: Keep) -> Any:
        return _handles.uuid_record(value)

    def read(self, native: Any) -> Any:
        if not native:
            raise Error(Code.INVALID_POINTER, "a UUID is null")
        return _handles.read_uuid(native[0])

    def receive(self, cell: Any) -> Any:
        return _handles.read_uuid(cell)

    def fill(self, cell: Any, value: Any) -> None:
        ctypes.memmove(ctypes.byref(cell), bytes(_handles.uuid_record(value)), ctypes.sizeof(cell))


class _Variant(Kind):
    ctype = POINTER(ZRVARIANT)
    cell = ZRVARIANT

    def lend(self, value: Any, keep: Keep) -> Any:
        record = ZRVARIANT()
        _variant.write(record, value)
        keep.append((_variant.release, record))
        return record

    def read(self, native: Any) -> Any:
        if not native:
            raise Error(Code.INVALID_POINTER, "a variant is null")
        return _variant.read(native[0])

    def receive(self, cell: Any) -> Any:
        return _variant.take(cell)

    def fill(self, cell: Any, value: Any) -> None:
        _variant.write(cell, value)

    def drop(self, cell: Any) -> None:
        _variant.release(cell)


class _Array(Kind):
    ctype = cell = c_void_p

    def lend(self, value: Any, keep: Keep) -> Any:
        if value is None:
            return None
        _handles.need(value, Array)
        return value._handle.value

    def read(self, native: Any) -> Any:
        return Array._copy_of(native) if native else None

    def receive(self, cell: Any) -> Any:
        return Array._own(cell.value) if cell.value else None

    def fill(self, cell: Any, value: Any) -> None:
        if value is not None:
            _handles.need(value, Array)
            cell.value = value._copy()

    def drop(self, cell: Any) -> None:
        if cell.value:
            Array._own(cell.value)


class _Interface(Kind):
    ctype = cell = c_void_p

    def __init__(self, interface: Any) -> None:
        self._interface = interface

    def lend(self, value: Any, keep: Keep) -> Any:
        if value is None:
            return None
        address = self._share(value)   # a callback or another thread may close the Interface during the call
        keep.append((release, address))
        return address

    def _share(self, value: Any) -> int:
        _handles.need(value, self._interface)
        return add_reference(value._address())

    def read(self, native: Any) -> Any:
        return self._interface(add_reference(native)) if native else None

    def receive(self, cell: Any) -> Any:
        return self._interface(cell.value) if cell.value else None

    def fill(self, cell: Any, value: Any) -> None:
        cell.value = None if value is None else self._share(value)

    def drop(self, cell: Any) -> None:
        release(cell.value)


class _Address(Kind):
    ctype = cell = c_void_p

    def lend(self, value: Any, keep: Keep) -> Any:
        return None if value is None else LAYOUTS[Type.UI8].unpack(pack(Type.UI8, value))[0]

    def read(self, native: Any) -> Any:
        return native

    def receive(self, cell: Any) -> Any:
        return cell.value

    def fill(self, cell: Any, value: Any) -> None:
        cell.value = self.lend(value, [])


class Out:
    """An argument that is a result; made by out()."""

    def __init__(self, kind: Kind) -> None:
        self.kind = kind


def out(kind: Kind) -> Out:
    """Marks an argument of zrcore.operation as a result: native code stores it through a pointer, and the Python method
    returns it."""
    return Out(kind)


def interface(kind: Any) -> Kind:
    """The kind of an argument that is an object with an interface, or null. `kind` is a subclass of Interface."""
    return _Interface(kind)


int8, int16 = _Number(Type.I1, ctypes.c_int8), _Number(Type.I2, ctypes.c_int16)
int32, int64 = _Number(Type.I4, ctypes.c_int32), _Number(Type.I8, ctypes.c_int64)
uint8, uint16 = _Number(Type.UI1, ctypes.c_uint8), _Number(Type.UI2, ctypes.c_uint16)
uint32, uint64 = _Number(Type.UI4, ctypes.c_uint32), _Number(Type.UI8, ctypes.c_uint64)
float32, float64 = _Number(Type.R4, ctypes.c_float), _Number(Type.R8, ctypes.c_double)
boolean = _Number(Type.BOOL, ctypes.c_uint8, bool)
date_time = _Number(Type.DATETIME, ctypes.c_int64, read_date)
time_span = _Number(Type.TIME, ctypes.c_int64, read_span)
string, blob = _Handle(_handles.HANDLES[Type.STR]), _Handle(_handles.HANDLES[Type.BLOB])
ref, sref = _Handle(_handles.HANDLES[Type.REF]), _Handle(_handles.HANDLES[Type.SREF])
guid, variant, array, address = _Uuid(), _Variant(), _Array(), _Address()
