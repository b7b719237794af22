"""Writes the tables of docs/performance.md and its plots, docs/images/performance*.svg, from what ./dev bench kept.

Usage: performance.py BENCH.json [BEFORE.json]     BEFORE.json: an older run, whose ratios stand beside
"""
import html
import json
import math
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "bench"))
sys.dont_write_bytecode = True
from verdict import counted, ratio, speed, verdict  # noqa: E402

# Legible on white and on black alike; no colour says what its place or its shape does not say, too.
STYLE = """<style>
text { font: 12px sans-serif; fill: #24292f } .dim { fill: #57606a } .grid { stroke: #d0d7de } .bound { stroke: #57606a }
.ours { fill: #0969da } .peer { fill: #9a6700 } .line { fill: none; stroke-width: 2 } .missed { fill: #cf222e }
@media (prefers-color-scheme: dark) { text { fill: #e6edf3 } .dim { fill: #9198a1 } .grid { stroke: #3d444d }
.bound { stroke: #9198a1 } .ours { fill: #4493f8 } .peer { fill: #d29922 } .missed { fill: #f85149 } }
</style>"""
COLORS = ["#1f77b4", "#d1660f", "#2a9134", "#c2344d", "#8a63d2", "#8c6d31"]


def number(value):
    return "" if value is None else f"{value:.2f}"


def met(value, goal):
    if value is None or not goal:
        return number(value)
    return f"{value:.2f}" if value >= goal else f"**{value:.2f}**"


def table(rows, before, counts):
    old = {row["row"]: row for row in before}
    heads = ["", "an item", "of the bound", "goal", "of the best peer", "goal", "instructions, ours", "instructions, bound"]
    heads[3:3] = ["before"] if before else []
    heads[6:6] = ["before "] if before else []
    lines = [heads, ["---", *["---:"] * (len(heads) - 1)]]
    for row in rows:
        ours, bound, peer = verdict(row)
        then = verdict(old[row["row"]]) if row["row"] in old else (None, None, None)
        counted_here = counts.get(row["row"], {})
        line = [row["row"], speed(row, ours) if ours else "fails",
                met(ratio(ours, bound), row["of_bound"]) + (f" {bound['name']}" if bound else ""),
                f"{row['of_bound']:.2f}" if row["of_bound"] else "",
                met(ratio(ours, peer), row["of_peer"]) + (f" {peer['name']}" if peer else ""),
                f"{row['of_peer']:.2f}" if row["of_peer"] else "",
                f"{counted_here.get(ours['name'], '')}" if ours else "",
                f"{counted_here.get(bound['name'], '')}" if bound else ""]
        line[3:3] = [number(ratio(then[0], then[1]))] if before else []
        line[6:6] = [number(ratio(then[0], then[2]))] if before else []
        lines.append(line)
    return markdown(lines)


def markdown(lines):
    return "".join(f"| {' | '.join(line)} |\n" for line in lines)


def peers_table(rows):
    """What an item takes everybody; who is left out, and why."""
    names = sorted({result["name"] for row in rows for result in row["results"] if result["kind"] == "peer"})
    lines = [["", "ours", *names], ["---", *["---:"] * (len(names) + 1)]]
    notes = {}
    for row in rows:
        by_name = {result["name"]: result for result in row["results"] if result["kind"] == "peer"}
        if not by_name:
            continue
        ours = verdict(row)[0]
        cells = [extended(row, ours) if ours else "fails"]
        for name in names:
            result = by_name.get(name)
            cells.append(extended(row, result) if result and counted(result) else "-")
            if result and result["fault"] not in ("", "does not do it"):
                notes.setdefault((name, result["fault"]), []).append(row["row"])
        lines.append([row["row"], *cells])
    left_out = [f"- {name} {fault}: {', '.join(where)}\n" for (name, fault), where in sorted(notes.items())]
    return markdown(lines) + ("\nLeft out, because the result was another one:\n\n" + "".join(left_out) if left_out else "")


def extended(row, result):
    more = f", error {result['error']:.1f}" if result["error"] else ""
    if result["bytes"] and row["row"].startswith("BMP to PNG"):
        more = f", {result['bytes'] / 1e6:.2f} MB"
    return speed(row, result) + more


def commands_table(rows):
    lines = [["", "seconds", "peak memory"], ["---", "---:", "---:"]]
    for row in rows:
        ours = next((result for result in row["results"] if result["kind"] == "ours"), None)
        if ours and row["row"].startswith("command: "):
            figures = ["fails", ""] if ours["fault"] else [f"{ours['seconds']:.2f}", f"{ours['peak'] / 2**20:.0f} MiB"]
            lines.append([row["row"].removeprefix("command: "), *figures])
    return markdown(lines)


def properties_table(rows):
    lines = [["a byte of", "takes", "times as long as"], ["---", "---:", "---"]]
    for row in rows:
        dear, cheap, _ = verdict(row)
        lines.append([dear["name"], speed(row, dear), f"{1 / ratio(dear, cheap):.1f} x {cheap['name']}"])
    return markdown(lines)


def text(x, y, words, anchor="start", kind=""):
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" class="{kind}">{html.escape(words)}</text>'


def drawing(width, height, parts, title):
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" height="{height}" '
            f'role="img"><title>{html.escape(title)}</title>{STYLE}\n' + "\n".join(parts) + "\n</svg>\n")


def ratios_plot(rows):
    """A line a row: how fast ours is of the bound (a dot) and of the best peer (a square), on a scale of doublings."""
    left, right, top, step = 260, 700, 44, 20
    low, high = -6, 6

    def place(value):
        return left + (min(max(math.log2(value), low), high) - low) / (high - low) * (right - left)
    shown = [(row, *verdict(row)) for row in rows]
    shown = [each for each in shown if each[1] and (each[2] or each[3])]
    bottom = top + step * len(shown)
    parts = []
    for power in range(low, high + 1):
        x = place(2.0 ** power)
        kind = "bound" if power == 0 else "grid"
        parts.append(f'<line x1="{x:.1f}" x2="{x:.1f}" y1="{top - 6}" y2="{bottom}" class="{kind}"/>')
        if power % 2 == 0:
            parts.append(text(x, top - 12, f"{2 ** power}" if power >= 0 else f"1/{2 ** -power}", "middle", "dim"))
    for i, (row, ours, bound, peer) in enumerate(shown):
        y = top + step * i + step / 2
        parts.append(text(left - 8, y + 4, row["row"], "end"))
        for value, goal, shape in [(ratio(ours, bound), row["of_bound"], "dot"), (ratio(ours, peer), row["of_peer"], "square")]:
            if value is None:
                continue
            kind = "missed" if goal and value < goal else "ours" if shape == "dot" else "peer"
            x = place(value)
            parts.append(f'<circle cx="{x:.1f}" cy="{y}" r="5" class="{kind}"/>' if shape == "dot" else
                         f'<rect x="{x - 4:.1f}" y="{y - 4}" width="8" height="8" class="{kind}"/>')
    parts.append(f'<circle cx="{left}" cy="{bottom + 18}" r="5" class="ours"/>' + text(left + 10, bottom + 22, "of the bound"))
    parts.append(f'<rect x="{left + 110}" y="{bottom + 14}" width="8" height="8" class="peer"/>'
                 + text(left + 124, bottom + 22, "of the best peer"))
    parts.append(f'<circle cx="{left + 250}" cy="{bottom + 18}" r="5" class="missed"/>' + text(left + 260, bottom + 22, "below its goal"))
    parts.append(text(left, 16, "speed of ours, times that of the bound or of the best peer"))
    return drawing(720, bottom + 36, parts, "How fast everything is, of what could be and of who is best")


def growth_plot(curves):
    """Two panels a unit: processor time an item, and peak memory, over how many there are; both on scales of tens."""
    units = list(dict.fromkeys(curve["unit"] for curve in curves))
    parts, y = [], 30
    for unit in units:
        mine = [curve for curve in curves if curve["unit"] == unit]
        parts += panel(mine, 60, y, lambda p: p["seconds"] / p["items"] * 1e9, f"ns of processor time, divided by {unit}")
        parts += panel(mine, 420, y, lambda p: p["peak"] / 2**20, f"MiB at most, over {unit}")
        for i, curve in enumerate(mine):
            x = 60 + i % 3 * 220
            parts.append(f'<rect x="{x}" y="{y + 208 + i // 3 * 16}" width="10" height="10" fill="{COLORS[i]}"/>')
            parts.append(text(x + 16, y + 217 + i // 3 * 16, curve["work"]))
        y += 280
    return drawing(760, y, parts, "How time an item and memory grow")


def panel(curves, left, top, value, title):
    width, height = 280, 160
    points = [(point["items"], max(value(point), 1e-3)) for curve in curves for point in curve["points"] if point["seconds"]]
    if not points:
        return []
    low_x, high_x = (f(math.log10(x) for x, _ in points) for f in (min, max))
    low_y, high_y = math.floor(min(math.log10(v) for _, v in points)), math.ceil(max(math.log10(v) for _, v in points) + 0.01)

    def place(x, v):
        return (left + (math.log10(x) - low_x) / (high_x - low_x or 1) * width,
                top + height - (math.log10(v) - low_y) / (high_y - low_y) * height)
    parts = [text(left, top - 8, title)]
    for power in range(low_y, high_y + 1):
        y = place(10 ** low_x, 10.0 ** power)[1]
        parts.append(f'<line x1="{left}" x2="{left + width}" y1="{y:.1f}" y2="{y:.1f}" class="grid"/>')
        parts.append(text(left - 6, y + 4, f"{10.0 ** power:g}", "end", "dim"))
    for x in sorted({x for x, _ in points}):
        parts.append(text(place(x, 10 ** low_y)[0], top + height + 16, short(x), "middle", "dim"))
    for color, curve in zip(COLORS, curves):
        drawn = [place(point["items"], max(value(point), 1e-3)) for point in curve["points"] if point["seconds"]]
        parts.append(f'<polyline points="{" ".join(f"{x:.1f},{y:.1f}" for x, y in drawn)}" class="line" stroke="{color}"/>')
        parts += [f'<circle cx="{x:.1f}" cy="{y:.1f}" r="3" fill="{color}"/>' for x, y in drawn]
    return parts


def short(count):
    return f"{count / 1e6:.0f} M" if count >= 1e6 else f"{count:,}"


def replaced(document, name, written):
    begin, end = f"<!-- {name}: tools/performance.py writes it -->\n", "<!-- end -->"
    start = document.index(begin) + len(begin)
    return document[:start] + written + document[document.index(end, start):]


def main(path, before=None):
    kept = json.loads(pathlib.Path(path).read_text())
    old = json.loads(pathlib.Path(before).read_text()).get("rows", []) if before else []
    rows = [row for row in kept["rows"] if not row["row"].startswith("machine: ")]
    properties = [row for row in kept["rows"] if row["row"].startswith("machine: ")]
    machine = kept["machine"]
    document = (ROOT / "docs/performance.md").read_text()
    document = replaced(document, "machine", f"Measured on {machine['system']}, {machine['processor']}, {machine['cores']} cores, "
                                             f"{machine['memory']} of memory.\n")
    document = replaced(document, "table", table(rows, old, kept.get("instructions", {})))
    document = replaced(document, "peers", peers_table(rows))
    document = replaced(document, "properties", properties_table(properties))
    document = replaced(document, "commands", commands_table(rows))
    (ROOT / "docs/performance.md").write_text(document)
    (ROOT / "docs/images/performance.svg").write_text(ratios_plot(rows))
    if kept.get("growth"):
        (ROOT / "docs/images/growth.svg").write_text(growth_plot(kept["growth"]))


main(*sys.argv[1:])
