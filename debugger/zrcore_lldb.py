"""lldb summaries for the library's values: `frame variable v` shows ZR_VT_I4 5 instead of sixteen bytes.

Load it with `command script import zrcore_lldb.py`. It reads memory and calls no function, so it also works on core
files. The installed file contains the decoder. In the source tree the decoder is a file of its own beside this one.
"""

import os  # not in the installed file
import sys  # not in the installed file

import lldb

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))  # not in the installed file
from zrcore_decoder import INVALID, TYPES, describe, known_type  # not in the installed file


def reader(target):
    def read(address, size):
        error = lldb.SBError()
        # Before the program runs, there is no process: the target reads static data from the file. It also reads there
        # what is missing in a core file.
        has_process = target.GetProcess().IsValid()
        place = target.ResolveLoadAddress(address) if has_process else target.ResolveFileAddress(address)
        data = target.ReadMemory(place, size, error)
        return data if error.Success() else None

    return read


def type_name(kind):
    """The first name in a chain of typedefs that the decoder knows, or None."""
    name = known_type(kind.GetName())
    while name is None and kind.IsTypedefType():
        kind = kind.GetTypedefedType()
        name = known_type(kind.GetName())
    return name


def summary(value, _):
    try:
        value = value.GetNonSyntheticValue()
        name = type_name(value.GetType())
        if name is None:   # a reference or a pointer
            if value.GetValueAsUnsigned() == 0:
                return "null"
            value = value.Dereference()
            name = type_name(value.GetType())
        error, read = lldb.SBError(), reader(value.GetTarget())
        data = value.GetData().ReadRawData(error, 0, value.GetByteSize())
        return describe(name, data if error.Success() else read(value.GetLoadAddress(), value.GetByteSize()), read)
    except Exception:   # lldb would print a trace instead of the value
        return INVALID


def __lldb_init_module(debugger, _):
    add = f"type summary add --category zrcore --python-function {__name__}.summary"
    for name in TYPES:
        debugger.HandleCommand(f"{add} --skip-pointers --no-value --regex \"^{name}(<.*>)?$\"")
        debugger.HandleCommand(f"{add} --regex \"^(const )?{name}(<.*>)? \\*$\"")
    debugger.HandleCommand("type category enable zrcore")
