// What is odd about a page is said, in numbers; and which page people mean, whatever the directory says.
#include <gtest/gtest.h>

#include <samples/Icons.h>
#include <samples/Samples.h>

#include <algorithm>
#include <functional>

#include "Loading.h"

namespace {

using Remark = std::array<int64_t, 3>;  // code, first, second

std::vector<Remark> RemarksOn(const loading::Bytes& file) {
  (void)vx::Source::Memory(file).Load();
  const auto remarks = vx::Remarks();
  std::vector<Remark> all(remarks.size());
  std::transform(remarks.begin(), remarks.end(), all.begin(), [](const vx_remark& remark) {
    return Remark{remark.code, remark.first, remark.second};
  });
  return all;
}

loading::Bytes SampleNamed(const std::string& name) {
  const auto all = samples::All();
  return std::find_if(all.begin(), all.end(), [&](const auto& each) { return each.name == name; })->bytes;
}

/// The numbers of an entry that say where its body is, and a side that is left open where that is 0.
void SetEntry(loading::Bytes* file, std::size_t page, uint8_t side, uint32_t offset) {
  const std::size_t at = 6 + 16 * (page - 1);
  (*file)[at] = side;
  for (std::size_t i = 0; i < 4; ++i) (*file)[at + 12 + i] = static_cast<uint8_t>(offset >> 8 * i);
}

TEST(IconKinds, AreThoseOfTheFilter) {
  const samples::Picture moon = samples::MoonBadge(16);
  const auto plain = samples::AlphaPage(moon);
  auto wide = plain;
  wide.body[4] = 0;  // 256 pixels
  wide.body[5] = 1;
  const auto png = samples::PngPage(moon);
  constexpr uint32_t kFar = 1 << 20;
  const auto with = [](loading::Bytes file, const std::function<void(loading::Bytes&)>& change) {
    change(file);
    return file;
  };
  const auto icon = [](const std::vector<samples::Page>& pages) {
    return samples::IconFile(samples::IconType::Icon, pages);
  };
  const struct {
    const char* what;
    loading::Bytes file;
    int format;
  } files[] = {
      {"plain pages", icon({plain, plain, plain}), VX_FORMAT_ICO},
      {"a PNG page behind", icon({plain, plain, png}), VX_FORMAT_VISTA_ICO},
      {"256 pixels, the entry says 16", icon({plain, wide}), VX_FORMAT_ICO},
      {"256 pixels, the entry leaves it open",
       with(icon({plain, wide}), [](auto& file) { file[6 + 16] = 0; }), VX_FORMAT_VISTA_ICO},
      {"a page that is not there",
       with(icon({plain, png, plain}), [](auto& f) { SetEntry(&f, 2, 16, kFar); }), VX_FORMAT_ICO},
      {"a page that is not there before a PNG one",
       with(icon({plain, plain, png}), [](auto& f) { SetEntry(&f, 2, 16, kFar); }), VX_FORMAT_VISTA_ICO},
      // The count makes entries of the page's own bytes; the third of them points to a PNG stream.
      {"entries that cover the page",
       with(icon({plain, png}),
            [](auto& f) {
              const uint32_t stream = f[6 + 16 + 12] + 256U * f[6 + 16 + 13];
              f[4] = 5;
              SetEntry(&f, 2, 16, kFar);
              SetEntry(&f, 5, 16, stream);
            }),
       VX_FORMAT_ICO},
  };
  for (const auto& [what, file, format] : files) {
    EXPECT_EQ(vx::Source::Memory(file).Describe(1).format, format) << what;
  }
  // Where the directory is not whole the filter would search it in vain.
  loading::Bytes cut = icon({plain, plain});
  cut[4] = cut[5] = 0xFF;
  EXPECT_THROW((void)vx::Source::Memory(cut).Describe(1), vx::Error);
  EXPECT_EQ(vx_error_reason(), VX_REASON_ENDS_EARLY);
}

TEST(IconRemarks, SayWhatIsOdd) {
  const struct {
    const char* sample;
    std::vector<Remark> remarks;
  } cases[] = {
      {"icon-sizes.ico", {}},
      {"icon-png-256.ico", {}},
      {"cursor-sizes.cur", {}},
      {"icon-v5.ico", {{VX_REMARK_HEADER_IN_ICON, 124, 0}}},
      {"icon-v4-24bit.ico", {{VX_REMARK_HEADER_IN_ICON, 108, 0}}},
      {"icon-core.ico", {{VX_REMARK_HEADER_IN_ICON, 12, 0}}},
      {"icon-2bit.ico", {}},
      {"icon-no-mask.ico", {{VX_REMARK_MASK_MISSING, 0, 24}}},
      {"icon-mask-half.ico", {{VX_REMARK_MASK_MISSING, 12, 24}}},
      {"icon-not-doubled.ico", {{VX_REMARK_MASK_MISSING, 0, 24}, {VX_REMARK_HEIGHT_NOT_DOUBLED, 24, 0}}},
      {"icon-entry-size.ico", {{VX_REMARK_ENTRY_SIZE, 25, 24}}},
      {"icon-entry-depth.ico", {{VX_REMARK_ENTRY_DEPTH, 8, 32}}},
      {"icon-entry-length.ico", {{VX_REMARK_ENTRY_LENGTH, 2376, 2440}}},
      {"icon-overlap.ico", {{VX_REMARK_BODIES_OVERLAP, 2, 0}}},
      {"cursor-png.cur", {{VX_REMARK_PNG_IN_CURSOR, 0, 0}}},
      {"os2-array.ico", {}},
  };
  for (const auto& [sample, remarks] : cases) EXPECT_EQ(RemarksOn(SampleNamed(sample)), remarks) << sample;
}

TEST(IconRemarks, FollowCodesWhoseMaskIsCut) {
  const auto whole = SampleNamed("icon-8bit.ico");
  // one run of 48 pixels a row, 48 rows, and of the mask three rows of 8 bytes, which are left out
  loading::Bytes file(whole.begin(), whole.begin() + 22 + 40 + 1024);
  file[22 + 16] = 1;
  for (int row = 0; row < 48; ++row) file.insert(file.end(), {48, 1, 0, 0});
  file.insert(file.end(), 24, 0xFF);
  file[6 + 8] = static_cast<uint8_t>(file.size() - 22);
  file[6 + 9] = static_cast<uint8_t>((file.size() - 22) >> 8);
  EXPECT_EQ(RemarksOn(file), (std::vector<Remark>{{VX_REMARK_MASK_MISSING, 0, 48}}));
}

TEST(Os2Icons, AreOfTheirKindsAndPointWhereTheyShould) {
  const struct {
    const char* sample;
    int format;
    int bits;
    int pages;
    int x;
    int y;
  } cases[] = {{"os2-icon.ico", VX_FORMAT_OS2_ICON, 1, 1, 20, 20},
               {"os2-pointer.cur", VX_FORMAT_OS2_POINTER, 4, 1, 16, 18},
               {"os2-array.ico", VX_FORMAT_OS2_ICON, 4, 2, 16, 16}};
  for (const auto& each : cases) {
    const auto file = SampleNamed(each.sample);
    const vx::Source source = vx::Source::Memory(file);
    const vx_info info = source.Describe();
    EXPECT_EQ(std::tie(info.format, info.bits_per_pixel, info.page_count),
              std::tie(each.format, each.bits, each.pages))
        << each.sample;
    const vx_bitmap_info picture = source.Load().Describe();
    EXPECT_EQ(std::pair(picture.hot_x, picture.hot_y), std::pair(each.x, each.y)) << each.sample;
  }
  const auto second = loading::LoadPage(SampleNamed("os2-array.ico"), 2);
  EXPECT_EQ(std::pair(second.status, second.width), std::pair(int{VX_OK}, 20)) << second.detail;
  auto cut = SampleNamed("os2-array.ico");
  cut.resize(40);
  EXPECT_NE(loading::LoadPage(cut).detail.find("the OS/2 icon or pointer at byte 14"), std::string::npos);
  EXPECT_EQ(vx_error_reason(), VX_REASON_PAGE_DAMAGED);
}

TEST(CursorPages, ThatArePngStreamsKeepTheirHotSpot) {
  const auto file = SampleNamed("cursor-png.cur");
  const vx_bitmap_info info = vx::Source::Memory(file).Load().Describe();
  EXPECT_EQ(std::pair(info.hot_x, info.hot_y), std::pair(3, 4));
  EXPECT_EQ(vx::Source::Memory(file).Describe().format, VX_FORMAT_CUR);
}

/// The library's contract is the filter's where that is asked for.
TEST(AsFilter, PagesAreRefusedAsItsContractSays) {
  for (const auto& [sample, status] : {std::pair("icon-v5.ico", VX_UNKNOWN_HEADER),
                                       {"icon-no-mask.ico", VX_READ_ERROR},
                                       {"icon-2bit.ico", VX_BAD_FORMAT},
                                       {"cursor-png.cur", VX_BAD_FORMAT},
                                       {"os2-icon.ico", VX_BAD_FORMAT}}) {
    const auto file = SampleNamed(sample);
    vx::LoadOptions options;
    options.flags = VX_LOAD_AS_FILTER;
    try {
      (void)vx::Source::Memory(file).Load(options);
      ADD_FAILURE() << sample;
    } catch (const vx::Error& error) {
      EXPECT_EQ(error.status(), status) << sample << error.detail();
    }
  }
}

/// 198 bytes that speak of 32767 rows of 8 KiB.
TEST(IconPages, ThatNoFileOfTheirSizeHoldsTakeNoMemory) {
  auto file = SampleNamed("icon-1bit.ico");
  file.resize(198);
  for (const size_t at : {26U, 27U, 30U, 31U}) file[at] = 0xFF;
  const auto outcome = loading::LoadPage(file, 1, true);
  EXPECT_EQ(outcome.status, VX_READ_ERROR);
  EXPECT_EQ(vx_error_reason(), VX_REASON_TOO_LITTLE_DATA) << outcome.detail;
}

TEST(BestPage, IsTheOnePeopleMean) {
  using samples::AlphaPage;
  using samples::IndexedPage;
  using samples::MoonBadge;
  const auto file = [](const std::vector<samples::Page>& pages,
                       samples::IconType type = samples::IconType::Icon) {
    return samples::IconFile(type, pages);
  };
  const auto sizes = file({IndexedPage(MoonBadge(16), 4), IndexedPage(MoonBadge(48), 8),
                           AlphaPage(MoonBadge(48)), AlphaPage(MoonBadge(48)), AlphaPage(MoonBadge(32))});
  auto lies = sizes;  // page 1 says 200 x 200 at 32 bits, page 3 says 1 bit
  lies[6] = lies[7] = 200;
  lies[6 + 6] = 32;
  lies[6 + 2 * 16 + 6] = 1;
  auto damaged = sizes;  // of page 3 the offset lies behind the end, page 4's header has 41 bytes
  damaged[6 + 2 * 16 + 12 + 3] = 0x7F;
  damaged[static_cast<size_t>(damaged[6 + 3 * 16 + 12]) + 256U * damaged[6 + 3 * 16 + 13]] = 41;
  const auto large = file({AlphaPage(MoonBadge(64)), samples::PngPage(MoonBadge(256))});
  auto cut = large;
  cut.resize(cut.size() - 20);
  const auto cursor =
      file({AlphaPage(samples::Arrow(32)), AlphaPage(samples::Arrow(48))}, samples::IconType::Cursor);
  const struct {
    const char* name;
    const loading::Bytes& file;
    int width;
    int page;
  } cases[] = {
      {"the widest, of most bits, the first", sizes, 0, 3},
      {"just that width", sizes, 16, 1},
      {"the next wider", sizes, 17, 5},
      {"none is wider", sizes, 100, 3},
      {"a directory that lies, any", lies, 0, 3},
      {"a directory that lies, 200", lies, 200, 3},
      {"damaged pages are passed over", damaged, 48, 2},
      {"256 is 0 in the directory", large, 0, 2},
      {"a PNG stream that is cut", cut, 256, 1},
      {"a cursor's hot spot is no depth", cursor, 40, 2},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(vx::Source::Memory(each.file).BestPage(each.width), each.page) << each.name;
  }
  const auto bitmap = samples::All().front().bytes;
  EXPECT_EQ(vx::Source::Memory(bitmap).BestPage(), 1);
  int page = 7;
  const auto none = SampleNamed("bad-entry-past-end.ico");
  EXPECT_NE(vx_best_page(vx::Source::Memory(none).Get(), 0, &page), VX_OK);
  EXPECT_EQ(page, 0);
}

}  // namespace
