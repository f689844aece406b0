"""Invented documents, drawn and photographed with seeded randomness.

Lengths on paper and desk are millimetres, x to the right and y down; pixels count from the
picture's top-left corner, where the first pixel covers 0..1. Colours are RGB, 0..255.
"""
