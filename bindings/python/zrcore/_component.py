"""The component system: its lifecycle, and the creation of objects.

uninitialize() must not release the native objects while another thread initialises, so both run under one lock for
their whole time. The lock is recursive: ZrExitModule of a module may call Python.
"""
import atexit
import threading
import uuid
from contextlib import contextmanager
from ctypes import byref, c_void_p
from typing import Any, Iterator, List, Optional, Tuple, Type, TypeVar, Union

from . import _discovery, _handles, _implement
from ._abi import Type as Tag
from ._abi import ZRUUID
from ._configuration import Configuration, IConfiguration
from ._discovery import system_call
from ._errors import call, check
from ._interface import Interface, live
from ._library import functions, state
from .kinds import string
from .values import pack

AnyInterface = TypeVar("AnyInterface", bound=Interface)
Class = Union[str, uuid.UUID]   # by its name or identifier

_lock = threading.RLock()
_count = 0   # of initialize() without uninitialize()


# ---- Lifecycle ------------------------------------------------------------------------------------------------------

def initialize() -> None:
    """Begins the use of the component system. Each call needs one uninitialize(); library() makes both for a block.

    Any thread, any time. It waits while another thread runs uninitialize().
    """
    global _count
    with _lock:
        check(functions["ZrInitialize"]())
        _count += 1


def uninitialize() -> None:
    """Ends the use of the component system. A call without initialize() does nothing.

    The last call of Python first releases the native objects of all Interface objects, which raise Error from then on,
    and removes the discoveries that Python has added: the library unloads the modules then, and a later call into their
    code would be undefined behaviour. Objects made by implement() stay usable in Python.

    Before the last call, other threads must have ended their calls of objects, and native objects in arrays must have
    been released. An exception of a discovery or of native code is raised after the end.
    """
    global _count
    with _lock:
        if _count == 0:
            return
        try:
            if _count == 1:
                for reference in list(live.values()):
                    found = reference()
                    if found is not None and not _implement.is_python(found._pointer or 0):
                        found.close()
                _discovery.remove_all()
        finally:
            _count -= 1
            call(functions["ZrUninitialize"], ())


@contextmanager
def library() -> Iterator[None]:
    """Makes the component system usable in a block: initialize(), then uninitialize(). Blocks may be nested.

    The end of the outermost block releases native objects and removes discoveries, see uninitialize().

        >>> import zrcore
        >>> with zrcore.library():
        ...     zrcore.class_id("Planets.Mars")
        Traceback (most recent call last):
        zrcore.Error: ZR_R_FAILED: no discovery knows the class 'Planets.Mars'
    """
    initialize()
    try:
        yield
    finally:
        uninitialize()


@atexit.register
def _end() -> None:
    """At the end of the interpreter, native code must not call Python any more.

    A daemon thread may still use objects then, so the component system is only closed if there is no other thread.
    """
    try:
        while _count and threading.active_count() == 1:
            uninitialize()
    finally:
        state.ended = True
        _implement.detach()


# ---- Classes and objects --------------------------------------------------------------------------------------------

def class_id(name: str) -> uuid.UUID:
    """Returns the identifier of a class by its name.

    Raises Error with ZR_R_NO_INIT outside library(), and ZR_R_FAILED if no discovery knows the name; or the exception
    of a discovery in Python. Any thread, any time.
    """
    record = ZRUUID()
    keep: List[Any] = []
    try:
        system_call("ZrCLSIDFromClassName", (string.lend(name, keep), byref(record)),
                    f"no discovery knows the class {name!r}")
    finally:
        for free, handle in keep:
            free(handle)
    return _handles.read_uuid(record)


def class_name(class_id: uuid.UUID) -> str:
    """Returns the name of a class by its identifier.

    Raises like class_id(): with ZR_R_FAILED also if a discovery knows the class, but not its name.
    """
    handle = c_void_p()
    system_call("ZrClassNameFromCLSID", (_handles.uuid_record(class_id), byref(handle)),
                f"no discovery knows the name of the class {class_id}")
    return _handles.take_string(handle.value)


def _identifier(component: Class) -> ZRUUID:
    return _handles.uuid_record(class_id(component) if isinstance(component, str) else component)


def create(component: Class, interface: Type[AnyInterface], arguments: Tuple[int, int] = (0, 0)) -> AnyInterface:
    """Creates an object of a class.

    component  the name or the identifier of the class
    interface  the interface that the object must have
    arguments  two unsigned 64-bit numbers for the module. Their meaning is between caller and module.

    Raises Error with ZR_R_NO_INIT outside library(), ZR_R_FAILED for an unknown name, ZR_R_CLASS_NOT_REGISTERED for an
    unknown identifier, ZR_R_INVALID_ARGUMENTS for an argument that doesn't fit, a code of ZrCreateInstance, or the code
    of the module; or the exception of a Python factory. Any thread, any time.
    """
    for argument in arguments:
        pack(Tag.UI8, argument)
    first, second = arguments
    made = c_void_p()
    system_call("ZrCreateInstance",
                (_identifier(component), first, _handles.uuid_record(interface.iid), second, byref(made)),
                f"no object of {component} with {interface.__name__}")
    return interface(made.value or 0)


def configuration(component: Class, name: str) -> Optional[Configuration]:
    """Returns a configuration of a class; None if it has no values.

    component  the name or the identifier of the class
    name       the name of the configuration

    The library asks only the discovery that knows where the class is implemented: a Discovery in Python whose
    component() returns a path or a function. Raises Error like create(), and with the code of the discovery, such as
    ZR_R_NOT_SUPPORTED.
    """
    made = c_void_p()
    keep: List[Any] = []
    try:
        system_call("ZrQueryComponentConfiguration",
                    (_identifier(component), string.lend(name, keep), byref(made)),
                    f"no configuration {name!r} of {component}")
    finally:
        for free, handle in keep:
            free(handle)
    if not made.value:
        return None
    with IConfiguration(made.value) as found:
        section = found.QuerySection()
    return Configuration(section) if section is not None else None
