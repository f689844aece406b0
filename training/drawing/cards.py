"""Identity cards and visas of Utopia with the zones that they have; no passports, and none says that it is one."""

from . import zone
from .passports import field, holder, print_zone
from .people import invent, spelled
from .sheet import Document
from .utopia import paper

_CARD_MM = (85.6, 54.0)  # Doc 9303-5
_LARGE_MM = (105.0, 74.0)  # Doc 9303-6, and visas of size B
_VISA_MM = (120.0, 80.0)  # Doc 9303-7, size A


def _drawn(rng, size, title, lines_of, margin, leading=6.35):
    # lines_of: a Person's zone. margin: mm from the last line's baseline to the lower edge.
    person = invent(rng, "UTO")
    sheet, label = paper(rng, str(rng.choice(["blue", "rose", "sand"])), size)
    unit = size[0] / _CARD_MM[0]
    sheet.text(4 * unit, 4.6 * unit, "UTOPIA", "bold", 3.0 * unit, label)
    sheet.text(81.6 * unit, 4.6 * unit, title, "bold", 2.7 * unit, label, "rs")
    holder(sheet, rng, person, 4 * unit, 6.6 * unit, 19.5 * unit)
    rows = [("Name", f"{person.surname}, {person.given}"), ("Card number", person.number),
            ("Born", f"{spelled(person.born)}, {person.place}"),
            ("Valid until", spelled(person.expires))]
    for position, (name, value) in enumerate(rows):
        field(sheet, 27 * unit, (8.6 + 6.0 * position) * unit, name, value, 54 * unit, "bold", 2.7 * unit, label, 2.1 * unit)
    sheet.stamp(64 * unit, 27 * unit, "SPECIMEN", 5.0 * unit, (170, 30, 40), 0.45, 8)
    lines = lines_of(person)
    print_zone(sheet, lines, (size[0] - len(lines[0]) * 2.54) / 2, size[1] - margin, leading=leading)
    return Document(sheet.array(), "other-id", lines, 3.2, 0.8)


def identity_card(rng):
    """A Document with three lines of 30."""
    return _drawn(rng, _CARD_MM, "IDENTITY CARD / CARTE D'IDENTITÉ", zone.td1, 3.8, 5.4)


def large_identity_card(rng):
    """A Document with two lines of 36."""
    return _drawn(rng, _LARGE_MM, "IDENTITY CARD / CARTE D'IDENTITÉ", zone.td2, 5.8)


def french_layout(rng):
    """A Document whose two lines of 36 are laid out as on French cards until 2021."""
    return _drawn(rng, _LARGE_MM, "IDENTITY CARD / CARTE D'IDENTITÉ", zone.french_card, 5.8)


def visa(rng):
    """A Document with two lines of 44, on a sticker of 120 x 80 mm."""
    return _drawn(rng, _VISA_MM, "VISA", lambda person: zone.visa(person, zone.TD3_LENGTH), 5.8)


def small_visa(rng):
    """A Document with two lines of 36, on a sticker of 105 x 74 mm."""
    return _drawn(rng, _LARGE_MM, "VISA", lambda person: zone.visa(person, zone.TD2_LENGTH), 5.8)
