#!/usr/bin/env python3
"""Compares the Python package with the native call of the library, and with numpy, struct and Python's own types.

  benchmark.py [--quick] [--json]

  --quick   fewer and shorter repetitions, for a first look
  --json    prints the medians in nanoseconds instead of the table

"native" is the function of the library that does the work, called through zrcore.raw with arguments that were prepared
before. All columns run in one process, in turn, so a busy period of the machine affects all of them. Needs numpy.
"""
import argparse
import ctypes
import json
import statistics
import struct
import time
import uuid
from typing import Any, Callable, Dict, List

import numpy

import zrcore
from zrcore import Array, Type, raw

COUNT = 1_000_000
COLUMNS = ("zrcore", "native", "numpy", "python")
Row = Dict[str, Callable[[], object]]

integers, reals = numpy.arange(COUNT, dtype="i4"), numpy.arange(COUNT, dtype="f8")
texts = [str(number) for number in range(COUNT // 10)]
raw_reals = reals.tobytes()
of_integers, of_reals = Array.of(integers), Array.of(reals)
of_texts = Array.of(texts, Type.STR)
array_of_texts = numpy.array(texts)
small = Array.of([1, 2, 3], Type.I4)
small_view, small_numpy = small.copy().view(), numpy.array([1, 2, 3], dtype="i4")
at, cell = (ctypes.c_uint32 * 1)(1), ctypes.c_int32()


class ICounter(zrcore.Interface):
    iid = uuid.UUID("5F2F14CC-5FD0-4F1D-8B5C-9B5F9F4B4C11")

    @zrcore.operation(zrcore.kinds.uint32, zrcore.out(zrcore.kinds.uint32))
    def Next(self, count: int) -> int:
        raise NotImplementedError


class Counter:
    def Next(self, count: int) -> int:
        return count + 1


plain_counter = Counter()
counter = zrcore.implement(plain_counter, ICounter)


def native_array(numbers: "numpy.ndarray[Any, Any]", kind: Type, target: Type) -> int:
    """Makes an array of numbers with native calls, and converts it to the target."""
    bound, data = raw.ZrSafeArrayBound(len(numbers), 0), ctypes.c_void_p()
    handle: int = raw.ZrSafeArrayCreate(kind, 1, ctypes.byref(bound))
    raw.ZrSafeArrayAccessData(handle, ctypes.byref(data))
    ctypes.memmove(data, numbers.ctypes.data, numbers.nbytes)
    raw.ZrSafeArrayUnaccessData(handle)
    raw.ZrSafeArrayChangeType(handle, 0, target)
    return handle


def native_change(source: int, target: Type) -> Callable[[], object]:
    """Copies, converts and destroys an array with three native calls."""
    def change() -> None:
        made = ctypes.c_void_p()
        raw.ZrSafeArrayCopy(source, ctypes.byref(made))
        raw.ZrSafeArrayChangeType(made, 0, target)
        raw.ZrSafeArrayDestroy(made)
    return change


def native_convert() -> Callable[[], object]:
    source, result = raw.ZRVARIANT(), raw.ZRVARIANT()
    source.Type, source.Value.i4 = Type.I4, 5
    arguments = ctypes.byref(result), ctypes.byref(source), 0, Type.R8
    return lambda: raw.ZrVariantChangeType(*arguments)


def in_struct() -> object:
    return struct.unpack("<d", struct.pack("<d", struct.unpack("<i", struct.pack("<i", 5))[0]))


number = numpy.int32(5)
native_small = native_array(small_numpy, Type.I4, Type.I4)
native_integers = native_array(integers, Type.I4, Type.I4)
native_reals = native_array(reals, Type.R8, Type.R8)
native_texts = native_array(integers[:COUNT // 10], Type.I4, Type.STR)
rows: Dict[str, Row] = {
    "View of 1 000 000 elements": {
        "zrcore": lambda: numpy.asarray(of_reals), "numpy": lambda: reals.view(),
        "python": lambda: memoryview(raw_reals)},
    "1 000 000 I4 to R8": {
        "zrcore": lambda: of_integers.astype(Type.R8), "native": native_change(native_integers, Type.R8),
        "numpy": lambda: integers.astype("f8")},
    "1 000 000 R8 to I4": {
        "zrcore": lambda: of_reals.astype(Type.I4), "native": native_change(native_reals, Type.I4),
        "numpy": lambda: reals.astype("i4")},
    "100 000 STR to R8": {
        "zrcore": lambda: of_texts.astype(Type.R8), "native": native_change(native_texts, Type.R8),
        "numpy": lambda: array_of_texts.astype("f8"), "python": lambda: [float(text) for text in texts]},
    "Array from 1 000 000 numpy elements": {
        "zrcore": lambda: Array.of(reals), "numpy": lambda: reals.copy()},
    "Element of an array": {
        "zrcore": lambda: small[1],
        "native": lambda: raw.ZrSafeArrayGetElement(native_small, at, ctypes.byref(cell)),
        "numpy": lambda: small_numpy[1], "python": lambda: small_view[1]},
    "Convert one I4 to R8": {
        "zrcore": lambda: zrcore.convert(zrcore.i4(5), Type.R8), "native": native_convert(),
        "numpy": lambda: number.astype("f8"), "python": in_struct},
    "Convert one STR to I8": {
        "zrcore": lambda: zrcore.convert("12345", Type.I8), "numpy": lambda: numpy.int64("12345"),
        "python": lambda: int("12345")},
    "Time of the clock": {
        "native": lambda: raw.ZrGetNow(1), "numpy": lambda: numpy.datetime64("now"),
        "python": time.time_ns},
    "Call of a Python object through its table": {
        "zrcore": lambda: counter.Next(1), "python": lambda: plain_counter.Next(1)},
}


def measure(function: Callable[[], object], seconds: float) -> float:
    """The nanoseconds of one call. As many calls are made as fit into the time."""
    calls = 1
    while True:
        start = time.perf_counter_ns()
        for _ in range(calls):
            function()
        elapsed = time.perf_counter_ns() - start
        if elapsed >= seconds * 1e9:
            return elapsed / calls
        calls = calls * 2 if elapsed < 1000 else int(calls * max(1.5, min(10, seconds * 1.1e9 / elapsed))) + 1


def shown(nanoseconds: float) -> str:
    for unit, size in (("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.0f} ns"


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--json", action="store_true")
    arguments = parser.parse_args()
    repetitions, seconds = (3, 0.003) if arguments.quick else (9, 0.1)
    medians: Dict[str, Dict[str, float]] = {}
    for name, row in rows.items():
        times: Dict[str, List[float]] = {column: [] for column in row}
        for _ in range(repetitions):
            for column, function in row.items():
                times[column].append(measure(function, seconds))
        medians[name] = {column: statistics.median(values) for column, values in times.items()}
    if arguments.json:
        print(json.dumps(medians, indent=2))
        return
    print("| Operation | " + " | ".join(COLUMNS) + " |\n|---" + "|---:" * len(COLUMNS) + "|")
    for name, found in medians.items():
        print(f"| {name} | " + " | ".join(shown(found[c]) if c in found else "" for c in COLUMNS) + " |")


if __name__ == "__main__":
    main()
