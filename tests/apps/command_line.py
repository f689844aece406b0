"""What the tests of the command line share: running the built programs and making files for them."""

import json
import os
import struct
import subprocess
import tempfile
import unittest
import zlib
from pathlib import Path

KESTRELID = os.environ["KESTRELID"]
ROOT = Path(__file__).resolve().parents[2]
SAMPLES = ROOT / "samples"
PASSPORT = SAMPLES / "utopia-scan.jpg"


def run(*arguments, program=KESTRELID, stdin=b"", cwd=None):
    return subprocess.run([program, *arguments], input=stdin, capture_output=True, timeout=60, cwd=cwd)


def json_lines(output):
    return [json.loads(line) for line in output.decode().splitlines()]


def png(width, height, level=255):
    """A plain grey picture."""
    rows = (b"\0" + bytes([level]) * width) * height

    def chunk(kind, content):
        body = kind + content
        return struct.pack(">I", len(content)) + body + struct.pack(">I", zlib.crc32(body))

    header = struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b"")


class CommandLineTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="kestrelid-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def write(self, name, content):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
        return path

    def assert_error_lines(self, result, prefixes):
        """Standard error holds one line for each prefix, in this order, each with a cause."""
        lines = result.stderr.decode().splitlines()
        self.assertEqual(len(lines), len(prefixes), lines)
        for line, prefix in zip(lines, prefixes):
            self.assertTrue(line.startswith(prefix), line)
            self.assertGreater(len(line), len(prefix) + 3, line)

    def assert_wrong_usage(self, *arguments):
        with self.subTest(arguments):
            result = run(*arguments)
            self.assertEqual(result.returncode, 2, result)
            self.assertEqual(result.stdout, b"")
            self.assert_error_lines(result, ["kestrelid: "])
