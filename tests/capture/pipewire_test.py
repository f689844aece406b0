"""A camera that PipeWire offers, from a PipeWire of the test's own: listed, watched, photographed.

Skipped with one line where PipeWire is not installed or does not start. Its client library (0.3) now and then aborts
when it is closed; a run that ends so is repeated once, from a fresh stack.
"""

import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

KESTRELID = os.environ["KESTRELID"]
NEEDED = ["dbus-run-session", "pipewire", "wireplumber", "pw-cli", "gst-launch-1.0"]
CAMERA = "TestCamera"
PATIENCE = 30  # seconds, for each thing that is waited for


class NoPipeWire(Exception):
    pass


class Aborted(Exception):
    """The client library's own end."""


class Stack:
    """PipeWire, its session manager and a camera; with a run-time folder of their own."""

    def __init__(self, folder):
        self.environment = os.environ | {"XDG_RUNTIME_DIR": str(folder)}
        self.processes = []

    def start(self, *command):
        self.processes.append(subprocess.Popen(command, env=self.environment, stdout=subprocess.DEVNULL,
                                               stderr=subprocess.DEVNULL))

    def wait_for_node(self, wanted):
        deadline = time.monotonic() + PATIENCE
        while time.monotonic() < deadline:
            listed = subprocess.run(["pw-cli", "list-objects", "Node"], env=self.environment, capture_output=True,
                                    text=True, timeout=PATIENCE)
            if listed.returncode == 0 and wanted in listed.stdout:
                return
            time.sleep(0.1)
        raise NoPipeWire(f"{wanted or 'PipeWire'} did not come up")

    def __enter__(self):
        self.start("pipewire")
        self.wait_for_node("")
        self.start("wireplumber")
        self.start("gst-launch-1.0", "-q", "videotestsrc", "is-live=true", "!",
                   "video/x-raw,format=YUY2,width=1280,height=720,framerate=30/1", "!", "pipewiresink", "mode=provide",
                   f"stream-properties=props,media.class=Video/Source,node.name={CAMERA},node.description={CAMERA}")
        self.wait_for_node(CAMERA)
        return self

    def __exit__(self, *_):
        for process in reversed(self.processes):
            process.terminate()
            process.wait(timeout=PATIENCE)

    def kestrelid(self, *arguments):
        result = subprocess.run([KESTRELID, "watch", "--json", *arguments], env=self.environment, capture_output=True,
                                text=True, timeout=2 * PATIENCE)
        if result.returncode == -signal.SIGABRT:
            raise Aborted
        assert result.returncode == 0, (result.returncode, result.stderr)
        return [json.loads(line) for line in result.stdout.splitlines()]


def check(folder):
    photo = folder / "photo.jpg"
    with Stack(folder) as stack:
        (listed,) = stack.kestrelid("--list")
        assert [camera["name"] for camera in listed["cameras"]] == [CAMERA], listed
        assert {(form["width"], form["height"]) for form in listed["cameras"][0]["formats"]} == {(1280, 720)}, listed
        events = stack.kestrelid("--photo", str(photo), "--after", "1")
    taken = [event for event in events if event["event"] == "photo"]
    assert [(event["width"], event["height"]) for event in taken] == [(1280, 720)], events
    assert photo.stat().st_size > 1000
    assert any(event["event"] == "session" and event["ready"] for event in events), events


def main():
    if "--inside" not in sys.argv:
        missing = [name for name in NEEDED if not shutil.which(name)]
        if missing:
            print(f"PipeWire is not tested; missing: {', '.join(missing)} (install pipewire, wireplumber, dbus and "
                  "gstreamer1.0-tools)")
            return 77
        return subprocess.run(["dbus-run-session", "--", sys.executable, "-B", __file__, "--inside"]).returncode
    for attempt in range(2):
        with tempfile.TemporaryDirectory(prefix="kestrelid-") as folder:
            try:
                check(Path(folder))
                print("PipeWire's camera was listed, watched and photographed")
                return 0
            except NoPipeWire as reason:
                print(f"PipeWire is not tested: {reason}")
                return 77
            except Aborted:
                print("PipeWire's client library aborted" + ("; once more" if attempt == 0 else " twice"))
    return 1


if __name__ == "__main__":
    sys.exit(main())
