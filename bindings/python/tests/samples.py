"""Interfaces, objects and a discovery that several tests use."""
import os
import pathlib
import sys
import uuid
from typing import Any, Tuple

import zrcore
from zrcore import Code, Error, Type, kinds

sys.path.append(str(pathlib.Path(__file__).resolve().parents[3] / "examples/python"))
from body_table import BODY_TABLE as TABLE  # noqa: E402
from body_table import IBodyTable  # noqa: E402

BODIES = os.environ.get("ZRCORE_TEST_MODULE", "")   # the path of the example module "bodies"
COUNTER = uuid.uuid4()
SETTINGS = {"EnableAllocator": True, "ZR_VT_REF": zrcore.ui4(50), "Title": "counters", "Least": zrcore.i2(-7)}


class ICounter(zrcore.Interface):
    iid = uuid.UUID("5f2f14cc-5fd0-4f1d-8b5c-9b5f9f4b4c11")

    @zrcore.operation(kinds.uint32, zrcore.out(kinds.uint32))
    def Add(self, count: int) -> int:
        raise NotImplementedError

    @zrcore.operation(kinds.string, kinds.variant, zrcore.out(kinds.string), zrcore.out(kinds.variant))
    def Echo(self, text: str, value: Any) -> Tuple[str, Any]:
        raise NotImplementedError

    @zrcore.operation()
    def Tick(self) -> None:
        raise NotImplementedError


class Counter:
    living = [0]

    def __init__(self) -> None:
        self.total, self.ticks = 0, []
        self.living[0] += 1

    def __del__(self) -> None:
        self.living[0] -= 1

    def Add(self, count: int) -> int:
        if count == 13:
            raise KeyError("thirteen")
        self.total += count
        return self.total

    def Echo(self, text: str, value: Any) -> Tuple[str, Any]:
        return text, value

    def Tick(self) -> None:
        self.ticks.append(None)


class PythonTable:
    """The class of the example module, in Python."""

    def __init__(self) -> None:
        self.columns: Any = []

    def AddColumn(self, title: str, kind: int, texts: Any) -> None:
        if not isinstance(texts, zrcore.Array) or texts.type != Type.STR:
            raise Error(Code.NOT_SUPPORTED, "texts are needed")
        values, codes = zrcore.Array(Type(kind), len(texts)), zrcore.Array(Type.I4, len(texts))
        for at, text in enumerate(texts):
            try:
                codes[at] = Code.EMPTY_VALUE if text == "" else Code.OK
                if text:
                    values[at] = zrcore.convert(text, Type(kind))
            except Error as error:
                codes[at] = error.code
        self.columns.append((title, values, codes))

    def Column(self, column: int) -> Any:
        if column >= len(self.columns):
            raise Error(Code.NOT_EXISTING, f"no column {column}")
        return self.columns[column][1:]

    def Summary(self) -> zrcore.Array:
        return zrcore.Array.of([[title, zrcore.ui4(len(values))] for title, values, _ in self.columns])


class Catalogue(zrcore.Discovery):
    """Knows "counter", "table" (the native module if the tests have one) and "broken"."""

    def component(self, class_id):
        if class_id == COUNTER:
            return lambda _class, _interface: zrcore.implement(Counter(), ICounter)
        return (BODIES or (lambda _class, _interface: zrcore.implement(PythonTable(), IBodyTable))) \
            if class_id == TABLE else None

    def class_id(self, name):
        if name == "broken":
            raise ValueError("broken")
        return {"counter": COUNTER, "table": TABLE}.get(name)

    def class_name(self, class_id):
        return "Counter" if class_id == COUNTER else None

    def configuration(self, class_id, name):
        return SETTINGS if name in ("ZrCore", "settings") else None
