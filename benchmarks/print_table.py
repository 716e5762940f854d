"""Prints the medians of a benchmark run as one table, ZrCore against the best peer of each operation."""

import json
import os
import re
import statistics
import sys

OURS = "ZrCore"


def medians(run):
    """{operation: {library: ns}} in the order of the rows; errors end the program."""
    samples = {}
    for entry in sorted(run["benchmarks"], key=lambda entry: entry["family_index"]):   # they stand as they were run
        if entry.get("error_occurred"):
            sys.exit(f"{entry['name']}: {entry.get('error_message', 'failed')}")
        if entry["run_type"] != "iteration":
            continue
        # The library appends how it measured: "/real_time/threads:2".
        name = re.sub(r"(/real_time|/(threads|repeats|iterations):\d+|/min_time:[\d.]+)*$", "", entry["run_name"])
        operation, _, library = name.partition("/")
        threads = entry["threads"]
        # Threads: wall time as one of them sees it; the library reports it divided among them.
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
    """One row an operation, and whether ZrCore is behind in it. A peer with a remark in parentheses does an easier job."""
    for operation, libraries in table.items():
        ours = libraries.get(OURS)
        floors = [time for library, time in libraries.items() if library.startswith("floor")]
        peers = {library: time for library, time in libraries.items()
                 if library != OURS and not library.startswith("floor") and "(" not in library}
        best = min(peers, key=peers.get, default=None)
        ratio = ours / peers[best] if ours and best else None
        yield (operation, number(ours), number(peers.get(best)), best or "-", number(ratio),
               " / ".join(map(number, floors)) or "-"), ratio is not None and ratio > 1


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        table = medians(json.load(file))
    on_terminal = sys.stdout.isatty() and "NO_COLOR" not in os.environ
    head = ("operation", "ZrCore ns", "best peer ns", "best peer", "ratio", "floor ns")
    lines = [(head, False)] + list(rows(table))
    widths = [max(len(cells[i]) for cells, _ in lines) for i in range(len(head))]
    left = (0, 3)   # the columns of text
    for cells, behind in lines:
        text = "  ".join(cell.ljust(width) if i in left else cell.rjust(width)
                         for i, (cell, width) in enumerate(zip(cells, widths)))
        if behind and on_terminal:
            text = f"\033[1;31m{text}\033[0m"
        print(text + (" !" if behind and not on_terminal else ""))
    print("\nMedians. Processor time; on two threads wall time as one of them sees it. Floors: by physics / by contract.")


if __name__ == "__main__":
    main()
