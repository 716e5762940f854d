"""Lifetime: rounds without growth, threads of Python and of the system, and the end of the interpreter."""
import ctypes
import gc
import os
import subprocess
import sys
import threading
import unittest

import samples
import test_values
import zrcore
from samples import COUNTER, Catalogue, Counter, IBodyTable, ICounter
from zrcore import Array, Code, Error, Type, _objects, _variant

LIBC = ctypes.CDLL(None) if sys.platform != "win32" else None


def run_script(script):
    """Runs a script in another process, which can import the tests. Returns status, output and errors.

    Memory that is freed is overwritten there, so that its use crashes.
    """
    code = f"import sys; sys.path.insert(0, {os.path.dirname(os.path.abspath(__file__))!r})\n{script}"
    ended = subprocess.run([sys.executable, "-X", "faulthandler", "-c", code], capture_output=True, text=True,
                           check=False, timeout=60,
                           env={**os.environ, "PYTHONMALLOC": "malloc", "MALLOC_PERTURB_": "165"})
    return ended.returncode, ended.stdout, ended.stderr


# ---- Growth ---------------------------------------------------------------------------------------------------------

class _Mallinfo(ctypes.Structure):
    _fields_ = [(name, ctypes.c_size_t) for name in "arena ordblks smblks hblks hblkhd usmblks fsmblks uordblks "
                "fordblks keepcost".split()]


def memory_in_use():
    """The bytes that malloc has given out, and the blocks of Python."""
    gc.collect()
    if not hasattr(LIBC, "mallinfo2"):
        return 0, sys.getallocatedblocks()
    LIBC.mallinfo2.restype = _Mallinfo
    info = LIBC.mallinfo2()
    return info.uordblks + info.hblkhd, sys.getallocatedblocks()


def round_of_values():
    for value in test_values.ROUND_TRIPS[-20:]:
        with _variant.Variant(value) as record:
            _variant.read(record)
    zrcore.convert("text", Type.BLOB)
    zrcore.compare(b"x", b"x")
    try:
        zrcore.convert("text", Type.REF)
    except Error:
        pass


def round_of_arrays():
    array = Array.of([["a", "b"], ["c", "d"]], Type.STR)
    array[0, 0] = array[1, 1]
    array.astype(Type.VARIANT).tolist()
    with _variant.Variant(array) as record:
        _variant.read(record)
    Array.of([1, 2, 3], Type.I4).view()[0] = 5


def round_of_objects():
    with zrcore.create("counter", ICounter) as counter:
        counter.Echo("text", "value")
        counter.query(ICounter)
        for wrong in (13, -1):   # an exception of the callback, and a number that doesn't fit
            try:
                counter.Add(wrong)
            except (KeyError, Error):
                pass


def round_of_tables():
    table = zrcore.create("table", IBodyTable)
    table.AddColumn("moons", Type.I4, Array.of(["1", "x"], Type.STR))
    table.Column(0)


class GrowthTest(unittest.TestCase):
    def test_10000_rounds_of_create_and_release(self):
        with zrcore.library():
            zrcore.add_discovery(Catalogue())
            for one_round in (round_of_values, round_of_arrays, round_of_objects, round_of_tables):
                with self.subTest(one_round.__name__):
                    for _ in range(500):
                        one_round()
                    before = memory_in_use()
                    for _ in range(10000):
                        one_round()
                    grown = [after - old for after, old in zip(memory_in_use(), before)]
                    self.assertLess(grown[0], 20000, "bytes of malloc")   # less than one block of 8 bytes per round
                    self.assertLess(grown[1], 500, "blocks of Python")
            self.assertEqual(len(zrcore._interface.live), 0)
            self.assertEqual(len(zrcore._implement._objects), 1)   # the discovery


# ---- Garbage collection ---------------------------------------------------------------------------------------------

# An object of a cycle uses an array in its finalizer. The array is older, so it would be finalized first.
LAST_USE = """
import gc
from zrcore import Array, Type

class Last:
    def __init__(self, owned, use):
        self.owned, self.use, self.me = owned, use, self
    def __del__(self):
        print(self.use(self.owned))

array = Array.of(["x" * 1000] * 1000, Type.STR)
view = Array.of([5] * 100000, Type.I8).view()
for last in Last(array, lambda array: (len(array.tolist()[999]), array[0][:2])), Last(view, lambda view: view[99999]):
    pass
del array, view, last
gc.collect()
print("collected")
"""


class CollectionTest(unittest.TestCase):
    def test_finalizers_of_a_cycle_use_its_arrays_and_views(self):
        self.assertEqual(run_script(LAST_USE), (0, "(1000, 'xx')\n5\ncollected\n", ""))

    def test_cycles_with_arrays_and_views_are_freed(self):
        before = memory_in_use()
        for _ in range(100):
            array = Array.of([5] * 10000, Type.I8)
            cycle = [array, array.view()]
            cycle.append(cycle)
        del array, cycle
        self.assertLess(memory_in_use()[0] - before[0], 10 * 80000)


# ---- Threads --------------------------------------------------------------------------------------------------------

class ThreadTest(unittest.TestCase):
    def test_threads_of_python_create_convert_and_call(self):
        before = Counter.living[0]
        wrong = []
        shared = zrcore.implement(Counter(), ICounter)

        def work(number):
            for at in range(500):
                if zrcore.convert(str(number * 1000 + at), Type.I4) != number * 1000 + at:
                    wrong.append("convert")
                with zrcore.create(COUNTER, ICounter) as counter:
                    if counter.Add(at + 100) != at + 100:
                        wrong.append("create")
                shared.query(ICounter).Tick()
        with zrcore.library():
            zrcore.add_discovery(Catalogue())
            self._run(work, 4)
        target = zrcore._implement._objects[shared._address()].target
        self.assertEqual((wrong, len(target.ticks)), ([], 2000))
        shared.close()
        del target
        gc.collect()
        self.assertEqual(Counter.living[0], before)

    def test_threads_share_an_array_by_its_access_flag(self):
        array, refused, done = Array(Type.I8, 4), [], []

        def work(number):
            for at in range(2000):
                try:
                    array[number] = at
                    done.append(None)
                except Error as error:
                    refused.append(error.code)
        self._run(work, 4)
        self.assertEqual(len(done) + len(refused), 8000)
        self.assertLessEqual(set(refused), {Code.INVALID_OBJECT_STATE})
        array[0] = 5   # the flag is clear

    @unittest.skipUnless(hasattr(LIBC, "pthread_create"), "the system has no pthread_create")
    def test_threads_of_the_system_call_python(self):
        LIBC.pthread_create.argtypes = [ctypes.c_void_p] * 4
        LIBC.pthread_join.argtypes = [ctypes.c_void_p] * 2
        target = Counter()
        counter = zrcore.implement(target, ICounter)
        this = counter._address()
        spare = [_objects.add_reference(this) for _ in range(2)]   # a Release may be the first
        for _ in range(20):
            threads = [ctypes.c_void_p() for _ in range(6)]
            for thread, slot in zip(threads, (0, 0, 5, 1, 5, 1)):   # AddRef, Tick and Release
                self.assertEqual(LIBC.pthread_create(ctypes.byref(thread), None, _objects.entry(this, slot), this), 0)
            for thread in threads:
                LIBC.pthread_join(thread, None)
        self.assertEqual(len(target.ticks), 40)
        for address in spare:
            _objects.release(address)
        self.assertEqual(len(zrcore._implement._objects[this].tokens), 1)

    def _run(self, work, count):
        threads = [threading.Thread(target=work, args=(number,)) for number in range(count)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()


# ---- The end of the interpreter -------------------------------------------------------------------------------------

# A busy machine must not let the wait for other threads end early.
BEGIN = """
import ctypes, threading, time, samples as s, zrcore
zrcore._implement._LONGEST_WAIT = 30
zrcore.initialize()
zrcore.add_discovery(s.Catalogue())
counter = zrcore.create("counter", s.ICounter)
table = zrcore.create("table", s.IBodyTable)
"""

# Scripts, what each prints, and what its errors must contain.
ENDS = [
    ("objects, references of native code, views and variants live",
     "lent = zrcore._interface.give(zrcore.implement(s.Counter(), s.ICounter))\n"
     "view = zrcore.Array(zrcore.Type.I4, 3).view()\n"
     "objects = zrcore.Array.of([counter, table], zrcore.Type.UNKNOWN)\n"
     "record = zrcore._variant.Variant(table)\n", "", ""),
    ("an exception ends the program inside a callback",
     "def leave(count): raise SystemExit(0)\n"
     "zrcore._implement._objects[counter._address()].target.Add = leave\n"
     "counter.Add(1)\nprint('not reached')\n", "", ""),
    ("operations are called after the end",
     "other = zrcore.implement(s.Counter(), s.ICounter)\n"
     "zrcore._component._end()\n"
     "try: other.query(s.ICounter)\n"
     "except zrcore.Error as error: print(error.name)\n", "ZR_R_NO_INIT\n", ""),
    ("a thread of the system is in a callback",
     "entered = threading.Event()\n"
     "def slow():\n  entered.set(); time.sleep(0.2); print('ended', flush=True)\n"
     "zrcore._implement._objects[counter._address()].target.Tick = slow\n"
     "libc, thread = ctypes.CDLL(None), ctypes.c_void_p()\n"
     "libc.pthread_create.argtypes = [ctypes.c_void_p] * 4\n"
     "this = counter._address()\n"
     "libc.pthread_create(ctypes.byref(thread), None, zrcore._objects.entry(this, 5), this)\n"
     "entered.wait()\n", "ended\n", ""),
    # The library reports what is left, since another thread may still use it.
    ("a daemon thread calls objects",
     "def work():\n  while True:\n    zrcore.create('counter', s.ICounter).Add(1); table.Summary()\n"
     "threading.Thread(target=work, daemon=True).start()\ntime.sleep(0.1)\n",
     "Not all Component-Discoveries removed while destroying CGlobalData"
     "Not all Component-Assemblies removed while destroying CGlobalData"
     "Not all Components removed while destroying CGlobalData", None),
]


class EndTest(unittest.TestCase):
    def test_the_interpreter_ends_while_objects_live(self):
        for name, script, output, errors in ENDS:
            if "pthread" in script and not hasattr(LIBC, "pthread_create"):
                continue
            with self.subTest(name):
                status, printed, reported = run_script(BEGIN + script)
                self.assertEqual((status, printed), (0, output), reported)
                if errors is not None:
                    self.assertEqual(reported, errors)


if __name__ == "__main__":
    unittest.main()
