// The load driver on whole files: what is read in which order, what the target is given, and which page
// is chosen.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "Rig.h"

namespace {

const std::initializer_list<Kind> kStory = {Kind::kOpen,  Kind::kRead, Kind::kSeek,    Kind::kClose,
                                            Kind::kAlloc, Kind::kFree, Kind::kPalette, Kind::kRow};

BitmapFile Fields(unsigned bits, std::initializer_list<std::uint32_t> masks) {
  return {{.width = 2, .bits = bits, .compression = 3}, Words(masks), Repeat(16, 0x5A)};
}

IconPage Icon(const Header& header, const Bytes& rest) {
  return {Join({header.Encode(), rest})};
}

TEST(Load, ReadsEachKindOfFileInOrder) {
  struct Case {
    const char* name;
    Bytes file;
    int bits;
    int format;
    const char* story;
  };
  const Bytes two = Repeat(8, 0);  // a palette of two, or two rows of 4 bytes
  const Bytes masks = Words({0x7C00, 0x03E0, 0x001F});
  const Case cases[] = {
      {"40 bytes, two colours used", BitmapFile{{.bits = 8, .colorsUsed = 2}, two, two}.Encode(), 8, FMT_BMP,
       "open picture 0 256, read 2, seek 0 0, read 14, read 12, seek 14 0, read 40, read 8, seek 0 1, "
       "palette of target 256, alloc #1 16, alloc #2 64, read 64, row 0 39, row 1 43, free #2, free #1, "
       "close"},
      {"core header in an array", BitmapFile{{.size = 12, .bits = 8}, Repeat(768, 1), two, true}.Encode(), 8,
       FMT_OS2,
       "open picture 0 256, read 2, seek 0 0, read 14, read 14, read 12, alloc #1 768, read 768, free #1, "
       "seek 0 1, palette of target 256, alloc #2 16, alloc #3 64, read 64, row 0 39, row 1 43, "
       "free #3, free #2, close"},
      {"icon with masks, its pixels taken to lie right after the header",
       IconFile(1, {Icon({.width = 2, .height = 4, .bits = 16, .compression = 3}, Join({masks, two}))}), 16,
       FMT_ICO,
       "open picture 0 256, read 2, seek 0 0, read 6, seek 6 0, read 16, seek 22 0, read 8, seek 22 0, read "
       "40, "
       "read 12, seek 0 1, seek 62 0, alloc #1 8, alloc #2 64, read 64, row 0 39, alloc #3 216, alloc #4 4, "
       "palette of mask 2, free #3, free #4, row 1 43, free #2, free #1, close"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    Rig rig;
    rig.kernel.file = each.file;
    rig.Target(each.bits == 16 ? 2 : 4, 2, each.bits);
    rig.info.Format = each.format;
    EXPECT_EQ(rig.Load(), STATUS_OK);
    EXPECT_EQ(rig.kernel.Log(kStory), each.story);
  }
}

// After the masks at 54 the driver reads on to the end of the header it was promised, 24 bytes at most.
TEST(Load, SkipsTheRestOfAHeaderWithMasks) {
  for (const auto& [size, reads] : {std::pair{64U, "64, read 12, read 12"},
                                    {53U, "53, read 12, read 1"},
                                    {52U, "52, read 12"},
                                    {20U, "20, read 12, read 24"},
                                    {0xFFFFFFFF, "64, read 12, read 24"}}) {
    SCOPED_TRACE(size);
    Rig rig;
    rig.kernel.file = BitmapFile{{.size = size, .width = 2, .bits = 16, .compression = 3}}.Encode();
    rig.kernel.file.resize(200);
    const Bytes masks = Words({0xF00, 0xF0, 0xF});
    std::copy(masks.begin(), masks.end(), rig.kernel.file.begin() + 54);
    rig.Target(2, 2, 16);
    rig.info.Format = FMT_OS2_2;
    EXPECT_EQ(rig.Load(), STATUS_OK);
    EXPECT_EQ(rig.kernel.Log({Kind::kRead}),
              "read 2, read 14, read 12, read " + std::string(reads) + ", read 64");
    EXPECT_EQ(rig.load.RedMask, 0xF00U);
  }
}

TEST(Load, Palettes) {
  struct Case {
    const char* name;
    Bytes file;
    int bits;
    const char* palette;  // without the black entries at its end
    const char* read;     // the last one before the pixels
  };
  const Bytes pixels = Join({Repeat(8, 0), Repeat(8, 9)});
  const Case cases[] = {
      {"4-byte entries lose their fourth byte",
       BitmapFile{{.bits = 1}, Hex("010203ff 040506ff"), pixels}.Encode(), 1, "0102030004050600", "read 8"},
      {"one more colour used than the depth holds",
       BitmapFile{{.bits = 1, .colorsUsed = 3}, Hex("010203ff 040506ff"), pixels}.Encode(), 1,
       "0102030004050600", "read 8"},
      {"more colours used than the depth holds",
       BitmapFile{{.bits = 1, .colorsUsed = 0xFFFFFFFF}, Hex("010203ff 040506ff"), pixels}.Encode(), 1,
       "0102030004050600", "read 8"},
      {"3-byte entries", BitmapFile{{.size = 12, .bits = 1}, Hex("010203 040506"), pixels}.Encode(), 1,
       "0102030004050600", "read 6"},
      {"colours used mean nothing in other headers",
       BitmapFile{{.size = 64, .bits = 1, .colorsUsed = 1}, Hex("010203ff 040506ff"), pixels}.Encode(), 1,
       "0102030004050600", "read 8"},
      {"icon",
       IconFile(1, {Icon({.height = 4, .bits = 8, .colorsUsed = 1}, Join({Hex("010203ff"), pixels}))}), 8,
       "01020300", "read 4"},
      {"icon, one more colour used",
       IconFile(1,
                {Icon({.height = 4, .bits = 1, .colorsUsed = 3}, Join({Hex("010203ff 040506ff"), pixels}))}),
       1, "0102030004050600", "read 8"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    Rig rig;
    rig.kernel.file = each.file;
    rig.Target(4, 2, each.bits, ORDER_RGB);
    EXPECT_EQ(rig.Load(), STATUS_OK);
    EXPECT_EQ(rig.kernel.target.ColorCount, 1 << each.bits);
    Bytes expected = Hex(each.palette);
    expected.resize(std::size_t{4} << each.bits);
    EXPECT_EQ(ToHex(rig.kernel.palette), ToHex(expected));
    EXPECT_EQ(ToHex(rig.kernel.rows.at(0).bytes), "00000000");
    EXPECT_NE(rig.kernel.Log({Kind::kRead, Kind::kAlloc, Kind::kSeek, Kind::kFree})
                  .find(std::string(", ") + each.read + ", "),
              std::string::npos);
  }
}

TEST(Load, ResolutionsByHeader) {
  struct Case {
    std::uint32_t size, x, y;
    int xResolution, yResolution;  // afterwards, of 300 and 301
  };
  for (const auto& each :
       {Case{40, 2835, 3780, 72, 96}, Case{40, 0, 3780, 300, 301}, Case{40, 2835, 0, 72, 0},
        Case{40, 19, 0x7FFFFFFF, 0, 0}, Case{31, 2835, 2835, 300, 301}, Case{32, 0, 0, 0, 0},
        Case{64, 3780, 0U - 3780U, 96, -95}, Case{12, 0, 0, 300, 301}}) {
    SCOPED_TRACE(testing::Message() << each.size << ' ' << each.x << ' ' << each.y);
    Rig rig;
    rig.kernel.file =
        BitmapFile{
            {.size = each.size, .xPixelsPerMetre = each.x, .yPixelsPerMetre = each.y}, {}, Repeat(24, 0)}
            .Encode();
    rig.kernel.target.XResolution = 300;
    rig.kernel.target.YResolution = 301;
    EXPECT_EQ(rig.Load(), STATUS_OK);
    EXPECT_EQ(rig.kernel.target.XResolution, each.xResolution);
    EXPECT_EQ(rig.kernel.target.YResolution, each.yResolution);
  }
}

TEST(Load, OrientationAndColourOrder) {
  struct Case {
    const char* name;
    BitmapFile file;
    int prior;
    int orientation;
    int order;
  };
  constexpr int kOther = 5;  // an order that no bitmap file has
  const BitmapFile plain{{.height = 2}, {}, Repeat(24, 0)};
  const BitmapFile down{{.height = -2}, {}, Repeat(24, 0)};
  const BitmapFile gray{{.bits = 8}, Repeat(1024, 0), Repeat(8, 0)};
  const BitmapFile f565 = Fields(16, {0xF800, 0x07E0, 0x001F});
  const BitmapFile flat{{.height = 0}};
  const Case cases[] = {{"top-down", down, kOther, ORIENT_TOP_DOWN, ORDER_BGR},
                        {"no rows", flat, kOther, ORIENT_BOTTOM_UP, ORDER_BGR},
                        {"palette", gray, kOther, ORIENT_BOTTOM_UP, ORDER_RGB},
                        {"5-6-5", f565, kOther, ORIENT_BOTTOM_UP, ORDER_565},
                        {"5-6-5, but the kernel had RGB", f565, ORDER_RGB, ORIENT_BOTTOM_UP, ORDER_RGB},
                        {"5-6-5, but the kernel had BGR", f565, ORDER_BGR, ORIENT_BOTTOM_UP, ORDER_BGR},
                        {"24 bits, but the kernel had 5-6-5", plain, ORDER_565, ORIENT_BOTTOM_UP, ORDER_565}};
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    Rig rig;
    rig.kernel.file = each.file.Encode();
    rig.Target(each.file.header.width, 2, static_cast<int>(each.file.header.bits), each.prior);
    rig.kernel.target.Orientation = ORIENT_TOP_DOWN + ORIENT_BOTTOM_UP;
    rig.kernel.target.ColorCount = 99;
    EXPECT_EQ(rig.Load(), STATUS_OK);
    EXPECT_EQ(rig.kernel.target.Orientation, each.orientation);
    EXPECT_EQ(rig.kernel.target.ColorOrder, each.order);
    EXPECT_EQ(rig.kernel.target.ColorCount, each.file.header.bits == 8 ? 256 : 0);
    EXPECT_EQ(rig.kernel.rows.size(), each.file.header.height == 0 ? 0U : 2U);
  }
}

TEST(Load, MasksAreJudgedThenStoredThenApplied) {
  struct Case {
    const char* name;
    BitmapFile file;
    int status;
    bool stored;
    const char* firstRow;
  };
  const Case cases[] = {
      {"5-6-5", Fields(16, {0xF800, 0x07E0, 0x001F}), STATUS_OK, true, "5a5a5a5a"},
      {"4-4-4 is converted", Fields(16, {0xF00, 0xF0, 0xF}), STATUS_OK, true, "54515451"},
      {"6-5-5, of which 16 bits hold 5 of the first", Fields(16, {0x1F800, 0x7C0, 0x3E}), STATUS_OK, true,
       "2d152d15"},
      {"8-8-8", Fields(32, {0xFF0000, 0xFF00, 0xFF}), STATUS_OK, true, "5a5a5a5a5a5a5a5a"},
      {"8-8-8 reversed", Fields(32, {0xFF, 0xFF00, 0xFF0000}), STATUS_BAD_FORMAT, false, ""},
      {"24 bits", Fields(24, {0xFF0000, 0xFF00, 0xFF}), STATUS_BAD_FORMAT, false, ""}};
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    Rig rig;
    rig.kernel.file = each.file.Encode();
    rig.Target(2, 2, static_cast<int>(each.file.header.bits), 5);
    rig.load.RedMask = rig.load.GreenMask = rig.load.BlueMask = 1;
    const _BITMAPHANDLE before = rig.kernel.target;
    EXPECT_EQ(rig.Load(), each.status);
    for (const auto mask : {rig.load.RedMask, rig.load.GreenMask, rig.load.BlueMask}) {
      EXPECT_EQ(mask != 1, each.stored);
    }
    if (each.stored) {
      EXPECT_EQ(ToHex(rig.kernel.rows.at(0).bytes), each.firstRow);
    } else {
      EXPECT_EQ(std::memcmp(&before, &rig.kernel.target, sizeof before), 0);
    }
  }
}

TEST(Load, RowsAreAsWideAsTheWiderOfFileAndTarget) {
  struct Case {
    int fileWidth, targetWidth;
    const char* rowBuffer;
    int status;
  };
  for (const auto& each : {Case{4, 4, "alloc #1 16", STATUS_OK}, Case{9, 4, "alloc #1 36", STATUS_OK},
                           Case{3, 4, "alloc #1 32", STATUS_OK}, Case{-5, 4, "alloc #1 32", STATUS_OK},
                           Case{INT_MAX, 4, "", STATUS_NO_MEMORY}, Case{3, INT_MAX, "", STATUS_NO_MEMORY}}) {
    SCOPED_TRACE(testing::Message() << each.fileWidth << " of " << each.targetWidth);
    Rig rig;
    rig.kernel.file = BitmapFile{{.width = each.fileWidth}, {}, Repeat(200, 0)}.Encode();
    rig.kernel.target.Width = each.targetWidth;
    EXPECT_EQ(rig.Load(), each.status);
    if (each.status == STATUS_OK) {
      EXPECT_EQ(rig.kernel.Log({Kind::kAlloc}).substr(0, 11), each.rowBuffer);
    }
  }
}

TEST(Load, IconPageIsClampedAndNotWrittenBack) {
  std::vector<IconPage> pages;
  for (std::uint8_t page = 1; page <= 3; ++page)
    pages.push_back(Icon({.width = 1, .height = 2}, Repeat(8, page)));
  for (const auto& [wanted, page] : {std::pair{INT_MIN, 1}, {0, 1}, {2, 2}, {4, 3}}) {
    Rig rig;
    rig.kernel.file = IconFile(2, pages);
    rig.Target(1, 1, 24);
    rig.options.PageNumber = wanted;
    EXPECT_EQ(rig.Load(), STATUS_OK);
    EXPECT_EQ(rig.kernel.rows.at(0).bytes.at(0), page);
    EXPECT_EQ(rig.options.PageNumber, wanted);
  }
}

}  // namespace
