"""kestrelid watch and doctor with cameras without hardware (tests/capture/provider)."""

import json
import os
import subprocess
import unittest

from PIL import Image

from command_line import PATIENCE, SAMPLES, CommandLineTest, json_lines, run

PLUGINS = os.environ["KESTRELID_TEST_PLUGINS"]


class Cameras(CommandLineTest):
    def setUp(self):
        super().setUp()
        self.control = self.folder / "control"
        self.environment = os.environ | {
            "KESTRELID_TEST_CAMERA": str(self.control),
            "GST_PLUGIN_PATH": PLUGINS,
            "GST_REGISTRY": f"{PLUGINS}/registry.bin",
            "GST_REGISTRY_FORK": "no",
        }

    def describe(self, *lines):
        whole = self.folder / "control.new"
        whole.write_text("\n".join(lines) + "\n")
        whole.rename(self.control)

    def kestrelid(self, *arguments):
        return run(*arguments, env=self.environment)

    def test_are_listed_and_chosen_by_name(self):
        self.describe("device Desk", "device Lid", "caps image/jpeg,width=1280,height=720,framerate=30/1")
        listed = json_lines(self.kestrelid("watch", "--list", "--json").stdout)[0]["cameras"]
        formats = {camera["name"]: camera["formats"] for camera in listed}
        self.assertEqual(formats["Lid"], [{"width": 1280, "height": 720, "framesPerSecond": 30.0, "encoding": "jpeg"}])
        sizes = [entry["width"] for entry in formats["Desk"]]
        self.assertEqual(sizes, sorted(sizes, reverse=True))
        readable = self.kestrelid("watch", "--list").stdout.decode()
        self.assertIn("Lid\n    1280x720, 30 frames/s, jpeg\n", readable)

        chosen = self.start("watch", "--json", "--camera", "Lid", env=self.environment, stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE)
        self.assertIn(b'"ready":true,"camera":"Lid"', self.read_until(chosen, b'"session"'))
        chosen.terminate()
        self.assertEqual((chosen.wait(timeout=PATIENCE), chosen.stderr.read()), (0, b""))
        unknown = self.kestrelid("watch", "--camera", "Roof")
        self.assertEqual(unknown.returncode, 1)
        self.assertRegex(unknown.stderr.decode(), r"^kestrelid: Roof: neither .*: (.*, )?(Desk, Lid|Lid, Desk)(, .*)?\n$")
        doctor = json.loads(self.kestrelid("doctor", "--json").stdout)
        self.assertTrue(doctor["camera"]["found"])

    def test_none_is_an_error_that_tells_what_to_do(self):
        self.describe()
        if json_lines(self.kestrelid("watch", "--list", "--json").stdout)[0]["cameras"]:
            self.skipTest("this machine has a camera")
        result = self.kestrelid("watch", "--json")
        self.assertEqual(result.returncode, 1)
        self.assert_error_lines(result, ["kestrelid: no camera found"])
        authorized, session, _ = json_lines(result.stdout)
        self.assertEqual((authorized["authorized"], session["ready"], session["camera"]), (True, False, None))

    def test_give_a_photo(self):
        picture = self.folder / "passport.png"
        Image.open(SAMPLES / "bangladesh-on-wood.jpg").save(picture)
        # One format: a camera that has to change it on a busy machine may give no photo in time.
        self.describe("device Desk", f"picture {picture}", "caps image/jpeg,width=1280,height=720,framerate=30/1")
        photo = self.folder / "page.jpg"
        result = self.kestrelid("watch", "--camera", "Desk", "--photo", str(photo))
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        largest = json_lines(self.kestrelid("watch", "--list", "--json").stdout)[0]["cameras"][0]["formats"][0]
        with Image.open(photo) as taken:
            self.assertEqual(taken.size, (largest["width"], largest["height"]))
        self.assertIn(b": passport, ", run("validate", photo).stdout)

    def test_failures_are_one_line_with_the_name(self):
        for failure, cause in [("open", "does not open"), ("start", "does not start")]:
            self.describe("device Desk", f"fail {failure}")
            result = self.kestrelid("watch", "--camera", "Desk")
            self.assertEqual(result.returncode, 1)
            self.assert_error_lines(result, ["kestrelid: Desk: "])
            self.assertIn(cause, result.stderr.decode())

    def test_loss_ends_the_watch(self):
        for line in ["unplugged", "unplugged error", "stall-after 60"]:
            with self.subTest(line):
                self.describe("device Desk")
                process = self.start("watch", "--camera", "Desk", env=self.environment, stdout=subprocess.PIPE,
                                     stderr=subprocess.PIPE)
                self.read_until(process, b"ready")
                self.describe("device Desk", line)
                self.assertEqual(process.wait(timeout=PATIENCE), 1)
                self.assertEqual(process.stderr.read(), b"kestrelid: Desk: the camera was lost\n")


if __name__ == "__main__":
    unittest.main()
