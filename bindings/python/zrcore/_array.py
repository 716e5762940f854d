"""Safe arrays: shape, elements, views without copying, conversion and comparison.

The memory of an array, its access flag and its views depend on each other like this:

    Array ----> _Handle <---- finalizer of the block        the last of both destroys the array
                              block (a ctypes array)        owns the access flag until its finalizer runs
    memoryview, numpy array --> block                       each keeps the block alive

So the access flag is set as long as any view lives, and the memory stays valid, even if the Array object is gone.

Garbage collection finalizes the objects of a cycle in any order, and one of them may use an array or a view in its own
__del__. So it must not see _Handle and the block: they are finalized when nothing refers to them any more.
"""
import ctypes
import itertools
import math
import operator
import threading
import weakref
from ctypes import byref, c_uint8, c_uint16, c_uint32, c_void_p
from typing import TYPE_CHECKING, Any, Iterator, List, Optional, Sequence, Tuple, Union, cast

from . import _variant
from ._abi import ZR_VT_ARRAY, Code, Type, ZrSafeArrayBound
from ._elements import ELEMENTS, element_of
from ._errors import Error, check
from ._library import State, functions, state
from .values import INTEGERS, REALS, Ref, Sref, shown

if TYPE_CHECKING:
    import numpy

Index = Union[int, Tuple[int, ...]]

# The element type of an array that is made from a buffer, by the buffer's format without the native byte order.
_FROM_FORMAT = {
    "?": Type.BOOL, "b": Type.I1, "h": Type.I2, "i": Type.I4, "q": Type.I8, "B": Type.UI1, "H": Type.UI2,
    "I": Type.UI4, "Q": Type.UI8, "f": Type.R4, "d": Type.R8,
    "l": Type.I8 if ctypes.sizeof(ctypes.c_long) == 8 else Type.I4,
    "L": Type.UI8 if ctypes.sizeof(ctypes.c_long) == 8 else Type.UI4,
}
_MOST_ELEMENTS = (1 << 31) - 1   # the library computes offsets with signed 32-bit numbers
_MOST_DIMENSIONS = 500           # of nested sequences, which are read by recursion
_LARGE = 1 << 26                 # in bytes: without memory for elements, the library terminates the process
_opening = threading.RLock()     # recursive: garbage collection may run code that opens another array
_hide = ctypes.PYFUNCTYPE(None, ctypes.py_object)(("PyObject_GC_UnTrack", ctypes.pythonapi))   # from the collection


class _Handle:
    """Owns one array of the library."""

    __slots__ = ("value",)

    def __init__(self, value: int) -> None:
        self.value = value
        _hide(self)

    def __del__(self, destroy: Any = functions["ZrSafeArrayDestroy"], state: State = state) -> None:
        if not state.ended:
            destroy(self.value)


def _close_block(handle: _Handle) -> None:
    functions["ZrSafeArrayUnaccessData"](handle.value)


def _need_memory(kind: int, shape: Tuple[int, ...]) -> None:
    """Raises Error if there is no memory for the elements of a large array."""
    size = math.prod(shape) * ctypes.sizeof(element_of(kind).ctype)
    if size >= _LARGE:
        try:
            bytearray(size)
        except MemoryError:
            raise Error(Code.NO_MEMORY, f"no memory for {size} bytes of elements") from None


class Array:
    """An array of one element type, with any number of dimensions.

        >>> from zrcore import Array, Type
        >>> table = Array.of([[1, 2, 3], [4, 5, 6]], Type.I4)
        >>> table.shape, table[1, 2]
        ((2, 3), 6)
        >>> table.astype(Type.STR).tolist()
        [['1', '2', '3'], ['4', '5', '6']]

    type          the type of the elements; a new element is zero, null or empty
    shape         the number of elements per dimension: a tuple or list, or one number for one dimension. An array has
                  at most 2^31 - 1 elements.
    lower_bounds  the first index per dimension, 0 by default. Indices count from it, so a negative index is not the
                  distance from the end.

    Elements have the Python types of a variant of the element type, see help(zrcore.values). Elements are copied in and
    out. There are no slices.

    Views: view() and numpy.asarray(array) show the memory of the library without copying, and so does memoryview(array)
    from Python 3.12 on. Dates, times and ZR_VT_CY appear as their 64-bit counts. While a view lives, the access flag of
    the array is set: array[index], also to store, raises Error with ZR_R_INVALID_OBJECT_STATE, on every thread. Further
    views, tolist() and the functions for whole arrays work. When the last view is garbage, the flag is cleared. A view
    keeps the memory alive without the Array. Its indices count from 0, whatever the lower bounds are.

    Raises Error with ZR_R_INVALID_ARGUMENTS for a shape that doesn't fit, ZR_R_FAILED if arrays can't have elements of
    the type, and ZR_R_NO_MEMORY.

    Threads: single elements may be used from any thread; a call that meets another one raises Error with
    ZR_R_INVALID_OBJECT_STATE instead of waiting. No thread may change elements, also through a view, while another
    thread copies, converts or compares the array: that is a data race.
    """

    __slots__ = ("_handle", "_type", "_shape", "_lower", "_element", "_block")

    def __init__(self, type: Type, shape: Union[int, Sequence[int]],
                 lower_bounds: Optional[Sequence[int]] = None) -> None:
        counts = tuple(map(operator.index, shape if isinstance(shape, (tuple, list)) else (cast(int, shape),)))
        lower = (0,) * len(counts) if lower_bounds is None else tuple(map(operator.index, lower_bounds))
        if len(lower) != len(counts) or not counts:
            raise ValueError("an array needs a count for each dimension, and as many lower bounds as counts")
        for count, bound in zip(counts, lower):
            if not 0 <= count <= _MOST_ELEMENTS or not -1 << 31 <= bound <= (1 << 31) - max(count, 1):
                raise Error(Code.INVALID_ARGUMENTS,
                            f"{shown(count)} elements from {shown(bound)} on do not fit 32 bits")
        if math.prod(counts) > _MOST_ELEMENTS:
            raise Error(Code.INVALID_ARGUMENTS, f"an array of the shape {counts} is too large")
        _need_memory(type, counts)
        bounds = (ZrSafeArrayBound * len(counts))(*map(ZrSafeArrayBound, counts, lower))
        handle = functions["ZrSafeArrayCreate"](type, len(counts), bounds)
        if not handle:
            raise Error(Code.NO_MEMORY)
        self._set(_Handle(handle), type, counts, lower)

    def _set(self, handle: _Handle, kind: int, shape: Tuple[int, ...], lower: Tuple[int, ...]) -> "Array":
        self._handle, self._type, self._shape, self._lower = handle, Type(kind), shape, lower
        self._element = element_of(kind)
        self._block: Optional["weakref.ref[Any]"] = None
        return self

    @classmethod
    def _own(cls, handle: Optional[int]) -> "Array":
        """Takes an array of the library."""
        owner = _Handle(handle or 0)
        tag, dimensions = c_uint16(), c_uint32()
        bounds = ctypes.POINTER(ZrSafeArrayBound)()
        check(functions["ZrSafeArrayGetVartype"](handle, tag))
        check(functions["ZrSafeArrayGetBounds"](handle, dimensions, bounds))
        if tag.value not in ELEMENTS or not dimensions.value:
            raise Error(Code.NOT_SUPPORTED, "the array can't have elements")
        records = [bounds[at] for at in range(dimensions.value)]
        return cls.__new__(cls)._set(owner, tag.value, tuple(record.elementCount for record in records),
                                     tuple(record.lowerBound for record in records))

    @classmethod
    def _copy_of(cls, handle: Optional[int]) -> "Array":
        copy = c_void_p()
        check(functions["ZrSafeArrayCopy"](handle, copy), "the array can't be copied")
        return cls._own(copy.value)

    @classmethod
    def of(cls, content: Any, type: Optional[Type] = None, lower_bounds: Optional[Sequence[int]] = None) -> "Array":
        """Makes an array with a copy of a buffer, such as a numpy array, or of nested sequences.

        content       lists, tuples and ranges, those of one level with equal lengths; or a buffer of booleans,
                      integers, binary32 or binary64 in the byte order of the machine
        type          the element type. Without it, a buffer decides by its format, and sequences become an array of
                      variants.
        lower_bounds  see Array

        Raises Error with ZR_R_INVALID_ARGUMENTS if a number doesn't fit the type, TypeError if an element or a format
        is of another kind, such as float for an integer type, and ValueError if lengths differ or more than 500
        sequences are nested. numpy raises ValueError for dates and times: pass their tolist(), with the type DATETIME
        or TIME.
        """
        if not _nested(content):
            try:
                buffer = memoryview(content)
            except TypeError:
                raise TypeError("an array is made from a buffer, or from lists, tuples and ranges, not from "
                                f"{content.__class__.__name__}") from None
            return cls._of_buffer(buffer, type, lower_bounds)
        shape: List[int] = []
        level: Any = content
        while _nested(level):
            if len(shape) == _MOST_DIMENSIONS:
                raise ValueError("the sequences are nested too deeply, or a sequence contains itself")
            shape.append(len(level))
            level = level[0] if len(level) else None
        leaves: List[Any] = []
        _flatten(content, shape, leaves)
        array = cls(Type.VARIANT if type is None else type, shape, lower_bounds)
        if leaves:
            array._element.store(array._open(), leaves)
        return array

    @classmethod
    def _of_buffer(cls, content: memoryview, kind: Optional[Type], lower_bounds: Optional[Sequence[int]]) -> "Array":
        source = _FROM_FORMAT.get(content.format.lstrip("@=<"))
        if source is None:
            raise TypeError(f"elements of the format {content.format!r} have no type of the library")
        if source in REALS and kind in INTEGERS:
            raise TypeError(f"{Type(kind).name} needs integers: astype() cuts off fractions")
        array = cls(source, content.shape or (1,), lower_bounds)
        if content.nbytes:
            bytes_of = memoryview(array._open()).cast("B")
            bytes_of[:] = content.cast("B") if content.c_contiguous else content.tobytes()
        return array if kind in (None, source) else array.astype(kind or source)

    @property
    def type(self) -> Type:
        """The type of the elements."""
        return self._type

    @property
    def shape(self) -> Tuple[int, ...]:
        """The number of elements per dimension."""
        return self._shape

    @property
    def lower_bounds(self) -> Tuple[int, ...]:
        """The first index per dimension."""
        return self._lower

    def indices(self) -> Iterator[Tuple[int, ...]]:
        """All indices, the last dimension fastest."""
        return itertools.product(*(range(low, low + count) for low, count in zip(self._lower, self._shape)))

    # ---- Elements ---------------------------------------------------------------------------------------------------

    def _index(self, index: Index) -> Any:
        """The library doesn't compare indices with the bounds, so this must."""
        if type(index) is int and len(self._shape) == 1 and 0 <= index - self._lower[0] < self._shape[0]:
            return c_uint32(index & 0xFFFFFFFF)
        at = index if isinstance(index, tuple) else (index,)
        if len(at) != len(self._shape):
            raise IndexError(f"{len(at)} indices for {len(self._shape)} dimensions")
        for number, low, count in zip(at, self._lower, self._shape):
            if not hasattr(number, "__index__"):
                raise TypeError(f"an index is one integer per dimension, not {number.__class__.__name__}")
            number = operator.index(number)
            if not low <= number < low + count:
                raise IndexError(f"index {shown(number)} is not within {low} to {low + count - 1}")
        return (c_uint32 * len(at))(*(operator.index(number) & 0xFFFFFFFF for number in at))

    def __getitem__(self, index: Index) -> Any:
        """One element: one number per dimension. Raises IndexError for an index outside the bounds."""
        return self._element.get(self._handle.value, self._index(index))

    def __setitem__(self, index: Index, value: Any) -> None:
        self._element.put(self._handle.value, self._index(index), value)

    def __len__(self) -> int:
        return self._shape[0]

    def __iter__(self) -> Iterator[Any]:
        return iter(self.tolist())

    def tolist(self) -> List[Any]:
        """The elements as nested lists."""
        return _nest(self._element.load(self._open()) if 0 not in self._shape else [], self._shape)

    # ---- Views ------------------------------------------------------------------------------------------------------

    def _open(self) -> Any:
        """The elements as a ctypes array, which owns the access flag and keeps the array alive."""
        with _opening:
            block = self._block() if self._block is not None else None
            if block is None:
                data = c_void_p()
                check(functions["ZrSafeArrayAccessData"](self._handle.value, data), "the array is in use")
                type_of_all = self._element.ctype * math.prod(self._shape)
                block = type_of_all.from_address(data.value) if data.value else type_of_all()
                _hide(block)
                weakref.finalize(block, _close_block, self._handle).atexit = False
                self._block = weakref.ref(block)
            return block

    def view(self) -> memoryview:
        """The elements as a writable memoryview of the library's memory, with the shape of the array.

        A memoryview can't have a shape with a 0 in it, so the view of an array without elements is empty and has one
        dimension. Raises TypeError if the elements are not numbers, and Error if the access flag is set, except by
        views of this Array.
        """
        if not self._element.is_number:
            raise TypeError(f"elements of the type {self._type.name} have no buffer")
        flat = memoryview(self._open())
        return flat if 0 in self._shape else flat.cast("B").cast(flat.format.lstrip("<>=@"), self._shape)

    def __buffer__(self, flags: int) -> memoryview:
        return self.view()

    def __array__(self, dtype: Any = None, copy: Optional[bool] = None) -> "numpy.ndarray[Any, Any]":
        import numpy
        shown = numpy.asarray(self.view()).reshape(self._shape)
        if dtype is None or shown.dtype == dtype:
            return shown.copy() if copy else shown
        if copy is False:
            raise ValueError(f"elements of the type {self._type.name} are copied to become {dtype}")
        return shown.astype(dtype)

    # ---- Whole arrays -----------------------------------------------------------------------------------------------

    def _copy(self) -> int:
        _need_memory(self._type, self._shape)
        handle = c_void_p()
        check(functions["ZrSafeArrayCopy"](self._handle.value, handle), "the array can't be copied")
        return handle.value or 0

    def copy(self) -> "Array":
        """A copy with elements of its own."""
        return Array._own(self._copy())

    def astype(self, type: Type) -> "Array":
        """A copy whose elements have another type, by the rules of ZrSafeArrayChangeType.

        A fraction is cut off. Raises Error with ZR_R_INVALID_ARGUMENTS if an element doesn't convert or doesn't fit the
        type, and ZR_R_FAILED if arrays can't have elements of the type. Linear; numbers are converted by one native
        call. Variants that become 64-bit numbers, dates or times are converted one by one.
        """
        if type == self._type:
            return self.copy()
        if 0 in self._shape:
            return Array(type, self._shape, self._lower)
        if self._type == Type.VARIANT and type in _variant.WIDE:
            made = Array(type, self._shape, self._lower)
            made._element.store(made._open(), [_variant.convert(value, type) for value in _flat(self)])
            return made
        handle = _Handle(self._copy())
        _need_memory(type, self._shape)
        if check(functions["ZrSafeArrayChangeType"](handle.value, 0, type)) != 0:
            raise Error(Code.INVALID_ARGUMENTS, f"not every element of {self!r} converts to {Type(type).name}")
        made = Array.__new__(Array)._set(handle, type, self._shape, self._lower)
        if type in _variant.WIDE:
            self._check_wide(made)
        return made

    def _check_wide(self, made: "Array") -> None:
        """Raises Error if the library has let an element pass that doesn't fit the 64 bits of its new type."""
        least, most = _variant.WIDE[made._type]
        block = made._open()
        highest = bytes(block)[7::8]   # of the 8 bytes of each element
        if self._type in _variant.WIDE and (least < 0) != (_variant.WIDE[self._type][0] < 0):
            if not highest.isascii():   # the bits were copied, and an element has the highest bit set
                raise Error(Code.INVALID_ARGUMENTS, f"an element of {self!r} does not fit {made._type.name}")
        elif self._type in REALS or self._type == Type.STR:
            # Such an element became 0x8000000000000000 or, if it was a text, the greatest number. Either may be right.
            elements = self._open()
            for limit in (least or 1 << 63, most):
                for at in _positions(highest, limit >> 56 & 0xFF):
                    if block[at] == limit:
                        _variant.convert(self._element.load(elements[at:at + 1])[0], made._type)

    def __eq__(self, other: object) -> bool:
        """Arrays are equal if type, shape, lower bounds and elements are equal. Numbers are compared by their bytes."""
        if not isinstance(other, Array):
            return NotImplemented
        if (self._type, self._shape, self._lower) != (other._type, other._shape, other._lower):
            return False
        equal = c_uint8(0)
        check(functions["ZrSafeArrayCompare"](self._handle.value, other._handle.value, byref(equal)))
        return equal.value != 0

    __hash__ = None  # type: ignore[assignment]

    def __copy__(self) -> "Array":
        return self.copy()

    def __deepcopy__(self, memo: Any) -> "Array":
        return self.copy()

    def __reduce__(self) -> Any:
        raise TypeError("an Array can't be pickled: pickle its tolist()")

    def __repr__(self) -> str:
        bounds = f", lower_bounds={self._lower}" if any(self._lower) else ""
        return f"Array(Type.{self._type.name}, {self._shape}{bounds})"


# ---- Nested sequences -----------------------------------------------------------------------------------------------

def _nests(kind: type) -> bool:
    return issubclass(kind, (list, tuple, range)) and not issubclass(kind, (Ref, Sref))


def _nested(content: Any) -> bool:
    return _nests(type(content))


def _flatten(content: Any, shape: Sequence[int], leaves: List[Any]) -> None:
    if not _nested(content) or len(content) != shape[0]:
        raise ValueError("nested sequences of one level must have the same length")
    if len(shape) > 1:
        for item in content:
            _flatten(item, shape[1:], leaves)
    elif any(map(_nests, set(map(type, content)))):
        raise ValueError("a sequence contains both sequences and other elements")
    else:
        leaves.extend(content)


def _nest(flat: List[Any], shape: Tuple[int, ...]) -> List[Any]:
    if len(shape) == 1:
        return flat
    step = math.prod(shape[1:])
    return [_nest(flat[at * step:(at + 1) * step], shape[1:]) for at in range(shape[0])]


def _flat(array: Array) -> List[Any]:
    return array._element.load(array._open())


def _positions(data: bytes, byte: int) -> Iterator[int]:
    at = data.find(byte)
    while at >= 0:
        yield at
        at = data.find(byte, at + 1)


_variant.readers.update({kind | ZR_VT_ARRAY: lambda record: Array._copy_of(record.Value.array) for kind in ELEMENTS})
_variant.writers[Array] = lambda record, array: _variant.write_handle(record, array.type | ZR_VT_ARRAY, array._copy())
_variant.converters[Array] = Array.astype
