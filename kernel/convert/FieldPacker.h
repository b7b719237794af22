// Colours and alpha as pixels of 16 or 32 bits whose channels lie where masks say. What reads them back is
// FieldsReader.
#pragma once

#include <array>
#include <span>

#include "convert/Colors.h"
#include "format/BitmapLayout.h"

namespace vxkrn {

class FieldPacker {
 public:
  /// @param masks of four channels, each one run of bits, in so many bits a pixel
  FieldPacker(const bmp::FieldMasks& masks, int bitsPerPixel) noexcept;

  /// Writes the pixels, each channel rounded to the nearest level that it has.
  void Pack(std::span<const Rgba> pixels, uint8_t* row) const noexcept;
  /// Whether every pixel comes back as it is. A channel of one bit, as alpha may be, is not asked about: what
  /// becomes of that is told as what becomes of transparency.
  [[nodiscard]] bool Keeps(std::span<const Rgba> pixels) const noexcept;

 private:
  struct Channel {
    explicit Channel(uint32_t mask) noexcept;

    std::array<uint32_t, 256> stored = {};  ///< a level of 8 bits, where the mask has it
    std::array<bool, 256> isKept = {};
  };

  Channel red_, green_, blue_, alpha_;
  std::size_t pixelBytes_;
};

/// Whether the whole picture comes back as it is. Throws std::bad_alloc.
[[nodiscard]] bool KeepsColors(const _BITMAPHANDLE& bitmap, const FieldPacker& packer);

}  // namespace vxkrn
