#!/usr/bin/python3
"""Judges pictures beside other work of an event loop, which is never held up."""

import asyncio
import sys

import kestrelid


async def judge(detector, turn, file):
    async with turn:
        try:
            result = await asyncio.to_thread(detector.judge, file)
        except kestrelid.Error as error:
            return error
    return "passport" if result.is_passport else "not a passport"


async def main(files):
    turn = asyncio.Semaphore(2)  # pictures judged, and so in memory, at once
    with kestrelid.Detector() as detector:
        for file, verdict in zip(files, await asyncio.gather(*(judge(detector, turn, file) for file in files))):
            print(file, verdict, sep="\t")


if __name__ == "__main__":
    asyncio.run(main(sys.argv[1:] or sys.exit("usage: asynchronous.py PICTURE...")))
