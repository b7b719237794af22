// Loads pictures through the application interface; see the header.
#include "Loading.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>

namespace loading {
namespace {

using Source = std::unique_ptr<vx_source, decltype(&vx_close)>;
using Bitmap = std::unique_ptr<vx_bitmap, decltype(&vx_bitmap_free)>;

Source OpenMemory(std::span<const uint8_t> file) {
  vx_source* source = nullptr;
  EXPECT_EQ(vx_open_memory(file.data(), file.size(), "memory", &source), VX_OK);
  return {source, &vx_close};
}

void ReadPixels(const vx_bitmap* bitmap, Outcome& outcome) {
  vx_bitmap_info info{};
  ASSERT_EQ(vx_bitmap_describe(bitmap, &info), VX_OK);
  outcome.width = info.width;
  outcome.height = info.height;
  const size_t rowSize = 4 * static_cast<size_t>(info.width);
  outcome.rgba.resize(rowSize * static_cast<size_t>(info.height));
  for (int row = 0; row < info.height; ++row) {
    ASSERT_EQ(vx_bitmap_read_rgba(bitmap, row, outcome.rgba.data() + rowSize * static_cast<size_t>(row)),
              VX_OK);
  }
}

void LoadInto(vx_source* source, const vx_load_options& options, Outcome& outcome) {
  if (options.raw == nullptr) {
    outcome.status = vx_describe(source, options.page, &outcome.info);
    outcome.detail = vx_error_detail();
    if (outcome.status != VX_OK) return;
  }
  vx_bitmap* loaded = nullptr;
  outcome.status = vx_load(source, &options, &loaded);
  outcome.detail = vx_error_detail();
  outcome.missesRows = vx_error_rows_missing() != 0;
  const Bitmap bitmap(loaded, &vx_bitmap_free);
  if (outcome.status == VX_OK) ReadPixels(bitmap.get(), outcome);
}

}  // namespace

Outcome Load(std::span<const uint8_t> file, vx_load_options options) {
  Outcome outcome;
  if (const Source source = OpenMemory(file)) LoadInto(source.get(), options, outcome);
  EXPECT_EQ(vx_memory_in_use(), 0U);
  return outcome;
}

Outcome LoadPage(std::span<const uint8_t> file, int page, bool allowTruncated) {
  vx_load_options options = VX_LOAD_OPTIONS_DEFAULT;
  options.page = page;
  options.allow_truncated = allowTruncated ? 1 : 0;
  return Load(file, options);
}

int PageCount(std::span<const uint8_t> file) {
  const Source source = OpenMemory(file);
  vx_info info{};
  return source != nullptr && vx_describe(source.get(), 1, &info) == VX_OK ? info.page_count : 0;
}

void ExpectDefinedOutcomes(std::span<const uint8_t> file, int maxPages) {
  const int pages = std::min(std::max(PageCount(file), 1), maxPages);
  for (int page = 1; page <= pages; ++page) {
    const Outcome strict = LoadPage(file, page, false);
    const Outcome tolerant = LoadPage(file, page, true);
    for (const Outcome* outcome : {&strict, &tolerant}) {
      ASSERT_STRNE(vx_status_name(outcome->status), "unknown status") << outcome->status;
      ASSERT_EQ(outcome->status == VX_OK, outcome->detail.empty()) << outcome->detail;
    }
    if (tolerant.status == VX_NO_MEMORY) continue;
    ASSERT_EQ(strict.missesRows, strict.status != VX_OK && tolerant.status == VX_OK) << strict.detail;
  }
}

Bytes ReadFile(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  EXPECT_TRUE(stream) << path;
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::string FirstDifference(const Outcome& picture, int width, int height, const Bytes& rgba) {
  if (picture.width != width || picture.height != height) {
    return "the size is " + std::to_string(picture.width) + " x " + std::to_string(picture.height);
  }
  for (size_t i = 0; i < rgba.size(); ++i) {
    if (picture.rgba[i] == rgba[i]) continue;
    const size_t pixel = i / 4;
    const auto w = static_cast<size_t>(width);
    return "pixel (" + std::to_string(pixel % w) + ", " + std::to_string(pixel / w) + "), channel " +
           std::to_string(i % 4) + " is " + std::to_string(picture.rgba[i]) + ", not " +
           std::to_string(rgba[i]);
  }
  return "";
}

}  // namespace loading
