// The loops that everybody is measured against: the least work that does it, over well-formed data. Those
// that decode read a file as they go, a buffer at a time; nothing is checked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace bench {

using Bytes = std::vector<uint8_t>;

/// Takes one finished row, as a row callback would.
using RowSink = void (*)(const uint8_t* row, int stride);

/// The bytes of a file from its position on, a buffer at a time; a code is never cut.
class Feed {
 public:
  explicit Feed(int file);
  /// A code is 258 bytes at most, and behind the last one the file ends.
  const uint8_t* AtCode(const uint8_t* at) { return at + kLongestCode <= end_ ? at : Refill(at); }
  /// The next `count` bytes, at most as many as the buffer has.
  const uint8_t* Take(size_t count);
  [[nodiscard]] const uint8_t* Start() const { return buffer_.data(); }

 private:
  static constexpr size_t kLongestCode = 258;
  const uint8_t* Refill(const uint8_t* at);

  int file_;
  Bytes buffer_;
  const uint8_t* end_;
  const uint8_t* next_;
};

void DecodeRle8(int file, int stride, int rows, RowSink sink);
void DecodeRle4(int file, int stride, int rows, RowSink sink);
/// 16-bit pixels with red lowest become 5-5-5 with blue lowest.
void SwapFields(int file, int stride, int rows, RowSink sink);
void CopyRows(int file, int stride, int rows, RowSink sink);

/// Run-length codes of a row of one byte a pixel or two pixels a byte, appended as any vector is appended to.
struct Coding {
  size_t shortestRun, longestRun, longestLiteral, mostSingles, pixelsPerByte;
};
inline constexpr Coding kRle8 = {4, 255, 254, 2, 1};
inline constexpr Coding kRle4 = {2, 127, 127, 1, 2};
void AppendCodes(const Coding& coding, const uint8_t* row, size_t bytes, Bytes& out);

/// Blue, green, red become red, green, blue, 255: sixteen pixels a step, by the compiler's vectors.
void ShuffleToRgba(const uint8_t* bgr, size_t pixels, uint8_t* rgba);

/// A new file, or what was in it goes; written 64 KiB at a time through one buffer.
void CopyAndWrite(const std::string& path, const uint8_t* bytes, size_t size);
void CopyFile(const std::string& from, const std::string& to);
/// Opens a file, reads up to 4096 bytes of what it begins with and closes it.
bool Peek(const std::string& path);

/// A PNG file with everything as libpng has it by itself. `row` gives rows of blue, green, red from the top.
void WritePng(const std::string& path, int width, int height, const std::function<const uint8_t*(int)>& row);

}  // namespace bench
