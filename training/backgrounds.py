#!/usr/bin/python3
"""Photographs and textures to lay documents on: taken from Debian packages, never committed.

backgrounds.py FOLDER downloads and unpacks them there.

Pictures of the packages under HELD_OUT are never trained on.
"""

import re
import subprocess
import sys
import zipfile
from pathlib import Path

import cv2
import numpy as np

TRAINED_ON = ("gnome-backgrounds", "mate-backgrounds", "plasma-workspace-wallpapers",
              "openarena-081-textures", "ufoai-textures", "stellarium-data")
HELD_OUT = ("lomiri-wallpapers-16.04", "lomiri-wallpapers-20.04", "ukui-wallpapers",
            "sway-backgrounds", "colobot-common-textures")
_PICTURE = re.compile(r"\.(jpe?g|png|webp|tga)$", re.IGNORECASE)
# Posters and notices would be documents without a label; the rest is no picture of a place.
_UNFIT = re.compile(r"tex_pics|tex_alien|screenshot|/skies|/sfx|/doc/|icons?/|/planets|nomap|"
                    r"_(nm|sm|gm|normal|bump|glow|blend)\.", re.IGNORECASE)
_LONGEST, _LEAST = 1400, 100  # pixels a side


def fetch(folder):
    """Downloads and unpacks the packages below folder; what is there already stays."""
    folder = Path(folder)
    for package in TRAINED_ON + HELD_OUT:
        target = folder / package
        if target.is_dir():
            continue
        folder.mkdir(parents=True, exist_ok=True)
        print(package, flush=True)
        if subprocess.run(["apt-get", "-qq", "download", package], cwd=folder).returncode != 0:
            raise SystemExit(f"{package}: apt-get cannot download it")
        archive = next(folder.glob(f"{package}_*.deb"))
        partial = folder / f"{package}.partial"
        subprocess.run(["dpkg-deb", "-x", archive, partial], check=True)
        archive.unlink()
        for pack in partial.rglob("*.pk3"):
            with zipfile.ZipFile(pack) as content:
                content.extractall(partial / "unpacked",
                                   [n for n in content.namelist() if _PICTURE.search(n)])
        partial.rename(target)


def load(folder, packages, longest=_LONGEST):
    """A list of pictures (height x width x 3, uint8, RGB), none longer than longest pixels."""
    pictures = []
    for package in packages:
        for path in sorted((Path(folder) / package).rglob("*")):
            name = "/" + str(path.relative_to(folder))
            if not _PICTURE.search(name) or _UNFIT.search(name):
                continue
            if package == "stellarium-data" and "/landscapes/" not in name:
                continue
            picture = cv2.imread(str(path), cv2.IMREAD_COLOR)
            if picture is None or min(picture.shape[:2]) < _LEAST or picture.std() < 3:
                continue
            shrink = longest / max(picture.shape[:2])
            if shrink < 1:
                picture = cv2.resize(picture, None, fx=shrink, fy=shrink,
                                     interpolation=cv2.INTER_AREA)
            pictures.append(np.ascontiguousarray(picture[..., ::-1]))
    if not pictures:
        raise SystemExit(f"{folder}: none of the pictures of {', '.join(packages)}")
    return pictures


if __name__ == "__main__":
    if len(sys.argv) != 2 or sys.argv[1].startswith("-"):
        sys.exit(__doc__)
    fetch(sys.argv[1])
