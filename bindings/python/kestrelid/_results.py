"""What the detector says. What a document says is personal data: repr() never shows it, and no log should."""

from __future__ import annotations

import dataclasses
import datetime
from typing import Optional, Tuple

Point = Tuple[float, float]  # x and y from the picture's top left corner, as shares of its width and height
Outline = Tuple[Point, Point, Point, Point]  # from the top left clockwise


@dataclasses.dataclass(frozen=True, repr=False)
class Result:
    """Whether a picture shows a passport. Evidence, not proof: whether it is genuine or valid is not looked at."""

    is_passport: bool
    confidence: float  # 0 to 1
    reasons: tuple[str, ...]  # outline, keywords, zone, or "Invalid image" alone; nothing of what the document says
    recognized_text: str  # the lines read off the picture: personal data

    def __repr__(self) -> str:
        return f"<{type(self).__name__}: {'passport' if self.is_passport else 'not a passport'}, {self._rest()}>"

    def _rest(self) -> str:
        return f"confidence {self.confidence:.3f}"


@dataclasses.dataclass(frozen=True, repr=False)
class Examination(Result):
    """The verdict of judge(), what it was reached by, and the machine-readable zones."""

    outline: Optional[Outline]  # the document in which the text was read, where one was found
    matches: tuple[KeywordMatch, ...]  # in the order of the detector's table
    zones: tuple[Zone, ...]  # from the top of the picture down

    def _rest(self) -> str:
        return f"{super()._rest()}, zones: {len(self.zones)}"


@dataclasses.dataclass(frozen=True)
class KeywordMatch:
    """An entry of the detector's table that the text holds."""

    keyword: str
    distance: int  # edits between the entry and the text


@dataclasses.dataclass(frozen=True, repr=False)
class Zone:
    """A machine-readable zone."""

    format: str  # "TD3", for example
    is_strict: bool  # read without contradiction; says nothing of whether the document is genuine
    lines: tuple[str, ...]  # as printed, after corrections
    fields: tuple[ZoneField, ...]  # as printed
    problems: tuple[ZoneProblem, ...]  # why it is not strict
    corners: Optional[Outline]  # as it is read; None: of a text
    pixels_per_character: float  # 0: unknown

    def field(self, kind: str) -> Optional[ZoneField]:
        """The first field of a kind, "dateOfBirth" for example."""
        return next((field for field in self.fields if field.kind == kind), None)

    def __repr__(self) -> str:
        return f"<Zone: {self.format}, {'strict' if self.is_strict else 'not strict'}>"


@dataclasses.dataclass(frozen=True, repr=False)
class ZoneField:
    """A field of a zone. None: it has no such thing, or that is not known."""

    kind: str  # "documentNumber", for example
    text: str  # for people
    characters: str  # as printed, after corrections, fillers included
    check_digit: str  # "none", "passed" or "failed"
    corrections: int  # characters that were taken for others than those read best
    doubtful: int  # characters that might be others
    year: Optional[int]  # with its century, if as_of was given
    two_digit_year: Optional[int]
    month: Optional[int]
    day: Optional[int]
    state: Optional[str]  # its name in English; "" for a code that is not known
    is_perhaps_truncated: bool  # names that fill their field

    @property
    def date(self) -> Optional[datetime.date]:
        """The whole day, if all of it is known."""
        if self.year is None or self.month is None or self.day is None:
            return None
        try:
            return datetime.date(self.year, self.month, self.day)
        except ValueError:  # the 30th of February, which is a problem of the zone
            return None

    def __repr__(self) -> str:
        return f"<ZoneField: {self.kind}, check digit: {self.check_digit}>"


@dataclasses.dataclass(frozen=True)
class ZoneProblem:
    """Why a zone is not to be trusted. Names places and fields, never what stands there."""

    kind: str  # "checkDigitFailed", for example
    text: str  # one line for a person
