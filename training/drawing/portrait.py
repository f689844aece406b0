"""Drawn faces of geometric shapes, and signatures; they show nobody."""

import numpy as np
from PIL import Image, ImageDraw, ImageFilter

_SKINS = [(236, 200, 172), (214, 168, 132), (178, 128, 92), (141, 96, 66), (104, 70, 50)]
_HAIRS = [(34, 28, 26), (60, 42, 30), (96, 66, 40), (150, 150, 152), (24, 24, 30)]
_CLOTHES = [(52, 66, 92), (88, 44, 52), (44, 78, 70), (70, 70, 78), (198, 196, 190), (110, 84, 56)]


def _shade(colour, factor):
    return tuple(int(max(0, min(255, c * factor))) for c in colour)


def face(rng, sex):
    """A portrait of 420 x 540 pixels (PIL, RGB); sex decides hair only."""
    skin = _SKINS[int(rng.integers(len(_SKINS)))]
    hair = _HAIRS[int(rng.integers(len(_HAIRS)))]
    cloth = _CLOTHES[int(rng.integers(len(_CLOTHES)))]
    wide, tall = 105 + int(rng.integers(-8, 9)), 142 + int(rng.integers(-8, 9))
    cx, cy = 210, 232
    image = Image.new("RGB", (420, 540), (206, 216, 224))
    draw = ImageDraw.Draw(image)

    long_hair = sex == "F"
    if long_hair:
        draw.rounded_rectangle((cx - wide - 34, cy - 120, cx + wide + 34, cy + 230), 110, hair)
    draw.rounded_rectangle((cx - 46, cy + 90, cx + 46, cy + 220), 30, _shade(skin, 0.86))
    draw.ellipse((20, cy + 160, 400, cy + 520), cloth)
    draw.polygon([(cx - 45, cy + 150), (cx + 45, cy + 150), (cx, cy + 236)], _shade(skin, 0.9))
    draw.line([(cx - 50, cy + 158), (cx, cy + 240), (cx + 50, cy + 158)], _shade(cloth, 0.7), 9, "curve")
    if not long_hair:
        for side in (-1, 1):
            draw.ellipse((cx + side * wide - 20, cy - 20, cx + side * wide + 20, cy + 50), _shade(skin, 0.88))
    draw.ellipse((cx - wide - 10, cy - tall - 20, cx + wide + 10, cy + 60), hair)
    draw.ellipse((cx - wide, cy - tall + 18, cx + wide, cy + tall), skin)
    fringe = int(rng.integers(52, 84))
    draw.chord((cx - wide - 2, cy - tall - 12, cx + wide + 2, cy - tall + 2 * fringe + 24), 180, 360, hair)
    shadow = Image.new("L", image.size, 0)
    ImageDraw.Draw(shadow).chord((cx - wide, cy - tall + 18, cx + wide, cy + tall), -75, 75, 70)
    image.paste(Image.new("RGB", image.size, _shade(skin, 0.72)), (0, 0),
                shadow.filter(ImageFilter.GaussianBlur(26)))

    draw = ImageDraw.Draw(image)
    brow = int(rng.integers(5, 10))
    for side in (-1, 1):
        ex, ey = cx + side * 46, cy - 8
        draw.ellipse((ex - 23, ey - 11, ex + 23, ey + 11), (244, 242, 238))
        draw.ellipse((ex - 10, ey - 11, ex + 10, ey + 9), _shade(hair, 0.9))
        draw.ellipse((ex - 4, ey - 6, ex + 1, ey - 1), (250, 250, 250))
        draw.arc((ex - 26, ey - 13, ex + 26, ey + 16), 190, 350, _shade(skin, 0.45), 4)
        draw.arc((ex - 32, ey - 36, ex + 32, ey + 12), 205, 335, _shade(hair, 0.7), brow)
    draw.line([(cx - 4, cy + 6), (cx - 15, cy + 56), (cx + 10, cy + 60)], _shade(skin, 0.66), 5, "curve")
    mouth = _shade(skin, 0.6) if sex == "M" else (168, 84, 84)
    draw.chord((cx - 38, cy + 76, cx + 38, cy + 104), 5, 175, mouth)
    draw.line([(cx - 38, cy + 91), (cx, cy + 94), (cx + 38, cy + 91)], _shade(mouth, 0.7), 4, "curve")
    if rng.random() < 0.3:
        for side in (-1, 1):
            draw.rounded_rectangle((cx + side * 46 - 36, cy - 34, cx + side * 46 + 36, cy + 22),
                                   18, None,
                                   (40, 40, 44), 5)
        draw.line([(cx - 10, cy - 10), (cx + 10, cy - 10)], (40, 40, 44), 5)
    return image.filter(ImageFilter.GaussianBlur(1.6))


def signature(rng, colour=(30, 34, 80)):
    """A scribble of 600 x 200 pixels on nothing (PIL, RGBA)."""
    image = Image.new("RGBA", (1200, 400), colour + (0,))
    draw = ImageDraw.Draw(image)
    t = np.linspace(0, 1, 420)
    loops = rng.uniform(5, 9)
    height = 110 * (1 - 0.7 * t) * (0.6 + 0.4 * np.sin(2 * np.pi * (3 * t + rng.random())))
    x = 80 + 980 * t + rng.uniform(30, 60) * np.sin(2 * np.pi * loops * t)
    y = 210 + height * np.sin(2 * np.pi * loops * t + 1.3)
    y += 26 * np.sin(2 * np.pi * (t + rng.random()))
    points = list(zip(x.tolist(), y.tolist()))
    for position in range(len(points) - 1):
        draw.line(points[position:position + 2], colour + (255,), int(6 + 4 * np.sin(0.15 * position)))
    draw.line([(120, 330), (700, 318), (1100, 300)], colour + (255,), 6, "curve")
    return image.resize((600, 200), Image.LANCZOS)
