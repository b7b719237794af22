// Identifying and converting one file of the demo page.
#pragma once

#include <vx/vx.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Collect.h"

namespace demo {

/// Something that went wrong, in words and as a status.
struct Failure {
  std::string status;  ///< "" when nothing went wrong
  std::string message;
};

/// One page of a file: its facts and its picture, as far as they could be had.
struct PageResult {
  vx_info info{};       ///< all 0 where the page could not be described
  std::string picture;  ///< file name of the PNG; "" when there is none
  int width = 0;        ///< of the picture, pixels
  int height = 0;
  bool isTruncated = false;  ///< the picture came only with truncated files allowed
  Failure failure;           ///< why there is no picture, or none without that
};

struct FileResult {
  Item item;
  uintmax_t size = 0;  ///< bytes
  std::vector<PageResult> pages;
  int pagesLeftOut = 0;
};

/// Pictures are written into `pictures` under names that begin with `prefix`.
FileResult Examine(const Item& item, const std::filesystem::path& pictures, const std::string& prefix);

}  // namespace demo
