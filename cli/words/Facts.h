// The facts of a page in words, the same words wherever they are shown.
#pragma once

#include <vx/vx.h>

#include <string>

namespace cli {

/// "640x480"
std::string SizeText(const vx_info& info);
/// "none", "Run Length" or "PNG"
std::string CompressionText(const vx_info& info);
/// "bottom-up" or "top-down"
std::string OrientationText(const vx_info& info);
/// "indexed", "5-5-5", "5-6-5", "BGR"
std::string ColorOrderText(const vx_info& info);
/// "96" or "96x72"
std::string ResolutionText(const vx_info& info);

}  // namespace cli
