#!/usr/bin/python3
"""tools/check-layers on small trees: each rule that a tree breaks is named with its file and line."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).resolve().parents[2] / "tools" / "check-layers"

ALLOWED = {
    "include/kestrelid/Image.h": "#include <kestrelid/Export.h>\n#include <vector>\nnamespace kestrelid { int turned(); }\n",
    "include/kestrelid/screens/DocumentScannerVC.h": "#include <kestrelid/Image.h>\n#include <QWidget>\n",
    "src/base/Text.h": "#include <string>\nnamespace kestrelid::base { class Text { void fold(); }; }\n",
    "src/base/Text.cpp": '#include "Text.h"\n#include <unicode/unistr.h>\nnamespace kestrelid::base { void Text::fold() {} }\n',
    "src/base/Image.cpp": "#include <kestrelid/Image.h>\nnamespace kestrelid { int turned() { return 1; } }\n",
    "src/detection/Scoring.h": '#include <kestrelid/Image.h>\n#include "base/Text.h"\n',
    "src/imagefile/Decoder.cpp": "#include <webp/decode.h>\n#include <sys/stat.h>\n",
    "src/vision/onnx/Session.h": "#include <onnxruntime_c_api.h>\n",
    "src/vision/text/Reader.cpp": '#include "vision/onnx/Session.h"\n#include <opencv2/core.hpp>\n',
    "src/scanner/Vc.cpp": "#include <kestrelid/screens/DocumentScannerVC.h>\n#include <QtQml/qqmlregistration.h>\n",
    "src/defaults/All.cpp": '#include "vision/onnx/Session.h"\n',
}

# name -> (file, text, what the message must say after `file:line: `)
FORBIDDEN = {
    "a system header in a public one": ("include/kestrelid/Bitmap.h", "#include <string>\n#include <unistd.h>\n", "2: includes <unistd.h>"),
    "the inside in a public header": (
        "include/kestrelid/ImageFile.h", '#include "detection/Scoring.h"\n', "1: includes src/detection/Scoring.h"),
    "a public header of a higher layer": (
        "src/base/A.cpp", "#include <kestrelid/screens/DocumentScannerVC.h>\n", "1: includes include/kestrelid/screens/"),
    "an adapter in the detection": ("src/detection/A.cpp", '#include "vision/onnx/Session.h"\n', "1: includes src/vision/onnx"),
    "OpenCV in the detection": ("src/detection/A.cpp", "#  include <opencv2/core.hpp>\n", "1: includes <opencv2/core.hpp>"),
    "ICU outside base": ("src/imagefile/A.cpp", "#include <unicode/uchar.h>\n", "1: includes <unicode/uchar.h>"),
    "ONNX Runtime outside its folder": ("src/vision/text/A.cpp", "#include <onnxruntime_c_api.h>\n", "1: includes <onnxr"),
    "one screen in the other": ("src/preview/A.cpp", '#include "scanner/Vc.cpp"\n', "1: includes src/scanner/Vc.cpp"),
    "the inside in a program": ("apps/cli/A.cpp", '#include "base/Text.h"\n', "1: includes src/base/Text.h"),
    "the screens in the command line": (
        "apps/cli/A.cpp", "#include <kestrelid/screens/DocumentScannerVC.h>\n", "1: includes include/kestrelid/screens/"),
    "Qt in the command line": ("apps/cli/A.cpp", "#include <QString>\n", "1: includes <QString>"),
    "a header that is not there": ("apps/cli/A.cpp", '#include "cli/Gone.h"\n', "1: includes cli/Gone.h, which does not exist"),
    "an unknown library": ("apps/cli/A.cpp", "#include <boost/any.hpp>\n", "1: includes <boost/any.hpp>, which belongs to no"),
    "a folder of no layer": ("src/sound/A.cpp", "int a;\n", "1: belongs to no layer"),
    "a public header of no layer": ("include/kestrelid/New.h", "\n", "1: belongs to no layer"),
    "a member that another layer defines": (
        "src/vision/A.cpp", "namespace kestrelid::base {\nvoid Text::fold() {}\n}\n",
        "2: defines kestrelid::base::Text::fold, which a header of the layer base declares"),
    "a function that another layer defines": (
        "src/detection/A.cpp", "namespace kestrelid {\nint turned() { return 2; }\n}\n",
        "2: defines kestrelid::turned, which a header of the layer base declares"),
    "a private name among the public ones": (
        "src/vision/A.h", "namespace kestrelid {\nstruct A {};\n}\n", "2: declares kestrelid::A, which is not public"),
    "a class of two headers": (
        "src/vision/Text.h", "namespace kestrelid::base {\nclass Text {\n};\n}\n",
        "2: defines kestrelid::base::Text, which src/base/Text.h defines too"),
    "a class of a header and a source": (
        "src/vision/A.cpp", "namespace kestrelid::base {\nstruct Text {\n};\n}\n", "2: defines kestrelid::base::Text, which"),
}


def check(files):
    with tempfile.TemporaryDirectory() as root:
        for name, text in files.items():
            path = pathlib.Path(root, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        return subprocess.run([CHECK, "--root", root], capture_output=True, text=True, check=False)


class CheckLayersTest(unittest.TestCase):
    def test_allowed_trees_pass(self):
        private = "namespace kestrelid::vision {\nnamespace {\nstruct Text {};\n}\n}\n"
        result = check(ALLOWED | {"src/vision/A.cpp": private, "src/vision/B.cpp": private})
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_each_violation_is_named(self):
        for name, (file, text, message) in FORBIDDEN.items():
            with self.subTest(name):
                result = check(ALLOWED | {file: text})
                self.assertEqual(result.returncode, 1)
                self.assertIn(f"{file}:{message}", result.stderr)
                self.assertEqual(result.stderr.count("\n"), 1, result.stderr)

    def test_a_tree_without_includes_is_an_error(self):
        self.assertEqual(check({"docs/README.md": ""}).returncode, 1)


if __name__ == "__main__":
    sys.exit(unittest.main())
