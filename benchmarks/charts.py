"""Draws the results of the benchmarks as SVG, by matplotlib.

The charts have no colours of their own: they use the CSS variables --ours, --peer, --bound and --grid, and the colour
of the surrounding text. So they fit a dark page and a light one.
"""

import html
import io
import math
import re

import matplotlib
matplotlib.use("svg")
from matplotlib import pyplot, ticker   # pylint: disable=wrong-import-position

import results                  # pylint: disable=wrong-import-position

# matplotlib draws with stand-ins that occur nowhere else; they are replaced by what the page defines.
TEXT, OURS, PEER, BOUND, GRID = "#010101", "#020202", "#030303", "#040404", "#050505"
MEANING = {TEXT: "currentColor", OURS: "var(--ours)", PEER: "var(--peer)", BOUND: "var(--bound)", GRID: "var(--grid)"}
LIGHT = "--ours: #1d5fc4; --peer: #8b929c; --bound: #a05a00; --grid: #d5d9de"
DARK = "--ours: #79b0ff; --peer: #7d8590; --bound: #e3a341; --grid: #3a414b"

UNIT_NAMES = {"ns": "nanoseconds", "µs": "microseconds"}

matplotlib.rcParams.update({
    "svg.fonttype": "none",      # text stays text: it can be searched, selected and read aloud
    "svg.hashsalt": "zrcore",    # the same figures make the same file
    "font.family": "sans-serif", "font.size": 8,
    "text.color": TEXT, "axes.labelcolor": TEXT, "xtick.color": TEXT, "ytick.color": TEXT, "axes.edgecolor": GRID,
})


def as_svg(figure, name, title, description, style="", tips=None):
    """The SVG element of a figure. `name` makes its identifiers unique within a page.

    `tips` are the texts that a browser shows for parts of the figure, by the identifier of the part.
    """
    file = io.StringIO()
    figure.savefig(file, format="svg", transparent=True, metadata={"Date": None})
    pyplot.close(figure)
    svg = file.getvalue()
    svg = svg[svg.index("<svg"):]
    svg = re.sub(r"\s*<metadata>.*?</metadata>", "", svg, flags=re.S)
    for stand_in, meaning in MEANING.items():
        svg = svg.replace(stand_in, meaning)
    for part, tip in (tips or {}).items():
        svg = svg.replace(f'<g id="{part}">', f'<g id="{part}"><title>{html.escape(tip)}</title>')
    used = set(re.findall(r"(?:url\(#|href=\"#)([^)\"]+)", svg))
    svg = re.sub(r"\s*<!--.*?-->", "", svg, flags=re.S)
    svg = re.sub(r' id="([^"]*)"', lambda match: f' id="{name}-{match[1]}"' if match[1] in used else "", svg)
    svg = re.sub(r'(url\(#|href="#)', rf"\g<1>{name}-", svg)
    svg = svg.replace("'DejaVu Sans', 'Bitstream Vera Sans', 'Computer Modern Sans Serif', 'Lucida Grande', 'Verdana', "
                      "'Geneva', 'Lucid', 'Arial', 'Helvetica', 'Avant Garde', sans-serif", "sans-serif")
    svg = re.sub(r"^(<svg[^>]*?) width=\"[^\"]*\"", rf'\1 role="img" aria-labelledby="{name}-title {name}-about"', svg)
    svg = re.sub(r"^(<svg[^>]*?) height=\"[^\"]*\"", r"\1", svg)
    head = (f'<title id="{name}-title">{html.escape(title)}</title>'
            f'<desc id="{name}-about">{html.escape(description)}</desc>{style}')
    return re.sub(r"^(<svg[^>]*>)", lambda match: match[1] + head, svg, count=1)


def colour(operation, library):
    if library == operation.ours():
        return OURS
    return BOUND if library.startswith(results.LOWER_BOUND) else PEER


def plain(value, _):
    """A short text for a mark of the axis."""
    for factor, suffix in ((1e9, " G"), (1e6, " M"), (1e3, " k")):
        if value >= factor:
            return f"{value / factor:g}{suffix}"
    return f"{value:g}"


def bars(operations, name, title):
    """Horizontal bars on a log scale: a heading for each operation, and a bar for each of its libraries."""
    unit = operations[0].unit_name
    lines = [(operation, library, value) for operation in operations
             for library, value in [(None, None)] + list(operation.medians().items())]
    values = [value for _, _, value in lines if value]
    low = min(values, default=1) / 1.6
    high = max(max(values, default=1) * 4, low * 12)   # space for a number after the longest bar; at least one mark
    height = 0.165 * len(lines) + 0.6
    figure = pyplot.figure(figsize=(7.2, height))
    axes = figure.add_axes((0.35, 0.4 / height, 0.63, 1 - 0.5 / height))
    axes.set_xscale("log")
    axes.set_xlim(low, high)
    axes.set_ylim(len(lines) - 0.5, -0.7)
    for at, (operation, library, value) in enumerate(lines):
        if library is None:
            axes.text(-0.53, at, operation.name, transform=axes.get_yaxis_transform(), fontweight="bold", va="center")
            continue
        axes.text(-0.015, at, library, transform=axes.get_yaxis_transform(), ha="right", va="center")
        if value:
            axes.barh(at, value - low, left=low, height=0.72, color=colour(operation, library), linewidth=0)
        axes.text(max(value, low) * 1.05, at, operation.figure(library), va="center")
    axes.set_yticks([])
    if high / low <= 1000:   # powers of ten alone would be one or two marks
        axes.xaxis.set_major_locator(ticker.LogLocator(subs=(1, 2, 5)))
    axes.xaxis.set_major_formatter(plain)
    axes.xaxis.set_minor_formatter(lambda value, _: "")
    axes.grid(axis="x", color=GRID, linewidth=0.5)
    axes.set_axisbelow(True)
    for side in ("top", "left", "right"):
        axes.spines[side].set_visible(False)
    axes.set_xlabel(f"{UNIT_NAMES.get(unit, unit)}, logarithmic: only the right end of a bar counts. Less is better")
    names = ", ".join(operation.name for operation in operations)
    return as_svg(figure, name, title, f"Bars for ZrCore, its peers and the lower bounds, for: {names}. The table has "
                  "the same figures.")


def overview(operations, name, style=""):
    """One line per family and a dot per operation: ZrCore's figure divided by the best peer's, on a log scale."""
    operations = [operation for operation in operations if operation.ratio()]
    families = list(dict.fromkeys(operation.family for operation in operations))
    height = 0.26 * len(families) + 0.75
    figure = pyplot.figure(figsize=(7.2, height))
    axes = figure.add_axes((0.24, 0.55 / height, 0.73, 1 - 0.75 / height))
    axes.set_xscale("log", base=2)
    everything = [operation.ratio() for operation in operations]
    low, high = min(everything + [0.5]) / 1.25, max(everything + [2]) * 1.25
    axes.set_xlim(low, high)
    step = math.ceil(math.log2(high / low) / 10)   # one of the marks is always 1
    marks = [2.0 ** power for power in range(-40 * step, 40 * step, step)]
    axes.set_xticks([mark for mark in marks if low < mark < high])
    axes.set_ylim(len(families) - 0.5, -0.5)
    axes.axvline(1, color=TEXT, linewidth=0.8)
    tips = {}
    for operation in sorted(operations, key=lambda operation: (operation.needs_more(), operation.ratio())):
        tips[f"dot{len(tips)}"] = f"{operation.name}: {operation.ratio():.2f}, {operation.best_peer()}"
        mark, dot_colour = ("D", BOUND) if operation.needs_more() else ("o", OURS)
        axes.plot(operation.ratio(), families.index(operation.family), mark, color=dot_colour, markersize=4.5,
                  alpha=0.75, markeredgewidth=0, gid=list(tips)[-1])
    axes.set_yticks(range(len(families)), families)
    axes.tick_params(length=0)
    axes.minorticks_off()
    axes.xaxis.set_major_formatter(lambda value, _: f"{value:g}" if value >= 1 else f"1/{1 / value:g}")
    axes.grid(axis="both", color=GRID, linewidth=0.5)
    axes.set_axisbelow(True)
    for side in axes.spines.values():
        side.set_visible(False)
    axes.set_xlabel("ZrCore divided by the best peer, logarithmic. Dots: ZrCore needs no more; diamonds: more")
    no_more = sum(not operation.needs_more() for operation in operations)
    return as_svg(figure, name, "ZrCore and its best peer", f"One dot per operation, one line per family. ZrCore needs "
                  f"no more than its best peer in {no_more} of {len(operations)} operations.", style, tips)
