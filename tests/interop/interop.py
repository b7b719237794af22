"""What vxbmp writes, other programs read alike: every format at every depth, pixel for pixel.

usage: interop.py VXBMP VXSAMPLES

Programs that are not installed are left out and named. What a program that is there cannot read stands in
UNSUPPORTED with the reason; everything else has to come out the same as vxbmp itself reads it. Then files that
they made are edited. Last, every sample goes into every format and back.
"""
import concurrent.futures
import contextlib
import io
import json
import os
import shutil
import subprocess
import sys
import tempfile
import warnings

sys.path.append(os.path.join(os.path.dirname(__file__), "../common"))
import png

FORMATS = {"bmp": (1, 4, 8, 16, 24, 32), "rle": (1, 4, 8, 24), "os2": (1, 4, 8, 16, 24), "os2v2": (1, 4, 8, 16, 24),
           "ico": (1, 4, 8, 24, 32), "cur": (1, 4, 8, 24, 32), "png-icon": (1, 4, 8, 24, 32), "png": (1, 4, 8, 24, 32)}
EXTENSIONS = {"ico": "ico", "cur": "cur", "png-icon": "ico", "png": "png"}
ICONS = ("ico", "cur", "png-icon")

# ---- pictures

def read_png(path):
    with open(path, "rb") as file:
        return png.decode(file.read())


def write_png(path, *picture):
    with open(path, "wb") as file:
        file.write(png.encode(*picture))


def pictures():
    """name -> width, height, colour of the pixel (x, y)"""
    def soft(x, y):
        return (7 * x & 255, 11 * y & 255, 90, min(255, 9 * x))

    return {"two": (7, 5, lambda x, y: (200, 30, 10, 255) if (x * y) % 3 else (0, 0, 255, 255)),
            "few": (33, 7, lambda x, y: (16 * ((x // 3 + y) % 16), 255 - 16 * ((x // 3 + y) % 16), 5, 255)),
            "many": (255, 9, lambda x, y: (8 * x & 255, 6 * y & 255, x * y & 255, 255)),
            "hard": (32, 32, lambda x, y: (8 * x, 8 * y, 0, 255) if (x - 16) ** 2 + (y - 16) ** 2 < 200 else (0, 0, 0, 0)),
            "soft": (27, 20, soft)}


# ---- other programs: each makes a PNG file of what it opens; nothing, or an exception, of what it does not

def run(command, data=None):
    return subprocess.run(command, input=data, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True).stdout


def imagemagick(path, kind):
    kind = "cur" if kind == "cur" else EXTENSIONS.get(kind, "bmp")
    # Its PNG writer would have its own opinion of gamma.
    size, pixels = run(["convert", f"{kind}:{path}[0]", "-print", "%w %h\n", "-depth", "8", "rgba:-"]).split(b"\n", 1)
    return png.encode(*map(int, size.split()), pixels)


def pillow(path, kind):
    import PIL.Image
    made = io.BytesIO()
    with PIL.Image.open(path) as image:
        image.convert("RGBA").save(made, "png")
    return made.getvalue()


def netpbm(path, kind):
    return run(["pamtopng"], run(["winicontopam" if kind in ICONS else "bmptopnm", path]))


def icotool(path, kind):
    return run(["icotool", "-x", "--cursor" if kind == "cur" else "--icon", "-o", "-", path])


def gdk_pixbuf(path, kind):
    import gi
    gi.require_version("GdkPixbuf", "2.0")
    from gi.repository import GdkPixbuf
    return bytes(GdkPixbuf.Pixbuf.new_from_file(path).save_to_bufferv("png", [], [])[1])


def seen_by(program, path, kind):
    """Width, height and RGBA bytes, or None for what it does not open."""
    try:
        return png.decode(program(path, kind))
    except Exception:  # of many kinds, none of which is ours to know
        return None


def is_there(program):
    return shutil.which({imagemagick: "convert", netpbm: "pamtopng", icotool: "icotool"}.get(program, "true")) and (
        program not in (pillow, gdk_pixbuf) or importable({pillow: "PIL.Image"}.get(program, "gi.repository.GdkPixbuf")))


def importable(name):
    with contextlib.suppress(ImportError, ValueError), warnings.catch_warnings():
        warnings.simplefilter("ignore")  # that no version is asked for
        return bool(__import__(name))


PROGRAMS = (imagemagick, pillow, netpbm, icotool, gdk_pixbuf)
FORMS = {"--565": 565, "--1555": 1555, "--4444": 4444}  # of 16 bits
ALL = (1, 4, 8, 16, 24, 32, *FORMS.values())
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
    (("imagemagick",), ("bmp",), (1555,), (), "it takes a bit of alpha for half opaque"),
    (("netpbm",), ("bmp",), (32, 1555, 4444), TRANSPARENT, "it leaves out the alpha of bitmaps"),
    (("gdk_pixbuf", "pillow"), ("bmp",), (1555, 4444), TRANSPARENT, "they leave out the alpha of 16 bits"),
    (("pillow",), ("bmp",), (4444,), (), "it knows the masks of two layouts of 16 bits"),
    (("pillow",), ("rle",), (4,), ("two", "few", "many", "soft"), "it does not clip codes at the end of rows of odd width"),
    (("pillow",), ("cur",), (1, 4, 8, 24), TRANSPARENT, "it leaves the masks of cursors out"),
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
        self.program, self.vxsamples, self.folder = vxbmp, vxsamples, folder
        self.failures, self.compared = [], {}

    def vxbmp(self, *arguments):
        """What it prints, or None when it fails."""
        done = subprocess.run((self.program, *arguments), capture_output=True, text=True)
        if done.returncode != 0:
            self.failures.append(f"vxbmp {' '.join(arguments)}: {done.stderr.strip()}")
        return done.stdout if done.returncode == 0 else None

    def loads(self, path):
        return subprocess.run((self.program, "convert", path, os.devnull, "--to", "png"),
                              capture_output=True).returncode == 0

    def read(self, path):
        """The picture as vxbmp sees it."""
        return None if self.vxbmp("convert", path, path + ".png", "--to", "png") is None else read_png(path + ".png")

    def file_in(self, name, kind, bits, *more):
        path = os.path.join(self.folder, f"{name}-{kind}-{bits}{''.join(more)}.{EXTENSIONS.get(kind, 'bmp')}")
        source = os.path.join(self.folder, name + ".png")
        made = self.vxbmp("convert", source, path, "--to", kind, "--bits", str(bits), "--dither", "none", *more)
        return path if made is not None else None

    def compare(self, name, kind, bits, *more):
        path = self.file_in(name, kind, bits, *more)
        ours = self.read(path) if path else None
        for program in PROGRAMS if ours else ():
            if not is_there(program) or is_unsupported(program.__name__, kind, FORMS[more[0]] if more else bits, name):
                continue
            theirs = seen_by(program, path, kind)
            # Channels of 5 bits become 8 in more ways than one, those of 4 by a shift in some programs.
            tolerance = 15 if "--4444" in more else 1 if bits == 16 else 0
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
            cases += [(name, "bmp", 16, form) for form in FORMS]
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
        makers = {imagemagick: lambda path: run(["convert", small, source, "ico:" + path]),
                  icotool: lambda path: run(["icotool", "-c", "-o", path, small, source]), pillow: of_pillow}
        for program, make in makers.items():
            path = os.path.join(self.folder, "made-by-" + program.__name__ + ".ico")
            if is_there(program):
                make(path)
                yield path

    def bodies(self, path):
        lines = [json.loads(line) for line in self.vxbmp("pages", "--json", path).splitlines()]
        with open(path, "rb") as file:
            data = file.read()
        return [data[page["offset"]:page["offset"] + page["bytes"]] for page in lines if "page" in page]

    def edit_files_of_others(self):
        """Pages that are not meant stay bit for bit, and every program still reads the file."""
        picture = os.path.join(self.folder, "two.png")
        for path in self.makers(os.path.join(self.folder, "hard.png")):
            before = self.bodies(path)
            self.vxbmp("pages", "insert", path, picture, "--at", "1")
            self.vxbmp("pages", "add", path, picture, "--bits", "8")
            self.vxbmp("pages", "delete", path, "--page", "2")
            self.vxbmp("pages", "replace", path, os.path.join(self.folder, "soft.png"), "--page", "-1", "--bits", "32")
            after = self.bodies(path)
            if len(after) != len(before) + 1 or after[1:-1] != before[1:]:
                self.failures.append(f"{path}: pages that were not meant changed")
            self.vxbmp("pages", "compact", path)
            if self.bodies(path) != after:
                self.failures.append(f"{path}: compacting changed pages")
            has_png = any(body.startswith(b"\x89PNG") for body in after)
            for program in (imagemagick, pillow, netpbm, gdk_pixbuf):
                if is_there(program) and not (has_png and program is gdk_pixbuf) and seen_by(program, path, "ico") is None:
                    self.failures.append(f"{program.__name__} does not open {path} after edits")
            if is_there(icotool) and len(run(["icotool", "-l", path]).splitlines()) != len(after):
                self.failures.append(f"icotool does not list {path} after edits")

    def animations(self):
        """Frames of what is built here, as another program sees the first of them."""
        source = os.path.join(self.folder, "hard.png")
        path = os.path.join(self.folder, "animation.ani")
        made = self.vxbmp("cursor", source, os.path.join(self.folder, "two.png"), "-o", path, "--title", "Odd", "--delay", "9")
        if made is None or not is_there(gdk_pixbuf):
            return
        import gi
        gi.require_version("GdkPixbuf", "2.0")
        from gi.repository import GdkPixbuf
        try:
            frame = GdkPixbuf.PixbufAnimation.new_from_file(path).get_static_image()
            theirs = png.decode(bytes(frame.save_to_bufferv("png", [], [])[1]))
        except Exception as error:
            self.failures.append(f"gdk_pixbuf does not open {path}: {error}")
        else:
            if not same(self.read(path), theirs):
                self.failures.append(f"gdk_pixbuf sees {path} otherwise")

    def samples_and_back(self):
        """Every sample that loads, in every format as deep as it needs: nothing may be lost."""
        samples = os.path.join(self.folder, "samples")
        subprocess.run((self.vxsamples, samples), check=True, capture_output=True)
        count = 0
        for name in sorted(os.listdir(samples)):
            source = os.path.join(samples, name)
            if not name.endswith((".bmp", ".ico", ".cur")) or name.startswith("bad-"):
                continue
            if name.startswith("odd-") and not self.loads(source):
                continue  # refused, as some of those are
            before = self.read(source)
            is_opaque = set(before[2][3::4]) == {255}
            for kind in FORMATS:
                fits = max(before[:2]) <= (256 if kind == "png-icon" else 255 if kind in ICONS else 65535)
                keeps = is_opaque or kind in ("png", "bmp") + ICONS
                if not fits or not keeps:
                    continue
                target = os.path.join(self.folder, "back." + EXTENSIONS.get(kind, "bmp"))
                after = None if self.vxbmp("convert", source, target, "--to", kind) is None else self.read(target)
                if after is None or not same(before, after):
                    self.failures.append(f"{name} does not come back from {kind}")
                count += 1
        return count


def main():
    with tempfile.TemporaryDirectory() as folder:
        comparison = Comparison(*sys.argv[1:3], folder)
        comparison.compare_all()
        comparison.edit_files_of_others()
        comparison.animations()
        count = comparison.samples_and_back()
        for program in PROGRAMS:
            name = program.__name__
            print(f"{name}: {comparison.compared[name]} files" if is_there(program) else f"{name}: not installed")
        print(f"samples: {count} times there and back")
        print("\n".join(sorted(comparison.failures)))
    return 1 if comparison.failures else 0


if __name__ == "__main__":
    sys.exit(main())
