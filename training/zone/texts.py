"""What the lines of a machine-readable zone say, drawn at random: names, numbers, whole zones, other print."""

from drawing.zone import check_digit

ALPHABET = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789<"
_LETTERS, _DIGITS = ALPHABET[:26], ALPHABET[26:36]
# How often letters stand in names of many languages, roughly.
_COMMON = ("AAAAAAAAAAABBCCDDDEEEEEEEEEFGGHHHHIIIIIIIIJJKKKKLLLLLMMMMNNNNNNNNOOOOOOOPPQRRRRRRRSSSSSSTTTTTUUUUVVWXYYYZZ")
_SYLLABLES = ("AN MA RI KA SON OVA SKI EZ MO HAM MED NGU YEN KHA TUN AL EL IN HO SEN BER MAN STEIN WIC ZAK CHUK ENKO "
              "IAN POU LOS DA SIL VA DOS SAN TOS FER NAN DE GAR CIA LO PEZ MUL LER SCH MIDT WEB JOHN WIL LIAMS BROWN "
              "ABD UL RAH AH FAT IMA YUS UF IBRA HIM OG LU YIL MAZ KIM LEE PARK CHOI WANG ZHANG XIAO JING QIN "
              "TRAN PHAM THI VAN HUY SIN GH KUM AR PA TEL RAJ SHA RMA OLU WA TOY IN ADE BAYO CHI NWE KE OKA FOR "
              "TA NA KA SU ZU KI YA MO TO HI RO ITO IVA NOV PET ROV ALEK SAN DR JEAN LUC MARC PHIL IPPE O BRI EN "
              "MC DON ALD LIND QVIST BJO RN SVEN JOR GEN NIEL DIM ITRA GEOR GIOU AGN ES JO ZE FA BE LA NE ME TH").split()
_STATES = "D<< UTO GBR USA FRA BGD IND CHN ESP ITA POL NLD CAN BRA TUR EGY NGA PAK PHL IDN VNM UKR SWE ZAF".split()


def _pick(rng, values):
    return values[int(rng.integers(len(values)))]


def _run(rng, characters, length):
    return "".join([characters[i] for i in rng.integers(0, len(characters), length)])


def name(rng, most=10):
    """One name: of syllables, of letters as common as in names, or of letters all alike; a name has no check digit."""
    length, kind = int(rng.integers(2, most + 1)), rng.random()
    if kind < 0.45:
        built = ""
        while len(built) < length:
            built += _pick(rng, _SYLLABLES)
        return built[:most]
    return _run(rng, _COMMON if kind < 0.7 else _LETTERS, length)


def _names(rng, length):
    surname = "<".join(name(rng) for _ in range(_pick(rng, (1, 1, 1, 2, 2, 3))))
    given = "<".join(name(rng) for _ in range(_pick(rng, (0, 1, 1, 1, 2, 2, 3))))
    return (surname + ("<<" + given if given else "")).ljust(length, "<")[:length]


def _mixed(rng, length):
    # Digits twice as often as in an even draw: three of five.
    return _run(rng, _LETTERS + _DIGITS * 4, length)


def _number(rng):
    length, kind = _pick(rng, (7, 8, 9, 9, 9, 9)), rng.random()
    if kind < 0.06:
        number = "0" * length
    elif kind < 0.65:
        letters = int(rng.integers(0, 4))
        number = _run(rng, _LETTERS, letters) + _run(rng, _DIGITS, length - letters)
    else:
        number = _mixed(rng, length)
    return _checked(number.ljust(9, "<"))


def _checked(text):
    return text + check_digit(text)


def _date(rng):
    return f"{int(rng.integers(100)):02d}{int(rng.integers(1, 13)):02d}{int(rng.integers(1, 32)):02d}"


def _optional(rng, length):
    used = _pick(rng, (0, 0, length, int(rng.integers(1, length + 1))))
    return (_run(rng, _DIGITS, used) if rng.random() < 0.65 else _mixed(rng, used)).ljust(length, "<")


def _state(rng):
    return _pick(rng, _STATES) if rng.random() < 0.35 else _run(rng, _LETTERS, 3)


def _person(rng):
    # Birth, sex, expiry and their digits, as every layout but the French one has them.
    return _checked(_date(rng)), _pick(rng, "MMFF<"), _checked(_date(rng))


def _book(rng, length, letters):
    # Two lines: passports, visas, the larger cards.
    number, (born, sex, expires) = _number(rng), _person(rng)
    tail = _optional(rng, length - 30)
    digits = "<" if not tail.strip("<") and rng.random() < 0.5 else check_digit(tail)
    first = _pick(rng, letters) + _pick(rng, "<<<<<OPSDNM") + _state(rng) + _names(rng, length - 5)
    return [first, number + _state(rng) + born + sex + expires + tail + digits
            + check_digit(number + born + expires + tail + digits)]


def _card(rng):
    # Three lines of 30.
    number, (born, sex, expires) = _number(rng), _person(rng)
    first = _pick(rng, "IAC") + _pick(rng, "<<DR") + _state(rng) + number + _optional(rng, 15)
    second = born + sex + expires + _state(rng) + _optional(rng, 11)
    return [first, second + _pick(rng, _DIGITS), _names(rng, 30)]


def _french_card(rng):
    # The layout of 36 that French identity cards had: surname and office; number, given names, birth, sex.
    office = _run(rng, _DIGITS, 3) + (_run(rng, _DIGITS, 3) if rng.random() < 0.7 else "<<<")
    first = "ID" + ("FRA" if rng.random() < 0.8 else _state(rng)) + _names(rng, 25).replace("<<", "<").ljust(25, "<")
    given = "<<".join(name(rng, 8) for _ in range(_pick(rng, (1, 2, 2)))).ljust(14, "<")[:14]
    second = _checked(_run(rng, _DIGITS, 12)) + given + _checked(_date(rng)) + _pick(rng, "MF")
    return [first + office, second + check_digit(first + office + second)]


def zone(rng):
    """Two or three lines of equal length over ALPHABET."""
    kind = rng.random()
    if kind < 0.52:
        return _book(rng, 44, "PPPPPV")
    if kind < 0.66:
        return _card(rng)
    if kind < 0.77:
        return _book(rng, 36, "IACPV")
    if kind < 0.84:
        return _french_card(rng)
    # Anything, so that the network reads what it sees and not what usually stands there.
    characters = _pick(rng, (ALPHABET, ALPHABET, _LETTERS, _LETTERS + _DIGITS, _DIGITS))
    return [_run(rng, characters, 44) for _ in range(2)]


def other(rng, words):
    """A line of ordinary print, which is no zone."""
    parts = []
    for _ in range(words):
        kind, word = rng.random(), name(rng)
        if kind < 0.4:
            parts.append(word.capitalize())
        elif kind < 0.6:
            parts.append(word)
        elif kind < 0.8:
            parts.append(word.lower() + _pick(rng, ("", "", ",", ".", ":", "/")))
        elif kind < 0.9:
            parts.append(f"{int(rng.integers(1, 32))}.{int(rng.integers(1, 13))}.{int(rng.integers(1930, 2040))}")
        else:
            parts.append(str(int(rng.integers(0, 10 ** 7))))
    return " ".join(parts)
