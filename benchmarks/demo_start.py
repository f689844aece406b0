#!/usr/bin/python3
"""Time from starting the demo to the first camera picture on the screen, on a screen without hardware.

usage: benchmarks/demo_start.py BUILD [RUNS]     BUILD: the build folder, with the tests' camera

The picture is there once a row in the middle of the scan frame shows many colours; the screen is looked at every
millisecond through its memory (tests/apps/demo/screen.py).
"""

import statistics
import sys
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests/apps/demo"))

from screen import Program, Screen, missing_tool  # noqa: E402

RENDERERS = {"software": {"QT_QUICK_BACKEND": "software"}, "OpenGL by software": {"LIBGL_ALWAYS_SOFTWARE": "1"}}
CAMERAS = {"named": ["--camera", "Test Camera"], "found": [], "picture file": ["--camera", str(ROOT / "samples/bangladesh-on-wood.jpg")]}
MIDDLE = [(x, 370) for x in range(60, 360, 7)]  # of the window's 420 x 760


def seconds_to_picture(build, arguments, renderer):
    screen = Screen(480, 800)
    plugins = f"{build}/lib/gstreamer-test"
    with tempfile.TemporaryDirectory(prefix="kestrelid-start-") as folder:
        control = Path(folder) / "control"
        control.write_text(f"device Test Camera\npicture {ROOT}/samples/bangladesh-on-wood.jpg\n")
        demo = Program(screen, [f"{build}/bin/kestrelid-demo", *arguments], RENDERERS[renderer] | {
            "XDG_RUNTIME_DIR": folder, "KESTRELID_TEST_CAMERA": str(control), "GST_PLUGIN_PATH": plugins,
            "GST_REGISTRY": f"{plugins}/registry.bin", "GST_REGISTRY_FORK": "no"})
        try:
            while len({screen.pixel(x, y) for x, y in MIDDLE}) < len(MIDDLE) / 2:
                if time.monotonic() - demo.started > 30:
                    raise SystemExit("no picture within 30 s")
                time.sleep(0.001)
            return time.monotonic() - demo.started
        finally:
            demo.end()
            screen.close()


def main():
    build = Path(sys.argv[1]).resolve()
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 7
    if missing := missing_tool():
        raise SystemExit(missing)
    for host in ([], ["--widgets"]):
        for renderer in RENDERERS:
            for camera, arguments in CAMERAS.items():
                times = [seconds_to_picture(build, host + arguments, renderer) for _ in range(runs)]
                print(f"{'widgets' if host else 'qml':8} {renderer:20} camera {camera:13} "
                      f"median {statistics.median(times) * 1e3:5.0f} ms, {min(times) * 1e3:.0f} to {max(times) * 1e3:.0f}")


main()
