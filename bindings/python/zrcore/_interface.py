"""Interfaces: Python classes whose operations call through the table of a native object.

An Interface object owns one reference on a native object. It is released by close(), at the end of a `with` block, when
the Interface is garbage, or by the last uninitialize(). After the end of the interpreter nothing is released.
"""
import uuid
import weakref
from ctypes import CFUNCTYPE, byref, c_int32, c_void_p
from typing import Any, Callable, ClassVar, Dict, List, Optional, Tuple, Type, TypeVar, Union

from ._abi import Code
from ._abi import Type as Tag
from ._errors import Error, call
from ._handles import HANDLES, Handle
from ._library import State, state
from ._objects import BASE, add_reference, entry, query, release
from ._variant import handle_reader, readers, write_handle, writers
from .kinds import Kind, Out

Method = TypeVar("Method", bound=Callable[..., Any])
AnyInterface = TypeVar("AnyInterface", bound="Interface")
live: "Dict[int, weakref.ref[Interface]]" = {}   # by id(); an entry exists until the reference is released


# ---- Declarations ---------------------------------------------------------------------------------------------------

class Operation:
    """One row of a table: its name, its prototype, and its arguments."""

    def __init__(self, name: str, arguments: Tuple[Union[Kind, Out], ...]) -> None:
        self.name = name
        for item in arguments:
            if not isinstance(item.kind if isinstance(item, Out) else item, Kind):
                raise TypeError(f"the arguments of {name} must be kinds, such as kinds.int32 or "
                                f"zrcore.out(kinds.int32), not {item!r}")
        self.plan = tuple((item.kind, True) if isinstance(item, Out) else (item, False) for item in arguments)
        self.inputs = tuple(kind for kind, is_result in self.plan if not is_result)
        self.results = tuple(kind for kind, is_result in self.plan if is_result)
        self.prototype: Any = CFUNCTYPE(c_int32, c_void_p, *(
            c_void_p if is_result else kind.ctype for kind, is_result in self.plan))

    def call(self, target: "Interface", slot: int, values: Tuple[Any, ...]) -> Any:
        if len(values) != len(self.inputs):
            raise TypeError(f"{self.name} needs {len(self.inputs)} arguments, not {len(values)}")
        function = target._function(slot, self.prototype)
        native: List[Any] = [target._address()]
        keep: List[Tuple[Callable[[Any], Any], Any]] = []
        cells: List[Any] = []
        given = iter(values)
        try:
            for kind, is_result in self.plan:
                if is_result:
                    cells.append(kind.cell())
                    native.append(byref(cells[-1]))
                else:
                    native.append(kind.lend(next(given), keep))
            call(function, tuple(native), f"{self.name} failed")
            results: List[Any] = []
            while len(results) < len(cells):
                kind, cell = self.results[len(results)], cells[len(results)]
                cells[len(results)] = None
                results.append(kind.receive(cell))
        except BaseException:
            drop(self.results, cells)
            raise
        finally:
            for free, item in keep:
                free(item)
        return tuple(results) if len(results) > 1 else results[0] if results else None


def drop(kinds: Tuple[Kind, ...], cells: List[Any]) -> None:
    """Releases the results that were not received; those that were are None."""
    for kind, cell in zip(kinds, cells):
        if cell is not None:
            kind.drop(cell)


def operation(*arguments: Union[Kind, Out]) -> Callable[[Method], Method]:
    """Declares an operation of an interface.

    arguments  the native arguments in their order: a kind of zrcore.kinds, or zrcore.out() of a kind for an argument
               through which native code returns a result

    The Python method takes the arguments that are not results, by position, and returns the results: None, one value,
    or a tuple. The native operation must return a ZRRESULT: a failure raises Error, and a success is not distinguished
    from ZR_R_OK. The body of the method is not used.
    """
    def declare(method: Method) -> Method:
        method._operation = Operation(method.__name__, arguments)  # type: ignore[attr-defined]
        return method
    return declare


def _bound(row: Operation, slot: int, method: Any) -> Any:
    def call_operation(self: "Interface", *values: Any) -> Any:
        return row.call(self, slot, values)
    call_operation.__name__, call_operation.__qualname__ = row.name, method.__qualname__
    call_operation.__doc__ = method.__doc__
    return call_operation


class Interface:
    """A reference on a native object. A subclass declares an interface:

        import uuid, zrcore
        from zrcore import kinds

        class ICounter(zrcore.Interface):
            iid = uuid.UUID("5f2f14cc-5fd0-4f1d-8b5c-9b5f9f4b4c11")

            @zrcore.operation(kinds.uint32, zrcore.out(kinds.uint32))
            def Add(self, count: int) -> int:
                raise NotImplementedError

    The operations are declared in the order of the native table. Their bodies are not used. An interface that extends
    another one derives from it.

    Objects are made by zrcore.create and zrcore.implement. The constructor takes one reference on the object at an
    address; Error with ZR_R_INVALID_POINTER is raised for 0.

    Methods raise Error with the code that native code returned, Error with ZR_R_INVALID_OBJECT_STATE after close(), or
    the exception of a Python method that native code has called.

    Threads: as the native object allows. close() must not overlap with another call of the same Interface.
    """

    iid: ClassVar[uuid.UUID] = uuid.UUID(int=0)
    _rows: ClassVar[Tuple[Operation, ...]] = ()

    def __init_subclass__(cls) -> None:
        super().__init_subclass__()
        if sum(issubclass(base, Interface) for base in cls.__bases__) > 1:
            raise TypeError(f"{cls.__name__} extends two interfaces: a native table has one base")
        rows = list(cls._rows)
        for name, method in list(vars(cls).items()):
            row = getattr(method, "_operation", None)
            if row is not None:
                if any(row.name == other.name for other in rows):
                    raise TypeError(f"{cls.__name__}: {name} is an operation of a base interface")
                setattr(cls, name, _bound(row, BASE + len(rows), method))
                rows.append(row)
        if len(rows) > len(cls._rows) and "iid" not in vars(cls):
            raise TypeError(f"{cls.__name__} has operations, but no identifier iid of its own")
        cls._rows = tuple(rows)

    def __init__(self, address: int) -> None:
        if not address:
            raise Error(Code.INVALID_POINTER, f"there is no object for {type(self).__name__}")
        self._pointer: Optional[int] = address
        self._functions: Dict[int, Any] = {}
        live[id(self)] = weakref.ref(self)

    def __del__(self, state: State = state) -> None:
        if not state.ended:
            self.close()

    def _address(self) -> int:
        if self._pointer is None:
            raise Error(Code.INVALID_OBJECT_STATE, "the object was released")
        return self._pointer

    def _function(self, slot: int, prototype: Any) -> Any:
        """An operation as a function; the table of an object never changes while a reference exists."""
        function = self._functions.get(slot)
        if function is None:
            function = self._functions[slot] = prototype(entry(self._address(), slot))
        return function

    def close(self) -> None:
        """Releases the object. Operations raise Error afterwards. A second call does nothing."""
        if live.pop(id(self), None) is not None:   # one thread gets the entry
            address, self._pointer = self._pointer, None
            self._functions.clear()
            release(address)

    def query(self, interface: Type[AnyInterface]) -> AnyInterface:
        """Returns another interface of the same object. Raises Error if the object doesn't have it."""
        return interface(query(self._address(), interface.iid, f"the object has no {interface.__name__}"))

    def __enter__(self: AnyInterface) -> AnyInterface:
        return self

    def __exit__(self, *exception: object) -> None:
        self.close()

    def __reduce__(self) -> Any:
        raise TypeError(f"{type(self).__name__} can't be copied or pickled: query() makes another reference")

    def __repr__(self) -> str:
        place = "released" if self._pointer is None else f"0x{self._pointer:x}"
        return f"<{type(self).__name__} {place}>"


# ---- Interface objects in variants and arrays -----------------------------------------------------------------------

def give(value: Any) -> Optional[int]:
    """Gives one more reference on the object of an Interface, or null for None."""
    if value is None:
        return None
    if not isinstance(value, Interface):
        raise TypeError(f"an Interface is needed, not {type(value).__name__}")
    return add_reference(value._address())


def _share(address: Optional[int]) -> Optional[Interface]:
    return Interface(add_reference(address)) if address else None


for _tag in (Tag.UNKNOWN, Tag.DISPATCH):
    HANDLES[_tag] = Handle(give, _share, release)
    readers[_tag] = handle_reader(_tag)
writers[Interface] = lambda record, value: write_handle(record, Tag.UNKNOWN, give(value))
