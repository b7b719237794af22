// PNG streams in memory: describe, decode into a bitmap, encode from rows. Knows nothing of files and pages.
#pragma once

#include <cstddef>
#include <utility>

#include "base/Contract.h"
#include "base/Memory.h"
#include "base/PngDescription.h"
#include "bitmap/ColorSpace.h"

namespace vxkrn {

/// Reads what stands before the pixels. @return STATUS_OK, or a failure with its detail set.
[[nodiscard]] int DescribePng(const unsigned char* bytes, std::size_t size, PngDescription* description);

/// Where a stream comes from. `read` gives its next bytes, as many as there are; it may not throw.
struct PngInput {
  void* owner;
  std::size_t (*read)(void* owner, unsigned char* bytes, std::size_t count);
};
/// Bytes in memory that are read as a stream.
struct PngBlock {
  const unsigned char* bytes;
  std::size_t left;
};
[[nodiscard]] PngInput InputFrom(PngBlock& block) noexcept;
[[nodiscard]] int DescribePng(const PngInput& input, PngDescription* description);

/// The depth to decode to when `asked` bits are wanted: asked (24 for 16) where no colour and no alpha would
/// be lost, the stream's own depth otherwise.
[[nodiscard]] constexpr int PngTargetDepth(int own, int asked) noexcept {
  const int wanted = asked == 16 ? 24 : asked;
  return IsDepth(wanted) && wanted >= own ? wanted : own;
}

/// Decodes into bitmap, a record made valid here and empty after a failure: top-down, with palette and
/// resolution. `description` tells about the result: its depth, and whether its fourth byte is alpha.
/// `colors`, where somebody asks for them, are what the stream says of its colours.
/// @return STATUS_OK, or a failure with its detail set.
[[nodiscard]] int DecodePng(const unsigned char* bytes, std::size_t size, int askedDepth,
                            _BITMAPHANDLE* bitmap, PngDescription* description, ColorSpace* colors = nullptr);
[[nodiscard]] int DecodePng(const PngInput& input, int askedDepth, _BITMAPHANDLE* bitmap,
                            PngDescription* description, ColorSpace* colors = nullptr);
/// Makes a record of what a stream was described as, without pixels and palette.
/// @return STATUS_OK, or a failure with its detail set
[[nodiscard]] int InitPngRecord(const PngDescription& description, _BITMAPHANDLE* bitmap);

/// As DecodePng, at the stream's own depth, but takes one that ends early, if a row of it is whole.
/// @param rowsThere receives how many are, from the top
[[nodiscard]] int DecodePngRows(const PngInput& input, _BITMAPHANDLE* bitmap, PngDescription* description,
                                int* rowsThere);

/// A picture to encode, row by row from the top.
struct PngPicture {
  int width;
  int height;
  int xDpi;
  int yDpi;
  int paletteDepth;           ///< 1, 4 or 8: rows are indices of that depth; 0: rows are RGBA bytes
  bool hasAlpha;              ///< of RGBA rows: otherwise the fourth byte is dropped
  const RGBQUAD* palette;     ///< colorCount entries
  int colorCount;             ///< 1 to 2^paletteDepth
  int transparentEntry = -1;  ///< the palette entry that is transparent; -1: none
  /// Of RGBA rows without alpha: the colour that is transparent; null: none.
  const RGBQUAD* transparentColor = nullptr;
  const ColorSpace* colors = nullptr;  ///< what is said of its colours; null: nothing
  const void* owner;
  /// @return row `row`, valid until the next call. May throw.
  const unsigned char* (*row)(const void* owner, int row, unsigned char* scratch);
  unsigned char* scratch;  ///< handed to `row`
};

/// Where a stream goes as it is made. `write` may not throw; it returns whether all bytes were taken.
struct PngOutput {
  void* owner;
  bool (*write)(void* owner, const unsigned char* bytes, std::size_t count);
};

/// Throws what the picture's rows throw. @return STATUS_OK; STATUS_WRITE_ERROR where the output refused, or
/// STATUS_NO_MEMORY with its detail set
[[nodiscard]] int EncodePng(const PngPicture& picture, const PngOutput& output);

/// A stream in memory.
class PngBytes {
 public:
  [[nodiscard]] PngOutput AsOutput() noexcept;
  [[nodiscard]] std::size_t Size() const noexcept { return size_; }
  [[nodiscard]] memory::Bytes Take() noexcept { return std::move(bytes_); }
  /// The status of an encoding into it: only memory can be refused. Sets the detail where it was.
  [[nodiscard]] static int Settle(int status) noexcept;

 private:
  [[nodiscard]] bool MakeRoom(std::size_t count) noexcept;

  memory::Bytes bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace vxkrn
