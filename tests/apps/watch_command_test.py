"""kestrelid watch as a user calls it, with files that stand for cameras."""

import datetime
import os
import signal
import subprocess
import unittest

from PIL import Image

from command_line import PATIENCE, SAMPLES, CommandLineTest, json_lines, png, run

PASSPORT = SAMPLES / "bangladesh-on-wood.jpg"
RECEIPT = SAMPLES / "receipt.jpg"
FIELDS = {
    "authorized": ["authorized"],
    "session": ["ready", "camera"],
    "verdict": ["isPassport", "confidence"],
    "document": ["detected"],
    "photo": ["file", "width", "height"],
    "error": ["error"],
}


def events(result, kind):
    return [line for line in json_lines(result.stdout) if line["event"] == kind]


class Watch(CommandLineTest):
    def watch(self, *arguments, **options):
        return self.start("watch", *arguments, stdout=subprocess.PIPE, stderr=subprocess.PIPE, **options)

    def test_passport_comes_into_view_and_its_photo_is_one(self):
        photo = self.folder / "page.jpg"
        result = run("watch", "--json", "--camera", str(PASSPORT), "--photo", str(photo))
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        lines = json_lines(result.stdout)
        for line in lines:
            self.assertEqual(list(line), ["time", "event", *FIELDS[line["event"]]])
        self.assertEqual([line["detected"] for line in events(result, "document")], [True])
        self.assertEqual([line["ready"] for line in events(result, "session")], [True])
        self.assertIn(True, [line["isPassport"] for line in events(result, "verdict")])
        with Image.open(PASSPORT) as original, Image.open(photo) as taken:
            self.assertEqual(taken.size, original.size)
            self.assertEqual(lines[-1] | {"time": ""},
                             {"time": "", "event": "photo", "file": str(photo), "width": taken.width,
                              "height": taken.height})
        self.assertIn(b": passport, ", run("validate", photo).stdout)

    def test_photo_that_does_not_come_in_time_is_an_error(self):
        photo = self.folder / "blank.PNG"
        blank = self.write("camera.png", png(640, 480))
        result = run("watch", "--camera", str(blank), "--photo", str(photo), "--seconds", "1.5")
        self.assertEqual(result.returncode, 1)
        self.assert_error_lines(result, [f"kestrelid: {photo}: no photo: "])
        self.assertFalse(photo.exists())

    def test_photo_of_a_turned_picture_stands_upright(self):
        turned = self.folder / "turned.jpg"
        with Image.open(PASSPORT) as original:
            exif = original.getexif()
            exif[0x0112] = 6  # shown after a quarter turn clockwise
            size = original.size
            original.transpose(Image.Transpose.ROTATE_90).save(turned, quality=95, exif=exif)
        photo = self.write("page.PNG", b"old")
        result = run("watch", "--camera", str(turned), "--photo", str(photo), "--after", "0", "--force")
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        with Image.open(photo) as taken:
            self.assertEqual((taken.format, taken.size, taken.getexif().get(0x0112, 1)), ("PNG", size, 1))

    def test_places_that_take_no_photo_are_told_before_the_watch(self):
        for name, prepare in [
            ("gone/page.jpg", lambda path: None),
            ("precious.jpg", lambda path: path.write_bytes(b"x")),
            ("folder.jpg", lambda path: path.mkdir()),
            ("link.jpg", lambda path: path.symlink_to("nowhere")),
        ]:
            photo = self.folder / name
            prepare(photo)
            result = run("watch", "--json", "--camera", str(RECEIPT), "--photo", str(photo))
            self.assertEqual(result.returncode, 1)
            self.assert_error_lines(result, [f"kestrelid: {photo}: "])
            self.assertEqual([line["event"] for line in json_lines(result.stdout)], ["error"])

    def test_files_and_names_that_are_no_camera(self):
        text = self.write("text.jpg", b"not a picture at all")
        for camera in [str(self.folder / "missing.jpg"), "No such camera", str(text), str(self.folder)]:
            with self.subTest(camera):
                result = run("watch", "--json", "--camera", camera, "--seconds", "20")
                self.assertEqual(result.returncode, 1)
                self.assert_error_lines(result, [f"kestrelid: {camera}: "])
                error = events(result, "error")[0]["error"]
                self.assertEqual(result.stderr.decode(), f"kestrelid: {error}\n")

    def test_refused_permission_is_told_with_what_to_do(self):
        # A sandbox without a portal, which could grant it.
        sandbox = {"SNAP": "/snap/some", "DBUS_SESSION_BUS_ADDRESS": f"unix:path={self.folder}/gone"}
        result = run("watch", "--json", env=os.environ | sandbox)
        self.assertEqual(result.returncode, 1)
        self.assert_error_lines(result, ["kestrelid: the camera may not be used: "])
        self.assertIn(b"portal", result.stderr)
        self.assertEqual([(line["event"], line.get("authorized")) for line in json_lines(result.stdout)],
                         [("authorized", False), ("error", None)])

    def test_missing_models_end_it(self):
        result = run("watch", "--camera", str(PASSPORT), "--resources", str(self.folder))
        self.assertEqual(result.returncode, 1)
        self.assert_error_lines(result, ["kestrelid: "])
        self.assertNotIn(b"verdict", result.stdout)

    def test_a_signal_ends_it_cleanly(self):
        for number in [signal.SIGINT, signal.SIGTERM]:
            process = self.watch("--camera", str(RECEIPT))
            self.read_until(process, b"is ready")
            process.send_signal(number)
            self.assertEqual(process.wait(timeout=PATIENCE), 0)
            self.assertEqual(process.stderr.read(), b"")

    def test_a_reader_that_has_seen_enough_ends_it_quietly_and_a_full_disk_with_an_error(self):
        self.assert_ends_quietly_with_its_reader(b"verdict", "watch", "--camera", str(RECEIPT))
        self.assert_tells_a_full_disk("watch", "--camera", str(RECEIPT))

    def test_seconds_and_local_time(self):
        blank = self.write("camera.png", png(320, 240))
        before = datetime.datetime.now(datetime.timezone.utc).replace(microsecond=0)
        result = run("watch", "--camera", str(blank), "--seconds", "1.5", env=os.environ | {"TZ": "IST-5:30"})
        self.assertEqual(result.returncode, 0)
        self.assertIn(b"+05:30  authorized", result.stdout)
        first = datetime.datetime.fromisoformat(result.stdout.decode().split()[0])
        self.assertTrue(before <= first <= datetime.datetime.now(datetime.timezone.utc), first)

    def test_file_is_listed_with_its_size(self):
        blank = self.write("camera.png", png(640, 480))
        result = run("watch", "--list", "--json", "--camera", str(blank))
        camera = json_lines(result.stdout)[0]["cameras"][0]
        self.assertEqual((camera["formats"][0]["width"], camera["formats"][0]["height"]), (640, 480))


class WrongUsage(CommandLineTest):
    def test_is_told_before_the_watch(self):
        for arguments in [
            ["--photo", "page.gif"], ["--photo", ""], ["--after", "3"], ["--force"], ["--list", "--photo", "a.jpg"],
            ["--seconds", "0"], ["--seconds", "nan"], ["--seconds", "-1"], ["--photo", "a.jpg", "--after", "-1"],
            ["--camera"], ["--camera", ""], ["--resources", "/nonexistent"], ["a.jpg"],
        ]:
            self.assert_wrong_usage("watch", *arguments)


if __name__ == "__main__":
    unittest.main()
