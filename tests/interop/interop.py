"""What vxbmp writes, other programs read alike: every format at every depth, pixel for pixel.

usage: interop.py VXBMP VXSAMPLES

Programs that are not installed are left out and named. What a program that is there cannot read stands in
UNSUPPORTED with the reason; everything else has to come out the same as vxbmp itself reads it. Then files that
they made are edited. Last, every sample goes into every format and back.
"""
import concurrent.futures
import json
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import zlib

FORMATS = {"bmp": (1, 4, 8, 16, 24, 32), "rle": (1, 4, 8, 24), "os2": (1, 4, 8, 16, 24), "os2v2": (1, 4, 8, 16, 24),
           "ico": (1, 4, 8, 24), "cur": (1, 4, 8, 24), "png-icon": (1, 4, 8, 24, 32), "png": (1, 4, 8, 24, 32)}
EXTENSIONS = {"ico": "ico", "cur": "cur", "png-icon": "ico", "png": "png"}
ICONS = ("ico", "cur", "png-icon")

# ---- pictures

def png_chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def write_png(path, width, height, rgba):
    rows = b"".join(b"\0" + rgba[4 * width * y:4 * width * (y + 1)] for y in range(height))
    with open(path, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n" + png_chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)) +
                   png_chunk(b"IDAT", zlib.compress(rows)) + png_chunk(b"IEND", b""))


def read_png(path):
    """Reads 8-bit RGBA without interlacing, which is what is asked for below."""
    with open(path, "rb") as file:
        data = file.read()
    width, height, depth, kind = struct.unpack(">IIBB", data[16:26])
    assert (depth, kind) == (8, 6), f"{path}: depth {depth}, colour type {kind}"
    packed, at = b"", 8
    while at < len(data):
        size, name = struct.unpack(">I4s", data[at:at + 8])
        packed += data[at + 8:at + 8 + size] if name == b"IDAT" else b""
        at += 12 + size
    raw, stride = zlib.decompress(packed), 4 * width
    rows, above = [], bytearray(stride)
    for y in range(height):
        how, row = raw[y * (stride + 1)], bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for i in range(stride):
            left, up, corner = row[i - 4] if i >= 4 else 0, above[i], above[i - 4] if i >= 4 else 0
            nearest = min((left, up, corner), key=lambda value: abs(left + up - corner - value))
            row[i] = (row[i] + (0, left, up, (left + up) // 2, nearest)[how]) & 255
        rows.append(bytes(row))
        above = row
    return width, height, b"".join(rows)


def pictures():
    """name -> width, height, colour of the pixel (x, y)"""
    def soft(x, y):
        return (7 * x & 255, 11 * y & 255, 90, min(255, 9 * x))

    return {"two": (7, 5, lambda x, y: (200, 30, 10, 255) if (x * y) % 3 else (0, 0, 255, 255)),
            "few": (33, 7, lambda x, y: (16 * ((x // 3 + y) % 16), 255 - 16 * ((x // 3 + y) % 16), 5, 255)),
            "many": (255, 9, lambda x, y: (8 * x & 255, 6 * y & 255, x * y & 255, 255)),
            "hard": (32, 32, lambda x, y: (8 * x, 8 * y, 0, 255) if (x - 16) ** 2 + (y - 16) ** 2 < 200 else (0, 0, 0, 0)),
            "soft": (27, 20, soft)}


# ---- other programs: each gives width, height and RGBA bytes, or None for what it does not open

def run(*command):
    done = subprocess.run(command, capture_output=True)
    return done.stdout if done.returncode == 0 else None


def with_alpha(pixels, channels):
    if channels == 4:
        return pixels
    return b"".join(pixels[i:i + 3] + b"\xff" for i in range(0, len(pixels), 3))


def imagemagick(path, kind):
    kind = "cur" if kind == "cur" else EXTENSIONS.get(kind, "bmp")
    out = run("convert", f"{kind}:{path}[0]", "-print", "%w %h\n", "-depth", "8", "rgba:-")
    if out is None:
        return None
    size, pixels = out.split(b"\n", 1)
    width, height = size.split()
    return int(width), int(height), pixels


def pillow(path, kind):
    import PIL.Image
    try:
        with PIL.Image.open(path) as image:
            picture = image.convert("RGBA")
            return picture.width, picture.height, picture.tobytes()
    except (OSError, SyntaxError, ValueError):
        return None


def pnm(data):
    """One picture out of netpbm: PAM, PPM, PGM or PBM."""
    if data is None:
        return None
    if data.startswith(b"P7"):
        head, pixels = data.split(b"ENDHDR\n", 1)
        facts = dict(line.split(b" ", 1) for line in head.split(b"\n")[1:] if b" " in line)
        width, height, depth = int(facts[b"WIDTH"]), int(facts[b"HEIGHT"]), int(facts[b"DEPTH"])
        return width, height, with_alpha(pixels[:width * height * depth], depth)
    fields = 3 if data[:2] == b"P4" else 4
    parts = data.split(None, fields)
    start = len(data) - len(parts[fields]) if len(parts) > fields else len(data)
    width, height = int(parts[1]), int(parts[2])
    header = data[:2] + b"\n" + parts[1] + b" " + parts[2] + b"\n" + (b"" if fields == 3 else parts[3] + b"\n")
    start = len(header) if data.startswith(header) else start
    if data[:2] == b"P6":
        return width, height, with_alpha(data[start:], 3)
    if data[:2] == b"P5":
        scale = 255 // int(parts[3])
        return width, height, b"".join(bytes((v * scale,)) * 3 + b"\xff" for v in data[start:])
    stride = (width + 7) // 8
    bits = [(data[start + y * stride + x // 8] >> (7 - x % 8)) & 1 for y in range(height) for x in range(width)]
    return width, height, b"".join(bytes((255 * (1 - bit),)) * 3 + b"\xff" for bit in bits)


def netpbm(path, kind):
    return pnm(run("winicontopam", path) if kind in ICONS else run("bmptopnm", path))


def icotool(path, kind):
    flag = "--cursor" if kind == "cur" else "--icon"
    if run("icotool", "-x", flag, "-o", path + ".it.png", path) is None:
        return None
    # PNG pages come out as they are, of any kind of PNG.
    run(sys.argv[1], "convert", path + ".it.png", path + ".rgba.png", "--bits", "32")
    return read_png(path + ".rgba.png")


def gdk_pixbuf(path, kind):
    import gi
    gi.require_version("GdkPixbuf", "2.0")
    from gi.repository import GdkPixbuf, GLib
    try:
        image = GdkPixbuf.Pixbuf.new_from_file(path)
    except GLib.Error:
        return None
    channels, stride, pixels = image.get_n_channels(), image.get_rowstride(), image.get_pixels()
    rows = (pixels[y * stride:y * stride + channels * image.get_width()] for y in range(image.get_height()))
    return image.get_width(), image.get_height(), with_alpha(b"".join(rows), channels)


def is_there(program):
    if program is pillow:
        return importable("PIL.Image")
    if program is gdk_pixbuf:
        return importable("gi") and has_gdk_pixbuf()
    return shutil.which({imagemagick: "convert", netpbm: "bmptopnm", icotool: "icotool"}[program]) is not None


def has_gdk_pixbuf():
    import gi
    try:
        gi.require_version("GdkPixbuf", "2.0")
        return True
    except ValueError:
        return False


def importable(name):
    try:
        __import__(name)
        return True
    except (ImportError, ValueError):
        return False


PROGRAMS = (imagemagick, pillow, netpbm, icotool, gdk_pixbuf)
ALL = (1, 4, 8, 16, 24, 32, 565)
BITMAPS = ("bmp", "rle", "os2", "os2v2")
TRANSPARENT = ("hard", "soft")
# What a program reads otherwise or not at all, and why: programs, formats, depths, pictures (none: all of them).
UNSUPPORTED = (
    (("icotool",), BITMAPS + ("png",), ALL, (), "it is for icons and cursors"),
    (("icotool",), ("ico", "cur"), (24,), ("few",), "it misreads rows of 24 bits with 1 or 2 bytes of padding"),
    (("netpbm",), ("png", "cur"), ALL, (), "its two programs are for bitmaps and icons"),
    (("netpbm",), ("os2v2",), ALL, (), "it knows headers of 12 and 40 bytes"),
    (("netpbm",), ("bmp",), (565,), (), "it takes red where 5-5-5 has it"),
    (("netpbm",), ("os2",), (16,), (), "it takes 16 bits in headers of 40 bytes alone"),
    (("imagemagick",), ("os2v2",), (1, 4, 8), (), "it takes the entries of every OS/2 palette for 3 bytes long"),
    (("imagemagick",), ("bmp",), (32,), TRANSPARENT, "it takes the fourth byte for alpha, whatever the header says"),
    (("pillow",), ("rle",), (4,), ("two", "few", "many", "soft"), "it does not clip codes at the end of rows of odd width"),
    (("pillow",), ("cur",), ALL, TRANSPARENT, "it leaves the masks of cursors out"),
    (("pillow",), ("png-icon",), (1, 4, 8, 24), TRANSPARENT, "it leaves out transparency that is not an alpha channel"),
    (("gdk_pixbuf",), ("png-icon",), ALL, (), "it refuses compressed icons"),
    (("gdk_pixbuf",), ("ico", "cur"), (1,), (), "it takes icons of 1 bit for black and white"),
)


def is_unsupported(program, kind, bits, picture):
    return any(program in programs and kind in kinds and bits in depths and (not names or picture in names)
               for programs, kinds, depths, names, _ in UNSUPPORTED)


# ---- the comparison

def same(ours, theirs, tolerance=0):
    """Alike but for the colours of pixels that cannot be seen."""
    if ours[:2] != theirs[:2] or len(ours[2]) != len(theirs[2]):
        return False
    pairs = ((ours[2][i:i + 4], theirs[2][i:i + 4]) for i in range(0, len(ours[2]), 4))
    return all(a == b or a[3] == b[3] == 0 or max(abs(x - y) for x, y in zip(a, b)) <= tolerance for a, b in pairs)


class Comparison:
    def __init__(self, vxbmp, vxsamples, folder):
        self.vxbmp, self.vxsamples, self.folder = vxbmp, vxsamples, folder
        self.failures, self.compared = [], {}

    def convert(self, source, target, *arguments):
        done = subprocess.run((self.vxbmp, "convert", source, target, *arguments), capture_output=True, text=True)
        if done.returncode != 0:
            self.failures.append(f"vxbmp convert {source} {target} {' '.join(arguments)}: {done.stderr.strip()}")
        return done.returncode == 0

    def read(self, path):
        """The picture as vxbmp sees it."""
        return read_png(path + ".png") if self.convert(path, path + ".png", "--to", "png", "--bits", "32") else None

    def file_in(self, name, kind, bits, *more):
        path = os.path.join(self.folder, f"{name}-{kind}-{bits}{''.join(more)}.{EXTENSIONS.get(kind, 'bmp')}")
        source = os.path.join(self.folder, name + ".png")
        made = self.convert(source, path, "--to", kind, "--bits", str(bits), "--dither", "none", *more)
        return path if made else None

    def compare(self, name, kind, bits, *more):
        path = self.file_in(name, kind, bits, *more)
        ours = self.read(path) if path else None
        for program in PROGRAMS if ours else ():
            if not is_there(program) or is_unsupported(program.__name__, kind, 565 if more else bits, name):
                continue
            theirs = program(path, kind)
            tolerance = 1 if bits == 16 else 0  # channels of 5 bits become 8 in more ways than one
            if theirs is None:
                self.failures.append(f"{program.__name__} does not open {path}")
            elif not same(ours, theirs, tolerance):
                self.failures.append(f"{program.__name__} sees {path} otherwise")
            self.compared[program.__name__] = self.compared.get(program.__name__, 0) + 1

    def compare_all(self):
        cases = []
        for name, (width, height, color) in pictures().items():
            rgba = b"".join(bytes(color(x, y)) for y in range(height) for x in range(width))
            write_png(os.path.join(self.folder, name + ".png"), width, height, rgba)
            cases += [(name, kind, bits) for kind, depths in FORMATS.items() for bits in depths]
            cases.append((name, "bmp", 16, "--565"))
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            list(pool.map(lambda case: self.compare(*case), cases))

    def makers(self, source):
        """Icon files of 16 and 32 pixels as other programs make them: name -> whether it worked."""
        def of_pillow(path):
            import PIL.Image
            PIL.Image.open(source).save(path, sizes=[(16, 16), (32, 32)])

        small = os.path.join(self.folder, "small.png")
        color = pictures()["hard"][2]
        write_png(small, 16, 16, b"".join(bytes(color(2 * x, 2 * y)) for y in range(16) for x in range(16)))
        makers = {imagemagick: lambda path: run("convert", small, source, "ico:" + path),
                  icotool: lambda path: run("icotool", "-c", "-o", path, small, source), pillow: of_pillow}
        for program, make in makers.items():
            path = os.path.join(self.folder, "made-by-" + program.__name__ + ".ico")
            if is_there(program):
                make(path)
                yield path

    def pages(self, *arguments):
        done = subprocess.run((self.vxbmp, "pages", *arguments), capture_output=True, text=True)
        if done.returncode != 0:
            self.failures.append(f"vxbmp pages {' '.join(arguments)}: {done.stderr.strip()}")
        return done.stdout

    def bodies(self, path):
        lines = [json.loads(line) for line in self.pages("--json", path).splitlines()]
        with open(path, "rb") as file:
            data = file.read()
        return [data[page["offset"]:page["offset"] + page["bytes"]] for page in lines if "page" in page]

    def edit_files_of_others(self):
        """Pages that are not meant stay bit for bit, and every program still reads the file."""
        picture = os.path.join(self.folder, "two.png")
        for path in self.makers(os.path.join(self.folder, "hard.png")):
            before = self.bodies(path)
            self.pages("insert", path, picture, "--at", "1")
            self.pages("add", path, picture, "--bits", "8")
            self.pages("delete", path, "--page", "2")
            self.pages("replace", path, picture, "--page", "-1")
            after = self.bodies(path)
            if len(after) != len(before) + 1 or after[1:-1] != before[1:]:
                self.failures.append(f"{path}: pages that were not meant changed")
            self.pages("compact", path)
            if self.bodies(path) != after:
                self.failures.append(f"{path}: compacting changed pages")
            has_png = any(body.startswith(b"\x89PNG") for body in after)
            for program in (imagemagick, pillow, netpbm, gdk_pixbuf):
                if is_there(program) and not (has_png and program is gdk_pixbuf) and program(path, "ico") is None:
                    self.failures.append(f"{program.__name__} does not open {path} after edits")
            if is_there(icotool) and len((run("icotool", "-l", path) or b"").splitlines()) != len(after):
                self.failures.append(f"icotool does not list {path} after edits")

    def samples_and_back(self):
        """Every sample that loads, in every format as deep as it needs: nothing may be lost."""
        samples = os.path.join(self.folder, "samples")
        subprocess.run((self.vxsamples, samples), check=True, capture_output=True)
        count = 0
        for name in sorted(os.listdir(samples)):
            source = os.path.join(samples, name)
            if not name.endswith((".bmp", ".ico", ".cur")) or name.startswith("bad-"):
                continue
            before = self.read(source)
            is_opaque = set(before[2][3::4]) == {255}
            is_hard = set(before[2][3::4]) <= {0, 255}
            for kind in FORMATS:
                fits = max(before[:2]) <= (256 if kind == "png-icon" else 255 if kind in ICONS else 65535)
                keeps = is_opaque or kind in ("png", "png-icon") or (is_hard and kind in ICONS)
                if not fits or not keeps:
                    continue
                target = os.path.join(self.folder, "back." + EXTENSIONS.get(kind, "bmp"))
                after = self.read(target) if self.convert(source, target, "--to", kind) else None
                if after is None or not same(before, after):
                    self.failures.append(f"{name} does not come back from {kind}")
                count += 1
        return count


def main():
    with tempfile.TemporaryDirectory() as folder:
        comparison = Comparison(*sys.argv[1:3], folder)
        comparison.compare_all()
        comparison.edit_files_of_others()
        count = comparison.samples_and_back()
        for program in PROGRAMS:
            name = program.__name__
            print(f"{name}: {comparison.compared[name]} files" if is_there(program) else f"{name}: not installed")
        print(f"samples: {count} times there and back")
        print("\n".join(sorted(comparison.failures)))
    return 1 if comparison.failures else 0


if __name__ == "__main__":
    sys.exit(main())
