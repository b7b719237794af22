// Pixels of 16 and 32 bits whose channels are told by masks: of any width, anywhere in the pixel, with holes,
// with alpha or without. Channels scale to 8 bits by rounding.
#pragma once

#include <array>

#include "beyond/PlainReader.h"

namespace vxkrn {

class FieldsReader final : public PlainReader {
 public:
  /// Throws std::bad_alloc.
  FieldsReader(const vx_source& source, const bmp::BitmapLayout& layout);
  [[nodiscard]] RowShape Shape() const noexcept override;

 private:
  /// One channel. The bits of a mask are gathered byte by byte: what every byte of a pixel adds to the value
  /// is looked up, so that holes and order cost nothing.
  struct Channel {
    std::array<std::array<uint32_t, 256>, 4> parts{};  // of the value, by byte of the pixel
    uint64_t last = 0;                                 // the highest value; 0: no such channel
    int byteShift = -1;                                // of a channel that is one whole byte; else below 0
  };

  static Channel ChannelOf(uint32_t mask) noexcept;
  [[nodiscard]] static uint8_t Extract(const Channel& channel, uint32_t pixel) noexcept;
  void Decode(const uint8_t* stored, int count, uint8_t* row) noexcept override;
  template <class Load>
  void DecodePixels(Load load, int count, uint8_t* row) const noexcept;

  memory::Vector<Channel> channels_;  // blue, green, red, alpha
  bool hasAlpha_;
};

}  // namespace vxkrn
