#!/usr/bin/env python3
"""The example host in Python: does what host/zrdemo.cpp does in C++, with the same module and the same file.

  zrdemo.py [--modules FOLDER] [CLASS-NAME [CSV-FILE]]

CLASS-NAME is Astronomy.BodyTable by default, a class of the C++ module "bodies". Python.BodyTable is the same in
Python. FOLDER contains the modules; by default, those of the environment variable ZRCORE_MODULE_PATH or of the
installation are searched. CSV-FILE is bodies.csv by default.

Exit status: 0 the table was shown, 2 wrong usage, 1 any other failure.
"""
import argparse
import csv
import pathlib
import sys
from typing import List, Tuple

import zrcore
from body_table import IBodyTable
from python_table import PythonDiscovery
from report import Report, print_line, title_and_type
from zrcore import host

EXAMPLES = pathlib.Path(__file__).resolve().parent.parent


def read_csv(path: str) -> List[Tuple[int, List[str]]]:
    """The lines of a file with their numbers, the titles first."""
    lines: List[Tuple[int, List[str]]] = []
    with open(path, encoding="utf-8-sig", newline="") as file:
        reader = csv.reader(file, strict=True)
        number = 1
        for fields in reader:
            if fields:
                if lines and len(fields) != len(lines[0][1]):
                    raise ValueError(f"{path}, line {number}: not as many fields as titles")
                lines.append((number, fields))
            number = reader.line_num + 1
    if not lines:
        raise ValueError(f"{path} contains no line of titles; its first line must contain them")
    return lines


def show_table(table: IBodyTable, lines: List[Tuple[int, List[str]]]) -> None:
    """Passes each column to the object as an array of strings, and shows the arrays that the object returns."""
    columns = [title_and_type(text) for text in lines[0][1]]
    for at, (title, kind) in enumerate(columns):
        texts = zrcore.Array(zrcore.Type.STR, len(lines) - 1)
        for row, (_, fields) in enumerate(lines[1:]):
            texts[row] = fields[at]
        table.AddColumn(title, kind, texts)
    report = Report(lines)
    for at, (_, kind) in enumerate(columns):
        report.add_column(kind, *table.Column(at))
    report.print(table.Summary())


def main() -> int:
    assert __doc__ is not None
    parser = argparse.ArgumentParser(usage=__doc__.splitlines()[2].strip(), description=__doc__.partition("\n")[0])
    parser.add_argument("--modules", metavar="FOLDER", help="the folder of the modules")
    parser.add_argument("class_name", metavar="CLASS-NAME", nargs="?", default="Astronomy.BodyTable",
                        help="%(default)s by default; Python.BodyTable is the same in Python")
    parser.add_argument("csv_file", metavar="CSV-FILE", nargs="?", default=str(EXAMPLES / "bodies.csv"),
                        help="%(default)s by default")
    arguments = parser.parse_args()
    try:
        lines = read_csv(arguments.csv_file)
        with zrcore.library():   # its end releases the object, then the modules, then the library
            folders = [arguments.modules] if arguments.modules else []
            modules = host.folder_discovery(folders, EXAMPLES / "zrdemo.json")
            zrcore.add_discovery(modules)
            zrcore.add_discovery(PythonDiscovery())
            for found in modules.classes():
                print_line("Found", f"{found.name} in {found.module_file}")
            for problem in modules.problems():
                print(f"zrdemo.py: {problem}", file=sys.stderr)
            identifier = zrcore.class_id(arguments.class_name)
            print_line("Class", f"{arguments.class_name} {{{str(identifier).upper()}}}")
            with zrcore.create(identifier, IBodyTable) as table:
                show_table(table, lines)
    except (OSError, ValueError, csv.Error, zrcore.Error) as error:
        print(f"zrdemo.py: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
