"""What verdicts and outlines come to: counts, percentiles, overlaps."""

try:
    from PIL import Image
except ModuleNotFoundError:
    raise SystemExit("evaluate: python3-pil is missing: tools/setup installs it") from None

GOOD = 0.8  # overlap from which on an outline counts as found
LARGE = 0.15  # of the picture, as the detector's threshold


def percentile(values, percent):
    """The value below which so many percent lie: the nearest rank. 0 where there are none."""
    return sorted(values)[max(0, -(-percent * len(values) // 100) - 1)] if values else 0.0


def _sides(polygon):
    return zip(polygon, polygon[1:] + polygon[:1])


def _area(polygon):
    return sum(x * v - u * y for (x, y), (u, v) in _sides(polygon)) / 2


def _common(polygon, frame):
    # Sutherland and Hodgman: the polygon is cut by each side of the frame in turn.
    for (x, y), (u, v) in _sides(frame):
        distances = [(u - x) * (q - y) - (v - y) * (p - x) for p, q in polygon]
        kept = []
        for (a, b), (here, there) in zip(_sides(polygon), _sides(distances)):
            if here >= 0:
                kept.append(a)
            if here * there < 0:
                part = here / (here - there)
                kept.append((a[0] + part * (b[0] - a[0]), a[1] + part * (b[1] - a[1])))
        polygon = kept
    return polygon


def overlap(a, b):
    """Intersection over union of convex polygons, clockwise as seen."""
    common = _area(_common(a, b))
    return common / (_area(a) + _area(b) - common) if common > 0 else 0.0


def _box_around(points):
    left, top = (min(values) for values in zip(*points))
    right, bottom = (max(values) for values in zip(*points))
    return [(left, top), (right, top), (right, bottom), (left, bottom)]


def _quad_in_shares(picture):
    """The known corners in terms of the picture; None where Pillow cannot read it."""
    try:
        with Image.open(picture.path) as image:
            turned = image.getexif().get(0x0112, 1) >= 5  # EXIF: these orientations exchange width and height
            width, height = reversed(image.size) if turned else image.size
    except OSError:
        return None
    return [(x / width, y / height) for x, y in picture.quad]


def _entry(picture, row, known):
    entry = {"file": picture.name, "kind": picture.kind}
    if "error" in row:
        return entry | {"error": row["error"]}
    matched = sum(reason.count(" (distance ") for reason in row.get("reasons", []))
    entry |= {name: row[name] for name in ("isPassport", "confidence", "milliseconds")} | {"matched": matched}
    entry |= {"reasons": row["reasons"]} if "reasons" in row else {}
    entry |= {"known": known} if known else {}
    outline = row.get("outline")
    if outline:
        entry["corners"] = outline["corners"]
        x, y, width, height = outline["box"]
        box = _box_around([(x, y), (x + width, y + height)])
        entry["area"] = _area(box)
    if known and "outline" in row:
        entry["overlap"] = overlap(_box_around(known), box) if outline else 0.0
        entry["cornersOverlap"] = overlap(known, outline["corners"]) if outline else 0.0
    return entry


def _outlines(entries):
    boxes, corners = ([entry[name] for entry in entries if name in entry] for name in ("overlap", "cornersOverlap"))
    figures = {"pictures": len(entries), "large": sum(entry.get("area", 0) >= LARGE for entry in entries),
               "known": len(boxes), "good": sum(overlap >= GOOD for overlap in boxes)}
    if boxes:
        figures |= {"median": percentile(boxes, 50), "p10": percentile(boxes, 10),
                    "cornersMedian": percentile(corners, 50), "cornersP10": percentile(corners, 10)}
    return figures


def _calls(kinds, passports):
    return {kind: {"calledPassport": sum(entry["isPassport"] for entry in entries), "judged": len(entries)}
            for kind, entries in kinds.items() if kind.startswith("passport") == passports}


def combination(program, effort, pictures, rows, peak):
    """All that a program made of the pictures, ready to be written as JSON."""
    entries = [_entry(picture, row, picture.quad and _quad_in_shares(picture)) for picture, row in zip(pictures, rows)]
    judged = [entry for entry in entries if "error" not in entry]
    kinds = {kind: [entry for entry in judged if entry["kind"] == kind] for kind in sorted({p.kind for p in pictures})}
    delays = [entry["milliseconds"] for entry in judged]
    return {
        "program": program, "effort": effort,
        "passports": _calls(kinds, True), "others": _calls(kinds, False), "noVerdict": len(entries) - len(judged),
        "medianMilliseconds": percentile(delays, 50), "p90Milliseconds": percentile(delays, 90), "peakMemoryMiB": peak,
        "outlines": {kind: _outlines(some) for kind, some in (kinds | {"all": judged}).items()},
        "pictures": entries,
    }


def disagreements(combinations):
    """Names of the pictures about which the two efforts disagree, which they never should."""
    efforts = [run["pictures"] for run in combinations if run["effort"] != "-"]
    return [one["file"] for one, other in zip(efforts[0], efforts[-1])
            if any(one.get(name) != other.get(name) for name in ("isPassport", "confidence"))]
