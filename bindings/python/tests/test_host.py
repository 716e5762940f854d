"""The host kit: what its discovery finds, what it reports, and a class that it finds."""
import json
import os
import pathlib
import tempfile
import unittest
import uuid

import zrcore

BUILD = os.environ.get("ZRCORE_TEST_BUILD", "")
TABLE, INTERFACE = uuid.UUID("93E729DC-1C62-4556-A228-F17BF7EAF2B5"), uuid.UUID("8E8CD166-1274-4280-9A6A-A8B98CECC85C")


class IBodyTable(zrcore.Interface):
    iid = INTERFACE


@unittest.skipUnless(BUILD, "ZRCORE_TEST_BUILD names no build folder")
class HostTest(unittest.TestCase):
    def test_a_class_is_found_configured_and_created(self):
        from zrcore import host
        with tempfile.TemporaryDirectory() as name, zrcore.library():
            folder = pathlib.Path(name, "Модули 😀")
            missing, settings = folder / "missing", folder / "settings.json"
            module, manifest = f"{BUILD}/examples/modules/bodies.so", folder / "own.zrmodule"
            found = host.folder_discovery([folder, str(missing)], settings)
            self.assertEqual(found.folders(), [str(folder), str(missing)])
            self.assertEqual([problem.file for problem in found.problems()], [str(folder), str(missing), str(settings)])

            folder.mkdir()
            settings.write_text('{"schema": 1, "classes": {"Own.Table": {"Options": {"size": 7}}}}', encoding="utf-8")
            text = json.dumps({"schema": 1, "module": module, "version": "1.2.3", "classes": [{
                "name": "Own.Table", "id": str(TABLE), "description": "Größe",
                "interfaces": [{"id": str(INTERFACE), "name": "IBodyTable"}]}]}, ensure_ascii=False, indent=1)
            manifest.write_text(text, encoding="utf-8")
            found.refresh()
            self.assertEqual(found.classes(), [])   # the module is not in the folder of the manifest
            outside = next(problem for problem in found.problems() if problem.file == str(manifest))
            self.assertEqual((outside.is_error, outside.line > 1, outside.column > 1), (True, True, True))
            self.assertIn(f"{manifest}:{outside.line}:{outside.column}: ", str(outside))

            found = host.folder_discovery([folder], settings, allow_outside=True)
            self.assertEqual(found.problems(), [])
            self.assertEqual(found.classes(), [host.HostClass(
                TABLE, "Own.Table", "Größe", module, str(manifest), "1.2.3",
                (host.HostInterface(INTERFACE, "IBodyTable"),))])
            zrcore.add_discovery(found)
            self.assertEqual(zrcore.class_name(TABLE), "Own.Table")
            options = zrcore.configuration("Own.Table", "Options")
            self.assertEqual(options and (options.get("size", 0), options.get("size", type=zrcore.Type.STR)), (7, "7"))
            zrcore.create("Own.Table", IBodyTable).close()
        self.assertRaises(zrcore.Error, found.classes)   # released at the end of the library
        self.assertRaises(zrcore.Error, host.folder_discovery, [""])
        self.assertRaises(ValueError, host.folder_discovery, ["folder\0"])
        self.assertRaises(ValueError, host.folder_discovery, [], "settings.json\0")


if __name__ == "__main__":
    unittest.main()
