// Bitmap records, palettes and regions: bounds above all, since the numbers come out of files.
#include "bitmap/Bitmap.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <set>
#include <vector>

#include "Leaks.h"
#include "base/CallRecord.h"
#include "bitmap/ReadRgba.h"
#include "bitmap/Region.h"

namespace {

using vxkrn::OwnedBitmap;

class Bitmaps : public Leaks {};

TEST_F(Bitmaps, HaveSizesThatCanBeCounted) {
  OwnedBitmap bitmap;
  const auto init = [&](int width, int height, int depth) {
    return VX_InitBitmap(&bitmap, sizeof(_BITMAPHANDLE), width, height, depth);
  };
  EXPECT_EQ(VX_InitBitmap(nullptr, 216, 1, 1, 1), STATUS_BAD_PARAMETER);
  EXPECT_EQ(VX_InitBitmap(&bitmap, 212, 1, 1, 1), STATUS_BAD_PARAMETER);
  EXPECT_EQ(init(1, 1, 2), STATUS_BAD_BPP);
  EXPECT_EQ(init(0, 1, 8), STATUS_BAD_DIMENSIONS);
  EXPECT_EQ(init(1, INT_MIN, 8), STATUS_BAD_DIMENSIONS);
  EXPECT_EQ(init(INT_MAX / 4 + 1, 1, 32), STATUS_BAD_DIMENSIONS) << "a row is over an int";
  EXPECT_EQ(init(INT_MAX, INT_MAX, 1), STATUS_OK);
  EXPECT_EQ(VX_AllocateBitmap(&bitmap, 1), STATUS_NO_MEMORY);
  EXPECT_EQ(bitmap.Flags & BITMAP_ALLOCATED, 0U);
  EXPECT_EQ(init(65536, 65536, 32), STATUS_OK);
  EXPECT_EQ(VX_AllocateBitmap(&bitmap, 1), STATUS_NO_MEMORY) << "16 GiB, which is 0 in 32 bits";
  EXPECT_EQ(init(1, 1, 8), STATUS_OK);
  EXPECT_EQ(bitmap.ColorOrder, ORDER_RGB);
  EXPECT_EQ(init(1, 1, 16), STATUS_OK);
  EXPECT_EQ(bitmap.ColorOrder, ORDER_BGR);
}

TEST_F(Bitmaps, KeepRowsInBounds) {
  OwnedBitmap bitmap;
  unsigned char buffer[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  ASSERT_EQ(VX_InitBitmap(&bitmap, sizeof(_BITMAPHANDLE), 5, 3, 8), STATUS_OK);
  EXPECT_EQ(VX_PutBitmapRow(&bitmap, buffer, 0, 8), STATUS_BAD_PARAMETER) << "no pixels yet";
  EXPECT_EQ(VX_IntAccessBitmap(&bitmap, 0), STATUS_BAD_PARAMETER);
  ASSERT_EQ(VX_AllocateBitmap(&bitmap, 1), STATUS_OK);
  EXPECT_EQ(VX_AllocateBitmap(&bitmap, 1), STATUS_BAD_PARAMETER) << "would lose the pixels it has";
  EXPECT_EQ(VX_PutBitmapRow(&bitmap, buffer, 2, 8), 8);
  for (const int row : {-1, 3, INT_MIN})
    EXPECT_EQ(VX_PutBitmapRow(&bitmap, buffer, row, 8), STATUS_BAD_PARAMETER);
  EXPECT_EQ(VX_GetBitmapRow(&bitmap, buffer, 0, 9), STATUS_BAD_PARAMETER);
  EXPECT_EQ(VX_GetBitmapRow(&bitmap, buffer, 1, 4), 4);
  EXPECT_EQ(buffer[0], 0);
  EXPECT_EQ(buffer[4], 5) << "only what was asked for";
  EXPECT_EQ(VX_GetBitmapRow(&bitmap, buffer, 2, 8), 8);
  EXPECT_EQ(buffer[0], 1);
}

TEST_F(Bitmaps, PassTheStatusOnWhenReleased) {
  OwnedBitmap bitmap;
  Allocate(&bitmap, 5, 3, 1);
  for (int i = 0; i < 3; ++i) ASSERT_EQ(VX_IntAccessBitmap(&bitmap, 0), STATUS_OK);
  EXPECT_EQ(VX_IntReleaseBitmap(&bitmap, 1, STATUS_READ_ERROR), STATUS_READ_ERROR);
  vxkrn::FilterCall context;
  context.toleratesMissingMask = true;
  {
    const vxkrn::FilterCallScope scope(&context);
    vxkrn::FilterCall inner;
    { const vxkrn::FilterCallScope innerScope(&inner); }
    EXPECT_EQ(VX_IntReleaseBitmap(&bitmap, 1, STATUS_READ_ERROR), STATUS_OK);
  }
  EXPECT_EQ(VX_IntReleaseBitmap(&bitmap, 1, STATUS_OK), STATUS_OK);
  EXPECT_EQ(VX_IntReleaseBitmap(&bitmap, 1, STATUS_OK), STATUS_BAD_PARAMETER) << "none open";
}

TEST_F(Bitmaps, OwnACopyOfTheirPalette) {
  OwnedBitmap bitmap;
  ASSERT_EQ(VX_InitBitmap(&bitmap, sizeof(_BITMAPHANDLE), 5, 3, 8), STATUS_OK);
  const RGBQUAD colors[3] = {{1, 2, 3, 0}, {4, 5, 6, 0}, {7, 8, 9, 0}};
  EXPECT_EQ(VX_SetBitmapNewPalette(&bitmap, colors, 257), STATUS_BAD_PARAMETER);
  EXPECT_EQ(VX_SetBitmapNewPalette(&bitmap, nullptr, 1), STATUS_BAD_PARAMETER);
  ASSERT_EQ(VX_SetBitmapNewPalette(&bitmap, colors, 3), STATUS_OK);
  ASSERT_EQ(VX_SetBitmapNewPalette(&bitmap, bitmap.Palette + 1, 2), STATUS_OK) << "from its own";
  EXPECT_EQ(bitmap.ColorCount, 2);
  EXPECT_EQ(bitmap.Palette[1].Red, 9);
  ASSERT_EQ(VX_SetBitmapNewPalette(&bitmap, colors, 0), STATUS_OK);
  EXPECT_EQ(bitmap.Palette, nullptr);
}

TEST_F(Bitmaps, FixedPalettesHaveNoColourTwice) {
  for (const int depth : {1, 4, 8}) {
    RGBQUAD palette[256] = {};
    VX_GetFixedPalette(palette, depth);
    std::set<int> colors;
    for (int i = 0; i < 1 << depth; ++i) {
      colors.insert(palette[i].Red << 16 | palette[i].Green << 8 | palette[i].Blue);
      EXPECT_EQ(palette[i].Reserved, 0);
    }
    EXPECT_EQ(colors.size(), std::size_t{1} << depth);
    EXPECT_TRUE(colors.count(0) == 1 && colors.count(0xFFFFFF) == 1);
  }
}

/// A 1-bit mask of pseudo-random bits, padding too.
void MakeMask(OwnedBitmap* mask, int width, int height) {
  Allocate(mask, width, height, 1);
  unsigned int state = 12345;
  for (int i = 0; i < height * mask->BytesPerLine; ++i) {
    state = state * 1103515245 + 12345;
    mask->Pixels[i] = static_cast<unsigned char>(state >> 16);
  }
}

bool BitAt(const unsigned char* row, int x) {
  return (row[x / 8] >> (7 - x % 8) & 1) != 0;
}

TEST_F(Bitmaps, RegionsComeBackAsTheMasksTheyCameFrom) {
  for (const int width : {1, 7, 8, 31, 33, 64}) {
    OwnedBitmap mask;
    OwnedBitmap bitmap;
    OwnedBitmap back;
    MakeMask(&mask, width, 5);
    ASSERT_EQ(VX_InitBitmap(&bitmap, sizeof(_BITMAPHANDLE), width, 5, 24), STATUS_OK);
    bitmap.Orientation = ORIENT_TOP_DOWN;
    EXPECT_FALSE(vxkrn::HasOutside(bitmap));
    ASSERT_EQ(VX_SetBitmapRgnFromMask(&bitmap, 0, &mask, 6), STATUS_OK);
    ASSERT_EQ(VX_SetBitmapRgnFromMask(&bitmap, 0, &mask, 6), STATUS_OK) << "in place of the first";
    EXPECT_TRUE(vxkrn::HasOutside(bitmap));
    ASSERT_EQ(VX_CreateMaskFromBitmapRgn(&bitmap, &back, sizeof(_BITMAPHANDLE)), STATUS_OK);
    EXPECT_EQ(back.Orientation, ORIENT_TOP_DOWN);
    for (int row = 0; row < 5; ++row) {
      const unsigned char* inside = vxkrn::StoredRow(back, row);
      for (int x = 0; x < width; ++x) ASSERT_NE(BitAt(inside, x), BitAt(vxkrn::StoredRow(mask, row), x));
      for (int x = width; x < 8 * back.BytesPerLine; ++x) ASSERT_FALSE(BitAt(inside, x)) << "padding";
      for (int x = width; x < 8 * bitmap.RegionBytesPerLine; ++x) {
        ASSERT_FALSE(BitAt(vxkrn::StoredRegionRow(bitmap, row), x)) << "padding";
      }
    }
    VX_FreeBitmap(&back);  // and once more when it goes
  }
}

TEST_F(Bitmaps, WithoutARegionAreAllInside) {
  OwnedBitmap bitmap;
  OwnedBitmap mask;
  ASSERT_EQ(VX_InitBitmap(&bitmap, sizeof(_BITMAPHANDLE), 13, 2, 24), STATUS_OK);
  ASSERT_EQ(VX_CreateMaskFromBitmapRgn(&bitmap, &mask, sizeof(_BITMAPHANDLE)), STATUS_OK);
  const unsigned char expected[] = {0xFF, 0xF8, 0, 0, 0xFF, 0xF8, 0, 0};
  EXPECT_EQ(std::memcmp(mask.Pixels, expected, sizeof expected), 0);
  _BITMAPHANDLE garbage;  // a record nobody made valid
  std::memset(&garbage, 0xA5, sizeof garbage);
  EXPECT_EQ(VX_CreateMaskFromBitmapRgn(&bitmap, &garbage, 100), STATUS_BAD_PARAMETER);
  for (const unsigned int more : {4U, 8U}) {  // for less than the pixels, and for no palette
    vxkrn::memory::SetLimit(vxkrn::memory::InUse() + more);
    EXPECT_EQ(VX_CreateMaskFromBitmapRgn(&bitmap, &garbage, sizeof garbage), STATUS_NO_MEMORY);
    EXPECT_TRUE(garbage.Pixels == nullptr && garbage.Palette == nullptr);
  }
  VX_FreeBitmap(&garbage);
}

TEST_F(Bitmaps, RefuseMasksOfAnotherShape) {
  OwnedBitmap bitmap;
  OwnedBitmap mask;
  ASSERT_EQ(VX_InitBitmap(&bitmap, sizeof(_BITMAPHANDLE), 13, 2, 24), STATUS_OK);
  EXPECT_EQ(VX_SetBitmapRgnFromMask(&bitmap, 0, nullptr, 6), STATUS_BAD_PARAMETER);
  EXPECT_EQ(VX_SetBitmapRgnFromMask(&bitmap, 0, &bitmap, 6), STATUS_BAD_PARAMETER);
  for (const auto& [width, height] : {std::pair(13, 3), {13, 1}, {12, 2}}) {
    OwnedBitmap other;
    MakeMask(&other, width, height);
    EXPECT_EQ(VX_SetBitmapRgnFromMask(&bitmap, 0, &other, 6), STATUS_BAD_PARAMETER);
  }
  MakeMask(&mask, 13, 2);
  EXPECT_EQ(VX_SetBitmapRgnFromMask(&bitmap, 1, &mask, 6), STATUS_BAD_PARAMETER);
  EXPECT_EQ(VX_SetBitmapRgnFromMask(&bitmap, 0, &mask, 5), STATUS_BAD_PARAMETER) << "no way to combine";
  EXPECT_EQ(bitmap.Region, nullptr);
}

// The blocks are as long as the pixels, so that whoever reads or writes a byte more is caught by a sanitizer.
TEST_F(Bitmaps, PixelsOf24BitsAreTheSameInVectorsAndInWords) {
  for (std::size_t width = 0; width <= 200; ++width) {
    for (std::size_t offset = 0; offset < 16; ++offset) {
      std::vector<uint8_t> row(offset + 3 * width);
      std::vector<uint8_t> expected(4 * width);
      for (std::size_t i = 0; i < row.size(); ++i) row[i] = static_cast<uint8_t>(i * 37 + width);
      for (std::size_t i = 0; i < expected.size(); ++i) {
        expected[i] = i % 4 == 3 ? 255 : row[offset + i / 4 * 3 + 2 - i % 4];
      }
      for (const auto expand : {vxkrn::Expand24, vxkrn::Expand24InWords}) {
        std::vector<uint8_t> rgba((offset * 7) % 16 + 4 * width);
        uint8_t* const to = rgba.data() + (offset * 7) % 16;
        expand(row.data() + offset, static_cast<int>(width), to);
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), to)) << width << " at " << offset;
      }
    }
  }
}

}  // namespace
