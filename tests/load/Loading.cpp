// Loads pictures through the application interface; see the header.
#include "Loading.h"

#include <gtest/gtest.h>
#include <vx/inspect.h>
#include <vx/verify.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <memory>

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

namespace {

void ExpectSoundStructure(std::span<const uint8_t> file) {
  {
    const vx::Source source = vx::Source::Memory(file);
    vx_structure* found = nullptr;
    const int status = vx_inspect(source.Get(), &found);
    const std::unique_ptr<vx_structure, void (*)(vx_structure*)> structure(found, vx_structure_free);
    ASSERT_TRUE(status == VX_OK || status == VX_BAD_FORMAT || status == VX_NO_MEMORY) << status;
    int count = 0;
    const vx_part* parts = vx_structure_parts(found, &count);
    std::vector<bool> isClaimed(status == VX_OK ? file.size() : 0);
    for (int i = 0; i < count; ++i) {
      const vx_part& part = parts[i];
      ASSERT_LT(part.parent, i);
      ASSERT_TRUE(part.present == 0 || part.offset + part.present <= file.size()) << vx_part_name(part.kind);
      const auto begin =
          isClaimed.begin() + static_cast<ptrdiff_t>(part.offset < file.size() ? part.offset : 0);
      if (part.kind != VX_PART_IMAGE) std::fill_n(begin, part.present, true);
      vx_field fields[VX_MOST_FIELDS];
      int fieldCount = 0;
      ASSERT_EQ(vx_part_fields(source.Get(), &part, fields, &fieldCount), VX_OK);
      for (int field = 0; field < fieldCount; ++field) {
        ASSERT_LE(fields[field].offset + static_cast<uint64_t>(fields[field].size),
                  part.offset + part.present);
      }
    }
    ASSERT_EQ(std::find(isClaimed.begin(), isClaimed.end(), false), isClaimed.end());
  }
  ASSERT_EQ(vx_memory_in_use(), 0U);
}

/// Every finding has its words, and lies in the file or right behind it.
void ExpectSoundFindings(std::span<const uint8_t> file) {
  const auto take = [](void* user, const vx_finding* finding) {
    EXPECT_STRNE(finding->text, "") << vx_finding_name(finding->code);
    EXPECT_LE(finding->offset, static_cast<int64_t>(*static_cast<size_t*>(user)))
        << vx_finding_name(finding->code);
    return 0;
  };
  {
    size_t size = file.size();
    const vx::Source source = vx::Source::Memory(file);
    const int status = vx_verify(source.Get(), VX_PURPOSE_FAVICON, take, &size);
    ASSERT_TRUE(status == VX_OK || status == VX_BAD_FORMAT || status == VX_NO_MEMORY) << vx_error_detail();
  }
  ASSERT_EQ(vx_memory_in_use(), 0U);
}

}  // namespace

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
  ExpectSoundStructure(file);
  ExpectSoundFindings(file);
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

const samples::Sample& SampleNamed(std::string_view name) {
  static const std::vector<samples::Sample> all = samples::All();
  static const samples::Sample none;
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const auto& each) { return each.name == name; });
  EXPECT_NE(found, all.end()) << name;
  return found == all.end() ? none : *found;
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
