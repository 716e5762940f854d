"""Values that a variant or an array holds by a handle: strings, blobs, UUIDs, REFs and SREFs.

HANDLES has one row per type: what makes a handle from a Python value, what reads a handle, and what releases it. A null
handle is read as an empty or nil value. Other modules add the rows of interface objects.
"""
import ctypes
import uuid
from ctypes import POINTER, byref, c_void_p
from typing import Any, Callable, Dict, NamedTuple, Optional

from ._abi import ZRREF, ZRSREF, ZRUUID, Code, Type
from ._errors import Error, check
from ._library import functions
from .values import Ref, Sref, shown

MOST_BYTES = (1 << 32) - 4   # of a string or blob: lengths have 32 bits, and a string has a terminator

_string_new, _string_length = functions["ZrCreateStringByteLen"], functions["ZrStringByteLen"]
_string_free = functions["ZrDestroyString"]
_blob_new, _blob_length = functions["ZrCreateBlob"], functions["ZrBlobByteLen"]
_blob_read, _blob_remove = functions["ZrReadBlobPos"], functions["ZrRemoveBlob"]
_uuid_copy, _ref_copy, _sref_copy = functions["ZrCopyUUID"], functions["ZrCopyREF"], functions["ZrCopySREF"]


class Handle(NamedTuple):
    """How a type is stored by a handle."""

    new: Callable[[Any], Optional[int]]    # gives a handle; a wrong Python type raises TypeError
    read: Callable[[Optional[int]], Any]   # copies the content
    free: Callable[[Optional[int]], Any]


def _check_length(length: int) -> int:
    if length > MOST_BYTES:
        raise Error(Code.INVALID_ARGUMENTS, f"{length} bytes do not fit a length of 32 bits")
    return length


def need(value: Any, kind: type) -> None:
    """Raises TypeError if a value doesn't have the type."""
    if not isinstance(value, kind):
        raise TypeError(f"{kind.__name__} is needed, not {type(value).__name__}")


# ---- Strings and blobs ----------------------------------------------------------------------------------------------

def new_string(text: str) -> int:
    need(text, str)
    units = text.encode("utf-16-le", "surrogatepass")
    handle = _string_new(units, _check_length(len(units)))
    if handle is None:
        raise Error(Code.NO_MEMORY)
    return int(handle)


def read_string(handle: Optional[int]) -> str:
    """The text of a handle. An unpaired surrogate stays one, and an odd last byte is left out."""
    if not handle:
        return ""
    return ctypes.string_at(handle, _string_length(handle) & ~1).decode("utf-16-le", "surrogatepass")


def take_string(handle: Optional[int]) -> str:
    """Reads and releases a string."""
    try:
        return read_string(handle)
    finally:
        _string_free(handle)


def new_blob(data: Any) -> int:
    """Bytes as a blob, which is never null: a null blob equals no other blob. The library creates no blob without
    bytes, but it can remove them."""
    content = data if isinstance(data, bytes) else bytes(memoryview(data))
    handle = _blob_new(_check_length(len(content)) or 1, content or None)
    if not content:
        check(_blob_remove(handle, 0, 1))
    return int(handle)


def read_blob(handle: Optional[int]) -> bytes:
    if not handle:
        return b""
    length = ctypes.c_uint32()
    check(_blob_length(handle, byref(length)))
    content = ctypes.create_string_buffer(length.value)
    if length.value:
        check(_blob_read(handle, content, 0, length.value))
    return content.raw


# ---- UUIDs and references -------------------------------------------------------------------------------------------

def uuid_record(value: uuid.UUID) -> ZRUUID:
    need(value, uuid.UUID)
    return ZRUUID.from_buffer_copy(value.bytes_le)


def read_uuid(record: ZRUUID) -> uuid.UUID:
    return uuid.UUID(bytes_le=bytes(record))


def _copy(function: Callable[..., int], record: Any) -> Optional[int]:
    """Lends a record of Python to a function that makes a record which the library can release."""
    copy = POINTER(type(record))()
    check(function(record, byref(copy)))
    return c_void_p.from_buffer(copy).value


def _read_uuid_handle(handle: Optional[int]) -> uuid.UUID:
    return read_uuid(ZRUUID.from_address(handle)) if handle else uuid.UUID(int=0)


def _words(value: Ref) -> ZRREF:
    need(value, Ref)
    record = ZRREF()
    for at, word in enumerate(value):
        if not 0 <= word < 1 << 32:
            raise Error(Code.INVALID_ARGUMENTS, f"{shown(word)} does not fit a word of a REF")
        record.words[at] = word
    return record


def _read_ref(handle: Optional[int]) -> Ref:
    return Ref(*ZRREF.from_address(handle).words) if handle else Ref()


def _new_sref(value: Sref) -> Optional[int]:
    """An SREF with neither a ref nor a text is null."""
    need(value, Sref)
    words = _words(value.ref) if value.ref is not None else None
    text = new_string(value.text) if value.text is not None else None
    try:
        return _copy(_sref_copy, ZRSREF(ctypes.pointer(words) if words is not None else None, text))
    finally:
        _string_free(text)


def _read_sref(handle: Optional[int]) -> Sref:
    if not handle:
        return Sref()
    record = ZRSREF.from_address(handle)
    return Sref(Ref(*record.ref[0].words) if record.ref else None, read_string(record.text) if record.text else None)


def _free_record(name: str, record: Any) -> Callable[[Optional[int]], None]:
    free, kind = functions[name], POINTER(record)

    def release(handle: Optional[int]) -> None:
        if handle:
            free(kind.from_buffer(c_void_p(handle)))
    return release


HANDLES: Dict[int, Handle] = {
    Type.STR: Handle(new_string, read_string, _string_free),
    Type.BLOB: Handle(new_blob, read_blob, functions["ZrDestroyBlob"]),
    Type.UUID: Handle(lambda value: _copy(_uuid_copy, uuid_record(value)), _read_uuid_handle,
                      _free_record("ZrDestroyUUID", ZRUUID)),
    Type.REF: Handle(lambda value: _copy(_ref_copy, _words(value)), _read_ref, _free_record("ZrDestroyREF", ZRREF)),
    Type.SREF: Handle(_new_sref, _read_sref, _free_record("ZrDestroySREF", ZRSREF)),
}
