"""kestrelid text, zone and doctor, and what all commands share, as a user calls them."""

import json
import re
import unittest

from command_line import PASSPORT, ROOT, CommandLineTest, json_lines, run


class WrongUsage(CommandLineTest):
    def test_is_one_line_and_status_2(self):
        for arguments in [
            [], ["frobnicate"], ["--frobnicate"], ["text", "--jobs", "2"], ["doctor", "a.jpg"], ["text", "--\x1b[31m\n"], ["zone"], ["watch", "--as-of", "2026-01-31"],
            ["zone", "--text", "--as-of", "2026-02-30"], ["zone", "--text", "--as-of", "today"],
            ["validate"], ["validate", "--json"], ["validate", "-", "a.jpg", "-"],
        ]:
            self.assert_wrong_usage(*arguments)
        for arguments in [
            ["--frobnicate"], ["--effort", "none"], ["--effort"], ["--jobs", "0"], ["--jobs", "65"], ["--jobs", "two"],
            ["--resources", "/nonexistent"], ["--annotate", ""], ["--annotate", "/dev/null/marked"],
        ]:
            self.assert_wrong_usage("validate", "a.jpg", *arguments)

    def test_help_has_examples_and_every_option_is_completed_and_in_the_manual(self):
        manual = (ROOT / "packaging/man/kestrelid.1").read_text()
        for command in ["", "validate", "text", "zone", "watch", "doctor"]:
            result = run(*command.split(), "--help")
            self.assertEqual((result.returncode, result.stderr), (0, b""))
            self.assertIn(b"Examples:", result.stdout)
            options = re.findall(r"(?m)^  (?:-\w,)?(--[a-z-]+)", result.stdout.decode())
            script = (
                f"source {ROOT}/packaging/completion/kestrelid; COMP_WORDS=(kestrelid {command} --); "
                'COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _kestrelid; echo "${COMPREPLY[@]}"'
            )
            completed = run("-c", script, program="bash").stdout.decode().split()
            self.assertEqual(sorted(set(options)), sorted(completed))
            for option in options:
                self.assertIn(f"Fl -{option[2:]}", manual)
                self.assertIn(option, (ROOT / "packaging/completion/_kestrelid").read_text("utf-8"))
                self.assertIn(f"-l {option[2:]} ", (ROOT / "packaging/completion/kestrelid.fish").read_text("utf-8"))
        self.assertRegex(run("--version").stdout.decode(), r"^kestrelid \d+\.\d+\.\d+\n$")


class Text(CommandLineTest):
    def test_json_tells_all_of_the_evidence(self):
        result = run("text", "--json", stdin=b" Passport\n")
        matches = [("PASSPORT", 0), ("PASSEPORT", 1), ("PASAPORTE", 2), ("PASSPORT", 0)]
        self.assertEqual(
            list(json.loads(result.stdout).items()),
            [
                ("schema", 1),
                ("file", "-"),
                ("cleaned", "PASSPORT"),
                ("matched", 4),
                ("matches", [{"keyword": keyword, "distance": distance} for keyword, distance in matches]),
                ("keywordReason", "Keywords matched: " + "; ".join(f"{word} (distance {far})" for word, far in matches)),
                ("mrzLike", {"found": False, "reason": "Less than 2 lines OCRed."}),
            ],
        )

    def test_files_keep_their_order_and_bad_ones_do_not_stop_the_rest(self):
        good = self.write("good.txt", b"PASSPORT")
        cases = [  # content, cause
            ("é".encode() + b"ab\xe2\x82", "byte offset 4"),
            (b"PASSPORT\xc0\x80", "byte offset 8"),
        ]
        bad = [self.write(f"{number}.txt", content) for number, (content, _) in enumerate(cases)]
        missing = self.folder / "missing.txt"
        names = [str(path) for path in [good, *bad, missing, self.folder, good]]

        result = run("text", "--json", *names)
        self.assertEqual(result.returncode, 1)
        objects = json_lines(result.stdout)
        self.assertEqual([entry["file"] for entry in objects], names)
        self.assertEqual(["error" in entry for entry in objects], [False, True, True, True, True, False])
        for entry, (_, cause) in zip(objects[1:], cases):
            self.assertEqual(set(entry), {"schema", "file", "error"})
            self.assertTrue(entry["error"].endswith(cause), entry)
        self.assert_error_lines(result, [f"kestrelid: {name}: " for name in names[1:-1]])

        readable = run("text", *names)
        self.assertEqual((readable.returncode, readable.stderr), (1, result.stderr))
        self.assertEqual(readable.stdout.decode().count(f"{good}: 4 keywords matched"), 2)

    def test_controls_in_text_and_names_reach_no_terminal(self):
        path = self.write("a\x1b]0;b\x07\u202e.txt", "PASSPORT\x1b[31m\x07\u009b\u202e".encode())
        for arguments in [["text", path], ["text", "--json", path], ["text", path.with_suffix(".no")]]:
            output = run(*arguments)
            self.assertNotRegex((output.stdout + output.stderr).decode(), "[\x00-\x09\x0b-\x1f\x7f-\x9f\u202e]")


class Zone(CommandLineTest):
    FIRST = b"P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<\n"
    SECOND = b"L898902C36UTO7408122F1204159ZE184226B<<<<<10\n"

    def test_json_tells_all_of_the_zones(self):
        files = [self.write("a.txt", b"x\n" + self.FIRST + self.SECOND), self.write("b.txt", b"\xff no zone"),
                 self.folder / "missing", self.write("c.txt", self.FIRST.replace(b"MARIA", b"m\x1b]RI") + self.SECOND)]
        result = run("zone", "--text", "--as-of", "2026-11-22", "--json", *files)
        self.assertEqual(result.returncode, 1)
        self.assert_error_lines(result, [f"kestrelid: {files[2]}: "])
        sound, none, missing, wrong = json_lines(result.stdout)
        self.assertEqual((none, list(missing)), ({"schema": 1, "file": str(files[1]), "zones": []}, ["schema", "file", "error"]))
        (zone,) = sound["zones"]
        self.assertEqual([zone["format"], zone["strict"], zone["problems"]], ["TD3", True, []])
        self.assertEqual("\n".join(zone["lines"]).encode() + b"\n", self.FIRST + self.SECOND)
        fields = {field.pop("kind"): field for field in zone["fields"]}
        common = {"corrections": [], "doubtful": []}
        self.assertEqual(fields["dateOfBirth"], common | {
            "text": "740812", "characters": "740812", "checkDigit": "passed",
            "date": {"year": 1974, "twoDigitYear": 74, "month": 8, "day": 12}})
        self.assertEqual(fields["primaryIdentifier"], common | {
            "text": "ERIKSSON", "characters": "ERIKSSON<<", "checkDigit": "none", "isPerhapsTruncated": False})
        self.assertEqual(fields["nationality"]["state"], {"name": "Utopia (specimens)", "isKnown": True})
        self.assertFalse(wrong["zones"][0]["strict"])
        self.assertEqual(wrong["zones"][0]["problems"][0], {
            "kind": "notAllowed", "field": "secondaryIdentifier", "line": 0, "column": 20,
            "text": "line 1, column 21, secondary identifier: no such character may stand here"})

    def test_people_read_a_table_that_no_terminal_acts_on(self):
        zone = self.FIRST.replace(b"MARIA", b"\x1b]RIA") + self.SECOND.replace(b"1204159", b"1204158")
        for as_of, birth in [(["--as-of", "2026-11-22"], "1974-08-12"), ([], "74-08-12")]:
            result = run("zone", "--text", *as_of, stdin=zone)
            self.assertEqual((result.returncode, result.stderr), (0, b""))
            shown = result.stdout.decode()
            self.assertRegex(shown, rf"^-: TD3, strict: no\n    field +value +check digit\n(.*\n)+ +date of birth +{birth} +passed")
            self.assertRegex(shown, r"date of expiry +.*failed\n(.*\n)+    Problem: line 2, column 28, date of expiry: ")
            self.assertNotIn("\x1b", shown)
        self.assertEqual(run("zone", "--text").stdout, b"-: no machine-readable zone\n")
        self.assert_error_lines(run("zone", "--text", PASSPORT), [f"kestrelid: {PASSPORT}: no text"])


class Doctor(CommandLineTest):
    def test_tells_the_parts_and_fails_where_one_is_missing(self):
        for arguments, status in [([], 0), (["--resources", str(self.folder)], 1)]:
            result = run("doctor", "--json", *arguments)
            self.assertEqual(result.returncode, status, result)
            report = json.loads(result.stdout)
            keys = {"version", "complete", "parts", "camera"}
            self.assertEqual(set(report), keys | {"error"} if status else keys)
            self.assertEqual(report["complete"], not status)
            self.assertEqual(all(part["available"] for part in report["parts"]), not status)
            parts = report["parts"] + report["camera"]["parts"]
            for part in parts:
                self.assertEqual(list(part), ["name", "available", "details"])
                self.assertTrue(part["details"])
            readable = run("doctor", *arguments)
            self.assertEqual(readable.returncode, status)
            self.assertEqual("No camera found" in readable.stdout.decode(), not report["camera"]["found"])
            self.assertEqual(b"missing  " in readable.stdout, any(not part["available"] for part in parts))


if __name__ == "__main__":
    unittest.main()
