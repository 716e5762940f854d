"""The example host and the example class in Python: whichever side is in Python, the tables are those of the C++ demo.
"""
import os
import pathlib
import subprocess
import sys
import unittest

BUILD = os.environ.get("ZRCORE_TEST_BUILD", "")
EXAMPLES = pathlib.Path(__file__).resolve().parents[3] / "examples"
CSV = str(EXAMPLES / "bodies.csv")

# The sources of the C++ host, as a library: it finds the class by the discovery that was added before.
NATIVE_HOST = """
import ctypes, sys
sys.path.insert(0, sys.argv.pop(1))
import zrcore
from python_table import PythonDiscovery

main = ctypes.CDLL(sys.argv.pop(1)).main
arguments = (ctypes.c_char_p * len(sys.argv))(*(argument.encode() for argument in sys.argv))
with zrcore.library():
    zrcore.add_discovery(PythonDiscovery())
    status = main(len(arguments), arguments)
sys.exit(status)
"""


@unittest.skipUnless(BUILD, "ZRCORE_TEST_BUILD names no build folder")
class DemoTest(unittest.TestCase):
    def tables(self, *command):
        """The lines from the first table on, without the last line of the C++ host, and that line."""
        ended = subprocess.run(command, capture_output=True, text=True, check=False)
        self.assertEqual(ended.returncode, 0, ended.stdout + ended.stderr)
        shown, _, references = ended.stdout[ended.stdout.index("╭"):].partition("  References")
        return shown, references

    def test_every_pair_of_host_and_class_shows_the_same(self):
        modules = ["--modules", f"{BUILD}/examples/modules"]
        native = [f"{BUILD}/examples/zrdemo", *modules]
        expected, _ = self.tables(*native)
        host = [sys.executable, str(EXAMPLES / "python" / "zrdemo.py"), *modules]
        for name in ("Astronomy.BodyTable", "Python.BodyTable"):
            with self.subTest(name):
                self.assertEqual(self.tables(*host, name)[0], expected)
        shown, references = self.tables(sys.executable, "-c", NATIVE_HOST, str(EXAMPLES / "python"),
                                        f"{BUILD}/tests/libzrdemo_library.so", *modules, "Python.BodyTable", CSV)
        self.assertEqual(shown, expected)
        self.assertIn("All released", references)


if __name__ == "__main__":
    unittest.main()
