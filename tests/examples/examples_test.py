#!/usr/bin/python3
"""The examples from outside, as programs that were built against the installed package.

usage: examples_test.py FOLDER_OF_BUILT_EXAMPLES SAMPLES [UNITTEST ARGUMENT...]
"""

import json
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import jsonschema

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "apps" / "demo"))
import screen  # noqa: E402

ROOT = Path(__file__).resolve().parents[2]
PATIENCE = 200  # seconds; machines that build meanwhile are slow
PASSPORT, DESK = "bangladesh-spread.jpg", "desk.jpg"


def find(name):
    return next((file for file in (BUILT / name / name, BUILT / name) if file.is_file()), None)


def program(name):
    file = find(name)
    assert file, f"{name} is not built in {BUILT}"
    return str(file)


def run(name, *arguments, names=b"", **options):
    return subprocess.run([program(name), *map(str, arguments)], input=names, stdout=options.pop("stdout", subprocess.PIPE),
                          stderr=subprocess.PIPE, timeout=PATIENCE, **options)


def check_schema(lines):
    schema = json.loads((ROOT / "packaging/schema/findings-1.schema.json").read_text("utf-8"))
    for line in lines:
        jsonschema.validate(line, schema)


class OnePicture(unittest.TestCase):
    def test_judge_and_own_camera_and_c(self):
        for name, picture, status, output, complaint in (
                ("judge", PASSPORT, 0, ["a passport"], ""), ("judge", "missing.jpg", 1, [], "missing.jpg: "),
                ("own-camera", PASSPORT, 0, ["a passport; photo of 960x1280"], ""),
                ("c-host", PASSPORT, 0, ["a passport; TD3, strict"], ""), ("c-host", DESK, 0, ["not a passport"], ""),
                ("c-host", "missing.jpg", 1, [], "missing.jpg: "), ("read-zone", "missing.jpg", 1, [], "missing.jpg: ")):
            with self.subTest(name, picture=picture):
                done = run(name, SAMPLES / picture)
                self.assertEqual((done.returncode, done.stdout.decode().splitlines()[:1]), (status, output), done.stderr)
                self.assertIn(complaint, done.stderr.decode())


class ReadZone(unittest.TestCase):
    def test_trusts_a_zone_only_if_nothing_speaks_against_it(self):
        zone = b"P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<\nL898902C36UTO7408122F1204159ZE184226B<<<<<10\n"
        for text, expected in ((zone, (0, b"ERIKSSON, born in 1974\n", 0)), (zone.replace(b"7408", b"7409"), (1, b"", 2))):
            done = run("read-zone", names=text)
            self.assertEqual((done.returncode, done.stdout, len(done.stderr.splitlines())), expected, done.stderr)
        self.assertEqual(run("read-zone", SAMPLES / PASSPORT).stdout, b"SPECIMEN, born in 1953\n")


class OwnRecogniser(unittest.TestCase):
    def setUp(self):
        if not find("own-recogniser"):
            self.skipTest("own-recogniser is not built: install libtesseract-dev and tesseract-ocr-eng")

    def test_reads_pictures_in_any_turn_and_tells_of_those_it_cannot(self):
        names = [PASSPORT, "missing.jpg", "bangladesh-upside-down.jpg", DESK]
        done = run("own-recogniser", "--json", *[SAMPLES / name for name in names])
        lines = [json.loads(line) for line in done.stdout.splitlines()]
        self.assertEqual((done.returncode, [line["file"] for line in lines]), (1, [str(SAMPLES / name) for name in names]))
        self.assertEqual([line.get("isPassport") for line in lines], [True, None, True, False])
        self.assertIn("PASSPORT", lines[2]["recognizedText"])
        check_schema(lines)
        self.assertEqual(done.stderr.decode().splitlines(), [f"{lines[1]['file']}: {lines[1]['error']}"])


class FolderJudge(unittest.TestCase):
    def test_every_name_gets_one_line_and_unreadable_ones_exit_status_1(self):
        names = [str(SAMPLES / name) for name in (PASSPORT, DESK, "missing.jpg")]
        done = run("folder-judge", "--jobs", 2, names="\n".join(names + [""]).encode())
        lines = {line["file"]: line for line in map(json.loads, done.stdout.splitlines())}
        check_schema(lines.values())
        self.assertEqual((done.returncode, set(lines)), (1, set(names)))
        self.assertEqual([lines[name].get("isPassport") for name in names], [True, False, None])
        self.assertEqual((lines[names[0]]["confidence"], len(lines[names[0]]["reasons"])), (0.5, 3))
        self.assertIn("No such file", lines[names[2]]["error"])

    def test_names_of_any_bytes_can_be_told_from_the_line(self):
        with tempfile.TemporaryDirectory() as folder:
            file = os.fsencode(folder) + b'/a\nb"\\\x01\xff.jpg'
            os.symlink(SAMPLES / DESK, file)
            done = run("folder-judge", "-0", names=file + b"\0")
        self.assertEqual((done.returncode, bytes.fromhex(json.loads(done.stdout)["fileBytes"])), (0, file))

    def test_exit_status_of_wrong_usage_and_of_lost_output(self):
        for arguments in (["--jobs"], ["--jobs", "0"], ["-1"]):
            with self.subTest(arguments):
                self.assertEqual(run("folder-judge", *arguments).returncode, 2)
        with open("/dev/full", "wb") as full:
            self.assertEqual(run("folder-judge", names=os.fsencode(SAMPLES / DESK), stdout=full).returncode, 1)


class OnScreen(unittest.TestCase):
    """Each shows the picture that stands for a camera, and is closed while frames of it are judged."""

    def setUp(self):
        if missing := screen.missing_tool():
            self.skipTest(missing)
        self.screen = screen.Screen()
        self.addCleanup(self.screen.close)

    def show_and_close(self, *command, read=None, said=()):
        title = "passport, please"
        shown = screen.Program(self.screen, command, {"QT_QUICK_BACKEND": "software"})
        self.addCleanup(shown.end)
        x, y, width, height = shown.geometry(title)
        screen.wait_for(lambda: min(self.screen.pixel(x + width // 2, y + int(height * 0.45))) > 90, "the passport")
        screen.wait_for(lambda: self.screen.pixel(x + width // 2, y + height - 48) == (255, 255, 255), "the white button")
        if read:
            shown.wait_for_title(read)  # the zone of the live picture
        self.screen.click(x + 24, y + 24)  # the close control
        status = shown.process.wait(PATIENCE)
        output = [line for line in shown.end()[1].splitlines() if line and "XDG_RUNTIME_DIR" not in line]
        self.assertEqual((status, output), (0, list(said)))

    def test_widgets_host(self):
        self.show_and_close(program("widgets-host"), str(SAMPLES / PASSPORT), read="zone read")
        self.show_and_close(str(BUILT / "widgets-host/passport-scan"), str(SAMPLES / PASSPORT), said=["no passport"])

    def test_qml_host(self):
        with tempfile.TemporaryDirectory() as folder:
            for name, read, said in (("Main.qml", None, []), ("Zone.qml", "TD3 read", []), ("Passport.qml", None, ["qml: no passport"])):
                scene = Path(folder) / name
                view = (ROOT / "examples/qml-host" / name).read_text()
                scene.write_text(view.replace("        completion:", f'        camera: "{SAMPLES / PASSPORT}"\n        completion:'))
                self.show_and_close(program("qml-host"), str(scene), read=read, said=said)
        done = run("qml-host", "missing.qml", env=self.screen.environment)
        self.assertEqual(done.returncode, 1)


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    BUILT, SAMPLES = (Path(argument).resolve() for argument in sys.argv[1:3])
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])
