// What is found wrong with files: each code in a file that was made for it, and nothing in good ones.
#include <gtest/gtest.h>

#include <samples/Samples.h>
#include <vx/verify.h>

#include <algorithm>
#include <set>

#include "../common/Folder.h"
#include "Loading.h"

namespace {

int Take(void* user, const vx_finding* finding) {
  auto& words = *static_cast<std::vector<std::string>*>(user);
  EXPECT_STRNE(finding->text, "");
  words.push_back(vx_finding_name(finding->code) + (" " + std::to_string(finding->page)) + " " +
                  std::to_string(finding->first) + " " + std::to_string(finding->second));
  return 0;
}

/// "code page first second" of each, in their order.
std::vector<std::string> FindingsOf(std::span<const uint8_t> file, int purpose = VX_PURPOSE_ANY) {
  std::vector<std::string> words;
  const vx::Source source = vx::Source::Memory(file);
  EXPECT_EQ(vx_verify(source.Get(), purpose, Take, &words), VX_OK) << vx_error_detail();
  return words;
}

struct Case {
  const char* sample;
  std::vector<std::string> findings;
  int purpose = VX_PURPOSE_ANY;
};

const Case kCases[] = {
    {"bad-rows-cut.bmp", {"file-size 0 8886 5892", "rows-missing 0 31 48"}},
    {"win-4bit-offset-0.bmp", {"data-offset 0 0 118"}},
    {"win-rle8-high.bmp", {"image-size 0 0 12"}},
    {"bad-header-13.bmp", {"header-unknown 0 13 0"}},
    {"bad-3bit.bmp", {"unreadable 0 0 0"}},
    {"win-v5-alpha-empty.bmp", {"alpha-empty 0 0 0"}},
    {"bad-rle4-cut.bmp", {"codes-cut 0 23 48"}},
    {"bad-rle8-overrun.bmp", {"image-size 0 0 5954", "codes-overrun 0 48 0"}},
    {"win-rle4-runs-on.bmp", {"image-size 0 0 2148", "codes-run-on 0 0 0"}},
    {"bad-entry-past-end.ico", {"trailing-bytes 0 296 0", "page-missing 1 1048598 0"}},
    {"icon-overlap.ico", {"pages-overlap 2 1 0"}},
    {"icon-entry-size.ico", {"entry-size 1 25 24"}},
    {"icon-entry-depth.ico", {"entry-depth 1 8 32"}},
    {"icon-entry-length.ico", {"entry-length 1 2376 2440"}},
    {"icon-not-doubled.ico", {"height-not-doubled 1 24 0"}},
    {"icon-v5.ico", {"header-in-icon 1 124 0"}},
    {"icon-mask-half.ico", {"mask-cut 1 12 24"}},
    {"cursor-png.cur", {"png-in-cursor 1 0 0"}},
    {"icon-png.ico", {"png-small 1 48 48"}},
    {"animated-sizes.ani", {"chunk-size 0 4294967295 0"}},
    {"bad-mask-cut.ico", {"entry-length 1 3752 3560", "mask-cut 1 24 48"}},
    {"icon-png-length.ico", {"entry-length 1 50 269", "png-small 1 32 32"}},
    {"odd-planes.bmp", {"planes 0 3 0"}},
    {"odd-palette-count.bmp", {"palette-count 0 20 16", "unreferenced-bytes 0 16 0"}},
    {"odd-palette-short.bmp", {"palette-short 0 5 16", "palette-index 0 109 5"}},
    {"odd-palette-index.bmp", {"palette-index 0 109 5"}},
    {"odd-palette-cut.bmp", {"file-size 0 214 84", "palette-cut 0 64 0", "rows-missing 0 0 12"}},
    {"odd-header-cut.bmp", {"header-cut 0 0 0"}},
    {"odd-top-down.bmp", {"top-down-compressed 0 0 0"}},
    {"odd-codes-no-end.bmp", {"codes-no-end 0 0 0"}},
    {"odd-codes-outside.bmp", {"codes-outside 0 2 12"}},
    {"odd-profile-outside.bmp", {"profile-outside 0 8 0"}},
    {"odd-profile-in-pixels.bmp", {"parts-overlap 0 138 0"}},
    {"odd-gap.bmp", {"unreferenced-bytes 0 6 0"}},
    {"odd-trailing.bmp", {"file-size 0 630 635", "trailing-bytes 0 5 0"}},
    {"odd-huge.bmp", {"not-looked-at 0 0 0"}},
    {"odd-stream.ico", {"png-small 1 16 16", "stream-damaged 1 0 0"}},
    {"odd-directory-cut.ico", {"directory-cut 0 2 1", "page-missing 1 38 0"}},
    {"odd-page-in-directory.ico",
     {"trailing-bytes 0 202 0", "header-unknown 2 11534337 0", "page-in-directory 2 38 0"}},
    {"odd-pages-shared.ico", {"trailing-bytes 0 240 0", "pages-shared 2 1 0"}},
    {"odd-mask-shows.ico", {"mask-disagrees 1 48 0"}},
    {"odd-soft-edges.ico", {"soft-edges-lost 1 256 0"}},
    {"odd-hot-spot.cur", {"hot-spot-outside 1 40 3"}},
    {"win-4bit-offset-in-table.bmp", {"data-offset 0 58 118"}},
    {"win-rle8-runs-on.bmp", {"image-size 0 0 2148", "codes-run-on 0 0 0"}},
    {"win-rle4-over-the-end.bmp", {"image-size 0 0 10", "codes-run-on 0 0 0"}},
    {"odd-steps.ani", {"frame-missing 0 1 2"}},
    {"icon-sizes.ico", {"size-missing 0 256 0"}, VX_PURPOSE_WINDOWS_ICON},
    {"icon-24bit.ico", {"size-missing 0 16 0", "size-missing 0 32 0"}, VX_PURPOSE_FAVICON},
    {"icon-24bit.ico", {"wrong-kind 0 0 0"}, VX_PURPOSE_CURSOR},
    {"cursor-sizes.cur", {"size-missing 0 32 0"}, VX_PURPOSE_CURSOR},
    {"win-24bit.bmp", {"wrong-kind 0 0 0"}, VX_PURPOSE_FAVICON},
    {"animated.ani", {}, VX_PURPOSE_CURSOR},
};

TEST(Verify, FindsWhatIsWrong) {
  std::set<std::string> seen;
  for (const auto& [sample, findings, purpose] : kCases) {
    EXPECT_EQ(FindingsOf(loading::SampleNamed(sample).bytes, purpose), findings) << sample;
    for (const std::string& each : findings) seen.insert(each.substr(0, each.find(' ')));
  }
  for (int code = VX_FINDING_NONE + 1; code <= VX_FINDING_SIZE_MISSING; ++code) {
    EXPECT_TRUE(seen.contains(vx_finding_name(code))) << "no sample for " << vx_finding_name(code);
  }
}

/// All that load as they are meant to, but for those above.
TEST(Verify, FindsNoErrorsInGoodFiles) {
  for (const samples::Sample& sample : samples::All()) {
    const bool isAbove = std::any_of(std::begin(kCases), std::end(kCases),
                                     [&](const Case& each) { return each.sample == sample.name; });
    if (isAbove || !sample.raw.empty() || sample.outcome != samples::Outcome::Loads) continue;
    std::vector<std::string> errors;
    const auto take = [](void* user, const vx_finding* finding) {
      if (finding->severity == VX_ERROR) Take(user, finding);
      return 0;
    };
    const vx::Source source = vx::Source::Memory(sample.bytes);
    EXPECT_EQ(vx_verify(source.Get(), VX_PURPOSE_ANY, take, &errors), VX_OK);
    EXPECT_EQ(errors, std::vector<std::string>{}) << sample.name;
  }
}

/// Codes that a repair can mend and that the file has, without those that it cannot: numbers that do not say
/// what is right.
std::set<std::string> MendableIn(std::span<const uint8_t> file) {
  std::set<std::string> codes;
  const auto take = [](void* user, const vx_finding* finding) {
    auto& all = *static_cast<std::set<std::string>*>(user);
    if (vx_finding_can_be_mended(finding->code) != 0) all.insert(vx_finding_name(finding->code));
    return 0;
  };
  const vx::Source source = vx::Source::Memory(file);
  EXPECT_EQ(vx_verify(source.Get(), VX_PURPOSE_ANY, take, &codes), VX_OK);
  return codes;
}

/// Both show the same on every page, or fail alike.
void ExpectSamePages(std::span<const uint8_t> one, std::span<const uint8_t> other) {
  int pages = 1;
  for (int page = 1; page <= pages; ++page) {
    const auto before = loading::LoadPage(one, page, true);
    const auto after = loading::LoadPage(other, page, true);
    pages = std::max(before.info.page_count, 1);
    EXPECT_EQ(before.status, after.status) << page;
    EXPECT_EQ(loading::FirstDifference(before, after.width, after.height, after.rgba), "") << page;
  }
}

/// @return false where the file begins like no picture
bool RepairInto(const std::string& path, std::span<const uint8_t> file, vx_repair_outcome* outcome) {
  const vx::Source source = vx::Source::Memory(file);
  return vx_repair(source.Get(), path.c_str(), nullptr, nullptr, outcome) == VX_OK;
}

TEST(Repair, MendsEveryFileAndLeavesItsPictures) {
  const Folder folder;
  const std::string path = folder / "mended";
  std::set<std::string> mended;
  for (const samples::Sample& sample : samples::All()) {
    SCOPED_TRACE(sample.name);
    vx_repair_outcome outcome;
    if (!sample.raw.empty() || !RepairInto(path, sample.bytes, &outcome)) continue;
    const auto codes = MendableIn(sample.bytes);
    mended.insert(codes.begin(), codes.end());
    const loading::Bytes file = loading::ReadFile(path);
    EXPECT_EQ(outcome.has_changed != 0, file != sample.bytes);
    EXPECT_EQ(outcome.has_changed != 0, !codes.empty());
    EXPECT_EQ(MendableIn(file), std::set<std::string>{});
    ExpectSamePages(sample.bytes, file);
  }
  for (int code = VX_FINDING_NONE + 1; code <= VX_FINDING_SIZE_MISSING; ++code) {
    EXPECT_EQ(mended.contains(vx_finding_name(code)), vx_finding_can_be_mended(code) != 0)
        << vx_finding_name(code);
  }
}

/// The rows that are missing hide what is less than half opaque, as those that are saved do.
TEST(Repair, MakesMasksFromAlpha) {
  const Folder folder;
  const std::string path = folder / "mended";
  const auto sample = loading::SampleNamed("icon-32bit.ico").bytes;
  const vx::Bitmap soft = vx::Source::Memory(sample).Load();
  const vx::Buffer saved = soft.Save(vx::SaveOptions(VX_FORMAT_ICO, 32));
  const loading::Bytes whole(saved.Bytes().begin(), saved.Bytes().end());
  const loading::Bytes cut(whole.begin(), whole.end() - 300);
  vx_repair_outcome outcome;
  ASSERT_TRUE(RepairInto(path, cut, &outcome));
  EXPECT_EQ(loading::ReadFile(path), whole);
}

}  // namespace
