"""Finds and loads the shared library, once per process.

The component registry is part of the library, so a process must not contain two copies. The loader is asked for the
library's SONAME first: it returns the copy that the process has already loaded, or the installed one. Only if there is
none, the copy in the folder of this package is loaded.

Every call releases the global interpreter lock while native code runs, which costs some ten nanoseconds. So a call that
waits for a lock of the library can't deadlock with the thread that has the lock and runs a callback in Python.
"""
import ctypes
import pathlib
import sys
from typing import Any, Callable, Dict, Tuple

from . import _abi

Functions = Dict[str, Callable[..., Any]]


def load(soname: str, table: Dict[str, Tuple[Any, Tuple[Any, ...]]]) -> Tuple[ctypes.CDLL, Functions]:
    """Loads a library of ZrCore by its SONAME, and gives each function its signature."""
    name = soname[len("lib"):].split(".")[0] + ".dll" if sys.platform == "win32" else soname
    try:
        library = ctypes.CDLL(name)
    except OSError as error:
        beside = pathlib.Path(__file__).resolve().parent / name
        if not beside.exists():
            raise ImportError(f"{name} is neither installed nor in {beside.parent}: {error}") from error
        library = ctypes.CDLL(str(beside))
    functions: Functions = {}
    for function_name, (result, arguments) in table.items():
        try:
            function = getattr(library, function_name)
        except AttributeError:
            raise ImportError(f"{name} is older than this package: it has no {function_name}") from None
        function.restype = result
        function.argtypes = arguments
        functions[function_name] = function
    return library, functions


library, functions = load(_abi.SONAME, _abi.FUNCTIONS)


class State:
    """What destructors read. They run even when the modules of the package are gone, so they keep the object."""

    ended = False   # set at the end of the interpreter: nothing is released any more, since native code may be gone


state = State()
