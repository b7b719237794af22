// What fltInfo tells about a file: every kind of header, icon directories, PNG pages, and what it
// leaves alone.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <sstream>

#include "Rig.h"

namespace {

/** "format widthxheightxbits =data orientation order xdpi,ydpi compression"; zeros where not written. */
std::string Describe(const IMAGEINFO& info) {
  std::ostringstream text;
  text << info.Format << ' ' << info.Width << 'x' << info.Height << 'x' << info.BitsPerPixel << " ="
       << info.DataSize
       << (info.Orientation == ORIENT_TOP_DOWN    ? " down "
           : info.Orientation == ORIENT_BOTTOM_UP ? " up "
                                                  : " - ")
       << info.ColorOrder << ' ' << info.XResolution << ',' << info.YResolution;
  if (info.Compression[0] != '\0') text << ' ' << info.Compression;
  return text.str();
}

constexpr const char* kNothing = "0 0x0x0 =0 - 0 0,0";
const Bytes k565 = Words({0xF800, 0x07E0, 0x001F});
const Bytes k555 = Words({0x7C00, 0x03E0, 0x001F});

TEST(Identify, EveryBitmapHeader) {
  struct Case {
    const char* name;
    BitmapFile file;
    std::string expected;
  };
  const Case cases[] = {
      {"24 bits, top-down", {{.width = 10, .height = -3}}, "6 10x3x24 =90 down 1 96,96"},
      {"resolution across alone", {{.bits = 32, .xPixelsPerMetre = 11811}}, "6 4x2x32 =32 up 1 300,96"},
      {"resolution down alone", {{.bits = 32, .yPixelsPerMetre = 11811}}, "6 4x2x32 =32 up 1 96,300"},
      {"resolution down alone, 32 bytes",
       {{.size = 32, .yPixelsPerMetre = 2835}},
       "74 4x2x24 =24 up 1 96,72"},
      {"resolutions that round to 0 or wrap",
       {{.bits = 8, .xPixelsPerMetre = 19, .yPixelsPerMetre = 0x7FFFFFFF}},
       "6 4x2x8 =8 up 0 96,96"},
      {"negative resolution",
       {{.bits = 8, .xPixelsPerMetre = 0U - 3780U, .yPixelsPerMetre = 2835}},
       "6 4x2x8 =8 up 0 -95,72"},
      {"RLE8", {{.bits = 8, .compression = 1}}, "84 4x2x8 =8 up 0 96,96 Run Length"},
      {"RLE4", {{.width = 5, .bits = 4, .compression = 2}}, "84 5x2x4 =6 up 0 96,96 Run Length"},
      {"no rows", {{.height = 0}}, "6 4x0x24 =0 up 1 96,96"},
      {"resolution half way between two", {{.xPixelsPerMetre = 2500}}, "6 4x2x24 =24 up 1 64,96"},
      {"a coding that nobody knows", {{.compression = 4}}, "84 4x2x24 =24 up 1 96,96 Run Length"},
      {"5-6-5", {{.bits = 16, .compression = 3}, k565}, "6 4x2x16 =16 up 7 96,96"},
      {"5-6-5 but for the last byte",
       {{.bits = 16, .compression = 3}, Words({0xF800, 0x07E0, 0x0100001F})},
       "6 4x2x16 =16 up 1 96,96"},
      {"5-6-5 masks, but no bit fields", {{.bits = 16}, k565}, "6 4x2x16 =16 up 1 96,96"},
      {"5-6-5 masks at 32 bits", {{.bits = 32, .compression = 3}, k565}, "6 4x2x32 =32 up 1 96,96"},
      {"5-6-5 in an array: past the block",
       {{.bits = 16, .compression = 3}, k565, {}, true},
       "6 4x2x16 =16 up 1 96,96"},
      {"5-6-5 after 20 bytes, in an array",
       {{.size = 20, .bits = 16, .compression = 3}, k565, {}, true},
       "74 4x2x16 =16 up 7 96,96"},
      {"5-6-5 after 41 bytes: one past the block",
       {{.size = 41, .bits = 16, .compression = 3}, k565},
       "74 4x2x16 =16 up 1 96,96"},
      {"core header, unsigned sides",
       {{.size = 12, .width = 0xFFFF, .height = 0x8000, .bits = 1}},
       "14 65535x32768x1 =268435456 up 0 96,96"},
      {"16 bytes", {{.size = 16, .bits = 4}}, "74 4x2x4 =4 up 0 96,96"},
      {"19 bytes: no compression field", {{.size = 19, .bits = 8}, Repeat(4, 1)}, "74 4x2x8 =8 up 0 96,96"},
      {"20 bytes: a compression field",
       {{.size = 20, .bits = 8, .compression = 1}},
       "74 4x2x8 =8 up 0 96,96 Run Length"},
      {"31 bytes: no resolutions",
       {{.size = 31, .xPixelsPerMetre = 2835, .yPixelsPerMetre = 2835}},
       "74 4x2x24 =24 up 1 96,96"},
      {"32 bytes: resolutions",
       {{.size = 32, .xPixelsPerMetre = 2835, .yPixelsPerMetre = 3780}},
       "74 4x2x24 =24 up 1 72,96"},
      {"64 bytes, top-down",
       {{.size = 64, .height = -2, .xPixelsPerMetre = 2835, .yPixelsPerMetre = 11811}},
       "74 4x2x24 =24 down 1 72,300"},
      {"the greatest size",
       {{.size = 0xFFFFFFFF, .bits = 16, .compression = 3}, k565},
       "74 4x2x16 =16 up 1 96,96"},
      {"a data size that wraps",
       {{.width = 0x10000, .height = 0x10000, .bits = 32}},
       "6 65536x65536x32 =0 up 1 96,96"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    Rig rig;
    rig.kernel.file = each.file.Encode();
    EXPECT_EQ(rig.Identify(), STATUS_OK);
    EXPECT_EQ(Describe(rig.info), each.expected);
    EXPECT_EQ(rig.info.PageNumber + rig.info.TotalPages, 0);
  }

  // A header whose end wraps onto the file header, where 5-6-5 masks seem to stand.
  Rig rig;
  rig.kernel.file = BitmapFile{{.size = 0xFFFFFFF4, .bits = 16, .compression = 3}}.Encode();
  std::copy(k565.begin(), k565.end(), rig.kernel.file.begin() + 2);
  EXPECT_EQ(rig.Identify(), STATUS_OK);
  EXPECT_EQ(rig.info.ColorOrder, ORDER_BGR);
}

TEST(Identify, RefusalsAndWhatTheyLeaveWritten) {
  struct Case {
    const char* name;
    Bytes file;
    int status;
    std::string left = kNothing;
  };
  const Case cases[] = {
      {"empty", {}, STATUS_READ_ERROR},
      {"another signature", Hex("4D42 0000"), STATUS_BAD_FORMAT},
      {"file header alone", Repeat(14, 0x42), STATUS_BAD_FORMAT},
      {"array without a bitmap", Join({Hex("4241"), Repeat(40, 40)}), STATUS_BAD_FORMAT},
      {"header of 11 bytes", BitmapFile{{.size = 11}}.Encode(), STATUS_BAD_FORMAT},
      {"header of 13 bytes",
       Join({BitmapFile{{.size = 13, .width = 7, .height = -9}}.Encode(), Repeat(8, 0xFF)}), STATUS_FAILURE,
       "74 7x-9x0 =0 - 0 0,0"},
      {"2 bits", BitmapFile{{.bits = 2}}.Encode(), STATUS_BAD_FORMAT, "6 4x2x0 =0 - 0 0,0"},
      {"3 bits", BitmapFile{{.bits = 3}}.Encode(), STATUS_BAD_FORMAT, "6 4x2x0 =0 - 0 0,0"},
      {"directory of type 3", Hex("0000 0300 0100"), STATUS_BAD_FORMAT},
      {"directory without entries", Hex("0000 0100 0000"), STATUS_BAD_FORMAT},
      {"directory without its entry", Hex("0000 0100 0100"), STATUS_READ_ERROR},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    Rig rig;
    rig.kernel.file = each.file;
    EXPECT_EQ(rig.Identify(), each.status);
    EXPECT_EQ(Describe(rig.info), each.left);
  }
  EXPECT_EQ(TheFilter().info(nullptr), STATUS_BAD_PARAMETER);
}

TEST(Identify, KeepsWhatTheFileDoesNotSay) {
  // Sizes of headers, and the resolution afterwards, of 300 supplied.
  for (const auto& [size, resolution] : {std::pair{12U, 300}, {31U, 300}, {32U, 96}, {40U, 300}}) {
    SCOPED_TRACE(size);
    Rig rig;
    rig.kernel.file = BitmapFile{{.size = size}}.Encode();
    std::memset(&rig.info, 0x55, sizeof rig.info);
    std::strcpy(rig.info.Compression, "as supplied");
    rig.info.XResolution = 300;
    rig.info.YResolution = 0;
    const IMAGEINFO before = rig.info;
    EXPECT_EQ(rig.Identify(), STATUS_OK);
    EXPECT_EQ(rig.info.XResolution, resolution);
    EXPECT_EQ(rig.info.YResolution, 96);
    EXPECT_STREQ(rig.info.Compression, "as supplied");
    EXPECT_EQ(rig.info.StructSize, before.StructSize);
    EXPECT_EQ(rig.info.Flags, before.Flags);
    EXPECT_EQ(rig.info.TotalPages, before.TotalPages);
    EXPECT_EQ(rig.info.PageNumber, before.PageNumber);
    EXPECT_EQ(std::memcmp(rig.info.Reserved3, before.Reserved3, sizeof before.Reserved3), 0);
    rig.kernel.file = BitmapFile{{.bits = 8, .compression = 1}}.Encode();
    EXPECT_EQ(rig.Identify(), STATUS_OK);
    EXPECT_STREQ(rig.info.Compression, "Run Length");
  }
}

IconPage Page(int width, int storedHeight, unsigned bits, std::uint32_t compression = 0) {
  const Header header{.width = width, .height = storedHeight, .bits = bits, .compression = compression};
  return {header.Encode()};
}

TEST(Identify, IconAndCursorPages) {
  struct Case {
    const char* name;
    unsigned type;
    std::vector<IconPage> pages;
    int status;
    std::string expected = kNothing;
  };
  const char* const small = "91 16x16x4 =128 up 0 96,96";
  const char* const vista = "321 16x16x4 =128 up 0 96,96";
  const char* const cursor = "92 16x16x4 =128 up 0 96,96";
  const IconPage page = Page(16, 32, 4);
  IconPage unsized = page;
  unsized.width = 0;
  IconPage shortHeader = {Header{.size = 20}.Encode()};
  shortHeader.body.resize(40);
  IconPage wide = Page(256, 64, 1);
  IconPage wideUnsized = wide;
  wideUnsized.height = 0;
  const std::vector<IconPage> truncated = {{Bytes(39, 40)}};
  const Case cases[] = {
      {"icon", 1, {page}, STATUS_OK, small},
      {"cursor", 2, {page}, STATUS_OK, cursor},
      {"PNG on a page between others", 1, {page, {PngBody()}, page}, STATUS_OK, vista},
      {"256 wide", 1, {wide}, STATUS_OK, "321 256x32x1 =1024 up 0 96,96"},
      {"256 wide, in a cursor", 2, {wide}, STATUS_OK, "92 256x32x1 =1024 up 0 96,96"},
      {"stored height 256", 1, {Page(8, 256, 8)}, STATUS_OK, "321 8x128x8 =1024 up 0 96,96"},
      {"256 wide on another page, entry says so", 1, {page, wideUnsized}, STATUS_OK, vista},
      {"256 wide on another page, entry says 16", 1, {page, wide}, STATUS_OK, small},
      {"entry says 256, image does not", 1, {page, unsized}, STATUS_OK, small},
      {"resolution across alone",
       1,
       {{Header{.xPixelsPerMetre = 2835}.Encode()}},
       STATUS_OK,
       "91 4x1x24 =12 up 1 72,96"},
      {"resolution down alone",
       1,
       {{Header{.yPixelsPerMetre = 2835}.Encode()}},
       STATUS_OK,
       "91 4x1x24 =12 up 1 96,72"},
      {"odd negative height", 1, {Page(8, -7, 24)}, STATUS_OK, "91 8x3x24 =72 down 1 96,96"},
      {"bit fields: the masks are not looked at",
       1,
       {{Join({Header{.bits = 16, .compression = 3}.Encode(), k565})}},
       STATUS_OK,
       "91 4x1x16 =8 up 1 96,96"},
      {"header of another size", 1, {shortHeader}, STATUS_FAILURE},
      {"header cut", 1, truncated, STATUS_READ_ERROR},
      {"body past the end", 1, {{{}, 16, 16, 0, 0, 40, 0xFFFFFFF0}}, STATUS_READ_ERROR},
      {"PNG in a cursor", 2, {{PngBody()}}, STATUS_BAD_FORMAT},
      {"PNG cut", 1, {{PngBody(), 16, 16, 0, 0, 21}}, STATUS_READ_ERROR},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    Rig rig;
    rig.kernel.file = IconFile(each.type, each.pages);
    rig.options.PageNumber = 1;
    EXPECT_EQ(rig.Identify(), each.status);
    EXPECT_EQ(Describe(rig.info), each.expected);
  }
}

// Of an entry that is cut the missing bytes are 0: its page is looked for at the start of the file.
TEST(Identify, ADirectoryMayEndInsideAnEntry) {
  // The second read is the page's entry, the fifth and seventh are those of the whole directory.
  for (const auto& [nth, status] : {std::pair{2, STATUS_FAILURE}, {5, STATUS_OK}, {7, STATUS_OK}}) {
    Rig rig;
    rig.kernel.file = IconFile(1, {Page(16, 32, 4), Page(16, 32, 4)});
    rig.kernel.fault = Fault{Kind::kRead, nth, false, Fault::kHalf};
    EXPECT_EQ(rig.Identify(), status) << nth;
    EXPECT_TRUE(rig.kernel.faultStruck);
  }
}

TEST(Identify, PageIsClampedAndWrittenBackEvenWhenIdentificationFails) {
  for (const auto& [wanted, page] : {std::pair{INT_MIN, 1}, {0, 1}, {2, 2}, {3, 2}}) {
    SCOPED_TRACE(wanted);
    Rig rig;
    rig.kernel.file = IconFile(1, {Page(1, 2, 2), Page(2, 2, 2)});
    rig.options.PageNumber = wanted;
    EXPECT_EQ(rig.Identify(), STATUS_BAD_FORMAT);
    EXPECT_EQ(rig.options.PageNumber, page);
    EXPECT_EQ(rig.info.PageNumber, page);
    EXPECT_EQ(rig.info.TotalPages, 2);
    EXPECT_EQ(rig.info.Width, page);
  }
}

TEST(Identify, PngPageComesFromTheKernel) {
  for (const unsigned entryBits : {0U, 24U}) {
    Rig rig;
    rig.kernel.file = IconFile(1, {{PngBody(50), 0, 0, 0, entryBits}});
    rig.kernel.pngInfo.Width = 100;
    rig.kernel.pngInfo.Height = 5;
    rig.kernel.pngInfo.BitsPerPixel = 2;  // no depth of bitmaps: it is passed on all the same
    rig.kernel.pngInfo.Orientation = ORIENT_TOP_DOWN;
    rig.kernel.pngInfo.ColorOrder = ORDER_BGR;
    rig.kernel.pngInfo.YResolution = 77;
    std::memcpy(rig.kernel.pngInfo.Compression, "PNG by the kernel!!!", sizeof rig.info.Compression);
    EXPECT_EQ(rig.Identify(), STATUS_OK);
    EXPECT_EQ(Describe(rig.info), entryBits == 0 ? "321 100x5x2 =125 down 1 0,77 PNG by the kernel!!"
                                                 : "321 100x5x24 =1500 down 1 0,77 PNG by the kernel!!");
    EXPECT_EQ(rig.kernel.stream, PngBody(50));
    EXPECT_EQ(rig.info.Flags, 0U);
    EXPECT_EQ(rig.kernel.Log({Kind::kAlloc, Kind::kPngInfo, Kind::kFree}),
              "alloc #1 50, describe png 1668 50, free #1");
  }
}

TEST(Identify, PngSignatures) {
  EXPECT_EQ(TheFilter().isPng(Hex("89504e470d0a1a0a").data()), 1);
  EXPECT_EQ(TheFilter().isPng(Hex("89504e470d0a0d05").data()), 1);
  for (const char* other : {"89504e470d0a1a00", "89504e470d0a1a05", "89504e470d0a0d0a", "00504e470d0a1a0a"})
    EXPECT_EQ(TheFilter().isPng(Hex(other).data()), 0) << other;
}

}  // namespace
