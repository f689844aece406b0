#!/usr/bin/python3
"""Runs a program and prints, minute by minute, what it holds: resident memory, threads, descriptors.

    benchmarks/soak.py build/release/bin/kestrelid watch --camera samples/bangladesh-on-wood.jpg --seconds 600

What the program writes to standard output is counted in lines, not shown. Ends with the program's exit code, or with 3
where its memory after the first minute grew by more than --growth MiB.
"""

import argparse
import subprocess
import sys
import threading
import time
from pathlib import Path

STEP = 10  # seconds between two samples


def sample(process):
    """Resident MiB, threads and descriptors; None once the program has ended."""
    folder = Path("/proc") / str(process.pid)
    try:
        status = dict(line.split(":", 1) for line in (folder / "status").read_text().splitlines() if ":" in line)
        return int(status["VmRSS"].split()[0]) / 1024, int(status["Threads"]), len(list((folder / "fd").iterdir()))
    except (OSError, KeyError):
        return None


def span(values):
    return f"{min(values)}" if min(values) == max(values) else f"{min(values)} to {max(values)}"


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--growth", type=float, default=16.0, help="MiB allowed after the first minute (default 16)")
    parser.add_argument("command", nargs=argparse.REMAINDER, help="the program and its arguments")
    options = parser.parse_args()
    if not options.command:
        parser.error("name a program")

    lines = [0]
    process = subprocess.Popen(options.command, stdout=subprocess.PIPE)

    def count():
        for _ in process.stdout:
            lines[0] += 1

    reader = threading.Thread(target=count, daemon=True)
    reader.start()
    start = time.monotonic()
    minutes = {}
    print("minute     MiB  highest  threads  descriptors  lines", flush=True)
    while process.poll() is None:
        time.sleep(STEP)
        now = sample(process)
        if now is None:
            break
        passed = round((time.monotonic() - start) / STEP)
        minute = (passed * STEP - 1) // 60 + 1
        seen = minutes.setdefault(minute, [])
        seen.append(now)
        if passed * STEP % 60 == 0:
            memory, threads, descriptors = zip(*seen)
            print(f"{minute:6}  {memory[-1]:6.1f}  {max(memory):7.1f}  {span(threads):>7}  {span(descriptors):>11}  "
                  f"{lines[0]:5}", flush=True)
    code = process.wait()
    later = [one[0] for minute, seen in minutes.items() if minute > 1 for one in seen]
    if not later:
        print(f"ended before the second minute, exit code {code}")
        return code if code > 0 else 1
    growth = max(later) - minutes[1][-1][0]
    print(f"growth after the first minute: {growth:.1f} MiB; exit code {code}")
    return code if code != 0 else 3 if growth > options.growth else 0


if __name__ == "__main__":
    sys.exit(main())
