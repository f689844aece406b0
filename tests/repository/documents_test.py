#!/usr/bin/python3
"""The documents: code in them stands in an example that is built, READMEs stay short, no link within the project is dead."""
import pathlib
import re
import subprocess
import unittest

CODE = re.compile(r"((?:^[^\n]*\n)?)^```(c|cpp|qml|cmake|python)\n(.*?)^```$", re.DOTALL | re.MULTILINE)
ROOT = pathlib.Path(__file__).resolve().parents[2]


def tracked(pattern):
    names = subprocess.run(["git", "ls-files", "-z", pattern], cwd=ROOT, check=True, capture_output=True, text=True).stdout
    return [ROOT / name for name in names.split("\0") if name]


class Documents(unittest.TestCase):
    def test_code_is_a_part_of_the_example_that_is_named_above_it(self):
        blocks = 0
        for path in [ROOT / "README.md"] + tracked("docs/guides/*.md"):
            for before, language, shown in CODE.findall(path.read_text()):
                with self.subTest(f"{path.relative_to(ROOT)}: {shown.splitlines()[0]}"):
                    named = re.search(r"<!-- ((?:examples|tests/install)/\S+) -->\n$", before)
                    self.assertTrue(named, "the line above does not name a file of examples/ or tests/install/")
                    self.assertTrue("\n" + shown in "\n" + (ROOT / named[1]).read_text(), f"differs from {named[1]}")
                    blocks += 1
        self.assertGreater(blocks, 12)

    def test_every_document_is_in_the_index(self):
        index = (ROOT / "docs/index.md").read_text()
        for path in tracked("docs/**/*.md"):
            name = path.relative_to(ROOT / "docs").as_posix()
            self.assertTrue(name == "index.md" or f"({name})" in index, name)

    def test_readmes_are_short(self):
        for path in tracked("*README.md"):
            self.assertLessEqual(len(path.read_text().splitlines()), 150 if path.parent == ROOT else 20, path)

    def test_links_lead_somewhere(self):
        documents = tracked("*.md")
        self.assertGreater(len(documents), 10)
        for path in documents:
            prose = re.sub(r"```.*?```", "", path.read_text(), flags=re.DOTALL)
            for target in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", prose):
                self.assertTrue((path.parent / target).exists(), f"{path}: {target}")


if __name__ == "__main__":
    unittest.main()
