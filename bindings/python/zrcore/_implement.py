"""Python objects as native objects: native code calls their methods through tables of operations.

What native code sees of a Python object is one pointer to a table per interface, in one block of memory:

    record | table of the first interface | table of the second | ...      `this` is the address of one of the pointers

_objects finds the Python object by `this`. It keeps the object alive until the last reference is released. The
references are a list of tokens, whose ends list.append and list.pop change atomically, so no lock is needed, and
whichever thread takes the lowest token releases the object.

A table and its functions are never freed, since native code may call them at any time. At the end of the interpreter
detach() replaces all operations by functions of the library, which run no Python code.
"""
import functools
import time
from ctypes import addressof, byref, c_void_p, cast, memmove, py_object, pythonapi, sizeof
from typing import Any, Dict, List, Tuple, Type

from . import _handles
from ._abi import Code
from ._errors import callback, calling, running
from ._interface import AnyInterface, Interface, Operation, drop
from ._library import functions
from ._objects import COUNT, QUERY

_LOWEST = object()      # the token of the first reference
_LONGEST_WAIT = 1.0     # in seconds: at the end, for other threads that are in native code or in a callback


class _Object:
    """A Python object that native code can call."""

    __slots__ = ("target", "interfaces", "record", "tokens")

    def __init__(self, target: Any, interfaces: Tuple[Type[Interface], ...]) -> None:
        self.target, self.interfaces = target, interfaces
        self.record = (c_void_p * len(interfaces))(*(addressof(_table_of(kind)) for kind in interfaces))
        self.tokens: List[object] = [_LOWEST]

    def addresses(self) -> List[int]:
        return [addressof(self.record) + at * sizeof(c_void_p) for at in range(len(self.interfaces))]


_objects: Dict[int, _Object] = {}
_tables: Dict[Type[Interface], Tuple[Any, List[Any]]] = {}   # the table, and the functions in it


# ---- What native code calls -----------------------------------------------------------------------------------------

def _add(this: int) -> int:
    tokens = _objects[this].tokens
    tokens.append(None)
    return len(tokens)


def _drop(this: int) -> int:
    found = _objects[this]
    if found.tokens.pop() is not _LOWEST:
        return len(found.tokens)
    for address in found.addresses():
        del _objects[address]
    return 0   # the Python object is freed when this function has returned


def _query(this: int, interface_id: Any, result: Any) -> int:
    if not interface_id or not result:
        return int(Code.INVALID_ARGUMENTS)
    wanted, found = _handles.read_uuid(interface_id[0]), _objects[this]
    for address, kind in zip(found.addresses(), found.interfaces):
        if any(wanted == base.iid for base in kind.__mro__ if issubclass(base, Interface)):
            found.tokens.append(None)
            result[0] = address
            return int(Code.OK)
    result[0] = None
    return int(Code.NO_INTERFACE)


_SHARED = [COUNT(_add), COUNT(_drop), QUERY(callback(_query))]


def _run(row: Operation, this: int, *native: Any) -> int:
    """Calls the method of an operation. Nothing is stored in the caller's variables unless all results fit."""
    values, variables = [], []
    for (kind, is_result), item in zip(row.plan, native):
        if is_result:
            if not item:
                return int(Code.INVALID_ARGUMENTS)
            variables.append(item)
        else:
            values.append(kind.read(item))
    result = getattr(_objects[this].target, row.name)(*values)
    results = result if len(variables) > 1 else (result,) * len(variables)
    if not isinstance(results, tuple) or len(results) != len(variables):
        raise TypeError(f"{row.name} must return a tuple of {len(variables)} results")
    cells: List[Any] = []
    try:
        for kind, value in zip(row.results, results):
            cells.append(kind.cell())
            kind.fill(cells[-1], value)
    except BaseException:
        drop(row.results, cells)
        raise
    for variable, cell in zip(variables, cells):
        memmove(variable, byref(cell), sizeof(cell))   # the caller owns what the cell owned
    return int(Code.OK)


def _table_of(interface: Type[Interface]) -> Any:
    found = _tables.get(interface)
    if found is None:
        entries = [*_SHARED, *(row.prototype(callback(functools.partial(_run, row))) for row in interface._rows)]
        table = (c_void_p * len(entries))(*(cast(function, c_void_p).value for function in entries))
        found = _tables.setdefault(interface, (table, entries))   # another thread may have been faster
    return found[0]


# ---- What Python calls ----------------------------------------------------------------------------------------------

def implement(target: Any, interface: Type[AnyInterface], *others: Type[Interface]) -> AnyInterface:
    """Makes a native object whose operations call the methods of a Python object with the same names.

    target     any object with a method for each operation; otherwise TypeError is raised. A method takes the arguments
               that are not results, and returns the results: one value, or a tuple if there are several.
    interface  the interface that is returned, with one reference on the new object
    others     further interfaces of the object, which QueryInterface finds

    References on the new object keep `target` alive; a target that keeps one itself is never freed. If a method raises
    Error, its code is returned to native code; any other exception becomes ZR_R_UNEXPECTED. Both are raised again in
    the Python code that called the native code, if its call fails. Otherwise sys.excepthook gets the exception, unless
    it is an Error. If a method fails, no result is stored.

    Threads: native code may call the methods from any thread; each call holds the global interpreter lock. After the
    end of the interpreter an operation runs no Python code, and returns a failure.
    """
    interfaces: Tuple[Type[Interface], ...] = (interface, *others)
    for kind in interfaces:
        for row in kind._rows:
            if not callable(getattr(target, row.name, None)):
                raise TypeError(f"{type(target).__name__} has no method {row.name} of {kind.__name__}")
    made = _Object(target, interfaces)
    for address in made.addresses():
        _objects[address] = made
    return interface(made.addresses()[0])


def is_python(address: int) -> bool:
    """Whether the object at an address was made by implement()."""
    return address in _objects


def detach() -> None:
    """At the end of the interpreter: replaces the operations of Python objects that native code still holds.

    AddRef and Release become ZrGetNow, and the others ZrRemoveComponentDiscovery. Both take one number at most and read
    no memory of the caller. The latter takes the address of the object for a cookie that doesn't exist, and returns
    ZR_R_NO_INIT or ZR_R_UNKNOWN_IDENTIFIER. The memory that native code refers to is never freed. At last, calls and
    callbacks of other threads get time to end: Python stops their threads when they need the interpreter again.
    """
    if not _objects and not calling:
        return
    for kept in (_objects, _tables):
        pythonapi.Py_IncRef(py_object(kept))
    count, fail = (cast(functions[name], c_void_p).value  # type: ignore[arg-type]
                   for name in ("ZrGetNow", "ZrRemoveComponentDiscovery"))
    for table, entries in _tables.values():
        for slot in range(len(entries)):
            table[slot] = count if slot < 2 else fail
    end = time.monotonic() + _LONGEST_WAIT
    time.sleep(0.002)   # for threads that have called an operation and wait for the interpreter
    while (calling or running) and time.monotonic() < end:
        time.sleep(0.002)
