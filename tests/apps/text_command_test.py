"""kestrelid text and doctor, and what all commands share, as a user calls them."""

import json
import re
import unittest

from command_line import ROOT, CommandLineTest, json_lines, run


class WrongUsage(CommandLineTest):
    def test_is_one_line_and_status_2(self):
        for arguments in [
            [],
            ["frobnicate"],
            ["--frobnicate"],
            ["validate"],
            ["validate", "--json"],
            ["validate", "--frobnicate", "a.jpg"],
            ["validate", "a.jpg", "--effort"],
            ["validate", "--effort", "none", "a.jpg"],
            ["validate", "--jobs", "0", "a.jpg"],
            ["validate", "--jobs", "65", "a.jpg"],
            ["validate", "--jobs", "two", "a.jpg"],
            ["validate", "--resources", "/nonexistent", "a.jpg"],
            ["validate", "--annotate", "", "a.jpg"],
            ["validate", "--annotate", "/dev/null/marked", "a.jpg"],
            ["validate", "-", "a.jpg", "-"],
            ["text", "--jobs", "2"],
            ["doctor", "a.jpg"],
            ["text", "--\x1b[31m\n"],
        ]:
            self.assert_wrong_usage(*arguments)

    def test_every_option_of_the_help_is_completed_and_in_the_manual(self):
        manual = (ROOT / "packaging/man/kestrelid.1").read_text()
        for command in ["", "validate", "text", "watch", "doctor"]:
            options = re.findall(r"(?<!\S)(?:-\w,)?(--[a-z]+)", run(*command.split(), "--help").stdout.decode())
            script = (
                f"source {ROOT}/packaging/completion/kestrelid; COMP_WORDS=(kestrelid {command} --); "
                'COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _kestrelid; echo "${COMPREPLY[@]}"'
            )
            completed = run("-c", script, program="bash").stdout.decode().split()
            self.assertEqual(sorted(set(options)), sorted(completed))
            for option in options:
                self.assertIn(f"Fl -{option[2:]}", manual)

    def test_help_has_examples_and_version_is_told(self):
        for command in [[], ["validate"], ["text"], ["watch"], ["doctor"]]:
            result = run(*command, "--help")
            self.assertEqual((result.returncode, result.stderr), (0, b""))
            self.assertIn(b"Examples:", result.stdout)
        self.assertRegex(run("--version").stdout.decode(), r"^kestrelid \d+\.\d+\.\d+\n$")


class Text(CommandLineTest):
    def evidence(self, text):
        result = run("text", "--json", stdin=text.encode())
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        return json.loads(result.stdout)

    def test_json_tells_all_of_the_evidence(self):
        result = run("text", "--json", stdin=b" Passport\n")
        self.assertEqual(
            list(json.loads(result.stdout).items()),
            [
                ("file", "-"),
                ("cleaned", "PASSPORT"),
                ("matched", 4),
                (
                    "matches",
                    [
                        {"keyword": "PASSPORT", "distance": 0},
                        {"keyword": "PASSEPORT", "distance": 1},
                        {"keyword": "PASAPORTE", "distance": 2},
                        {"keyword": "PASSPORT", "distance": 0},
                    ],
                ),
                (
                    "keywordReason",
                    "Keywords matched: PASSPORT (distance 0); PASSEPORT (distance 1); "
                    "PASAPORTE (distance 2); PASSPORT (distance 0)",
                ),
                ("mrzLike", {"found": False, "reason": "Less than 2 lines OCRed."}),
            ],
        )

    def test_weighs_single_words_and_zone_lines(self):
        hello = self.evidence("HELLO WORLD")
        self.assertEqual(hello["matches"], [{"keyword": "BGD", "distance": 4}])
        nothing = self.evidence("")
        self.assertEqual((nothing["matched"], nothing["matches"]), (0, []))
        zone = self.evidence("P<UTO" + "<" * 39 + "\n" + "L898902C36" + "<" * 34)
        self.assertEqual(
            zone["mrzLike"], {"found": True, "reason": "Found two MRZ-like lines of lengths 44, 44."}
        )

    def test_files_keep_their_order_and_bad_ones_do_not_stop_the_rest(self):
        good = self.write("good.txt", b"PASSPORT")
        cases = [  # content, cause
            (b"\xff", "byte offset 0"),
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
        self.assertEqual(["error" in entry for entry in objects], [False, True, True, True, True, True, False])
        for entry, (_, cause) in zip(objects[1:], cases):
            self.assertEqual(set(entry), {"file", "error"})
            self.assertTrue(entry["error"].endswith(cause), entry)
        self.assert_error_lines(result, [f"kestrelid: {name}: " for name in names[1:-1]])

        readable = run("text", *names)
        self.assertEqual((readable.returncode, readable.stderr), (1, result.stderr))
        self.assertEqual(readable.stdout.decode().count(f"{good}: 4 keywords matched"), 2)

    def test_controls_in_text_and_names_reach_no_terminal(self):
        path = self.write("a\x1b]0;b\x07.txt", b"PASSPORT")
        for arguments in [["text", path], ["text", "--json", path], ["text", path.with_suffix(".no")]]:
            output = run(*arguments)
            self.assertNotRegex(output.stdout + output.stderr, rb"[\x00-\x09\x0b-\x1f\x7f]")


class Doctor(CommandLineTest):
    def test_tells_the_parts_and_whether_they_work(self):
        result = run("doctor", "--json")
        self.assertEqual(result.returncode, 0, result)
        report = json.loads(result.stdout)
        self.assertEqual(list(report), ["version", "complete", "parts", "camera"])
        self.assertTrue(report["complete"])
        parts = report["parts"] + report["camera"]["parts"]
        for part in parts:
            self.assertEqual(list(part), ["name", "available", "details"])
            self.assertTrue(part["details"])
        readable = run("doctor").stdout.decode()
        self.assertEqual(len(readable.splitlines()), len(parts) + 3)
        self.assertEqual("No camera found" in readable, not report["camera"]["found"])

    def test_says_what_is_missing_and_fails(self):
        result = run("doctor", "--json", "--resources", str(self.folder))
        self.assertEqual(result.returncode, 1)
        report = json.loads(result.stdout)
        self.assertFalse(report["complete"])
        self.assertTrue(report["error"])
        self.assertIn(False, [part["available"] for part in report["parts"]])
        readable = run("doctor", "--resources", str(self.folder))
        self.assertEqual(readable.returncode, 1)
        self.assertIn(b"missing  ", readable.stdout)


if __name__ == "__main__":
    unittest.main()
