#include "app/Foreign.h"

#include <algorithm>
#include <array>

namespace vxkrn {
namespace {

/// The bytes that tell a kind, and where they stand.
struct Sign {
  std::size_t offset;
  std::string_view bytes;
  ForeignKind kind;
};

constexpr ForeignKind kSvg{VX_FOREIGN_SVG, "an SVG drawing"};

constexpr Sign kSigns[] = {{0, "\xFF\xD8\xFF", {VX_FOREIGN_JPEG, "a JPEG picture"}},
                           {0, "GIF8", {VX_FOREIGN_GIF, "a GIF picture"}},
                           {8, "WEBP", {VX_FOREIGN_WEBP, "a WebP picture"}},
                           {0, {"II*\0", 4}, {VX_FOREIGN_TIFF, "a TIFF picture"}},
                           {0, {"MM\0*", 4}, {VX_FOREIGN_TIFF, "a TIFF picture"}}};

}  // namespace

const ForeignKind* ForeignKindOf(const vx_source& source) noexcept {
  std::array<char, 512> start{};
  const uint32_t count = source.Peek(start.data(), start.size(), 0);
  const std::string_view text(start.data(), count);
  const auto* sign = std::find_if(std::begin(kSigns), std::end(kSigns), [&](const Sign& each) {
    return text.substr(std::min(each.offset, text.size())).starts_with(each.bytes);
  });
  if (sign != std::end(kSigns)) return &sign->kind;
  // Drawings are text, in which comments and declarations may come first.
  return text.starts_with('<') && text.find("<svg") != std::string_view::npos ? &kSvg : nullptr;
}

}  // namespace vxkrn
