// 32-bit bitmap files whose channels lie elsewhere than usual. The filter takes one layout of 32-bit
// pixels and refuses all others; these load as headerless data, and their channels are sorted here.
#pragma once

#include <optional>

#include "bitmap/Bitmap.h"
#include "files/Source.h"

namespace vxkrn {

struct WideFields {
  /// One channel: the bits of its mask, from `shift` on.
  struct Channel {
    unsigned int shift = 0;
    unsigned int bits = 0;
  };

  uint32_t pixelOffset = 0;  ///< of the first pixel byte, from the start of the file
  Channel blue, green, red;
};

/// What the file says of its 32-bit pixels, where that is a layout the filter does not take: three masks
/// of one run of bits each that share none.
[[nodiscard]] std::optional<WideFields> FindWideFields(const vx_source& source,
                                                       const IMAGEINFO& info) noexcept;

/// Rewrites every pixel as blue, green, red bytes and a fourth that is 0. Channels scale to 8 bits.
void SortChannels(const WideFields& fields, _BITMAPHANDLE* bitmap) noexcept;

}  // namespace vxkrn
