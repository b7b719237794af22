// Loads pictures through the application interface; see the header.
#include "Loading.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace loading {

Outcome Load(std::span<const uint8_t> file, const vx::LoadOptions& options) {
  Outcome outcome;
  try {
    const vx::Source source = vx::Source::Memory(file);
    outcome.info = source.Describe(options.page);
    const vx::Bitmap bitmap = source.Load(options);
    for (const vx_remark& remark : vx::Remarks()) {
      outcome.remarks += (outcome.remarks.empty() ? "" : ",") + std::string(vx_remark_name(remark.code));
    }
    if (outcome.remarks.empty()) outcome.remarks = "-";
    outcome.width = bitmap.Describe().width;
    outcome.height = bitmap.Describe().height;
    outcome.rgba = bitmap.Rgba();
  } catch (const vx::Error& error) {
    outcome.status = error.status();
    outcome.detail = error.detail();
    outcome.missesRows = vx_error_rows_missing() != 0;
    outcome.remarks = vx_reason_name(error.reason());
  }
  EXPECT_EQ(vx_memory_in_use(), 0U);
  return outcome;
}

Outcome LoadPage(std::span<const uint8_t> file, int page, bool allowTruncated) {
  vx::LoadOptions options;
  options.page = page;
  options.allow_truncated = allowTruncated ? 1 : 0;
  return Load(file, options);
}

void ExpectDefinedOutcomes(std::span<const uint8_t> file, int maxPages) {
  int pages = 1;
  for (int page = 1; page <= pages; ++page) {
    const Outcome strict = LoadPage(file, page, false);
    const Outcome tolerant = LoadPage(file, page, true);
    for (const Outcome* outcome : {&strict, &tolerant}) {
      ASSERT_STRNE(vx_status_name(outcome->status), "unknown status") << outcome->status;
      ASSERT_EQ(outcome->status == VX_OK, outcome->detail.empty()) << outcome->detail;
    }
    pages = std::min(strict.info.page_count, maxPages);
    if (tolerant.status == VX_NO_MEMORY) continue;
    ASSERT_EQ(strict.missesRows, strict.status != VX_OK && tolerant.status == VX_OK) << strict.detail;
  }
}

void ExpectDefinedPrefixes(std::span<const uint8_t> file, int maxPages) {
  if (file.size() >= size_t{10} * 1024) return;
  vx_set_memory_limit(kLittleMemory);
  for (size_t size = 0; size < file.size() && !testing::Test::HasFailure(); ++size) {
    SCOPED_TRACE(size);
    // a copy of its own length, so that reading past its end is seen
    ExpectDefinedOutcomes(Bytes(file.begin(), file.begin() + static_cast<ptrdiff_t>(size)), maxPages);
  }
  vx_set_memory_limit(0);
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
