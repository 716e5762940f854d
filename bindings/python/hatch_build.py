"""Puts the shared libraries into the wheel.

The environment variable ZRCORE_PYTHON_LIBRARIES contains the paths of the libraries that the wheel shall carry,
separated as in PATH; tools/python-package sets it. Each is stored beside the modules under the name by which the loader
looks for it. Without the variable the wheel is pure Python.
"""
import os
from typing import Any, Dict

from hatchling.builders.hooks.plugin.interface import BuildHookInterface

LINUX = {62: "linux_x86_64", 183: "linux_aarch64"}   # by the processor in the header of an ELF file


def platform_of(library: str) -> str:
    with open(library, "rb") as file:
        head = file.read(20)
    if head.startswith(b"MZ"):
        return "win_amd64"
    processor = int.from_bytes(head[18:20], "little")
    if not head.startswith(b"\x7fELF") or processor not in LINUX:
        raise ValueError(f"{library} is not a library for a known system")
    return LINUX[processor]


class Libraries(BuildHookInterface):
    def initialize(self, version: str, build_data: Dict[str, Any]) -> None:
        paths = [path for path in os.environ.get("ZRCORE_PYTHON_LIBRARIES", "").split(os.pathsep) if path]
        for path in paths:
            build_data["force_include"][os.path.realpath(path)] = f"zrcore/{os.path.basename(path)}"
        platforms = {platform_of(path) for path in paths}
        if len(platforms) > 1:
            raise ValueError(f"libraries for several systems: {', '.join(sorted(platforms))}")
        if platforms:
            build_data["pure_python"] = False
            build_data["tag"] = f"py3-none-{platforms.pop()}"
