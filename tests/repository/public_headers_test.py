#!/usr/bin/python3
"""public_headers_test.py BUILD [QT_FOLDER...]: Clang takes each public header alone too, and behind none of
them stands a header of a library that hosts need not have. The compiler of the build: repository.headers."""

import concurrent.futures
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
INCLUDE = ROOT / "include" / "kestrelid"
BUILD = sys.argv[1]
# Without the system's own folder: named once more it hides headers of the C library from those of C++.
QT = [folder for folder in dict.fromkeys(sys.argv[2:]) if folder != "/usr/include"]
sys.argv[1:] = []

WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Werror"]
FOLDERS = [f"-I{ROOT / 'include'}", f"-I{BUILD}/include"]
INSIDE = re.compile(r"/(opencv\d?|unicode|onnxruntime\w*|gstreamer-1\.0|glib-2\.0|asio|tl|tesseract|leptonica)/|/asio\.hpp$")
OR_QT = re.compile(INSIDE.pattern + r"|/qt6/|/Qt\w+/")


def compile_alone(command, header, forbidden):
    """What the compiler complains about, and the forbidden headers that it read."""
    with tempfile.TemporaryDirectory() as place:
        file, dependencies = pathlib.Path(place, "alone.cpp"), pathlib.Path(place, "alone.d")
        file.write_text(f"#include <{header}>\n")
        result = subprocess.run([*command, *WARNINGS, *FOLDERS, "-fsyntax-only", "-MD", "-MF", dependencies, file],
                                capture_output=True, text=True, check=False)
        complaints = [result.stderr] if result.returncode else []
        read = dependencies.read_text().replace("\\\n", " ").split() if dependencies.exists() else []
    return complaints + [name for name in read if forbidden.search(name)]


class PublicHeaders(unittest.TestCase):
    def test_clang(self):
        clang = shutil.which("clang++-14") or shutil.which("clang++")
        if not clang:
            self.skipTest("no clang++; tools/setup installs it")
        command = [clang, "-std=c++20"]
        with_qt = [*command, *(f"-isystem{folder}" for folder in QT)]
        jobs = {f"kestrelid/{path.name}": (command, OR_QT) for path in INCLUDE.glob("*.h")}
        self.assertGreater(len(jobs), 10)
        jobs |= {f"kestrelid/screens/{path.name}": (with_qt, INSIDE) for path in (INCLUDE / "screens").glob("*.h") if QT}
        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            results = {name: pool.submit(compile_alone, job[0], name, job[1]) for name, job in jobs.items()}
        for name, result in results.items():
            with self.subTest(name):
                self.assertEqual(result.result(), [])


if __name__ == "__main__":
    unittest.main()
