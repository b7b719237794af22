#include "words/FileNames.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace cli {

std::string EndingOf(std::string_view path) {
  std::string ending = std::filesystem::path(path).extension();
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return ending;
}

std::string StemOf(std::string_view path) {
  return std::filesystem::path(path).stem();
}

}  // namespace cli
