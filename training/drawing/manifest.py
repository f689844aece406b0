"""The truth that goes with pictures: one line each in manifest.tsv."""

from pathlib import Path

COLUMNS = ("file", "kind", "quad_tl_tr_br_bl", "mrz1", "mrz2", "mrz3", "licence", "shows")
_ABSENT = "-"


def row(name, kind, quad):
    """The first three of COLUMNS. quad: a document's outline as seen, 4 x 2 pixels from the
    picture's top-left corner, or None; rounded corners are extended to where the edges would meet."""
    return name, kind, _ABSENT if quad is None else ";".join(f"{x:.2f},{y:.2f}" for x, y in quad)


def full_row(name, scene, recipe):
    """All of COLUMNS for a scenes.Scene drawn of recipe."""
    lines = (*scene.zone, _ABSENT, _ABSENT, _ABSENT)[:3]
    kind, quad = (scene.kinds[0], scene.quads[0]) if scene.kinds else ("other-scene", None)
    return *row(name, kind, quad), *lines, "drawn by this project", recipe.shows()


def write(folder, rows):
    """Writes folder/manifest.tsv from rows, all with the same number of COLUMNS."""
    lines = ["\t".join(values) for values in (COLUMNS[:len(rows[0])] if rows else COLUMNS, *rows)]
    Path(folder, "manifest.tsv").write_text("\n".join(lines) + "\n", encoding="utf-8")
