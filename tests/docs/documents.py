"""The documents against what they speak of. Usage: documents.py CHECK SOURCE [ARGUMENT...]

errors     docs/errors.md has a section for every status, and every status of the contract
manual     VXBMP: the pages in docs/man have the commands, options and formats that VXBMP has, and the functions
           of vx.h, inspect.h and verify.h; docs/formats.md has the formats
examples   VXBMP VXSAMPLES: the examples in the help and in the manual work, and those in docs/cookbook.md
links      what the documents refer to is there
readme     VXBMP VXSAMPLES [--update]: the tour of README.md prints what stands there; with --update, now it does
tutorial   BIN VXSAMPLES: what docs/tutorial/README.md quotes is in its programs, in the folder BIN, and is what they
           print
"""

import os
import pathlib
import re
import shlex
import shutil
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
    general = ("h", "-help", "-help-all") if command else ()
    yield from difference(f"{path.name}: {' '.join(command)}", [*options, *general], known)

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
    return subprocess.run([program, *command, "--help-all"], check=True, text=True, stdout=subprocess.PIPE).stdout


def difference(place, said, true):
    yield from (f"{place} lacks {each}" for each in sorted(set(true) - set(said)))
    yield from (f"{place} has {each}, which is none" for each in sorted(set(said) - set(true)))


# What the files of the examples are: samples, and what becomes of them.
EXAMPLE_FILES = """
    cp $S/win-24bit.bmp photo.bmp; cp $S/win-24bit.bmp before.bmp; cp $S/win-24bit.bmp after.bmp; cp $S/win-rle8.bmp scan.bmp
    cp $S/icon-sizes.ico app.ico; cp $S/icon-sizes.ico before.ico; cp $S/icon-sizes.ico after.ico; cp $S/win-1bit.bmp first.bmp
    cp $S/cursor-4bit.cur arrow.cur; cp $S/animated.ani wait.ani; cp $S/bad-rows-cut.bmp damaged.bmp; cp app.ico favicon.ico; cp app.ico disk.img; cp app.ico program.exe;
     mkdir icons scans
    cp $S/icon-4bit.ico $S/icon-sizes.ico icons; cp $S/win-4bit.bmp $S/os2-8bit.bmp scans; head -c 65536 /dev/zero > drive.img
    vxbmp convert app.ico large.png --page 4; cp large.png new.png; cp large.png alpha.png; cp large.png wait-1.png
    cp large.png wait-2.png; vxbmp convert $S/icon-png-256.ico logo.png --page 3; vxbmp convert photo.bmp arrow.png
    vxbmp convert app.ico hand-drawn-16.png --page 1; vxbmp convert photo.bmp photo.png; cat scans/*.bmp >> drive.img
    head -c 9600000 /dev/zero | vxbmp convert - survey.bmp --raw 1000x3200x24; head -c 700000 /dev/zero > dump.bin
    $PYTHON -m zipfile -c icons.zip app.ico; cp large.png one.png; cp large.png two.png; mkdir -p .zsh/functions .config/fish/completions; cp -r icons folder"""
TOOLS = ("jq", "unzip", "parallel", "zopflipng")  # without which examples are not run


def examples(source, program, samples):
    """Each in a folder of its own; all lines of a session of the cookbook in one."""
    sessions = [[line] for line in (*help_examples(program, []), *manual_examples(source))]
    cookbook = (source / "docs/cookbook.md").read_text()
    recipes = re.findall(r"^```\n(.*?)^```$", cookbook, re.M | re.S)
    sessions += [recipe.splitlines() for recipe in recipes]
    if len(re.findall("^## ", cookbook, re.M)) < 20:
        yield "docs/cookbook.md has fewer than twenty tasks"
    with tempfile.TemporaryDirectory() as work:
        subprocess.run([samples, f"{work}/samples"], check=True)
        environment = dict(os.environ, PATH=f"{pathlib.Path(program).resolve().parent}:{os.environ['PATH']}", S=f"{work}/samples",
                           TERM="dumb", PYTHON=sys.executable)
        template = pathlib.Path(work, "template")
        template.mkdir()
        bash(EXAMPLE_FILES, template, environment)
        for number, session in enumerate(sessions):
            if "curl" in session[0] or any(re.search(rf"\b{tool}\b", line) and not shutil.which(tool) for tool in TOOLS for line in session):
                continue
            folder = pathlib.Path(work, str(number))
            shutil.copytree(template, folder)
            if not any("damaged" in line for line in session):
                (folder / "damaged.bmp").unlink()  # which *.bmp would name, too
            run = bash("\n".join(session), folder, dict(environment, HOME=str(folder)))
            findings = run.returncode == 1 and "verify" in session[0]  # which is no failure of the example
            if (run.returncode != 0 and not findings) or "is a word too many" in run.stderr:
                yield f"{session} fails:\n{run.stderr}"


def bash(script, folder, environment):
    return subprocess.run(["bash", "-c", script], cwd=folder, env=environment, text=True, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE)


def help_examples(program, command):
    usage = help_of(program, command)
    text = re.sub(r"\\\n +", "", usage.rpartition("Examples:\n" if "Examples:\n" in usage else "Example:\n")[2])
    yield from re.findall(r"^  (\S.*vxbmp.*|vxbmp .*)$", text, re.M) if "Example" in usage else ()
    for nested in re.findall(r"^  (\w+)  ", usage.partition("\nCommands:\n")[2].partition("\n\n")[0], re.M):
        yield from help_examples(program, [*command, nested])


def manual_examples(source):
    for page in sorted((source / "docs/man").glob("*.1")):
        for line in re.findall(r"^\.Dl \$ (.*)$", page.read_text(), re.M):
            yield line.replace(r"\e", "\\")


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
        for said, printed in sessions(text, work, environment):
            if printed != said:
                yield f"the tutorial says\n{said}but its programs print\n{printed}"


def sessions(text, folder, environment):
    """What a document says that sessions print, and what they print, without the spaces that editors remove."""
    for session in re.findall(r"^```console\n(.*?)^```$", text, re.M | re.S):
        printed = ""
        for command in re.findall(r"^\$ (.*)$", session, re.M):
            run = subprocess.run(command, shell=True, cwd=folder, env=environment, text=True,
                                 stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
            printed += f"$ {command}\n{run.stdout}"
        yield session, re.sub(r" +$", "", re.sub(r"in [\d.]+ s \(\d+ a second\)", "in 0.1 s (100 a second)", printed),
                              flags=re.M)


def readme(source, program, samples, *update):
    """The tour, in a folder that looks like this one after ./dev demo."""
    path = source / "README.md"
    with tempfile.TemporaryDirectory() as work:
        subprocess.run([samples, f"{work}/build/samples"], check=True)
        pathlib.Path(work, "build/release").mkdir()
        pathlib.Path(work, "build/release/bin").symlink_to(pathlib.Path(program).resolve().parent)
        text = path.read_text()
        for said, printed in sessions(text, work, dict(os.environ, LC_ALL="C", TERM="dumb")):
            if printed != said:
                text = text.replace(said, printed)
                yield f"README.md says\n{said}but it prints\n{printed}"
        if update:
            path.write_text(text)


faults = list(globals()[sys.argv[1]](pathlib.Path(sys.argv[2]), *sys.argv[3:]))
print(*faults, sep="\n")
sys.exit(1 if faults else 0)
