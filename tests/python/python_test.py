#!/usr/bin/python3
"""The Python package against the built library, KESTRELID_LIBRARY."""

import concurrent.futures
import datetime
import importlib.util
import io
import multiprocessing
import os
import pathlib
import pickle
import re
import shutil
import subprocess
import sys

try:
    import numpy
    import pytest
    from hypothesis import given, settings
    from hypothesis import strategies as st
    from PIL import Image
except ImportError as missing:
    print(f"skipped: {missing}: run tools/setup")
    sys.exit(77)

ROOT = pathlib.Path(__file__).resolve().parents[2]
PACKAGE = ROOT / "bindings/python"
sys.path.insert(0, str(PACKAGE))

import kestrelid  # noqa: E402
from kestrelid import _library, _pictures  # noqa: E402

PASSPORT = ROOT / "samples/bangladesh-on-wood.jpg"
RECEIPT = ROOT / "samples/receipt.jpg"
PERSONAL = "NAMUNA"


def example(name, *arguments, **variables):
    return subprocess.run([sys.executable, "-B", ROOT / "examples/python" / name, *arguments], capture_output=True, text=True,
                          timeout=200, env=os.environ | {"PYTHONPATH": str(PACKAGE)} | variables)


@pytest.fixture(scope="module")
def detector():
    with kestrelid.Detector() as made:
        yield made


@pytest.fixture
def poor():
    """Without models: quick."""
    lines = []
    with kestrelid.Detector(resources="/nowhere", console=lines.append) as made:
        made.lines = lines
        yield made


def test_every_form_of_a_picture_gives_one_verdict(detector):
    result = detector.judge(PASSPORT)
    assert (result.is_passport, result.confidence, len(result.reasons)) == (True, 0.5, 3)
    assert PERSONAL in result.recognized_text
    with Image.open(PASSPORT) as picture:
        rgb = numpy.asarray(picture)
        opaque = numpy.dstack([rgb, numpy.full(rgb.shape[:2], 255, numpy.uint8)])
        forms = {"str": str(PASSPORT), "bytes": PASSPORT.read_bytes(), "Pillow": picture}
        for name, form in forms.items():
            assert detector.judge(form) == result, name
    with open(PASSPORT, "rb", buffering=0) as file:
        assert detector.judge(file) == result and not file.closed
    for form, pixels in (("rgb", rgb), ("bgr", rgb[..., ::-1]), ("rgba", opaque), ("bgra", opaque[..., [2, 1, 0, 3]])):
        assert detector.judge(pixels, format=form) == result, form


def test_examining_gives_the_verdict_and_the_zone_and_shows_nothing_of_it(detector):
    examination = detector.examine(PASSPORT, as_of=datetime.date(2020, 1, 1))
    verdict = detector.judge(PASSPORT)
    assert [getattr(examination, name) for name in vars(verdict)] == list(vars(verdict).values())
    assert all(f"{match.keyword} (distance {match.distance})" in verdict.reasons[1] for match in examination.matches)
    assert len(examination.matches) == verdict.reasons[1].count("(distance")
    (left, top), (right, _), (_, bottom), _ = examination.outline
    assert 0 < left < 0.2 < 0.8 < right < 1 and 0 < top < 0.3 < 0.7 < bottom < 1
    (zone,) = examination.zones
    assert (zone.format, zone.is_strict, zone.problems) == ("TD3", True, ())
    assert "\t".join(zone.lines) in (ROOT / "samples/manifest.tsv").read_text()
    assert 0.1 < zone.corners[0][0] < zone.corners[1][0] < 1 and 0.5 < zone.corners[0][1] < zone.corners[3][1] < 1
    assert zone.field("dateOfBirth").date == datetime.date(1982, 8, 20)
    assert zone.field("nationality").state == "Bangladesh"
    number = zone.field("documentNumber").text
    for shown in map(repr, (verdict, examination, examination.zones, zone.fields)):
        assert len(shown) < 1500 and not any(said in shown for said in (PERSONAL, number, "TESSA", "1982"))
    assert pickle.loads(pickle.dumps(examination)) == examination


def test_zones_of_text():
    text = "P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<\nL898902C36UTO7409122F1204159ZE184226B<<<<<10"
    (wrong,) = kestrelid.parse_zones(text)
    assert (wrong.is_strict, wrong.corners, wrong.problems[0]) == (False, None, kestrelid.ZoneProblem(
        "checkDigitFailed", "line 2, column 20, date of birth: the check digit does not match"))
    birth = wrong.field("dateOfBirth")
    assert (birth.check_digit, birth.date, birth.year, birth.two_digit_year, birth.month) == ("failed", None, None, 74, 9)
    assert kestrelid.parse_zones(b"\xff\0no zone") == kestrelid.parse_zones("\ud800") == ()


@st.composite
def arrays(draw):
    """A view of random pixels with any strides, and its format."""
    form = draw(st.sampled_from(["rgb", "bgr", "rgba", "bgra", "gray"]))
    channels = {"gray": 1}.get(form, len(form))
    height, width = draw(st.integers(1, 9)), draw(st.integers(1, 9))
    steps = [draw(st.sampled_from([-2, -1, 1, 3])) for _ in range(3)]
    order = draw(st.permutations(range(3)))
    shape = numpy.array([height, width, channels]) * numpy.abs(steps)
    whole = numpy.random.default_rng(draw(st.integers(0, 99))).integers(0, 256, shape[list(order)], numpy.uint8)
    view = whole.transpose(numpy.argsort(order))[::steps[0], ::steps[1], ::steps[2]]
    return (view[..., 0] if form == "gray" and draw(st.booleans()) else view), form


class Receiver:
    """Stands for the library: keeps what it is given."""

    def make(self, function, pointer):
        pixels = pointer._obj
        self.rows = numpy.frombuffer(_library.ctypes.string_at(pixels.bytes, pixels.size), numpy.uint8).reshape(
            pixels.height, pixels.stride)[:, :pixels.width * (4, 3, 1, 3, 4)[pixels.format]]
        self.format = ("bgra", "rgb", "gray", "bgr", "rgba")[pixels.format]

    image_from_pixels = None


@settings(max_examples=300, deadline=None, database=None)
@given(arrays())
def test_arrays_of_any_strides_arrive_as_they_look(case):
    view, form = case
    library = Receiver()
    _pictures.image(library, view, form)
    assert library.format == form
    assert (library.rows.reshape(*view.shape[:2], -1) == view.reshape(*view.shape[:2], -1)).all()


def test_pillow_images_arrive_as_their_file_looks():
    rgb = numpy.arange(24, dtype=numpy.uint8).reshape(2, 4, 3) * 10
    gray = rgb[..., 0]
    turned = Image.fromarray(rgb)
    turned.getexif()[0x0112] = 6  # its top stands at the right when it is shown
    clear = numpy.dstack([rgb, numpy.full((2, 4), 255, numpy.uint8)])
    clear[0, 1, 3] = 0
    holed = rgb.copy()
    holed[0, 1] = 255
    palette = Image.fromarray(gray).convert("P")
    palette.info["transparency"] = int(numpy.asarray(palette)[0, 1])
    holed_gray = gray.copy()
    holed_gray[0, 1] = 255
    for name, picture, expected in (
            ("RGB", Image.fromarray(rgb), rgb), ("L", Image.fromarray(gray), gray), ("turned", turned, numpy.rot90(rgb, -1)),
            ("RGBA", Image.fromarray(clear), holed), ("palette", palette, numpy.dstack([holed_gray] * 3)),
            ("CMYK", Image.fromarray(rgb).convert("CMYK"), rgb)):
        library = Receiver()
        _pictures.image(library, picture, None)
        assert (library.rows.reshape(*expected.shape) == expected).all(), name


PIXELS = numpy.zeros((4, 5, 3), numpy.uint8)
CLOSED = Image.open(RECEIPT)
CLOSED.close()
FILE = RECEIPT.open("rb")
FILE.close()
TORN = Image.open(io.BytesIO(RECEIPT.read_bytes()[:9000]))


class Endless:
    name = "endless"

    def __init__(self, part):
        self.part = part

    def read(self, size):
        return self.part if isinstance(self.part, int) else self.part * min(size, 2**24)


@pytest.mark.parametrize("picture, form, error, text", [
    (PIXELS, None, kestrelid.ArgumentError, "'rgb', or 'bgr' as OpenCV"),
    (PIXELS, "rgba", kestrelid.ArgumentError, r"needs 4 channels; the array of shape \(4, 5, 3\) has 3"),
    (PIXELS, "BGR", kestrelid.ArgumentError, "'BGR' is none of rgb, bgr"),
    (PIXELS[:, :, :2], None, kestrelid.ArgumentError, r"shape \(4, 5, 2\) is no picture"),
    (PIXELS[None], "rgb", kestrelid.ArgumentError, r"shape \(1, 4, 5, 3\) is no picture"),
    (PIXELS[:0], "rgb", kestrelid.ArgumentError, "5x0 is out of range"),
    (numpy.broadcast_to(numpy.uint8(0), (10**6, 10**6)), None, kestrelid.ArgumentError, "100 million"),
    (PIXELS.astype(float), "rgb", TypeError, "uint8 is needed, not one whose items are 'd'"),
    (PIXELS.astype("M8[s]"), "rgb", TypeError, "numpy.ndarray of datetime64"),
    (3, None, TypeError, "not int$"),
    (b"", None, kestrelid.UnreadableError, "^the file is empty$"),
    (bytearray(b"GIF89a"), None, kestrelid.UnreadableError, "."),
    (b"abc", "rgb", kestrelid.ArgumentError, "format= is for arrays"),
    ("gone.jpg", None, kestrelid.UnreadableError, "^gone.jpg: cannot be opened: No such file or directory$"),
    (os.fsdecode(b"gone\xff\n.jpg"), None, kestrelid.UnreadableError, "^gone\ufffd .jpg: cannot be opened"),
    (f"{RECEIPT}\0", None, kestrelid.ArgumentError, "zero byte"),
    (FILE, None, kestrelid.UnreadableError, f"^{RECEIPT}: .*closed"),
    (io.BytesIO(b"GIF89a"), "rgb", kestrelid.ArgumentError, "format= is for arrays"),
    (io.BytesIO(b"GIF89a"), None, kestrelid.UnreadableError, "^a GIF file"),
    (io.BytesIO(), None, kestrelid.UnreadableError, "^nothing is left to read"),
    (Endless(b"x"), None, kestrelid.UnreadableError, "^endless: more than 67108864 bytes"),
    (Endless("x"), None, TypeError, "^endless: opened as text: .*'rb'"),
    (Endless(7), None, TypeError, "^endless: read.* gave no bytes but int$"),
    (CLOSED, None, kestrelid.UnreadableError, "closed"),
    (TORN, None, kestrelid.UnreadableError, "truncated"),
    (Image.new("I;16", (5, 5)), None, kestrelid.ArgumentError, "convert it to 'L'"),
])
def test_what_cannot_be_judged_is_told_in_one_line(poor, picture, form, error, text):
    with pytest.raises(error, match=text) as raised:
        poor.judge(picture, format=form)
    assert "\n" not in str(raised.value)
    again = pickle.loads(pickle.dumps(raised.value))
    assert (type(again), str(again)) == (raised.type, str(raised.value))


def test_console_sharing_closing_and_threads(poor, caplog):
    assert not poor.judge(PIXELS, format="rgb").is_passport
    assert "/nowhere" in poor.lines[0]
    with kestrelid.Detector(resources="/nowhere") as quiet:
        quiet.judge(PIXELS, format="rgb")
    assert caplog.records[0].name == "kestrelid" and "/nowhere" in caplog.text
    shared = kestrelid.Detector(share=poor, effort="verdict")
    poor.close()
    with concurrent.futures.ThreadPoolExecutor(6) as pool:
        results = [pool.submit(shared.judge, PIXELS[..., 0]) for _ in range(40)]
        shared.close()  # calls that run go on, later ones are refused
        results = [result.exception() or result.result() for result in results]
    assert {type(result) for result in results} <= {kestrelid.Result, ValueError}
    for closed in (lambda: shared.judge(b""), lambda: kestrelid.Detector(share=shared)):
        with pytest.raises(ValueError, match="closed"):
            closed()
    with pytest.raises(kestrelid.ArgumentError, match="'best' is none of complete, verdict"):
        kestrelid.Detector(effort="best")
    with pytest.raises(TypeError, match="another process"):
        pickle.dumps(shared)


def judge_receipt():
    return kestrelid.Detector(effort="verdict").judge(RECEIPT).is_passport


def test_forked_processes_are_refused_instead_of_waiting_for_ever(detector):
    detector.judge(RECEIPT)
    pool = concurrent.futures.ProcessPoolExecutor(1, multiprocessing.get_context("fork"))
    with pool, pytest.raises(kestrelid.Error, match="forked .*'spawn'"):
        pool.submit(judge_receipt).result(100)


@pytest.mark.parametrize("variables, text", [
    ({"KESTRELID_LIBRARY": "/nowhere.so"}, "/nowhere.so: cannot open .* environment variable KESTRELID_LIBRARY"),
    ({"KESTRELID_LIBRARY": "libm.so.6"}, "libm.so.6 has no function kestrelid_"),
    ({"KESTRELID_LIBRARY": ""}, "libkestrelid-detection.so.0: cannot .* package libkestrelid-detection0, .*KESTRELID_LIBRARY"),
])
def test_a_missing_library_names_the_way_out(variables, text):
    if not variables["KESTRELID_LIBRARY"] and "libkestrelid-detection" in subprocess.run(
            ["/sbin/ldconfig", "-p"], capture_output=True, text=True).stdout:
        pytest.skip("the library is installed here")
    done = example("judge.py", RECEIPT, **variables)
    assert done.returncode == 2 and len(done.stderr.splitlines()) == 1
    assert re.search(text, done.stderr), done.stderr


def test_examples():
    done = example("judge.py", "--zone", PASSPORT, "gone.jpg", RECEIPT)
    assert done.stderr == "judge.py: gone.jpg: cannot be opened: No such file or directory\n"
    lines = done.stdout.splitlines()
    assert done.returncode == 1 and [line.partition(" (")[0] for line in lines] == [
        f"{PASSPORT}: passport", f"{PASSPORT}: zone TD3, strict", f"{RECEIPT}: not a passport",
        f"{RECEIPT}: no machine-readable zone"]
    for name, words in (("many.py", ("True", "False")), ("asynchronous.py", ("passport", "not a passport"))):
        done = example(name, PASSPORT, "gone.jpg", RECEIPT)
        assert (done.returncode, done.stderr) == (0, "")
        assert sorted(done.stdout.splitlines()) == sorted([
            f"{PASSPORT}\t{words[0]}", "gone.jpg\tgone.jpg: cannot be opened: No such file or directory",
            f"{RECEIPT}\t{words[1]}"])


def test_version_is_the_librarys(detector):
    assert kestrelid.__version__ == detector.library_version
    for files, said in (((), f"kestrelid {kestrelid.__version__}, library {kestrelid.__version__}\n"),
                        ((PASSPORT, "gone.jpg"), f"{PASSPORT}: passport, confidence 0.500\n")):
        done = subprocess.run(
            [sys.executable, "-B", "-m", "kestrelid", *files], cwd=PACKAGE, capture_output=True, text=True, timeout=200)
        assert (done.stdout, done.returncode, done.stderr.count("\n")) == (said, len(files) // 2, len(files) // 2)


@pytest.mark.skipif(not shutil.which("mypy"), reason="mypy is missing: run tools/setup")
def test_types(tmp_path):
    user = tmp_path / "user.py"
    user.write_text("import kestrelid\nresult: kestrelid.Result = kestrelid.Detector().judge('a')\nresult.is_passport = True\n")
    check = subprocess.run(["mypy", "--strict", "--cache-dir", tmp_path / "cache", user, "--config-file", "pyproject.toml"],
                           cwd=PACKAGE, capture_output=True, text=True, env=os.environ | {"MYPYPATH": str(PACKAGE)})
    assert [line.partition("error: ")[2][:26] for line in check.stdout.splitlines()[:-1]] == ['Property "is_passport" def'], check.stdout


def test_installs_by_pip(tmp_path):
    shutil.copytree(PACKAGE, tmp_path / "source")
    pip = [sys.executable, "-m", "pip", "install", "--quiet", "--no-index", "--no-deps", "--no-build-isolation",
           "--disable-pip-version-check", "--target", tmp_path / "target", tmp_path / "source"]
    if not all(map(importlib.util.find_spec, ("pip", "setuptools", "wheel"))):
        pytest.skip("python3-pip, python3-setuptools or python3-wheel is missing: run tools/setup")
    subprocess.run(pip, check=True, capture_output=True, timeout=200)
    said = subprocess.run([sys.executable, "-c", "import kestrelid, importlib.metadata as m; print(kestrelid.__file__, "
                           "m.version('kestrelid'))"], env={"PYTHONPATH": str(tmp_path / "target")}, capture_output=True, text=True)
    assert said.stdout.split() == [str(tmp_path / "target/kestrelid/__init__.py"), kestrelid.__version__]
    assert (tmp_path / "target/kestrelid/py.typed").exists()


if __name__ == "__main__":
    sys.exit(pytest.main([__file__, "-q", "-p", "no:cacheprovider", *sys.argv[1:]]))
