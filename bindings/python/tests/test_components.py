"""Components: creation by name, discoveries in Python, configurations, and the lifecycle."""
import gc
import threading
import unittest
import uuid
from unittest import mock

import samples
import zrcore
from samples import BODIES, COUNTER, SETTINGS, TABLE, Catalogue, Counter, IBodyTable, ICounter
from zrcore import Code, Error, Type, _component, raw


class LibraryTest(unittest.TestCase):
    def setUp(self):
        block = zrcore.library()
        block.__enter__()
        self.addCleanup(block.__exit__, None, None, None)
        self.registration = zrcore.add_discovery(Catalogue())

    def assert_code(self, name, function, *arguments):
        with self.assertRaises(Error) as caught:
            function(*arguments)
        self.assertEqual(caught.exception.name, "ZR_R_" + name)


class ComponentTest(LibraryTest):
    def test_an_object_in_python_is_created_by_name_and_called_through_its_table(self):
        with zrcore.create("counter", ICounter) as counter:
            self.assertEqual([counter.Add(3), counter.Add(4)], [3, 7])
            self.assertEqual(counter.Echo("é", [1][0]), ("é", 1))
            with counter.query(ICounter) as other:
                self.assertEqual(other.Add(1), 8)
            self.assertRaises(Error, counter.query, IBodyTable)
        self.assertEqual(zrcore.class_name(COUNTER), "Counter")
        self.assertEqual(zrcore.create(COUNTER, zrcore.Interface).query(ICounter).Add(1), 1)

    def test_failures_have_the_code_of_their_cause(self):
        self.assertRaisesRegex(ValueError, "broken", zrcore.class_id, "broken")
        self.assert_code("FAILED", zrcore.class_id, "unknown")   # not the exception of an earlier call
        self.assert_code("FAILED", zrcore.class_name, TABLE)
        self.assert_code("CLASS_NOT_REGISTERED", zrcore.create, uuid.uuid4(), ICounter)
        self.assert_code("NO_INTERFACE", zrcore.create, "counter", IBodyTable)   # and not an object of another kind
        self.assert_code("INVALID_ARGUMENTS", zrcore.create, "counter", ICounter, (0, 1 << 64))
        self.assertRaises(TypeError, zrcore.create, 5, ICounter)
        self.registration.remove()
        self.registration.remove()
        self.assert_code("CLASS_NOT_REGISTERED", zrcore.create, COUNTER, ICounter)

    def test_what_a_discovery_must_not_return_is_an_exception(self):
        wrong = Catalogue()
        registration = zrcore.add_discovery(wrong)
        for method, result in (("component", 5), ("component", lambda *_: None), ("class_id", "x"), ("class_name", 5)):
            with self.subTest(method), mock.patch.object(wrong, method, lambda *_: result, create=True):
                call = {"component": lambda: zrcore.create(uuid.uuid4(), ICounter),
                        "class_id": lambda: zrcore.class_id("new"),
                        "class_name": lambda: zrcore.class_name(uuid.uuid4())}[method]
                self.assertRaises(TypeError, call)
        with mock.patch.object(wrong, "component", lambda *_: f"{BODIES}\0", create=True):   # it would be cut off
            self.assertRaises(ValueError, zrcore.create, uuid.uuid4(), ICounter)
        registration.remove()
        self.assertRaises(TypeError, zrcore.add_discovery, object())

    def test_a_table_converts_columns(self):
        """The same results from the native module and from the class in Python."""
        tables = [zrcore.implement(samples.PythonTable(), IBodyTable)]
        tables += [zrcore.create("table", IBodyTable)] if BODIES else []
        for table in tables:
            with self.subTest(table=table), table:
                table.AddColumn("moons", Type.I4, zrcore.Array.of(["2", "", "x"], Type.STR))
                values, codes = table.Column(0)
                self.assertEqual((values.type, values.tolist()[0]), (Type.I4, 2))
                self.assertEqual(codes.tolist(), [Code.OK, Code.EMPTY_VALUE, Code.FAILED])
                self.assertEqual(table.Summary()[0, 0], "moons")
                self.assert_code("NOT_EXISTING", table.Column, 9)
                self.assert_code("NOT_SUPPORTED", table.AddColumn, "x", Type.I4, 5)
                self.assert_code("INVALID_ARGUMENTS", table.AddColumn, "x", 1 << 16, None)

    def test_a_native_discovery_is_one_like_any_other(self):
        calls = []

        class Native(zrcore.Discovery):
            def class_id(self, name):
                calls.append(name)
                return uuid.UUID(int=7)
        native = zrcore.implement(zrcore._discovery._Adapter(Native()), zrcore._discovery._IDiscovery)
        registration = zrcore.add_discovery(native)
        native.close()
        self.assertEqual((zrcore.class_id("of the native one"), calls), (uuid.UUID(int=7), ["of the native one"]))
        registration.remove()


class ConfigurationTest(LibraryTest):
    def test_values_arrive_in_their_types(self):
        found = zrcore.configuration(COUNTER, "settings")
        for name, value in SETTINGS.items():
            self.assertEqual(found.get(name), getattr(value, "value", value), name)
        with zrcore._variant.Variant() as record, found._section.QueryValue("ZR_VT_REF") as value:
            # As a native client reads it, with the type.
            from ctypes import CFUNCTYPE, byref, c_int32, c_uint16, c_void_p
            read = CFUNCTYPE(c_int32, *[c_void_p] * 2, c_uint16, c_void_p)(
                zrcore._objects.entry(value._address(), 4))
            self.assertEqual(read(value._address(), byref(record), Type.I8, byref(record)), 0)
            self.assertEqual((record.Type, record.Value.ui4), (Type.UI4, 50))
        self.assertEqual((found.get("absent"), found.get("absent", 5, Type.I4)), (None, 5))
        self.assert_code("NOT_SUPPORTED", zrcore.configuration, COUNTER, "unknown")
        self.assert_code("CLASS_NOT_REGISTERED", zrcore.configuration, uuid.uuid4(), "settings")

    def test_the_library_reads_its_own_settings(self):
        self.registration.remove()
        asked = []

        class Settings(zrcore.Discovery):
            def configuration(self, class_id, name):
                asked.append((class_id, name))
                return mock.MagicMock(get=lambda name: (asked.append(name), settings.get(name))[1])
        for settings in (SETTINGS, {"EnableAllocator": zrcore.Array.of([1], Type.I4)}):
            with mock.patch("sys.excepthook") as reported:
                zrcore.add_discovery(Settings()).remove()
            # An array would be read as a number: its handle.
            self.assertEqual([call.args[0] for call in reported.call_args_list],
                             [] if settings is SETTINGS else [TypeError])
        self.assertEqual(asked[:2], [(uuid.UUID(int=0), "ZrCore"), "EnableAllocator"])


class LifecycleTest(unittest.TestCase):
    def test_the_last_end_releases_native_objects_and_discoveries(self):
        before = Counter.living[0]
        mine = zrcore.implement(Counter(), ICounter)
        with zrcore.library():
            zrcore.add_discovery(Catalogue())
            with zrcore.library():
                counter = zrcore.create("counter", ICounter)
            self.assertEqual(counter.Add(1), 1)
            table = zrcore.create("table", IBodyTable)
        self.assertEqual(mine.Add(1), 1)
        if BODIES:
            self.assertRaises(Error, table.Summary)
        self.assertRaises(Error, zrcore.class_id, "counter")
        self.assertEqual(_component._discovery._registrations, {})
        del counter, mine
        gc.collect()
        self.assertEqual(Counter.living[0], before)
        zrcore.uninitialize()   # does nothing
        self.assertEqual(_component._count, 0)

    def test_a_beginning_in_another_thread_waits_for_the_end(self):
        waited = []

        class Ending(zrcore.Discovery):
            def __del__(self):   # while the last end removes the discoveries
                thread.start()
                thread.join(0.1)
                waited.append(thread.is_alive())
        thread = threading.Thread(target=zrcore.initialize)
        with zrcore.library():
            zrcore.add_discovery(Ending())
        thread.join()
        self.assertEqual((waited, _component._count), ([True], 1))
        self.assertEqual(raw.ZrRemoveComponentDiscovery(0), Code.UNKNOWN_IDENTIFIER)   # it is in force
        zrcore.uninitialize()
        self.assertEqual(raw.ZrRemoveComponentDiscovery(0), Code.NO_INIT)

    def test_errors_outside_library_name_it(self):
        calls = [lambda: zrcore.create("Test.Counter", ICounter), lambda: zrcore.create(COUNTER, ICounter),
                 lambda: zrcore.class_name(COUNTER), lambda: zrcore.configuration(COUNTER, "settings"),
                 lambda: zrcore.add_discovery(zrcore.Discovery())]
        for number, call in enumerate(calls):
            with self.subTest(call=number):
                self.assertRaisesRegex(zrcore.Error, r"^ZR_R_NO_INIT: .*: this needs zrcore\.library\(\)$", call)


if __name__ == "__main__":
    unittest.main()
