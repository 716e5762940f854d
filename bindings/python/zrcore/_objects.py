"""Native objects by their address: the operations that every object has, and the functions of a table.

A native object is the address of a pointer to its table of operations. The first three operations of each table are
AddRef, Release and QueryInterface; those of the base interfaces follow, then those of the interface itself:

    object -> | table | ... |      table -> | AddRef | Release | QueryInterface | first operation | ... |
"""
import uuid
from ctypes import CFUNCTYPE, POINTER, byref, c_int32, c_uint32, c_void_p, sizeof
from typing import Optional

from ._abi import INTERFACES, ZRUUID
from ._errors import call
from ._handles import uuid_record
from ._library import state

BASE = len(INTERFACES["IZrUnknown"][1])   # the place of the first operation after the three
COUNT = CFUNCTYPE(c_uint32, c_void_p)
QUERY = CFUNCTYPE(c_int32, c_void_p, POINTER(ZRUUID), POINTER(c_void_p))


def entry(address: int, slot: int) -> int:
    """The address of an operation."""
    table = c_void_p.from_address(address).value or 0
    return c_void_p.from_address(table + sizeof(c_void_p) * slot).value or 0


def add_reference(address: int) -> int:
    """Adds one reference, and returns the address."""
    COUNT(entry(address, 0))(address)
    return address


def release(address: Optional[int]) -> None:
    """Releases one reference; nothing after the end of the interpreter."""
    if address and not state.ended:
        COUNT(entry(address, 1))(address)


def query(address: int, interface_id: uuid.UUID, text: str) -> int:
    """Gives a reference on another interface of an object."""
    found = c_void_p()
    call(QUERY(entry(address, 2)), (address, uuid_record(interface_id), byref(found)), text)
    return found.value or 0
