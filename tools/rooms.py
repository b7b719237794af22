"""Who may include whom. Includes run down only; this table is the house, and ./dev lint holds the tree to it."""
import pathlib
import re
import subprocess
import sys

FILTER = "API/Filters/Bmp/Common"
KERNEL = ["base", "files", "bitmap", "png", "convert", "filter", "beyond", "inspect", "verify", "app"]  # from the ground up
CLI = ["words", "failures", "streams", "arguments", "completions", "finding", "jobs", "commands"]
ALLOWED = {  # a folder or file: those below it
    "host": [],
    "include/vx": [],
    "format": ["host"],
    **{f"kernel/{room}": ["host", "format", "include/vx", *(f"kernel/{lower}" for lower in KERNEL[:floor])]
       for floor, room in enumerate(KERNEL)},
    f"{FILTER}/Kernel.h": ["host", "format"],
    f"{FILTER}/Read": ["host", "format", f"{FILTER}/Kernel.h"],
    f"{FILTER}/Write": ["host", "format", f"{FILTER}/Kernel.h"],
    f"{FILTER}/Pages": ["host", "format", f"{FILTER}/Kernel.h", f"{FILTER}/Write"],
    f"{FILTER}/Drivers": ["host", "format", *(f"{FILTER}/{lower}" for lower in ("Kernel.h", "Read", "Write", "Pages"))],
    FILTER: ["host", "format", *(f"{FILTER}/{lower}" for lower in ("Drivers", "Read", "Write", "Pages"))],
    "display": ["host"],
    **{f"cli/{room}": ["include/vx", *(f"cli/{lower}" for lower in CLI[:floor])] for floor, room in enumerate(CLI)},
    "cli": ["include/vx", *(f"cli/{room}" for room in CLI)],
    "samples": [],
    "examples": ["host"],
    "docs/tutorial": ["include/vx"],
}
ROOTS = ["", "kernel", "host", "include", "cli", FILTER]  # where includes are looked for, after the folder itself


def room_of(path):
    return max((room for room in ALLOWED if path.is_relative_to(room)), key=len, default=None)


def target(source, name):
    found = (folder / name for folder in [source.parent, *map(pathlib.Path, ROOTS)] if (folder / name).is_file())
    return next((pathlib.Path(path.resolve()).relative_to(pathlib.Path.cwd()) for path in found), None)


def faults():
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "*.h", "*.hpp", "*.c", "*.cpp"], check=True,
                            text=True, stdout=subprocess.PIPE).stdout.split()
    for source in map(pathlib.Path, listed):
        room = room_of(source)
        for number, line in enumerate(source.read_text().splitlines() if room and source.exists() else [], 1):
            included = re.match(r'\s*#\s*include\s*["<](.*)[">]', line)
            place = target(source, included[1]) if included else None
            below = room_of(place) if place else None
            if below not in (None, room, *ALLOWED[room]):
                yield f"{source}:{number}: {room} must not know {below} ({place})"


found = list(faults())
print(*found, sep="\n", end="\n" if found else "")
sys.exit(1 if found else 0)
