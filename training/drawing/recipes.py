"""What a picture is to show: chosen at random, or the dozen of the folder samples/."""

from dataclasses import dataclass

from . import cards, papers, passports, utopia
from .desks import DESKS

KINDS = {  # what may be asked for: its layouts
    "passport-drawn": {
        "bangladesh-page": passports.bangladesh_page, "bangladesh-spread": passports.bangladesh_spread,
        "utopia-classic": utopia.classic, "utopia-trilingual": utopia.trilingual,
        "utopia-columns": utopia.columns},
    "other-id": {"identity-card": cards.identity_card},
    "other-zone": {
        "identity-card": cards.identity_card, "large-identity-card": cards.large_identity_card,
        "french-layout": cards.french_layout, "visa": cards.visa, "small-visa": cards.small_visa},
    "other-document": {"receipt": papers.receipt, "letter": papers.letter, "blank": papers.blank},
    "other-scene": {"none": None},
}
LAYOUTS = {name: draw for layouts in KINDS.values() for name, draw in layouts.items()}
SIZES = ((1280, 720), (1280, 960), (960, 1280))


@dataclass(frozen=True)
class Recipe:
    """All that scenes.photographed needs beside a seed."""

    layout: str  # a key of LAYOUTS
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

    def shows(self):
        """One line for the manifest."""
        words = [self.layout.replace("-", " ") if self.layout != "none" else "no document"]
        words.append("scan filling the picture" if self.fills else f"on {self.desk}")
        turns = {1: "turned a quarter clockwise", 2: "upside down", 3: "turned a quarter anticlockwise"}
        for holds, word in ((self.turn, turns.get(self.turn)), (self.in_hand, "in hand"),
                            (self.things, "cluttered"), (self.exposure < 0.55, "dim"),
                            (self.shadow > 0, "shadow"), (self.glare > 0, "glare")):
            if holds:
                words.append(word)
        return ", ".join(words)


def random_recipe(rng, kind, size=None):
    """A Recipe of kind drawn from rng (numpy Generator); size None draws one of SIZES."""
    layout = str(rng.choice(list(KINDS[kind])))
    size = size or SIZES[int(rng.integers(len(SIZES)))]
    fills = layout != "none" and rng.random() < 0.06
    in_hand = kind in ("passport-drawn", "other-id", "other-zone") and not fills and rng.random() < 0.15
    dim = rng.random() < 0.15
    return Recipe(
        layout, str(rng.choice(sorted(DESKS))), size,
        # A hand needs room on the right.
        share=rng.uniform(0.55, 0.78 if in_hand else 0.95),
        offset=(rng.uniform(-0.9, -0.3 if in_hand else 0.9), rng.uniform(-0.9, 0.9)),
        turn=int(rng.choice(4, p=[0.55, 0.15, 0.15, 0.15])), roll=rng.normal(0, 7), tilt=rng.normal(0, 13),
        yaw=rng.normal(0, 9), fills=fills, in_hand=in_hand,
        things=int(rng.integers(2, 6)) if rng.random() < 0.4 else 0,
        exposure=rng.uniform(0.25, 0.5) if dim else rng.uniform(0.75, 1.12),
        warmth=rng.uniform(-0.5, 1.0), falloff=rng.uniform(0.1, 0.5),
        shadow=rng.uniform(0.2, 0.5) if rng.random() < 0.3 else 0.0,
        glare=rng.uniform(0.2, 0.7) if rng.random() < 0.15 else 0.0, focus=abs(rng.normal(0.3, 0.5)),
        motion=rng.uniform(2, 6) if rng.random() < 0.1 else 0.0,
        noise=rng.uniform(5, 11) if dim else rng.uniform(1, 5), quality=int(rng.integers(62, 93)))


SAMPLES = {  # file: (seed, recipe)
    "bangladesh-on-wood.jpg": (11, Recipe(
        "bangladesh-page", "wood", share=0.86, roll=-4, tilt=9, yaw=-4)),
    "bangladesh-spread.jpg": (12, Recipe(
        "bangladesh-spread", "cloth", (960, 1280), share=0.97, roll=1, tilt=4, yaw=2, warmth=0.4)),
    "bangladesh-in-hand.jpg": (13, Recipe(
        "bangladesh-page", "plain", share=0.80, offset=(-0.55, -0.2), roll=3, tilt=6, yaw=7,
        in_hand=True, things=3)),
    "bangladesh-dim.jpg": (14, Recipe(
        "bangladesh-page", "wood", share=0.84, roll=5, tilt=7, exposure=0.42, warmth=0.9,
        falloff=0.4, noise=6.0)),
    "utopia-perspective.jpg": (15, Recipe(
        "utopia-classic", "stone", share=0.92, roll=-9, tilt=24, yaw=10, offset=(0, 0.2),
        shadow=0.3)),
    "utopia-quarter-turn.jpg": (16, Recipe(
        "utopia-trilingual", "cloth", (960, 1280), share=0.85, turn=1, roll=-3, tilt=6, things=3)),
    "utopia-scan.jpg": (17, Recipe(
        "utopia-columns", size=(1280, 901), fills=True, warmth=0.0, falloff=0.0, focus=0.4,
        noise=1.5)),
    "bangladesh-upside-down.jpg": (18, Recipe(
        "bangladesh-page", "plain", share=0.82, turn=2, roll=4, tilt=-6, yaw=4, things=4)),
    "identity-card.jpg": (19, Recipe(
        "identity-card", "wood", share=0.66, roll=-6, tilt=10, things=2)),
    "receipt.jpg": (20, Recipe("receipt", "stone", (960, 1280), share=0.80, roll=6, tilt=8)),
    "letter.jpg": (21, Recipe("letter", "wood", (960, 1280), share=0.93, roll=-2, tilt=10, yaw=-3)),
    "desk.jpg": (22, Recipe("none", "wood", (1280, 720), share=0.42, tilt=14, things=6)),
}
