// Wording only.
#include "words/Facts.h"

#include <fmt/format.h>

#include <string_view>

namespace cli {

std::string SizeText(const vx_info& info) {
  return fmt::format("{}x{}", info.width, info.height);
}

std::string CompressionText(const vx_info& info) {
  return info.compression[0] == '\0' ? "none" : info.compression;
}

std::string OrientationText(const vx_info& info) {
  return info.orientation == VX_TOP_DOWN ? "top-down" : "bottom-up";
}

std::string ColorOrderText(const vx_info& info) {
  if (info.color_order == VX_ORDER_RGB) return "indexed";
  if (std::string_view(info.compression).ends_with("bit fields")) return "by masks";
  if (info.color_order == VX_ORDER_565) return "5-6-5";
  return info.bits_per_pixel == 16 ? "5-5-5" : "BGR";
}

std::string ResolutionText(const vx_info& info) {
  return info.x_dpi == info.y_dpi ? fmt::to_string(info.x_dpi) : fmt::format("{}x{}", info.x_dpi, info.y_dpi);
}

}  // namespace cli
