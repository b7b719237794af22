// The loops have no branches and no step that waits for the one before it, so that compilers make vectors of
// them: a filter is made of what rows were, not of what became of them.
#include "png/PngFilter.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace vxkrn {
namespace {

constexpr std::size_t kLargestPixel = 4;

struct Neighbours {
  const uint8_t *row, *left, *above, *corner;
};

/// Writes differences. @return the sum of their distances from 0
template <class Predict>
uint64_t Subtract(const Neighbours& at, std::size_t count, uint8_t* out, Predict predict) noexcept {
  constexpr std::size_t kPart = 1024;  // whose sum fits 32 bits: fewer lanes to widen
  uint64_t sum = 0;
  for (std::size_t begin = 0; begin < count; begin += kPart) {
    const std::size_t end = std::min(count, begin + kPart);
    uint32_t part = 0;
    for (std::size_t i = begin; i < end; ++i) {
      const auto lost = static_cast<uint8_t>(at.row[i] - predict(at.left[i], at.above[i], at.corner[i]));
      out[i] = lost;
      part += std::min(lost, static_cast<uint8_t>(-lost));
    }
    sum += part;
  }
  return sum;
}

uint8_t Average(uint8_t left, uint8_t above, uint8_t /*corner*/) {
  return static_cast<uint8_t>((left + above) >> 1);
}

/// The neighbour that is the nearest to left + above - corner.
uint8_t Paeth(uint8_t left, uint8_t above, uint8_t corner) {
  const auto byLeft = static_cast<int16_t>(above - corner);
  const auto byAbove = static_cast<int16_t>(left - corner);
  const auto byCorner = static_cast<int16_t>(byLeft + byAbove);
  const auto distance = [](int16_t by) { return static_cast<int16_t>(by < 0 ? -by : by); };
  const uint8_t other = distance(byAbove) <= distance(byCorner) ? above : corner;
  return distance(byLeft) <= distance(byAbove) && distance(byLeft) <= distance(byCorner) ? left : other;
}

}  // namespace

PngFilter::PngFilter(std::size_t rowBytes, std::size_t pixelBytes) noexcept
    : rowBytes_(rowBytes),
      pixelBytes_(pixelBytes),
      at_(kLargestPixel),
      above_(at_ + rowBytes + kLargestPixel),
      rows_(static_cast<uint8_t*>(
          memory::AllocateZeroed(3 * (rowBytes + kLargestPixel), {"kernel/PngFilter", __LINE__}))) {}

void PngFilter::Filter(uint8_t* filtered) noexcept {
  const uint8_t* const row = rows_.get() + at_;
  const uint8_t* const above = rows_.get() + above_;
  uint8_t* best = filtered + 1;
  uint8_t* tried = rows_.get() + 2 * (rowBytes_ + kLargestPixel) + kLargestPixel;
  uint64_t least = std::numeric_limits<uint64_t>::max();
  uint8_t filter = 0;
  const auto attempt = [&](uint8_t number, auto predict) {
    const uint64_t sum =
        Subtract({row, row - pixelBytes_, above, above - pixelBytes_}, rowBytes_, tried, predict);
    if (sum >= least) return;
    least = sum;
    filter = number;
    std::swap(best, tried);
  };
  std::memcpy(best, row, rowBytes_);
  if (pixelBytes_ != 0) {
    attempt(0, [](uint8_t, uint8_t, uint8_t) { return uint8_t{0}; });
    attempt(1, [](uint8_t left, uint8_t, uint8_t) { return left; });
    attempt(2, [](uint8_t, uint8_t up, uint8_t) { return up; });
    attempt(3, Average);
    attempt(4, Paeth);
    distance_ += least;
  }
  filtered[0] = filter;
  if (best != filtered + 1) std::memcpy(filtered + 1, best, rowBytes_);
  std::swap(at_, above_);
}

}  // namespace vxkrn
