"""The text of raw records, by the decoder of the debuggers.

The decoder follows addresses in the record, which may be wrong. So memory is read by the system, which reports an
address that can't be read, and never directly. Where the system has no such service, only the record itself is shown.
"""
import ctypes
import os
import sys
from typing import Any

from ._abi import ZRREF, ZRSREF, ZRUUID, ZRVARIANT


def read(address: int, size: int) -> bytes:
    """Reads memory of this process. Raises OSError or OverflowError if it can't be read, or returns too few bytes."""
    if sys.platform == "win32":
        data, count = ctypes.create_string_buffer(size), ctypes.c_size_t()
        kernel = ctypes.windll.kernel32
        kernel.ReadProcessMemory(ctypes.c_void_p(-1), ctypes.c_void_p(address), data, ctypes.c_size_t(size),
                                 ctypes.byref(count))
        return data.raw[:count.value]
    file = os.open("/proc/self/mem", os.O_RDONLY)
    try:
        return os.pread(file, size, address)
    finally:
        os.close(file)


def _text(record: Any) -> str:
    from . import _decoder   # installed with the package; not in the source tree
    return _decoder.describe(type(record).__name__, bytes(record), read)


for _record in (ZRVARIANT, ZRUUID, ZRREF, ZRSREF):
    setattr(_record, "__repr__", _text)
