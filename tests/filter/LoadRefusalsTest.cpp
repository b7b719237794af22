// What the load driver refuses, with which status, and what a refusal leaves untouched. Also the reader of
// headers that are longer than their buffer.
#include <gtest/gtest.h>

#include <cstring>

#include "Rig.h"

namespace {

IconPage Icon(const Header& header, const Bytes& rest) {
  return {Join({header.Encode(), rest})};
}

TEST(Load, RefusalsLeaveTheTargetUntouched) {
  struct Case {
    const char* name;
    Bytes file;
    int status;
    int format = FMT_BMP;
  };
  const Bytes good = BitmapFile{{}, {}, Repeat(24, 0)}.Encode();
  const Bytes array = BitmapFile{{}, {}, {}, true}.Encode();
  const Bytes icon = IconFile(1, {Icon({}, {})});
  const Case cases[] = {
      {"empty", {}, STATUS_BAD_FORMAT},
      {"another signature", Hex("4d424d424d42"), STATUS_BAD_FORMAT},
      {"array header cut", Part(array, 0, 13), STATUS_BAD_FORMAT},
      {"array without a bitmap",
       Join({Part(array, 0, 14), Repeat(2, 'X'), Bytes(good.begin() + 2, good.end())}), STATUS_BAD_FORMAT},
      {"file header cut", Part(good, 0, 13), STATUS_BAD_FORMAT},
      {"12 bytes of the header cut", Part(good, 0, 25), STATUS_BAD_FORMAT},
      {"40-byte header cut", Part(good, 0, 53), STATUS_BAD_FORMAT},
      {"64-byte header cut", Part(BitmapFile{{.size = 64}}.Encode(), 0, 77), STATUS_BAD_FORMAT},
      {"header of 15 bytes", BitmapFile{{.size = 15}, {}, Repeat(40, 0)}.Encode(), STATUS_BAD_FORMAT},
      {"depth 2", BitmapFile{{.bits = 2}}.Encode(), STATUS_BAD_FORMAT},
      {"palette cut", BitmapFile{{.bits = 1}, Repeat(7, 0)}.Encode(), STATUS_READ_ERROR},
      {"core palette cut", BitmapFile{{.size = 12, .bits = 1}, Repeat(5, 0)}.Encode(), STATUS_READ_ERROR},
      {"rest of a header with masks cut",
       Part(BitmapFile{{.size = 108, .bits = 16, .compression = 3}}.Encode(), 0, 89), STATUS_READ_ERROR,
       FMT_OS2_2},
      {"masks cut", BitmapFile{{.bits = 16, .compression = 3}, Repeat(11, 0)}.Encode(), STATUS_READ_ERROR},
      {"pixels at the greatest offset", BitmapFile{{}, {}, {}, false, 0xFFFFFFFF}.Encode(),
       STATUS_SEEK_ERROR},
      {"directory cut", Hex("0000 0100 01"), STATUS_BAD_FORMAT},
      {"directory of type 3", IconFile(3, {Icon({}, Repeat(16, 0))}), STATUS_BAD_FORMAT},
      {"entry cut", Part(icon, 0, 21), STATUS_BAD_FORMAT},
      {"image cut before its eighth byte", Part(icon, 0, 29), STATUS_READ_ERROR},
      {"image header cut", Part(icon, 0, 61), STATUS_BAD_FORMAT},
      {"image header of 64 bytes", IconFile(1, {Icon({.size = 64}, {})}), STATUS_BAD_FORMAT},
      {"image past the end", IconFile(1, {{{}, 16, 16, 0, 0, 40, 0xFFFFFFFF}}), STATUS_READ_ERROR},
      {"image depth 63", IconFile(1, {Icon({.bits = 63}, Repeat(99, 0))}), STATUS_BAD_FORMAT},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    Rig rig;
    rig.kernel.file = each.file;
    rig.info.Format = each.format;
    const _BITMAPHANDLE before = rig.kernel.target;
    EXPECT_EQ(rig.Load(), each.status);
    EXPECT_EQ(std::memcmp(&before, &rig.kernel.target, sizeof before), 0);
    EXPECT_EQ(rig.kernel.LastEvent(), Kind::kClose);
  }
}

TEST(Load, RefusalsBeforeTheFileIsOpen) {
  EXPECT_EQ(TheFilter().load(nullptr), STATUS_BAD_PARAMETER);
  for (const int bits : {INT_MIN, -1, 0, 2, 31, 33, 64, INT_MAX}) {
    Rig rig;
    rig.kernel.target.BitsPerPixel = bits;
    EXPECT_EQ(rig.Load(), STATUS_BAD_BPP) << bits;
    EXPECT_EQ(rig.kernel.LastEvent(), Kind::kKinds) << bits;
  }
  Rig rig;
  rig.load.FileName = "nothing of that name";
  EXPECT_EQ(rig.Load(), STATUS_OPEN_ERROR);
  EXPECT_EQ(rig.kernel.LastEvent(), Kind::kOpen);
}

TEST(Load, OnlyTheNamedSeeksAreChecked) {
  struct Case {
    const char* name;
    int nth;
    int status;
  };
  Rig rig;
  rig.kernel.file = BitmapFile{{}, {}, Repeat(48, 0), false, 60}.Encode();
  for (const auto& each : {Case{"to the header", 2, STATUS_SEEK_ERROR}, Case{"where are we", 3, STATUS_OK},
                           Case{"to the pixels", 4, STATUS_SEEK_ERROR}}) {
    SCOPED_TRACE(each.name);
    for (const int landed : {-1, Fault::kElsewhere}) {
      rig.kernel.fault = Fault{Kind::kSeek, each.nth, false, landed};
      EXPECT_EQ(rig.Load(), each.status);
      EXPECT_TRUE(rig.kernel.faultStruck);
    }
  }
  // A position that is not told is not one of 2^32 - 1.
  rig.kernel.file = BitmapFile{{}, {}, Repeat(48, 0), false, 0xFFFFFFFF}.Encode();
  rig.kernel.fault = Fault{Kind::kSeek, 3};
  EXPECT_EQ(rig.Load(), STATUS_SEEK_ERROR);
}

TEST(Load, HeaderReaderFillsUpToItsCapacityAndSkipsTheRest) {
  struct Case {
    unsigned capacity, size;
    std::size_t fileSize;
    int result;
    std::uint32_t position;
    std::size_t filled;
  };
  for (const auto& each :
       {Case{8, 8, 10, 1, 8, 8}, Case{8, 5, 10, 1, 5, 5}, Case{8, 8, 7, 0, 7, 7}, Case{8, 20, 8, 1, 20, 8},
        Case{8, 20, 7, 0, 7, 7}, Case{8, 0xFFFFFFFF, 10, 0, 8, 8}}) {
    SCOPED_TRACE(testing::Message() << each.size << " of " << each.fileSize);
    FakeKernel kernel;
    kernel.file = Repeat(each.fileSize, 1);
    const HANDLE file = kernel.HandOver();
    Bytes buffer = Repeat(10, 9);
    const int result = TheFilter().readHeader(file, buffer.data(), each.capacity, each.size);
    EXPECT_EQ(result, each.result);
    EXPECT_EQ(file->position, each.position);
    EXPECT_EQ(buffer, Join({Repeat(each.filled, 1), Repeat(10 - each.filled, 9)}));
    EXPECT_EQ(kernel.Verdict(), "");
  }
}

}  // namespace
