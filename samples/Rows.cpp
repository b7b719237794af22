// Packing rows of pixels. The run-length encoder has its own file.
#include "samples/Rows.h"

#include <cmath>

namespace samples {
namespace {

/// Calls `packRow(y, bytes)` for the rows in the order of the file and pads each to 32 bits.
template <typename PackRow>
Bytes PackRows(int height, RowOrder order, const PackRow& packRow) {
  Bytes bytes;
  for (int i = 0; i < height; ++i) {
    packRow(order == RowOrder::TopDown ? i : height - 1 - i, bytes);
    PadTo(bytes, 4);
  }
  return bytes;
}

/// Puts values of `bits` bits into bytes, the first into the highest bits; the last byte is filled with 0.
template <typename ValueAt>
void PackBits(int count, int bits, const ValueAt& valueAt, Bytes& bytes) {
  const int perByte = 8 / bits;
  for (int start = 0; start < count; start += perByte) {
    unsigned byte = 0;
    for (int i = 0; i < perByte; ++i) {
      byte = byte << static_cast<unsigned>(bits) | (start + i < count ? valueAt(start + i) : 0U);
    }
    Append8(bytes, byte);
  }
}

unsigned Narrow(uint8_t value, int width) {
  const int top = (1 << width) - 1;
  return static_cast<unsigned>(std::lround(value * top / 255.0));
}

unsigned Pack16(const Color& color, const Layout16& layout) {
  const auto place = [](uint8_t value, Channel16 channel) {
    return Narrow(value, channel.width) << static_cast<unsigned>(channel.shift);
  };
  return place(color.red, layout.red) | place(color.green, layout.green) | place(color.blue, layout.blue);
}

uint8_t NarrowAndBack(uint8_t value, int width, bool asFilter) {
  const int kept = asFilter && width < 5 ? 5 : width;
  const unsigned stored = Narrow(value, width) << static_cast<unsigned>(kept - width);
  return static_cast<uint8_t>(std::lround(stored * 255.0 / ((1 << kept) - 1)));
}

}  // namespace

Bytes IndexRows(const Indexed& indexed, int bits, RowOrder order) {
  return PackRows(indexed.height, order, [&](int y, Bytes& bytes) {
    PackBits(
        indexed.width, bits, [&](int x) { return static_cast<unsigned>(indexed.At(x, y)); }, bytes);
  });
}

Bytes Rows16(const Picture& picture, const Layout16& layout, RowOrder order) {
  return PackRows(picture.Height(), order, [&](int y, Bytes& bytes) {
    for (int x = 0; x < picture.Width(); ++x) Append16(bytes, Pack16(picture.At(x, y), layout));
  });
}

Picture As16(const Picture& picture, const Layout16& layout, bool asFilter) {
  Picture result = picture;
  for (Color& pixel : result.Pixels()) {
    pixel.red = NarrowAndBack(pixel.red, layout.red.width, asFilter);
    pixel.green = NarrowAndBack(pixel.green, layout.green.width, asFilter);
    pixel.blue = NarrowAndBack(pixel.blue, layout.blue.width, asFilter);
  }
  return result;
}

Bytes Rows24(const Picture& picture, RowOrder order) {
  return PackRows(picture.Height(), order, [&](int y, Bytes& bytes) {
    for (int x = 0; x < picture.Width(); ++x) {
      const Color& pixel = picture.At(x, y);
      Append(bytes, {pixel.blue, pixel.green, pixel.red});
    }
  });
}

Bytes Rows32(const Picture& picture, bool withAlpha, RowOrder order) {
  return PackRows(picture.Height(), order, [&](int y, Bytes& bytes) {
    for (int x = 0; x < picture.Width(); ++x) {
      const Color& pixel = picture.At(x, y);
      Append(bytes, {pixel.blue, pixel.green, pixel.red, withAlpha ? pixel.alpha : uint8_t{0}});
    }
  });
}

Bytes AndMask(const Picture& picture) {
  return PackRows(picture.Height(), RowOrder::BottomUp, [&](int y, Bytes& bytes) {
    PackBits(
        picture.Width(), 1, [&](int x) { return picture.At(x, y).alpha == 0 ? 1U : 0U; }, bytes);
  });
}

}  // namespace samples
