"""Reads the results of zrcore_benchmarks, for the scripts of this folder.

In these scripts, an operation is what is measured, such as "lock enter+leave". Each library has a row for it.
"""

import collections
import json
import math
import re
import statistics

OURS = "ZrCore"
LAYER = "zr layer"            # the library name of the C++ layer
BY_HAND = "by hand"           # the library name of the same calls of ZrCore without the layer
LOWER_BOUND = "lower bound"   # the library name of the rows that are not a library; it may be followed by a remark
BY_CONTRACT = LOWER_BOUND + " by contract"

# The unit of a row that is not a time is the name of a counter of Google Benchmark. For all units, less is better.
COUNTER_UNITS = ("us", "bytes", "KiB", "MiB", "relocations", "constructors")
UNIT_NAMES = {"us": "µs", "constructors": "entries"}   # for the reader; other units are shown as they are
UNITS_WITHOUT_RATIO = ("constructors",)   # one entry may do much or nothing

SHORTEST_NS = 1e6       # tools/bench asks for repetitions of at least 20 ms
LEAST_REPETITIONS = 5   # of a row whose number of repetitions is not its own

UNRELIABLE = "?"
ABOUT_UNRELIABLE = f'A figure with "{UNRELIABLE}" is not reliable: a repetition took almost no time.'


class Failure(Exception):
    """The results can't be used; the text says why."""


class Operation:
    """What several libraries do: `rows` has the values of all repetitions by library, ZrCore first if it has a row."""

    def __init__(self, name, family, unit):
        self.name, self.family, self.unit = name, family, unit
        self.rows = {}
        self.too_short = set()   # libraries whose repetitions took almost no time

    @property
    def unit_name(self):
        return UNIT_NAMES.get(self.unit, self.unit)

    def medians(self):
        return {library: statistics.median(values) for library, values in self.rows.items()}

    def ours(self):
        """The library name of ZrCore's row: the layer's if the operation compares the layer with the work by hand."""
        return LAYER if LAYER in self.rows else OURS

    def best_peer(self):
        """The name of the best peer, or None.

        A library whose name has a remark in parentheses does less work than ZrCore, so it is not compared.
        """
        medians = self.medians()
        peers = [library for library in medians
                 if library != self.ours() and not library.startswith(LOWER_BOUND) and "(" not in library]
        return min(peers, key=medians.get, default=None)

    def ratio_to(self, library):
        """ZrCore's median divided by the library's, or None."""
        medians = self.medians()
        if self.unit in UNITS_WITHOUT_RATIO or self.ours() not in medians or not medians.get(library):
            return None
        return medians[self.ours()] / medians[library]

    def ratio(self):
        """ZrCore's median divided by the best peer's, or None."""
        return self.ratio_to(self.best_peer())

    def needs_more(self, limit=1):
        """Whether the ratio, as it is printed, is above the limit."""
        ratio = self.ratio()
        return ratio is not None and round(ratio, 2) > limit

    def figure(self, library):
        """The median as text, with a mark if it is not reliable; "-" if the library has no row."""
        return number(self.medians().get(library)) + (UNRELIABLE if library in self.too_short else "")

    def lower_bounds(self):
        """The lower bound, and after a slash the one by contract; "-" for one that has no row."""
        bounds = [LOWER_BOUND] + [BY_CONTRACT] * (BY_CONTRACT in self.rows)
        return " / ".join(map(self.figure, bounds))


def value_of(entry):
    for unit in COUNTER_UNITS:
        if unit in entry:
            return entry[unit], unit
    # With several threads Google Benchmark divides the wall time by their number. The result is the time of one.
    threads = entry["threads"]
    return (entry["real_time"] * threads if threads > 1 else entry["cpu_time"]), "ns"


def is_too_short(entry, value, unit):
    """Whether the program chose far too few iterations.

    It chooses them by a first attempt. If the machine stops the program in that moment for longer than a repetition
    should take, all repetitions have one iteration.
    """
    return unit == "ns" and "/iterations:" not in entry["run_name"] and value * entry["iterations"] < SHORTEST_NS


def operations_in(run, chosen=""):
    """The operations of a run in the order in which the program registers its rows, by name.

    Only the rows that match the regular expression `chosen`, as the program chooses them.
    """
    operations = {}
    for entry in sorted(run["benchmarks"], key=lambda entry: entry["family_index"]):   # they are listed as they ran
        if entry.get("error_occurred"):
            raise Failure(f"the row {entry['name']} failed: {entry.get('error_message', 'no reason given')}")
        if entry["run_type"] != "iteration" or not re.search(chosen, entry["run_name"]):
            continue
        # Google Benchmark appends how it measured, for example "/real_time/threads:2".
        name = re.sub(r"(/real_time|/(threads|repeats|iterations):\d+|/min_time:[\d.]+)*$", "", entry["run_name"])
        name, _, library = name.partition("/")
        value, unit = value_of(entry)
        if not math.isfinite(value) or value < 0:
            raise Failure(f"the row {entry['run_name']} has the value {value}")
        operation = operations.setdefault(name, Operation(name, str(entry.get("label") or "All operations"), unit))
        operation.rows.setdefault(library, []).append(value)
        if is_too_short(entry, value, unit):
            operation.too_short.add(library)
    return operations


def load(path):
    """A run as Google Benchmark wrote it. Its rows can be used, and its context may be empty."""
    try:
        with open(path, encoding="utf-8") as file:
            run = json.load(file)
        if not operations_in(run):
            raise Failure(f"{path} doesn't have a row")
        run["context"] = dict(run.get("context") or {})
        return run
    except (OSError, ValueError, KeyError, TypeError, AttributeError) as error:
        raise Failure(f"{path} doesn't have results of the benchmarks: {error!r}") from error


def require_complete(run):
    """Raises Failure unless all rows of the program ran, often enough."""
    repetitions = collections.Counter(entry["run_name"] for entry in run["benchmarks"]
                                      if entry["run_type"] == "iteration")
    rows = run["context"].get("rows")   # tools/bench records it
    if rows is None:
        raise Failure("the results don't record how many rows the program has; run tools/bench again")
    if str(len(repetitions)) != str(rows):
        raise Failure(f"the results are incomplete: they have {len(repetitions)} of {rows} rows")
    for row, count in repetitions.items():
        if count < LEAST_REPETITIONS and "/repeats:" not in row:
            raise Failure(f"the row {row} has {count} repetitions and needs {LEAST_REPETITIONS}")


def ratio_text(ratio):
    return "-" if ratio is None else f"{ratio:.2f}"


def number(value):
    """Three digits, or more before the point; "-" for None."""
    if value is None:
        return "-"
    if value == int(value):
        return f"{value:.0f}"
    return f"{value:.2f}" if value < 10 else f"{value:.1f}" if value < 100 else f"{value:.0f}"
