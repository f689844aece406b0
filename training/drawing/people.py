"""Invented people: names that say so themselves, numbers that nobody issued."""

from dataclasses import dataclass
from datetime import date

_SURNAMES = {
    "BGD": ["NAMUNA", "SPECIMEN", "UDAHARAN", "EXEMPLAR", "NAMUNA SPECIMEN", "MUSTER"],
    "UTO": ["MUSTER", "SPECIMEN", "EXEMPLAR", "VAN DER MUSTER", "ÉCHANTILLON", "MUESTRA",
            "VZOR-SPECIMEN"],
}
_GIVEN = {
    "F": ["SAMPLE KHATUN", "MOCK ARA", "PROBA NINA", "ANNA EXEMPLA", "FICTIVA ROSE", "TESSA"],
    "M": ["SAMPLE ALI", "MOCK UDDIN", "PROBUS JAN", "FICTUS PAUL", "TESTO LUCA", "OTTO NORMAL"],
}
_PLACES = {"BGD": ["DHAKA", "KHULNA", "SYLHET", "BARISAL", "RANGPUR"],
           "UTO": ["ZENITH", "NOWHERE", "AMAUROT", "MEADOWVALE", "SANDBAR"]}
_AUTHORITIES = {"BGD": ["DIP/EXAMPLE", "DIP/SPECIMEN"], "UTO": ["PASSPORT OFFICE", "CITY OF AMAUROT"]}
_STREETS = ["EXAMPLE ROAD", "SPECIMEN LANE", "MODEL STREET", "NAMUNA SARAK"]
_RELATIONS = {"F": ["SISTER", "AUNT", "COUSIN"], "M": ["BROTHER", "UNCLE", "COUSIN"]}
_MONTHS = ["JAN", "FEB", "MAR", "APR", "MAY", "JUN", "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"]


@dataclass(frozen=True)
class Person:
    """What a document says of its holder. Texts are upper case; state is the three-letter code."""

    state: str
    surname: str
    given: str
    sex: str
    born: date
    place: str
    number: str
    personal_number: str
    issued: date
    expires: date
    authority: str
    father: str
    mother: str
    spouse: str
    address: tuple
    emergency_name: str
    emergency_relation: str
    emergency_address: tuple
    telephone: str

    @property
    def sex_in_zone(self):
        """M, F or the filler, as the machine-readable zone has it."""
        return self.sex if self.sex in ("M", "F") else "<"


def spelled(day):
    """A date as 05 MAR 1990."""
    return f"{day.day:02d} {_MONTHS[day.month - 1]} {day.year}"


def _pick(rng, values):
    return values[int(rng.integers(len(values)))]


def _day(rng, first_year, last_year):
    # No day after the 28th, so that the same day exists ten years later.
    return date(int(rng.integers(first_year, last_year + 1)), int(rng.integers(1, 13)), int(rng.integers(1, 29)))


def _digits(rng, count):
    return "".join(str(d) for d in rng.integers(0, 10, count))


def _address(rng, state):
    country = "0000, BANGLADESH" if state == "BGD" else "00000 UTOPIA"
    return (f"{int(rng.integers(1, 99))} {_pick(rng, _STREETS)}", f"{_pick(rng, _PLACES[state])} {country}")


def invent(rng, state):
    """A Person of state 'BGD' or 'UTO', drawn from rng (numpy Generator)."""
    sex = _pick(rng, ["F", "M"])
    issued = _day(rng, 2018, 2025)
    born = _day(rng, 1950, 2004)
    surname = _pick(rng, _SURNAMES[state])
    women, men = (rng.permutation(_GIVEN[s]).tolist() for s in "FM")  # no name twice in one family
    given = (women if sex == "F" else men).pop()
    emergency_sex = _pick(rng, ["F", "M"])
    emergency = (women if emergency_sex == "F" else men).pop()
    prefix = _pick(rng, ["ZZ", "ZX", "ZY"] if state == "BGD" else ["UT", "XQ", "C0"])
    return Person(
        state=state, surname=surname, given=given, sex=sex, born=born,
        place=_pick(rng, _PLACES[state]), number=prefix + "00" + _digits(rng, 5),
        personal_number=str(born.year) + "00000" + _digits(rng, 4) if state == "BGD" else "",
        issued=issued, expires=issued.replace(year=issued.year + 10),
        authority=_pick(rng, _AUTHORITIES[state]),
        father=f"{men.pop()} {surname}", mother=f"{women.pop()} {surname}",
        spouse=_pick(rng, ["", (men if sex == "F" else women).pop()]),
        address=_address(rng, state), emergency_name=f"{emergency} {surname}",
        emergency_relation=_pick(rng, _RELATIONS[emergency_sex]),
        emergency_address=_address(rng, state),
        telephone="+000 0000 " + _digits(rng, 4))
