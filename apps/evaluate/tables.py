"""The result as text for people."""

from figures import GOOD


def shown(text):
    """Without what a terminal would act on."""
    return "".join(c if c.isprintable() else c.encode("unicode_escape").decode() for c in text)


def _table(rows):
    # Columns two spaces apart; those whose cells below the first row begin with a digit stand to the right.
    columns = []
    for head, *cells in zip(*rows):
        width = max(len(cell) for cell in (head, *cells))
        right = all(cell == "-" or cell[:1].isdigit() for cell in cells)
        columns.append([cell.rjust(width) if right else cell.ljust(width) for cell in (head, *cells)])
    return "".join("  ".join(row).rstrip() + "\n" for row in zip(*columns))


def _decimals(value, places):
    return "-" if value is None else f"{value:.{places}f}"


def _share(counts):
    return f"{sum(count['calledPassport'] for count in counts)}/{sum(count['judged'] for count in counts)}"


def verdicts(combinations):
    kinds = [*combinations[0]["passports"], *combinations[0]["others"]]
    rows = [["program", "effort", "hits", "false hits", *map(shown, kinds), "no verdict", "median ms", "p90 ms", "peak MiB"]]
    for entry in combinations:
        counts = entry["passports"] | entry["others"]
        rows.append([shown(entry["program"]), entry["effort"], _share(entry["passports"].values()),
                     _share(entry["others"].values()), *(_share([counts[kind]]) for kind in kinds), str(entry["noVerdict"]),
                     *(_decimals(entry[name], 0) for name in ("medianMilliseconds", "p90Milliseconds", "peakMemoryMiB"))])
    return _table(rows)


def overlap_line(combinations):
    figures = combinations[0]["outlines"]["all"]
    if not figures["known"]:
        return "Outlines: none known.\n"
    return (f"Outlines: overlap median {figures['median']:.3f}, 10th percentile {figures['p10']:.3f}, "
            f"at least {GOOD} in {figures['good']}/{figures['known']}.\n")


def agreement_lines(combinations, disagreements):
    if sum(entry["effort"] != "-" for entry in combinations) < 2:
        return ""
    lines = "".join(f"  {shown(name)}\n" for name in disagreements)
    return "Efforts DISAGREE:\n" + lines if lines else "Efforts agree on every verdict and confidence.\n"


def zones(counts):
    """A line for each kind, from zones.counts()."""
    heads = ("pictures", "zone known", "exact", "found", "digits hold", "strict", "strict but wrong", "unread")
    return _table([["kind", *heads], *([shown(kind), *map(str, entry.values())] for kind, entry in counts.items())])


def outlines(combinations):
    """A line for each program and kind."""
    rows = [["program", "kind", "pictures", "median", "p10", f"{GOOD} or more", "corners median", "corners p10", "15% or more"]]
    for entry in [run for run in combinations if run is combinations[0] or run["effort"] == "-"]:
        for kind, figures in entry["outlines"].items():
            values = (figures.get(name) for name in ("median", "p10", "cornersMedian", "cornersP10"))
            median, p10, *corners = (_decimals(value, 3) for value in values)
            good = f"{figures['good']}/{figures['known']}" if figures["known"] else "-"
            rows.append([shown(entry["program"]), shown(kind), str(figures["pictures"]), median, p10, good, *corners,
                         f"{figures['large']}/{figures['pictures']}"])
    return _table(rows)


def pictures(combinations):
    """A line for each picture and combination: tells whether a miss comes from the outline or from the text."""
    rows = [["program", "effort", "verdict", "fault", "area", "overlap", "corners", "matched", "ms", "file"]]
    for entry in combinations:
        for picture in entry["pictures"]:
            called = picture.get("isPassport")
            verdict = "none" if called is None else "passport" if called else "not a passport"
            wrong = called != (picture["kind"] in entry["passports"])
            fault = "FAILED" if called is None else "FALSE HIT" if wrong and called else "MISS" if wrong else ""
            rows.append([shown(entry["program"]), entry["effort"], verdict, fault,
                         *(_decimals(picture.get(name), 3) for name in ("area", "overlap", "cornersOverlap")),
                         str(picture.get("matched", "-")), _decimals(picture.get("milliseconds"), 0), shown(picture["file"])])
    return _table(rows)
