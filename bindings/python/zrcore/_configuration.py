"""Configurations: named values that a discovery offers for a class or for the library.

    IZrConfiguration --QuerySection--> IZrConfigurationSection --QueryValue--> IZrConfigurationValue --Read--> variant

In Python a configuration is a mapping from names to values. provide() makes the three native objects for it, and
Configuration reads a configuration of any discovery.
"""
import uuid
from typing import Any, Mapping, Optional

from ._abi import ZR_VT_TYPEMASK, ZRVARIANT, Code, Type
from ._array import Array
from ._errors import Error
from ._implement import implement
from ._interface import Interface, operation
from ._variant import release, write
from .kinds import interface, out, string, uint16, variant

_NOT_IMPLEMENTED = "the operation is reserved"


class IConfigurationValue(Interface):
    """One value."""

    iid = uuid.UUID(int=0)   # the library never asks for the interfaces of a configuration

    @operation()
    def Reserved4(self) -> None:
        """Not in use."""

    @operation(variant, uint16, out(variant))
    def Read(self, default: Any, type: int) -> Any:
        """The value; the caller uses the default if this fails, and prefers the type."""


class IConfigurationSection(Interface):
    """Finds values by name."""

    iid = uuid.UUID(int=0)

    @operation()
    def Reserved4(self) -> None:
        """Not in use."""

    @operation()
    def Reserved5(self) -> None:
        """Not in use."""

    @operation(string, out(interface(IConfigurationValue)))
    def QueryValue(self, name: str) -> Optional[IConfigurationValue]:
        """The value with a name; None if it is absent."""


class IConfiguration(Interface):
    """A named set of values."""

    iid = uuid.UUID(int=0)

    @operation()
    def Reserved4(self) -> None:
        """Not in use."""

    @operation()
    def Reserved5(self) -> None:
        """Not in use."""

    @operation(out(interface(IConfigurationSection)))
    def QuerySection(self) -> Optional[IConfigurationSection]:
        """The section with the values."""


# ---- Configurations of Python ---------------------------------------------------------------------------------------

class _Reserved:
    def Reserved4(self) -> None:
        raise Error(Code.NOT_IMPLEMENTED, _NOT_IMPLEMENTED)

    Reserved5 = Reserved4


class _Value(_Reserved):
    def __init__(self, value: Any) -> None:
        self._value = value

    def Read(self, default: Any, type: int) -> Any:
        return self._value


class _Section(_Reserved):
    def __init__(self, values: Mapping[str, Any], numbers_only: bool) -> None:
        self._values, self._numbers_only = values, numbers_only

    def QueryValue(self, name: str) -> Optional[IConfigurationValue]:
        value = self._values.get(name)
        if value is None:
            raise Error(Code.NOT_EXISTING, f"there is no value {name!r}")
        if self._numbers_only and isinstance(value, Array):
            raise TypeError(f"the value {name!r} of the library must not be an array")
        return implement(_Value(value), IConfigurationValue)


class _Configuration(_Reserved):
    def __init__(self, section: _Section) -> None:
        self._section = section

    def QuerySection(self) -> IConfigurationSection:
        return implement(self._section, IConfigurationSection)


def provide(values: Mapping[str, Any], for_library: bool) -> IConfiguration:
    """Makes a native configuration from a mapping. The library reads the handle of an array as a number, so its own
    values must not be arrays."""
    return implement(_Configuration(_Section(values, for_library)), IConfiguration)


# ---- Configurations of any discovery --------------------------------------------------------------------------------

def _type_of(value: Any) -> int:
    record = ZRVARIANT()
    write(record, value)
    tag = record.Type & ZR_VT_TYPEMASK
    release(record)
    return tag


class Configuration:
    """The values of a configuration; zrcore.configuration() returns it.

    It is not a mapping: get() reads one value, and the names of the values can't be listed. It keeps native objects
    until it is garbage or the component system has ended.
    """

    def __init__(self, section: IConfigurationSection) -> None:
        self._section = section

    def get(self, name: str, default: Any = None, type: Optional[Type] = None) -> Any:
        """Returns a value, or the default if the value is absent or can't be read.

        name     the name of the value
        default  any value that a variant can hold
        type     the type that the discovery should prefer; without it, the type of the default. The value may have
                 another type; zrcore.convert changes it. The host kit and the C++ layer convert the value to the type,
                 so they return no value if there is neither a type nor a default.

        Raises the exception of a discovery in Python, except Error. After the end of the component system, raises Error
        with ZR_R_INVALID_OBJECT_STATE for a configuration of native code; that of a Discovery in Python stays readable.
        """
        kind = _type_of(default) if type is None else type
        try:
            value = self._section.QueryValue(name)
            if value is None:
                return default
            with value:
                return value.Read(default, kind)
        except Error:
            self._section._address()   # raises Error if the section was released
            return default
