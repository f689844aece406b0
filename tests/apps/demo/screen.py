"""A screen without hardware (Xvfb), looked at through its memory, and touched by xdotool as a person would."""

import mmap
import os
import re
import shutil
import signal
import struct
import subprocess
import tempfile
import time
from pathlib import Path

from PIL import Image, ImageChops, ImageFilter

TOOLS = ("Xvfb", "xdotool")
PATIENCE = 60.0  # seconds; machines that build meanwhile are slow


def missing_tool():
    """Why no screen can be had, in one line; None where it can."""
    missing = [tool for tool in TOOLS if not shutil.which(tool)]
    return f"{' and '.join(missing)} missing: install the packages xvfb and xdotool" if missing else None


def wait_for(condition, what, patience=PATIENCE):
    """The first true value of the condition; `what` is a text, or gives one when time is up."""
    end = time.monotonic() + patience
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError(f"not within {patience:g} s: {what() if callable(what) else what}")
        time.sleep(0.02)


class Screen:
    """Xvfb keeps what it shows in a file in XWD format (X11/XWDFile.h), which is read here while it changes."""

    def __init__(self, width=800, height=900):
        self.folder = tempfile.TemporaryDirectory(prefix="kestrelid-screen-")
        reader, writer = os.pipe()
        # Without -noreset it begins anew, deaf for a moment, when its first client leaves: that is xdotool.
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writer), "-screen", "0", f"{width}x{height}x24", "-fbdir", self.folder.name,
             "-nolisten", "tcp", "-ac", "-noreset"], pass_fds=[writer], stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as numbers:
            number = numbers.readline().strip()
        if not number:
            raise RuntimeError("Xvfb does not start")
        self.environment = os.environ | {"DISPLAY": f":{number}", "QT_QPA_PLATFORM": "xcb", "QT_SCALE_FACTOR": "1"}
        with open(Path(self.folder.name) / "Xvfb_screen0", "rb") as file:
            self.memory = mmap.mmap(file.fileno(), 0, prot=mmap.PROT_READ)
        header = struct.unpack(">25I", self.memory[:100])
        self.size = (header[4], header[5])
        self.row = header[12]
        self.start = header[0] + 12 * header[19]

    def close(self):
        self.memory.close()
        self.server.terminate()
        self.server.wait(PATIENCE)
        self.folder.cleanup()

    def pixel(self, x, y):
        at = self.start + int(y) * self.row + int(x) * 4
        blue, green, red = self.memory[at:at + 3]
        return red, green, blue

    def picture(self):
        pixels = self.memory[self.start:self.start + self.row * self.size[1]]
        return Image.frombytes("RGB", self.size, pixels, "raw", "BGRX", self.row)

    def xdotool(self, *arguments):
        done = subprocess.run(["xdotool", *map(str, arguments)], env=self.environment, capture_output=True, text=True, timeout=PATIENCE)
        return done.stdout.strip()

    def click(self, x, y):
        self.xdotool("mousemove", int(x), int(y), "click", 1)

    def key(self, name):
        self.xdotool("key", name)


class Program:
    """A program on a screen, with its one window."""

    def __init__(self, screen, command, environment=None):
        self.screen = screen
        self.started = time.monotonic()
        self.process = subprocess.Popen(command, env=screen.environment | (environment or {}), stdout=subprocess.PIPE,
                                        stderr=subprocess.STDOUT, text=True)

    def windows(self, title):
        assert self.process.poll() is None, f"ended with {self.process.returncode}: {self.process.stdout.read()}"
        return self.screen.xdotool("search", "--onlyvisible", "--name", title).split()

    def wait_for_title(self, title):
        def missed():
            shown = [self.screen.xdotool("getwindowname", window) for window in self.windows(".")]
            return f"a window with the title {title}, but {shown}"

        return wait_for(lambda: self.windows(title), missed)[0]

    def geometry(self, title):
        text = self.screen.xdotool("getwindowgeometry", self.wait_for_title(title))
        x, y = re.search(r"Position: (-?\d+),(-?\d+)", text).groups()
        width, height = re.search(r"Geometry: (\d+)x(\d+)", text).groups()
        return int(x), int(y), int(width), int(height)

    def end(self):
        """Ends it if it has not ended; its exit status and what it printed."""
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
        output, _ = self.process.communicate(timeout=PATIENCE)
        return self.process.returncode, output
