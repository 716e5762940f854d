"""Shows the columns of a table in a terminal: values as texts, and frames. The C++ host prints the same."""
import os
import sys
import unicodedata
from typing import List, Sequence, Tuple

import zrcore
from zrcore import Array, Code, Type

TYPES = ("STR", "BOOL", "I4", "UI4", "I8", "R4", "R8", "TIME", "REF", "SREF", "UUID", "DATETIME")
REALS = (Type.R4, Type.R8)
NUMBERS = REALS + (Type.I4, Type.UI4, Type.I8)
DAY = 864_000_000_000   # in units of 100 ns
LEAST_WIDTH = 8         # of a column of texts
MOST_LINES = 10


def title_and_type(text: str) -> Tuple[str, Type]:
    """Splits a title such as "Radius km:R8". Without a known type after the colon, all of it is the title."""
    title, colon, name = text.rpartition(":")
    return (title, Type[name]) if colon and name in TYPES else (text, Type.STR)


def without_zeros(text: str) -> str:
    return text.rstrip("0").rstrip(".") if "." in text else text


def decimals(value: object, kind: Type) -> int:
    if kind == Type.DATETIME:
        return 3 if zrcore.convert(value, Type.I8) % DAY else 0
    return len(without_zeros(zrcore.convert(value, Type.STR)).partition(".")[2]) if kind in REALS else 0


def value_text(value: object, kind: Type, places: int) -> str:
    if value is None:
        return ""
    text: str = zrcore.convert(value, Type.STR)
    if kind == Type.DATETIME:
        days, time = divmod(zrcore.convert(value, Type.I8), DAY)
        weekday = ("Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun")[days % 7]   # the count begins on a Monday
        return f"{weekday} {text[:23 if places and time else 10]}"
    if kind in REALS:
        return f"{value:.{places}f}" if text.lstrip("-")[0].isdigit() else text
    while kind == Type.REF and text.endswith(".0"):
        text = text[:-2]
    return without_zeros(text) if kind == Type.TIME else text


class Report:
    """Collects the columns of a table, and prints the table and its summary."""

    def __init__(self, lines: Sequence[Tuple[int, List[str]]]) -> None:
        self.lines = lines
        self.rows: List[List[str]] = [[] for _ in lines]
        self.columns: List[Tuple[str, Type, int]] = []
        self.failures: List[str] = []

    def add_column(self, kind: Type, values: Array, codes: Array) -> None:
        at = len(self.columns)
        title, _ = title_and_type(self.lines[0][1][at])
        good = [codes[row] == Code.OK for row in range(len(codes))]
        places = max((decimals(values[row], kind) for row in range(len(codes)) if good[row]), default=0)
        self.rows[0].append(title)
        for row, (number, fields) in enumerate(self.lines[1:]):
            text = ""
            if good[row]:
                text = value_text(values[row], kind, places)
            elif codes[row] != Code.EMPTY_VALUE:
                text = fields[at] + " ✗"
                code = codes[row]
                self.failures.append(
                    f"line {number}, \"{on_one_line(title)}\": \"{on_one_line(fields[at])}\" does not convert to "
                    f"{kind.name}: {zrcore.Error(code).name} (0x{code & 0xFFFFFFFF:08X})")
            self.rows[row + 1].append(text)
        self.columns.append((title, kind, places))

    def print(self, summary: Array) -> None:
        rows = [["Column", "Count", "Missing", "Failed", "Least", "Most", "Mean", "Type"]]
        for at, (_, kind, places) in enumerate(self.columns):
            row = []
            for cell in range(summary.shape[1]):
                value = summary[at, cell]
                of_value = Type.R8 if isinstance(value, float) else kind if cell > 3 else Type.STR
                row.append(value_text(value, of_value, max(places, 1) if of_value in REALS else places))
            rows.append(row + [kind.name])
        print()
        draw(self.rows, ["text" if kind == Type.STR else "number" if kind in NUMBERS else "value"
                         for _, kind, _ in self.columns])
        print()
        draw(rows, ["value"] + ["number"] * 6 + ["value"])
        print()
        more = len(self.failures) - MOST_LINES
        for at, line in enumerate(self.failures[:MOST_LINES] + ([f"and {more} more"] if more > 0 else [])):
            print_line("" if at else "Not converted", line)


def on_one_line(text: str) -> str:
    return "".join(" " if unicodedata.category(unit) == "Cc" else unit for unit in text)


def print_line(topic: str, text: str) -> None:
    print(f"  {topic:13} {text}")


def width(text: str) -> int:
    """The number of columns that a terminal uses for a text."""
    return sum(0 if unicodedata.category(unit) in ("Mn", "Me", "Cf") else
               2 if unicodedata.east_asian_width(unit) in "WF" else 1 for unit in text)


def fit(text: str, limit: int) -> str:
    """The part of a text that fits. A control character would break the table, so its symbol is shown instead."""
    text = "".join(chr(0x2400 + ord(unit)) if unit < " " else unit for unit in text)
    if width(text) > limit:
        while width(text) + 1 > limit:
            text = text[:-1]
        text += "…"
    is_right_to_left = any(unicodedata.bidirectional(unit) in ("R", "AL") for unit in text)
    return text + "\u200e" if is_right_to_left else text   # so that the cells after this one stay to the right of it


def draw(rows: List[List[str]], kinds: Sequence[str]) -> None:
    """Draws a table. Columns of text become narrower until the table fits."""
    widths = [max(width(row[at]) for row in rows) for at in range(len(kinds))]
    total = os.get_terminal_size().columns if sys.stdout.isatty() else 120
    while sum(widths) + 3 * len(widths) + 1 > total:
        can_shrink = [at for at, kind in enumerate(kinds)
                      if kind == "text" and widths[at] > max(LEAST_WIDTH, width(rows[0][at]))]
        if not can_shrink:
            break
        widths[max(can_shrink, key=lambda at: widths[at])] -= 1

    def rule(left: str, cross: str, right: str) -> None:
        print(left + cross.join("─" * (count + 2) for count in widths) + right)
    rule("╭", "┬", "╮")
    for number, row in enumerate(rows):
        cells = []
        for text, count, kind in zip(row, widths, kinds):
            text = fit(text, count)
            fill = " " * (count - width(text))
            cells.append(fill + text if kind == "number" else text + fill)
        print("│ " + " │ ".join(cells) + " │")
        if number == 0:
            rule("├", "┼", "┤")
    rule("╰", "┴", "╯")
