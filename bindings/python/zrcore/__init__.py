"""ZrCore for Python: values, arrays and components of the library, by ctypes.

    >>> import zrcore
    >>> zrcore.convert("2012-03-04 05:06:07", zrcore.Type.DATETIME)
    datetime.datetime(2012, 3, 4, 5, 6, 7)
    >>> zrcore.compare(zrcore.i4(5), zrcore.i8(5))
    False

Values          convert, compare; Type; Ref, Sref; Typed, made by i4, ui1, r4, ...; see help(zrcore.values)
Arrays          Array
Errors          Error, Code
Components      library, or initialize and uninitialize; create, class_id, class_name; configuration
Discoveries     Discovery, add_discovery, Registration; zrcore.host finds modules in folders and must be imported
Interfaces      Interface, operation, out, implement; see help(zrcore.kinds)
C functions     zrcore.raw has every function of the library
"""
from . import _memory, kinds, raw, values
from ._abi import VERSION as __version__
from ._abi import Code, Type
from ._array import Array
from ._component import class_id, class_name, configuration, create, initialize, library, uninitialize
from ._configuration import Configuration
from ._discovery import Component, Discovery, Registration, add_discovery
from ._errors import Error
from ._implement import implement
from ._interface import Interface, operation
from ._variant import compare, convert
from .kinds import out
from .values import (Ref, Sref, Typed, byte, char32, cy, date_time, dispatch, dword, i1, i2, i4, i8, opaque, qword, r4,
                     r8, time_span, ui1, ui2, ui4, ui8, word)

__all__ = [
    "Array", "Code", "Component", "Configuration", "Discovery", "Error", "Interface", "Ref", "Registration", "Sref",
    "Type", "Typed", "__version__", "add_discovery", "byte", "char32", "class_id", "class_name", "compare",
    "configuration", "convert", "create", "cy", "date_time", "dispatch", "dword", "i1", "i2", "i4", "i8", "implement",
    "initialize", "kinds", "library", "opaque", "operation", "out", "qword", "r4", "r8", "raw", "time_span", "ui1",
    "ui2", "ui4", "ui8", "uninitialize", "values", "word",
]
