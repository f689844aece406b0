#!/usr/bin/python3
"""Debian packages named in error messages and build files are ones that tools/setup knows; npm packages are pinned."""

import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
FOLDERS = ["cmake", "src", "apps", "benchmarks", "tests"]
SOURCES = ("*.cmake", "CMakeLists.txt", "*.cpp", "*.h")

# What looks like the name of a Debian package that a person would be told to install.
PACKAGE = re.compile(r"(?<![\w./-])((?:lib|nlohmann-)[a-z0-9.+-]+-dev|(?:tesseract-ocr|python3|fonts|qt6|qml6-module)-[a-z0-9-]+)(?![\w/-])")


def entries(name):
    lines = (ROOT / "tools" / name).read_text(encoding="utf-8").splitlines()
    return [line.split("#")[0].split() for line in lines if line.split("#")[0].strip()]


def named_packages():
    """package -> a file that names it."""
    files = [ROOT / "CMakeLists.txt"] + [file for folder in FOLDERS for pattern in SOURCES for file in (ROOT / folder).rglob(pattern)]
    files.remove(ROOT / "cmake" / "KestrelidPackages.cmake")  # what other machines install
    return {package: file.relative_to(ROOT).as_posix()
            for file in files for package in PACKAGE.findall(file.read_text(encoding="utf-8"))}


class PackageListsTest(unittest.TestCase):
    listed = {name for entry in entries("packages.txt") for name in entry[0].split("|")}
    pins = entries("npm-packages.txt")

    def test_packages_named_in_the_sources_are_installed_by_setup(self):
        known = self.listed | {instead for *_, instead, _ in self.pins}
        named = named_packages()
        self.assertGreater(len(named), 10, "the search no longer finds what CMake asks for")
        self.assertEqual({name: file for name, file in named.items() if name not in known}, {})

    def test_pins_are_exact(self):
        for name, version, machine, *_, checksum in self.pins:
            self.assertRegex(f"{version} {machine} {checksum}",
                             r"^\d+\.\d+\.\d+ (any|x86_64|aarch64) sha512-[A-Za-z0-9+/]{86}==$", name)


if __name__ == "__main__":
    sys.exit(unittest.main())
