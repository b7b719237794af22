// Converts 16-bit pixels of any channel layout to 5-5-5. Shifts and masks are worked out once per load
// and kept by the load, so that any number of loads may run at once.
#pragma once

#include <array>
#include <cstdint>

#include "format/BitmapHeader.h"

namespace bmp {

class BitFieldConverter {
 public:
  explicit BitFieldConverter(const ColorMasks& masks);

  /// Converts the whole words of a row in place, padding included.
  void ConvertRow(uint8_t* row, int stride) const { convert_(channels_, row, stride / 2); }

 private:
  /// One channel's way from its place in the word to its five bits. What is masked moves as it is.
  struct Channel {
    uint16_t mask = 0;
    uint16_t left = 0;  // at most one of the two shifts is above 0
    uint16_t right = 0;
  };
  using Channels = std::array<Channel, 3>;
  using Convert = void (*)(const Channels& channels, uint8_t* row, int pixels);

  static Channel MakeChannel(uint32_t mask, int place);
  static Convert ChooseLoop(const Channels& channels);
  template <int Rights>
  static void ConvertPixels(const Channels& channels, uint8_t* row, int pixels);

  Channels channels_;  // those that move right first; which colour is which no longer matters
  Convert convert_;
};

}  // namespace bmp
