"""Invented specimen documents, drawn and photographed with seeded randomness.

draw_picture(recipe, seed) gives one picture with its truth; all else is a step on the way to it.
Lengths on paper and desk are millimetres, x to the right and y down; pixels count from the
picture's top-left corner, where the first pixel covers 0..1. Colours are RGB.
"""

from .scene import Picture, draw_picture
from .recipes import KINDS, Recipe, random_recipe

__all__ = ["KINDS", "Picture", "Recipe", "draw_picture", "random_recipe"]
