"""The pictures of the folder samples/: a dozen that show what the detector meets."""

from .recipes import Recipe

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
