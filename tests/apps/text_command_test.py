"""kestrelid text and doctor, and what all commands share, as a user calls them."""

import json
import re
import unittest

from command_line import ROOT, CommandLineTest, json_lines, run


class WrongUsage(CommandLineTest):
    def test_is_one_line_and_status_2(self):
        for arguments in [
            [], ["frobnicate"], ["--frobnicate"], ["text", "--jobs", "2"], ["doctor", "a.jpg"], ["text", "--\x1b[31m\n"],
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
        for command in ["", "validate", "text", "watch", "doctor"]:
            result = run(*command.split(), "--help")
            self.assertEqual((result.returncode, result.stderr), (0, b""))
            self.assertIn(b"Examples:", result.stdout)
            options = re.findall(r"(?<!\S)(?:-\w,)?(--[a-z]+)", result.stdout.decode())
            script = (
                f"source {ROOT}/packaging/completion/kestrelid; COMP_WORDS=(kestrelid {command} --); "
                'COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _kestrelid; echo "${COMPREPLY[@]}"'
            )
            completed = run("-c", script, program="bash").stdout.decode().split()
            self.assertEqual(sorted(set(options)), sorted(completed))
            for option in options:
                self.assertIn(f"Fl -{option[2:]}", manual)
        self.assertRegex(run("--version").stdout.decode(), r"^kestrelid \d+\.\d+\.\d+\n$")


class Text(CommandLineTest):
    def test_json_tells_all_of_the_evidence(self):
        result = run("text", "--json", stdin=b" Passport\n")
        matches = [("PASSPORT", 0), ("PASSEPORT", 1), ("PASAPORTE", 2), ("PASSPORT", 0)]
        self.assertEqual(
            list(json.loads(result.stdout).items()),
            [
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
            self.assertEqual(set(entry), {"file", "error"})
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
