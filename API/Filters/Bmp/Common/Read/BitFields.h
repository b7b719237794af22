// Converts 16-bit pixels of any channel layout to 5-5-5. Shifts and masks are worked out once per load
// and kept by the load, so that any number of loads may run at once.
#pragma once

#include <cstdint>

#include "format/BitmapHeader.h"

namespace bmp {

class BitFieldConverter {
 public:
  explicit BitFieldConverter(const ColorMasks& masks);

  /// Converts the whole words of a row in place, padding included.
  void ConvertRow(uint8_t* row, int stride) const;

 private:
  /// One channel's way from its place in the word to its five bits: mask, down, up.
  struct Channel {
    uint16_t mask = 0;
    uint8_t down = 0;
    uint8_t up = 0;
  };

  static Channel MakeChannel(uint32_t mask, int place);

  Channel red_, green_, blue_;
};

}  // namespace bmp
