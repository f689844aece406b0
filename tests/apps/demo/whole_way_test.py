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
ACCENT = (24, 130, 255)  # of the preview's Confirm
PRIMARY = (11, 99, 206)  # of the first button of a result, in light
BLACK = (0, 0, 0)
SOFTWARE = {"QT_QUICK_BACKEND": "software"}
OPENGL = {"LIBGL_ALWAYS_SOFTWARE": "1"}

CAPTURE_BOTTOM = 16 + 32  # from the lower edge to the middle of the capture button
RETAKE_BOTTOM = 18  # to the middle of Retake and Confirm
CLOSE = (25, 23)  # the middle of the close symbol


class WholeWay(unittest.TestCase):
    def setUp(self):
        if missing := screen.missing_tool():
            self.skipTest(missing)
        self.screen = Screen()
        self.addCleanup(self.screen.close)
        self.demo = None
        self.addCleanup(lambda: self.demo and self.demo.end())

    def start(self, *arguments, environment=SOFTWARE, title=TITLE):
        quiet = {"XDG_RUNTIME_DIR": self.screen.folder.name, "LANG": "C.UTF-8"}
        self.demo = Program(self.screen, [DEMO, *map(str, arguments)], environment | quiet)
        self.title = title
        self.screen.xdotool("windowfocus", self.demo.wait_for_title(title))

    def places(self, color, least=1):
        """The box around what is at least so wide and high (an odd number of points) in a colour, less half of that on each
        side, on the screen; None where nothing is."""
        x, y, width, height = self.demo.geometry(self.title)
        shown = self.screen.picture().crop((x, y, x + width, y + height))
        found = screen.ImageChops.difference(shown, screen.Image.new("RGB", shown.size, color)).convert("L").point(
            lambda difference: 255 * (difference == 0))
        box = found.filter(screen.ImageFilter.MinFilter(least)).getbbox()
        return box and (x + box[0], y + box[1], x + box[2], y + box[3])

    def click_button(self, color):
        # Dots before a text, and texts, have a button's colour too.
        left, top, right, bottom = wait_for(lambda: self.places(color, least=11), f"a button in the colour {color}")
        self.screen.click((left + right) / 2, (top + bottom) / 2)

    def click(self, across, from_bottom):
        x, y, width, height = self.demo.geometry(self.title)
        self.screen.click(x + across * width, y + height - from_bottom)

    def wait_until_ready(self):
        x, y, width, height = self.demo.geometry(self.title)
        wait_for(lambda: self.screen.pixel(x + width // 2, y + height - CAPTURE_BOTTOM) == WHITE, "the session is ready")

    def wait_for_preview(self):
        self.demo.wait_for_title(TITLE + "preview")
        wait_for(lambda: self.places(ACCENT), "the button Confirm")
        # The outline around the photo is black, on white.
        wait_for(lambda: self.photo_pixels() > 0.2, "the photo")

    def photo_pixels(self):
        """Part of the screen that is neither white nor black nor of a button."""
        x, y, width, height = self.demo.geometry(self.title)
        area = self.screen.picture().crop((x, y + 120, x + width, y + height - 60)).convert("L").histogram()
        return sum(area[20:240]) / sum(area)

    def wait_for_live_picture(self):
        wait_for(lambda: self.places(GREEN), "green brackets")
        x, y, width, height = self.demo.geometry(self.title)
        middle = (x + width // 4, y + height // 3, x + 3 * width // 4, y + height // 2)
        seen = set()
        wait_for(lambda: seen.add(self.screen.picture().crop(middle).tobytes()) or len(seen) > 5, "a picture that moves")

    def wait_for_scanning(self, title="scanning"):
        """Whether something stands above the screen: what the demo has to say."""
        self.demo.wait_for_title(title)
        self.wait_until_ready()
        x, y, _, _ = self.demo.geometry(self.title)
        return self.screen.pixel(x + 4, y + 4) != BLACK

    def expect_end(self):
        """The program has ended as it should, and has printed nothing."""
        output, _ = self.demo.process.communicate(timeout=screen.PATIENCE)
        self.assertEqual((self.demo.process.returncode, output), (0, ""))

    def test_passport_is_seen_photographed_and_confirmed_with_the_mouse(self):
        self.start("--camera", SAMPLES / "bangladesh-on-wood.jpg", environment=OPENGL)
        self.wait_for_live_picture()
        for photo in range(2):
            self.wait_until_ready()
            self.click(0.5, CAPTURE_BOTTOM)
            self.wait_for_preview()
            if photo == 0:
                self.click(0.25, RETAKE_BOTTOM)
                self.demo.wait_for_title(TITLE + "scanning")
        self.click(0.75, RETAKE_BOTTOM)
        self.demo.wait_for_title(TITLE + "result")
        self.click_button(PRIMARY)
        self.assertTrue(self.wait_for_scanning(), "thanks for a passport")
        x, y, _, height = self.demo.geometry(TITLE)
        below = next(row for row in range(height) if self.screen.pixel(x + 4, y + row) == BLACK)
        self.screen.click(x + CLOSE[0], y + below + CLOSE[1])
        self.expect_end()

    def test_widgets_host_does_the_same_with_keys_alone(self):
        self.start("--widgets", "--camera", SAMPLES / "bangladesh-on-wood.jpg")
        self.wait_for_live_picture()
        for photo in range(2):
            self.wait_until_ready()
            self.screen.key("space")
            self.wait_for_preview()
            if photo == 0:
                self.screen.key("Escape")
                self.demo.wait_for_title(TITLE + "scanning")
        self.screen.key("shift+Tab")  # Confirm is the last control
        self.screen.key("space")
        self.demo.wait_for_title(TITLE + "result")
        self.screen.key("Return")  # Continue has the focus
        self.assertTrue(self.wait_for_scanning(), "thanks for a passport")
        self.screen.key("Escape")
        self.expect_end()

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

    def test_picture_as_argument_is_no_passport_and_escape_leads_out(self):
        for host in [], ["--widgets"]:
            with self.subTest(host):
                self.start(*host, "--camera", SAMPLES / "desk.jpg", SAMPLES / "receipt.jpg")
                self.wait_for_preview()
                self.click(0.75, RETAKE_BOTTOM)
                self.demo.wait_for_title(TITLE + "result")
                self.screen.key("Return")  # Scan again has the focus
                self.assertFalse(self.wait_for_scanning(), "thanks for a receipt")
                self.screen.key("Escape")
                self.expect_end()

    def test_bengali_in_the_dark(self):
        self.start("--language", "bn", "--theme", "dark", SAMPLES / "receipt.jpg", title="Kestrelid")
        self.demo.wait_for_title("প্রিভিউ")
        self.screen.key("shift+Tab")
        self.screen.key("Return")
        self.demo.wait_for_title("ফলাফল")
        x, y, width, height = self.demo.geometry("Kestrelid")
        wait_for(lambda: max(self.screen.pixel(x + width - 4, y + height // 2)) < 80, "a dark page")
        self.screen.key("Escape")
        has_camera = any(Path("/dev").glob("video*"))
        self.assertTrue(self.wait_for_scanning("স্ক্যান") or has_camera, "that a drawn passport stands for a camera")


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
            (["--after", "1"], 2, "--after"), (["--theme", "sepia"], 2, "sepia"), (["--text-scale", "4"], 2, "from 1 to 3"),
            (["--language", ""], 2, "--language"), ([], 1, "no display"),
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
            unknown = self.run_demo("--language", "tlh", **quiet)
            self.assertEqual((unknown.returncode, "tlh" in unknown.stderr), (2, True))
            failed = self.run_demo("--screenshot", f"{folder}/none/shown.png", "--after", "0", **quiet)
            self.assertEqual(failed.returncode, 1)
            self.assertRegex(failed.stderr, "^kestrelid-demo: cannot write .*shown.png: .+\n$")


if __name__ == "__main__":
    sys.exit(unittest.main(verbosity=2))
