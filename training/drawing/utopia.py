"""Passport pages of Utopia (UTO), the example state of ICAO Doc 9303."""

from . import portrait, zone
from .guilloche import security_paper
from .passports import PAGE_MM, field, holder, print_zone
from .people import invent, spelled
from .sheet import Document, Sheet

_ZONE_LEFT = (PAGE_MM[0] - 44 * 2.54) / 2
_LOOKS = {  # tints of the paper, its inks, and the colour of labels
    "blue": ([(224, 232, 242), (240, 236, 232), (220, 228, 242)],
             [(196, 208, 230), (226, 206, 208), (192, 210, 226)], (54, 66, 110)),
    "rose": ([(242, 228, 226), (244, 240, 224), (236, 226, 240)],
             [(232, 206, 202), (210, 214, 226), (228, 204, 220)], (110, 48, 62)),
    "sand": ([(240, 234, 216), (228, 238, 228), (240, 234, 216)],
             [(220, 210, 184), (196, 218, 206), (224, 204, 178)], (88, 66, 36)),
}


def paper(rng, look, size=PAGE_MM):
    """Security paper of size (width, height in mm): (Sheet, the colour of labels). look: "blue", "rose" or "sand"."""
    tints, inks, label = _LOOKS[look]
    return Sheet.of(security_paper(rng, *size, tints, inks)), label


def _finish(sheet, person):
    lines = zone.td3(person)
    print_zone(sheet, lines, _ZONE_LEFT, 82.2)
    return Document(sheet.array(), "passport-drawn", lines, 3.0, 0.8)


def classic(rng):
    """A Document: English and French labels, portrait on the left."""
    person = invent(rng, "UTO")
    sheet, label = paper(rng, "blue")
    sheet.text(5, 7.2, "UTOPIA", "serif-bold", 5.2, label)
    sheet.text(43, 7.2, "PASSPORT / PASSEPORT", "bold", 4.2, label)
    holder(sheet, rng, person, 5, 12, 34, ghost=(106, 37, 13))
    field(sheet, 43, 12.4, "Type / Type", "P", 18, colour=label)
    field(sheet, 65, 12.4, "Code / Code", "UTO", 18, colour=label)
    field(sheet, 89, 12.4, "Passport No. / No.", person.number, 32, size=3.7, colour=label)
    rows = [("Surname / Nom", person.surname), ("Given names / Prénoms", person.given),
            ("Nationality / Nationalité", "UTOPIAN"),
            ("Date of birth / Date de naissance", spelled(person.born)),
            ("Place of birth / Lieu de naissance", person.place),
            ("Date of issue / Date de délivrance", spelled(person.issued)),
            ("Date of expiry / Date d'expiration", spelled(person.expires))]
    for position, (name, value) in enumerate(rows):
        field(sheet, 43, 19.4 + 6.8 * position, name, value, 56, colour=label)
    field(sheet, 104, 33.0, "Sex / Sexe", person.sex, 17, colour=label)
    field(sheet, 88, 60.2, "Authority / Autorité", person.authority, 32, colour=label, size=2.8)
    sheet.place(portrait.signature(rng), 7, 57, 27, 8)
    sheet.stamp(76, 36, "SPECIMEN", 15, (170, 60, 70), 0.14, 18)
    sheet.stamp(22, 50, "SPECIMEN", 6, (170, 30, 40), 0.55, 10)
    return _finish(sheet, person)


def trilingual(rng):
    """A Document: English, German and Spanish labels, portrait on the right, light capitals."""
    person = invent(rng, "UTO")
    sheet, label = paper(rng, "rose")
    sheet.text(6, 6.6, "REPUBLIC OF UTOPIA", "bold", 3.8, label)
    sheet.text(6, 11.2, "PASSPORT · REISEPASS · PASAPORTE", "bold", 3.3, label)
    holder(sheet, rng, person, 86, 8, 33, ghost=(64, 32, 15))
    field(sheet, 6, 16.8, "TYPE / TYP / TIPO", "P", 26, "sans", colour=label, label_size=2.5)
    field(sheet, 36, 16.8, "CODE", "UTO", 12, "sans", colour=label, label_size=2.5)
    field(sheet, 52, 16.8, "PASSPORT NO. / NR.", person.number, 30, "bold", 3.6, label, 2.5)
    rows = [("SURNAME / NAME / APELLIDOS", person.surname),
            ("GIVEN NAMES / VORNAMEN", person.given),
            ("NATIONALITY / STAATSANGEHÖRIGKEIT", "UTOPIAN"),
            ("DATE OF BIRTH / GEBURTSDATUM", spelled(person.born)),
            ("PLACE OF BIRTH / GEBURTSORT", person.place),
            ("DATE OF ISSUE / AUSSTELLUNGSDATUM", spelled(person.issued)),
            ("DATE OF EXPIRY / GÜLTIG BIS", spelled(person.expires))]
    for position, (name, value) in enumerate(rows):
        field(sheet, 6, 23.0 + 6.55 * position, name, value, 56, "sans", colour=label, label_size=2.5)
    field(sheet, 66, 56.0, "SEX", person.sex, 12, "sans", colour=label, label_size=2.5)
    field(sheet, 82, 56.0, "AUTHORITY / BEHÖRDE", person.authority, 37, "sans", 3.0, label, 2.5)
    sheet.place(portrait.signature(rng), 84, 60, 26, 8)
    sheet.stamp(48, 44, "SPECIMEN", 15, (90, 70, 130), 0.14, 22)
    sheet.stamp(102, 46, "MUSTER", 6, (170, 30, 40), 0.5, 10)
    return _finish(sheet, person)


def columns(rng):
    """A Document: English labels in two columns, a large serif face, a narrow portrait."""
    person = invent(rng, "UTO")
    sheet, label = paper(rng, "sand")
    sheet.box(0, 0, 125, 9.6, fill=label)
    sheet.text(6, 6.9, "PASSPORT", "serif-bold", 5.0, (250, 246, 234))
    sheet.text(119, 6.9, "UTOPIA", "serif-bold", 5.0, (250, 246, 234), "rs")
    holder(sheet, rng, person, 6, 14, 30)
    cells = [[("Passport number", person.number), ("Country code", "UTO")],
             [("Surname", person.surname), ("Nationality", "UTOPIAN")],
             [("Given names", person.given), ("Sex", person.sex)],
             [("Date of birth", spelled(person.born)), ("Place of birth", person.place)],
             [("Date of issue", spelled(person.issued)),
              ("Date of expiry", spelled(person.expires))],
             [("Issuing authority", person.authority)]]
    for row, cell in enumerate(cells):
        for column, (name, value) in enumerate(cell):
            field(sheet, 41 + 42 * column, 16.0 + 9.2 * row, name, value, 40, "serif-bold", 3.7, label, 2.9)
    sheet.place(portrait.signature(rng), 7, 54.5, 28, 9)
    sheet.stamp(84, 42, "SPECIMEN", 14, (140, 90, 40), 0.15, 20)
    sheet.stamp(106, 63, "SPECIMEN", 5.5, (170, 30, 40), 0.5, 0)
    return _finish(sheet, person)
