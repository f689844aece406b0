#!/usr/bin/python3
"""Draws what a checkpoint makes of scenes: contact.py CHECKPOINT SHARDS SHEET.jpg.

Each scene beside its page map (green), cores (blue) and corners (red). curve.svg, beside the
checkpoint, shows the loss of curve.tsv.
"""

import sys
from pathlib import Path

import cv2
import numpy as np
import torch

import export

_COLUMNS, _ROWS = 6, 8


def sheet(net, pixels):
    """Height x width x 3, uint8, RGB: scenes, and the same under their maps."""
    tiles = []
    for picture in pixels[:_COLUMNS * _ROWS]:
        with torch.no_grad():
            maps = torch.sigmoid(net(torch.from_numpy(
                picture.transpose(2, 0, 1)[None].astype(np.float32))))[0].numpy()
        grey = cv2.cvtColor(picture, cv2.COLOR_RGB2GRAY)[..., None].astype(np.float32) * 0.45
        page, core, corner = (cv2.resize(m, picture.shape[1::-1]) for m in maps)
        shown = grey + np.dstack([corner, page, core]) * [255, 120, 120]
        tiles.append(np.hstack([picture, np.clip(shown, 0, 255).astype(np.uint8)]))
    return np.vstack([np.hstack(tiles[i:i + _COLUMNS]) for i in range(0, len(tiles) - _COLUMNS + 1, _COLUMNS)])


def curve(table, path):
    """Draws the loss by step as an SVG of 800 x 300."""
    rows = [line.split("\t") for line in Path(table).read_text(encoding="utf-8").splitlines()]
    steps, losses = [int(r[0]) for r in rows], [float(r[2]) for r in rows]
    top = max(losses)
    points = " ".join(f"{40 + 750 * i / max(len(rows) - 1, 1):.1f},{280 - 260 * loss / top:.1f}"
                      for i, loss in enumerate(losses))
    path.write_text(
        '<svg xmlns="http://www.w3.org/2000/svg" width="800" height="300">'
        f'<polyline fill="none" stroke="black" points="{points}"/>'
        f'<text x="2" y="24">{top:.2f}</text><text x="700" y="298">{steps[-1]} steps</text></svg>\n',
        encoding="utf-8")


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    checkpoint = Path(sys.argv[1])
    shards = sorted(Path(sys.argv[2]).glob("*.npz"))
    if not shards:
        sys.exit(f"{sys.argv[2]}: no shards")
    with np.load(shards[0]) as shard:
        drawn = sheet(export.load(checkpoint), shard["pixels"])
    cv2.imwrite(sys.argv[3], drawn[..., ::-1])
    curve(checkpoint.parent / "curve.tsv", checkpoint.parent / "curve.svg")
