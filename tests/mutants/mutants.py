"""Plants small faults in a copy of the project, one at a time, and says which ones the tests do not notice.

The faults stand in filter.faults and kernel.faults beside this file:

    name-of-the-fault
    in text                  optional: where the code is not unique, how the function begins that has it
    - code as it is          one or more lines; how they are spaced and broken does not matter
    + code with the fault    none or more lines

A fault is found by its code and not by its file, so that it survives a move. Code that is not there exactly once is
an error: the list must be mended. Nothing but build/mutants is written to.
"""
import argparse
import filecmp
import os
import pathlib
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import time
from collections import Counter
from typing import NamedTuple

HERE = pathlib.Path(__file__).resolve().parent
PROJECT = HERE.parent.parent
WORK = PROJECT / 'build/mutants'
COPY, BUILT, SCRATCH = WORK / 'source', WORK / 'built', WORK / 'scratch'
BUILD_LOG, TEST_LOG, REPORT = WORK / 'build.log', WORK / 'test.log', WORK / 'report.txt'


class Room(NamedTuple):
    folders: tuple[str, ...]
    targets: tuple[str, ...]  # what a fault makes necessary to build
    programs: tuple[str, ...]  # the tests, those that find most per second first


# Random damage costs more than all other tests together, and finds little without a sanitizer.
LOADING = 'load_test --gtest_filter=-Damage.*'
ROOMS = {
    'filter': Room(('API', 'format'), ('vxfbmp',),
                   ('vxfbmp_test', 'c_kernel', 'save_test', LOADING)),
    'kernel': Room(('kernel', 'format/BitmapLayout.h', 'format/Decoders.h'), ('vxkrn', 'kernel_parts_test'),
                   ('kernel_parts_test', 'kernel_application_test', 'save_test', LOADING, 'display_test')),
}


class Fault(NamedTuple):
    name: str
    path: pathlib.Path  # in the project
    start: int  # of the code that `new` replaces
    end: int
    new: str

    def __str__(self) -> str:
        old = self.path.read_text()[self.start:self.end]
        return f'{self.path.name}: {" ".join(old.split())} => {" ".join(self.new.split()) or "nothing"}'


def sources(room: Room) -> dict[pathlib.Path, str]:
    paths = [PROJECT / folder for folder in room.folders]
    files = [file for path in paths for file in ([path] if path.is_file() else sorted(path.rglob('*')))]
    return {file: file.read_text() for file in files if file.suffix in ('.cpp', '.h')}


def occurrences(code: str, texts: dict[pathlib.Path, str]):
    """Where code stands, however it is spaced: (file, start, end) each."""
    pattern = re.compile(r'\s+'.join(re.escape(word) for word in code.split()))
    return [(path, *match.span()) for path, text in texts.items() for match in pattern.finditer(text)]


def locate(name: str, inside: str, old: str, new: str, texts: dict[pathlib.Path, str]) -> Fault:
    found = occurrences(old, texts)
    if inside:  # from there to the next line that begins with a closing brace
        scopes = [(path, start, texts[path].find('\n}', start)) for path, start, _ in occurrences(inside, texts)]
        found = [(path, start, end) for path, start, end in found
                 if any(path == scope[0] and scope[1] <= start < scope[2] for scope in scopes)]
    if len(found) != 1:
        raise ValueError(f'{name}: this stands {len(found)} times in the code, not once: {" ".join(old.split())}')
    return Fault(name, *found[0], new.strip())


def listed(room_name: str) -> list[Fault]:
    texts = sources(ROOMS[room_name])
    faults, errors = [], []
    text = re.sub(r'^#.*\n', '', (HERE / f'{room_name}.faults').read_text(), flags=re.M)
    for entry in re.split(r'\n{2,}', text.strip()):
        name, *lines = entry.splitlines()
        inside, old, new = ('\n'.join(line[len(mark):] for line in lines if line.startswith(mark))
                            for mark in ('in ', '-', '+'))
        try:
            faults.append(locate(name, inside, old, new, texts))
        except ValueError as error:
            errors.append(str(error))
    names = Counter(fault.name for fault in faults)
    errors += [f'{name}: {count} faults have this name' for name, count in names.items() if count > 1]
    if errors:
        raise ValueError('\n'.join(errors))
    return faults


SWAPS = {' < ': ' <= ', ' <= ': ' < ', ' > ': ' >= ', ' >= ': ' > ', ' == ': ' != ', ' != ': ' == ', ' + ': ' - ',
         ' - ': ' + ', ' && ': ' || ', ' || ': ' && ', ' * ': ' / ', ' += ': ' -= ', '++': '--', ' << ': ' >> ',
         ' >> ': ' << ', ' 0)': ' 1)', ' 1)': ' 0)', ' 0;': ' 1;', ' 1;': ' 0;', 'true': 'false', 'false': 'true'}


def invented(room_name: str, count: int, seed: int) -> list[Fault]:
    """Faults made by rule, in any source of the room. Some change nothing that anyone could see."""
    places = [(path, *match.span(), match[0]) for path, text in sources(ROOMS[room_name]).items()
              for match in re.finditer('|'.join(map(re.escape, SWAPS)), text)
              if not re.search(r'//|#|static_assert|"|operator|template', text[:match.start()].rpartition('\n')[2])]
    chosen = random.Random(seed).sample(places, min(count, len(places)))
    return [Fault(f'{path.stem}:{path.read_text().count(chr(10), 0, start) + 1}:{old.strip()}', path, start, end,
                  SWAPS[old]) for path, start, end, old in chosen]


def copy_project() -> None:
    """Brings the copy up to date; what has not changed keeps its time, so that it is not built again."""
    skipped = shutil.ignore_patterns('build', '.git', '.cache', '__pycache__')

    def take(source: str, target: str) -> None:
        if not (os.path.exists(target) and filecmp.cmp(source, target, shallow=False)):
            shutil.copy(source, target)

    shutil.copytree(PROJECT, COPY, ignore=skipped, copy_function=take, dirs_exist_ok=True)
    for file in COPY.rglob('*'):
        if file.is_file() and not (PROJECT / file.relative_to(COPY)).exists():
            file.unlink()


def build(targets) -> bool:
    with open(BUILD_LOG, 'wb') as log:
        return subprocess.run(['ninja', '-C', BUILT, '-j2', *targets], stdout=log, stderr=log).returncode == 0


def prepare(room: Room) -> None:
    copy_project()
    launcher = 'ccache' if shutil.which('ccache') else ''
    configure = ['cmake', '-G', 'Ninja', '-S', COPY, '-B', BUILT, '-DCMAKE_BUILD_TYPE=None', '-DVX_BUILD_CLI=OFF',
                 *(f'-DCMAKE_{language}_FLAGS=-O1 -w' for language in ('C', 'CXX')),
                 *(f'-DCMAKE_{language}_COMPILER_LAUNCHER={launcher}' for language in ('C', 'CXX'))]
    with open(BUILD_LOG, 'wb') as log:
        configured = subprocess.run(configure, stdout=log, stderr=log).returncode == 0
    if not configured or not build([*room.targets, *(program.split()[0] for program in room.programs), 'vxfbmp']):
        sys.exit(BUILD_LOG.read_text(errors='replace'))


def bound() -> None:
    """Limits what a program that runs wild takes."""
    for what, most in ((resource.RLIMIT_CORE, 0), (resource.RLIMIT_AS, 8 << 30), (resource.RLIMIT_FSIZE, 1 << 30)):
        resource.setrlimit(what, (most, most))


def run_program(program: str, seconds: float) -> str:
    """Runs a test program. Returns what failed, or nothing."""
    name, *arguments = program.split()
    path = BUILT / 'bin' / name
    arguments += [BUILT / 'lib/vxkrn-18/filters/vxfbmp.so.18', SCRATCH] if name == 'c_kernel' else [
        '--gtest_fail_fast', '--gtest_brief=0', '--gtest_color=no']
    shutil.rmtree(SCRATCH, ignore_errors=True)
    SCRATCH.mkdir()
    environment = os.environ | {'TMPDIR': str(SCRATCH), 'TEST_TMPDIR': str(SCRATCH)}
    with open(TEST_LOG, 'wb') as output:
        test = subprocess.Popen([path, *arguments], stdout=output, stderr=output, stdin=subprocess.DEVNULL,
                                env=environment, cwd=SCRATCH, start_new_session=True, preexec_fn=bound)
        try:
            code = test.wait(seconds)
        except subprocess.TimeoutExpired:
            code = None
        finally:
            subprocess.run(['kill', '-9', '--', f'-{test.pid}'], stderr=subprocess.DEVNULL)
            test.wait()
    if code == 0:
        return ''
    text = TEST_LOG.read_text(errors='replace')
    failed = re.findall(r'^\[  FAILED  \] ([^,\s]+)', text, re.M)[:1]
    failed = failed or re.findall(r'^\[ RUN      \] (\S+)', text, re.M)[-1:]  # in which it crashed
    how = 'does not end' if code is None else 'crashes' if code < 0 else 'fails'
    return f'{failed[0] if failed else name} {how}'


def baseline(room: Room) -> dict[str, float]:
    """Runs the tests without a fault. Returns how many seconds each program may take."""
    allowed = {}
    for program in room.programs:
        start = time.monotonic()
        if failure := run_program(program, 600):
            sys.exit(f'without any fault, {failure}; see {TEST_LOG}')
        allowed[program] = 10 + 5 * (time.monotonic() - start)
    return allowed


def judge(fault: Fault, room: Room, allowed: dict[str, float]) -> tuple[str, str]:
    """Plants a fault, tests, and takes it away again."""
    file = COPY / fault.path.relative_to(PROJECT)
    text = file.read_text()
    file.write_text(text[:fault.start] + fault.new + text[fault.end:])
    try:
        if not build(room.targets):
            return 'not compiled', ''
        for program in room.programs:
            if failure := run_program(program, allowed[program]):
                return 'caught', failure
        return 'ESCAPED', str(fault)
    finally:
        file.write_text(text)


def examine(room_name: str, faults: list[Fault], report) -> int:
    room = ROOMS[room_name]
    prepare(room)
    allowed = baseline(room)
    verdicts = Counter()
    # One file's faults together, so that it is seldom built without a fault; headers, which cost most, in the end.
    for fault in sorted(faults, key=lambda each: (each.path.suffix == '.h', each.path)):
        verdict, detail = judge(fault, room, allowed)
        verdicts[verdict] += 1
        report(f'{verdict:12} {fault.name:40} {detail}')
    report(f'{room_name}: {len(faults)} faults: ' + ', '.join(f'{n} {verdict}' for verdict, n in verdicts.items()))
    return verdicts['ESCAPED']


def main() -> int:
    parser = argparse.ArgumentParser(prog='./dev mutants', description='plant faults; say which escape the tests')
    parser.add_argument('room', nargs='?', choices=ROOMS, help='both unless given')
    parser.add_argument('--only', metavar='NAME', action='append', help='only the faults whose names begin like this')
    parser.add_argument('--random', metavar='N', type=int, help='N faults made by rule in place of those of the lists')
    parser.add_argument('--seed', metavar='S', type=int, default=1, help='which ones')
    parser.add_argument('--check', action='store_true', help='only see whether the lists fit the code')
    given = parser.parse_args()
    try:
        chosen = {room: invented(room, given.random, given.seed) if given.random else listed(room)
                  for room in ([given.room] if given.room else ROOMS)}
    except ValueError as error:
        sys.exit(f'the list does not fit the code:\n{error}')
    if given.check:
        return 0
    wanted = tuple(given.only or [''])
    chosen = {room: [each for each in faults if each.name.startswith(wanted)] for room, faults in chosen.items()}
    signal.signal(signal.SIGTERM, lambda *_: sys.exit('ended'))  # so that what was started ends too
    WORK.mkdir(parents=True, exist_ok=True)
    with open(REPORT, 'w') as file:
        def report(line: str) -> None:
            for stream in (sys.stdout, file):
                print(line, file=stream, flush=True)

        escaped = sum(examine(room, faults, report) for room, faults in chosen.items() if faults)
    return 1 if escaped else 0


if __name__ == '__main__':
    sys.exit(main())
