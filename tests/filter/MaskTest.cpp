// The transparency mask of icon images: when it is read, what is put where, and what every failure
// releases in which order.
#include <gtest/gtest.h>

#include <algorithm>

#include "Rig.h"

namespace {

const std::initializer_list<Kind> kStory = {
    Kind::kAlloc,   Kind::kFree, Kind::kInitBitmap,   Kind::kAllocateBitmap, Kind::kFreeBitmap, Kind::kAccess,
    Kind::kRelease, Kind::kPut,  Kind::kFixedPalette, Kind::kPalette,        Kind::kRegion,     Kind::kRow};

constexpr RowImage kIcon{.width = 2, .height = 2, .bits = 24, .signature = 0};
const char* const kBegin = "alloc #1 8, alloc #2 64, row 0 39, alloc #3 216";
const char* const kEnd = "free #2, free #1";

void Prepare(Rig& rig) {
  rig.Target(2, 2, 24);
  rig.kernel.file = Hex("0102030405060000 1112131415160000 40aabbcc 80ddeeff");
}

TEST(Mask, IsReadBeforeTheLastRow) {
  Rig rig;
  Prepare(rig);
  EXPECT_EQ(rig.Decode(kIcon), STATUS_OK);
  EXPECT_EQ(rig.kernel.Log(kStory),
            "alloc #1 8, alloc #2 64, row 0 39, alloc #3 216, init 216 2 2 1, allocate 1, alloc #4 4, "
            "fixed palette 1, palette of mask 2, access 0, put 0 4, put 1 4, release 1 1, region 0 6, "
            "free bitmap, free #3, free #4, row 1 43, free #2, free #1");
  EXPECT_EQ(rig.kernel.maskRows, (std::vector<Bytes>{Hex("40aabbcc"), Hex("80ddeeff")}));
}

TEST(Mask, EveryFailureReleasesInItsOrder) {
  struct Case {
    const char* name;
    Fault fault;
    int status;
    std::string story;  // between the mask record's allocation and the decoder's own buffers
  };
  const std::string made = "init 216 2 2 1, allocate 1, ";
  const std::string toAccess = made + "alloc #4 4, fixed palette 1, palette of mask 2, access 0, ";
  const std::string toRelease = toAccess + "put 0 4, put 1 4, release 1 1, ";
  const char* const freed = "free bitmap, free #3, free #4, ";
  const Case cases[] = {
      {"record", {Kind::kAlloc, 3}, STATUS_NO_MEMORY, ""},
      {"pixels", {Kind::kAllocateBitmap, 1, false, -1234}, -1234, made + "free bitmap, free #3, "},
      {"row buffer", {Kind::kAlloc, 4}, STATUS_NO_MEMORY, made + "alloc #4 4, free bitmap, free #3, "},
      {"access",
       {Kind::kAccess, 1, false, -1234},
       STATUS_NO_MEMORY,
       toAccess + "free #4, free bitmap, free #3, "},
      {"release", {Kind::kRelease, 1, false, -1234}, -1234, toRelease + freed},
      {"region", {Kind::kRegion, 1, false, -1234}, -1234, toRelease + "region 0 6, " + freed},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    Rig rig;
    Prepare(rig);
    rig.kernel.fault = each.fault;
    EXPECT_EQ(rig.Decode(kIcon), each.status);
    EXPECT_EQ(rig.kernel.Log(kStory), std::string(kBegin) + ", " + each.story + kEnd);
  }
}

// A short mask row hands STATUS_READ_ERROR to the release; what comes back decides.
TEST(Mask, ShortMaskRow) {
  for (const int answer : {STATUS_READ_ERROR, -1234, STATUS_OK}) {
    SCOPED_TRACE(answer);
    Rig rig;
    Prepare(rig);
    rig.options.Flags = LOAD_ALLOW_TRUNCATED;
    rig.kernel.file.pop_back();
    rig.kernel.fault = Fault{Kind::kRelease, 1, false, answer};
    EXPECT_EQ(rig.Decode(kIcon), answer);
    const std::string goesOn = answer == STATUS_OK ? "row 1 43, " : "";
    EXPECT_EQ(rig.kernel.Log(kStory), std::string(kBegin) +
                                          ", init 216 2 2 1, allocate 1, alloc #4 4, fixed palette 1, "
                                          "palette of mask 2, access 0, put 0 4, release 1 -7, free #4, "
                                          "free bitmap, free #3, " +
                                          goesOn + kEnd);
  }
}

TEST(Mask, RowsAreThoseOfTheTarget) {
  struct Case {
    int width, height;
    std::size_t rowSize;
    int more = 0;  // bytes that a row of the mask bitmap has beyond the file's
  };
  for (const auto& each : {Case{32, 32, 4}, Case{33, 2, 8}, Case{5, 0, 4}, Case{33, 2, 8, 200}}) {
    SCOPED_TRACE(testing::Message() << each.width << " " << each.more);
    Rig rig;
    rig.kernel.longerMaskRows = each.more;
    rig.Target(each.width, each.height, 8);
    const RowImage image{.width = each.width, .height = 1, .bits = 8, .signature = 0};
    rig.load.ReadBufferSize = 6;
    Bytes mask;
    for (std::size_t i = 0; i < each.rowSize * static_cast<std::size_t>(each.height); ++i)
      mask.push_back(static_cast<std::uint8_t>(i));
    rig.kernel.file = Join({Repeat(image.Stride(), 0xEE), mask, Repeat(50, 0xDD)});
    EXPECT_EQ(rig.Decode(image), STATUS_OK);
    ASSERT_EQ(rig.kernel.maskRows.size(), static_cast<std::size_t>(each.height));
    Bytes put;
    for (auto row : rig.kernel.maskRows) {
      const auto own = static_cast<std::ptrdiff_t>(each.rowSize);
      EXPECT_EQ(std::count(row.begin() + own, row.end(), 0), each.more) << "what the file has not is 0";
      row.resize(each.rowSize);
      put = Join({put, row});
    }
    EXPECT_EQ(put, mask);
    const std::string room = " " + std::to_string(each.rowSize + static_cast<std::size_t>(each.more));
    EXPECT_TRUE(rig.kernel.Log({Kind::kAlloc}).ends_with(room)) << "room for the longer of two rows";
  }
}

TEST(Mask, ContinuesTheStreamWhereTheCodesEnded) {
  struct Case {
    const char* name;
    RowImage image;
    const char* file;
  };
  const RowImage rle8{.width = 2, .height = 2, .bits = 8, .compression = 1, .signature = 0};
  const RowImage rle4{.width = 2, .height = 2, .bits = 4, .compression = 2, .signature = 0};
  for (const auto& each : {Case{"end of bitmap early", rle8, "0207 0001 40aabbcc 80ddeeff"},
                           Case{"ends of lines", rle8, "0207 0000 0208 0000 40aabbcc 80ddeeff"},
                           Case{"four-bit literals", rle4, "0003 1230 0000 0001 40aabbcc 80ddeeff"}}) {
    SCOPED_TRACE(each.name);
    Rig rig;
    rig.Target(2, 2, each.image.bits);
    rig.load.ReadBufferSize = 6;
    rig.kernel.file = Hex(each.file);
    EXPECT_EQ(rig.Decode(each.image), STATUS_OK);
    EXPECT_EQ(rig.kernel.maskRows, (std::vector<Bytes>{Hex("40aabbcc"), Hex("80ddeeff")}));
  }
}

TEST(Mask, OnlyWhereTheLastStoredRowOfAnIconIsDelivered) {
  struct Case {
    const char* name;
    unsigned short signature;
    int bandFirst, bandCount;
    const char* log;
  };
  for (const auto& each :
       {Case{"bitmap", 0x4D42, 0, 2, "row 0 39, row 1 43"},
        Case{"band before the last row", 0, 0, 1, "row 0 47"},
        Case{"band of the last row", 0, 1, 1, "region 0 6, row 0 43"},
        Case{"band beyond the last row", 0, 0, 3, "row 0 39, region 0 6, row 1 35, row 2 43"}}) {
    SCOPED_TRACE(each.name);
    Rig rig;
    Prepare(rig);
    rig.kernel.target.Orientation = ORIENT_TOP_DOWN;
    rig.load.BandEnabled = 1;
    rig.load.BandFirstRow = each.bandFirst;
    rig.load.BandRowCount = each.bandCount;
    RowImage image = kIcon;
    image.signature = each.signature;
    EXPECT_EQ(rig.Decode(image), STATUS_OK);
    EXPECT_EQ(rig.kernel.Log({Kind::kRow, Kind::kRegion}), each.log);
  }
}

}  // namespace
