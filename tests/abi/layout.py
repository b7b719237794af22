"""Holds the tables of offsets in a document to the contract's header, at both pointer widths.

layout.py COMPILER HEADER DOCUMENT          fails when the tables are others than the header's
layout.py COMPILER HEADER DOCUMENT --write  writes them

The compiler tells the offsets as assembly text, so no 32-bit library is needed.
"""

import re
import subprocess
import sys

BEGIN, END = "<!-- the records: begin -->\n", "<!-- the records: end -->\n"


def records_of(header):
    """[(record, [(field, type)])] in the order of the header, without the reserved fields."""
    text = re.sub(r"/\*.*?\*/", "", open(header, encoding="utf-8").read(), flags=re.S)
    records = []
    for body, record in re.findall(r"typedef struct \w+ \{(.*?)\n\} (\w+);", text, re.S):
        fields = []
        for declaration in filter(None, (part.strip() for part in body.split(";"))):
            wide = re.fullmatch(r"VX_WIDE_POINTER\((.+), (\w+)\)", declaration)
            plain = re.fullmatch(r"(.+?)(\w+)(\[\w+\])?", declaration)
            kind, field = (wide[1] + "*", wide[2]) if wide else (plain[1].strip() + (plain[3] or ""), plain[2])
            if not field.startswith("Reserved"):
                fields.append((field, kind))
        records.append((record, fields))
    return records


def layout(compiler, header, records, width):
    """{(record, field): (offset, size)}; the field "" is the whole record."""
    rows = []
    for record, fields in records:
        rows.append(f'ROW("{record}.", 0, sizeof({record}))')
        rows += [f'ROW("{record}.{field}", offsetof({record}, {field}), sizeof((({record}*)0)->{field}))'
                 for field, _ in fields]
    source = (f'#include "{header}"\n'
              '#define ROW(name, offset, size) __asm__(".ascii \\"ROW " name " %c0 %c1\\"" :: "i"(offset), "i"(size));\n'
              "void Rows(void) {\n" + "\n".join(rows) + "\n}\n")
    command = [compiler, f"-m{width}", "-std=gnu11", "-ffreestanding", "-S", "-x", "c", "-o", "-", "-"]
    assembly = subprocess.run(command, input=source, capture_output=True, text=True, check=False)
    if assembly.returncode != 0:
        sys.exit(assembly.stderr)
    found = re.findall(r'"ROW (\w+)\.(\w*) (\d+) (\d+)', assembly.stdout)
    return {(record, field): (int(offset), int(size)) for record, field, offset, size in found}


def tables(compiler, header):
    records = records_of(header)
    narrow, wide = (layout(compiler, header, records, width) for width in (32, 64))
    text = ""
    for record, fields in records:
        sizes = narrow[record, ""][1], wide[record, ""][1]
        size = f"{sizes[0]} bytes" if sizes[0] == sizes[1] else f"{sizes[0]} bytes in 32 bits, {sizes[1]} in 64"
        text += f"\n### `{record}`: {size}\n\n| field | type | 32 bits | 64 bits |\n|---|---|---|---|\n"
        for field, kind in fields:
            cells = (f"{offset}, {length}" for offset, length in (narrow[record, field], wide[record, field]))
            text += f"| `{field}` | `{kind}` | {' | '.join(cells)} |\n"
    return text + "\n"


def main(compiler, header, document, write=False):
    text = open(document, encoding="utf-8").read()
    head, rest = text.split(BEGIN)
    old, tail = rest.split(END)
    new = tables(compiler, header)
    if write:
        open(document, "w", encoding="utf-8").write(head + BEGIN + new + END + tail)
    elif old != new:
        sys.exit(f"{document} shows other offsets than the header has; write them with\n"
                 f"  {sys.argv[0]} {compiler} {header} {document} --write")


if __name__ == "__main__":
    main(*sys.argv[1:4], write=sys.argv[4:] == ["--write"])
