"""The host kit: a ready discovery that finds modules in folders by the manifests beside them.

    import zrcore
    from zrcore import host

    with zrcore.library():
        modules = host.folder_discovery(["modules"])
        zrcore.add_discovery(modules)
        for found in modules.classes():
            print(found.name, found.module_file)
        for problem in modules.problems():
            print(problem)

Importing this module loads the library libzrhost, which is separate from libzrcore. ImportError is raised if it is
missing. No module is loaded until the first object of one of its classes is created. A file that is wrong never stops
the host: problems() reports it, and everything else works.
"""
import ctypes
import os
import uuid
from ctypes import POINTER, byref, c_uint32, c_void_p
from typing import Any, Callable, List, NamedTuple, Optional, Sequence, Tuple, Union

from . import _handles, raw
from ._errors import check
from ._host_abi import (FUNCTIONS, SONAME, ZRHOST_ALLOW_OUTSIDE, ZRHOST_ERROR, ZrHostClass, ZrHostInterface,
                        ZrHostProblem)
from ._interface import Interface
from ._library import load

__all__ = ["FolderDiscovery", "HostClass", "HostInterface", "Problem", "folder_discovery"]

Path = Union[str, "os.PathLike[str]"]

_library, _functions = load(SONAME, FUNCTIONS)


class HostInterface(NamedTuple):
    """An interface of a class. The name is empty if the manifest has none."""

    id: uuid.UUID
    name: str


class HostClass(NamedTuple):
    """A class that the discovery has found. The paths are absolute."""

    id: uuid.UUID
    name: str
    description: str
    module_file: str
    manifest_file: str
    module_version: str
    interfaces: Tuple[HostInterface, ...]


class Problem(NamedTuple):
    """Something wrong with a folder or file.

    If `is_error` is set, the folder, the file, or the part that the reason names is not in use. Otherwise everything
    except the named part is. Line and column count from 1; 0 means the whole file.
    """

    file: str
    reason: str
    is_error: bool
    line: int
    column: int

    def __str__(self) -> str:
        place = f":{self.line}:{self.column}" if self.line else ""
        return f"{self.file}{place}: {self.reason}"


class FolderDiscovery(Interface):
    """The discovery of folder_discovery(). zrcore.add_discovery registers it."""

    def classes(self) -> List[HostClass]:
        """The classes that were found, sorted by name."""
        return self._list("ZrHostListClasses", ZrHostClass, _read_class)

    def problems(self) -> List[Problem]:
        """What was wrong when the files were read last."""
        return self._list("ZrHostListProblems", ZrHostProblem, _read_problem)

    def folders(self) -> List[str]:
        """The absolute paths of the folders, whether they exist or not."""
        return self._list("ZrHostListFolders", c_void_p, _text)

    def refresh(self) -> None:
        """Reads the same folders and files again."""
        check(_functions["ZrHostRefresh"](self._address()))

    def _list(self, function: str, kind: Any, read: Callable[[Any], Any]) -> List[Any]:
        items, count = POINTER(kind)(), c_uint32()
        check(_functions[function](self._address(), byref(items), byref(count)))
        try:
            return [read(items[at]) for at in range(count.value)]
        finally:
            _functions["ZrHostDestroyList"](items)


def _text(address: Optional[int]) -> str:
    return _handles.take_string(raw.ZrCreateString(address))


def _read_interface(record: ZrHostInterface) -> HostInterface:
    return HostInterface(_handles.read_uuid(record.interfaceId), _text(record.name))


def _read_class(record: ZrHostClass) -> HostClass:
    return HostClass(
        _handles.read_uuid(record.classId), _text(record.name), _text(record.description), _text(record.moduleFile),
        _text(record.manifestFile), _text(record.moduleVersion),
        tuple(_read_interface(record.interfaces[at]) for at in range(record.interfaceCount)))


def _read_problem(record: ZrHostProblem) -> Problem:
    return Problem(_text(record.file), _text(record.reason), record.severity == ZRHOST_ERROR, record.line,
                   record.column)


def _path(path: Path) -> "ctypes.Array[ctypes.c_char]":
    text = os.fspath(path)
    if "\0" in text:   # native code would use the text before it
        raise ValueError("embedded null character in a path")
    return raw.wide(text)


def folder_discovery(folders: Sequence[Path] = (), configuration_file: Optional[Path] = None, *,
                     allow_outside: bool = False) -> FolderDiscovery:
    """Makes a discovery of the modules in folders.

    folders             a list of paths, not a single str. The folders are searched in their order, without their
                        subfolders. Without folders, those of the environment variable ZRCORE_MODULE_PATH are searched,
                        or else the modules of the installation.
    configuration_file  a JSON file with values that replace those of the manifests, and with the settings of the
                        library, if this is the first discovery of the process.
    allow_outside       lets a manifest name a module outside the folder of the manifest.

    Raises Error for an empty path, ValueError for one with a zero in it, and TypeError for a single path instead of a
    list. A missing folder or file is a problem, and not a failure.
    """
    if isinstance(folders, (str, os.PathLike)):
        raise TypeError("the folders must be a list of paths, not a single path")
    texts = [_path(folder) for folder in folders]   # native code reads them during the call
    paths = (c_void_p * len(texts))(*(ctypes.addressof(text) for text in texts))
    file = None if configuration_file is None else _path(configuration_file)
    made = c_void_p()
    flags = ZRHOST_ALLOW_OUTSIDE if allow_outside else 0
    check(_functions["ZrHostCreateFolderDiscovery"](paths, len(texts), file, flags, byref(made)),
          "the discovery was not made")
    return FolderDiscovery(made.value or 0)
