// 2 and 64 bits a pixel.
#include "beyond/PixelReaders.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vxkrn {
namespace {

constexpr int kOne = 1 << 13;  // the linear level 1

int LevelAt(const uint8_t* bytes) noexcept {
  const auto level = static_cast<int16_t>(static_cast<uint16_t>(bytes[0] | bytes[1] << 8));
  return std::clamp<int>(level, 0, kOne);
}

uint8_t SrgbOf(double linear) noexcept {
  const double coded = linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
  return static_cast<uint8_t>(std::lround(coded * 255));
}

}  // namespace

void CopyReader::Decode(const uint8_t* stored, int count, uint8_t* row) noexcept {
  std::memcpy(row, stored, static_cast<std::size_t>(bmp::PixelBytes(count, Layout().depth)));
}

void TwoBitReader::Decode(const uint8_t* stored, int count, uint8_t* row) noexcept {
  for (int x = 0; x < count; ++x) {
    const int index = stored[x / 4] >> (6 - 2 * (x % 4)) & 3;
    row[x / 2] = static_cast<uint8_t>(row[x / 2] | index << (x % 2 == 0 ? 4 : 0));
  }
}

WideReader::WideReader(const vx_source& source, const bmp::BitmapLayout& layout)
    : PlainReader(source, layout), levels_(kOne + 1) {
  for (int level = 0; level <= kOne; ++level) {
    levels_[static_cast<std::size_t>(level)] = SrgbOf(static_cast<double>(level) / kOne);
  }
}

void WideReader::Decode(const uint8_t* stored, int count, uint8_t* row) noexcept {
  for (int x = 0; x < count; ++x, stored += 8, row += 4) {
    for (int channel = 0; channel < 3; ++channel) {
      row[channel] = levels_[static_cast<std::size_t>(LevelAt(stored + 2 * channel))];
    }
    row[3] = static_cast<uint8_t>((LevelAt(stored + 6) * 255 + kOne / 2) / kOne);
  }
}

}  // namespace vxkrn
