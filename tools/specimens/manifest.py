"""The truth that goes with pictures: one line each in manifest.tsv."""

from pathlib import Path

COLUMNS = ("file", "kind", "quad_tl_tr_br_bl", "mrz1", "mrz2", "licence", "shows")
_LICENCE = "drawn by this project"
_ABSENT = "-"


def row(name, picture):
    """The values of COLUMNS for a scene.Picture saved as name.

    The quadrilateral is the document's outline as seen, top-left first and clockwise, in pixels
    from the picture's top-left corner; rounded corners are extended to where the edges would meet.
    The zone's lines are given for passports only.
    """
    quad = _ABSENT
    if picture.quad is not None:
        quad = ";".join(f"{x:.2f},{y:.2f}" for x, y in picture.quad)
    first, second = picture.zone if len(picture.zone) == 2 else (_ABSENT, _ABSENT)
    return name, picture.recipe.kind, quad, first, second, _LICENCE, picture.recipe.shows()


def write(folder, rows):
    """Writes folder/manifest.tsv from rows, each with the values of COLUMNS."""
    lines = ["\t".join(values) for values in (COLUMNS, *rows)]
    Path(folder, "manifest.tsv").write_text("\n".join(lines) + "\n", encoding="utf-8")
