#!/usr/bin/python3
"""tools/check-layers on small trees: each rule that a tree breaks is named with its file and line."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).resolve().parents[2] / "tools" / "check-layers"

ALLOWED = {
    "include/kestrelid/Image.h": "#include <kestrelid/Export.h>\n#include <vector>\n",
    "detection/Scoring.h": '#include <kestrelid/Image.h>\n#include "platform/text/UnicodeText.h"\n',
    "platform/text/UnicodeText.h": "#include <string>\n",
    "platform/text/UnicodeText.cpp": '#include "UnicodeText.h"\n#include <unicode/unistr.h>\n',
    "platform/image/Decoder.cpp": "#include <webp/decode.h>\n#include <sys/stat.h>\n",
    "platform/vision/onnx/Session.h": "#include <onnxruntime_c_api.h>\n",
    "platform/vision/ppocr/Reader.cpp": '#include "platform/vision/onnx/Session.h"\n#include <opencv2/core.hpp>\n',
    "include/kestrelid/screens/Vc.h": "#include <kestrelid/Image.h>\n#include <QWidget>\n",
    "scanner/Vc.cpp": "#include <kestrelid/screens/Vc.h>\n#include <QtQml/qqmlregistration.h>\n",
    "composition/All.cpp": '#include "detection/Scoring.h"\n#include "platform/vision/onnx/Session.h"\n',
}

# name -> (file, text, what the message must say after `file:line: `)
FORBIDDEN = {
    "a system header in a public one": (
        "include/kestrelid/A.h", "#include <string>\n#include <unistd.h>\n", "2: includes <unistd.h>"),
    "a public header on the inside": (
        "include/kestrelid/A.h", '#include "detection/Scoring.h"\n', "1: includes detection/Scoring.h"),
    "OpenCV in the detection": ("detection/A.cpp", "#  include <opencv2/core.hpp>\n", "1: includes <opencv2/core.hpp>"),
    "an adapter in the detection": (
        "detection/A.cpp", '#include "platform/vision/onnx/Session.h"\n', "1: includes platform/vision/onnx/Session.h"),
    "ICU outside platform/text": (
        "platform/image/A.cpp", "#include <unicode/uchar.h>\n", "1: includes <unicode/uchar.h>"),
    "Asio outside platform/dispatch": ("composition/A.cpp", "#include <asio.hpp>\n", "1: includes <asio.hpp>"),
    "codecs outside platform/image": ("cli/A.cpp", "#include <png.h>\n", "1: includes <png.h>"),
    "Tesseract in ppocr": (
        "platform/vision/ppocr/A.cpp", "#include <tesseract/baseapi.h>\n", "1: includes <tesseract/baseapi.h>"),
    "ONNX Runtime in ppocr": (
        "platform/vision/ppocr/A.cpp", "#include <onnxruntime_c_api.h>\n", "1: includes <onnxruntime_c_api.h>"),
    "one platform folder in another": (
        "platform/image/A.cpp", '#include "platform/text/UnicodeText.h"\n', "1: includes platform/text/UnicodeText.h"),
    "the inside in the command line": (
        "cli/A.cpp", '#include "detection/Scoring.h"\n', "1: includes detection/Scoring.h"),
    "a header of the screens in a plain public one": (
        "include/kestrelid/A.h", "#include <kestrelid/screens/Vc.h>\n", "1: includes include/kestrelid/screens/Vc.h"),
    "one screen in the other": ("preview/A.cpp", '#include "scanner/Vc.cpp"\n', "1: includes scanner/Vc.cpp"),
    "Qt": ("cli/A.cpp", "#include <QString>\n", "1: includes <QString>"),
    "a header that is not there": ("cli/A.cpp", '#include "cli/Gone.h"\n', "1: includes cli/Gone.h, which does not exist"),
    "an unknown library": ("cli/A.cpp", "#include <boost/any.hpp>\n", "1: includes <boost/any.hpp>, which belongs to no"),
    "a folder without a rule": ("platform/sound/A.cpp", "#include <string>\n", "1: no rule for this folder"),
}


def check(files):
    with tempfile.TemporaryDirectory() as root:
        for name, text in files.items():
            path = pathlib.Path(root, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        return subprocess.run([CHECK, "--root", root], capture_output=True, text=True, check=False)


class CheckLayersTest(unittest.TestCase):
    def test_allowed_includes_pass(self):
        result = check(ALLOWED)
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_each_violation_is_named(self):
        for name, (file, text, message) in FORBIDDEN.items():
            with self.subTest(name):
                result = check(ALLOWED | {file: text})
                self.assertEqual(result.returncode, 1)
                self.assertTrue(result.stderr.startswith(f"{file}:{message}"), result.stderr)
                self.assertEqual(result.stderr.count("\n"), 1, result.stderr)

    def test_a_tree_without_includes_is_an_error(self):
        self.assertEqual(check({"README.md": ""}).returncode, 1)


if __name__ == "__main__":
    sys.exit(unittest.main())
