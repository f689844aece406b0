"""Papers that are no identity documents: receipts, letters, blank sheets."""

from .portrait import signature
from .sheet import Document, Sheet

_GOODS = ["Oat biscuits", "Brown bread", "Tomatoes 500g", "Ground coffee", "Green tea", "Rice 1kg",
          "Apples 1kg", "Soap bar", "Batteries AA", "Notebook A5", "Orange juice", "Red lentils"]
_SHOPS = ["CORNER SHOP", "THE EXAMPLE GROCER", "MARKET HALL 7"]
_SENTENCES = [
    "Thank you for your letter of last week and for the two samples that came with it.",
    "We have tried both in the workshop, and the darker one kept its colour in the sun.",
    "The delivery should reach you before the end of the month, by rail as usual.",
    "Our garden is doing well this summer; the beans have climbed past the window.",
    "Please let us know whether the smaller frame would suit the room better.",
    "We would be glad to show you the new bench when you are next in town.",
    "The hall is booked for the evening concert, and the choir will start at seven.",
    "If the weather holds, the roof will be finished by the second week of May.",
    "You will find the drawings on the second sheet, with the changes marked in pencil.",
    "Nothing else has changed since we spoke, and the price remains what we agreed.",
]
_INK = (38, 38, 44)


def _wrapped(sheet, text, font, size, width):
    lines, line = [], ""
    for word in text.split():
        longer = f"{line} {word}".strip()
        if line and sheet.text_width(longer, font, size) > width:
            lines.append(line)
            line = word
        else:
            line = longer
    return lines + [line]


def receipt(rng):
    """A Document: a till receipt, 80 mm wide."""
    items = [(name, int(rng.integers(60, 990))) for name in rng.permutation(_GOODS)[:int(rng.integers(6, 11))]]
    sheet = Sheet(80, 74 + 5.2 * len(items), (246, 246, 243))
    sheet.text(40, 11, str(rng.choice(_SHOPS)), "mono-bold", 4.6, _INK, "ms", width=70)
    sheet.text(40, 16.5, "12 Sample Street, Nowhere", "mono", 3.0, _INK, "ms")
    sheet.text(40, 21, f"Receipt {int(rng.integers(1000, 9999))}   Till {int(rng.integers(1, 9))}",
               "mono", 3.0, _INK, "ms")
    y = 30.0
    for name, price in items:
        sheet.text(6, y, name, "mono", 3.3, _INK)
        sheet.text(74, y, f"{price / 100:.2f}", "mono", 3.3, _INK, "rs")
        y += 5.2
    sheet.line([(6, y - 2), (74, y - 2)], _INK, 0.3)
    total = sum(price for _, price in items)
    sheet.text(6, y + 4, "TOTAL", "mono-bold", 4.4, _INK)
    sheet.text(74, y + 4, f"{total / 100:.2f}", "mono-bold", 4.4, _INK, "rs")
    sheet.text(6, y + 10, "CASH", "mono", 3.3, _INK)
    sheet.text(74, y + 10, f"{(total // 1000 + 1) * 10:.2f}", "mono", 3.3, _INK, "rs")
    sheet.text(40, y + 18, "Thank you, come again", "mono", 3.2, _INK, "ms")
    x = 14.0
    while x < 65:
        bar, gap = rng.choice([0.3, 0.6, 0.9]), rng.choice([0.3, 0.6])
        sheet.box(x, y + 22, x + bar, y + 33, fill=_INK)
        x += bar + gap
    return Document(sheet.array(), "other-document", thickness_mm=0.15)


def letter(rng):
    """A Document: a typed letter on A4."""
    sheet = Sheet(210, 297)
    font = str(rng.choice(["serif", "sans"]))
    sheet.text(25, 26, "Sample & Daughters, Joiners", "serif-bold", 6.5, (70, 50, 40))
    sheet.text(25, 32, "4 Workshop Yard, Nowhere", font, 4.2, _INK)
    sheet.line([(25, 36), (185, 36)], (120, 90, 70), 0.4)
    sheet.text(185, 52, f"{int(rng.integers(1, 29))} May", font, 4.8, _INK, "rs")
    sheet.text(25, 68, "Dear friend,", font, 5.0, _INK)
    order = rng.permutation(len(_SENTENCES))
    y = 80.0
    for start in (0, 3, 6):
        paragraph = " ".join(_SENTENCES[i] for i in order[start:start + 3])
        for line in _wrapped(sheet, paragraph, font, 5.0, 160):
            sheet.text(25, y, line, font, 5.0, _INK)
            y += 7.4
        y += 4.5
    sheet.text(25, y + 8, "With kind regards,", font, 5.0, _INK)
    sheet.place(signature(rng), 22, y + 12, 56, 18)
    sheet.text(25, y + 37, "Paula Sample", font, 5.0, _INK)
    return Document(sheet.array(), "other-document", thickness_mm=0.2)


def blank(rng):
    """A Document: a sheet with nothing on it, A5 or A4."""
    width, height = [(148, 210), (210, 297)][int(rng.integers(2))]
    tint = int(rng.integers(236, 253))
    return Document(Sheet(width, height, (tint, tint, tint - 4)).array(), "other-document")
