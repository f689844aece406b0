"""Puts document, desk, hand and light together and takes the picture."""

from dataclasses import dataclass

import cv2
import numpy as np

from . import brush, camera, clutter, desks, light, papers, passports, utopia
from .hand import Hand
from .recipes import Recipe

_LAYOUTS = {
    "bangladesh-page": passports.bangladesh_page, "bangladesh-spread": passports.bangladesh_spread,
    "utopia-classic": utopia.classic, "utopia-trilingual": utopia.trilingual,
    "utopia-columns": utopia.columns,
    "identity-card": utopia.identity_card, "receipt": papers.receipt, "letter": papers.letter,
    "blank": papers.blank,
}
_BARE_MM = (125, 88)  # a desk without document is seen from as near as one with a passport page


@dataclass(frozen=True)
class Picture:
    """pixels: height x width x 3, uint8. quad: 4 x 2 pixels, corners as seen, or None."""

    recipe: Recipe
    pixels: np.ndarray
    quad: np.ndarray
    zone: tuple

    def file_bytes(self):
        """The picture as a JPEG file."""
        return light.jpeg(self.pixels, self.recipe.quality)


def _seen_from(recipe, size_mm):
    if recipe.fills:
        return camera.filling(size_mm, recipe.size, recipe.turn)
    return camera.aimed(size_mm, recipe.size, recipe.share, recipe.roll + 90 * recipe.turn,
                        recipe.tilt, recipe.yaw, recipe.offset)


def _desk(recipe, rng, view, size_mm):
    picture = desks.texture("glass" if recipe.fills else recipe.desk, rng, view)
    if recipe.things:
        clutter.scatter(picture, rng, view, size_mm, recipe.things)
    if recipe.in_hand:  # the desk is an arm's length further away, so out of focus
        picture = cv2.GaussianBlur(picture, (0, 0), 6.0) * 0.8
    return picture


def lay(picture, document, view, shadow=True):
    """Lays document over picture (height x width x 3, float32, 0..1, in place) as view sees it."""
    printed = view.project(document.pixels, cv2.BORDER_REPLICATE).astype(np.float32) / 255
    mask = view.project(document.coverage()).astype(np.float32) / 255
    if shadow:
        reach = document.thickness_mm * view.scale()
        brush.cast_shadow(picture, mask, 0.9 * reach, 1.2 * reach, 0.55)
        brush.cast_shadow(picture, mask, 0, 3.5 * reach + 1, 0.30)
    brush.flat(picture, mask, printed)


def draw_picture(recipe, seed):
    """A Picture of what recipe says; equal arguments give equal bytes."""
    print_rng, desk_rng, light_rng = (np.random.default_rng([seed, stream]) for stream in range(3))
    document = _LAYOUTS[recipe.layout](print_rng) if recipe.layout != "none" else None
    size_mm = document.size_mm if document else _BARE_MM
    view = _seen_from(recipe, size_mm)
    picture = _desk(recipe, desk_rng, view, size_mm)
    quad = camera.as_seen(view.pixels(camera.outline(size_mm))) if document else None
    hand = Hand(desk_rng, quad, view.scale()) if document and recipe.in_hand else None
    if hand:
        hand.paint_behind(picture)
    if document:
        lay(picture, document, view, shadow=not (recipe.fills or recipe.in_hand))
    if hand:
        hand.paint_over(picture)

    light.lamp(picture, light_rng, recipe.exposure, recipe.warmth, recipe.falloff)
    if recipe.shadow:
        light.soft_shadow(picture, light_rng, recipe.shadow)
    if recipe.glare and document:
        spot = quad.mean(0) + light_rng.uniform(-0.3, 0.3, 2) * (quad.max(0) - quad.min(0))
        light.glare(picture, light_rng, spot, 12 * view.scale(), recipe.glare)
    picture = light.motion(light.defocus(picture, recipe.focus), light_rng, recipe.motion)
    return Picture(recipe, light.sensed(picture, light_rng, recipe.noise), quad,
                   document.zone if document else ())
