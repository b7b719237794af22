"""Writes the tables of docs/errors.md, docs/findings.md, docs/formats.md and docs/man/vxkrn.3 that the code has.

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


def remarks():
    known = entries("kernel/base/Remarks.cpp", 2)
    return [(constant, known[constant][0], number, known[constant][1]) for constant, number, _ in enum("vx_remark_code")][1:]


def findings():
    """The table of findings: text that is "" is the failure's own."""
    text = re.sub(r'"\s+"', "", (ROOT / "kernel/verify/Findings.cpp").read_text())
    rule = r'\{(VX_FINDING_\w+),\s*"(.*?)",\s*VX_(\w+),\s*"(.*?)",\s*"(.*?)",\s*"(.*?)"\}'
    return [(name, severity.lower(), words or "what is wrong, in words", "yes" if done else "", advice)
            for _, name, severity, done, words, advice in re.findall(rule, text)][1:]


HEADERS = {"kAny": "any", "kNotCore": "any but OS/2 1.x", "kOs2": "OS/2 2.x", "kOs2OrInfo": "OS/2 2.x, 40 bytes",
           "kWindows": "Windows"}
CODINGS = {"kUncompressed": "0, none", "kCompressionRle8": "1, RLE8", "kCompressionRle4": "2, RLE4",
           "kCompressionBitFields": "3, masks", "kCompressionHuffman": "3, Huffman 1D", "kCompressionRle24": "4, RLE24",
           "kCompressionJpeg": "4, JPEG", "kCompressionPng": "5, PNG", "kCompressionAlphaFields": "6, masks with alpha"}
MASKS = {"kNoneOrAny": "", "kOfTheFilter": "5-5-5, 5-6-5; 8-8-8 at 32 bits"}


def decoders():
    """The rules of who decodes what, those next to each other as one row where they differ in depth alone."""
    text = (ROOT / "format/Decoders.h").read_text()
    rule = r"\{Headers::(\w+), (\w+), (\w+),\s*MaskRule::(\w+),\s*Decoder::k(\w+)\}"
    rows = {}
    for headers, depth, coding, masks, decoder in re.findall(rule, text):
        row = (HEADERS[headers], CODINGS[coding], MASKS[masks], "the filter" if decoder == "Filter" else "the library")
        rows.setdefault(row, []).append("any" if depth == "kAnyDepth" else depth)
    return [(headers, ", ".join(depths), coding, masks, who) for (headers, coding, masks, who), depths in rows.items()]


def table(heads, rows, quoted=2):
    lines = [heads, ["---"] * len(heads), *([*(f"`{cell}`" for cell in row[:quoted]), *row[quoted:]] for row in rows)]
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
    ("docs/errors.md", "<!-- remarks: tools/tables.py writes them -->\n",
     table(["`<vx/vx.h>`", "name", "number", "what is said of the file or page"], remarks()), "<!-- end -->"),
    ("docs/findings.md", "<!-- findings: tools/tables.py writes them -->\n",
     table(["code", "severity", "what is said of the file or page", "mended", "what to do"], findings(), 1),
     "<!-- end -->"),
    ("docs/formats.md", "<!-- decoders: tools/tables.py writes them -->\n",
     table(["image header", "bits", "coding", "masks", "decoded by"], decoders(), 0), "<!-- end -->"),
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
