#!/usr/bin/python3
"""tools/abi notices what it is there for: each tampered list or dump is refused, and the message names the difference."""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = sys.argv.pop()
NOT_POSSIBLE = 77
HANDLES = {"KestrelidDetector", "KestrelidError", "KestrelidImage", "KestrelidResult", "KestrelidZones"}  # opaque to hosts

# name -> (pattern, replacement, what the output must say): what was once promised, and no longer holds.
NAMES = "kestrelid-detection.names", {
    "a function that is gone": (r"\A", "KESTRELID_0 kestrelid::aardvark()\n", "-KESTRELID_0 kestrelid::aardvark()"),
    "a function that nobody listed": (r"KESTRELID_0 kestrelid_error_free\n", "", "+KESTRELID_0 kestrelid_error_free"),
    "another version node": (r"KESTRELID_0 kestrelid_error_free", "KESTRELID_7 kestrelid_error_free", "-KESTRELID_7 kestrelid_error_free"),
}
TYPES = "kestrelid-detection.abi.xml", {
    "an enumerator with another value": (r"(<enumerator name='leftMirrored' value=)'5'", r"\1'9'", "leftMirrored"),
    "a member that moved": (
        r"layout-offset-in-bits='\d+'>(\s*<var-decl name='maximumAspectRatio')", r"layout-offset-in-bits='32'>\1", "maximumAspectRatio"),
    "a struct that grew": (r"(<class-decl name='KestrelidPixels' size-in-bits=)'\d+'", r"\1'320'", "KestrelidPixels"),
    "a virtual function in another place": (
        r"vtable-offset='\d+'>(\s*<function-decl name='asyncAfter')", r"vtable-offset='9'>\1", "asyncAfter"),
    "another result": (
        r"(<var-decl name='probe_kestrelid_image_width' type-id=)'[^']*'", r"\1'type-id-1'", "probe_kestrelid_image_width"),
}


def compare(action, folder):
    command = [ROOT / "tools" / "abi", action, BUILD, "--abi", folder]
    return subprocess.run(command, capture_output=True, text=True, check=False)


class Guard(unittest.TestCase):
    def check(self, action, file, rows):
        untouched = compare(action, ROOT / "packaging" / "abi")
        if untouched.returncode == NOT_POSSIBLE:
            self.skipTest(untouched.stdout.strip())
        self.assertEqual(untouched.returncode, 0, untouched.stdout + untouched.stderr)
        for name, (pattern, replacement, message) in rows.items():
            with self.subTest(name), tempfile.TemporaryDirectory() as place:
                folder = shutil.copytree(ROOT / "packaging" / "abi", pathlib.Path(place, "abi"))
                text, count = re.subn(pattern, replacement, (folder / file).read_text(), count=1)
                self.assertEqual(count, 1, "the list no longer holds what this row changes")
                (folder / file).write_text(text)
                result = compare(action, folder)
                self.assertEqual(result.returncode, 1, result.stdout + result.stderr)
                self.assertIn(message, result.stdout)
                self.assertIn("docs/abi.md", result.stdout)

    def test_names(self):
        self.check("names", *NAMES)

    def test_types(self):
        self.check("types", *TYPES)

    def test_each_public_type_is_in_the_dump(self):
        for folder, file in (("", "kestrelid-detection.abi.xml"), ("screens", "kestrelid.abi.xml")):
            with tempfile.TemporaryDirectory() as place:
                probe = pathlib.Path(place, "probe.cpp")
                subprocess.run([ROOT / "packaging" / "abi" / "make-probe", ROOT / "include" / "kestrelid" / folder, probe], check=True)
                types = set(re.findall(r" probe_([A-Z]\w+);", probe.read_text()))
            dump = (ROOT / "packaging" / "abi" / file).read_text()
            defined = {name for kind, name, rest in re.findall(r"<(class|enum)-decl name='(\w+)'([^>]*)>", dump)
                       if "is-declaration-only" not in rest}
            self.assertGreater(len(types), 3)
            self.assertEqual(types - defined, HANDLES if folder == "" else set())


if __name__ == "__main__":
    unittest.main()
