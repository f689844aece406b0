#!/usr/bin/python3
"""Ten steps of training, and whether the exported network answers as the trained one.

Usage: network_test.py OUTLINE_MAPS, the program that runs a model with ONNX Runtime. Exit status 77 (skipped) where
PyTorch, OpenCV or ONNX Runtime is missing: python3-torch and python3-opencv bring the first two.
"""
import copy
import pathlib
import subprocess
import sys
import tempfile

SKIPPED = 77
MODEL = pathlib.Path(__file__).resolve().parents[2] / "models" / "outline-net.onnx"
try:
    import cv2
    import numpy as np
    import torch
except ImportError as missing:
    print(f"skipped: {missing}; install the Debian packages python3-torch and python3-opencv")
    sys.exit(SKIPPED)

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "training"))
import averaged  # noqa: E402
import export  # noqa: E402
import restore  # noqa: E402
import shards  # noqa: E402
import targets  # noqa: E402
import train  # noqa: E402
from net import SIDE  # noqa: E402


def draw(folder):
    """A small shard in folder; returns its pixels and corners."""
    papers = []
    for tone in (180, 215, 240):
        papers.append(np.full((120, 170, 4), (tone, tone, tone, 255), np.uint8))
        cv2.putText(papers[-1], "PAGE", (20, 70), cv2.FONT_HERSHEY_SIMPLEX, 1.2, (20, 20, 20, 255), 3)
    places = [np.random.default_rng(1).integers(0, 255, (300, 400, 3)).astype(np.uint8)]
    shards.SCENES = 24
    pixels, quads = shards.draw_shard(0, shards.scenes.Flats(papers), {}, places)
    np.savez(folder / "0000.npz", pixels=pixels, quads=quads)
    return pixels, quads


def check(good, what):
    if not good:
        sys.exit(what)


def turned_targets_agree(pixels, quads):
    """Turning a scene and then drawing its maps gives the turned maps."""
    plain = targets.maps(quads, shards.SIDE)[0]
    for way in range(8):
        _, corners = train.turned(pixels, quads, way)
        page = train.turned(np.dstack([plain] * 3), quads, way)[0][..., 0]
        difference = np.abs(page - targets.maps(corners, shards.SIDE)[0]).mean()
        check(difference < 0.01, f"way {way}: the maps do not turn with the scene")


def exported_agrees(program, folder, net, floats, tolerance, model=None):
    picture = np.random.default_rng(3).uniform(0, 255, (1, 3, SIDE, SIDE)).astype(np.float32)
    with torch.no_grad():
        wanted = torch.sigmoid(net.eval()(torch.from_numpy(picture))).numpy()
    if not model:
        model = folder / "net.onnx"
        export.exported(net, model, floats)
    picture.tofile(folder / "input")
    done = subprocess.run([program, model, folder / "input", folder / "output"], capture_output=True, text=True)
    if done.returncode == SKIPPED:
        print(f"skipped: {done.stdout.strip()}")
        sys.exit(SKIPPED)
    check(done.returncode == 0, f"the exported network does not run: {done.stdout}")
    worst = float(np.abs(np.fromfile(folder / "output", np.float32).reshape(wanted.shape) - wanted).max())
    print(f"{'floats' if floats else '8 bits'}: {model.stat().st_size} bytes, furthest apart {worst:.2g}")
    check(worst < tolerance, "the exported network answers otherwise than the trained one")
    check(floats or model.stat().st_size < 2_000_000, "the model is larger than 2 MB")


def training_goes_on(program, folder, pictures):
    """The committed network, restored, answers as its file does, also where it normalises by what it sees."""
    try:
        net = restore.network(MODEL)
    except ModuleNotFoundError as missing:
        return print(f"not checked: how training goes on: {missing}; install the Debian package python3-onnx")
    batch = torch.from_numpy(pictures.transpose(0, 3, 1, 2).astype(np.float32))
    exported_agrees(program, folder, restore.settle(net, [batch]), False, 1e-3, MODEL)
    other = copy.deepcopy(net)
    with torch.no_grad():
        next(other.parameters()).mul_(3)  # a convolution's, which normalising takes back
    exported_agrees(program, folder, averaged.averaged(net, other, 0.5, [batch]), False, 0.01, MODEL)
    with torch.no_grad():
        apart = float((torch.sigmoid(net(batch)) - torch.sigmoid(net.train()(batch))).abs().max())
    check(apart < 1e-3, f"the first step of training sees another network: {apart:.2g} apart")


def main(program):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        pixels, quads = draw(folder)
        turned_targets_agree(pixels[0], quads[0])
        common = [name, str(folder / "run"), "--side", "64", "--batch", "32", "--pool", "1", "--rate", "0.01"]
        first = train.train(train.parsed([*common, "--steps", "1"]))
        last = train.train(train.parsed([*common, "--steps", "10"]))
        print(f"loss {first:.3f} after one step, {last:.3f} over nine more")
        check(0 < last < 1.1 * first, "ten steps made it worse")
        checkpoint = folder / "run" / "last.pt"
        check(torch.load(checkpoint)["step"] == 10, "the run did not go on from its checkpoint")
        for floats, tolerance in ((True, 1e-4), (False, 0.05)):
            exported_agrees(program, folder, export.load(checkpoint), floats, tolerance)
        training_goes_on(program, folder, pixels)


if __name__ == "__main__":
    main(sys.argv[1])
