#!/usr/bin/python3
"""Hosts that end at any moment while a camera is set up and judged: HOST PICTURE [MOMENTS].

Prints the longest time from the moment of the end to the process's own end.
"""

import os
import random
import subprocess
import sys
import tempfile
import time

HOST, PICTURE = sys.argv[1:3]
MOMENTS = int(sys.argv[3]) if len(sys.argv) > 3 else 5

folder = tempfile.TemporaryDirectory(prefix="kestrelid-ends-")
environment = dict(os.environ, QT_QPA_PLATFORM="offscreen", QT_QUICK_BACKEND="software",
                   QT_LOGGING_RULES="qt.*=false", XDG_RUNTIME_DIR=folder.name)
moments = random.Random(7)
failures = 0
longest = 0.0
for turn in range(MOMENTS):
    for kind in ("qml", "widgets"):
        moment = moments.randrange(4000)  # ms: set-up, start, readiness, verdicts
        begin = time.monotonic()
        try:
            ended = subprocess.run([HOST, kind, PICTURE, str(moment)], env=environment, timeout=60,
                                   capture_output=True, text=True, errors="replace")
        except subprocess.TimeoutExpired:
            sys.exit(f"{kind} hangs after an end at {moment} ms")
        longest = max(longest, time.monotonic() - begin - moment / 1000)
        output = ended.stdout + ended.stderr
        if ended.returncode != 0 or output:
            print(f"{kind} that ends at {moment} ms: exit status {ended.returncode}: {output}")
            failures += 1
print(f"{2 * MOMENTS} ends, {failures} bad; the longest took {longest:.2f} s, the start included")
sys.exit(failures > 0)
