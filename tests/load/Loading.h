// Loads pictures the way an application does, and gives back what came out as plain values. Every call
// checks that the library holds no memory afterwards.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>
#include <vx/image.hpp>

namespace loading {

using Bytes = std::vector<uint8_t>;

/// What became of one page.
struct Outcome {
  int status = VX_OK;
  std::string detail;       // of a failure
  bool missesRows = false;  // so the failure says
  std::string remarks;      // of a load, by name; of a failure its reason; "-" for none
  vx_info info{};
  int width = 0;
  int height = 0;
  Bytes rgba;  // 4 bytes a pixel, top row first
};

/// Most of a damaged file's claims are about size; this keeps a picture of billions from taking hours.
constexpr uint64_t kLittleMemory = 16U << 20;

/// Describes and loads one page of a file held in memory; options.page is the page.
Outcome Load(std::span<const uint8_t> file, const vx::LoadOptions& options);
Outcome LoadPage(std::span<const uint8_t> file, int page = 1, bool allowTruncated = false);

/// Loads every page, with and without tolerance for files that end early, and expects each to end in a
/// status that has a name, a failure with its reason; those that say so, and no others, are helped by
/// tolerance. At most `maxPages` pages are looked at. Every byte must be in some part of the file, and every
/// field within its part.
void ExpectDefinedOutcomes(std::span<const uint8_t> file, int maxPages = 8);
/// Expects that of every prefix, where the file is small.
void ExpectDefinedPrefixes(std::span<const uint8_t> file, int maxPages = 8);

Bytes ReadFile(const std::filesystem::path& path);

/// Where two pictures first differ, in words; "" when they are the same.
std::string FirstDifference(const Outcome& picture, int width, int height, const Bytes& rgba);

}  // namespace loading
