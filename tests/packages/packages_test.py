#!/usr/bin/python3
"""Installs the Debian packages into a bare system, uses them there as a person would, and removes them again.

Environment: KESTRELID_PACKAGES, the folder of the packages; KESTRELID_WORK, a folder for what the test makes.
"""

import collections
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

import bare_system
from bare_system import BareSystem

ROOT = pathlib.Path(__file__).resolve().parents[2]
PACKAGES = pathlib.Path(os.environ.get("KESTRELID_PACKAGES", ROOT / "build" / "packages"))
WORK = pathlib.Path(os.environ.get("KESTRELID_WORK", PACKAGES / "bare-system"))
PASSPORT = ROOT / "samples" / "bangladesh-on-wood.jpg"

OFFSCREEN = {"QT_QPA_PLATFORM": "offscreen"}
GREEN = (34, 197, 94)  # of the brackets while a passport is in view
HALF_LIMIT = 60e6  # bytes
QML = """import QtQuick
import Kestrelid
Window {
    visible: true
    ImagePreviewView { anchors.fill: parent; title: "Photo"; didTapRetake: null; didTapConfirm: null }
    Timer { interval: 1000; running: true; onTriggered: Qt.exit(7) }
}
"""
QT = re.compile(r"lib(qt|qml)|qt\d|qml\d")


def package_files():
    """name -> file"""
    return {file.name.split("_")[0]: file for file in sorted(PACKAGES.glob("*.deb"))}


def out_of_date():
    """Whether a source is newer than the packages."""
    listed = subprocess.run(["git", "-C", ROOT, "ls-files", "-z"], capture_output=True, text=True, check=False)
    if listed.returncode != 0:
        return False  # sources without their history: nobody changes them
    tracked = listed.stdout.split("\0")
    newest = max((ROOT / name).stat().st_mtime for name in tracked if name and (ROOT / name).is_file())
    return newest > min(file.stat().st_mtime for file in package_files().values())


def why_not():
    if not package_files():
        return "there are no packages: run tools/package"
    if out_of_date():
        return "the packages are older than the sources: run tools/package"
    return bare_system.why_not()


def colours(file):
    """colour -> pixels; empty while the file is not a whole picture."""
    from PIL import Image
    try:
        with Image.open(file) as picture:
            return collections.Counter(picture.convert("RGB").getdata())
    except (OSError, SyntaxError):
        return collections.Counter()


def shows_a_photo(file):
    return len(colours(file)) > 5000  # text and buttons alone have some hundred colours


class PackagesTest(unittest.TestCase):
    def setUp(self):
        self.files = package_files()
        self.system = BareSystem(WORK / "cache", WORK / "root")
        self.addCleanup(self.system.remove)

    def assert_nothing_left(self, before):
        after = self.system.files()
        self.assertEqual({name: state for name, state in after.items() if before.get(name) != state}, {})
        self.assertEqual(before.keys() - after.keys(), set())

    def put_passport(self):
        self.system.run("true", user=True)
        shutil.copyfile(PASSPORT, self.system.home() / "passport.jpg")

    def test_library_without_qt(self):
        half = ["libkestrelid-detection0", "kestrelid-models"]
        names = [*half, "libkestrelid-dev"]
        before = self.system.install_files([self.files[name] for name in names])
        self.assertEqual({name for name in self.system.packages() if QT.match(name)}, set())

        size = sum(path.lstat().st_size for name in half for path in self.system.files_of(name))
        print(f"library without Qt and models: {size / 1e6:.1f} MB installed")
        self.assertLess(size, HALF_LIMIT)

        self.put_passport()
        shutil.copy(self.build_example(), self.system.home() / "judge")
        answer = self.system.run("/tmp/home/judge", "/tmp/home/passport.jpg", user=True).stdout
        self.assertEqual(answer, "a passport\n")

        self.install_next_beside(half[0])
        self.system.purge(names)
        self.assert_nothing_left(before)

    def fresh(self, name):
        folder = WORK / name
        shutil.rmtree(folder, ignore_errors=True)
        self.addCleanup(shutil.rmtree, folder, ignore_errors=True)
        return folder

    def build_example(self):
        """examples/judge, built against what the packages hold, with Qt out of sight."""
        tree, build = self.fresh("tree"), self.fresh("judge")
        for name in ("libkestrelid-detection0", "libkestrelid-dev"):
            subprocess.run(["dpkg-deb", "--extract", self.files[name], tree], check=True)
        configured = subprocess.run(
            ["cmake", "--no-warn-unused-cli", "-G", "Ninja", "-S", ROOT / "examples" / "judge", "-B", build,
             f"-DCMAKE_PREFIX_PATH={tree}/usr", "-DCMAKE_DISABLE_FIND_PACKAGE_Qt6=ON"],
            capture_output=True, text=True, check=False)
        self.assertEqual(configured.returncode, 0, configured.stderr)
        self.assertIn(str(tree), (build / "CMakeCache.txt").read_text(encoding="utf-8"))
        built = subprocess.run(["cmake", "--build", build], capture_output=True, text=True, check=False)
        self.assertEqual(built.returncode, 0, built.stdout)
        return build / "judge"

    def install_next_beside(self, name):
        """The same library as its next interface version would come: dpkg refuses it if one path lacks the number."""
        following = re.sub(r"0$", "1", name)
        tree = self.fresh("next")
        subprocess.run(["dpkg-deb", "--raw-extract", self.files[name], tree], check=True)
        for path in sorted(tree.rglob("*"), key=lambda path: -len(path.parts)):
            renamed = re.sub(rf"{name}|\.so\.0|kestrelid-0", lambda found: found.group().replace("0", "1"), path.name)
            if renamed != path.name:
                path.rename(path.with_name(renamed))
        control = tree / "DEBIAN" / "control"
        text = control.read_text(encoding="utf-8").replace(f"Package: {name}", f"Package: {following}")
        control.write_text(text, encoding="utf-8")
        (tree / "DEBIAN" / "md5sums").unlink()
        file = self.system.root / "packages" / f"{following}.deb"
        subprocess.run(["dpkg-deb", "--build", "-Znone", "--root-owner-group", tree, file], check=True, capture_output=True)
        self.system.run("dpkg", "--install", "--force-depends", f"/packages/{file.name}")
        self.assertLessEqual({name, following}, self.system.packages())
        self.system.run("dpkg", "--purge", following)

    def test_everything(self):
        self.system.install("qml-qt6")
        before = self.system.install_files(self.files.values())
        self.assertLessEqual(self.files.keys(), self.system.packages())
        self.put_passport()
        for check in (self.check_commands, self.check_python, self.check_qml_module, self.check_demo):
            with self.subTest(check.__name__):
                check()
        self.install_next_beside("libkestrelid0")
        self.system.purge(self.files.keys())
        self.assert_nothing_left(before)

    def test_documents_and_examples(self):
        listed = subprocess.run(["dpkg-deb", "--contents", self.files["kestrelid-doc"]], capture_output=True, text=True, check=True)
        for name in ("html/index.html", "html/classkestrelid_1_1PassportDetector.html", "examples/judge/CMakeLists.txt"):
            self.assertIn(f"/usr/share/doc/kestrelid-doc/{name}\n", listed.stdout)

    def check_commands(self):
        report = json.loads(self.system.run("kestrelid", "doctor", "--json", user=True).stdout)
        self.assertTrue(report["complete"])
        self.assertEqual([part["name"] for part in report["parts"] if not part["available"]], [])
        line = self.system.run("kestrelid", "validate", "--json", "/tmp/home/passport.jpg", user=True).stdout
        self.assertTrue(json.loads(line)["isPassport"])

    def check_python(self):
        program = "import kestrelid as k; d = k.Detector(); print(d.judge('passport.jpg'), k.__version__ == d.library_version)"
        said = self.system.run("sh", "-c", f'cd /tmp/home && python3 -c "{program}"', user=True).stdout
        self.assertEqual(said, "<Result: passport, confidence 0.500> True\n")

    def check_qml_module(self):
        (self.system.home() / "Main.qml").write_text(QML, encoding="utf-8")
        shown = self.system.run("/usr/lib/qt6/bin/qml", "/tmp/home/Main.qml", user=True, variables=OFFSCREEN, check=False)
        # Qt notes that nobody is logged in.
        complaints = [line for line in shown.stderr.splitlines() if "XDG_RUNTIME_DIR" not in line]
        self.assertEqual((shown.returncode, complaints), (7, []))

    def check_demo(self):
        for widgets in ((), ("--widgets",)):
            shot = self.system.home() / f"demo{''.join(widgets)}.png"
            for seconds in ("3", "10", "40"):
                self.system.run("kestrelid-demo", *widgets, "--screenshot", f"/tmp/home/{shot.name}",
                                "--after", seconds, user=True, variables=OFFSCREEN)
                if shows_a_photo(shot) and colours(shot)[GREEN] > 100:
                    break
            shutil.copy(shot, WORK)
            self.assertTrue(shows_a_photo(shot), f"no picture of the camera {widgets}")
            self.assertGreater(colours(shot)[GREEN], 100, f"the brackets are not green {widgets}")

    def test_lintian_finds_no_error(self):
        if not shutil.which("lintian"):
            self.skipTest("lintian is missing: run tools/setup")
        result = subprocess.run(
            ["lintian", "--allow-root", "--fail-on", "error", "--tag-display-limit", "0", *self.files.values()],
            capture_output=True, text=True, check=False)
        print(result.stdout, end="")
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)


if __name__ == "__main__":
    WORK.mkdir(parents=True, exist_ok=True)
    reason = why_not()
    if reason:
        print(f"skipped: {reason}")
        sys.exit(77)
    unittest.main(verbosity=2)
