#!/usr/bin/python3
"""The zone network: what drawn strips say, ten steps of training, the export. Exit status 77: a package is missing."""

import contextlib
import io
import sys
import tempfile
import unittest
from dataclasses import replace
from pathlib import Path
from unittest import mock

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "training"))
try:
    import numpy as np
    import torch
    from drawing.sheet import MissingPackage
    from zone import export, glyphs, grounds, measure, net, shards, sheets, strips, texts, train, views

    for row in glyphs.TRAINED_ON + glyphs.HELD_OUT + glyphs.PRINT:
        glyphs.font_path(*row[:2])
except ImportError as missing:
    print(f"skipped: {missing}; install python3-torch, python3-pil, python3-numpy and python3-opencv")
    sys.exit(77)
except MissingPackage as missing:
    print(f"skipped: {missing}")
    sys.exit(77)


class DrawnTest(unittest.TestCase):
    def test_places_are_where_the_ink_is(self):
        for name, changed in {"plain": {}, "tilted": dict(tilt=2), "flat": dict(squeeze=0.75), "coarse": dict(pitch=6),
                              "low": dict(offset=0.3), "slanted": dict(slant=0.1), "uneven": dict(keystone=0.1)}.items():
            rng, view = np.random.default_rng(3), replace(views.View(), **changed)
            sheet = sheets.Sheet(view, strips.WIDTH)
            sheet.write(rng, ["H0X8" * 5], 0, sheet.left + 20, view, glyphs.alphabet(rng, glyphs.TRAINED_ON[:1]))
            ink, places = strips.seen(rng, sheet, view, strips.WIDTH)
            for _, x, y in places:
                top, left = max(0, int(y - 0.8 * view.pitch)), max(0, int(x - 0.5 * view.pitch))
                box = ink[top:int(y + 0.8 * view.pitch) + 1, left:int(x + 0.5 * view.pitch) + 1]
                middle = (np.indices(box.shape) * box).sum((1, 2)) / box.sum() + [top + 0.5, left + 0.5]
                self.assertLess(np.abs(middle - [y, x]).max(), 0.2 * view.pitch, name)

    def test_hidden_places_are_not_read_and_none_is_half_hidden(self):
        view, paper = views.View(pitch=10), np.full((20, 100), 200, np.float32)
        places = [(c, 10 * i + 5, 10) for i, c in enumerate("AB<C0D<<12")]
        always = mock.Mock(random=lambda: 0.1, uniform=lambda low, high: low)
        for covered, text in ((slice(20, 50), "ABD<<12"), (slice(100), ""), (slice(20, 47), "AB<C0D<<12"),
                              (slice(52, 54), "AB<C0D<<12")):
            cover = np.zeros_like(paper)
            cover[:, covered] = 1
            with mock.patch.object(strips, "_cover", lambda *_: cover):
                read = strips.hidden(always, paper, paper - 150, np.ones_like(paper), places, view)[1]
            self.assertEqual(read, text, covered)

    def test_zones_have_the_shape_of_their_layout(self):
        zones = [texts.zone(np.random.default_rng(seed)) for seed in range(300)]
        self.assertEqual({(len(z), *map(len, z)) for z in zones}, {(2, 44, 44), (2, 36, 36), (3, 30, 30, 30)})
        self.assertLessEqual(set("".join(sum(zones, []))), set(texts.ALPHABET))


class TrainingTest(unittest.TestCase):
    def test_ten_steps_then_the_export_answers_as_the_network(self):
        with tempfile.TemporaryDirectory() as folder, contextlib.redirect_stdout(io.StringIO()):
            papers = grounds.Grounds(grounds.security_prints(np.random.default_rng(1), 2), [])
            pixels, said = shards.draw_shard(0, papers, 48)
            again = shards.draw_shard(0, papers, 48)
            self.assertTrue(np.array_equal(pixels, again[0]) and np.array_equal(said, again[1]))
            np.savez(Path(folder, "0000.npz"), pixels=pixels, said=said)
            common = [folder, folder + "/run", "--batch", "16", "--pool", "1", "--steps"]
            first = train.train(train.parsed([*common, "1"]))
            self.assertLess(train.train(train.parsed([*common, "10"])), first)
            checkpoint, model = Path(folder, "run", "last.pt"), Path(folder, "net.onnx")
            self.assertEqual(torch.load(checkpoint)["step"], 10)
            lines = torch.from_numpy(strips.normalised(pixels[:3]))
            with torch.no_grad():
                wanted = export.load(checkpoint)(lines)
                self.assertEqual(wanted.shape, (3, net.CLASSES, strips.WIDTH // net.COLUMNS))
                for floats, apart in ((True, 1e-3), (False, 0.1)):
                    written = export.exported(export.load(checkpoint), model, floats)
                    self.assertLess(float((written(lines) - wanted).abs().max()), apart)
            self.assertLess(model.stat().st_size, 900_000)

    def test_decoding(self):
        for columns, text in (([1, 1, 0, 1, 2], "AAB"), ([0] * 4, ""), ([37, 37, 1, 1], "<A"), ([0, 36, 0, 27], "90")):
            self.assertEqual(measure.greedy(np.eye(net.CLASSES)[columns].T), text)


if __name__ == "__main__":
    unittest.main()
