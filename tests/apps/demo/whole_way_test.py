"""The demo from outside, with real parts: a drawn passport as the camera, a mouse, and what the screen shows."""

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import screen
from screen import Program, Screen, wait_for

DEMO = os.environ["KESTRELID_DEMO"]
DRAG_SOURCE = os.environ["KESTRELID_DRAG_SOURCE"]
SAMPLES = Path(__file__).resolve().parents[3] / "samples"

TITLE = "Kestrelid demo: "
GREEN = (34, 197, 94)
WHITE = (255, 255, 255)
ACCENT = (24, 130, 255)
PASSPORT = (21, 128, 61)
NO_PASSPORT = (185, 28, 28)
SOFTWARE = {"QT_QUICK_BACKEND": "software"}
OPENGL = {"LIBGL_ALWAYS_SOFTWARE": "1"}

EDGE = 20  # of the screens' content; the brackets' vertical arms stand on it
CAPTURE_BOTTOM = 16 + 32  # from the lower edge to the middle of the capture button
BUTTON_BOTTOM = 18  # to the middle of Retake and Confirm


class WholeWay(unittest.TestCase):
    def setUp(self):
        if missing := screen.missing_tool():
            self.skipTest(missing)
        self.screen = Screen()
        self.addCleanup(self.screen.close)
        self.demo = None
        self.addCleanup(lambda: self.demo and self.demo.end())

    def start(self, *arguments, environment=SOFTWARE):
        self.demo = Program(self.screen, [DEMO, *map(str, arguments)], environment | {"XDG_RUNTIME_DIR": self.screen.folder.name})
        self.demo.wait_for_title(TITLE)

    def green_pixels(self):
        x, y, _, height = self.demo.geometry(TITLE)
        return sum(self.screen.pixel(x + EDGE, y + row) == GREEN for row in range(height))

    def click(self, across, from_bottom):
        x, y, width, height = self.demo.geometry(TITLE)
        self.screen.click(x + across * width, y + height - from_bottom)

    def disc(self):
        x, y, width, height = self.demo.geometry(TITLE)
        return self.screen.pixel(x + width // 2, y + height - CAPTURE_BOTTOM)

    def take_photo(self):
        wait_for(lambda: self.disc() == WHITE, "the session is ready")
        self.click(0.5, CAPTURE_BOTTOM)
        self.demo.wait_for_title(TITLE + "preview")
        x, y, width, height = self.demo.geometry(TITLE)
        wait_for(lambda: self.screen.pixel(x + 0.55 * width, y + height - BUTTON_BOTTOM) == ACCENT, "the button Confirm")
        # The outline around the photo is black, on white.
        wait_for(lambda: self.photo_pixels() > 0.2, "the photo")

    def photo_pixels(self):
        """Part of the screen that is neither white nor black nor of a button."""
        x, y, width, height = self.demo.geometry(TITLE)
        area = self.screen.picture().crop((x, y + 120, x + width, y + height - 60)).convert("L").histogram()
        return sum(area[20:240]) / sum(area)

    def confirm(self, headline, color):
        self.click(0.75, BUTTON_BOTTOM)
        x, y, width, _ = self.demo.geometry(TITLE + headline)
        wait_for(lambda: any(self.screen.pixel(x + width // 2, y + row) == color for row in range(40, 200)), headline)

    def scan(self, again, *arguments, environment=SOFTWARE):
        self.start(*arguments, environment=environment)
        wait_for(lambda: self.green_pixels() > 80, "green brackets")
        x, y, width, height = self.demo.geometry(TITLE)
        middle = (x + width // 4, y + height // 3, x + 3 * width // 4, y + height // 2)
        seen = set()
        wait_for(lambda: seen.add(self.screen.picture().crop(middle).tobytes()) or len(seen) > 5, "a picture that moves")
        self.take_photo()
        self.click(0.25, BUTTON_BOTTOM)  # Retake
        self.demo.wait_for_title(TITLE + "scanning")
        self.take_photo()
        self.confirm("A passport", PASSPORT)
        again()
        # The close symbol of the scanning screen ends the program, which has printed nothing.
        x, y, _, height = self.demo.geometry(TITLE + "scanning")
        wait_for(lambda: self.disc() == WHITE, "the session is ready")
        top = next(row for row in range(height) if self.screen.pixel(x + 3, y + row) == (0, 0, 0))
        self.screen.click(x + EDGE + 5, y + top + 17)
        output, _ = self.demo.process.communicate(timeout=screen.PATIENCE)
        self.assertEqual((self.demo.process.returncode, output), (0, ""))

    def test_passport_is_seen_photographed_and_confirmed(self):
        # A drawn passport stands for a camera that this machine lacks.
        camera = ["--camera", SAMPLES / "bangladesh-on-wood.jpg"] if any(Path("/dev").glob("video*")) else []
        self.scan(lambda: self.click(0.5, 38), *camera, environment=OPENGL)

    def test_widgets_host_does_the_same(self):
        # Scan again has the focus.
        self.scan(lambda: self.screen.key("space"), "--widgets", "--camera", SAMPLES / "bangladesh-on-wood.jpg")

    def test_file_that_is_dropped_opens_in_the_preview(self):
        source = Program(self.screen, [DRAG_SOURCE, str(SAMPLES / "receipt.jpg")])
        self.addCleanup(source.end)
        source.wait_for_title("Drag source")

        def shows_preview_after_a_drop():  # on a busy machine a drag may begin too late
            self.screen.xdotool("mousemove", 650, 150, "mousedown", 1)
            for across in range(640, 200, -40):
                self.screen.xdotool("mousemove", across, 400, "sleep", 0.05)
            self.screen.xdotool("mouseup", 1, "sleep", 1)
            return self.demo.windows(TITLE + "preview")

        for host in [], ["--widgets"]:
            with self.subTest(host):
                self.start(*host, "--camera", SAMPLES / "desk.jpg")
                wait_for(shows_preview_after_a_drop, "the preview of the file")
                self.demo.end()

    def test_picture_as_argument_is_judged_and_escape_leads_back_and_out(self):
        self.start(SAMPLES / "receipt.jpg")
        self.demo.wait_for_title(TITLE + "preview")
        self.confirm("Not a passport", NO_PASSPORT)
        self.demo.end()
        self.start(SAMPLES / "receipt.jpg")
        self.screen.xdotool("windowfocus", self.demo.wait_for_title(TITLE + "preview"))
        self.screen.key("Escape")
        self.demo.wait_for_title(TITLE + "scanning")
        self.screen.key("Escape")
        self.assertEqual(self.demo.process.wait(screen.PATIENCE), 0)


class CommandLine(unittest.TestCase):
    def run_demo(self, *arguments, **environment):
        without = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")}
        return subprocess.run([DEMO, *arguments], env=without | environment, capture_output=True, text=True, timeout=60)

    def test_help_and_version_need_no_display(self):
        told = self.run_demo("--help")
        self.assertEqual((told.returncode, told.stderr), (0, ""))
        self.assertIn("--camera", told.stdout)
        self.assertRegex(self.run_demo("--version").stdout, r"^kestrelid-demo \d+\.\d+\.\d+\n$")

    def test_what_is_wrong_is_said_in_one_line(self):
        for arguments, status, said in [
            (["--nonsense"], 2, "nonsense"), (["--camera"], 2, "camera"), (["--camera", ""], 2, "--camera"),
            (["a.jpg", "b.jpg"], 2, "b.jpg"), (["--screenshot", "a.png", "--after", "soon"], 2, "soon"),
            (["--after", "1"], 2, "--after"), ([], 1, "no display"),
        ]:
            with self.subTest(arguments):
                result = self.run_demo(*arguments)
                self.assertEqual((result.returncode, result.stdout), (status, ""))
                self.assertRegex(result.stderr, rf"^kestrelid-demo: .*{said}.*\n$")

    def test_screenshot(self):
        with tempfile.TemporaryDirectory(prefix="kestrelid-demo-") as folder:
            quiet = {"QT_QPA_PLATFORM": "offscreen", "QT_QUICK_BACKEND": "software", "XDG_RUNTIME_DIR": folder}
            result = self.run_demo("--screenshot", f"{folder}/shown.png", "--after", "1", **quiet)
            self.assertEqual((result.returncode, result.stderr), (0, ""))
            with screen.Image.open(f"{folder}/shown.png") as picture:
                self.assertEqual(picture.size, (420, 760))
            failed = self.run_demo("--screenshot", f"{folder}/none/shown.png", "--after", "0", **quiet)
            self.assertEqual(failed.returncode, 1)
            self.assertRegex(failed.stderr, "^kestrelid-demo: cannot write .*shown.png: .+\n$")


if __name__ == "__main__":
    sys.exit(unittest.main(verbosity=2))
