"""How well machine-readable zones are read: what `kestrelid zone --json` prints against the known lines."""

import json
import subprocess

from labels import Unusable


def read(command, paths):
    """The object that command prints for each picture."""
    done = subprocess.run([*command, *paths], stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
    lines = done.stdout.splitlines()
    if done.returncode not in (0, 1) or len(lines) != len(paths):
        said = done.stderr.splitlines()
        raise Unusable(said[-1] if said else f"{command[0]}: {len(lines)} lines for {len(paths)} pictures")
    return [json.loads(line) for line in lines]


def _holds(zone):
    # All printed check digits pass, whatever else is in doubt.
    digits = [field["checkDigit"] for field in zone["fields"]]
    return "passed" in digits and "failed" not in digits


def compared(picture, row):
    """What the row says of the picture, as words of counts()."""
    if "error" in row:
        return {"unread"}
    zones = row["zones"]
    words = {"found"} if zones else set()
    words |= {"holds" for zone in zones if _holds(zone)}
    words |= {"strict" for zone in zones if zone["strict"]}
    if picture.zone:
        words.add("known")
        words |= {"exact" for zone in zones if zone["lines"] == picture.zone}
        words |= {"strictWrong" for zone in zones if zone["strict"] and zone["lines"] != picture.zone}
    return words


WORDS = ("known", "exact", "found", "holds", "strict", "strictWrong", "unread")


def counts(pictures, rows):
    """For each kind of picture: how many there are, and for how many each of WORDS holds."""
    result = {}
    for picture, row in zip(pictures, rows):
        entry = result.setdefault(picture.kind, dict.fromkeys(("pictures", *WORDS), 0))
        entry["pictures"] += 1
        for word in compared(picture, row):
            entry[word] += 1
    return result
