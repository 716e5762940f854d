"""Writes the results of a benchmark run as one HTML page with charts, and on request as a part of the documents.

  python3 benchmarks/write_report.py RESULTS REPORT
  python3 benchmarks/write_report.py --publish RESULTS DOCUMENT CHART

  RESULTS    the results of zrcore_benchmarks as JSON; to be published, of a complete run of tools/bench
  REPORT     the HTML file to write. It needs no other file, and no scripts.
  DOCUMENT   a Markdown file; the text between its comments "figures: begin" and "figures: end" is replaced
  CHART      the SVG file to write, to which the document links

Needs matplotlib, Debian's package python3-matplotlib.

Exit status: 0 written, 1 a file can't be used, 2 wrong usage.
"""

import contextlib
import html
import os
import sys

import results
from results import number
try:
    import charts
except ImportError as missing:
    sys.exit(f"write_report.py: needs matplotlib, Debian's package python3-matplotlib: {missing}")

STYLE = """
:root { color-scheme: light dark; --page: #ffffff; --text: #1b1f24; --soft: #57606a; %(light)s }
@media (prefers-color-scheme: dark) { :root { --page: #14181d; --text: #e4e8ec; --soft: #a3adb8; %(dark)s } }
@media print { :root { --page: #ffffff; --text: #000000; --soft: #333333; %(light)s } nav { display: none } }
body { background: var(--page); color: var(--text); font: 15px/1.45 system-ui, sans-serif; margin: 2rem auto;
       max-width: 90rem; padding: 0 1rem }
a { color: inherit }
dl { display: grid; grid-template-columns: max-content auto; gap: .15rem 1.2rem }
dt { color: var(--soft) }
dd { margin: 0 }
nav ul { columns: 14rem; padding-left: 1.2rem }
section { break-before: auto; margin-top: 2.5rem }
.pair { display: grid; grid-template-columns: repeat(auto-fit, minmax(min(34rem, 100%%), 1fr)); gap: 1rem 2rem;
        align-items: start }
.pair + .pair { margin-top: 1.5rem }
.table { overflow-x: auto }
figure { margin: 0; break-inside: avoid }
svg { display: block; width: 100%%; max-width: 48rem; height: auto }
table { border-collapse: collapse; font-size: 13px; font-variant-numeric: tabular-nums }
caption { text-align: left; color: var(--soft); padding-bottom: .4rem }
th, td { padding: .1rem .6rem; text-align: right }
th:first-child { text-align: left; font-weight: normal }
th.operation { font-weight: bold; padding-top: .5rem; border-top: 1px solid var(--grid) }
tr { break-inside: avoid }
tr.ours th, tr.ours td { font-weight: bold; color: var(--ours) }
tr.bound th, tr.bound td { color: var(--bound) }
.key { display: inline-block; width: .8em; height: .8em; margin: 0 .3em 0 1em }
""" % {"light": charts.LIGHT, "dark": charts.DARK}

INTRODUCTION = """<p>Medians of all repetitions. For all figures, less is better. A bar's colour:
<span class="key" style="background: var(--ours)"></span>ZrCore or its C++ layer
<span class="key" style="background: var(--peer)"></span>another library, or the same work by hand
<span class="key" style="background: var(--bound)"></span>the lower bound: the least work that does the job; "by
contract" adds the calls, locks and blocks that the library's contract requires.</p>
<p>A remark in parentheses after a library means that it does less work than ZrCore: it is shown, and ZrCore is not
compared with it. Nanoseconds are processor time, and for rows with two threads the wall time of one thread.</p>"""


LONGEST_CHART = 42   # bars


def repetitions(operations):
    """The most repetitions, and the families that have fewer, as text."""
    families = {}
    for operation in operations:
        for values in operation.rows.values():
            families.setdefault(len(values), {})[operation.family] = True
    most, *others = sorted(families, reverse=True)
    return "; ".join([str(most)] + [f"{count} for {', '.join(families[count])}" for count in others])


def machine(run):
    """What a reader must know of the run, as (title, text)."""
    context = run["context"]
    loads = [load for load in context.get("load_avg") or [] if load is not None]
    facts = [("Date", context.get("date")), ("Commit", context.get("commit")),
             ("Processor", context.get("processor")), ("Logical processors", context.get("num_cpus")),
             ("System", context.get("system")), ("Kernel", context.get("kernel")),
             ("Compiler", context.get("compiler")), ("Peers", context.get("peers")),
             ("Load average at the start", ", ".join(f"{load:.2f}" for load in loads[:3])),
             ("Repetitions", repetitions(results.operations_in(run).values()))]
    return [(title, str(text) if text else "not recorded") for title, text in facts]


def groups(operations):
    """Lists of operations of the same family and unit, with their title."""
    found = {}
    for operation in operations:
        found.setdefault((operation.family, operation.unit_name), []).append(operation)
    several = {family for family, _ in found if sum(1 for other, _ in found if other == family) > 1}
    for (family, unit), members in found.items():
        yield f"{family}, {unit}" if family in several else family, members


def parts(operations):
    """Splits a list of operations, so that no chart is longer than a printed page."""
    part, bars = [], 0
    for operation in operations:
        if part and bars + len(operation.rows) > LONGEST_CHART:
            yield part
            part, bars = [], 0
        part.append(operation)
        bars += len(operation.rows) + 1
    yield part


def table(title, operations):
    unit = operations[0].unit_name
    lines = [f"<table><caption>{html.escape(title)}, {unit}. The ratio is ZrCore divided by the library.</caption>",
             '<thead><tr><th scope="col">Library</th><th scope="col">Median</th><th scope="col">Least</th>'
             '<th scope="col">Most</th><th scope="col">Ratio</th></tr></thead>']
    for operation in operations:
        lines.append(f'<tbody><tr><th class="operation" colspan="5" scope="rowgroup">{html.escape(operation.name)}'
                     "</th></tr>")
        for library, values in operation.rows.items():
            kind = (' class="ours"' if library == operation.ours()
                    else ' class="bound"' if library.startswith(results.LOWER_BOUND) else "")
            ratio = results.ratio_text(operation.ratio_to(library))
            lines.append(f'<tr{kind}><th scope="row">{html.escape(library)}</th><td>{operation.figure(library)}</td>'
                         f"<td>{number(min(values))}</td><td>{number(max(values))}</td><td>{ratio}</td></tr>")
        lines.append("</tbody>")
    return "\n".join(lines + ["</table>"])


def page(run):
    operations = list(results.operations_in(run).values())
    has_ratio = any(operation.ratio() for operation in operations)   # not if only rows of one library ran
    sections, links = [], []
    for index, (title, members) in enumerate(groups(operations)):
        heading = html.escape(title)
        links.append(f'<li><a href="#family{index}">{heading}</a></li>')
        sections.append(f'<section id="family{index}"><h2>{heading}</h2>')
        for part, some in enumerate(parts(members)):
            first = html.escape(some[0].name)
            sections.append(f'<div class="pair">\n<figure>{charts.bars(some, f"chart{index}-{part}", title)}</figure>\n'
                            f'<div class="table" role="region" aria-label="{heading}: {first}" tabindex="0">'
                            f"{table(title, some)}</div></div>")
        sections.append("</section>")
    facts = "\n".join(f"<dt>{html.escape(title)}</dt><dd>{html.escape(text)}</dd>" for title, text in machine(run))
    return "\n".join([
        '<!DOCTYPE html>\n<html lang="en-GB"><head><meta charset="utf-8"><title>Benchmarks of ZrCore</title>',
        '<meta name="viewport" content="width=device-width, initial-scale=1">', f"<style>{STYLE}</style></head><body>",
        "<h1>Benchmarks of ZrCore</h1>", f"<dl>{facts}</dl>", INTRODUCTION,
        f"<p>{html.escape(results.ABOUT_UNRELIABLE)}</p>" if any(some.too_short for some in operations) else "",
        f"<figure>{charts.overview(operations, 'overview')}</figure>" if has_ratio else "",
        '<nav aria-label="Families"><ul>', "\n".join(links), "</ul></nav>", "\n".join(sections), "</body></html>\n"])


BEGIN, END = "<!-- figures: begin -->", "<!-- figures: end -->"


def document_part(run, chart_name):
    """The dated result as Markdown."""
    operations = list(results.operations_in(run).values())
    compared = [operation for operation in operations if operation.ratio()]   # those of the chart
    no_more = sum(not operation.needs_more() for operation in compared)
    lines = [BEGIN, "", "| Run | |", "|---|---|"]
    lines += [f"| {title} | {text} |" for title, text in machine(run)]
    lines += ["", f"ZrCore needs no more than its best peer in {no_more} of {len(compared)} "
              "operations:", "", f"![One dot per operation: ZrCore divided by its best peer]({chart_name})"]
    if any(operation.too_short for operation in operations):
        lines += ["", results.ABOUT_UNRELIABLE]
    for title, members in groups(operations):
        unit = members[0].unit_name
        lines += ["", f"### {title}", "",
                  f"| Operation | ZrCore, {unit} | Best peer, {unit} | Best peer | Ratio | Lower bound, {unit} |",
                  "|---|---:|---:|---|---:|---:|"]
        for operation in members:
            best = operation.best_peer()
            cells = (operation.name, operation.figure(operation.ours()), operation.figure(best), best or "-",
                     results.ratio_text(operation.ratio()), operation.lower_bounds())
            lines.append("| " + " | ".join(html.escape(cell, quote=False) for cell in cells) + " |")
    return "\n".join(lines + ["", END])


def write(path, text):
    """Replaces the file as a whole, so that an interrupt or a full disk leaves the old one."""
    target = os.path.realpath(path)
    if os.path.exists(target) and not os.path.isfile(target):   # a device, which must not be replaced
        with open(target, "w", encoding="utf-8") as file:
            file.write(text)
        return
    new = f"{target}.{os.getpid()}.new"
    try:
        with open(new, "w", encoding="utf-8") as file:
            file.write(text)
        os.replace(new, target)
    except BaseException:
        with contextlib.suppress(OSError):
            os.remove(new)
        raise


def publish(run, document, chart):
    with open(document, encoding="utf-8") as file:
        text = file.read()
    if text.count(BEGIN) != 1 or text.count(END) != 1 or text.index(BEGIN) > text.index(END):
        raise results.Failure(f"{document} doesn't have the comments between which the figures are written")
    results.require_complete(run)
    if not any(operation.ratio() for operation in results.operations_in(run).values()):
        raise results.Failure("no row of ZrCore has a peer in these results")
    if str(run["context"].get("commit")).endswith("-dirty"):
        raise results.Failure("the results are of sources that no commit has; commit them and run tools/bench again")
    part = document_part(run, os.path.relpath(chart, os.path.dirname(document) or "."))
    # With a background of its own: the page around it may be light although the reader's system is dark.
    style = (f"<style>svg {{ background: #ffffff; color: #1b1f24; {charts.LIGHT} }} "
             "@media (prefers-color-scheme: dark) "
             f"{{ svg {{ background: #14181d; color: #e4e8ec; {charts.DARK} }} }}</style>")
    svg = charts.overview(list(results.operations_in(run).values()), "overview", style)
    write(chart, '<?xml version="1.0" encoding="utf-8"?>\n' + svg)
    write(document, text[:text.index(BEGIN)] + part + text[text.index(END) + len(END):])


def main():
    arguments = sys.argv[1:]
    if len(arguments) == 4 and arguments[0] == "--publish":
        publish(results.load(arguments[1]), *arguments[2:])
    elif len(arguments) == 2:
        write(arguments[1], page(results.load(arguments[0])))
    else:
        print("usage: write_report.py RESULTS REPORT | --publish RESULTS DOCUMENT CHART", file=sys.stderr)
        return 2
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (results.Failure, OSError) as failure:
        sys.exit(f"write_report.py: {failure}")
