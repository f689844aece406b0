"""What the tests of the command line share: running the built programs and making files for them."""

import io
import json
import os
import select
import signal
import subprocess
import tempfile
import unittest
from pathlib import Path

import jsonschema
from PIL import Image

KESTRELID = os.environ["KESTRELID"]
ROOT = Path(__file__).resolve().parents[2]
SAMPLES = ROOT / "samples"
PASSPORT = SAMPLES / "utopia-scan.jpg"
PATIENCE = 120  # seconds; machines that build meanwhile are slow


def run(*arguments, program=KESTRELID, stdin=b"", **options):
    return subprocess.run([program, *arguments], input=stdin, capture_output=True, timeout=PATIENCE, **options)


def json_lines(output):
    return [json.loads(line) for line in output.decode().splitlines()]


def findings(output):
    """Lines that tell about files, as the published schema has them."""
    lines = json_lines(output)
    schema = json.loads((ROOT / "packaging/schema/findings-1.schema.json").read_text("utf-8"))
    for line in lines:
        jsonschema.validate(line, schema)
    return lines


def png(width, height):
    """A plain white picture."""
    file = io.BytesIO()
    Image.new("L", (width, height), 255).save(file, "PNG")
    return file.getvalue()


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

    def start(self, *arguments, **options):
        """A run that goes on beside the test, and ends with it."""
        process = subprocess.Popen([KESTRELID, *arguments], bufsize=0, **options)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        for pipe in filter(None, (process.stdin, process.stdout, process.stderr)):
            self.addCleanup(pipe.close)
        return process

    def read_until(self, process, word):
        """What it writes up to the line that holds word."""
        written = b""
        while select.select([process.stdout], [], [], PATIENCE)[0]:
            line = process.stdout.readline()
            self.assertTrue(line, b"ended without " + word)
            written += line
            if word in line:
                return written
        self.fail(f"{PATIENCE} s without a line")

    def assert_ends_quietly_with_its_reader(self, word, *arguments):
        # Python ignores the signal, and would have its children do so too.
        process = self.start(*arguments, stdout=subprocess.PIPE, stderr=subprocess.PIPE, restore_signals=False)
        self.read_until(process, word)
        process.stdout.close()
        self.assertEqual(process.wait(timeout=PATIENCE), -signal.SIGPIPE)
        self.assertEqual(process.stderr.read(), b"")

    def assert_tells_a_full_disk(self, *arguments):
        with open("/dev/full", "wb") as full:
            result = subprocess.run([KESTRELID, *arguments], stdout=full, stderr=subprocess.PIPE, timeout=PATIENCE)
        self.assertEqual(result.returncode, 1)
        self.assert_error_lines(result, ["kestrelid: standard output: "])

    def assert_wrong_usage(self, *arguments):
        with self.subTest(arguments):
            result = run(*arguments)
            self.assertEqual(result.returncode, 2, result)
            self.assertEqual(result.stdout, b"")
            self.assert_error_lines(result, ["kestrelid: "])
