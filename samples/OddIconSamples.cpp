// Icons and pointers beyond the usual: what other writers leave, what directories get wrong, OS/2.
#include <algorithm>

#include "samples/Families.h"
#include "samples/Headers.h"
#include "samples/Icons.h"
#include "samples/Rows.h"

namespace samples {
namespace {

constexpr size_t kEntry = 6;  // where the first one begins

Bytes File(const Page& page, IconType type = IconType::Icon) {
  return IconFile(type, {page});
}

/// The file with a byte of the first entry changed.
Bytes WithEntry(Bytes file, size_t at, uint8_t value) {
  file[kEntry + at] = value;
  return file;
}

Sample Odd(std::string name, std::string title, Bytes bytes, const Picture& picture) {
  Sample sample = MakeSample(std::move(name), std::move(title), std::move(bytes), picture);
  sample.outcome = Outcome::LoadsDamaged;
  return sample;
}

/// A page whose header has `size` bytes and says what a plain picture's would, but for the doubled height.
Page LongHeaderPage(const Picture& picture, uint32_t size, int bits) {
  ImageHeader header;
  header.size = size;
  header.width = picture.Width();
  header.height = 2 * picture.Height();
  header.bits = bits;
  Page page = bits == 24 ? TrueColorPage(picture) : AlphaPage(picture);
  const Bytes rest(page.body.begin() + 40, page.body.end());
  page.body = Encode(header);
  Append(page.body, rest);
  return page;
}

/// 2 bits: night, moon and stars; the palette is as long as is said.
Page TwoBitPage(const Picture& picture) {
  const Picture hard = WithHardEdges(picture);
  const Indexed indexed = Reduce(hard, 3, 0);
  ImageHeader header;
  header.width = hard.Width();
  header.height = 2 * hard.Height();
  header.bits = 2;
  header.dpi = 0;
  header.colorsUsed = 3;
  Bytes body = Encode(header);
  Append(body, EncodePalette(indexed.palette, 3, 4));
  for (int y = hard.Height() - 1; y >= 0; --y) {
    Bytes row;
    for (int x = 0; x < hard.Width(); x += 4) {
      uint32_t four = 0;
      for (int i = 0; i < 4; ++i) four = four << 2 | (x + i < hard.Width() ? indexed.At(x + i, y) : 0U);
      Append8(row, four);
    }
    PadTo(row, 4);
    Append(body, row);
  }
  Append(body, AndMask(hard));
  Picture shown = ToPicture(indexed);
  for (size_t i = 0; i < shown.Pixels().size(); ++i) shown.Pixels()[i].alpha = hard.Pixels()[i].alpha;
  return {2, 4, 0, 0, body, shown};
}

/// The height in the header as it is, and no mask at all.
Page PlainHeightPage(const Picture& picture) {
  Page page = AlphaPage(picture);
  page.body[8] = static_cast<uint8_t>(picture.Height());
  page.body.resize(40 + 4 * static_cast<size_t>(picture.Width() * picture.Height()));
  return page;
}

Page WithoutMask(Page page, size_t rowsLeft) {
  const auto width = static_cast<size_t>(page.picture.Width());
  const auto height = static_cast<size_t>(page.picture.Height());
  const size_t rowBytes = (width + 31) / 32 * 4;
  page.body.resize(page.body.size() - rowBytes * (height - rowsLeft));
  return page;
}

/// Opaque above the mask rows that are there.
Picture OpaqueAbove(Picture picture, const Picture& colors, int rowsLeft) {
  for (int y = 0; y < picture.Height() - rowsLeft; ++y) {
    for (int x = 0; x < picture.Width(); ++x) {
      picture.At(x, y) = colors.At(x, y);
      picture.At(x, y).alpha = 255;
    }
  }
  return picture;
}

// ---- OS/2

/// What the screen does below a pixel: nothing to be seen, shown through, inverted.
enum class Screen { Covered, Shown, Inverted };

Screen ScreenAt(const Picture& picture, int x, int y) {
  if (picture.At(x, y).alpha == 255) return Screen::Covered;
  return x + y == picture.Width() - 1 ? Screen::Inverted : Screen::Shown;
}

Bytes CoreHeader(int width, int height, int bits) {
  ImageHeader header;
  header.size = 12;
  header.width = width;
  header.height = height;
  header.bits = bits;
  return Encode(header);
}

/// A row a time from the bottom, first the XOR mask, then the AND mask.
Bytes Os2Masks(const Picture& picture, const std::vector<bool>& isLight) {
  Bytes masks;
  for (const bool isAnd : {false, true}) {
    for (int y = picture.Height() - 1; y >= 0; --y) {
      Bytes row((static_cast<size_t>(picture.Width()) + 31) / 32 * 4);
      for (int x = 0; x < picture.Width(); ++x) {
        const Screen screen = ScreenAt(picture, x, y);
        const bool light =
            isLight[static_cast<size_t>(y) * static_cast<size_t>(picture.Width()) + static_cast<size_t>(x)];
        const bool isSet = isAnd ? screen != Screen::Covered
                                 : screen == Screen::Inverted || (screen == Screen::Covered && light);
        if (isSet) row[static_cast<size_t>(x / 8)] |= static_cast<uint8_t>(0x80 >> x % 8);
      }
      Append(masks, row);
    }
  }
  return masks;
}

Bytes Os2FileHeader(std::string_view signature, int hotX, int hotY, uint32_t dataAt) {
  Bytes header(signature.begin(), signature.end());
  Append32(header, 26);
  Append16(header, static_cast<uint32_t>(hotX));
  Append16(header, static_cast<uint32_t>(hotY));
  Append32(header, dataAt);
  return header;
}

struct Os2Picture {
  Bytes bytes;  // whose offsets count from `at` bytes before it
  Picture shown;
};

/// Black and white.
Os2Picture Os2Mono(const Picture& picture, std::string_view signature, int hotX, int hotY, uint32_t at = 0) {
  const Picture hard = WithHardEdges(picture);
  std::vector<bool> isLight;
  Picture shown = hard;
  for (size_t i = 0; i < hard.Pixels().size(); ++i) {
    const Color& color = hard.Pixels()[i];
    isLight.push_back(color.red + color.green + color.blue > 200);
    const Screen screen =
        ScreenAt(hard, static_cast<int>(i) % hard.Width(), static_cast<int>(i) / hard.Width());
    const auto level = static_cast<uint8_t>(
        screen == Screen::Inverted || (screen == Screen::Covered && isLight[i]) ? 255 : 0);
    shown.Pixels()[i] = {level, level, level, static_cast<uint8_t>(screen == Screen::Shown ? 0 : 255)};
  }
  const Bytes palette{0, 0, 0, 255, 255, 255};
  Bytes file = Os2FileHeader(signature, hotX, hotY, at + 14 + 12 + 6);
  Append(file, CoreHeader(hard.Width(), 2 * hard.Height(), 1));
  Append(file, palette);
  Append(file, Os2Masks(hard, isLight));
  return {file, shown};
}

/// 16 colours, behind which the masks come first.
Os2Picture Os2Coloured(const Picture& picture, std::string_view signature, int hotX, int hotY,
                       uint32_t at = 0) {
  const Picture hard = WithHardEdges(picture);
  const Indexed indexed = Reduce(hard, 16, 0);
  Picture shown = ToPicture(indexed);
  for (int y = 0; y < hard.Height(); ++y) {
    for (int x = 0; x < hard.Width(); ++x) {
      shown.At(x, y).alpha = static_cast<uint8_t>(ScreenAt(hard, x, y) == Screen::Shown ? 0 : 255);
    }
  }
  const Bytes masks = Os2Masks(hard, std::vector<bool>(hard.Pixels().size()));
  const uint32_t masksAt = at + 2 * (14 + 12) + 6 + 3 * 16;
  Bytes file = Os2FileHeader(signature, hotX, hotY, masksAt);
  Append(file, CoreHeader(hard.Width(), 2 * hard.Height(), 1));
  Append(file, {0, 0, 0, 255, 255, 255});
  Append(file, Os2FileHeader(signature, hotX, hotY, masksAt + Size32(masks)));
  Append(file, CoreHeader(hard.Width(), hard.Height(), 4));
  Append(file, EncodePalette(indexed.palette, 16, 3));
  Append(file, masks);
  Append(file, IndexRows(indexed, 4));
  return {file, shown};
}

Bytes ArrayHeader(uint32_t next) {
  Bytes header{'B', 'A'};
  Append32(header, 40);
  Append32(header, next);
  Append32(header, 0);
  return header;
}

Sample Os2Array() {
  const Os2Picture first = Os2Coloured(MoonBadge(32), "CI", 16, 15, 14);
  const uint32_t secondAt = 14 + Size32(first.bytes);
  Bytes file = ArrayHeader(secondAt);
  Append(file, first.bytes);
  Append(file, ArrayHeader(0));
  Append(file, Os2Mono(Arrow(20), "IC", 0, 19, secondAt + 14).bytes);
  return MakeSample("os2-array.ico", "OS/2 array of two icons, one in colour", file, first.shown);
}

}  // namespace

std::vector<Sample> OddIconSamples() {
  const Page plain = TrueColorPage(MoonBadge(24));
  const Page soft = AlphaPage(MoonBadge(24));
  Page png = PngPage(Arrow(32));
  Bytes overlapping = IconFile(IconType::Icon, {soft, IndexedPage(MoonBadge(24), 8)});
  overlapping[kEntry + 8] = 0xFF;  // of the 2440 bytes it has
  overlapping[kEntry + 9] = 0x0A;
  const Os2Picture pointer = Os2Coloured(CrossHairs(33), "CP", 16, 14);
  const Os2Picture icon = Os2Mono(MoonBadge(40), "IC", 20, 19);
  return {
      Odd("icon-v5.ico", "Icon with a header of 124 bytes", File(LongHeaderPage(MoonBadge(24), 124, 32)),
          MoonBadge(24)),
      Odd("icon-v4-24bit.ico", "Icon with a header of 108 bytes and an AND mask",
          File(LongHeaderPage(MoonBadge(24), 108, 24)), WithHardEdges(MoonBadge(24))),
      Odd("icon-core.ico", "Icon with a header of 12 bytes", File(LongHeaderPage(MoonBadge(24), 12, 24)),
          WithHardEdges(MoonBadge(24))),
      Odd("icon-2bit.ico", "Icon, 2 bits, three colours", File(TwoBitPage(MoonBadge(32))),
          TwoBitPage(MoonBadge(32)).picture),
      Odd("icon-no-mask.ico", "Icon, 32 bits, without its AND mask", File(WithoutMask(soft, 0)),
          soft.picture),
      Odd("icon-mask-half.ico", "Icon, 24 bits, with the lower 12 rows of its AND mask",
          File(WithoutMask(plain, 12)), OpaqueAbove(plain.picture, plain.picture, 12)),
      Odd("icon-not-doubled.ico", "Icon whose header leaves out the mask, which it has not",
          File(PlainHeightPage(MoonBadge(24))), MoonBadge(24)),
      Odd("icon-entry-size.ico", "Icon whose directory says 25 x 24 pixels", WithEntry(File(soft), 0, 25),
          soft.picture),
      Odd("icon-entry-depth.ico", "Icon whose directory says 8 bits", WithEntry(File(soft), 6, 8),
          soft.picture),
      Odd("icon-entry-length.ico", "Icon whose directory says 64 bytes less than it has",
          WithEntry(File(soft), 8, static_cast<uint8_t>((soft.body.size() - 64) & 0xFF)), soft.picture),
      Odd("icon-png-length.ico", "Icon whose PNG page is longer than the directory says",
          WithEntry(WithEntry(File(png), 8, 50), 9, 0), png.picture),
      Odd("icon-overlap.ico", "Icon whose first page reaches into the second by its length", overlapping,
          soft.picture),
      Odd("cursor-png.cur", "Cursor whose page is a PNG stream",
          File(WithHotSpot(png, 3, 4), IconType::Cursor), png.picture),
      MakeSample("os2-icon.ico", "OS/2 icon, black and white, some pixels of which invert", icon.bytes,
                 icon.shown),
      MakeSample("os2-pointer.cur", "OS/2 pointer in 16 colours, hot spot in the middle", pointer.bytes,
                 pointer.shown),
      Os2Array(),
  };
}

}  // namespace samples
