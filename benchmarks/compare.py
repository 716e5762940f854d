"""Compares two benchmark runs and prints what changed beyond noise.

  python3 benchmarks/compare.py OLD NEW [REGEX]

  OLD, NEW   results of zrcore_benchmarks as JSON
  REGEX      compare only the rows whose name, "operation/library", matches

A row has changed if both of these are true:

  - The repetitions of the two runs don't overlap. The slowest quarter of the repetitions is ignored on both sides,
    because other processes only ever make a repetition slower.
  - Its medians differ by more than the noise. For times and resident memory, the noise is 5 %, or more if by that rule
    more than 2 % of the other libraries' rows of the same unit had changed: nobody changed them. A time must also
    differ by 0.3 ns, about a cycle of the processor. For other figures the noise is 0.5 %, because they are nearly the
    same in each run.

Only rows of ZrCore are listed, its C++ layer and the same work by hand included. Of the other rows, their number and
their median change are printed: if many have changed, the machine was busy or is another one, and the list means
little.

Exit status: 0 no row of ZrCore worsened, 1 a file can't be used, 2 wrong usage, 3 at least one row of ZrCore worsened.
"""

import os
import re
import statistics
import sys

import results
from results import number

NOISE = {"ns": 0.05, "us": 0.05, "KiB": 0.05}   # as parts of the old median
LEAST_NS = 0.3
LEAST_CONTROLS = 20                             # fewer rows of other libraries say little of the noise


def undisturbed(values):
    """The fastest three quarters."""
    return sorted(values)[:max(1, -(-len(values) * 3 // 4))]


def change(old, new):
    """How the median changed, as a part of the old median."""
    before, after = statistics.median(old), statistics.median(new)
    return (after - before) / before if before else (0.0 if after == before else float("inf"))


def overlap(old, new):
    old, new = undisturbed(old), undisturbed(new)
    return old[0] <= new[-1] and new[0] <= old[-1]


def has_changed(old, new, unit, noise):
    is_tiny = unit == "ns" and abs(statistics.median(new) - statistics.median(old)) < LEAST_NS
    return abs(change(old, new)) > noise and not is_tiny and not overlap(old, new)


def is_ours(library):
    return library.startswith((results.OURS, results.LAYER, results.BY_HAND))


def rows_of(operations):
    """All rows as {(operation, library): (values, unit)}, and those that were measured too shortly."""
    return ({(operation.name, library): (values, operation.unit)
             for operation in operations.values() for library, values in operation.rows.items()},
            {(operation.name, library) for operation in operations.values() for library in operation.too_short})


class Comparison:
    """All differences of two runs: `better` and `worse` have ZrCore's changed rows, the greatest change first."""

    def __init__(self, old_run, new_run, chosen=""):
        old, too_short_in_old = rows_of(results.operations_in(old_run, chosen))
        new, too_short_in_new = rows_of(results.operations_in(new_run, chosen))
        self.too_short = sorted(too_short_in_old | too_short_in_new)
        self.added = [row for row in new if row not in old]
        self.removed = [row for row in old if row not in new]
        self.pairs = {row: (old[row][0], new[row][0], new[row][1])
                      for row in new if row in old and old[row][1] == new[row][1] and row not in self.too_short}
        self.controls = {row: pair for row, pair in self.pairs.items() if not is_ours(row[1])}
        self.noise = {unit: self.noise_of(unit) for unit in {pair[2] for pair in self.pairs.values()}}
        self.changed_controls = [row for row in self.controls if self.changed(row)]
        changed = [row for row in self.pairs if is_ours(row[1]) and self.changed(row)]
        self.better = sorted((row for row in changed if self.change(row) < 0), key=self.change)
        self.worse = sorted((row for row in changed if self.change(row) > 0), key=self.change, reverse=True)
        self.fewest_repetitions = min((min(len(a), len(b)) for a, b, unit in self.pairs.values() if unit == "ns"),
                                      default=None)

    def noise_of(self, unit):
        if unit not in NOISE:
            return 0.005
        controls = [(a, b) for a, b, of in self.controls.values() if of == unit]
        changes = sorted((abs(change(a, b)) for a, b in controls if has_changed(a, b, unit, 0)), reverse=True)
        allowed = int(len(controls) * 0.02)
        return max([NOISE[unit]] + (changes[allowed:] if len(controls) >= LEAST_CONTROLS else []))

    def change(self, row):
        return change(*self.pairs[row][:2])

    def changed(self, row):
        old, new, unit = self.pairs[row]
        return has_changed(old, new, unit, self.noise[unit])


def percent(part):
    return f"{part:+.1%}".replace("%", " %") if part != float("inf") else "from 0"


def lines_of(comparison, rows):
    table = []
    for row in rows:
        old, new, unit = comparison.pairs[row]
        table.append(("/".join(row), number(statistics.median(old)), number(statistics.median(new)),
                      results.UNIT_NAMES.get(unit, unit),
                      percent(comparison.change(row))))
    widths = [max(len(cells[i]) for cells in table) for i in range(5)]
    for name, before, after, unit, part in table:
        yield (f"  {name.ljust(widths[0])}  {before.rjust(widths[1])} -> {after.rjust(widths[2])} "
               f"{unit.ljust(widths[3])}  {part.rjust(widths[4])}")


def describe(run):
    context = run["context"]
    parts = [str(context.get("date") or "no date")]
    if context.get("commit"):
        parts.append(f"commit {context['commit']}")
    parts += [str(context[key]) for key in ("processor", "compiler") if context.get(key)]
    return ", ".join(parts)


def print_comparison(comparison, old_run, new_run):
    on_terminal = sys.stdout.isatty() and "NO_COLOR" not in os.environ
    print(f"Old: {describe(old_run)}\nNew: {describe(new_run)}\n")
    for title, rows, colour in (("Worse", comparison.worse, "1;31"), ("Better", comparison.better, "1;32")):
        print(f"{title}: {len(rows) or 'no row'}")
        for line in lines_of(comparison, rows) if rows else ():
            print(f"\033[{colour}m{line}\033[0m" if on_terminal else line)
    for title, rows in (("New rows", comparison.added), ("Rows that are gone", comparison.removed),
                        ("Not compared, because a repetition took almost no time", comparison.too_short)):
        if rows:
            print(f"{title}: {len(rows)}")
            for operation in dict.fromkeys(operation for operation, _ in rows):
                print(f"  {operation}: " + ", ".join(library for of, library in rows if of == operation))

    ours = len(comparison.pairs) - len(comparison.controls)
    print(f"\n{ours} rows of ZrCore compared. Noise:",
          ", ".join(f"{results.UNIT_NAMES.get(unit, unit)} {noise:.1%}".replace("%", " %")
                    for unit, noise in sorted(comparison.noise.items())) + ".")
    if comparison.controls:
        drift = statistics.median(map(comparison.change, comparison.controls))
        print(f"Rows of other libraries, which nobody changed: {len(comparison.changed_controls)} of "
              f"{len(comparison.controls)} changed; the median change is {percent(drift)}.")
    if comparison.fewest_repetitions is not None and comparison.fewest_repetitions < results.LEAST_REPETITIONS:
        print(f"The fewest repetitions of a row are {comparison.fewest_repetitions}: expect changes that are noise.")
    for key in ("processor", "compiler"):
        if old_run["context"].get(key) != new_run["context"].get(key):
            print(f"The {key} of the runs differs or is not recorded: expect changes that have nothing to do with "
                  "ZrCore.")


def main():
    if len(sys.argv) not in (3, 4):
        print("usage: python3 benchmarks/compare.py OLD NEW [REGEX]", file=sys.stderr)
        return 2
    try:
        old_run, new_run = results.load(sys.argv[1]), results.load(sys.argv[2])
        comparison = Comparison(old_run, new_run, sys.argv[3] if len(sys.argv) > 3 else "")
    except re.error as error:
        print(f"compare.py: {sys.argv[3]} is not a regular expression: {error}", file=sys.stderr)
        return 2
    if not comparison.pairs:
        raise results.Failure("the runs have no row in common")
    print_comparison(comparison, old_run, new_run)
    return 3 if comparison.worse else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except results.Failure as failure:
        sys.exit(f"compare.py: {failure}")
