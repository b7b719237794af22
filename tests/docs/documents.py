"""The documents against what they speak of. Usage: documents.py CHECK SOURCE [ARGUMENT...]

errors     docs/errors.md has a section for every status, and every status of the contract
manual     VXBMP: the pages in docs/man have the commands, options and formats that VXBMP has, and the functions
           of vx.h, inspect.h and verify.h; docs/formats.md has the formats
links      what the documents refer to is there
tutorial   BIN VXSAMPLES: what docs/tutorial/README.md quotes is in its programs, in the folder BIN, and is what they
           print
"""

import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile


def errors(source):
    text = (source / "docs/errors.md").read_text()
    rows = set(re.findall(r"^\| `VX_(?!REASON|OK)(\w+)` \| `\w+` \| (-?\d+) \|", text, re.M))
    yield from difference("docs/errors.md, its sections", re.findall(r"^## VX_(\w+) \((-?\d+)\)$", text, re.M), rows)
    numbers = set(re.findall(r"^\| `\w+` \| `(STATUS_\w+)` \| (-?\d+) \|", text, re.M))
    contract = re.findall(r"#define (STATUS_\w+) \(?(-?\d+)\)?", (source / "host/vxkrn.h").read_text())
    yield from (f"docs/errors.md lacks {each} of host/vxkrn.h" for each in set(contract) - numbers)


def manual(source, program):
    yield from documented(source, program, [])
    yield from formats(source, help_of(program, ["convert"]))
    library = (source / "docs/man/vxkrn.3").read_text()
    header = "".join((source / "include/vx" / name).read_text() for name in ("vx.h", "inspect.h", "verify.h"))
    yield from difference("vxkrn.3", re.findall(r"Fn (vx_\w+)", library),
                          re.findall(r"^VX_API .*?(vx_\w+)\(", header, re.M))


def documented(source, program, command):
    """A command and those below it: its options stand in its page, below a heading of its own where it has none."""
    usage = help_of(program, command)
    name = "-".join(["vxbmp", *command[:1]])
    path = source / f"docs/man/{name}.1"
    text = path.read_text() if path.exists() else ""
    parts = re.split(r"^\.Ss (\w+)$", text, flags=re.M)
    part = dict(zip(parts[1::2], parts[2::2])).get(command[1], "") if len(command) > 1 else parts[0]
    options = re.findall(r"(?<=Fl )-?[\w-]+", "\n".join(re.findall(r"^\.It (Fl .*)", part, re.M)))
    known = re.findall(r"(?<=-)-?[\w-]+", "\n".join(re.findall(r"^  (-\S+) ", usage, re.M)))
    yield from difference(f"{path.name}: {' '.join(command)}", [*options, *(("h", "-help") if command else ())], known)

    commands = re.findall(r"^  (\w+)  ", usage.partition("\nCommands:\n")[2].partition("\n\n")[0], re.M)
    if not command:
        yield from difference(path.name, re.findall(r"^\.It Cm (\w+)$", text, re.M), commands)
        yield from difference("docs/man", [page.stem[6:] for page in path.parent.glob("vxbmp-*")], commands)
    for nested in commands:
        yield from documented(source, program, [*command, nested])


def formats(source, usage):
    """The table of formats in the help of convert, in its page and in docs/formats.md."""
    true = re.findall(r"^  (\S+) +((?:\d+, )*\d+)  +(any|\d+)  ", usage, re.M)
    page = (source / "docs/man/vxbmp-convert.1").read_text()
    yield from difference("vxbmp-convert.1", re.findall(r"^\.It Cm (\S+) Ta ([\d, ]+) Ta (\w+) Ta", page, re.M), true)
    rows = re.findall(r"^\|.*\(([\w, -]+)\) \|[^|]*\| ([\d, ]+\d)[^|]*\| (\d*) ?\|",
                      (source / "docs/formats.md").read_text(), re.M)
    said = [(name, depths, largest or "any") for names, depths, largest in rows for name in names.split(", ")]
    yield from difference("docs/formats.md", said, true)


def help_of(program, command):
    return subprocess.run([program, *command, "--help"], check=True, text=True, stdout=subprocess.PIPE).stdout


def difference(place, said, true):
    yield from (f"{place} lacks {each}" for each in sorted(set(true) - set(said)))
    yield from (f"{place} has {each}, which is none" for each in sorted(set(said) - set(true)))


def links(source):
    for document in [*source.glob("*.md"), *source.glob("docs/**/*.md")]:
        for target in re.findall(r"\]\(([^)#:]+)\)", document.read_text()):
            if not (document.parent / target).exists():
                yield f"{document.name} refers to {target}, which is not there"


def through(emulator, programs, folder):
    """A folder of commands that run the programs under an emulator, for shells that cannot know that it is needed."""
    for program in pathlib.Path(programs).iterdir():
        command = pathlib.Path(folder) / program.name
        command.write_text(f'#!/bin/sh\nexec {shlex.join([*emulator, str(program)])} "$@"\n')
        command.chmod(0o755)
    return folder


def tutorial(source, programs, samples, *emulator):
    folder = source / "docs/tutorial"
    text = (folder / "README.md").read_text()
    for file, quoted in re.findall(r"^```\w+ (\S+)\n(.*?)^```$", text, re.M | re.S):
        if quoted not in (folder / file).read_text():
            yield f"the tutorial quotes what is not in {file}:\n{quoted}"
    for file in folder.glob("*.c*"):
        if f"[{file.name}]({file.name})" not in text:
            yield f"the tutorial does not speak of {file.name}"

    with tempfile.TemporaryDirectory() as work, tempfile.TemporaryDirectory() as commands:
        subprocess.run([*emulator, samples, work], check=True)
        if emulator:
            programs = through(emulator, programs, commands)
        environment = dict(os.environ, PATH=f"{programs}:{os.environ['PATH']}", LC_ALL="C")
        for session in re.findall(r"^```console\n(.*?)^```$", text, re.M | re.S):
            commands = re.findall(r"^\$ (.*)$", session, re.M)
            printed = ""
            for command in commands:
                run = subprocess.run(command, shell=True, cwd=work, env=environment, text=True,
                                     stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
                printed += f"$ {command}\n{run.stdout}"
            if re.sub(r" +$", "", printed, flags=re.M) != session:  # as editors leave it
                yield f"the tutorial says\n{session}but its programs print\n{printed}"


faults = list(globals()[sys.argv[1]](pathlib.Path(sys.argv[2]), *sys.argv[3:]))
print(*faults, sep="\n")
sys.exit(1 if faults else 0)
