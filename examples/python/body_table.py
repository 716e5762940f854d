"""The contract between host and table, as ../body_table.h declares it for C++: one class and one interface."""
import enum
import uuid
from typing import Tuple

import zrcore
from zrcore import kinds

BODY_TABLE = uuid.UUID("93E729DC-1C62-4556-A228-F17BF7EAF2B5")   # Astronomy.BodyTable of the module "bodies"


class SummaryCell(enum.IntEnum):
    """The cells in a row of the summary."""

    TITLE = 0
    COUNT = 1
    MISSING = 2
    FAILED = 3
    LEAST = 4
    MOST = 5
    MEAN = 6


class IBodyTable(zrcore.Interface):
    """Converts columns of texts to columns of values. The operations have the order of the C++ declaration."""

    iid = uuid.UUID("8E8CD166-1274-4280-9A6A-A8B98CECC85C")

    @zrcore.operation(kinds.string, kinds.uint16, kinds.variant)
    def AddColumn(self, title: str, kind: int, texts: zrcore.Array) -> None:
        """Adds a column. An empty text is a missing value."""

    @zrcore.operation(kinds.uint32, zrcore.out(kinds.variant), zrcore.out(kinds.variant))
    def Column(self, column: int) -> Tuple[zrcore.Array, zrcore.Array]:
        """The values of a column, and a code for each: OK, EMPTY_VALUE, or the code of the failed conversion."""
        raise NotImplementedError

    @zrcore.operation(zrcore.out(kinds.variant))
    def Summary(self) -> zrcore.Array:
        """A row of variants for each column, in the order of SummaryCell."""
        raise NotImplementedError
