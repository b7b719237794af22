"""Kills and failed system calls over every command that writes: afterwards the old file is there or the new one, with
the rights that it had, and nothing else beside it, at the latest after the next save. Usage: faults.py VXBMP LIBRARY

LIBRARY is preloaded: Faults.cpp says what it does. Prints how many processes were ended and calls failed.
"""

import collections
import concurrent.futures
import errno
import os
import pathlib
import shutil
import signal
import struct
import subprocess
import sys
import tempfile

VXBMP, LIBRARY = map(os.path.abspath, sys.argv[1:3])
ACCESS = "system.posix_acl_access"
# Owner rw, user 1234 rw, group nothing, mask rw, others nothing: as a mode it would be 0660.
LIST = struct.pack("<I", 2) + b"".join(struct.pack("<HHI", tag, rights, who) for tag, rights, who in
                                       ((1, 6, ~0 & 0xFFFFFFFF), (2, 6, 1234), (4, 0, ~0 & 0xFFFFFFFF),
                                        (16, 6, ~0 & 0xFFFFFFFF), (32, 0, ~0 & 0xFFFFFFFF)))
ATTRIBUTES = {ACCESS: LIST, "user.note": b"kept"}
ERRORS = {"open": errno.EMFILE, "openat": errno.EMFILE, "pwrite": errno.ENOSPC, "linkat": errno.ENOSPC,
          "flock": errno.ENOLCK, "fsetxattr": errno.ENOSPC, "fchown": errno.EPERM}

# What is run, and the file that it writes.
COMMANDS = [(f"convert in.bmp {out}", out) for out in ("old.bmp", "old.ico", "old.cur", "old.png", "new.bmp", "new.png")]
COMMANDS += [(f"icon in.bmp -o {out} --sizes 16", out) for out in ("old.ico", "new.ico")]
COMMANDS += [(f"pages {command}", "app.ico") for command in
             ("add app.ico in.bmp", "insert app.ico in.bmp --at 1", "replace app.ico in.bmp --page 1",
              "delete app.ico --page 1", "compact app.ico")]
COMMANDS += [("pages hotspot arrow.cur 1,2 --page 1", "arrow.cur"),
             ("pages extract app.ico --page 1 -o old.png", "old.png"),
             ("pages extract app.ico --page 2 -o new.png", "new.png")]


def run(folder, command, **environment):
    return subprocess.run([VXBMP, *command.split()], cwd=folder, env=os.environ | environment, timeout=120,
                          stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)


def under_fault(folder, command, fault="", log=""):
    return run(folder, command, LD_PRELOAD=LIBRARY, VX_FAULT=fault, VX_FAULT_LOG=log)


def bitmap(side):
    rows = bytes(i % 251 for i in range(side * side * 3))
    return struct.pack("<2sIIIIiiHHIIiiII", b"BM", 54 + len(rows), 0, 54, 40, side, side, 1, 24, 0, 0, 0, 0, 0, 0) + rows


def prepare(folder):
    (folder / "in.bmp").write_bytes(bitmap(16))
    for name in ("old.bmp", "old.ico", "old.cur", "old.png"):
        (folder / name).write_bytes(b"old")
    for command in ("convert in.bmp app.ico", "convert in.bmp arrow.cur", "pages add app.ico in.bmp",
                    "pages add app.ico in.bmp", "pages delete app.ico --page 2"):
        assert run(folder, command).returncode == 0, command
    for path in folder.iterdir():
        give_attributes(path)


def give_attributes(path):
    """Those that the file system has."""
    for name, value in ATTRIBUTES.items():
        os.setxattr(path, name, value)


def supported(folder):
    path = folder / "probe"
    path.write_bytes(b"")
    for name, value in list(ATTRIBUTES.items()):
        try:
            os.setxattr(path, name, value)
        except OSError as error:
            print(f"without {name}: {error.strerror}")
            del ATTRIBUTES[name]
    path.unlink()


def state(folder):
    return {path.name: path.read_bytes() for path in folder.iterdir()}


class Trial:
    """One command in copies of one folder."""

    def __init__(self, base, command, out):
        self.base, self.command, self.out = base, command, out
        self.before = state(base)
        with self.copy() as folder:
            log = folder.parent / "log"
            ended = under_fault(folder, command, log=str(log))
            assert ended.returncode == 0, (command, ended.stderr)
            self.after = state(folder)
            self.calls = dict(line.rsplit(" ", 1) for line in log.read_text().splitlines())
        assert self.after.keys() - self.before.keys() <= {out}, self.after.keys()
        assert self.after != self.before

    def copy(self):
        class Copy(tempfile.TemporaryDirectory):
            def __enter__(copy):
                folder = pathlib.Path(super().__enter__()) / "folder"
                shutil.copytree(self.base, folder)
                for path in folder.iterdir():
                    give_attributes(path)
                return folder
        return Copy()

    def faults(self):
        for kind, count in self.calls.items():
            for number in range(1, int(count) + 1):
                if kind == "any":
                    yield f"kill:any:{number}"
                else:
                    yield f"fail:{kind}:{number}:{ERRORS.get(kind, errno.EIO)}"
                if kind == "pwrite":
                    yield f"short:{kind}:{number}"

    def check(self, fault):
        """Yields what is wrong, and then what happened, for the counts."""
        with self.copy() as folder:
            ended = under_fault(folder, self.command, fault)
            now = state(folder)
            left = [name for name in now if name.startswith(".vx-")]
            isKilled = fault.startswith("kill")
            if left:
                assert run(folder, "convert in.bmp next.bmp").returncode == 0
                (folder / "next.bmp").unlink()
                now = state(folder)
            problems = []
            if now not in (self.before, self.after):
                problems.append(f"other files or content: {sorted(now)}")
            if left and not isKilled:
                problems.append(f"left {left}")
            if isKilled != (ended.returncode == -signal.SIGKILL) or not isKilled and ended.returncode not in (0, 1):
                problems.append(f"ended with {ended.returncode}: {ended.stderr}")
            if ended.returncode == 0 and now != self.after:
                problems.append("success, and the old file")
            # Once it has its name, a failure can only be told.
            if ended.returncode == 1 and now == self.after and ":fsync:" not in fault:
                problems.append(f"failure, and the new file: {ended.stderr}")
            if self.out in self.before:
                path = folder / self.out
                now_has = {name: os.getxattr(path, name) for name in os.listxattr(path)}
                if any(now_has.get(name) != value for name, value in ATTRIBUTES.items()):
                    problems.append(f"rights or notes are lost: {now_has}")
            outcome = "new" if now == self.after else "old"
            return [f"vxbmp {self.command}, {fault}: {each}" for each in problems], \
                (fault.partition(":")[0], outcome, bool(left))


def main():
    counts = collections.Counter()
    problems = []
    with tempfile.TemporaryDirectory() as name, concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        base = pathlib.Path(name) / "base"
        base.mkdir()
        supported(base)
        prepare(base)
        for command, out in COMMANDS:
            trial = Trial(base, command, out)
            for found, what in pool.map(trial.check, trial.faults()):
                problems += found
                counts[what] += 1
    for problem in problems:
        print(problem)
    for act, text in (("kill", "processes killed"), ("fail", "system calls failed"), ("short", "writes cut short")):
        ends = {end: sum(n for key, n in counts.items() if key[:2] == (act, end)) for end in ("old", "new")}
        print(f"{sum(ends.values())} {text}: the old file {ends['old']} times, the new one {ends['new']} times")
    print(f"{sum(n for key, n in counts.items() if key[2])} unfinished files, all cleared by the next save")
    print(f"{len(COMMANDS)} commands, {len(problems)} problems")
    sys.exit(bool(problems))


main()
