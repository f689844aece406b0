"""The machine-readable zone: its lines and their check digits (ICAO Doc 9303-3 to -7)."""

import re
import unicodedata

TD3_LENGTH = 44  # Doc 9303-4: passports, two lines
TD1_LENGTH = 30  # Doc 9303-5: cards, three lines
TD2_LENGTH = 36  # Doc 9303-6: larger cards, two lines
_WEIGHTS = (7, 3, 1)


def check_digit(text):
    """The check digit, '0'..'9', over digits, A..Z and the filler '<'."""
    total = 0
    for position, character in enumerate(text):
        if character == "<":
            value = 0
        elif character.isdigit():
            value = int(character)
        else:
            value = ord(character) - ord("A") + 10
        total += value * _WEIGHTS[position % 3]
    return str(total % 10)


def transliterated(text):
    """Text as the zone holds it: A..Z, 0..9, and '<' for every run of anything else."""
    plain = unicodedata.normalize("NFKD", text.upper().replace("'", ""))
    plain = "".join(c for c in plain if not unicodedata.combining(c))
    return re.sub("[^A-Z0-9]+", "<", plain).strip("<")


def names_field(surname, given, length):
    """Surname, two fillers, given names, filled up or cut to length."""
    return f"{transliterated(surname)}<<{transliterated(given)}".ljust(length, "<")[:length]


def _with_digit(text, length):
    filled = transliterated(text).ljust(length, "<")[:length]
    return filled + check_digit(filled)


def _date(day):
    return day.strftime("%y%m%d")


def td3(person, document_type="P"):
    """The two lines of a passport of person, 44 characters each."""
    first = _first_of_two(person, document_type, TD3_LENGTH)
    number, born, expires, second = _second_of_two(person)
    personal = _with_digit(person.personal_number, 14)
    if not person.personal_number:
        personal = "<" * 15  # Doc 9303-4 4.2.2.2: an empty number may carry a filler as its digit
    return first, second + personal + check_digit(number + born + expires + personal)


def td2(person, document_type="I"):
    """The two lines of a larger card of person, 36 characters each."""
    number, born, expires, second = _second_of_two(person)
    optional = "<" * 7
    second += optional + check_digit(number + born + expires + optional)
    return _first_of_two(person, document_type, TD2_LENGTH), second


def visa(person, length, document_type="V"):
    """The two lines of a visa of person (Doc 9303-7): length 44 of size A, 36 of size B. No digit over the whole."""
    return _first_of_two(person, document_type, length), _second_of_two(person)[-1].ljust(length, "<")


def french_card(person):
    """The two lines of a French identity card as issued until 2021, 36 characters each.

    Surname and office; number, given names, birth, sex. Layout: PRADO, document FRA-BO-02002.
    """
    office = person.number[-3:] + person.personal_number[-3:].rjust(3, "0")
    first = ("IDFRA" + transliterated(person.surname)).ljust(30, "<")[:30] + office
    number = _with_digit(f"{person.issued:%y%m}{office[:3]}{person.number[-5:]}", 12)
    given = transliterated(person.given.replace(" ", "<<")).ljust(14, "<")[:14]
    second = number + given + _with_digit(_date(person.born), 6) + person.sex_in_zone
    return first, second + check_digit(first + second)


def _first_of_two(person, document_type, length):
    return document_type.ljust(2, "<") + person.state + names_field(person.surname, person.given, length - 5)


def _second_of_two(person):
    # Number, birth and expiry with their digits, and the line as far as the expiry.
    number = _with_digit(person.number, 9)
    born, expires = _with_digit(_date(person.born), 6), _with_digit(_date(person.expires), 6)
    return number, born, expires, number + person.state + born + person.sex_in_zone + expires


def td1(person, document_type="I"):
    """The three lines of a card of person, 30 characters each."""
    number = _with_digit(person.number, 9)
    first = (document_type.ljust(2, "<") + person.state + number).ljust(TD1_LENGTH, "<")
    born, expires = _with_digit(_date(person.born), 6), _with_digit(_date(person.expires), 6)
    optional = "<" * 11
    digit = check_digit(first[5:] + born + expires + optional)
    second = born + person.sex_in_zone + expires + person.state + optional + digit
    return first, second, names_field(person.surname, person.given, TD1_LENGTH)
