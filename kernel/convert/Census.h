// What colours a picture has: found in one pass over its rows, and read by whoever decides something about
// them. Converts nothing.
#pragma once

#include <optional>
#include <vector>

#include "convert/Colors.h"

namespace vxkrn {

/// Whether every pixel is opaque because the bitmap has neither an alpha channel nor a region.
[[nodiscard]] inline bool IsWhole(const _BITMAPHANDLE& bitmap) noexcept {
  return !HasAlpha(bitmap) && bitmap.Region == nullptr;
}

/// How much of a picture's pixels can be seen through.
enum class Opacity : uint8_t { kWhole, kAllOrNothing, kSoft };

struct Census {
  static constexpr std::size_t kMost = 256;  ///< colours that are told one by one

  std::vector<Color> all;     ///< ascending: every colour, or kMost + 1 of them where there are more
  std::vector<Color> opaque;  ///< likewise those of the pixels that are opaque
  bool fits555 = true;        ///< a pixel of 16 bits shows each colour, without loss
  bool fits565 = true;
  Opacity opacity = Opacity::kWhole;
  bool hasTransparent = false;  ///< some pixel is not opaque
  int highestIndex = 0;         ///< of the palette entries that pixels have, up to 8 bits

  /// The colours of opaque pixels where the others get an entry of their own, else of all.
  [[nodiscard]] const std::vector<Color>& Shown(bool othersApart) const noexcept {
    return othersApart ? opaque : all;
  }
};

/// Throws std::bad_alloc.
[[nodiscard]] Census TakeCensus(const _BITMAPHANDLE& bitmap);

/// The census of one bitmap, which must outlive it: taken once, when somebody first needs it.
class LazyCensus {
 public:
  explicit LazyCensus(const _BITMAPHANDLE& bitmap) noexcept : bitmap_(bitmap) {}

  [[nodiscard]] const _BITMAPHANDLE& Bitmap() const noexcept { return bitmap_; }
  /// Throws std::bad_alloc.
  [[nodiscard]] const Census& Get();
  [[nodiscard]] Opacity HowOpaque() { return IsWhole(bitmap_) ? Opacity::kWhole : Get().opacity; }
  [[nodiscard]] bool HasTransparent() { return !IsWhole(bitmap_) && Get().hasTransparent; }
  /// Notes that pixels that are not opaque have become black ones outside a region, and the others opaque.
  void Harden();

 private:
  const _BITMAPHANDLE& bitmap_;
  std::optional<Census> taken_;
};

}  // namespace vxkrn
