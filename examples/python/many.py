#!/usr/bin/python3
"""Judges many pictures with a pool of threads: judge() lets other threads run while it waits."""

import concurrent.futures
import os
import sys

import kestrelid


def main(files):
    threads = os.cpu_count() or 1
    # Several pictures at once beat several threads on one.
    with kestrelid.Detector(text_threads=1) as detector, concurrent.futures.ThreadPoolExecutor(threads) as pool:
        verdicts = {pool.submit(detector.judge, file): file for file in files}
        for verdict in concurrent.futures.as_completed(verdicts):
            try:
                print(verdicts[verdict], verdict.result().is_passport, sep="\t")
            except kestrelid.Error as error:
                print(verdicts[verdict], error, sep="\t")


if __name__ == "__main__":
    main(sys.argv[1:] or sys.exit("usage: many.py PICTURE..."))
