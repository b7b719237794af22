// The table of commands.
#include "commands/Command.h"

namespace cli {
namespace {

constexpr Command kCommands[] = {
    {"info", "Says what is in bitmap, icon and cursor files.",
     R"(One line a page: its kind, size in pixels, bits a pixel, coding, the order its rows
are stored in, the order of its colours, and dots per inch. A file named - is standard
input. Files that cannot be read are named on standard error; the others are still listed.

Examples:
  vxbmp info *.bmp
  vxbmp info app.ico --page 3
  vxbmp info --json icons/*.ico | jq -r 'select(.width >= 48) | .file')",
     "--page --json", DeclareInfo},
    {"inspect", "Shows what files are made of: every structure, and every field of it.",
     R"(Each part with the byte that it begins at and its length, and of each field its value and
what that means. Bytes that nothing refers to, and those that two parts claim, are marked.
Pixels are not decoded, so damaged files can be looked at as well.

Examples:
  vxbmp inspect photo.bmp
  vxbmp inspect app.ico --page 3 --hex
  vxbmp inspect scan.bmp --codes | less
  vxbmp inspect --json app.ico | jq 'select(.kind == "unreferenced")')",
     "--page --hex --codes --json", DeclareInspect},
    {"verify", "Finds what is wrong with files: damage, and numbers that are not so.",
     R"(A line a finding: how much it matters, what it is, its code, and the byte where it shows.
Errors are what readers stumble over, warnings what some mind, notes what is worth
knowing. Pixels are looked at as well. All codes are in docs/findings.md, and what a
repair can mend, vxbmp repair does.

Exit code 0: no errors; with --strict no findings. 1: some, or a file cannot be read.

Examples:
  vxbmp verify app.ico
  vxbmp verify icons -r -q --strict
  vxbmp verify favicon.ico --as favicon
  vxbmp verify --json *.bmp | jq -r 'select(.severity == "error") | .file')",
     "-r,--recursive --strict --as --json", DeclareVerify},
    {"repair", "Mends what can be mended of a file without guessing a pixel.",
     R"(Sizes, offsets and entries that lie, pages that share bytes, masks that are cut short,
bytes that nothing refers to. Each thing done is said, and what is left. Before OUT is
written every page is loaded from both: it shows the same, or fails as before.

Exit code 0: no errors are left; vxbmp verify finds nothing more that can be mended.
1: errors are left, or a file cannot be read or written.

Examples:
  vxbmp repair app.ico -o mended.ico
  vxbmp repair photo.bmp --in-place --backup
  vxbmp repair photo.bmp --in-place --backup=.orig
  curl -s https://example.com/favicon.ico | vxbmp repair - -o favicon.ico)",
     "-o,--output --in-place --backup", DeclareRepair},
    {"view", "Shows a picture in the terminal.",
     R"(What is transparent shows the terminal's background. Small pictures are drawn in their
own size, a symbol a column of pixels; large ones are made to fit the terminal.

Examples:
  vxbmp view photo.bmp
  vxbmp view app.ico --page 3
  vxbmp view app.ico --size 80x40
  vxbmp view photo.bmp --as sixel)",
     "--page --size --as", DeclareView},
    {"convert", "Turns a picture, a page or headerless pixel data into another file.",
     R"(IN is a bitmap, icon, cursor or PNG file. OUT appears whole or not at all; an older file
of that name is replaced. IN may be - for standard input, OUT - for standard output.

Headerless data: the coding is rle4, rle8 or bitfields; without one it is uncompressed.
--palette then names a file of 4 bytes a colour (blue, green, red, 0), or one of 768 or 772
bytes with 3 bytes a colour (red, green, blue), for pixels of up to 8 bits; without it
they take the library's fixed colours. --masks are three numbers, decimal or 0x
hexadecimal, for pixels of 16 bits; without them these are 5-5-5.

Examples:
  vxbmp convert photo.bmp photo.png
  vxbmp convert hand-drawn-16.png small.ico
  vxbmp convert logo.png logo.ico --to png-icon
  vxbmp convert photo.png small.bmp --to rle --bits 8 --dither none
  vxbmp convert app.ico page-%p.png
  vxbmp convert app.ico large.png --page 4
  vxbmp convert survey.bmp strip.png --band 2000:500
  vxbmp convert damaged.bmp rescued.png --allow-truncated
  unzip -p icons.zip app.ico | vxbmp convert - app.png
  vxbmp convert dump.bin out.png --raw 640x480x16:bitfields \
      --masks 0xF800,0x07E0,0x001F --offset 512 --top-down)",
     "--page --to --bits --band --missing --raw", DeclareConvert},
    {"batch", "Converts many files, on all processors.",
     R"(Every file is converted as vxbmp convert does it, into a new one below --dir, which
appears whole or not at all. Folders give the files in them that are called as pictures
are; patterns are quoted, or the shell makes names of them, and ** is any folders.
{dir} is the folder of a file below the one that was named, {path} its folder as it was
written, {stem} its name without the ending, {file} its whole name, {page} the page's
number and {ext} the new ending.

Nothing begins while two files would become one, and no file that is read is written to.
Ctrl-C lets the files in hand be finished; --resume goes on after that.

Examples:
  vxbmp batch icons --to png --dir pngs -r --page all
  vxbmp batch 'scans/**/*.bmp' --to png --dir out --keep-going
  vxbmp batch *.bmp --to bmp --bits 8 --dir small --name {stem}-8.{ext}
  find . -name '*.cur' -print0 | vxbmp batch --files-from - --to png --dir out
  vxbmp batch scans --to png --dir out --resume --shard 3/16)",
     "-r,--recursive --page --bits -j,--jobs -k,--keep-going --resume -n,--dry-run", DeclareBatch},
    {"diff", "Tells whether two files show the same, and how far off they are.",
     R"(Exit code 0: the pixels that are shown are the same, page by page, whatever the files are
and however they store them, which is told; with --strict it counts, too. 1: they are
not. 2: something went wrong. A page of which the other file has none is a difference.
With --page, a file of one page is compared with it whatever the number.

Examples:
  vxbmp diff photo.bmp photo.png
  vxbmp diff app.ico large.png --page 4
  vxbmp diff before.bmp after.bmp -o difference.png
  vxbmp diff before.ico after.ico --strict -q || echo changed)",
     "--page -o --strict --json", DeclareDiff},
    {"carve", "Finds the bitmaps, icons and cursors inside any file.",
     R"(Whatever the file is - the image of a disk, a program, a damaged archive - what lies in it
as it is becomes a file of its own, as long as its headers say, named after the byte that
it begins at. Only what is whole is taken, and bitmaps whose end the file cuts off. Files
that are there already stay. What is compressed, or stored in pieces, is not found.

Examples:
  vxbmp carve disk.img --dir found
  vxbmp carve program.exe --dir found --dry-run
  vxbmp carve --json disk.img --dir found | jq -r .output)",
     "--dir -n,--dry-run --json", DeclareCarve},
    {"pages", "Lists and changes the pages of icon and cursor files.",
     R"(SEL is a page: 3, -1 (the last), 32x32 (all of that size), 32x32@8 (of 8 bits a pixel);
a range: 1-3, 2- (from 2 on); or a list of those with commas. Numbers mean the pages as
they were before the command. Icons take soft edges and 256 pixels as PNG pages, the rest
as bitmaps, unless --png or --bits say otherwise.

A changed file takes the place of the old one only when it is complete, and pages that
are not meant stay as they are, bit for bit. Replaced and deleted pages leave their bytes
in the file until it is compacted.

Examples:
  vxbmp pages app.ico
  vxbmp pages extract app.ico --page 32x32@24 -o small.png
  vxbmp pages add app.ico large.png
  vxbmp pages insert app.ico first.bmp --at 1
  vxbmp pages replace app.ico new.png --page -1
  vxbmp pages delete app.ico --page 1-2,48x48 && vxbmp pages compact app.ico
  vxbmp pages hotspot arrow.cur --page 1 3,2)",
     "--json", DeclarePages},
    {"icon", "Makes an icon file of several sizes from one picture or more.",
     R"(Every page comes from the smallest picture that is as large or larger, which is made
smaller if need be: in linear light, and pixels count for as much as can be seen of them.
A picture that is no square gets transparent margins. Pictures of the right size stay as
they are, and larger pages than the pictures are not made unless --enlarge says so.
FILE is replaced when the new icon is complete.

Examples:
  vxbmp icon logo.png -o favicon.ico
  vxbmp icon logo.png -o favicon.ico --preset web --html
  vxbmp icon logo.png -o favicon.ico --sizes 16,32,48
  vxbmp icon hand-drawn-16.png logo.png -o app.ico
  vxbmp icon logo.png -o app.ico --png-from 16)",
     "--preset --sizes --html --enlarge", DeclareIcon},
    {"thumbnail", "Makes a small PNG of a picture, for file managers.",
     R"(Of an icon or cursor the page that suits the size best is taken, and of a file that ends
early what is there. Pictures that are small already stay as they are; no large one is
held whole whose rows come one by one.

Examples:
  vxbmp thumbnail photo.bmp small.png
  vxbmp thumbnail app.ico icon.png --size 32)",
     "--size", DeclareThumbnail},
    {"cursor", "Makes a cursor, or an animated one, from pictures.",
     R"(A name that ends with .ani makes an animated cursor, which shows the pictures in their
order; any other a cursor with a page a picture. Cursors given as pictures keep their hot
spots, and of animated ones every frame is taken. FILE is replaced when the new cursor is
complete.

Examples:
  vxbmp cursor arrow.png -o arrow.cur --hotspot 3,2
  vxbmp cursor wait-*.png -o wait.ani --delay 100ms --title Waiting
  vxbmp cursor wait.ani -o slower.ani --delay 12)",
     "--hotspot --delay", DeclareCursor},
    {"completions", "Prints what makes a shell complete the arguments of vxbmp.",
     R"(An installed vxbmp has brought them along already.

Examples:
  source <(vxbmp completions bash)
  vxbmp completions zsh > ~/.zsh/functions/_vxbmp
  vxbmp completions fish > ~/.config/fish/completions/vxbmp.fish)",
     "", DeclareCompletions},
};

}  // namespace

std::span<const Command> AllCommands() {
  return kCommands;
}

}  // namespace cli
