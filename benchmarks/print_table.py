"""Prints the medians of a benchmark run as tables, one per unit: for each operation ZrCore, its best peer and the lower
bounds.

  python3 benchmarks/print_table.py FILE

  FILE   the results of zrcore_benchmarks as JSON; tools/bench writes build/benchmark/benchmarks.json

For an operation of the C++ layer, ZrCore's column shows the layer, and the peer is the same work by hand.

A row whose ratio, as it is printed, is above 1 is red on a terminal. Otherwise, or if NO_COLOR is set, it ends with
"!". The layer and the work by hand make the same calls, so their times differ by noise: only a layer that is more than
5 % slower is marked.

Exit status: 0 the table was printed, 1 wrong usage, or the file can't be read or contains a row that failed.
"""

import os
import sys

import results

HEAD = ("operation", "ZrCore", "best peer", "best peer's name", "ratio", "lower bound")
TEXT_COLUMNS = (0, 3)


def line(operation):
    """One line of the table, and whether ZrCore, or the layer, needs more than the best peer."""
    best = operation.best_peer()
    limit = 1.05 if operation.ours() == results.LAYER else 1
    return (operation.name, operation.figure(operation.ours()), operation.figure(best), best or "-",
            results.ratio_text(operation.ratio()), operation.lower_bounds()), operation.needs_more(limit)


def print_table(operations):
    on_terminal = sys.stdout.isatty() and "NO_COLOR" not in os.environ
    head = tuple(f"{title}, {operations[0].unit_name}" if at in (1, 2, 5) else title for at, title in enumerate(HEAD))
    lines = [(head, False)] + [line(operation) for operation in operations]
    widths = [max(len(cells[i]) for cells, _ in lines) for i in range(len(HEAD))]
    for cells, is_worse in lines:
        text = "  ".join(cell.ljust(width) if i in TEXT_COLUMNS else cell.rjust(width)
                         for i, (cell, width) in enumerate(zip(cells, widths)))
        if is_worse and on_terminal:
            text = f"\033[1;31m{text}\033[0m"
        print(text + (" !" if is_worse and not on_terminal else ""))
    print()


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: python3 benchmarks/print_table.py FILE")
    operations = results.operations_in(results.load(sys.argv[1])).values()
    for unit in dict.fromkeys(operation.unit for operation in operations):
        print_table([operation for operation in operations if operation.unit == unit])
    print("Medians. The unit ns means processor time; for rows with two threads, the wall time of one thread.\n"
          "Lower bounds: the least work that does the job / with the calls, locks and blocks that the contract needs.")
    if any(operation.too_short for operation in operations):
        print(results.ABOUT_UNRELIABLE)


if __name__ == "__main__":
    try:
        main()
    except results.Failure as failure:
        sys.exit(f"print_table.py: {failure}")
