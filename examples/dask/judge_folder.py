#!/usr/bin/python3
"""Judges many pictures on many processes and machines by Dask, and writes one JSON object a line for each of them."""

import argparse
import json
import os
import sys

import dask
import distributed

import kestrelid

SUFFIXES = (".jpg", ".jpeg", ".png", ".webp", ".tif", ".tiff", ".heic", ".heif")


class Detectors(distributed.WorkerPlugin):
    """A detector for each process that judges, those included that take the place of killed ones."""

    def __init__(self, effort, text_threads):
        self.options = {"effort": effort, "text_threads": text_threads}

    def setup(self, worker):
        worker.kestrelid = kestrelid.Detector(**self.options)


def judge(name):
    """What a line says of a picture. The text that was read is personal data and stays where it was read."""
    try:
        result = distributed.get_worker().kestrelid.judge(name)
    except (kestrelid.Error, MemoryError) as error:
        return {"error": str(error) or "not enough memory"}
    return {"isPassport": result.is_passport, "confidence": round(result.confidence, 5), "reasons": result.reasons}


def pictures(inputs):
    """The names to judge: of files, of what lies in folders, and - for names on standard input, one a line."""
    for name in inputs:
        if name == "-":
            yield from (os.fsdecode(line.rstrip(b"\n")) for line in sys.stdin.buffer)
        elif os.path.isdir(name):
            for folder, folders, files in os.walk(name):
                folders.sort()
                yield from (os.path.join(folder, file) for file in sorted(files) if file.lower().endswith(SUFFIXES))
        else:
            yield name


def judged(client, names, waiting):
    """Yields each name and what is said of it, in the order in which verdicts are reached. Never more than `waiting` pictures
    are with the cluster at once, so that a list may be of any length.

    Dask gives the pictures of a process that is lost to another one. It may judge them again, but an answer comes here once for
    each. A picture that loses four processes is given up."""
    names = enumerate(names)
    asked = {}
    done = distributed.as_completed(loop=client.loop, raise_errors=False)

    def ask():
        for number, name in names:
            future = client.submit(judge, name, key=f"picture-{number}", pure=False)
            asked[future.key] = name
            done.add(future)
            return

    for _ in range(waiting):
        ask()
    for future in done:
        ask()
        error = future.exception()
        if isinstance(error, distributed.KilledWorker):
            error = "the processes that judged it were lost, perhaps for want of memory"
        yield asked.pop(future.key), future.result() if error is None else {"error": str(error) or type(error).__name__}
        future.release()


def line(name, findings):
    """As folder-judge writes it: a name that is not UTF-8 stands beside it in hexadecimal digits."""
    encoded = os.fsencode(name)
    shown = encoded.decode(errors="replace")
    bytes_of_name = {} if os.fsencode(shown) == encoded else {"fileBytes": encoded.hex()}
    return json.dumps({"schema": 1, "file": shown, **bytes_of_name, **findings}, ensure_ascii=False) + "\n"


def set_up():
    # A process is given one picture at a time: its neighbours would else be blamed with it for the loss of the process.
    dask.config.set({"distributed.scheduler.worker-saturation": 1.0, "distributed.scheduler.allowed-failures": 3})


def cluster(options):
    if options.scheduler:
        return distributed.Client(options.scheduler)
    if options.ssh:
        worker = {"nthreads": 1, "n_workers": options.workers}
        hosts = [options.ssh[0], *options.ssh]  # the scheduler runs beside the first one's workers
        return distributed.Client(distributed.SSHCluster(hosts, worker_options=worker, remote_python=options.remote_python))
    # Whoever may connect may run code: with a key made for this run, nobody else on the machine can. Status pages, which Dask
    # would show to the whole network, stay on the machine too.
    here = "127.0.0.1:0"
    return distributed.Client(distributed.LocalCluster(
        n_workers=options.workers, threads_per_worker=1, host="127.0.0.1", dashboard_address=here, worker_dashboard_address=here,
        security=distributed.Security.temporary()))


def main():
    parser = argparse.ArgumentParser(description=__doc__, epilog="Exit status: 0 all judged, 1 some could not be, 2 wrong usage or no cluster.")
    parser.add_argument("inputs", nargs="+", metavar="FILE", help="pictures, folders, or - for names on standard input")
    parser.add_argument("--output", type=argparse.FileType("w", encoding="utf-8"), default=sys.stdout, metavar="FILE",
                        help="JSON lines (default: standard output)")
    parser.add_argument("--workers", type=int, default=os.cpu_count(), metavar="N",
                        help="processes on each machine (default: as many as processors here)")
    parser.add_argument("--text-threads", type=int, default=1, metavar="N", help="threads that read one picture (default: 1)")
    parser.add_argument("--effort", choices=("complete", "verdict"), default="complete")
    parser.add_argument("--ssh", nargs="+", metavar="HOST", help="machines that judge, by ssh without a password")
    parser.add_argument("--remote-python", default="/usr/bin/python3", metavar="FILE", help="there (default: /usr/bin/python3)")
    parser.add_argument("--scheduler", metavar="ADDRESS", help="of a cluster that runs already: tcp://HOST:8786")
    options = parser.parse_args()

    set_up()
    failed = False
    try:
        client = cluster(options)
        client.register_worker_plugin(Detectors(options.effort, options.text_threads))
    except OSError as error:  # no connection, or a machine that lacks the library
        print(f"judge_folder.py: {error}", file=sys.stderr)
        return 2
    with client, options.output as output:
        processes = sum(client.nthreads().values())
        for name, findings in judged(client, pictures(options.inputs), 8 * max(processes, 4)):
            failed = failed or "error" in findings
            output.write(line(name, findings))
            output.flush()
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
