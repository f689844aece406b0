"""The figures of combinations as pictures: PNG in memory."""

import io

try:
    from matplotlib.backends.backend_agg import FigureCanvasAgg
    from matplotlib.figure import Figure
except ModuleNotFoundError:
    raise SystemExit("evaluate: python3-matplotlib is missing: tools/setup installs it") from None

from figures import GOOD, percentile
from tables import shown

_COLOURS = ["#0072b2", "#e69f00", "#009e73", "#cc79a7", "#56b4e9", "#d55e00"]  # told apart by the colour-blind too
_PASSPORTS, _OTHERS = _COLOURS[2], _COLOURS[5]


def _axes(rows, height):
    figure = Figure(figsize=(9, 1 + height * rows), dpi=110, layout="constrained")
    FigureCanvasAgg(figure)
    axes = figure.subplots(rows, squeeze=False)[:, 0]
    for axis in axes:
        axis.spines[["top", "right"]].set_visible(False)
        axis.grid(axis="x", alpha=0.3)
        axis.set_axisbelow(True)
    return figure, axes


def _png(figure):
    written = io.BytesIO()
    figure.savefig(written, format="png")
    return written.getvalue()


def title(run):
    program = shown(run["program"])
    return (program if len(program) <= 30 else f"...{program[-27:]}") + ("" if run["effort"] == "-" else f", {run['effort']}")


def programs(combinations):
    """One run of each program: the efforts differ in text and delay alone."""
    return [run for run in combinations if run is combinations[0] or run["effort"] == "-"]


def hits(combinations):
    kinds = [*combinations[0]["passports"], *combinations[0]["others"]]
    figure, (axis,) = _axes(1, 0.3 * len(kinds) * len(combinations))
    thickness = 0.8 / len(combinations)
    for number, run in enumerate(combinations):
        counts = run["passports"] | run["others"]
        for row, kind in enumerate(kinds):
            called, judged = counts[kind]["calledPassport"], counts[kind]["judged"]
            place = row + (number - (len(combinations) - 1) / 2) * thickness
            axis.barh(place, called / judged if judged else 0, thickness * 0.9, alpha=1 - 0.5 * number / len(combinations),
                      color=_PASSPORTS if kind in run["passports"] else _OTHERS)
            name = f"   {title(run)}" if len(combinations) > 1 else ""
            axis.text((called / judged if judged else 0) + 0.01, place, f"{called} of {judged}{name}", va="center", fontsize=8)
    axis.set_yticks(range(len(kinds)), map(shown, kinds))
    axis.invert_yaxis()
    axis.set_xlim(0, 1.35)
    axis.set_xticks([0, 0.25, 0.5, 0.75, 1], ["0", "25 %", "50 %", "75 %", "100 %"])
    axis.set_xlabel("called passports: green should be all, orange none")
    return _png(figure)


def delays(combinations):
    figure, (axis,) = _axes(1, 2.6)
    for run, colour in zip(combinations, _COLOURS * len(combinations)):
        values = sorted(entry["milliseconds"] for entry in run["pictures"] if "error" not in entry)
        shares = [(number + 1) / len(values) for number in range(len(values))]
        axis.step([0, *values], [0, *shares], where="post", color=colour, label=f"{title(run)}: median "
                  f"{percentile(values, 50):.0f} ms, 90th percentile {percentile(values, 90):.0f} ms")
    axis.set_xlim(0)
    axis.set_ylim(0, 1.02)
    axis.set_yticks([0, 0.5, 0.9, 1], ["0", "half", "90 %", "all"])
    axis.grid(axis="y", alpha=0.3)
    axis.set_xlabel("milliseconds")
    axis.set_ylabel("pictures judged by then")
    axis.legend(loc="lower right", fontsize=8)
    return _png(figure)


def confidence(combinations):
    runs = programs(combinations)
    figure, axes = _axes(len(runs), 2.2)
    for axis, run in zip(axes, runs):
        judged = [entry for entry in run["pictures"] if "error" not in entry]
        values = [[entry["confidence"] for entry in judged if (entry["kind"] in run["passports"]) == wanted] for wanted in (True, False)]
        axis.hist(values, bins=41, range=(-0.0125, 1.0125), color=[_PASSPORTS, _OTHERS], rwidth=0.9,
                  label=[f"{name} ({len(some)})" for name, some in zip(("passports", "others"), values)])
        axis.set_title(title(run), fontsize=9, loc="left")
        axis.set_ylabel("pictures")
        axis.legend(fontsize=8)
    axes[-1].set_xlabel("confidence")
    return _png(figure)


def overlaps(combinations):
    """None where no outline is known."""
    runs = programs(combinations)
    kinds = [kind for kind, known in runs[0]["outlines"].items() if known["known"] and kind != "all"]
    if not kinds:
        return None
    figure, axes = _axes(len(runs), 0.7 + 0.35 * len(kinds))
    for axis, run in zip(axes, runs):
        for row, kind in enumerate(kinds):
            values = [entry["overlap"] for entry in run["pictures"] if entry["kind"] == kind and "overlap" in entry]
            axis.plot(values, [row] * len(values), "o", color=_COLOURS[0], alpha=0.45, markersize=6)
            if values:
                axis.plot(percentile(values, 50), row, "|", color="black", markersize=18, markeredgewidth=2)
        axis.axvline(GOOD, color=_OTHERS, linestyle="--", linewidth=1)
        axis.set_yticks(range(len(kinds)), [f"{shown(kind)} ({run['outlines'][kind]['known']})" for kind in kinds])
        axis.set_ylim(len(kinds) - 0.5, -0.5)
        axis.set_xlim(-0.02, 1.02)
        axis.set_title(title(run), fontsize=9, loc="left")
    axes[-1].set_xlabel(f"intersection over union of the boxes; black: median; dashed: {GOOD}, from which on it counts as found")
    return _png(figure)
