"""kestrelid validate as a user calls it."""

import os
import pty
import shutil
import signal
import subprocess
import unittest

from PIL import Image, ImageChops, TiffImagePlugin

from command_line import PASSPORT, PATIENCE, SAMPLES, CommandLineTest, findings, png, run

KEYS = ["schema", "file", "isPassport", "confidence", "reasons", "recognizedText", "milliseconds", "outline", "zones"]


class Verdicts(CommandLineTest):
    def test_passport_and_blank_sheet(self):
        blank = self.write("blank.png", png(320, 240))
        names = [str(PASSPORT), str(blank)]
        result = run("validate", "--json", *names)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        passport, sheet = findings(result.stdout)
        self.assertEqual([list(passport), list(sheet)], [KEYS, KEYS])
        self.assertEqual([passport["file"], sheet["file"]], names)
        self.assertEqual((passport["isPassport"], passport["confidence"]), (True, 0.5))
        self.assertIn("PASSPORT", passport["recognizedText"])
        self.assertGreater(passport["milliseconds"], 0)
        self.assertEqual((sheet["isPassport"], sheet["confidence"], sheet["recognizedText"]), (False, 0.0, ""))
        self.assertEqual(len(sheet["reasons"]), 3)
        self.assertIsNone(sheet["outline"])
        self.assertEqual([[round(x), round(y)] for x, y in passport["outline"]["corners"]],
                         [[0, 0], [1, 0], [1, 1], [0, 1]])
        self.assertEqual(passport["outline"]["box"], [0, 0, 1, 1])

        readable = run("validate", "--effort", "verdict", *names).stdout.decode().splitlines()
        self.assertRegex(readable[0], rf"^{names[0]}: passport, confidence 0\.500, \d+ ms$")
        self.assertEqual(readable[4], "    Zone TD3, strict")
        self.assertRegex(readable[5], rf"^{names[1]}: not a passport, confidence 0\.000, \d+ ms$")
        self.assertEqual(readable[6:], ["    " + reason for reason in sheet["reasons"]])
        zones = run("zone", "--json", *names, str(self.folder / "gone.png"))
        self.assertEqual(zones.returncode, 1)
        self.assert_error_lines(zones, [f"kestrelid: {self.folder / 'gone.png'}: "])
        self.assertEqual([entry.get("zones") for entry in findings(zones.stdout)], [passport["zones"], [], None])
        self.assertTrue(passport["zones"][0]["strict"])
        lean = findings(run("validate", "--json", "--no-text", "--effort", "verdict", *names).stdout)[0]
        self.assertEqual(list(lean), [key for key in KEYS if key != "recognizedText"])
        self.assertEqual(lean["zones"], [{"format": "TD3", "strict": True}])

    def test_missing_models_are_an_error_not_a_verdict(self):
        result = run("validate", "--json", "--resources", str(self.folder), str(PASSPORT))
        self.assertEqual(result.returncode, 1)
        self.assertEqual(list(findings(result.stdout)[0]), ["schema", "file", "error"])
        self.assert_error_lines(result, [f"kestrelid: {PASSPORT}: "])


class Inputs(CommandLineTest):
    def test_unreadable_ones_are_told_and_the_rest_is_judged(self):
        good = self.write("good.png", png(64, 48))
        bad = [
            self.folder / "missing.jpg",
            self.write("truncated.jpg", PASSPORT.read_bytes()[:5000]),
            self.write("empty.jpg", b""),
            self.folder / "nothing",
        ]
        bad[-1].mkdir()
        names = [str(path) for path in [good, *bad, good]] + [""]
        result = run("validate", "--json", *names)
        self.assertEqual(result.returncode, 1)
        objects = findings(result.stdout)
        self.assertEqual([entry["file"] for entry in objects], names)
        kinds = [KEYS, *[["schema", "file", "error"]] * len(bad), KEYS, ["schema", "file", "error"]]
        self.assertEqual([list(entry) for entry in objects], kinds)
        prefixes = [f"kestrelid: {name}: " for name in names[1 : len(bad) + 1]]
        self.assert_error_lines(result, [*prefixes, "kestrelid: '': "])
        self.assertEqual(run("validate", *names).stderr, result.stderr)

    def test_folder_stands_for_its_pictures_by_name(self):
        pictures = ["a.png", "b.jpe", "c.tIfF", "folder.png/e.png", "page", "sub/deep/d.png", "sub/f.JFIF"]
        for name in [*pictures, ".hidden.png", ".hidden/g.png", "folder.png/.h.png"]:
            self.write(f"set/{name}", png(32, 32))
        for name in ["notes.txt", "sub/list"]:
            self.write(f"set/{name}", b"no picture")
        os.symlink("..", self.folder / "set/loop")
        os.symlink("gone.png", self.folder / "set/z.png")
        for command in ["validate", "zone"]:
            result = run(command, "--json", "set", cwd=self.folder)
            names = [entry["file"] for entry in findings(result.stdout)]
            self.assertEqual(names, [f"set/{name}" for name in [*pictures, "z.png"]])
            self.assert_error_lines(result, ["kestrelid: passed over 2 files that are no pictures, 3 hidden entries, 1 link to a",
                                             "kestrelid: set/z.png: "])

    def test_each_page_of_a_file_has_its_own_answer(self):
        with Image.open(PASSPORT) as passport, Image.open(SAMPLES / "desk.jpg") as desk:
            pages = [desk.resize((320, 180)), passport.copy(), desk.resize((322, 180))]
        tiff, pdf = str(self.folder / "pages.tif"), str(self.folder / "pages.pdf")
        with TiffImagePlugin.AppendingTiffWriter(tiff, True) as file:
            for page, kind in (pages[0], 0), (pages[1], 0), (pages[1].resize((32, 18)), 1), (pages[2], 0):
                page.save(file, format="TIFF", tiffinfo={254: kind})  # 1: a reduced copy of another page
                file.newFrame()
        pages[0].save(pdf, save_all=True, append_images=pages[1:])
        cut = self.write("cut.tif", (self.folder / "pages.tif").read_bytes()[:-60])
        broken = self.write("broken.pdf", b"%PDF-1.4 nonsense")
        locked = self.write("locked.pdf", b"%%PDF-1.4\ntrailer<</Root 1 0 R/Encrypt<</Filter/Standard/V 1/R 2/P 0/O(%032d)/U(%032d)>>"
                            b"/ID[(a)(a)]>>" % (0, 0))
        marked = self.folder / "marked"
        result = run("validate", "--json", "--annotate", str(marked), tiff, pdf, str(cut), str(broken))
        self.assertEqual(result.returncode, 1)
        answers = [(os.path.basename(line["file"]), line.get("page"), line.get("isPassport")) for line in findings(result.stdout)]
        verdicts = [(1, False), (2, True), (3, False)]
        self.assertEqual(answers[:6], [(name, *verdict) for name in ("pages.tif", "pages.pdf") for verdict in verdicts])
        self.assertEqual(answers[6:8], [("cut.tif", 1, False), ("cut.tif", 2, True)])
        self.assertEqual((answers[-1], answers[-2][2]), (("broken.pdf", None, None), None))
        self.assert_error_lines(result, [f"kestrelid: {cut}, page 3: ", f"kestrelid: {broken}: the PDF file cannot be read: "])
        self.assertIn("pages-2.jpg", os.listdir(marked))
        missing = run("validate", pdf, env={**os.environ, "PATH": "/nonexistent"})
        self.assert_error_lines(missing, [f"kestrelid: {pdf}: a PDF file; to read it, install pdfinfo"])
        self.assert_error_lines(run("validate", locked), [f"kestrelid: {locked}: the PDF file is encrypted: "])

    def test_standard_input_and_pipes_are_pictures_too(self):
        for name in ["-", "/dev/stdin"]:
            result = run("validate", name, stdin=png(64, 48))
            self.assertEqual((result.returncode, result.stderr), (0, b""))
            self.assertTrue(result.stdout.startswith(name.encode() + b": not a passport"))
        for garbage in [b"", b"GIF89a nonsense"]:
            result = run("validate", "-", stdin=garbage)
            self.assertEqual((result.returncode, result.stdout), (1, b""))
            self.assert_error_lines(result, ["kestrelid: -: "])

    def test_names_that_look_like_something_else(self):
        names = ["text", "a,b", "%s", "[a]", "\x01", "-x.png"]
        for name in names:
            self.write(name, png(32, 32))
        for arguments in (["--", *names], [*names[:3], "--", *names[3:]]):
            result = run("validate", "--json", *arguments, cwd=self.folder)
            self.assertEqual((result.returncode, result.stderr), (0, b""))
            self.assertEqual([entry["file"] for entry in findings(result.stdout)], names)

    def test_hostile_names_break_neither_json_nor_the_terminal(self):
        name = os.fsencode(self.folder) + b"/bad\xff\x1b[31m\n\xc2\x9b.png"
        with open(name, "wb") as file:
            file.write(png(32, 32))
        json_output = run("validate", "--json", name, name + b"x")
        self.assertEqual(len(findings(json_output.stdout)), 2)
        entry = findings(json_output.stdout)[0]
        self.assertIn("bad\ufffd\x1b[31m\n\x9b.png", entry["file"])
        self.assertEqual(bytes.fromhex(entry["fileBytes"]), name)
        readable = run("validate", name, name + b"x")
        for output in [json_output.stdout, json_output.stderr, readable.stdout, readable.stderr]:
            self.assertNotRegex(output, rb"[\x00-\x09\x0b-\x1f\x7f\xff]|\xc2[\x80-\x9f]")
        self.assertIn(rb"bad\xff\x1b[31m\n\u{9b}.png: not a passport", readable.stdout)


class Streams(CommandLineTest):
    def test_several_jobs_keep_the_order(self):
        names = [str(PASSPORT)] + [str(self.write(f"{n}.png", png(32 + n, 32))) for n in range(20)]
        names.insert(10, str(self.folder / "missing.jpg"))
        result = run("validate", "--json", "--jobs", "4", *names)
        self.assertEqual([entry["file"] for entry in findings(result.stdout)], names)
        self.assertEqual(result.returncode, 1)
        failed = f"kestrelid: {names[10]}: "  # told again at the end of so many
        self.assert_error_lines(result, [failed, "kestrelid: 1 of 22", failed])

    def test_a_verdict_is_written_while_the_next_input_is_awaited_and_a_signal_ends_the_wait(self):
        blank = self.write("blank.png", png(32, 32))
        for number in [0, signal.SIGINT, signal.SIGTERM]:
            process = self.start("validate", "--json", "--jobs", "1", str(blank), "-", stdin=subprocess.PIPE, stdout=subprocess.PIPE)
            self.read_until(process, b"blank.png")
            if number:
                process.send_signal(number)
            else:
                process.stdin.write(png(32, 32))
                process.stdin.close()
                self.read_until(process, b'"file":"-"')
            self.assertEqual((process.wait(timeout=PATIENCE), process.stdout.read()), (-number, b""))

    def test_a_reader_that_has_seen_enough_ends_it_quietly_and_a_full_disk_with_an_error(self):
        blank = str(self.write("blank.png", png(32, 32)))
        self.assert_ends_quietly_with_its_reader(b"blank", "validate", *[blank] * 200)
        self.assert_tells_a_full_disk("validate", blank)

    def test_progress_only_on_a_terminal_and_for_more_than_three(self):
        blank = str(self.write("blank.png", png(32, 32)))
        for count, expected in [(3, b""), (4, b"4 of 4")]:
            ours, theirs = pty.openpty()
            process = self.start("validate", *[blank] * count, stdout=subprocess.DEVNULL, stderr=theirs)
            self.assertEqual(process.wait(timeout=PATIENCE), 0)
            os.set_blocking(ours, False)
            try:
                drawn = os.read(ours, 4096)
            except BlockingIOError:
                drawn = b""
            os.close(theirs)
            os.close(ours)
            self.assertIn(expected, drawn)
            self.assertEqual(bool(drawn), bool(expected))
            self.assertTrue(drawn == b"" or drawn.endswith(b"\r\x1b[K"), drawn)


class Annotations(CommandLineTest):
    def test_show_outline_and_verdict_and_leave_the_originals(self):
        picture = self.folder / "set/page.jpg"
        picture.parent.mkdir()
        shutil.copy(PASSPORT, picture)
        shutil.copy(PASSPORT, self.folder / "page.jpg")
        before = picture.read_bytes()
        marked = self.folder / "set"  # the copies go where an original lies
        result = run("validate", "--annotate", str(marked), str(picture), str(self.folder / "page.jpg"))
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        self.assertEqual(sorted(os.listdir(marked)), ["page-2.jpg", "page-3.jpg", "page.jpg"])
        self.assertEqual(picture.read_bytes(), before)

        original = Image.open(picture).convert("RGB")
        drawn = Image.open(marked / "page-2.jpg").convert("RGB")
        self.assertEqual(drawn.size, original.size)
        changed = ImageChops.difference(original, drawn).convert("L").point(lambda v: 255 if v > 60 else 0)
        share = changed.histogram()[255] / (drawn.width * drawn.height)
        self.assertGreater(share, 0.005)  # an outline around most of the page, and the verdict
        self.assertLess(share, 0.2)       # which the page still shows through

    def test_large_turned_photo_is_judged_upright_and_reduced(self):
        photo = Image.new("L", (4000, 2800), 200)
        exif = photo.getexif()
        exif[0x0112] = 6  # shown after a quarter turn
        photo.save(self.folder / "photo.jpg", exif=exif)
        marked = self.folder / "marked"
        result = run("validate", "--annotate", str(marked), str(self.folder / "photo.jpg"))
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        with Image.open(marked / "photo.jpg") as copy:
            self.assertEqual(copy.size, (1400, 2000))

    def test_unwritable_copy_is_told_beside_the_verdict(self):
        blank = self.write("blank.png", png(64, 48))
        (self.folder / "marked/blank.png").mkdir(parents=True)  # in the way
        result = run("validate", "--json", "--annotate", str(self.folder / "marked"), "-", str(blank), stdin=png(64, 48))
        self.assertEqual(result.returncode, 1)
        self.assertEqual([list(entry) for entry in findings(result.stdout)], [KEYS, KEYS])
        self.assert_error_lines(result, [f"kestrelid: {blank}: cannot write the annotated copy: "])
        self.assertEqual(sorted(os.listdir(self.folder / "marked")), ["blank.png", "stdin.jpg"])


if __name__ == "__main__":
    unittest.main()
