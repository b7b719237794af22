// The table of commands.
#include "Command.h"

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
     DeclareInfo},
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
  vxbmp convert logo.png favicon.ico
  vxbmp convert logo.png logo.ico --to png-icon
  vxbmp convert photo.png small.bmp --to rle --bits 8 --dither none
  vxbmp convert app.ico large.png --page 4
  vxbmp convert survey.bmp strip.png --band 2000:500
  vxbmp convert damaged.bmp rescued.png --allow-truncated
  unzip -p icons.zip app.ico | vxbmp convert - app.png
  vxbmp convert dump.bin out.png --raw 640x480x16:bitfields \
      --masks 0xF800,0x07E0,0x001F --offset 512 --top-down)",
     DeclareConvert},
};

}  // namespace

std::span<const Command> AllCommands() {
  return kCommands;
}

}  // namespace cli
