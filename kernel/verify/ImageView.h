// One image as those see it who judge and mend it.
#pragma once

#include <algorithm>

#include "beyond/BitmapFile.h"
#include "inspect/FileParts.h"
#include "verify/Findings.h"

namespace vxkrn {

struct ImageView {
  vx_source& source;
  const ImagePlace& place;
  const BitmapImage& image;

  [[nodiscard]] uint64_t FileSize() const noexcept {
    return static_cast<uint64_t>(std::max<int64_t>(source.Size(), 0));
  }
  /// Bytes of the source from there on.
  [[nodiscard]] uint64_t RoomBehind(uint64_t offset) const noexcept {
    return FileSize() - std::min(FileSize(), offset);
  }
  [[nodiscard]] bool IsPage() const noexcept { return image.icon && image.icon->HasDirectory(); }
  [[nodiscard]] bool IsPng() const noexcept {
    return image.decoder == bmp::Decoder::kPng && image.layout.headerSize == 0;
  }
  /// Rows or runs of indices and colours, not a stream of another format.
  [[nodiscard]] bool IsPlain() const noexcept { return vxkrn::IsPlain(image.layout, image.decoder); }
  [[nodiscard]] bool HasCodes() const noexcept {
    const bool isFilters = image.decoder == bmp::Decoder::kFilter && !IsPlain();
    return isFilters || image.decoder == bmp::Decoder::kRunOn || image.decoder == bmp::Decoder::kRle24;
  }
  /// @param offset from the start of the source
  void Add(Findings* findings, vx_finding_code code, uint64_t offset, uint64_t first = 0,
           uint64_t second = 0) const {
    findings->Add(code, place.page, place.base + offset, first, second);
  }
};

/// How many bytes of pixels may still be looked at: pages that share bytes could have a file read over and
/// over.
class PixelBudget {
 public:
  explicit PixelBudget(uint64_t fileSize) noexcept : left_(4 * fileSize + kAlways) {}
  /// @return whether so many may be looked at
  [[nodiscard]] bool Take(uint64_t bytes) noexcept {
    if (bytes > left_) return false;
    left_ -= bytes;
    return true;
  }

 private:
  static constexpr uint64_t kAlways = uint64_t{1} << 20;
  uint64_t left_;
};

// What is found is added to `findings`. Each may throw std::bad_alloc.

/// The headers, against one another and the file. @return whether some reader takes the picture
bool JudgeHeaders(const ImageView& view, Findings* findings);
/// A page of an icon or cursor file, and what the directory says of it.
void JudgePage(const ImageView& view, bool isReadable, Findings* findings);
/// Indices, alpha, masks, streams.
void JudgePixels(const ImageView& view, PixelBudget* budget, Findings* findings);
/// Run-length codes.
void JudgeCodes(const ImageView& view, PixelBudget* budget, Findings* findings);

}  // namespace vxkrn
