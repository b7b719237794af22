"""Writes the tables of statuses and reasons in docs/errors.md and docs/man/vxkrn.3 from the code, which has them once.

Usage: tables.py [--check]     --check writes nothing, and fails where a table differs from the code
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
HEADER = (ROOT / "include/vx/vx.h").read_text()


def enum(name):
    """The constants of an enum: name, number, comment."""
    body = re.search(rf"enum {name} {{(.*?)\n}}", HEADER, re.S)[1]
    for constant, number, comment in re.findall(r"(VX_\w+) =\s*(-?\d+),?\s*(?:/\*\*< (.*?) \*/)?", body, re.S):
        yield constant, number, " ".join(comment.split())


def entries(file, fields):
    """The entries of a table in the code: of each constant the strings behind it."""
    text = re.sub(r'"\s+"', "", (ROOT / file).read_text())
    return {entry[0]: entry[1:] for entry in re.findall(r"\{(VX_\w+)" + r',\s*"(.*?)"' * fields + r"\}", text)}


def statuses():
    names = entries("kernel/base/Status.cpp", 2)
    return [(constant, names[constant][0], number, comment) for constant, number, comment in enum("vx_status")]


def reasons():
    known = entries("kernel/base/Reasons.cpp", 2)
    return [(constant, known[constant][0], number, comment or known[constant][0].replace("-", " "), known[constant][1])
            for constant, number, comment in enum("vx_reason")][1:]


def table(heads, rows):
    lines = [heads, ["---"] * len(heads), *([f"`{row[0]}`", f"`{row[1]}`", *row[2:]] for row in rows)]
    return "".join(f"|{'|'.join(f' {cell} ' if cell != '---' else cell for cell in line)}|\n" for line in lines)


def sentence(text):
    return text[0].upper() + text[1:] + "."


def manual(rows):
    return "".join(f".It Dv {row[0]} Pq {row[2]}\n{sentence(row[3])}\n" for row in rows)


TABLES = [  # file, what stands before the table, the table, what stands behind it
    ("docs/errors.md", "<!-- statuses: tools/tables.py writes them -->\n",
     table(["`<vx/vx.h>`", "name, and in `host/vxkrn.h`", "number", "in a word"], statuses()), "<!-- end -->"),
    ("docs/errors.md", "<!-- reasons: tools/tables.py writes them -->\n",
     table(["`<vx/vx.h>`", "name", "number", "why, and its numbers", "what to do"], reasons()), "<!-- end -->"),
    ("docs/man/vxkrn.3", '.Bl -tag -width "VX_NO_DISPLAY_LIBRARY"\n', manual(statuses()[1:]), ".El"),
]

differs = False
for file, begin, written, end in TABLES:
    text = (ROOT / file).read_text()
    start = text.index(begin) + len(begin)
    changed = text[:start] + written + text[text.index(end, start):]
    if changed != text and "--check" in sys.argv:
        print(f"{file}: a table differs from the code; tools/tables.py writes it")
    elif changed != text:
        (ROOT / file).write_text(changed)
    differs = differs or changed != text
sys.exit(1 if differs and "--check" in sys.argv else 0)
