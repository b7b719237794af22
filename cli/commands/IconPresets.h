// What icons are needed for, and which sizes and forms of pages that takes.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace cli {

struct IconPreset {
  const char* name;
  std::span<const int> sizes;
  int pngFrom;      ///< pages of this size and larger are PNG streams
  int bits;         ///< of bitmap pages; 0: as suits the picture
  const char* why;  ///< a sentence or two
};

/// What an icon is where nothing is said: every usual size.
const IconPreset& UsualIcon();
/// @return null where there is none of that name; "usual" is none
const IconPreset* FindIconPreset(std::string_view name);

/// "web|windows"
std::string IconPresetNames(std::string_view separator);
/// A line of sizes and one of reasons each, for the help.
std::string IconPresetTable();

}  // namespace cli
