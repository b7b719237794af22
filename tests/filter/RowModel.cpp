// The slow row decoder. It is meant to be read against the rules of the format, not to be fast.
#include "RowModel.h"

#include <algorithm>
#include <bit>

namespace {

// The stream as the decoder meets it: one buffer, refilled as a whole, whose fill also sets how much
// the next refill asks for.
class Stream {
 public:
  Stream(const Bytes& data, int bufferSize, const std::vector<Fault>& readFaults)
      : bytes(data), faults(readFaults), fill(bufferSize), position(bufferSize + 1) {}

  void Skip(int64_t distance) {
    if (distance >= 0) filePosition += static_cast<std::size_t>(distance);
  }

  int Byte() {
    if (position < fill) return buffer[static_cast<std::size_t>(position++)];
    if (!Refill()) return 0;
    position = 1;
    return buffer[0];
  }

  int Block(Bytes& destination, int size) {
    for (int copied = 0; copied < size; ++copied) {
      if (position >= fill) {
        position = 0;
        if (!Refill()) return copied;
      }
      destination[static_cast<std::size_t>(copied)] = buffer[static_cast<std::size_t>(position++)];
    }
    return size;
  }

  void Pad() { position += position % 2; }

 private:
  bool Refill() {
    if (fill <= 0) return false;
    const bool struck = !faults.empty() && faults[0].Strikes(++reads);
    const std::size_t left = bytes.size() - std::min<std::size_t>(filePosition, bytes.size());
    std::size_t arrived = std::min<std::size_t>(left, static_cast<unsigned>(fill));
    if (struck) arrived = faults[0].result == Fault::kHalf ? arrived / 2 : 0;
    buffer = Part(bytes, filePosition, arrived);
    filePosition += arrived;
    fill = static_cast<int>(arrived);
    return fill > 0;
  }

  const Bytes& bytes;
  const std::vector<Fault>& faults;
  Bytes buffer;
  std::size_t filePosition = 0;
  int reads = 0;
  int fill;
  int position;
};

// RLE8 and RLE4 differ in what a value byte holds: one element (a byte of the row) or two (pixels).
class RunLength {
 public:
  RunLength(Stream& source, bool nibbles, std::size_t stride)
      : stream(source), elementsPerByte(nibbles ? 2 : 1), limit(static_cast<int>(stride) * elementsPerByte) {}

  void Row(Bytes& row) {
    std::fill(row.begin(), row.end(), uint8_t{0});
    if (ended) return;
    if (rowsToSkip > 0) {
      --rowsToSkip;
      return;
    }
    while (!Code(row)) {
    }
  }

 private:
  bool Code(Bytes& row) {
    const int first = stream.Byte();
    const int second = stream.Byte();
    if (first > 0) {
      for (int k = 0; k < first; ++k) Store(row, second, k);
      return false;
    }
    switch (second) {
      case 0: x = 0; return true;
      case 1:
        x = 0;
        ended = true;
        return true;
      case 2: return Delta();
      default: break;
    }
    int value = 0;
    for (int k = 0; k < second; ++k) {
      if (k % elementsPerByte == 0) value = stream.Byte();
      Store(row, value, k);
    }
    stream.Pad();
    return false;
  }

  bool Delta() {
    x += stream.Byte();
    const int down = stream.Byte();
    if (down == 0) return false;
    rowsToSkip = down - 1;
    return true;
  }

  void Store(Bytes& row, int value, int k) {
    if (x >= limit) return;
    if (elementsPerByte == 1) {
      row[static_cast<std::size_t>(x)] = static_cast<uint8_t>(value);
    } else {
      const int nibble = k % 2 == 0 ? value / 16 : value % 16;
      uint8_t& byte = row[static_cast<std::size_t>(x / 2)];
      byte = static_cast<uint8_t>(x % 2 == 0 ? nibble * 16 : byte + nibble);
    }
    ++x;
  }

  Stream& stream;
  int elementsPerByte;
  int limit;
  int x = 0;
  int rowsToSkip = 0;
  bool ended = false;
};

unsigned Component(unsigned pixel, unsigned mask) {
  const int ones = std::popcount(mask);
  const unsigned value = (pixel & mask) >> (static_cast<int>(std::bit_width(mask)) - ones);
  return ones < 5 ? value << (5 - ones) : value >> (ones - 5);
}

void Normalise(Bytes& row, const _LOADDISPATCH& load) {
  for (std::size_t i = 0; i + 1 < row.size(); i += 2) {
    const unsigned pixel = row[i] + 256U * row[i + 1];
    const unsigned converted = Component(pixel, load.RedMask) * 1024 + Component(pixel, load.GreenMask) * 32 +
                               Component(pixel, load.BlueMask);
    row[i] = static_cast<uint8_t>(converted % 256);
    row[i + 1] = static_cast<uint8_t>(converted / 256);
  }
}

enum class Coding { kPlain, kRle8, kRle4, kRefused };

Coding CodingOf(int bits, int compression) {
  if (compression == 0) return Coding::kPlain;
  if (bits == 8 || bits == 4) return bits == 8 ? Coding::kRle8 : Coding::kRle4;
  switch (compression) {
    case 1: return Coding::kRle8;
    case 2: return Coding::kRle4;
    case 3: return Coding::kPlain;
    default: return Coding::kRefused;
  }
}

}  // namespace

RowResult ModelRows(const RowImage& image, const Bytes& data, const _LOADDISPATCH& load,
                    const std::vector<Fault>& faults) {
  const Coding coding = CodingOf(image.bits, image.compression);
  if (coding == Coding::kRefused) return {STATUS_BAD_FORMAT, {}};
  const int stride = (image.width * image.bits + 31) / 32 * 4;
  const bool plain = coding == Coding::kPlain;
  int firstRow = 0;
  int endRow = image.height;
  if (plain && load.BandEnabled != 0) {
    const bool bottomUp = load.Bitmap->Orientation == ORIENT_BOTTOM_UP;
    firstRow = bottomUp ? image.height - (load.BandTopRow + load.BandRowCount) : load.BandFirstRow;
    endRow = firstRow + load.BandRowCount;
  }

  Stream stream(data, load.ReadBufferSize, faults);
  stream.Skip(int64_t{firstRow} * stride);
  Bytes row(static_cast<std::size_t>(stride));
  RunLength decoder(stream, coding == Coding::kRle4, row.size());
  RowResult result;
  for (int r = firstRow; r < endRow; ++r) {
    if (plain) {
      const bool tolerated = r == endRow - 1 || (load.LoadOptions->Flags & LOAD_ALLOW_TRUNCATED) != 0;
      if (stream.Block(row, stride) < stride && !tolerated) {
        result.status = STATUS_READ_ERROR;
        return result;
      }
      if (image.conversion != 0) Normalise(row, load);
    } else {
      decoder.Row(row);
    }
    unsigned flags = ROW_FLAGS_BASE;
    if (r == 0) flags |= ROW_FLAG_FIRST;
    if (r == endRow - 1) flags |= ROW_FLAG_LAST;
    if (plain) flags |= ROW_FLAG_UNCOMPRESSED;
    result.rows.push_back({flags, r - firstRow, row});
  }
  return result;
}
