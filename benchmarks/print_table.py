"""Prints the medians of a benchmark run as one table: for each operation ZrCore, its fastest peer and the lower bounds.

  python3 benchmarks/print_table.py FILE

  FILE   the results of zrcore_benchmarks as JSON; tools/bench writes build/benchmark/benchmarks.json

For an operation of the C++ layer, ZrCore's column shows the layer, and the peer is the same work by hand.

A row in which ZrCore is slower than the fastest peer is red on a terminal. Otherwise, or if NO_COLOR is set, it ends
with "!". The layer and the work by hand make the same calls, so their times differ by noise: only a layer that is more
than 5 % slower is marked.

Exit status: 0 the table was printed, 1 wrong usage, or the file can't be read or contains a row that failed.
"""

import json
import os
import re
import statistics
import sys

OURS = "ZrCore"
LAYER = "zr layer"            # the library name of the C++ layer
LOWER_BOUND = "lower bound"   # the library name of the rows that are not a library; it may be followed by a remark


def medians(run):
    """Returns {operation: {library: ns}} in the order in which the program registers its rows.

    A row that reports an error ends the program.
    """
    samples = {}
    for entry in sorted(run["benchmarks"], key=lambda entry: entry["family_index"]):   # they are listed as they ran
        if entry.get("error_occurred"):
            sys.exit(f"print_table.py: the row {entry['name']} failed: {entry.get('error_message', 'no reason given')}")
        if entry["run_type"] != "iteration":
            continue
        # Google Benchmark appends how it measured, for example "/real_time/threads:2".
        name = re.sub(r"(/real_time|/(threads|repeats|iterations):\d+|/min_time:[\d.]+)*$", "", entry["run_name"])
        operation, _, library = name.partition("/")
        threads = entry["threads"]
        # With several threads Google Benchmark divides the wall time by their number. The table shows the time of one.
        time = entry["real_time"] * threads if threads > 1 else entry["cpu_time"]
        samples.setdefault(operation, {}).setdefault(library, []).append(time)
    return {
        operation: {library: statistics.median(times) for library, times in libraries.items()}
        for operation, libraries in samples.items()
    }


def number(value):
    if value is None:
        return "-"
    return f"{value:.2f}" if value < 10 else f"{value:.1f}" if value < 100 else f"{value:.0f}"


def rows(table):
    """Yields one row per operation, and whether ZrCore, or the layer, is slower than the fastest peer.

    A library whose name has a remark in parentheses does less work than ZrCore, so it is not compared.
    """
    for operation, libraries in table.items():
        name = LAYER if LAYER in libraries else OURS
        ours = libraries.get(name)
        lower_bounds = [time for library, time in libraries.items() if library.startswith(LOWER_BOUND)]
        peers = {library: time for library, time in libraries.items()
                 if library != name and not library.startswith(LOWER_BOUND) and "(" not in library}
        best = min(peers, key=peers.get, default=None)
        ratio = ours / peers[best] if ours and best else None
        limit = 1.05 if name == LAYER else 1
        yield (operation, number(ours), number(peers.get(best)), best or "-", number(ratio),
               " / ".join(map(number, lower_bounds)) or "-"), ratio is not None and ratio > limit


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: python3 benchmarks/print_table.py FILE")
    with open(sys.argv[1], encoding="utf-8") as file:
        table = medians(json.load(file))
    on_terminal = sys.stdout.isatty() and "NO_COLOR" not in os.environ
    head = ("operation", "ZrCore ns", "best peer ns", "best peer", "ratio", "lower bound ns")
    lines = [(head, False)] + list(rows(table))
    widths = [max(len(cells[i]) for cells, _ in lines) for i in range(len(head))]
    left = (0, 3)   # the columns of text
    for cells, is_slower in lines:
        text = "  ".join(cell.ljust(width) if i in left else cell.rjust(width)
                         for i, (cell, width) in enumerate(zip(cells, widths)))
        if is_slower and on_terminal:
            text = f"\033[1;31m{text}\033[0m"
        print(text + (" !" if is_slower and not on_terminal else ""))
    print("\nMedians of processor time; for rows with two threads, of the wall time of one thread.\n"
          "Lower bounds: the least work that does the job / with the calls, locks and blocks that the contract needs.")


if __name__ == "__main__":
    main()
