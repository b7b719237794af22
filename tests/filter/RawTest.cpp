// Headerless data: where it starts, which palette and masks it gets, and how its coding is chosen.
#include <gtest/gtest.h>

#include <cstring>

#include "Rig.h"

namespace {

TEST(Raw, PaletteIsInstalledBeforeTheFileIsOpened) {
  const std::initializer_list<Kind> story = {Kind::kFixedPalette, Kind::kPalette, Kind::kOpen, Kind::kSeek,
                                             Kind::kRow,          Kind::kFree,    Kind::kClose};
  Rig rig;
  rig.Target(4, 2, 4, 5);
  rig.kernel.target.ColorCount = 3;
  rig.kernel.target.Orientation = ORIENT_TOP_DOWN;
  rig.kernel.file = Hex("424d0000 28000000");  // looks like a bitmap file, and is not asked
  rig.info.Format = FMT_RAW;
  rig.load.RawOffset = 4;
  EXPECT_EQ(rig.Load(), STATUS_OK);
  EXPECT_EQ(rig.kernel.Log(story),
            "fixed palette 4, palette of target 3, open picture 0 256, seek 0 0, row 0 39, row 1 43, "
            "free #2, free #1, close");
  EXPECT_EQ(ToHex(rig.kernel.palette), "0004ee000104ee000204ee00");
  EXPECT_EQ(ToHex(rig.kernel.rows.at(0).bytes), "424d0000");
  EXPECT_EQ(rig.kernel.target.Orientation, ORIENT_TOP_DOWN);
  EXPECT_EQ(rig.kernel.target.ColorOrder, 5);
  EXPECT_EQ(rig.kernel.target.ColorCount, 3);

  rig.load.FileName = "nothing of that name";
  rig.load.RawFlags = RAW_HAS_PALETTE;
  rig.load.RawPalette[1] = {1, 2, 3, 4};
  EXPECT_EQ(rig.Load(), STATUS_OPEN_ERROR);
  EXPECT_EQ(rig.kernel.Log({Kind::kFixedPalette, Kind::kPalette}), "palette of target 3");
  EXPECT_EQ(ToHex(rig.kernel.palette), "000000000102030400000000");
}

TEST(Raw, CodingFollowsFormatAndDepth) {
  struct Case {
    const char* name;
    int format, bits;
    const char* data;
    unsigned rawFlags;
    std::uint32_t red, green, blue;
    const char* row;
    unsigned flags;
  };
  const unsigned plain = ROW_FLAGS_BASE | ROW_FLAG_FIRST | ROW_FLAG_LAST | ROW_FLAG_UNCOMPRESSED;
  const unsigned coded = ROW_FLAGS_BASE | ROW_FLAG_FIRST | ROW_FLAG_LAST;
  const Case cases[] = {
      {"plain with masks", FMT_RAW, 16, "ff0f1204", RAW_HAS_MASKS, 0xF00, 0xF0, 0xF, "de7b4420", plain},
      {"fields", FMT_RAW_BITFIELDS, 16, "ff0f1204", RAW_HAS_MASKS, 0xF00, 0xF0, 0xF, "de7b4420", plain},
      {"fields at 8 bits, which are RLE8", FMT_RAW_BITFIELDS, 8, "04ff", 0, 0, 0, 0, "ffffffff", coded},
      {"fields without masks", FMT_RAW_BITFIELDS, 16, "ff0f1234", 0, 0xF00, 0xF0, 0xF, "ff0f1234", plain},
      {"5-6-5", FMT_RAW_BITFIELDS, 16, "ff0f1234", RAW_HAS_MASKS, 0xF800, 0x7E0, 0x1F, "ff0f1234", plain},
      {"masks at 32 bits", FMT_RAW_BITFIELDS, 32, "0102030405060708", RAW_HAS_MASKS, 1, 2, 3,
       "0102030405060708", plain},
      {"RLE8 at 16 bits, unconverted", FMT_RAW_RLE8, 16, "04ff", RAW_HAS_MASKS, 0xF00, 0xF0, 0xF, "ffffffff",
       coded},
      {"RLE4 at 24 bits", FMT_RAW_RLE4, 24, "0412", 0, 0, 0, 0, "1212000000000000", coded},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    Rig rig;
    rig.Target(2, 1, each.bits);
    rig.kernel.file = Join({Hex("eeeeee"), Hex(each.data), Repeat(40, 0)});
    rig.info.Format = each.format;
    rig.load.RawHasOffset = -1;
    rig.load.RawOffset = 3;
    rig.load.RawFlags = each.rawFlags;
    rig.load.RedMask = each.red;
    rig.load.GreenMask = each.green;
    rig.load.BlueMask = each.blue;
    EXPECT_EQ(rig.Load(), STATUS_OK);
    ASSERT_EQ(rig.kernel.rows.size(), 1U);
    EXPECT_EQ(ToHex(rig.kernel.rows[0].bytes), each.row);
    EXPECT_EQ(rig.kernel.rows[0].flags, each.flags);
    EXPECT_EQ(rig.kernel.target.ColorOrder, ORDER_BGR);
    EXPECT_EQ(rig.kernel.Log({Kind::kRegion, Kind::kInitBitmap}), "");
    EXPECT_EQ(rig.kernel.palette.empty(), each.bits > 8 || rig.kernel.target.ColorCount == 0);
  }
}

TEST(Raw, OffsetsPastTheEndReadAsMissingData) {
  struct Case {
    int format, height, status;
  };
  for (const auto& each :
       {Case{FMT_RAW, 2, STATUS_READ_ERROR}, Case{FMT_RAW, 1, STATUS_OK}, Case{FMT_RAW_RLE8, 2, STATUS_OK}}) {
    for (const int offset : {100, INT_MAX, INT_MIN}) {
      Rig rig;
      rig.Target(4, each.height, 8);
      rig.kernel.file = Repeat(20, 3);
      rig.info.Format = each.format;
      rig.load.RawHasOffset = 1;
      rig.load.RawOffset = offset;
      EXPECT_EQ(rig.Load(), each.status) << each.format << " at " << offset;
      if (each.status == STATUS_OK) {
        EXPECT_EQ(ToHex(rig.kernel.rows.back().bytes), "00000000");
      }
    }
  }
}

TEST(Raw, BandCountsFromTheOffset) {
  Rig rig;
  rig.Target(4, 3, 8);
  rig.kernel.file = Hex("ee 01010101 02020202 03030303");
  rig.info.Format = FMT_RAW;
  rig.load.RawHasOffset = rig.load.RawOffset = 1;
  rig.load.BandEnabled = rig.load.BandTopRow = rig.load.BandRowCount = 1;
  EXPECT_EQ(rig.Load(), STATUS_OK);
  EXPECT_EQ(ToHex(rig.kernel.rows.at(0).bytes), "02020202");
  rig.kernel.target.BitsPerPixel = 7;  // raw data is described by the caller: no depth is refused
  EXPECT_EQ(rig.Load(), STATUS_OK);
}

}  // namespace
