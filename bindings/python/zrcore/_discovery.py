"""Discoveries: Python objects that report where classes are implemented and what they are called.

The library calls a discovery through the table of IZrComponentDiscovery. A Python discovery is called through an
adapter with that interface, which is a Python-implemented object like any other.
"""
import uuid
from ctypes import CFUNCTYPE, POINTER, byref, c_int32, c_uint32, c_uint64, c_void_p
from typing import Any, Callable, Dict, Mapping, Optional, Tuple, Union

from . import _handles
from ._abi import ZRUUID, Code, ZrModuleEntryPoints
from ._configuration import IConfiguration, provide
from ._errors import Error, call, callback
from ._implement import implement, is_python
from ._interface import Interface, operation
from ._library import functions
from ._objects import query
from .kinds import Kind, guid, interface, out, string

# Makes an object of a class: gets the identifiers of class and interface, and returns a reference.
Factory = Callable[[uuid.UUID, uuid.UUID], Interface]
Component = Union[str, Factory, None]

_CREATE = CFUNCTYPE(c_int32, POINTER(ZRUUID), c_uint64, POINTER(ZRUUID), c_uint64, POINTER(c_void_p))
_NO_CLASS = uuid.UUID(int=0)


class Discovery:
    """The base class of discoveries in Python. A subclass overrides the queries that it can serve.

        class Planets(zrcore.Discovery):
            def component(self, class_id):
                return "/usr/lib/planets.so" if class_id == MARS else None

            def class_id(self, name):
                return MARS if name == "Planets.Mars" else None

    None means that the discovery doesn't know the class or name. If a query raises an exception, the library asks the
    other discoveries, and the exception is raised in the Python caller if none of them knows the class or name.

    Threads: the library calls a discovery from any thread, one call at a time, under its management lock. A query may
    call zrcore, but it must not wait for another thread that does: that deadlocks.
    """

    def component(self, class_id: uuid.UUID) -> Component:
        """Where a class is implemented: the path of a module, or a function that makes objects.

        The path is a str. On Linux, the loader searches only its own folders for a path without a slash, such as
        "planets.so", and not the current folder.

        The function gets the identifiers of the class and of the wanted interface, and returns an Interface, such as
        zrcore.implement makes. It is called from any thread, without a lock of the library. The library asks once for a
        class, and remembers the result until the discovery is removed.
        """
        return None

    def class_id(self, name: str) -> Optional[uuid.UUID]:
        """The identifier of a class."""
        return None

    def class_name(self, class_id: uuid.UUID) -> Optional[str]:
        """The name of a class."""
        return None

    def configuration(self, class_id: uuid.UUID, name: str) -> Optional[Mapping[str, Any]]:
        """The values of a configuration of a class, by their names: any values that a variant can hold, such as
        zrcore.ui4(5). The library asks only the discovery whose component() knows the class.

        When a discovery is added, the library asks it for the settings of the library: for the nil class,
        uuid.UUID(int=0), with the name "ZrCore". The first discovery decides. The settings are EnableAllocator,
        ZR_VT_REF and ZR_VT_SREF. They must not be arrays.
        """
        return None


# ---- The native interface -------------------------------------------------------------------------------------------

class _EntryPoints(Kind):
    """The functions of a module without a file: only the one that creates objects. The adapter keeps it."""

    cell = ZrModuleEntryPoints

    def fill(self, cell: Any, value: Any) -> None:
        if value is not None:
            cell.createInstance = value


class _Path(Kind):
    """A path, or null."""

    cell = c_void_p

    def fill(self, cell: Any, value: Any) -> None:
        if value is not None:
            string.fill(cell, value)

    def drop(self, cell: Any) -> None:
        string.drop(cell)


class _IDiscovery(Interface):
    iid = _NO_CLASS   # the library never asks for it

    @operation(guid, out(_Path()), out(_EntryPoints()))
    def QueryComponent(self, class_id: uuid.UUID) -> Tuple[Optional[str], Any]:
        """Where a class is implemented."""
        raise NotImplementedError

    @operation(guid, string, out(interface(IConfiguration)))
    def QueryConfiguration(self, class_id: uuid.UUID, name: str) -> IConfiguration:
        """A configuration of a class."""
        raise NotImplementedError

    @operation(string, out(guid))
    def QueryClassId(self, name: str) -> uuid.UUID:
        """The identifier of a class."""
        raise NotImplementedError

    @operation(guid, out(string))
    def QueryClassName(self, class_id: uuid.UUID) -> str:
        """The name of a class."""
        raise NotImplementedError


class _Adapter:
    """What the library calls for a Discovery. It keeps the functions that create objects, since the library remembers
    them until it releases the discovery."""

    def __init__(self, discovery: Discovery) -> None:
        self._discovery = discovery
        self._creators: Dict[uuid.UUID, Any] = {}

    def QueryComponent(self, class_id: uuid.UUID) -> Tuple[Optional[str], Any]:
        found = self._discovery.component(class_id)
        if found is None:
            raise Error(Code.CLASS_NOT_REGISTERED, f"the class {class_id} is not known")
        if isinstance(found, str):
            if "\0" in found:   # the library would load the file whose path is the text before it
                raise ValueError("embedded null character in the path of a module")
            return found, None
        if not callable(found):
            raise TypeError("component() must return a path as a str, a function or None, not "
                            f"{type(found).__name__}")
        return None, self._creators.setdefault(class_id, _creator(found))

    def QueryConfiguration(self, class_id: uuid.UUID, name: str) -> IConfiguration:
        values = self._discovery.configuration(class_id, name)
        if values is None:
            raise Error(Code.NOT_SUPPORTED, f"the class {class_id} has no configuration {name!r}")
        return provide(values, class_id == _NO_CLASS and name == "ZrCore")

    def QueryClassId(self, name: str) -> uuid.UUID:
        found = self._discovery.class_id(name)
        if found is None:
            raise Error(Code.UNKNOWN_IDENTIFIER, f"the name {name!r} is not known")
        return found

    def QueryClassName(self, class_id: uuid.UUID) -> str:
        found = self._discovery.class_name(class_id)
        if found is None:
            raise Error(Code.UNKNOWN_IDENTIFIER, f"the class {class_id} is not known")
        return found


def _creator(factory: Factory) -> Any:
    def create(class_id: Any, argument1: int, interface_id: Any, argument2: int, result: Any) -> int:
        wanted = _handles.read_uuid(interface_id[0])
        made = factory(_handles.read_uuid(class_id[0]), wanted)
        if not isinstance(made, Interface):
            raise TypeError("the function that component() returned must return an Interface, such as "
                            f"zrcore.implement makes, not {type(made).__name__}")
        result[0] = query(made._address(), wanted, f"{made!r} has no interface {wanted}")
        return int(Code.OK)
    return _CREATE(callback(create))


# ---- Calls of the component system ----------------------------------------------------------------------------------

def system_call(name: str, arguments: Tuple[Any, ...], text: str = "") -> None:
    """call() of a function that returns ZR_R_NO_INIT outside library(). The text of that Error says so."""
    try:
        call(functions[name], arguments, text)
    except Error as error:
        if error.code == Code.NO_INIT and error.text == text:   # not the Error of a callback
            raise Error(Code.NO_INIT, f"{text}: this needs zrcore.library()") from None
        raise


# ---- Registration ---------------------------------------------------------------------------------------------------

class Registration:
    """A registered discovery; zrcore.add_discovery() returns it."""

    def __init__(self, cookie: int) -> None:
        self._cookie = cookie
        _registrations[cookie] = self

    def remove(self) -> None:
        """Removes the discovery and the classes that it reported. A second call does nothing.

        All objects of its modules must have been released, and none may be being created: the library unloads their
        code. Raises Error with the code of ZrRemoveComponentDiscovery.
        """
        if _registrations.get(self._cookie) is self:
            del _registrations[self._cookie]
            call(functions["ZrRemoveComponentDiscovery"], (self._cookie,))


_registrations: Dict[int, Registration] = {}


def remove_all() -> None:
    """Removes the discoveries that Python has added. A failure is ignored: native code may have removed one."""
    for registration in list(_registrations.values()):
        try:
            registration.remove()
        except Error:
            pass


def add_discovery(discovery: Union[Discovery, Interface]) -> Registration:
    """Registers a discovery: a Discovery, or an Interface object with the native interface IZrComponentDiscovery.

    The library keeps the discovery until remove() of the result or the last uninitialize(). Discoveries are asked in
    the order in which they were added. An exception of Discovery.configuration goes to sys.excepthook, since the
    library ignores the failure. Raises Error with ZR_R_NO_INIT outside library(). Any thread, any time.
    """
    if not isinstance(discovery, (Discovery, Interface)):
        raise TypeError(f"a Discovery or an Interface is needed, not {type(discovery).__name__}")
    if not isinstance(discovery, (Discovery, _IDiscovery)) and is_python(discovery._address()):
        raise TypeError("a Python object is a discovery if it derives from Discovery")
    native = discovery if isinstance(discovery, Interface) else implement(_Adapter(discovery), _IDiscovery)
    cookie = c_uint32()
    try:
        system_call("ZrAddComponentDiscovery", (native._address(), byref(cookie)), "the discovery was not added")
    finally:
        if native is not discovery:
            native.close()   # the library has a reference of its own
    return Registration(cookie.value)
