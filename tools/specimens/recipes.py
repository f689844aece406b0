"""What a picture is to show, and pictures chosen at random."""

from dataclasses import dataclass

from .desks import DESKS

KINDS = {  # kind, as the manifest names it: its layouts
    "passport-drawn": ("bangladesh-page", "bangladesh-spread", "utopia-classic",
                       "utopia-trilingual", "utopia-columns"),
    "other-id": ("identity-card",),
    "other-document": ("receipt", "letter", "blank"),
    "other-scene": ("none",),
}
SIZES = ((1280, 720), (1280, 960), (960, 1280))


@dataclass(frozen=True)
class Recipe:
    """All that draw_picture needs beside a seed."""

    layout: str  # one of KINDS' layouts
    desk: str = "wood"  # a key of desks.DESKS
    size: tuple = (1280, 960)  # width, height of the picture in pixels
    share: float = 0.85  # of the picture's tighter side that the document takes
    offset: tuple = (0.0, 0.0)  # -1..1, from the middle to the picture's edges
    turn: int = 0  # clockwise quarter turns, 0..3
    roll: float = 0.0  # degrees, added to the turn
    tilt: float = 0.0  # degrees, lowers the far edge
    yaw: float = 0.0  # degrees, lowers the right edge
    fills: bool = False  # scanned: the document's outline is the picture's border
    in_hand: bool = False
    things: int = 0  # on the desk beside the document
    exposure: float = 1.0
    warmth: float = 0.2  # -1 blue .. 1 orange
    falloff: float = 0.25  # 0 even light .. 1 dark corners
    shadow: float = 0.0  # 0..1
    glare: float = 0.0  # 0..1
    focus: float = 0.5  # deviation of the blur in pixels
    motion: float = 0.0  # pixels
    noise: float = 2.5  # deviation at mid grey, in steps of 255
    quality: int = 78  # of the JPEG

    @property
    def kind(self):
        """The manifest's word for it."""
        return next(kind for kind, layouts in KINDS.items() if self.layout in layouts)

    def shows(self):
        """One line for the manifest."""
        words = [self.layout.replace("-", " ") if self.layout != "none" else "no document"]
        words.append("scan filling the picture" if self.fills else f"on {self.desk}")
        turns = {1: "turned a quarter clockwise", 2: "upside down",
                 3: "turned a quarter anticlockwise"}
        for holds, word in ((self.turn, turns.get(self.turn)), (self.in_hand, "in hand"),
                            (self.things, "cluttered"), (self.exposure < 0.55, "dim"),
                            (self.shadow > 0, "shadow"), (self.glare > 0, "glare")):
            if holds:
                words.append(word)
        return ", ".join(words)


def random_recipe(rng, kind, size=None):
    """A Recipe of kind drawn from rng (numpy Generator); size None draws one of SIZES."""
    layout = str(rng.choice(KINDS[kind]))
    size = size or SIZES[int(rng.integers(len(SIZES)))]
    fills = layout != "none" and rng.random() < 0.06
    in_hand = kind in ("passport-drawn", "other-id") and not fills and rng.random() < 0.15
    dim = rng.random() < 0.15
    return Recipe(
        layout=layout, desk=str(rng.choice(sorted(DESKS))), size=size,
        # A hand needs room on the right.
        share=float(rng.uniform(0.55, 0.78 if in_hand else 0.95)),
        offset=(float(rng.uniform(-0.9, -0.3 if in_hand else 0.9)), float(rng.uniform(-0.9, 0.9))),
        turn=int(rng.choice(4, p=[0.55, 0.15, 0.15, 0.15])), roll=float(rng.normal(0, 7)),
        tilt=float(rng.normal(0, 13)), yaw=float(rng.normal(0, 9)), fills=fills, in_hand=in_hand,
        things=int(rng.integers(2, 6)) if rng.random() < 0.4 else 0,
        exposure=float(rng.uniform(0.25, 0.5) if dim else rng.uniform(0.75, 1.12)),
        warmth=float(rng.uniform(-0.5, 1.0)), falloff=float(rng.uniform(0.1, 0.5)),
        shadow=float(rng.uniform(0.2, 0.5)) if rng.random() < 0.3 else 0.0,
        glare=float(rng.uniform(0.2, 0.7)) if rng.random() < 0.15 else 0.0,
        focus=float(abs(rng.normal(0.3, 0.5))),
        motion=float(rng.uniform(2, 6)) if rng.random() < 0.1 else 0.0,
        noise=float(rng.uniform(5, 11) if dim else rng.uniform(1, 5)),
        quality=int(rng.integers(62, 93)))
