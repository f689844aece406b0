"""Runs a program that judges pictures in a process of its own, so that its peak memory is its own."""

import json
import os
import signal
import subprocess
import tempfile

from labels import Unusable


def measure(command, paths, tell):
    """The objects that command prints for the pictures, and the peak of its memory in MiB. Calls tell(number of pictures
    done). The first picture is judged twice, so that no picture's delay holds the loading of the models."""
    lines = []
    with tempfile.TemporaryFile() as errors:
        process = subprocess.Popen([*command, paths[0], *paths], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=errors)
        with process.stdout:
            for line in process.stdout:
                tell(len(lines))
                lines.append(line)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        errors.seek(0)
        said = errors.read().decode(errors="replace").splitlines()
    if process.returncode < 0:
        raise Unusable(f"{command[0]}: died: {signal.strsignal(-process.returncode)}")
    if len(lines) != len(paths) + 1:
        raise Unusable(said[-1] if said else f"{command[0]}: {len(lines)} lines for {len(paths) + 1} pictures")
    try:
        rows = [json.loads(line) for line in lines[1:]]
        usable = all("error" in row or {"isPassport", "confidence", "milliseconds"} <= row.keys() for row in rows)
    except (ValueError, TypeError, AttributeError):
        usable = False
    if not usable:
        raise Unusable(f"{command[0]}: prints something else than 'kestrelid validate --json'")
    return rows, usage.ru_maxrss / 1024  # Linux: KiB
