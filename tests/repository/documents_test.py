#!/usr/bin/python3
"""The documents: README.md shows the built example, stays short, and no link within the project is dead."""
import pathlib
import re
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]


def tracked(pattern):
    names = subprocess.run(["git", "ls-files", "-z", pattern], cwd=ROOT, check=True, capture_output=True, text=True).stdout
    return [ROOT / name for name in names.split("\0") if name]


class Documents(unittest.TestCase):
    def test_readme_shows_the_examples_that_are_built(self):
        for language, example in (("cpp", "examples/judge/main.cpp"), ("qml", "examples/qml-host/Main.qml")):
            shown = re.search(rf"```{language}\n(.*?)```", (ROOT / "README.md").read_text(), re.DOTALL).group(1)
            self.assertEqual(shown, (ROOT / example).read_text())

    def test_readmes_are_short(self):
        for path in tracked("*README.md"):
            limit = 150 if path.parent == ROOT else 20
            self.assertLessEqual(len(path.read_text().splitlines()), limit, path)

    def test_links_lead_somewhere(self):
        documents = tracked("*.md")
        self.assertGreater(len(documents), 10)
        for path in documents:
            prose = re.sub(r"```.*?```", "", path.read_text(), flags=re.DOTALL)
            for target in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", prose):
                self.assertTrue((path.parent / target).exists(), f"{path}: {target}")


if __name__ == "__main__":
    unittest.main()
