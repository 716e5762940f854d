"""How the elements of arrays are stored: one row per element type.

An array stores its elements in one block. A row of ELEMENTS knows the ctypes type of an element in the block, and turns
elements into Python values and back. A new element is zero, null or empty, so it owns nothing, and store() may
overwrite it. What store() puts into the block belongs to the array.
"""
import ctypes
import struct
from typing import Any, Dict, List, Sequence

from . import _handles, _variant
from ._abi import ZRUUID, ZRVARIANT, Code, Type
from ._errors import Error, check
from ._library import functions
from .values import LAYOUTS, Typed, pack, plain, read_date, read_span, refusal

_get, _put = functions["ZrSafeArrayGetElement"], functions["ZrSafeArrayPutElement"]


class Element:
    """An element type. `ctype` is the type of an element in the block, and of the variable for a single element."""

    is_number = False
    ctype: Any

    def get(self, array: Any, indices: Any) -> Any:
        """Reads one element; `array` is the handle of the library."""
        raise NotImplementedError

    def put(self, array: Any, indices: Any, value: Any) -> None:
        """Replaces one element."""
        raise NotImplementedError

    def load(self, block: Any) -> List[Any]:
        """Reads all elements of a block, which is a ctypes array."""
        raise NotImplementedError

    def store(self, block: Any, values: Sequence[Any]) -> None:
        """Stores the values in the new elements of a block."""
        raise NotImplementedError


class _Number(Element):
    is_number = True

    def __init__(self, kind: Type, ctype: Any, shown: Any = None) -> None:
        self._type, self.ctype, self._shown = kind, ctype, shown

    def get(self, array: Any, indices: Any) -> Any:
        cell = self.ctype()
        check(_get(array, indices, ctypes.byref(cell)), "the element can't be read")
        return cell.value if self._shown is None else self._shown(cell.value)

    def put(self, array: Any, indices: Any, value: Any) -> None:
        check(_put(array, indices, pack(self._type, value)), "the element can't be replaced")

    def load(self, block: Any) -> List[Any]:
        numbers: List[Any] = block[:]
        return numbers if self._shown is None else list(map(self._shown, numbers))

    def store(self, block: Any, values: Sequence[Any]) -> None:
        if self._type == Type.BOOL or not set(map(type, values)) <= {int, float}:
            values = [plain(self._type, value) for value in values]
        try:
            struct.pack_into(f"<{len(values)}{LAYOUTS[self._type].format[1:]}", block, 0, *values)
        except (struct.error, OverflowError):
            for value in values:
                pack(self._type, value)   # raises the exception for the first value that doesn't fit
            raise refusal(self._type, values) from None


class _Handle(Element):
    """An element that the array holds by a handle."""

    ctype = ctypes.c_void_p

    def __init__(self, kind: int) -> None:
        self._type = kind

    def get(self, array: Any, indices: Any) -> Any:
        cell = ctypes.c_void_p()
        check(_get(array, indices, ctypes.byref(cell)), "the element can't be read")
        handle = _handles.HANDLES[self._type]
        try:
            return handle.read(cell.value)
        finally:
            if cell.value:
                handle.free(cell.value)

    def put(self, array: Any, indices: Any, value: Any) -> None:
        handle = _handles.HANDLES[self._type]
        cell = ctypes.c_void_p(handle.new(value))
        try:
            result = _put(array, indices, ctypes.byref(cell))
            if cell.value or result != Code.INVALID_ARGUMENTS:   # an SREF with neither a ref nor a text becomes null
                check(result, "the element can't be replaced")
        finally:
            if cell.value:
                handle.free(cell.value)

    def load(self, block: Any) -> List[Any]:
        return list(map(_handles.HANDLES[self._type].read, block))

    def store(self, block: Any, values: Sequence[Any]) -> None:
        new = _handles.HANDLES[self._type].new
        for at, value in enumerate(values):
            block[at] = new(value)


class _Uuid(Element):
    ctype = ZRUUID

    def get(self, array: Any, indices: Any) -> Any:
        cell = ZRUUID()
        check(_get(array, indices, ctypes.byref(cell)), "the element can't be read")
        return _handles.read_uuid(cell)

    def put(self, array: Any, indices: Any, value: Any) -> None:
        check(_put(array, indices, ctypes.byref(_handles.uuid_record(value))), "the element can't be replaced")

    def load(self, block: Any) -> List[Any]:
        return list(map(_handles.read_uuid, block))

    def store(self, block: Any, values: Sequence[Any]) -> None:
        for at, value in enumerate(values):
            block[at] = _handles.uuid_record(value)


class _Variant(Element):
    ctype = ZRVARIANT

    def get(self, array: Any, indices: Any) -> Any:
        cell = ZRVARIANT()
        check(_get(array, indices, ctypes.byref(cell)), "the element can't be read")
        return _variant.take(cell)

    def put(self, array: Any, indices: Any, value: Any) -> None:
        with _variant.Variant(value) as record:
            check(_put(array, indices, ctypes.byref(record)), "the element can't be replaced")

    def load(self, block: Any) -> List[Any]:
        return list(map(_variant.read, block))

    def store(self, block: Any, values: Sequence[Any]) -> None:
        for at, value in enumerate(values):
            _variant.write(block[at], value)


def _typed(kind: Type) -> Any:
    return lambda number: Typed(kind, number)


ELEMENTS: Dict[int, Element] = {kind: _Number(kind, *row) for kind, row in {
    Type.BOOL: (ctypes.c_bool,), Type.I1: (ctypes.c_int8,), Type.I2: (ctypes.c_int16,), Type.I4: (ctypes.c_int32,),
    Type.I8: (ctypes.c_int64,), Type.UI1: (ctypes.c_uint8,), Type.UI2: (ctypes.c_uint16,), Type.UI4: (ctypes.c_uint32,),
    Type.UI8: (ctypes.c_uint64,), Type.R4: (ctypes.c_float,), Type.R8: (ctypes.c_double,),
    Type.TIME: (ctypes.c_int64, read_span), Type.DATETIME: (ctypes.c_int64, read_date),
    Type.CY: (ctypes.c_int64, _typed(Type.CY)), Type.BYTE: (ctypes.c_uint8,), Type.WORD: (ctypes.c_uint16,),
    Type.DWORD: (ctypes.c_uint32,), Type.QWORD: (ctypes.c_uint64,),
    Type.CHAR32: (ctypes.c_uint32, _typed(Type.CHAR32)),
}.items()}
ELEMENTS.update({kind: _Handle(kind) for kind in (Type.STR, Type.BLOB, Type.REF, Type.SREF, Type.UNKNOWN,
                                                  Type.DISPATCH)})
ELEMENTS.update({Type.UUID: _Uuid(), Type.VARIANT: _Variant()})


def element_of(kind: int) -> Element:
    """The row of a type. Raises Error if arrays can't have elements of the type."""
    found = ELEMENTS.get(kind)
    if found is None:
        raise Error(Code.FAILED, f"an array can't have elements of the type {Type(kind).name}")
    return found
