// The demo page as HTML: one file, no scripts, pictures beside it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Examine.h"

namespace demo {

/// @param pictureFolder where the pictures are, relative to the page
std::string RenderPage(const std::vector<FileResult>& results, std::string_view pictureFolder);

/// The style of the page.
extern const std::string_view kStyle;

}  // namespace demo
