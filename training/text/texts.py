"""What lines of documents say, at random: labels, names, dates, numbers, sentences, lines of machine-readable zones."""

import re
import unicodedata
import zlib
from dataclasses import dataclass

from zone import texts as zone_texts

from . import words
from .alphabet import ALPHABET

GAP = "\t"  # in what is drawn: a space so wide that columns stand apart; it reads as one space
_LETTERS, _DIGITS, _PRINTED = "ABCDEFGHIJKLMNOPQRSTUVWXYZ", "0123456789", ALPHABET[:94]
# Those without a decomposition.
_PLAIN = str.maketrans({
    "ı": "i", "ł": "l", "Ł": "L", "đ": "d", "Đ": "D", "ø": "o", "Ø": "O", "ß": "ss", "æ": "ae", "Æ": "AE",
    "œ": "oe", "Œ": "OE", "þ": "th", "Þ": "Th", "ð": "d", "Ð": "D", "°": "o", "º": "o", "ª": "a", GAP: " "})
# Shapes that are taken for each other. A small l stands beside no I: in many fonts only the word tells them apart.
_ALIKE = ("0O 0OD 0OQ 1I 1I7 1l 5S 8B 8B3 2Z 6G 0O1I 5S8B 0O1I5S8B2Z UV VY 4A CG PR EF MN TI1 9g 6b ce hb un rnm "
          "vwy ijl").split()
_WORD = re.compile("[A-Za-z]{4,}")
# With this salt no word that every passport has, such as Passport, Surname, Nationality or Birth, is held out.
_SALT = 474


def plain(text):
    """text with ASCII characters only: letters without their accents."""
    decomposed = unicodedata.normalize("NFKD", text.translate(_PLAIN))
    return "".join(c for c in decomposed if not unicodedata.combining(c))


def held_words(text):
    """Words of four letters or more of text that are never drawn in training: one in twelve of all words."""
    return [word for word in _WORD.findall(plain(text)) if zlib.crc32(word.lower().encode(), _SALT) % 12 == 0]


@dataclass(frozen=True)
class Phrase:
    """What is drawn, with accents and GAP; zone: as a line of a machine-readable zone."""

    drawn: str
    zone: bool = False

    @property
    def text(self):
        """What the network shall read."""
        return plain(self.drawn)


class _Pool:
    # Texts that may be drawn in training, and those that hold a held-out word.
    def __init__(self, values):
        self._values = [v for v in values if not held_words(v)], [v for v in values if held_words(v)]

    def pick(self, rng, held_out=False):
        return _pick(rng, self._values[held_out])

    def early(self, rng):
        # The first ones more often: English, then French, Spanish, German, Portuguese, Italian.
        values = self._values[False]
        return values[int(len(values) * rng.random() ** 2)]


def _pick(rng, values):
    return values[int(rng.integers(len(values)))]


def _run(rng, characters, length):
    return "".join([characters[i] for i in rng.integers(0, len(characters), length)])


_LABELS = [_Pool(row) for row in words.LABELS if any(not held_words(label) for label in row)]
_ANY_LABEL = _Pool(sum(words.LABELS, []))
_NAMES, _PLACES, _COUNTRIES, _OTHERS = map(_Pool, (words.NAMES, words.PLACES, words.COUNTRIES, words.OTHERS))


def _cased(rng, text):
    kind = rng.random()
    changed = text if kind < 0.5 else text.upper() if kind < 0.8 else text.title() if kind < 0.93 else text.lower()
    return "".join(c for c in unicodedata.normalize("NFC", changed) if not unicodedata.combining(c))


def _label(rng, held_out):
    return _ANY_LABEL.pick(rng, True) if held_out else _pick(rng, _LABELS).early(rng)


def _numbered(rng, text):
    number, mark = int(rng.integers(1, 20)), _pick(rng, "abcd")
    forms = (f"({number}) ", f"({number})", f"{number}. ", f"{number}.", f"{number} ", f"{number}) ",
             f"{number}{mark}. ", f"[{number}] ", f"{number}/ ", f"{number:02d} ")
    return _pick(rng, forms) + text


def _one_label(rng, held_out):
    text = _cased(rng, _label(rng, held_out))
    kind = rng.random()
    if kind < 0.15:
        return _numbered(rng, text)
    if kind < 0.22:
        return text + f" ({int(rng.integers(1, 20))})"
    if kind < 0.3:
        return f"{text} ({_cased(rng, _label(rng, False))})"
    return text + (":" if kind < 0.42 else "")


def _pair(rng, held_out):
    row = _pick(rng, _LABELS)
    count = 3 if rng.random() < 0.12 else 2
    parts = [row.early(rng) if rng.random() < 0.85 else _label(rng, False) for _ in range(count)]
    # Whole forms are held out, too: a slash glued to the second label, a dash.
    join = _pick(rng, ("/", "/", "/", " / ", " / ", "/ ", "/ ", " . "))
    if held_out:
        if rng.random() < 0.5:
            join = _pick(rng, (" /", " - "))
        else:
            parts[int(rng.integers(count))] = _label(rng, True)
    same = rng.random() < 0.75
    text = _cased(rng, join.join(parts)) if same else join.join(_cased(rng, part) for part in parts)
    return _numbered(rng, text) if rng.random() < 0.15 else text


def _date(rng, held_out):
    day, month, year = int(rng.integers(1, 32)), int(rng.integers(1, 13)), int(rng.integers(1925, 2045))
    first, second = _pick(rng, words.MONTHS[:10])[month - 1], _pick(rng, words.MONTHS)[month - 1]
    if held_out:
        return _pick(rng, (f"{day:02d}-{first.upper()}-{year}", f"{year}/{month:02d}/{day:02d}"))
    kind = int(rng.integers(20))
    if kind < 4:
        return f"{day:02d} {first.upper()} {year}"
    if kind < 7:
        join = _pick(rng, ("/", "/", " /", " / "))
        return f"{day:02d} {first.upper()}{join}{second.upper()} {year if rng.random() < 0.5 else f'{year % 100:02d}'}"
    if kind < 10:
        return f"{day:02d}.{month:02d}.{year}" if rng.random() < 0.8 else f"{day}.{month}.{year % 100:02d}"
    if kind < 14:
        join = _pick(rng, "//- ")
        return f"{day:02d}{join}{month:02d}{join}{year if rng.random() < 0.85 else f'{year % 100:02d}'}"
    if kind == 14:
        return f"{year}-{month:02d}-{day:02d}"
    if kind == 15:
        return f"{second} {day}, {year}"
    if kind == 16:
        return f"{day}. {second} {year}"
    if kind == 17:
        first = first.upper()
        return _pick(rng, (f"{year}.{month:02d}.{day:02d}", f"{day:02d}{first}{year}", f"{day:02d}/{first}/{year}"))
    return f"{day} {second} {year}" if kind == 18 else f"{day:02d} {first} {year}"


def _syllables(rng, held_out):
    while True:
        word = zone_texts.name(rng, int(rng.integers(4, 12))).capitalize()
        if bool(held_words(word)) == held_out:
            return word


def _name(rng, held_out):
    count = _pick(rng, (1, 1, 1, 1, 2, 2, 2, 3))
    held = int(rng.integers(count)) if held_out else -1
    parts = [_NAMES.pick(rng, i == held) if rng.random() < 0.65 else _syllables(rng, i == held) for i in range(count)]
    join, kind = _pick(rng, (" ",) * 9 + (", ", "-", " - ")), rng.random()
    text = join.join(parts)
    return text.upper() if kind < 0.65 else text if kind < 0.95 else text.lower()


def _place(rng, held_out):
    kind = rng.random()
    pool = _PLACES if kind < 0.6 else _COUNTRIES
    text = pool.pick(rng, held_out)
    if kind < 0.15:
        more = _COUNTRIES.pick(rng) if rng.random() < 0.6 else _pick(rng, words.CODES)
        text += _pick(rng, (", ", " ", "/", " - ", ",")) + more
    elif kind < 0.25:
        text = f"{int(rng.integers(1, 400))}{_pick(rng, ('', '', '/', ','))} {_OTHERS.pick(rng)} {text}"
    elif kind < 0.3:
        text = f"{_run(rng, _DIGITS, int(rng.integers(4, 7)))} {text}"
    return _cased(rng, text) if rng.random() < 0.5 else text.upper()


def _grouped(rng, digits):
    # Digits in groups, as telephone and account numbers have them.
    size, join = int(rng.integers(2, 5)), _pick(rng, (" ", " ", "-", ".", "/"))
    return join.join(digits[i:i + size] for i in range(0, len(digits), size))


def _number(rng):
    kind, digits = int(rng.integers(13)), _run(rng, _DIGITS, int(rng.integers(2, 15)))
    if kind < 3:
        return _run(rng, _LETTERS, int(rng.integers(1, 4))) + _pick(rng, ("", "", "", " ", "-")) + digits[:9]
    if kind < 5:
        return digits
    if kind == 5:
        return _grouped(rng, digits)
    if kind == 6:
        return _run(rng, _LETTERS + _DIGITS * 3, int(rng.integers(5, 13)))
    if kind == 7:
        amount = f"{rng.uniform(0, 10 ** rng.uniform(1, 6)):,.2f}"
        if rng.random() < 0.5:
            amount = amount.translate(str.maketrans(",.", _pick(rng, (".,", " ,", "'."))))
        before, after = ("", "", "$", "$ ", "EUR ", "USD ", "Tk ", "-"), ("", "", "", " EUR", "%", " kg", " km")
        return _pick(rng, before) + amount + _pick(rng, after)
    if kind == 8:
        tall = int(rng.integers(40, 100))
        return _pick(rng, (f"1.{tall} m", f"1,{tall} m", f"1{tall} cm", f"1.{tall}", f"1{tall}cm", f"1.{tall}m"))
    if kind == 9:
        return _pick(rng, ("No. ", "No ", "N° ", "Nº", "Nr. ", "# ", "#", "ID ", "NO.", "+", "*")) + digits
    if kind == 10:
        return f"{int(rng.integers(24))}:{int(rng.integers(60)):02d}" + _pick(rng, ("", ":00", " h", " PM", "-18:30"))
    if kind == 11:
        return "-".join(_run(rng, _DIGITS, int(rng.integers(1, 8))) for _ in range(3))
    return _pick(rng, ("M", "F", "P", "M/M", "F/F", "F/K", "M/E", "PN", "X"))


def _alike(rng):
    kind = rng.random()
    if kind < 0.5:
        return _run(rng, _pick(rng, _ALIKE) * 3 + (_DIGITS if kind < 0.1 else ""), int(rng.integers(2, 10)))
    if kind < 0.85:
        return _run(rng, "0O0O1I1I5S8B2Z6GDQ" + (_DIGITS if kind < 0.7 else _LETTERS), int(rng.integers(3, 11)))
    return _run(rng, _LETTERS + _DIGITS, int(rng.integers(3, 11)))


def _any_characters(rng):
    characters = _PRINTED + "".join(c for c in _PRINTED if not c.isalnum()) * 2  # signs are rare elsewhere
    return " ".join(_run(rng, characters, int(rng.integers(2, 9))) for _ in range(_pick(rng, (1, 1, 2, 3))))


def _sentence(rng, held_out):
    every = _pick(rng, words.SENTENCES).split() if rng.random() < 0.8 else [
        _pick(rng, (_OTHERS, _NAMES, _COUNTRIES, _PLACES)).pick(rng) for _ in range(12)]
    count = 3 + int(10 * rng.random() ** 2)  # short ones more often, as with zones
    if held_out:
        held = [i for i, word in enumerate(every) if held_words(word)]
        if not held:
            return _sentence(rng, True)
        start = max(0, _pick(rng, held) - int(rng.integers(count)))
        return " ".join(every[start:start + count])
    every = [word for word in every if not held_words(word)]
    start = int(rng.integers(max(1, len(every) - count + 1)))
    text = " ".join(every[start:start + count])
    return text.upper() if rng.random() < 0.12 else text


def _word(rng, held_out):
    return _cased(rng, _pick(rng, (_OTHERS, _OTHERS, _NAMES, _COUNTRIES)).pick(rng, held_out))


def _single(rng):
    kind = rng.random()
    if kind < 0.85:
        return _pick(rng, _LETTERS if kind < 0.55 else _DIGITS)
    return _pick(rng, "abdefghikmnpqrtuy" if kind < 0.95 else "#%&()*+/<=?@$")


def _columns(rng, held_out):
    # Texts of one row of a form that the detector took for one line.
    parts = [_pick(rng, (_value, _value, _one_label))(rng, False) for _ in range(_pick(rng, (2, 2, 2, 3)))]
    if held_out:
        parts[0] = _one_label(rng, True)
    return GAP.join(parts)


def _value(rng, held_out):
    kind = int(rng.integers(5))
    if kind < 3:
        return (_name, _date, _place)[kind](rng, held_out)
    return _number(rng) if kind == 3 else _pick(rng, words.CODES)


def _label_and_value(rng, held_out):
    return _one_label(rng, held_out) + _pick(rng, (" ", ": ", ":", " : ")) + _value(rng, False)


def zone_line(rng):
    """A line of a zone or a piece of one; never with a space."""
    line = _pick(rng, zone_texts.zone(rng))
    kind = rng.random()
    if kind < 0.25:
        return line
    # Short pieces more often: long lines cost the training most.
    length = 4 + int((len(line) - 4) * rng.random() ** 2) if kind < 0.9 else int(rng.integers(1, 6))
    start = _pick(rng, (0, len(line) - length, int(rng.integers(len(line) - length + 1))))
    piece = line[start:start + length]
    return piece if piece.strip("<") or rng.random() < 0.2 else zone_line(rng)


# How often, of 100 lines; whether lines of a kind may hold held-out words or forms.
_KINDS = ((_one_label, 13, True), (_pair, 7.5, True), (_label_and_value, 2, True), (_name, 12, True), (_place, 6, True),
          (_date, 9, True), (_sentence, 6, True), (_word, 6.5, True), (_columns, 2.5, True), (zone_line, 18, False),
          (_number, 8, False), (_alike, 5, False), (_any_characters, 3, False), (_single, 3, False), (None, 3, False))


def phrase(rng, held_out=False):
    """A Phrase at random, empty in three of a hundred; held_out: one with a held-out word or form, or a zone's line."""
    kinds = [kind for kind in _KINDS if kind[2] or not held_out or kind[0] is zone_line]
    left = rng.random() * sum(kind[1] for kind in kinds)
    for draw, share, may_hold in kinds:
        left -= share
        if left < 0:
            break
    if draw is None:
        return Phrase("")
    while True:
        drawn = draw(rng, held_out) if may_hold else draw(rng)
        if may_hold and rng.random() < 0.3:
            drawn = plain(drawn.replace(GAP, "\n")).replace("\n", GAP)
        if held_out or not held_words(drawn):
            return Phrase(drawn, draw is zone_line)
