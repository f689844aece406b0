"""Passport pages: a Bangladesh-like booklet, and what all passports share."""

import numpy as np

from . import portrait, zone
from .guilloche import rosette, security_paper, tinted, waves
from .people import invent, spelled
from .sheet import PX_PER_MM, Document, Sheet

PAGE_MM = (125, 88)  # Doc 9303-4: a TD3 page
_GREEN_TINTS = [(226, 238, 222), (243, 239, 219), (222, 236, 232)]
_GREEN_INKS = [(196, 219, 196), (226, 212, 190), (188, 214, 214)]
_LABEL = (52, 78, 66)
_INK = (26, 26, 34)


def print_zone(sheet, lines, left, last_baseline, pitch=2.54, leading=6.35):
    """Prints machine-readable lines in OCR-B, the last one at last_baseline; pitch in mm."""
    size = pitch / sheet.text_width("M", "zone", 1.0)
    for position, line in enumerate(lines):
        baseline = last_baseline - (len(lines) - 1 - position) * leading
        sheet.spaced(left, baseline, line, pitch, size)


def field(sheet, x, y, label, value, width=40, font="bold", size=3.2, colour=_LABEL, label_size=2.7):
    """Prints a label at baseline y and its value under it, both made to fit width."""
    sheet.text(x, y, label, "sans", label_size, colour, width=width)
    sheet.text(x, y + size * 0.98, value, font, size, _INK, width=width)


def holder(sheet, rng, person, left, top, width, ghost=None):
    """Places the portrait, 7:9, and a pale copy of it at ghost (left, top, width)."""
    face = portrait.face(rng, person.sex)
    sheet.place(face, left, top, width, width * 9 / 7)
    if ghost:
        sheet.place(face.convert("L"), ghost[0], ghost[1], ghost[2], ghost[2] * 9 / 7, 0.30)
    return face


def bangladesh_sheet(rng, person):
    """The data page: (Sheet, its two zone lines)."""
    sheet = Sheet.of(security_paper(rng, *PAGE_MM, _GREEN_TINTS, _GREEN_INKS))
    sheet.text(74, 5.0, "গণপ্রজাতন্ত্রী বাংলাদেশ", "bengali", 3.7, (20, 92, 62), "ms")
    sheet.text(74, 9.4, "PEOPLE'S REPUBLIC OF BANGLADESH", "bold", 4.0, (20, 92, 62), "ms")
    sheet.text(5, 8.4, "পাসপোর্ট", "bengali", 3.6, (150, 40, 44))
    sheet.text(5, 12.6, "PASSPORT", "bold", 3.9, (150, 40, 44))
    holder(sheet, rng, person, 5, 15.5, 33, ghost=(106, 20.5, 13))

    left = 43
    field(sheet, left, 14.0, "Type", "P", 10)
    field(sheet, left + 14, 14.0, "Country Code", person.state, 22)
    field(sheet, left + 46, 14.0, "Passport No.", person.number, 32, size=3.8)
    rows = [("Surname", person.surname), ("Given Name", person.given),
            ("Nationality", "BANGLADESHI"),
            ("Date of Birth", spelled(person.born)), ("Sex", person.sex),
            ("Date of Issue", spelled(person.issued)), ("Date of Expiry", spelled(person.expires))]
    for position, (label, value) in enumerate(rows):
        field(sheet, left, 20.9 + 6.75 * position, label, value, 34)
    second = [("Personal No.", person.personal_number), ("Place of Birth", person.place),
              ("Previous Passport No.", ""), ("Issuing Authority", person.authority)]
    for (label, value), row in zip(second, (2, 3, 4, 5)):
        field(sheet, left + 38, 20.9 + 6.75 * row, label, value, 30)
    sheet.place(portrait.signature(rng), left + 36, 57.2, 27, 8)
    sheet.stamp(26, 53.5, "SPECIMEN", 6.2, (178, 30, 40), 0.55, 12)
    sheet.stamp(84, 34, "SPECIMEN", 15, (178, 60, 60), 0.13, 20)
    lines = zone.td3(person)
    print_zone(sheet, lines, (PAGE_MM[0] - 44 * 2.54) / 2, 82.2)
    return sheet, lines


def _contact_sheet(rng, person):
    paper = tinted(_GREEN_TINTS[::-1], *PAGE_MM)
    waves(paper, rng, _GREEN_INKS[0], 1.7)
    rosette(paper, rng, 62, 44, 30, _GREEN_INKS[2])
    sheet = Sheet.of(paper)
    sheet.text(62.5, 8.4, "ব্যক্তিগত তথ্য ও জরুরি যোগাযোগ", "bengali", 3.8, (20, 92, 62), "ms")
    sheet.text(62.5, 13.6, "PERSONAL DATA AND EMERGENCY CONTACT", "bold", 3.9, (20, 92, 62), "ms")
    name = f"{person.given} {person.surname}"
    rows = [("Name", name), ("Father's Name", person.father), ("Mother's Name", person.mother),
            ("Spouse's Name", person.spouse or "N/A"), ("Permanent Address", person.address[0]),
            ("", person.address[1]), ("Emergency Contact", ""), ("Name", person.emergency_name),
            ("Relationship", person.emergency_relation), ("Address", person.emergency_address[0]),
            ("", person.emergency_address[1]), ("Telephone No.", person.telephone)]
    for position, (label, value) in enumerate(rows):
        y = 20.6 + 5.5 * position
        heading = label and not value
        sheet.text(8, y, label, "bold" if heading else "sans", 3.0, _LABEL)
        if not heading:
            sheet.text(44, y, (": " if label else "  ") + value, "bold", 3.1, _INK, width=72)
    sheet.stamp(96, 66, "SPECIMEN", 9, (178, 60, 60), 0.20, 25)
    sheet.text(118, 85, "2", "sans", 2.4, _LABEL)
    return sheet


def _fold(pixels, middle):
    # The pages bend down into the spine, the lower one further from the lamp.
    rows = (np.arange(pixels.shape[0]) - middle) / PX_PER_MM
    depth = np.where(rows < 0, 0.20 * np.exp(rows / 2.0), 0.36 * np.exp(-rows / 3.2))
    stitch = np.where(np.abs(rows) < 0.18, 0.45, 0)
    return (pixels * (1 - np.maximum(depth, stitch))[:, None, None]).round().astype(np.uint8)


def bangladesh_page(rng):
    """A Document: the data page alone."""
    sheet, lines = bangladesh_sheet(rng, invent(rng, "BGD"))
    return Document(sheet.array(), "passport-drawn", lines, 3.0, 0.8)


def bangladesh_spread(rng):
    """A Document: the page of personal data and emergency contact above the data page."""
    person = invent(rng, "BGD")
    sheet, lines = bangladesh_sheet(rng, person)
    upper = _contact_sheet(rng, person).array()
    pixels = _fold(np.concatenate([upper, sheet.array()]), upper.shape[0])
    return Document(pixels, "passport-drawn", lines, 3.0, 1.2)
