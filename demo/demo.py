#!/usr/bin/python3
"""vxdemo: shows every bitmap, icon and cursor in some folders on a page of pictures and facts.

Does what a person would do: asks `vxbmp info` what is in a file, has `vxbmp convert` make a PNG of each page, and when
a file ends early once more with that allowed. Knows of the formats only what these two print.
"""
import argparse
import html
import itertools
import json
import os
import pathlib
import re
import shlex
import struct
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
VXBMP = HERE.parent / "vxbmp"  # the build puts this folder beside it
EXTENSIONS = {".ani", ".bmp", ".dib", ".ico", ".cur", ".rle"}
LIST_NAME = "samples.tsv"  # a folder's list of its files: name, title, outcome, arguments for headerless data
MEMORY_LIMIT = "256M"  # a file that asks for a gigantic picture shows how that is refused
MAX_PAGES = 12
MAX_ENLARGED = 12
STAGE_SIDE = 208  # pixels; the style's .stage leaves that much room


def run(*words, folder="."):
    return subprocess.run([VXBMP, "--memory-limit", MEMORY_LIMIT, *words], cwd=folder, capture_output=True,
                          encoding="utf-8", errors="backslashreplace", check=False)


# ---- the files


def read_list(folder):
    try:
        lines = (folder / LIST_NAME).read_text().splitlines()
    except OSError:
        return {}
    fields = [[*line.split("\t"), "", "", ""] for line in lines]
    return {line[0]: {"place": place, "title": line[1], "raw": line[3]} for place, line in enumerate(fields)}


def items_of(folder, group):
    """The files to show, those of the folder's list first and in its order."""
    listed = read_list(folder)
    try:
        paths = sorted(path for path in folder.iterdir() if path.is_file())
    except OSError:
        return []
    items = [{"path": path, "group": group, **listed.get(path.name, {"place": len(listed), "title": "", "raw": ""})}
             for path in paths]
    return sorted((item for item in items if item["raw"] or item["path"].suffix.lower() in EXTENSIONS),
                  key=lambda item: item["place"])


def collect(folders):
    for top in folders:
        for folder in sorted(pathlib.Path(name) for name, _, _ in os.walk(top)):
            yield from items_of(folder, str(pathlib.Path(top.name) / folder.relative_to(top)))


# ---- what vxbmp says of them


def failure_of(printed, path):
    """The words and the status of "vxbmp: FILE: what is wrong (STATUS, number)"; the page names the file anyway."""
    line = printed.removeprefix("vxbmp: ").partition("\n")[0].removeprefix(str(path)).lstrip(":, ")
    words, status = re.fullmatch(r"(.*?)(?: \((\w+, -?\d+)\))?", line).groups()
    return {"message": words, "status": status or "not tried"}


def convert(item, number, picture):
    """A page as PNG: its file name and size, and what went wrong on the way."""
    words = ["convert", item["path"], picture, *(shlex.split(item["raw"]) or ["--page", str(number)])]
    first = run(*words, folder=item["path"].parent)
    page = {"failure": failure_of(first.stderr, item["path"])} if first.returncode else {}
    if first.returncode:
        page["is_cut"] = run(*words, "--allow-truncated", folder=item["path"].parent).returncode == 0
    if not first.returncode or page["is_cut"]:
        width, height = struct.unpack(">II", picture.read_bytes()[16:24])
        page["picture"] = {"name": picture.name, "width": width, "height": height}
    return page


def examine(item, pictures, number):
    """The item with its size, its pages and how many of those were left out."""
    described = [] if item["raw"] else run("info", "--json", item["path"]).stdout.splitlines()
    facts = [json.loads(line) for line in described] or [{}]
    pages = [{**fact, **convert(item, fact.get("page", 1), pictures / f"{number:04}-{place}.png")}
             for place, fact in enumerate(facts[:MAX_PAGES], 1)]
    count = facts[0].get("pages", 1)
    return {**item, "size": item["path"].stat().st_size, "pages": pages, "left_out": max(count - MAX_PAGES, 0)}


# ---- the page


def text(words):
    """Safe in HTML, and without what a browser would not show or would let lie."""
    shown = (c if c.isprintable() else c.encode("unicode_escape").decode() for c in words)
    return html.escape("".join(shown))


def byte_count(size):
    units = iter(("KiB", "MiB", "GiB", "TiB"))
    if size < 1024:
        return f"{size} bytes"
    while size >= 1024:
        size, unit = size / 1024, next(units)
    return f"{size:.1f} {unit}"


def picture_html(picture, room):
    """Small pictures are enlarged by a whole factor, so that every pixel stays a square."""
    width, height = picture["width"], picture["height"]
    side = max(width, height)
    is_enlarged = side <= room
    shown = width * min(room // side, MAX_ENLARGED) if is_enlarged else max(1, width * room // side)
    crisp = ' class="crisp"' if is_enlarged else ""
    link = f"pictures/{picture['name']}"
    return f'<a href="{link}"><img src="{link}" width="{shown}" alt="{width}x{height} pixels"{crisp}></a>'


def stage_html(pages):
    shown = [page["picture"] for page in pages if "picture" in page]
    if not shown:
        return '<div class="stage empty" aria-hidden="true">&#8709;</div>'
    columns = 1 if len(shown) == 1 else 2 if len(shown) <= 4 else 3
    room = STAGE_SIDE // columns - (8 if columns > 1 else 0)
    return f'<div class="stage">{"".join(picture_html(picture, room) for picture in shown)}</div>'


def facts_of(result):
    page = result["pages"][0]
    described = [each for each in result["pages"] if "width" in each]
    yield from [page["kind"]] if page in described else []
    if page.get("pages", 1) > 1:
        yield f"{page['pages']} pages"
        for each in described:
            yield f"{each['width']}x{each['height']}, {each['bits_per_pixel']} bit"
    elif page in described:
        yield f"{page['width']}x{page['height']}"
        yield f"{page['bits_per_pixel']} bit"
        is_told = page["compression"] == "none" or "run-length" in page["kind"]
        yield from [] if is_told else [page["compression"]]
        yield from [page["color_order"]] if page["bits_per_pixel"] == 16 else []
        yield from ["top-down"] if page["orientation"] == "top-down" else []
        across, down = page["x_dpi"], page["y_dpi"]
        yield f"{across if across == down else f'{across}x{down}'} dpi"
    yield byte_count(result["size"])


def note_html(page):
    failure = page["failure"]
    kind, more = ("partly", " Shown with <code>--allow-truncated</code>.") if page["is_cut"] else ("refused", "")
    return f'<p class="note {kind}">{text(failure["message"])} <code>{text(failure["status"])}</code>{more}</p>'


def card_html(result):
    parts = [stage_html(result["pages"]), f'<h3>{text(result["path"].name)}</h3>']
    if result["title"]:
        parts.append(f'<p class="title">{text(result["title"])}</p>')
    facts = "".join(f"<li>{text(fact)}</li>" for fact in facts_of(result))
    parts.append(f'<ul class="facts">{facts}</ul>')
    if result["raw"]:
        parts.append(f'<p class="arguments"><code>{text(result["raw"])}</code></p>')
    parts += [note_html(page) for page in result["pages"] if "failure" in page]
    if result["left_out"]:
        parts.append(f'<p class="note">and {result["left_out"]} more pages</p>')
    return f'<article class="card">{"".join(parts)}</article>\n'


def summary_html(results):
    pages = [page for result in results for page in result["pages"]]
    shown = sum("picture" in page for page in pages)
    counts = [(len(results), "file" if len(results) == 1 else "files"),
              (shown, "picture" if shown == 1 else "pictures"),
              (sum(page.get("is_cut", False) for page in pages), "of them cut short"),
              (len(pages) - shown, "refused, with the reason")]
    return f'<ul class="summary">{"".join(f"<li><b>{count}</b> {what}</li>" for count, what in counts)}</ul>'


def page_html(results):
    version = run("--version").stdout.split()[-1]
    sections = "".join(f"<h2>{text(group)}</h2>\n<section>\n{''.join(map(card_html, cards))}</section>\n"
                       for group, cards in itertools.groupby(results, lambda result: result["group"]))
    return f"""<!doctype html>
<html lang="en">
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>vxbmp: what is in these files</title>
<style>
{(HERE / "style.css").read_text()}</style>
<header><h1>vxbmp</h1><p>Windows and OS/2 bitmaps, icons and cursors, identified and converted by version {version}. \
Click a picture for the PNG.</p>{summary_html(results)}</header>
<main>
{sections}</main>
</html>
"""


def main():
    parser = argparse.ArgumentParser(prog="vxdemo", description=__doc__.partition("\n")[0])
    parser.add_argument("folders", metavar="FOLDER", nargs="+", type=pathlib.Path,
                        help="folders to look through, with all below them")
    parser.add_argument("-o", "--output", metavar="FOLDER", required=True, type=pathlib.Path,
                        help="folder for index.html and the pictures")
    arguments = parser.parse_args()
    for folder in arguments.folders:
        if not folder.is_dir():
            parser.error(f"there is no folder '{folder}'")
    out = arguments.output.resolve()
    (out / "pictures").mkdir(parents=True, exist_ok=True)
    items = collect([folder.resolve() for folder in arguments.folders])
    results = [examine(item, out / "pictures", number) for number, item in enumerate(items)]
    (out / "index.html").write_text(page_html(results), encoding="utf-8")
    print(f"{len(results)} files: {arguments.output / 'index.html'}")


if __name__ == "__main__":
    sys.exit(main())
