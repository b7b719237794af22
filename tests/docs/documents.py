"""The documents against what they speak of. Usage: documents.py CHECK SOURCE [ARGUMENT...]

errors     docs/errors.md has every status, with its names and number and a section of its own
tutorial   BIN VXSAMPLES: what docs/tutorial/README.md quotes is in its programs, in the folder BIN, and is what they
           print
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile


def errors(source):
    statuses = re.search(r"enum vx_status \{(.*?)\}", (source / "include/vx/vx.h").read_text(), re.S)[1]
    names = dict(re.findall(r'\{(VX_\w+), "(\w+)"', (source / "kernel/Status.cpp").read_text()))
    known = {(name, names.get(name), number) for name, number in re.findall(r"(VX_\w+) = (-?\d+)", statuses)}
    contract = re.findall(r"#define (STATUS_\w+) \(?(-?\d+)\)?", (source / "host/vxkrn.h").read_text())

    text = (source / "docs/errors.md").read_text()
    rows = set(re.findall(r"^\| `(\w+)` \| `(\w+)` \| (-?\d+) \|", text, re.M))
    sections = re.findall(r"^## (\w+) \((-?\d+)\)$", text, re.M)
    yield from (f"docs/errors.md: the table lacks {row}" for row in known - rows)
    yield from (f"docs/errors.md: the table has {row}, which is none" for row in rows - known)
    yield from (f"docs/errors.md: no section '## {name} ({number})'"
                for name, _, number in known if name != "VX_OK" and (name, number) not in sections)
    yield from (f"docs/errors.md: {name} {number} of host/vxkrn.h is not in the table"
                for name, number in contract if (name, number) not in {row[1:] for row in rows})


def tutorial(source, programs, samples):
    folder = source / "docs/tutorial"
    text = (folder / "README.md").read_text()
    for file, quoted in re.findall(r"^```\w+ (\S+)\n(.*?)^```$", text, re.M | re.S):
        if quoted not in (folder / file).read_text():
            yield f"the tutorial quotes what is not in {file}:\n{quoted}"
    for file in folder.glob("*.c*"):
        if f"[{file.name}]({file.name})" not in text:
            yield f"the tutorial does not speak of {file.name}"

    with tempfile.TemporaryDirectory() as work:
        subprocess.run([samples, work], check=True)
        environment = dict(os.environ, PATH=f"{programs}:{os.environ['PATH']}", LC_ALL="C")
        for session in re.findall(r"^```console\n(.*?)^```$", text, re.M | re.S):
            commands = re.findall(r"^\$ (.*)$", session, re.M)
            printed = ""
            for command in commands:
                run = subprocess.run(command, shell=True, cwd=work, env=environment, text=True,
                                     stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
                printed += f"$ {command}\n{run.stdout}"
            if printed != session:
                yield f"the tutorial says\n{session}but its programs print\n{printed}"


faults = list(globals()[sys.argv[1]](pathlib.Path(sys.argv[2]), *sys.argv[3:]))
print(*faults, sep="\n")
sys.exit(1 if faults else 0)
