#!/usr/bin/python3
"""What a desktop reads of the demo: desktop entry, AppStream metadata, manual page, and the Flatpak manifest."""

import json
import pathlib
import re
import shutil
import subprocess
import unittest
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parents[2]
DESKTOP = ROOT / "packaging" / "desktop"
FLATPAK = ROOT / "packaging" / "flatpak"
ID = "org.kestrelid.Demo"


class DesktopTest(unittest.TestCase):
    def test_validators(self):
        for tool, package, *arguments in [
            ("desktop-file-validate", "desktop-file-utils", "--warn-kde", DESKTOP / f"{ID}.desktop"),
            ("appstreamcli", "appstream", "validate", "--no-net", DESKTOP / f"{ID}.metainfo.xml"),
            ("mandoc", "mandoc", "-Tlint", "-Wwarning", ROOT / "packaging" / "man" / "kestrelid-demo.1"),
        ]:
            with self.subTest(tool):
                if not shutil.which(tool):
                    self.skipTest(f"{tool} is missing: install the package {package}")
                result = subprocess.run([tool, *arguments], capture_output=True, text=True, check=False)
                self.assertEqual(result.returncode, 0, result.stdout + result.stderr)

    def test_manual_page_and_completion_tell_every_option(self):
        page = (ROOT / "packaging" / "man" / "kestrelid-demo.1").read_text(encoding="utf-8")
        source = (ROOT / "apps" / "demo" / "DemoOptions.cpp").read_text(encoding="utf-8")
        options = set(re.findall(r"^  (?:-\w, )?--([\w-]+)", source, re.M))
        self.assertGreater(len(options), 4)
        self.assertEqual(options, set(re.findall(r"^\.It .*?Fl -([\w-]+)", page, re.M)))
        for file, pattern in ("kestrelid-demo", r"[' ]--([\w-]+)"), ("_kestrelid-demo", r"--([\w-]+)"), ("kestrelid-demo.fish", r" -l ([\w-]+)"):
            told = (ROOT / "packaging/completion" / file).read_text(encoding="utf-8")
            self.assertEqual(options, set(re.findall(pattern, told)), file)

    def test_releases_are_those_of_the_changelog(self):
        changes = (ROOT / "CHANGELOG.md").read_text(encoding="utf-8")
        releases = xml.etree.ElementTree.parse(DESKTOP / f"{ID}.metainfo.xml").findall("releases/release")
        self.assertEqual([release.get("version") for release in releases], re.findall(r"^## (\d\S*)", changes, re.M))


class FlatpakTest(unittest.TestCase):
    manifest = json.loads((FLATPAK / f"{ID}.json").read_text(encoding="utf-8"))
    document = (FLATPAK / "README.md").read_text(encoding="utf-8")

    def test_it_names_what_is_built_and_the_permissions_of_the_documents(self):
        self.assertEqual((self.manifest["id"], self.manifest["command"]), (ID, "kestrelid-demo"))
        # The camera comes through the portal, which needs no permission of its own here.
        self.assertEqual(set(self.manifest["finish-args"]),
                         {"--share=ipc", "--socket=wayland", "--socket=fallback-x11", "--device=dri"})
        for permission in self.manifest["finish-args"]:
            self.assertIn(permission, self.document)

    def test_sources_exist_or_are_described(self):
        sources = [source for module in self.manifest["modules"] for source in module["sources"]]
        self.assertTrue(any((FLATPAK / source["path"]).resolve() == ROOT for source in sources))
        for source in sources:
            self.assertNotIn("url", source)
            path = pathlib.Path(source["path"])
            if path.parts[0] == "sources":  # put there by whoever builds
                self.assertIn(f"`{path.name}`", self.document)
            else:
                self.assertTrue((FLATPAK / path).exists(), path)


if __name__ == "__main__":
    unittest.main()
