"""Runs the command lines of transcripts and holds what they print to what stands there.

usage: transcripts.py [--update] BIN FILE...

BIN is the folder of the programs. A transcript is prose with indented lines between: "$ " begins a command for sh, "> "
goes on with it, and below stands what it prints, on standard error behind "! ", and [CODE] where that is not 0. "..."
stands for anything within a line, and alone for any lines. At each "# Title" the commands get a fresh folder. For them:

    sample NAME...         copies samples here; all of them are in $SAMPLES, and their pictures in $PICTURES
    patch FILE AT BYTES    writes over a file from a byte on; BYTES as printf takes them
    rgba FILE              the pixels of a PNG file: 4 bytes each, from the top
    names                  the files that are here, on one line
    vxdemo                 the demo page's script, which stands beside vxbmp

--update rewrites what stands there where it is not what is printed.
"""
import difflib
import os
import pathlib
import re
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
COMMANDS = {
    'sample': 'for each; do cp "$SAMPLES/$each" . || exit; done',
    'patch': 'printf "$3" | dd of="$1" bs=1 seek="$2" conv=notrunc status=none',
    'rgba': f"'{sys.executable}' '{HERE.parent}/common/png.py' < \"$1\"",
    'names': "ls -A | paste -sd ' '",
    'vxdemo': '"$(dirname "$(command -v vxbmp)")/demo/demo.py" "$@"'}
INDENT = '    '


def matches(expected: list[str], actual: list[str]) -> bool:
    lines = [r'(?:.*\n)*' if line == '...' else '.*'.join(map(re.escape, line.split('...'))) + r'\n' for line in expected]
    return re.fullmatch(''.join(lines), ''.join(f'{line}\n' for line in actual)) is not None


def without_end(lines: list[str]) -> list[str]:
    return lines[:-1] if lines[-1:] == [''] else lines


def run(command: str, folder: str, environment: dict[str, str]) -> list[str]:
    done = subprocess.run(['sh', '-c', command], cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                          capture_output=True, timeout=240)
    out, err = (without_end(text.decode(errors='backslashreplace').split('\n')) for text in (done.stdout, done.stderr))
    lines = out + [f'! {line}'.rstrip() for line in err]
    while lines and not lines[-1]:
        lines.pop()
    return lines + ([f'[{done.returncode}]'] if done.returncode else [])


class Transcript:
    def __init__(self, path: str, environment: dict[str, str]):
        self.path, self.environment = path, environment
        self.text = pathlib.Path(path).read_text().splitlines()
        self.folder = tempfile.TemporaryDirectory()
        self.now: list[str] = []  # the text as it should be

    def step(self, at: int) -> int:
        """Takes a line, or a command with what it prints. Returns where the next one is."""
        line = self.text[at]
        self.now.append(line)
        at += 1
        if line.startswith('# '):
            self.folder = tempfile.TemporaryDirectory()
        if not line.startswith(INDENT):
            return at
        command = line.removeprefix(INDENT + '$ ')
        assert command != line, f'{self.path}:{at}: output without a command'
        while at < len(self.text) and self.text[at].startswith(INDENT + '> '):
            command += '\n' + self.text[at].removeprefix(INDENT + '> ')
            self.now.append(self.text[at])
            at += 1
        end = at
        while end < len(self.text) and re.match(r'    (?!\$ )|$', self.text[end]):
            end += 1
        while end > at and not self.text[end - 1]:
            end -= 1
        expected = [each.removeprefix(INDENT) for each in self.text[at:end]]
        actual = run(command, self.folder.name, self.environment)
        self.now += [INDENT + each if each else '' for each in (expected if matches(expected, actual) else actual)]
        return end

    def differs(self, update: bool) -> bool:
        at = 0
        while at < len(self.text):
            at = self.step(at)
        difference = list(difflib.unified_diff(self.text, self.now, self.path, 'as printed', lineterm='', n=5))
        print(*difference, sep='\n', end='\n' if difference else '')
        if difference and update:
            pathlib.Path(self.path).write_text('\n'.join(self.now) + '\n')
        return bool(difference)


def main(arguments: list[str]) -> int:
    update = arguments[:1] == ['--update']
    programs, *paths = arguments[update:]
    with tempfile.TemporaryDirectory() as name:
        environment = os.environ | {
            'PATH': ':'.join((f'{name}/bin', os.path.abspath(programs), os.environ['PATH'])),
            'SAMPLES': f'{name}/samples', 'PICTURES': f'{name}/pictures', 'TERM': 'dumb', 'LC_ALL': 'C.UTF-8'}
        for command, script in COMMANDS.items():
            path = pathlib.Path(name, 'bin', command)
            path.parent.mkdir(exist_ok=True)
            path.write_text(f'#!/bin/sh\n{script}\n')
            path.chmod(0o755)
        subprocess.run(['vxsamples', f'{name}/samples', f'{name}/pictures'], env=environment, check=True)
        different = [path for path in paths if Transcript(path, environment).differs(update)]
    return 1 if different and not update else 0


if __name__ == '__main__':
    sys.exit(main(sys.argv[1:]))
