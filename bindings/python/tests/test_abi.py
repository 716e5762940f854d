"""The generated signatures, every export, the text of raw records, and the examples of the documentation strings."""
import ctypes
import doctest
import importlib
import pathlib
import pkgutil
import subprocess
import sys
import unittest

import zrcore
from zrcore import Array, Type, _abi, _host_abi, _memory, _variant, raw

GENERATOR = pathlib.Path(__file__).resolve().parent.parent / "tools" / "generate_abi.py"
TABLES = GENERATOR.parents[3] / "abi"
INSTALLED = pathlib.Path(zrcore.__file__).with_name("_decoder.py").exists()


class AbiTest(unittest.TestCase):
    @unittest.skipUnless(GENERATOR.exists(), "not in the source tree")
    def test_the_generated_file_is_the_one_of_the_table(self):
        checked = subprocess.run([sys.executable, str(GENERATOR), "--check"], capture_output=True, text=True,
                                 check=False)
        self.assertEqual(checked.returncode, 0, checked.stderr)

    def test_records_have_the_sizes_of_the_headers(self):
        sizes = {"ZRUUID": 16, "ZrModuleEntryPoints": 24, "ZRDATETIMESTRUCT": 16, "ZRREF": 24, "ZRSREF": 16,
                 "ZRVARIANTVALUE": 8, "ZRVARIANT": 16, "ZrSafeArrayBound": 8}
        for name, size in sizes.items():
            with self.subTest(name):
                self.assertEqual(ctypes.sizeof(getattr(_abi, name)), size)

    @unittest.skipUnless(TABLES.exists(), "not in the source tree")
    def test_records_have_the_layout_of_the_tables(self):
        """The generator takes over the order of the fields; ctypes places them."""
        checked = 0
        for table, module in (("zrcore.txt", _abi), ("zrhost.txt", _host_abi)):
            for line in (TABLES / table).read_text(encoding="utf-8").splitlines():
                _, kind, name, *rest = line.split() + [""] * 3
                record = getattr(module, name.split(".")[0], None)
                if kind in ("record", "field") and record is not None and not line.startswith("#"):
                    with self.subTest(name):
                        found = getattr(record, name.split(".")[1]).offset if kind == "field" else ctypes.sizeof(record)
                        self.assertEqual(found, int(rest[0 if kind == "field" else 2]))
                        checked += 1
        self.assertGreater(checked, 60)

    def test_every_export_is_callable(self):
        self.assertEqual(len(_abi.FUNCTIONS), 144)
        for name in _abi.FUNCTIONS:
            self.assertTrue(callable(getattr(raw, name)), name)
        with self.assertRaises(AttributeError):
            raw.ZrNoSuchFunction

    def test_the_examples_of_the_documentation_strings(self):
        names = ["zrcore", *(f"zrcore.{module.name}" for module in pkgutil.iter_modules(zrcore.__path__))]
        tried = 0
        for name in names:
            if name == "zrcore.host":   # needs another library
                continue
            with self.subTest(name):
                result = doctest.testmod(importlib.import_module(name))
                self.assertEqual(result.failed, 0)
                tried += result.attempted
        self.assertGreater(tried, 20)


@unittest.skipUnless(INSTALLED, "the decoder is part of the installed package only")
class ReprTest(unittest.TestCase):
    def test_raw_records_show_their_values(self):
        # The text of each value is tested with the decoder; this is about the memory that it reads.
        nested = Array.of([1, "x", Array.of([5], Type.I4)])
        for value, text in [(zrcore.i4(5), "ZR_VT_I4 5"), (None, "ZR_VT_EMPTY"), ("é", 'ZR_VT_STR "é"'),
                            (b"\1\2", "ZR_VT_BLOB [2] {01 02}"),
                            (nested, 'ZR_VT_VARIANT[3] {ZR_VT_I8 1, ZR_VT_STR "x", ZR_VT_I4[1] {5}}')]:
            with self.subTest(text), _variant.Variant(value) as record:
                self.assertEqual(repr(record), text)
                by_reference = raw.ZRVARIANT(Type.VARIANT | raw.ZR_VT_BYREF)
                by_reference.Value.address = ctypes.addressof(record)
                self.assertIn(text, repr(by_reference))
        self.assertEqual(repr(raw.ZRREF((1, 2, 3, 4, 5, 6))), "1.2.3.4.5.6")

    def test_memory_that_cannot_be_read_is_invalid(self):
        for kind in (Type.STR, Type.BLOB, Type.UUID, Type.REF, Type.SREF, Type.STR | raw.ZR_VT_ARRAY,
                     Type.I4 | raw.ZR_VT_BYREF, Type.VARIANT | raw.ZR_VT_BYREF):
            for address in (1, 4096, (1 << 47) - 8, 1 << 63, (1 << 64) - 1):
                record = raw.ZRVARIANT(kind)
                record.Value.ui8 = address
                with self.subTest(record.Type, address=address):
                    self.assertIn("<invalid>", repr(record))
        cyclic = raw.ZRVARIANT(Type.VARIANT | raw.ZR_VT_BYREF)
        cyclic.Value.address = ctypes.addressof(cyclic)
        self.assertIn("<cycle>", repr(cyclic))
        self.assertEqual(_memory.read(ctypes.addressof(cyclic), 16), bytes(cyclic))


class SampleTest(unittest.TestCase):
    def test_the_sample_program_prints_what_its_values_are(self):
        sample = pathlib.Path(__file__).with_name("sample_program.py")
        ended = subprocess.run([sys.executable, str(sample)], capture_output=True, text=True, check=False)
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))
        self.assertEqual(ended.stdout, "Hello, world! Hello, world!  0.5\nZR_R_INVALID_ARGUMENTS True\n"
                                       "[[1.0, 2.0], [3.0, 4.0]] [[1, 2], [3, 4]] 5\n")


if __name__ == "__main__":
    unittest.main()
