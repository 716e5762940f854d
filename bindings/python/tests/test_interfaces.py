"""Interfaces: arguments and results of every kind, exceptions in callbacks, failures, and several interfaces."""
import copy
import ctypes
import datetime
import gc
import pickle
import random
import signal
import sys
import threading
import unittest
import uuid
from unittest import mock

import samples
import zrcore
from samples import Counter, ICounter
from zrcore import Array, Code, Error, Ref, Sref, Type, _objects, kinds, raw


class IOther(zrcore.Interface):
    iid = uuid.uuid4()

    @zrcore.operation()
    def Nothing(self):
        raise NotImplementedError


class IMore(ICounter):
    iid = uuid.uuid4()

    @zrcore.operation(zrcore.out(kinds.uint32))
    def More(self):
        raise NotImplementedError


class More(Counter):
    def More(self):
        return 5

    def Nothing(self):
        pass


# A kind, values that arrive unchanged, and values that are refused.
KINDS = [
    ("int8", [-128, 127], [-129, 128, "1", 1.0]), ("uint8", [0, 255], [-1, 256, None]),
    ("int16", [-32768], [32768]), ("uint16", [65535], [65536]), ("int32", [-1 << 31], [1 << 31]),
    ("uint32", [(1 << 32) - 1], [1 << 32]), ("int64", [-1 << 63], [1 << 63]),
    ("uint64", [(1 << 64) - 1], [1 << 64, -1]),
    ("float32", [0.5], [1e300, "1"]), ("float64", [0.1, 5.0], ["1", None]), ("boolean", [True, False], [2, "x"]),
    ("date_time", [datetime.datetime(2020, 1, 2), zrcore.date_time(1)], [datetime.datetime(1, 1, 1), "x"]),
    ("time_span", [datetime.timedelta(-1), zrcore.time_span(-1)], [datetime.timedelta.max]),
    ("string", ["", "é\0x"], [b"x", None, 5]), ("blob", [b"", b"\0x"], ["x", None]),
    ("ref", [Ref(1, 2)], [(1, 2), Ref(-1)]),
    ("sref", [Sref(Ref(1), "x"), Sref()], ["x"]), ("guid", [uuid.UUID(int=5)], ["x", None]),
    ("variant", [None, 5, "x", Array.of(["a"], Type.STR)], [object(), 1 << 64]),
    ("array", [None, Array.of([1, 2], Type.I4)], [[1, 2]]), ("address", [None, (1 << 64) - 1], [-1, 1 << 64, "x"]),
]


def echo_of(kind):
    """An object whose operation returns its argument, and the list of results that it returns instead."""
    class IEcho(zrcore.Interface):
        iid = uuid.uuid4()

        @zrcore.operation(kind, zrcore.out(kind))
        def Echo(self, value):
            raise NotImplementedError

    class Echo:
        def __init__(self):
            self.instead = []

        def Echo(self, value):
            return self.instead.pop() if self.instead else value
    target = Echo()
    return zrcore.implement(target, IEcho), target.instead


class KindTest(unittest.TestCase):
    def test_arguments_and_results_of_every_kind(self):
        for name, values, refused in KINDS:
            with self.subTest(name):
                echo, instead = echo_of(getattr(kinds, name))
                for value in values:
                    back = echo.Echo(value)
                    self.assertEqual((type(back), back), (type(value), value))
                for value in refused:
                    with self.subTest(name, value=value):
                        self.assertRaises((Error, TypeError), echo.Echo, value)
                        instead.append(value)   # the implementation returns it
                        self.assertRaises((Error, TypeError), echo.Echo, values[0])
                        self.assertEqual(instead, [])

    def test_objects_are_shared(self):
        echo, instead = echo_of(kinds.interface(ICounter))
        target = Counter()
        with zrcore.implement(target, ICounter) as counter, echo.Echo(counter) as back:
            self.assertIsNone(echo.Echo(None))
            self.assertEqual((type(back), back.Add(2), counter.Add(3)), (ICounter, 2, 5))
            self.assertRaises(TypeError, echo.Echo, echo)
        variants, _ = echo_of(kinds.variant)
        with zrcore.implement(target, ICounter) as counter:
            for given in (counter, zrcore.dispatch(counter), Array.of([counter, None], Type.UNKNOWN)):
                back = variants.Echo(given)
                found = back[0] if isinstance(back, Array) else back
                self.assertEqual(found.query(ICounter).Add(0), 5)
        del target, back, found, given
        gc.collect()
        self.assertEqual(Counter.living[0], 0)   # nobody has kept a reference

    def test_an_argument_lives_until_the_call_ends(self):
        class ISource(zrcore.Interface):
            iid = uuid.uuid4()

            @zrcore.operation(kinds.interface(ICounter))
            def Visit(self, counter):
                raise NotImplementedError

        class Closing(Counter):
            def Tick(self):
                super().Tick()
                counter.close()

        def visit(_, borrowed):   # as native code does
            tick = ctypes.CFUNCTYPE(ctypes.c_int32, ctypes.c_void_p)
            return min(tick(_objects.entry(borrowed, 5))(borrowed) for _ in range(2))
        functions = [_objects.COUNT(lambda _: 1)] * 3 + [
            ctypes.CFUNCTYPE(ctypes.c_int32, ctypes.c_void_p, ctypes.c_void_p)(visit)]
        table = (ctypes.c_void_p * 4)(*(ctypes.cast(function, ctypes.c_void_p).value for function in functions))
        native, closing = ctypes.c_void_p(ctypes.addressof(table)), Closing()
        counter = zrcore.implement(closing, ICounter)
        with ISource(ctypes.addressof(native)) as source:
            source.Visit(counter)
        self.assertEqual(len(closing.ticks), 2)
        self.assertRaises(Error, counter.Tick)

    def test_null_pointers_of_native_code_are_failures(self):
        with zrcore.implement(Counter(), ICounter) as counter:
            this = counter._address()

            def entry(slot, *arguments):
                return ctypes.CFUNCTYPE(ctypes.c_int32, ctypes.c_void_p, *arguments)(_objects.entry(this, slot))
            pointer, number = ctypes.c_void_p, ctypes.c_uint32
            self.assertEqual(entry(3, number, pointer)(this, 5, None), Code.INVALID_ARGUMENTS)
            self.assertEqual(entry(4, pointer, pointer, pointer, pointer)(this, None, None, this, this),
                             Code.INVALID_POINTER)
            self.assertEqual(entry(2, pointer, pointer)(this, None, None), Code.INVALID_ARGUMENTS)
            self.assertEqual(counter.Add(1), 1)   # the method was not called


class FailureTest(unittest.TestCase):
    def test_results_before_one_that_does_not_fit_are_released(self):
        text = raw.ZrCreateString(raw.wide("kept"))
        self.addCleanup(raw.ZrDestroyString, text)

        class IPair(zrcore.Interface):
            iid = uuid.uuid4()

            @zrcore.operation(zrcore.out(kinds.string), zrcore.out(kinds.uint32))
            def Pair(self):
                raise NotImplementedError

        class Pair:
            def Pair(self):
                return "text", second
        with zrcore.implement(Pair(), IPair) as pair, \
                mock.patch.object(kinds.string, "_new", lambda _: raw.ZrCopyString(text)):
            for second, expected in ((5, ("kept", 5)), (1 << 32, Error), ("x", TypeError)):
                if isinstance(expected, tuple):
                    self.assertEqual(pair.Pair(), expected)
                else:
                    self.assertRaises(expected, pair.Pair)
                self.assertEqual(raw.ZrStringRefCount(text), 1)
            cells = [ctypes.c_void_p(9), ctypes.c_uint32(9)]
            call = ctypes.CFUNCTYPE(ctypes.c_int32, *[ctypes.c_void_p] * 3)(_objects.entry(pair._address(), 3))
            with mock.patch("sys.excepthook"):   # there is no Python caller
                call(pair._address(), *map(ctypes.byref, cells))
            self.assertEqual([cell.value for cell in cells], [9, 9])   # nothing was stored

        class Wrong:
            Pair = staticmethod(lambda: "only one")
        self.assertRaises(TypeError, zrcore.implement(Wrong(), IPair).Pair)

    def test_results_after_one_that_cannot_be_read_are_released(self):
        text = raw.ZrCreateString(raw.wide("kept"))
        self.addCleanup(raw.ZrDestroyString, text)

        class IPair(zrcore.Interface):
            iid = uuid.uuid4()

            @zrcore.operation(zrcore.out(kinds.string), zrcore.out(kinds.string))
            def Pair(self):
                raise NotImplementedError

        class Pair:
            def Pair(self):
                return "first", "second"
        with zrcore.implement(Pair(), IPair) as pair, \
                mock.patch.object(kinds.string, "_new", lambda _: raw.ZrCopyString(text)), \
                mock.patch.object(kinds.string, "_read", side_effect=UnicodeError):
            self.assertRaises(UnicodeError, pair.Pair)
        self.assertEqual(raw.ZrStringRefCount(text), 1)

    def test_declarations_that_no_native_table_can_have_are_refused(self):
        def declare(*bases, **content):
            return lambda: type("I", bases, content)
        operation = vars(IOther)["Nothing"]
        for number, declared in enumerate([
                declare(ICounter, IOther, iid=uuid.uuid4()),
                declare(zrcore.Interface, Do=zrcore.operation()(lambda self: None)),
                lambda: zrcore.operation(int)(lambda self: None),
                lambda: zrcore.operation(zrcore.out(kinds.interface))(lambda self: None),
                declare(ICounter, iid=uuid.uuid4(), Tick=zrcore.operation()(mock.Mock(__name__="Tick"))),
                lambda: zrcore.implement(object(), ICounter), lambda: zrcore.implement(Counter(), ICounter, IOther)]):
            with self.subTest(number=number):
                self.assertRaises(TypeError, declared)
        self.assertTrue(callable(operation))
        with zrcore.implement(Counter(), ICounter) as counter:
            self.assertRaises(TypeError, counter.Add)
            self.assertRaises(TypeError, counter.Add, 1, 2)
            for duplicate in (copy.copy, copy.deepcopy, pickle.dumps):   # it would be a reference that nobody counts
                self.assertRaises(TypeError, duplicate, counter)
        self.assertRaises(Error, counter.Add, 1)
        self.assertRaises(Error, ICounter, 0)

    def test_an_object_has_its_interfaces_and_their_bases(self):
        with zrcore.implement(More(), IMore, IOther) as more:
            self.assertEqual((more.Add(3), more.More()), (3, 5))
            with more.query(ICounter) as counter, more.query(IOther) as other, other.query(IMore) as back:
                other.Nothing()
                self.assertEqual((counter.Add(1), back.Add(1)), (4, 5))
            with self.assertRaises(Error) as caught:
                more.query(samples.IBodyTable)
            self.assertEqual(caught.exception.name, "ZR_R_NO_INTERFACE")
        gc.collect()
        self.assertEqual(Counter.living[0], 0)


class Relay:
    """Calls an inner object, as native code between two Python objects would."""

    def __init__(self, inner, handle=None):
        self.inner, self.handle = inner, handle

    def Add(self, count):
        try:
            return self.inner.Add(count)
        except BaseException as error:
            if self.handle is None:
                raise
            return self.handle(error)

    Echo = Tick = None.__class__


class Raising(Counter):
    errors = []

    def __init__(self, error):
        super().__init__()
        self.error = error
        self.errors.append(error)

    def Add(self, count):
        raise self.error


class ExceptionTest(unittest.TestCase):
    def setUp(self):
        hook = mock.patch.object(sys, "excepthook")
        self.reported = hook.start()
        self.addCleanup(hook.stop)

    def tearDown(self):
        for error in Raising.errors:   # an object with an exception whose frames have the object is a cycle
            error.__traceback__ = error.__context__ = None
        Raising.errors.clear()

    def test_the_exception_of_a_callback_is_raised_in_the_caller_once(self):
        for error in (KeyError("x"), Error(Code.TIMEOUT, "late"), SystemExit(3), KeyboardInterrupt()):
            with self.subTest(error=error):
                inner = zrcore.implement(Raising(error), ICounter)
                outer = zrcore.implement(Relay(inner), ICounter)
                with self.assertRaises(type(error)) as caught:
                    outer.Add(1)
                self.assertIs(caught.exception, error)
                handling = zrcore.implement(Relay(inner, lambda error: 7), ICounter)
                self.assertEqual(handling.Add(1), 7)   # not the exception of the inner call
        self.reported.assert_not_called()

    def test_native_code_that_handles_a_failure(self):
        class IFirstOf(zrcore.Interface):
            """Calls callbacks as native code does: by their addresses, with a result code for each."""
            iid = uuid.uuid4()

            @zrcore.operation(zrcore.out(kinds.int32))
            def Run(self):
                raise NotImplementedError

        raising = {name: zrcore.implement(Raising(error), ICounter) for name, error in (
            ("key", KeyError("x")), ("value", ValueError("y")), ("code", Error(Code.TIMEOUT)), ("exit", SystemExit(3)))}
        native = ctypes.CFUNCTYPE(ctypes.c_int32, ctypes.c_void_p, ctypes.c_uint32, ctypes.c_void_p)

        def run(result, *names):
            def calls():
                for name in names:
                    this = raising[name]._address()
                    code = native(_objects.entry(this, 3))(this, 1, ctypes.byref(ctypes.c_uint32()))
                    self.assertLess(code, 0)
                return result
            return zrcore._errors.call(calls, ())

        self.assertEqual(run(5, "code"), 5)                     # a code was handled
        self.reported.assert_not_called()
        self.assertEqual(run(5, "key", "value"), 5)             # exceptions are not lost
        self.assertEqual([call.args[0] for call in self.reported.call_args_list], [KeyError, ValueError])
        self.reported.reset_mock()
        self.assertRaises(ValueError, run, Code.FAILED, "key", "value")
        self.assertEqual([call.args[0] for call in self.reported.call_args_list], [KeyError])
        self.assertRaises(SystemExit, run, 0, "exit")           # ends the program even after a success
        self.assertRaises(Error, run, Code.TIMEOUT, "code")
        with self.assertRaises(Error) as caught:                # another code: the first failure was handled
            run(Code.FAILED, "code")
        self.assertEqual(caught.exception.code, Code.FAILED)

    def test_the_code_of_an_error_is_never_truncated(self):
        for code in (-1 << 40, (-1 << 31) - 1, 1 << 32):
            self.assertRaises(ValueError, Error, code)
        self.assertEqual(Error(Code.TIMEOUT & 0xFFFFFFFF).code, Code.TIMEOUT)
        for code in (Code.OK, Code.SAME_VALUE):   # native code gets a failure
            with self.subTest(code=code), zrcore.implement(Raising(Error(code, "why")), ICounter) as counter:
                self.assertRaisesRegex(Error, "why", counter.Add, 1)

    def test_a_hook_that_fails_does_not_change_the_result_of_a_callback(self):
        with mock.patch.object(sys, "__excepthook__") as shown, \
                zrcore.implement(Raising(KeyError("x")), ICounter) as counter:
            self.reported.side_effect = RuntimeError
            call = ctypes.CFUNCTYPE(ctypes.c_int32, ctypes.c_void_p, ctypes.c_uint32, ctypes.c_void_p)(
                _objects.entry(counter._address(), 3))
            self.assertEqual(call(counter._address(), 1, ctypes.byref(ctypes.c_uint32())), Code.UNEXPECTED)
        self.assertEqual([call.args[0] for call in shown.call_args_list], [RuntimeError, KeyError])

    @unittest.skipUnless(hasattr(signal, "setitimer"), "the system has no timers")
    def test_the_exception_of_a_signal_handler_is_raised_wherever_it_interrupts(self):
        def handle(*_):
            raise kind
        before = signal.signal(signal.SIGALRM, handle)
        self.addCleanup(signal.signal, signal.SIGALRM, before)
        gc.collect()
        gc.disable()   # Python ignores an exception in a finalizer
        self.addCleanup(gc.enable)
        wrong = []

        def work():
            signal.setitimer(signal.ITIMER_REAL, random.uniform(1e-6, 2e-4))
            for _ in range(100000):
                if counter.Echo("text", 5) != ("text", 5):
                    wrong.append("another result")
            wrong.append("no exception")
        with zrcore.implement(Counter(), ICounter) as counter, \
                mock.patch.object(sys, "unraisablehook", wrong.append) as hook:
            counter.Add(1)
            self.assertIs(sys.unraisablehook, hook)
            for kind in [KeyboardInterrupt, TimeoutError] * 150:
                try:
                    work()
                except (KeyboardInterrupt, TimeoutError):
                    pass
        self.assertEqual(wrong, [])

    def test_threads_do_not_see_the_exceptions_of_others(self):
        wrong = []

        def work(number):
            error = KeyError(number)
            counter = zrcore.implement(Raising(error), ICounter)
            for _ in range(200):
                try:
                    counter.Add(1)
                except KeyError as caught:
                    if caught is not error:
                        wrong.append(caught)
        threads = [threading.Thread(target=work, args=(number,)) for number in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(wrong, [])
        self.reported.assert_not_called()


if __name__ == "__main__":
    unittest.main()
