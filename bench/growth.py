"""How time and memory grow: commands over more and more pages, pixels and files."""
import pathlib
import shutil
import subprocess

LIMIT = 90  # seconds of processor time; whoever needs more is left out from there on
PAGES = [10, 100, 1000, 10000, 65535]
SIDES = [1024, 2048, 4096, 8192, 16384]
FILES = [10, 100, 1000, 10000, 100000]


class Bench:
    def __init__(self, programs, folder, large_folder):
        self.programs, self.folder, self.large_folder = (  # from wherever a command is started
            pathlib.Path(path).resolve() for path in (programs, folder, large_folder))

    def run(self, command, before=lambda: None, where=None):
        """Best of up to three: seconds and bytes; nothing where it fails or takes too long."""
        best = None
        for _ in range(3):
            before()
            arguments = [self.programs / "vxbench-run", str(LIMIT), self.programs / "vxbmp", *command]
            status, seconds, peak = subprocess.run(arguments, cwd=where, text=True, stdout=subprocess.PIPE).stdout.split()
            if status != "0":
                return None
            if best is None or float(seconds) < best[0]:
                best = (float(seconds), int(peak) * 1024)
            if float(seconds) > 1:
                break
        return best

    def make(self, *arguments):
        subprocess.run([self.programs / "vxbench", *map(str, arguments)], check=True)


def pages_work(bench, count):
    icon, less, copy, out, page = (bench.folder / f"{name}.ico" for name in ("pages", "less", "copy", "out", "page"))
    bench.make("--make-icon", icon, "--pages", count)
    bench.make("--make-icon", less, "--pages", count - 1)  # so that one more still has room
    bench.make("--make-icon", page, "--pages", 1)

    def fresh(original=icon):
        shutil.rmtree(out, ignore_errors=True)
        out.mkdir()
        shutil.copy(original, copy)
    yield "pages", "list", ["pages", icon], fresh
    yield "pages", "info of the first 100", ["info", icon], fresh
    yield "pages", "extract all", ["pages", "extract", icon, "-o", out / "{page}.png"], fresh
    yield "pages", "add one", ["pages", "add", copy, page], lambda: fresh(less)
    yield "pages", "delete half", ["pages", "delete", copy, "--page", f"1-{count // 2}"], fresh
    yield "pages", "icon", ["icon", "-o", out / "made.ico", icon], fresh


def picture_work(bench, side):
    picture = bench.large_folder / "picture.bmp"
    bench.make("--make-picture", picture, "--huge", side)
    yield "pixels", "convert to BMP", ["convert", picture, bench.large_folder / "again.bmp"], lambda: None
    yield "pixels", "convert to PNG", ["convert", picture, bench.large_folder / "picture.png"], lambda: None
    yield "pixels", "view", ["view", picture, "--as", "symbols", "--size", "80x24"], lambda: None


def file_work(bench, count):
    folder = bench.folder / "many"
    folder.mkdir(exist_ok=True)
    bench.make("--make-picture", folder / "0.bmp", "--huge", 16)
    content = (folder / "0.bmp").read_bytes()
    for i in range(count):
        (folder / f"{i}.bmp").write_bytes(content)
    yield "files", "info", ["info", *(f"{i}.bmp" for i in range(count))], lambda: None


def measure(bench, is_quick):
    curves = {}
    short = slice(0, 3) if is_quick else slice(None)
    for sizes, works in [(PAGES, pages_work), (SIDES, picture_work), (FILES, file_work)]:
        for size in sizes[short]:
            for unit, name, command, before in works(bench, size):
                items = size * size if unit == "pixels" else size
                points = curves.setdefault((unit, name), [])
                if points and points[-1]["seconds"] is None:
                    continue
                done = bench.run(command, before, bench.folder / "many" if unit == "files" else None)
                seconds, peak = done or (None, None)
                points.append({"items": items, "seconds": seconds, "peak": peak})
                print(unit, items, name, "over the limit or failed" if done is None else f"{seconds:.3f} s", flush=True)
    return [{"unit": unit, "work": name, "points": points} for (unit, name), points in curves.items()]


def show(curves):
    for curve in curves:
        print(f"\n{curve['work']}, per {curve['unit'][:-1]}")
        for point in curve["points"]:
            if point["seconds"] is None:
                print(f"{point['items']:>12}  failed, or over {LIMIT} seconds")
            else:
                print(f"{point['items']:>12} {point['seconds'] / point['items'] * 1e9:>14.1f} ns"
                      f" {point['peak'] / 2**20:>8.1f} MiB")
