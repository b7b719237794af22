// Icon pages stored as PNG streams: the kernel decodes, the filter passes on rows and properties.
#include <gtest/gtest.h>

#include "Rig.h"

namespace {

const std::initializer_list<Kind> kStory = {Kind::kAlloc,   Kind::kFree, Kind::kFreeBitmap, Kind::kPngLoad,
                                            Kind::kPalette, Kind::kGet,  Kind::kRow,        Kind::kClose};

void Prepare(Rig& rig, const DecodedPng& png) {
  rig.kernel.file = IconFile(1, {{PngBody(30), 0, 0, 9, 32}});
  rig.kernel.png = png;
  rig.Target(png.width, png.height, png.bits);
  rig.info.Format = FMT_VISTA_ICO;
}

TEST(PngPage, RowsGoOutInStoredOrder) {
  Rig rig;
  Prepare(rig, {.width = 4, .height = 3, .bits = 32});
  EXPECT_EQ(rig.Load(), STATUS_OK);
  EXPECT_EQ(rig.kernel.Log(kStory),
            "alloc #1 30, load png 32 30, free #1, alloc #2 16, get 0 16, row 0 7, get 1 16, row 1 3, "
            "get 2 16, row 2 11, free bitmap, free #2, close");
  EXPECT_EQ(ToHex(rig.kernel.rows.at(1).bytes), "101112131415161718191a1b1c1d1e1f");
  EXPECT_EQ(rig.kernel.stream, PngBody(30));
  EXPECT_EQ(rig.info.Format, FMT_VISTA_ICO);
  EXPECT_EQ(rig.info.Flags, 0x1000U);
  const _BITMAPHANDLE& target = rig.kernel.target;
  EXPECT_EQ(target.ColorCount, 9);
  EXPECT_EQ(target.XResolution, 72);
  EXPECT_EQ(target.YResolution, 144);
  EXPECT_EQ(target.Orientation, ORIENT_TOP_DOWN);
  EXPECT_EQ(target.ColorOrder, ORDER_BGR);
  EXPECT_EQ(rig.kernel.Log({Kind::kOpen, Kind::kRead, Kind::kSeek}),
            "open picture 0 256, read 2, seek 0 0, read 6, seek 6 0, read 16, seek 22 0, read 8, "
            "seek 22 0, read 30");
}

TEST(PngPage, PaletteOnlyAtEightBitsOrLess) {
  struct Case {
    int bits, colors;
    const char* log;
  };
  for (const auto& each : {Case{8, 3, "palette of target 3"}, Case{1, 2, "palette of target 2"},
                           Case{8, 0, ""}, Case{24, 3, ""}}) {
    Rig rig;
    Prepare(rig, {.height = 1, .bits = each.bits, .colors = each.colors});
    EXPECT_EQ(rig.Load(), STATUS_OK);
    EXPECT_EQ(rig.kernel.Log({Kind::kPalette}), each.log) << each.bits;
    if (each.colors == 2) {
      EXPECT_EQ(ToHex(rig.kernel.palette), "00ff070001fe0700");
    }
    EXPECT_EQ(rig.kernel.Log({Kind::kRow}), "row 0 15");
  }
}

TEST(PngPage, LastIsTheLastRowOfEitherBitmap) {
  Rig rig;
  Prepare(rig, {.height = 4});
  rig.kernel.target.Height = 2;
  EXPECT_EQ(rig.Load(), STATUS_OK);
  EXPECT_EQ(rig.kernel.Log({Kind::kRow}), "row 0 7, row 1 11, row 2 3, row 3 11");
  rig.kernel.target.Height = 1;
  rig.kernel.png.height = 0;
  rig.kernel.png.allocated = false;  // then it is not the filter's to free, either
  EXPECT_EQ(rig.Load(), STATUS_OK);
  EXPECT_EQ(rig.kernel.Log({Kind::kRow, Kind::kFreeBitmap}), "");
}

TEST(PngPage, FailuresReleaseInTheirOrder) {
  struct Case {
    const char* name;
    Fault fault;
    int status;
    const char* story;  // after the stream's allocation
    bool decoding = true;
  };
  for (const auto& each :
       {Case{"stream buffer", {Kind::kAlloc, 1}, STATUS_NO_MEMORY, "close", false},
        Case{"entry", {Kind::kRead, 5, false, -1}, STATUS_READ_ERROR, "free #1, close", false},
        Case{"decoding", {Kind::kPngLoad, 1, false, -1234}, -1234, "load png 32 30, free #1, close"},
        Case{"row buffer",
             {Kind::kAlloc, 2},
             STATUS_NO_MEMORY,
             "load png 32 30, free #1, alloc #2 16, free bitmap, close"},
        Case{"row",
             {Kind::kRow, 2, false, -1234},
             -1234,
             "load png 32 30, free #1, alloc #2 16, get 0 16, row 0 7, get 1 16, row 1 3, "
             "free #2, free bitmap, close"}}) {
    SCOPED_TRACE(each.name);
    Rig rig;
    Prepare(rig, {});
    rig.info.Format = FMT_BMP;
    rig.kernel.fault = each.fault;
    EXPECT_EQ(rig.Load(), each.status);
    EXPECT_EQ(rig.kernel.Log(kStory), std::string("alloc #1 30, ") + each.story);
    EXPECT_EQ(rig.info.Format, each.decoding ? FMT_VISTA_ICO : FMT_BMP);
    EXPECT_EQ(rig.info.Flags, each.decoding ? 0x1000U : 0U);
  }
}

}  // namespace
