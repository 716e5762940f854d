"""A class that is implemented in Python, and the discovery that finds it. Hosts in every language can use it."""
import uuid
from typing import List, NamedTuple, Optional, Union

import zrcore
from body_table import IBodyTable, SummaryCell
from zrcore import Array, Code, Type

PYTHON_TABLE = uuid.UUID("1F3C5391-DD90-4D5A-8450-429B0E1901C4")
NAME = "Python.BodyTable"

REALS = (Type.R4, Type.R8)
DATES = (Type.DATETIME, Type.TIME)
INTEGERS = (Type.I1, Type.I2, Type.I4, Type.I8, Type.UI1, Type.UI2, Type.UI4)


class Column(NamedTuple):
    title: str
    values: Array
    codes: Array

    def good(self) -> List[object]:
        return [self.values[row] for row in range(len(self.codes)) if self.codes[row] == Code.OK]


def convert(text: str, kind: Type) -> object:
    if not text:
        raise zrcore.Error(Code.EMPTY_VALUE)
    value = zrcore.convert(text, kind)
    # The library makes a day in March of 31 February. Here a text is valid only if the value, as text, begins with it.
    if kind in DATES and not zrcore.convert(value, Type.STR).startswith(text):
        raise zrcore.Error(Code.INVALID_ARGUMENTS)
    return value


class BodyTable:
    """Implements IBodyTable: methods with the names of the operations. An Error becomes its code in the host."""

    def __init__(self) -> None:
        self.columns: List[Column] = []

    def AddColumn(self, title: str, kind: int, texts: Array) -> None:
        if texts.type != Type.STR or len(texts.shape) != 1 or any(len(c.codes) != len(texts) for c in self.columns):
            raise zrcore.Error(Code.INVALID_ARGUMENTS)
        column = Column(title, Array(Type(kind), len(texts)), Array(Type.I4, len(texts)))
        for row, text in enumerate(texts.tolist()):
            try:
                column.values[row] = convert(text, Type(kind))
            except zrcore.Error as error:
                column.codes[row] = error.code
        self.columns.append(column)

    def Column(self, column: int) -> "tuple[Array, Array]":
        if column >= len(self.columns):
            raise zrcore.Error(Code.NOT_EXISTING)
        return self.columns[column].values, self.columns[column].codes

    def Summary(self) -> Array:
        summary = Array(Type.VARIANT, (len(self.columns), len(SummaryCell)))
        for row, column in enumerate(self.columns):
            codes = column.codes.tolist()
            count, missing = codes.count(Code.OK), codes.count(Code.EMPTY_VALUE)
            cells = [column.title, zrcore.ui4(count), zrcore.ui4(missing), zrcore.ui4(len(codes) - count - missing)]
            for cell, value in enumerate(cells + order(column)):
                summary[row, cell] = value
        return summary


def order(column: Column) -> List[object]:
    """The smallest value, the largest, and the mean; nothing for a type without order or a column without values."""
    kind = column.values.type
    wide = Type.R8 if kind in REALS else Type.I8
    if kind not in REALS + DATES + INTEGERS or not column.good():
        return []
    numbers: List[Union[int, float]] = [zrcore.convert(value, wide) for value in column.good()]
    ordered = [number for number in numbers if number == number] or numbers   # NaN has no order
    least, most = min(ordered), max(ordered)
    mean = sum(number - least for number in numbers) / len(numbers)
    if kind in DATES:
        return [zrcore.Typed(kind, tick) for tick in (least, most, int(least + mean))]
    return [zrcore.Typed(kind, least), zrcore.Typed(kind, most), float(least + mean)]


class PythonDiscovery(zrcore.Discovery):
    """Finds the class of this file."""

    def component(self, class_id: uuid.UUID) -> zrcore.Component:
        if class_id != PYTHON_TABLE:
            return None
        return lambda _class_id, _interface_id: zrcore.implement(BodyTable(), IBodyTable)

    def class_id(self, name: str) -> Optional[uuid.UUID]:
        return PYTHON_TABLE if name == NAME else None

    def class_name(self, class_id: uuid.UUID) -> Optional[str]:
        return NAME if class_id == PYTHON_TABLE else None
