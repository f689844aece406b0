"""A camera that PipeWire offers, from a PipeWire of the test's own: listed, watched, photographed; by PipeWire's socket,
also where PipeWire has started again, and inside a sandbox by the connection that a portal hands out.

Skipped with one line where PipeWire is not installed or does not start.
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
PORTAL = os.environ["KESTRELID_TEST_PORTAL"]
LISTER = os.environ["KESTRELID_CAMERA_LISTER"]
NEEDED = ["dbus-run-session", "pipewire", "wireplumber", "pw-cli", "gst-launch-1.0"]
CAMERA = "TestCamera"
TRIES = 3
PATIENCE = 60  # seconds, for each thing that is waited for; machines that build meanwhile are slow


class NoPipeWire(Exception):
    pass


class Stack:
    """PipeWire, its session manager and a camera; with a run-time folder of their own."""

    def __init__(self, folder):
        self.folder = folder
        self.environment = os.environ | {"XDG_RUNTIME_DIR": str(folder)}
        self.processes = []

    def start(self, *command, **options):
        log = open(self.folder / f"{len(self.processes)}-{Path(command[0]).name}.log", "wb")
        with log:
            process = subprocess.Popen(command, env=self.environment, stderr=log, **{"stdout": log} | options)
        self.processes.append(process)
        return process

    def wait_for_node(self, wanted):
        deadline = time.monotonic() + PATIENCE
        while time.monotonic() < deadline:
            listed = subprocess.run(["timeout", str(PATIENCE), "pw-cli", "list-objects", "Node"], env=self.environment,
                                    capture_output=True, text=True)
            if listed.returncode == 0 and wanted in listed.stdout:
                return
            time.sleep(0.1)
        raise NoPipeWire(f"{wanted or 'PipeWire'} did not come up")

    def __enter__(self):
        try:
            self.start("pipewire")
            self.wait_for_node("")
            self.start("wireplumber")
            self.start("gst-launch-1.0", "-q", "videotestsrc", "is-live=true", "!",
                       "video/x-raw,format=YUY2,width=1280,height=720,framerate=30/1", "!", "pipewiresink",
                       "mode=provide",
                       f"stream-properties=props,media.class=Video/Source,node.name={CAMERA},node.description={CAMERA}")
            self.wait_for_node(CAMERA)
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for process in reversed(self.processes):
            process.kill()
            process.wait()
        self.processes.clear()

    def sandbox(self):
        """What a program inside one sees: no socket of PipeWire, but the portal."""
        portal = self.start(PORTAL, str(self.folder / "pipewire-0"), stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        assert portal.stdout.readline() == b"ready\n", "the test's portal did not start"
        hidden = self.folder / "hidden"
        hidden.mkdir()
        return self.environment | {"XDG_RUNTIME_DIR": str(hidden), "SNAP": "/snap/test", "SNAP_INSTANCE_NAME": "test"}

    def logs(self):
        for path in sorted(self.folder.glob("*.log")):
            for line in path.read_text(errors="replace").splitlines()[-20:]:
                yield f"{path.name}: {line}"


def watch(environment, *arguments):
    """The program's events. Where frames come too late for a photo, on a busy machine, it is asked for again."""
    command = [KESTRELID, "watch", "--json", *arguments]
    for _ in range(TRIES):
        result = subprocess.run(["timeout", str(PATIENCE), *command], env=environment, capture_output=True, text=True)
        if "gave no photo" not in result.stderr:
            break
    assert result.returncode == 0, f"{command}: exit code {result.returncode}\n{result.stdout}{result.stderr}"
    return [json.loads(line) for line in result.stdout.splitlines()]


def check_listing(environment):
    (listed,) = watch(environment, "--list")
    assert [camera["name"] for camera in listed["cameras"]] == [CAMERA], listed
    assert {(form["width"], form["height"]) for form in listed["cameras"][0]["formats"]} == {(1280, 720)}, listed


def check_watch(environment, photo):
    events = watch(environment, "--photo", str(photo), "--after", "1")
    assert {"event": "session", "ready": True, "camera": CAMERA} in [
        {key: value for key, value in event.items() if key != "time"} for event in events], events
    taken = [event for event in events if event["event"] == "photo"]
    assert [(event["width"], event["height"]) for event in taken] == [(1280, 720)], events
    assert photo.stat().st_size > 1000


def check(folder, is_sandboxed):
    # A stack for each way: the camera stalls where a second program watches it after the first has gone.
    with Stack(folder) as stack:
        try:
            environment = stack.sandbox() if is_sandboxed else stack.environment
            for _ in range(5):  # a heap that is damaged as the program ends does not always show
                check_listing(environment)
            check_watch(environment, folder / "photo.jpg")
            stack.processes[0].send_signal(signal.SIGSTOP)
            (listed,) = watch(environment, "--list")
            assert listed["cameras"] == [], "PipeWire hangs"
        except AssertionError:
            print(*stack.logs(), sep="\n")
            raise


def check_restart(folder):
    """PipeWire starts after the program that asks, and again."""
    stack = Stack(folder)
    with subprocess.Popen(["timeout", str(4 * PATIENCE), LISTER], env=stack.environment, stdin=subprocess.PIPE,
                          stdout=subprocess.PIPE, text=True) as lister:
        def listed():
            print(file=lister.stdin, flush=True)
            return lister.stdout.readline().split()

        assert listed() == [], "there is no PipeWire yet"
        for time_of_start in range(2):
            with stack:
                assert listed() == [CAMERA], f"not listed after start {time_of_start}"
        lister.stdin.close()
        assert lister.wait() == 0, "the program did not end well"


def exit_code(way, check):
    with tempfile.TemporaryDirectory(prefix="kestrelid-") as folder:
        try:
            check(Path(folder))
        except NoPipeWire as reason:
            print(f"PipeWire is not tested: {reason}")
            return 77
        except AssertionError as failure:
            print(f"FAILED: {failure}")
            return 1
    print(f"PipeWire's camera was there, {way}")
    return 0


def main():
    if "--inside" not in sys.argv:
        missing = [name for name in NEEDED if not shutil.which(name)]
        if missing:
            print(f"PipeWire is not tested; missing: {', '.join(missing)} (install pipewire, wireplumber, dbus and "
                  "gstreamer1.0-tools)")
            return 77
        return subprocess.run(["dbus-run-session", "--", sys.executable, "-B", __file__, "--inside"]).returncode
    return (exit_code("listed, watched and photographed by its socket", lambda folder: check(folder, False))
            or exit_code("listed, watched and photographed by a portal", lambda folder: check(folder, True))
            or exit_code("listed after PipeWire had started again", check_restart))


if __name__ == "__main__":
    sys.exit(main())
