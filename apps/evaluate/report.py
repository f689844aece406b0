"""The result as one HTML page: it holds its pictures itself and asks no network for anything.

The page shows pictures of documents: it is as personal as they are.
"""

import base64
import html
import io
import os

from PIL import Image, ImageDraw, ImageOps

import plots
from labels import Unusable
from tables import shown

_MOST = 200  # pictures of a fault
_SIDE = 560  # pixels
_FOUND, _KNOWN = "#ff7a00", "#00b7ff"

_PAGE = """<!doctype html>
<html lang="en"><head><meta charset="utf-8"><title>{title}</title>
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; img-src data:; style-src 'unsafe-inline'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<style>
body {{ font: 15px/1.45 sans-serif; color: #222; background: #fff; max-width: 1200px; margin: 2em auto; padding: 0 1em }}
table {{ border-collapse: collapse; margin: 1em 0 }} td, th {{ padding: .25em .8em; border-bottom: 1px solid #ddd; text-align: right }}
td:first-child, th:first-child {{ text-align: left }}
img {{ max-width: 100%; height: auto }} figure {{ margin: 0 0 1.5em }} figcaption {{ font-size: 13px; overflow-wrap: anywhere }}
.faults {{ display: grid; grid-template-columns: 1fr 1fr; gap: 2em }} .found {{ color: #c55e00 }} .known {{ color: #0080b4 }}
</style></head><body>
<h1>{title}</h1>
<p>{pictures} pictures, of which {passports} are passports. This page shows pictures of documents: treat it as you treat them.</p>
{body}
</body></html>
"""


def folder(path):
    """Makes the folder, before hours are spent on what could not be written."""
    try:
        os.makedirs(path, exist_ok=True)
        with open(os.path.join(path, "index.html"), "a", encoding="utf-8"):
            pass
    except OSError as error:
        raise Unusable(f"{error.filename}: {error.strerror}") from None


def _text(text):
    return html.escape(shown(text))


def _image(kind, data, alternative):
    return f'<img alt="{_text(alternative)}" src="data:image/{kind};base64,{base64.b64encode(data).decode()}">'


def _outlined(path, found, known):
    """The picture, small and upright, with outlines in shares of its sides; JPEG."""
    with Image.open(path) as picture:
        picture.draft("RGB", (_SIDE, _SIDE))
        small = ImageOps.exif_transpose(picture).convert("RGB")
    small.thumbnail((_SIDE, _SIDE))
    draw = ImageDraw.Draw(small)
    for corners, colour, width in ((known, _KNOWN, 3), (found, _FOUND, 4)):
        if corners:
            points = [(x * (small.width - 1), y * (small.height - 1)) for x, y in corners]
            draw.line([*points, *points[:2]], fill=colour, width=width, joint="curve")
    written = io.BytesIO()
    small.save(written, "JPEG", quality=80)
    return written.getvalue()


def _figure(picture, entries):
    """entries: title of a run -> what it said, of the runs that are wrong about the picture."""
    said = next(iter(entries.values()))
    try:
        image = _image("jpeg", _outlined(picture.path, said.get("corners"), said.get("known")), picture.name)
    except (OSError, SyntaxError, ValueError) as error:
        image = f"<p>(cannot be shown: {_text(str(error))})</p>"
    numbers = [f"confidence {said['confidence']:.3f}"] + [f"overlap {said['overlap']:.2f}" for _ in range("overlap" in said)]
    reasons = "".join(f"<br>{_text(reason)}" for reason in said.get("reasons", []))
    return (f"<figure>{image}<figcaption><b>{_text(picture.name)}</b> ({_text(picture.kind)}), {', '.join(numbers)}; "
            f"wrong: {'; '.join(map(html.escape, entries))}{reasons}</figcaption></figure>")


def _faults(pictures, combinations, called):
    """The pictures that were called wrongly: passports, or others."""
    wrong = []
    for number, picture in enumerate(pictures):
        entries = {plots.title(run): run["pictures"][number] for run in combinations
                   if run["pictures"][number].get("isPassport") == called and called != (picture.kind in run["passports"])}
        if entries:
            wrong.append((picture, entries))
    more = f"<p>... and {len(wrong) - _MOST} more</p>" if len(wrong) > _MOST else ""
    name = "Others called passports" if called else "Passports missed"
    return f"<div><h2>{name}: {len(wrong)}</h2>{''.join(_figure(*fault) for fault in wrong[:_MOST])}{more}</div>"


def _table(combinations):
    def share(counts):
        return f"{sum(count['calledPassport'] for count in counts.values())} of {sum(count['judged'] for count in counts.values())}"

    heads = ("", "passports called passports", "others called passports", "no verdict", "median ms", "90th percentile ms", "peak MiB")
    rows = [heads] + [(plots.title(run), share(run["passports"]), share(run["others"]), run["noVerdict"],
                       *(f"{run[name]:.0f}" for name in ("medianMilliseconds", "p90Milliseconds", "peakMemoryMiB")))
                      for run in combinations]
    return "<table>" + "".join("<tr>" + "".join(f"<{cell}>{html.escape(str(value))}</{cell}>" for value in row) + "</tr>"
                               for row, cell in zip(rows, ["th"] + ["td"] * len(combinations))) + "</table>"


def _unjudged(combinations):
    failed = {(entry["file"], entry["error"]) for run in combinations for entry in run["pictures"] if "error" in entry}
    items = "".join(f"<li>{_text(name)}: {_text(cause)}</li>" for name, cause in sorted(failed))
    return f"<h2>Not judged</h2><ul>{items}</ul>" if failed else ""


def write(path, manifest, pictures, combinations):
    body = [_table(combinations)]
    for name, plot in (("Hits by kind", plots.hits), ("Delays", plots.delays), ("Confidence", plots.confidence),
                       ("Overlap of outlines with the known ones", plots.overlaps)):
        png = plot(combinations)
        body.append(f"<h2>{name}</h2>" + (_image("png", png, name) if png else "<p>None is known.</p>"))
    body.append('<p>Below: <b class="found">outline found</b>, <b class="known">outline known</b>.</p>')
    body.append(f'<div class="faults">{_faults(pictures, combinations, False)}{_faults(pictures, combinations, True)}</div>')
    body.append(_unjudged(combinations))
    page = _PAGE.format(title=f"Evaluation: {_text(manifest)}", pictures=len(pictures), body="\n".join(body),
                        passports=sum(picture.kind in combinations[0]["passports"] for picture in pictures))
    with open(os.path.join(path, "index.html"), "w", encoding="utf-8", errors="replace") as file:
        file.write(page)
