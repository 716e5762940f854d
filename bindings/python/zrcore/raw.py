"""Every export of the library, with the signature of its C header.

    >>> from zrcore import raw
    >>> text = raw.ZrCreateString(raw.wide("abc"))
    >>> raw.ZrStringLen(text)
    3
    >>> raw.ZrDestroyString(text)

Handles, interface pointers and texts are addresses: int, or None for null. Results are numbers; nothing is checked and
nothing is released. The headers of the library state the ownership of each argument and result. The records of the
headers are classes of this module. The text of a ZRVARIANT is its value, as a debugger shows it.

ctypes cuts off a number that doesn't fit an argument or a field: 300 becomes 44 in a field with 8 bits. A caller must
check numbers.

An exception of C++ that passes from an export into Python terminates the process. The headers name the functions that
throw. ZrDateTimeToTimeT is one of them: it throws for years that it can't convert.
"""
import ctypes
from typing import Any, Callable, List

from . import _abi
from ._abi import *  # noqa: F401,F403
from ._library import functions as _functions


def wide(text: str) -> "ctypes.Array[ctypes.c_char]":
    """Returns a zero-terminated text in 16-bit code units. The caller must keep it while native code uses it."""
    units = text.encode("utf-16-le", "surrogatepass")
    return ctypes.create_string_buffer(units, len(units) + 2)


def __getattr__(name: str) -> Callable[..., Any]:
    try:
        return _functions[name]
    except KeyError:
        raise AttributeError(f"the library has no function {name!r}") from None


def __dir__() -> List[str]:
    return sorted([*globals(), *_abi.FUNCTIONS])


globals().update(_functions)
