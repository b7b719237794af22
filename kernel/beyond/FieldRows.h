// The rows of a picture as files have them that tell alpha by masks: packed, padded, the lowest one first.
#pragma once

#include "convert/FieldPacker.h"
#include "convert/SavePlan.h"

namespace vxkrn {

class FieldRows {
 public:
  /// Throws std::bad_alloc, so that nothing is left to fail once a file is open. The plan must outlive it.
  explicit FieldRows(const SavePlan& plan);

  [[nodiscard]] int Count() const noexcept { return rows_.Bitmap().Height; }
  /// Row `row` from below, valid until the next call.
  [[nodiscard]] std::span<const uint8_t> Pixels(int row);
  /// The same row of an icon's mask: a bit set for every pixel that is not opaque.
  [[nodiscard]] std::span<const uint8_t> Mask(int row);

 private:
  [[nodiscard]] std::span<Rgba> Read(int row);
  [[nodiscard]] bool IsAllHidden(uint32_t alphaMask);

  ColorRows rows_;
  FieldPacker packer_;
  std::size_t pixelBytes_;
  std::size_t maskBytes_;
  memory::Vector<uint8_t> row_;
  bool isHidden_;  // no pixel can be seen: colours below that would make readers show them
};

/// Writes a piece where the file stands. @return whether all of it was taken
[[nodiscard]] inline bool Put(HANDLE file, std::span<const uint8_t> bytes) noexcept {
  const auto count = static_cast<unsigned int>(bytes.size());
  return VX_RedirectedWrite(file, bytes.data(), count) == static_cast<int>(count);
}

}  // namespace vxkrn
