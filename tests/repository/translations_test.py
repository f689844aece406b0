#!/usr/bin/python3
"""The translations: every text of the sources is in the template, and every language has all of them, with their places for values."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parents[2]
FOLDER = ROOT / "packaging/translations"
LUPDATE = shutil.which("lupdate", path=f"/usr/lib/qt6/bin:{os.environ['PATH']}")


def texts(file):
    """Context, text and the note that tells two alike apart -> its translation, None where that is missing."""
    found = {}
    for context in xml.etree.ElementTree.parse(file).findall("context"):
        for message in context.findall("message"):
            translation = message.find("translation")
            forms = [form.text or "" for form in translation.findall("numerusform")] or [translation.text or ""]
            is_done = all(forms) and "type" not in translation.attrib
            found[context.findtext("name"), message.findtext("source"), message.findtext("comment")] = forms if is_done else None
    return found


class Translations(unittest.TestCase):
    def test_template_has_the_texts_of_the_sources(self):
        if not LUPDATE:
            self.skipTest("lupdate is missing: install the package qt6-l10n-tools")
        command = re.search(r"`lupdate (.+?)`", (FOLDER / "README.md").read_text(encoding="utf-8"))[1].split()
        with tempfile.TemporaryDirectory() as folder:
            renewed = pathlib.Path(folder) / "kestrelid.ts"
            arguments = [renewed if word.endswith("kestrelid.ts") else word for word in command]
            subprocess.run([LUPDATE, "-silent", *arguments], cwd=ROOT, check=True)
            self.assertEqual(sorted(map(str, texts(FOLDER / "kestrelid.ts"))), sorted(map(str, texts(renewed))),
                             "renew the template: packaging/translations/README.md")

    def test_every_language_is_complete(self):
        wanted = texts(FOLDER / "kestrelid.ts")
        self.assertGreater(len(wanted), 50)
        languages = re.search(r"set\(KESTRELID_LANGUAGES (.+)\)", (ROOT / "CMakeLists.txt").read_text())[1].split()
        self.assertEqual({f"kestrelid_{language}.ts" for language in languages}, {file.name for file in FOLDER.glob("kestrelid_*.ts")})
        for language in languages:
            given = texts(FOLDER / f"kestrelid_{language}.ts")
            self.assertEqual(wanted.keys() - given.keys(), set(), f"missing in {language}")
            for key in wanted:
                with self.subTest(language, text=key):
                    self.assertTrue(given[key], "not translated")
                    for form in given[key]:
                        self.assertEqual(set(re.findall(r"%(?:L?\d|n)", form)) - {"%n"}, set(re.findall(r"%(?:L?\d|n)", key[1])) - {"%n"})


if __name__ == "__main__":
    unittest.main()
