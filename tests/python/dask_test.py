#!/usr/bin/python3
"""examples/dask with two processes, of which one is killed, against the built library, KESTRELID_LIBRARY."""

import collections
import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest

try:
    import distributed
    import jsonschema
    from PIL import Image
except ImportError as missing:
    print(f"skipped: {missing}: run tools/setup")
    sys.exit(77)

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "examples/dask"), str(ROOT / "bindings/python")]
import judge_folder  # noqa: E402
import kestrelid  # noqa: E402

PATIENCE = 500  # seconds; machines that build meanwhile are slow


def workers_of(process):
    """The processes that judge."""
    children = pathlib.Path(f"/proc/{process}/task").glob("*/children")
    found = [int(child) for file in children for child in file.read_text().split()]
    return [child for child in found if b"spawn_main" in pathlib.Path(f"/proc/{child}/cmdline").read_bytes()]


class Trap:
    """Stands for a detector."""

    def judge(self, name):
        if name == "trap":
            os.kill(os.getpid(), signal.SIGKILL)
        if name == "large":
            raise MemoryError
        return kestrelid.Result(False, 0, (), "")


class Traps(distributed.WorkerPlugin):
    def setup(self, worker):
        worker.kestrelid = Trap()


class ManyMachines(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def test_every_picture_is_judged_once_though_a_process_is_killed(self):
        verdicts = {}
        with kestrelid.Detector(effort="verdict") as detector:
            for name in ("desk", "utopia-scan"):
                with Image.open(ROOT / f"samples/{name}.jpg") as picture:
                    picture.thumbnail((320, 320))
                    picture.save(self.folder / f"{name}.0.jpg")
                verdicts[name] = detector.judge(self.folder / f"{name}.0.jpg").is_passport
        self.assertEqual(set(verdicts.values()), {True, False})
        for number in range(1, 100):
            for name in verdicts:
                os.link(self.folder / f"{name}.0.jpg", self.folder / f"{name}.{number}.jpg")
        torn = os.fsencode(self.folder / "torn.") + b"\xff.jpg"
        with open(torn, "wb") as file:
            file.write((ROOT / "samples/desk.jpg").read_bytes()[:500])

        output = self.folder / "verdicts.jsonl"
        command = [sys.executable, "-B", ROOT / "examples/dask/judge_folder.py", self.folder, "--output", output, "--workers", "2",
                   "--effort", "verdict"]
        begin = time.monotonic()
        with subprocess.Popen(command, env=os.environ | {"PYTHONPATH": str(ROOT / "bindings/python")},
                              stderr=subprocess.PIPE) as process:
            self.addCleanup(process.kill)
            while process.poll() is None and time.monotonic() - begin < PATIENCE:
                if output.exists() and output.read_bytes().count(b"\n") >= 60:
                    break
                time.sleep(0.05)
            first, second = workers_of(process.pid)
            os.kill(first, signal.SIGKILL)
            written = output.read_bytes().count(b"\n")
            complaints = process.communicate(timeout=PATIENCE)[1].decode()
        self.assertTrue(60 <= written < 190, written)
        self.assertEqual(process.returncode, 1, complaints)
        lines = [json.loads(line) for line in output.read_text().splitlines()]
        schema = json.loads((ROOT / "packaging/schema/findings-1.schema.json").read_text("utf-8"))
        for line in lines:
            jsonschema.validate(line, schema)
        wrong = [line for line in lines if "error" in line]
        self.assertEqual([bytes.fromhex(line["fileBytes"]) for line in wrong], [torn])
        judged = {line["file"]: line["isPassport"] for line in lines if "error" not in line}
        self.assertEqual((len(lines), judged), (201, {
            str(self.folder / f"{name}.{number}.jpg"): verdict for name, verdict in verdicts.items() for number in range(100)}))

    def test_a_picture_that_kills_every_process_is_given_up_and_the_rest_is_judged(self):
        judge_folder.set_up()
        with distributed.LocalCluster(2, threads_per_worker=1, host="127.0.0.1", dashboard_address=None) as cluster:
            with distributed.Client(cluster) as client:
                client.register_worker_plugin(Traps())
                names = [f"{number}" for number in range(30)]
                said = list(judge_folder.judged(client, [*names[:5], "trap", *names[5:], "large", "large"], 8))
        errors = sorted((name, findings["error"]) for name, findings in said if "error" in findings)
        self.assertEqual(errors, [("large", "not enough memory")] * 2 + [
            ("trap", "the processes that judged it were lost, perhaps for want of memory")])
        self.assertEqual(collections.Counter(name for name, _ in said), {**dict.fromkeys(names, 1), "large": 2, "trap": 1})


if __name__ == "__main__":
    unittest.main()
