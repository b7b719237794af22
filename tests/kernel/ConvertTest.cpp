// The save callbacks: nothing is lost where the colours fit, as little as can be where not, and palettes are
// what the documentation says.
#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <random>
#include <set>

#include "Leaks.h"
#include "base/CallRecord.h"
#include "base/GlobalMemory.h"
#include "bitmap/Bitmap.h"
#include "bitmap/Region.h"
#include "convert/Census.h"
#include "convert/Conversion.h"
#include "png/Png.h"

namespace {

using vxkrn::Color;
using vxkrn::OwnedBitmap;
using vxkrn::Rgba;

/// A depth, and at 16 bits its layout.
struct Depth {
  int bits;
  bool is565 = false;
};
constexpr Depth kDepths[] = {{1}, {4}, {8}, {16}, {16, true}, {24}, {32}};

class ConvertTest : public Leaks {};

/// Makes a picture of pseudo-random pixels; `colors` of them differ at most, each representable in 5-5-5.
void Make(OwnedBitmap* bitmap, Depth depth, int width, int height, int colors,
          int orientation = ORIENT_BOTTOM_UP) {
  Allocate(bitmap, width, height, depth.bits);
  bitmap->Orientation = orientation;
  bitmap->YResolution = 72;
  if (depth.is565) bitmap->ColorOrder = ORDER_565;
  std::minstd_rand random(static_cast<unsigned>(width + colors));
  std::vector<Rgba> table;
  for (int i = 0; i < colors; ++i) {
    const auto level = [&random](unsigned int limit) {
      return static_cast<uint8_t>((random() % limit * 255 * 2 + limit - 1) / (limit - 1) / 2);
    };
    table.push_back({level(32), i % 2 == 0 ? uint8_t{0} : uint8_t{255}, level(32), 255});
  }
  if (depth.bits <= 8) {
    RGBQUAD palette[256] = {};
    for (std::size_t i = 0; i < table.size(); ++i) palette[i] = vxkrn::QuadOf(vxkrn::ColorOf(table[i]));
    ASSERT_EQ(VX_SetBitmapNewPalette(bitmap, palette, 1 << depth.bits), STATUS_OK);
  }
  for (int row = 0; row < height; ++row) {
    std::vector<uint8_t> indices;
    std::vector<Rgba> pixels;
    for (int x = 0; x < width; ++x) {
      indices.push_back(static_cast<uint8_t>(random() % table.size()));
      pixels.push_back(table[indices.back()]);
    }
    unsigned char* stored = vxkrn::StoredRow(*bitmap, row);
    switch (depth.bits) {
      case 16: vxkrn::Pack16(pixels, depth.is565, stored); break;
      case 24: vxkrn::Pack24(pixels, stored); break;
      case 32: vxkrn::Pack32(pixels, true, stored); break;
      default: {
        vxkrn::PackIndices(indices, depth.bits, stored);
        const int last = width * depth.bits - 1;
        stored[last / 8] = static_cast<uint8_t>(stored[last / 8] | 0xFF >> (last % 8 + 1));  // no pixels
      }
    }
  }
}

std::vector<Color> ColorsIn(const _BITMAPHANDLE& bitmap) {
  vxkrn::ColorRows rows(bitmap);
  std::vector<Color> colors;
  for (int row = 0; row < bitmap.Height; ++row) {
    for (const Rgba pixel : rows.Read(row)) colors.push_back(vxkrn::ColorOf(pixel));
  }
  return colors;
}

/// A save in progress, with what its calls hand to each other.
struct Saving {
  _BITMAPHANDLE* converted = nullptr;
  unsigned char* buffer = nullptr;
  _SAVEFILESTRUCT* file = nullptr;
  unsigned int flags = 0;

  int Begin(_BITMAPHANDLE& bitmap, int bits, int rows = 1, int arg1 = 0, int arg2 = 0) {
    return vxkrn::BeginSave(&bitmap, &converted, bits, &flags, &buffer, rows, arg1, arg2, &file);
  }
  int Get(_BITMAPHANDLE& bitmap, int row, int rows = 1, int arg1 = 0, int arg2 = 0) {
    return vxkrn::GetSaveRow(&bitmap, converted, buffer, row, rows, flags, arg1, arg2, file);
  }
  int End(_BITMAPHANDLE& bitmap) { return vxkrn::EndSave(&bitmap, &converted, &flags, &buffer, &file); }
};

/// What comes out of a conversion: the colours of all stored rows, and the palette with all its entries.
struct Converted {
  std::vector<Color> colors;
  std::vector<Color> palette;
  int entries = 0;
};

Converted Convert(OwnedBitmap& bitmap, Depth depth, int arg1 = CONVERT_PALETTE_BEST,
                  int arg2 = CONVERT_NEAREST) {
  Converted result;
  Saving save;
  save.flags = depth.is565 ? SAVE_ORDER_565 : 0;
  EXPECT_EQ(save.Begin(bitmap, depth.bits, 1, arg1, arg2), STATUS_OK);
  if (save.converted == nullptr) return result;
  OwnedBitmap picture;
  Allocate(&picture, bitmap.Width, bitmap.Height, depth.bits);
  EXPECT_EQ(save.converted->BytesPerLine, picture.BytesPerLine);
  EXPECT_EQ(save.converted->ColorOrder == ORDER_565, depth.is565);
  EXPECT_EQ(save.converted->Orientation, bitmap.Orientation);
  EXPECT_EQ(save.converted->XResolution * 1000 + save.converted->YResolution, 96 * 1000 + bitmap.YResolution);
  picture.ColorOrder = save.converted->ColorOrder;
  result.entries = save.file->ColorCount;
  EXPECT_LE(result.entries, depth.bits <= 8 ? 1 << depth.bits : 0);
  if (depth.bits <= 8) {
    EXPECT_EQ(VX_SetBitmapNewPalette(&picture, save.file->Palette, 1 << depth.bits), STATUS_OK);
    for (int i = 0; i < 1 << depth.bits; ++i) result.palette.push_back(vxkrn::ColorOf(picture.Palette[i]));
  }
  const auto used = static_cast<int>(vxkrn::PixelBytes(bitmap.Width, depth.bits));
  for (int row = 0; row < bitmap.Height; ++row) {
    EXPECT_EQ(save.Get(bitmap, row, 1, arg1, arg2), STATUS_OK);
    std::copy_n(save.buffer, picture.BytesPerLine, vxkrn::StoredRow(picture, row));
    EXPECT_EQ(std::count(save.buffer + used, save.buffer + picture.BytesPerLine, 0),
              picture.BytesPerLine - used);
    const int spare = 8 * used - bitmap.Width * depth.bits;  // bits of the last byte
    EXPECT_TRUE(used == 0 || (save.buffer[used - 1] & ((1 << spare) - 1)) == 0);
    for (int i = 3; depth.bits == 32 && i < used; i += 4) EXPECT_EQ(save.buffer[i], 0) << "no alpha came in";
  }
  result.colors = ColorsIn(picture);
  EXPECT_EQ(save.End(bitmap), STATUS_OK);
  EXPECT_TRUE(save.converted == nullptr && save.buffer == nullptr && save.file == nullptr);
  return result;
}

int Distance(Color a, Color b) {
  int sum = 0;
  for (const int shift : {0, 8, 16}) {
    const int difference = static_cast<int>(a >> shift & 255) - static_cast<int>(b >> shift & 255);
    sum += difference * difference;
  }
  return sum;
}

TEST_F(ConvertTest, ColoursThatFitStayWhatTheyAre) {
  for (const Depth from : kDepths) {
    for (const Depth to : kDepths) {
      for (const int width : {1, 7, 8, 9, 33}) {
        for (const int orientation : {ORIENT_BOTTOM_UP, ORIENT_TOP_DOWN}) {
          OwnedBitmap bitmap;
          Make(&bitmap, from, width, 9, std::min(1 << std::min({from.bits, to.bits, 8}), 200), orientation);
          ASSERT_EQ(Convert(bitmap, to).colors, ColorsIn(bitmap))
              << from.bits << " to " << to.bits << ", width " << width;
        }
      }
    }
  }
}

/// A census as everybody would take one, but for the limit.
vxkrn::Census NaiveCensus(const _BITMAPHANDLE& bitmap) {
  vxkrn::Census census;
  std::set<Color> all;
  std::set<Color> opaque;
  vxkrn::ColorRows rows(bitmap);
  for (int row = 0; row < bitmap.Height; ++row) {
    for (const Rgba pixel : rows.Read(row)) {
      all.insert(vxkrn::ColorOf(pixel));
      if (pixel.alpha >= 128) opaque.insert(vxkrn::ColorOf(pixel));
      census.hasTransparent |= pixel.alpha < 128;
      if (pixel.alpha == 0) census.opacity = std::max(census.opacity, vxkrn::Opacity::kAllOrNothing);
      if (pixel.alpha % 255 != 0) census.opacity = vxkrn::Opacity::kSoft;
      uint8_t word[2];
      for (const bool is565 : {false, true}) {
        vxkrn::Pack16({&pixel, 1}, is565, word);
        const Rgba shown = vxkrn::ColorOfPixel16(word[0] + 256U * word[1], is565);
        (is565 ? census.fits565 : census.fits555) &= vxkrn::ColorOf(shown) == vxkrn::ColorOf(pixel);
      }
    }
  }
  census.all.assign(all.begin(), all.end());
  census.opaque.assign(opaque.begin(), opaque.end());
  return census;
}

void ExpectSame(const vxkrn::Census& found, const vxkrn::Census& expected) {
  const auto expectSame = [](const std::vector<Color>& colors, const std::vector<Color>& model) {
    EXPECT_TRUE(model.size() > 256 || colors == model);
    EXPECT_EQ(colors.size(), std::min<std::size_t>(model.size(), 257));
  };
  expectSame(found.all, expected.all);
  expectSame(found.opaque, expected.opaque);
  EXPECT_EQ(found.opacity, expected.opacity);
  EXPECT_EQ(found.hasTransparent, expected.hasTransparent);
}

TEST_F(ConvertTest, TheCensusIsWhatAllPixelsTell) {
  // Alphas by colour, so that one may be hidden everywhere, or of the last pixel, which then has a colour
  // that 16 bits have not; so has one in the middle where nothing is left to find out then but the last one's
  // alpha.
  struct {
    int few, many;
    bool isSpecial;
  } const alphas[] = {{255, 255, false}, {255, 0, false},  {255, 0, true},  {0, 255, true},
                      {254, 255, false}, {255, 127, true}, {128, 1, false}, {0, 0, false}};
  for (const Depth depth : kDepths) {
    for (const int colors : {1, 2, 150, 256, 257, 1500}) {
      for (const auto& [few, many, isSpecial] : alphas) {
        if (depth.bits <= 8 && colors > 1 << depth.bits) continue;
        SCOPED_TRACE(testing::Message() << depth.bits << " bits, " << colors << " colours, " << few << many);
        OwnedBitmap bitmap;
        Make(&bitmap, depth, 60, 40, colors);
        OwnedBitmap mask;
        Make(&mask, {1}, 60, 40, many == 0 ? 2 : 1);
        const bool hasRegion = few != many;
        ASSERT_TRUE(!hasRegion || VX_SetBitmapRgnFromMask(&bitmap, 0, &mask, 6) == STATUS_OK);
        unsigned char* last = vxkrn::StoredRow(bitmap, 39) + 59 * bitmap.BitsPerPixel / 8;
        for (int i = 0; depth.bits >= 24 && i < 60 * 40; ++i) {
          unsigned char* pixel = vxkrn::StoredRow(bitmap, i / 60) + i % 60 * depth.bits / 8;
          if (colors == 1500) {
            const unsigned int word = static_cast<unsigned int>(i) * 13;
            const Rgba color = vxkrn::ColorOfPixel16(word, false);
            std::copy_n(std::begin({color.blue, color.green, color.red}), 3, pixel);
          }
          const bool isOdd = pixel == last || (i == 1200 && many == 255);
          if (isSpecial && isOdd) std::fill_n(pixel, 3, uint8_t{9});
          const bool isOfFew = isSpecial ? pixel == last : pixel[0] < 20;
          if (depth.bits == 32) pixel[3] = static_cast<unsigned char>(isOfFew ? few : many);
        }
        if (depth.bits == 32) bitmap.Flags |= vxkrn::kBitmapHasAlpha;
        const vxkrn::Census expected = NaiveCensus(bitmap);
        vxkrn::LazyCensus census(bitmap);
        ExpectSame(census.Get(), expected);
        EXPECT_EQ(census.Get().fits555, expected.fits555);
        EXPECT_EQ(census.Get().fits565, expected.fits565);
        EXPECT_EQ(census.HowOpaque(), expected.opacity);
        EXPECT_EQ(census.HasTransparent(), expected.hasTransparent);
        if (depth.bits != 32) continue;
        census.Harden();
        ASSERT_EQ(vxkrn::SetRegionFromAlpha(&bitmap), STATUS_OK);
        ExpectSame(census.Get(), NaiveCensus(bitmap));
      }
    }
  }
  OwnedBitmap one;
  Make(&one, {24}, 9, 9, 3);
  OwnedBitmap other;
  Make(&other, {24}, 9, 9, 4);
  vxkrn::LazyCensus census(one);
  vxkrn::FilterCall context;
  context.census = &census;
  const vxkrn::FilterCallScope scope(&context);
  EXPECT_EQ(Convert(one, {8}).entries, 3);
  EXPECT_EQ(Convert(other, {8}).entries, 4) << "which is not the picture of the call";
}

TEST_F(ConvertTest, ColoursThatDoNotFitBecomeTheNearest) {
  OwnedBitmap bitmap;
  Make(&bitmap, {24}, 60, 40, 1500);
  const std::vector<Color> before = ColorsIn(bitmap);
  int64_t lossOfBest[9] = {};
  for (const int arg1 : {CONVERT_PALETTE_BEST, CONVERT_PALETTE_FIXED}) {
    for (const int bits : {1, 4, 8}) {
      const Converted after = Convert(bitmap, {bits}, arg1, CONVERT_NEAREST);
      int64_t loss = 0;
      for (std::size_t i = 0; i < before.size(); ++i) {
        int least = INT_MAX;
        for (int entry = 0; entry < after.entries; ++entry) {
          least = std::min(least, Distance(before[i], after.palette[static_cast<std::size_t>(entry)]));
        }
        ASSERT_EQ(Distance(before[i], after.colors[i]), least) << bits << " bits, pixel " << i;
        loss += least;
      }
      if (arg1 == CONVERT_PALETTE_BEST) lossOfBest[bits] = loss;
      EXPECT_TRUE(arg1 == CONVERT_PALETTE_BEST || lossOfBest[bits] < loss) << bits << " bits";
    }
  }
  for (const bool is565 : {false, true}) {
    const std::vector<Color> after = Convert(bitmap, {16, is565}).colors;
    for (std::size_t i = 0; i < before.size(); ++i) {
      for (const int shift : {0, 8, 16}) {
        const int most = is565 && shift == 8 ? 2 : 4;
        ASSERT_LE(
            std::abs(static_cast<int>(before[i] >> shift & 255) - static_cast<int>(after[i] >> shift & 255)),
            most);
      }
    }
  }
}

TEST_F(ConvertTest, ChosenColoursAreTheMeansOfWhatTheyStandFor) {
  OwnedBitmap greys;
  Allocate(&greys, 16, 1, 24);
  for (int x = 0; x < 16; ++x) {
    std::fill_n(greys.Pixels + 3 * x, 3, static_cast<unsigned char>(x < 8 ? x : 240 + x));
  }
  EXPECT_EQ(Convert(greys, {1}).palette, (std::vector<Color>{0x040404, 0xFCFCFC}));
}

/// Floyd and Steinberg's diffusion to black and white, rows alternately from the left and from the right.
std::vector<int> Diffused(const std::vector<std::vector<int>>& rows) {
  const auto width = static_cast<std::ptrdiff_t>(rows[0].size());
  std::vector<int> shown;
  std::vector<int> owed(rows[0].size() + 2);
  for (std::size_t row = 0; row < rows.size(); ++row) {
    std::vector<int> next(owed.size());
    std::vector<int> line(rows[0].size());
    const std::ptrdiff_t step = row % 2 == 0 ? 1 : -1;
    for (std::ptrdiff_t n = 0, x = row % 2 == 0 ? 0 : width - 1; n < width; ++n, x += step) {
      const auto at = [x](std::vector<int>& sums, std::ptrdiff_t by) -> int& {
        return sums[static_cast<std::size_t>(x + by) + 1];
      };
      const int sixteenths = at(owed, 0) + 8;
      const int debt = sixteenths >= 0 ? sixteenths / 16 : -((15 - sixteenths) / 16);
      const int level = std::clamp(rows[row][static_cast<std::size_t>(x)] + debt, 0, 255);
      line[static_cast<std::size_t>(x)] = level < 128 ? 0 : 255;
      const int lost = level - line[static_cast<std::size_t>(x)];
      at(owed, step) += 7 * lost;
      at(next, -step) += 3 * lost;
      at(next, 0) += 5 * lost;
      at(next, step) += lost;
    }
    shown.insert(shown.end(), line.begin(), line.end());
    owed = next;
  }
  return shown;
}

TEST_F(ConvertTest, DiffusionIsThatOfThePapers) {
  OwnedBitmap grey;
  Allocate(&grey, 31, 17, 24);
  std::vector<std::vector<int>> rows(17, std::vector<int>(31));
  std::minstd_rand random(11);
  for (int row = 0; row < 17; ++row) {
    for (int x = 0; x < 31; ++x) {
      const auto level = static_cast<unsigned char>(random() % 256);
      std::fill_n(vxkrn::StoredRow(grey, row) + 3 * x, 3, level);
      rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(x)] = level;
    }
  }
  const std::vector<Color> after = Convert(grey, {1}, CONVERT_PALETTE_FIXED, CONVERT_DIFFUSE).colors;
  std::vector<int> levels;
  levels.reserve(after.size());
  for (const Color color : after) levels.push_back(static_cast<int>(color & 255));
  EXPECT_EQ(levels, Diffused(rows));
}

TEST_F(ConvertTest, PalettesAreOwnThenExactThenChosen) {
  OwnedBitmap indexed;
  Make(&indexed, {4}, 20, 20, 5);
  const Converted own = Convert(indexed, {8});
  for (std::size_t i = 0; i < 16; ++i)
    EXPECT_EQ(own.palette[i], vxkrn::ColorOf(indexed.Palette[i])) << "in its order";
  EXPECT_TRUE(
      std::all_of(own.palette.begin() + 16, own.palette.end(), [](Color color) { return color == 0; }));
  EXPECT_NE(Convert(indexed, {8}, CONVERT_PALETTE_FIXED).palette, own.palette);

  OwnedBitmap high;  // with an index that 4 bits do not have
  Make(&high, {8}, 20, 20, 5);
  high.Palette[20] = {1, 2, 3, 0};
  high.Pixels[0] = 20;
  EXPECT_EQ(Convert(high, {4}).colors, ColorsIn(high));

  OwnedBitmap few;
  Make(&few, {24}, 20, 20, 5);
  const Converted exact = Convert(few, {8});
  EXPECT_EQ(exact.entries, 5);
  EXPECT_TRUE(std::is_sorted(exact.palette.begin(), exact.palette.begin() + 5));
  EXPECT_EQ(exact.palette[5], 0U);
}

TEST_F(ConvertTest, RefusesWhatItCannotConvert) {
  OwnedBitmap bitmap;
  OwnedBitmap other;
  OwnedBitmap empty;
  Make(&bitmap, {8}, 4, 4, 4);
  Make(&other, {8}, 4, 4, 4);
  Saving save;
  EXPECT_EQ(save.Begin(empty, 8), STATUS_BAD_PARAMETER);
  EXPECT_EQ(save.Begin(bitmap, 2), STATUS_BAD_BPP);
  EXPECT_EQ(vxkrn::EndSave(&bitmap, nullptr, nullptr, nullptr, nullptr), STATUS_OK);
  EXPECT_EQ(save.End(bitmap), STATUS_OK);
  ASSERT_EQ(save.Begin(bitmap, 8), STATUS_OK);
  for (const int row : {-1, 4}) EXPECT_EQ(save.Get(bitmap, row), STATUS_BAD_PARAMETER);
  EXPECT_EQ(save.Get(bitmap, 0, 2), STATUS_BAD_PARAMETER);
  EXPECT_EQ(save.Get(other, 0), STATUS_BAD_PARAMETER);
  EXPECT_EQ(save.End(bitmap), STATUS_OK);
}

TEST_F(ConvertTest, HandsOutSeveralRowsAtOnce) {
  OwnedBitmap bitmap;
  Make(&bitmap, {24}, 5, 6, 200);
  Saving save;
  ASSERT_EQ(save.Begin(bitmap, 24, 4), STATUS_OK);
  ASSERT_EQ(save.Get(bitmap, 2, 4), STATUS_OK);
  EXPECT_TRUE(std::equal(save.buffer, save.buffer + 4 * bitmap.BytesPerLine, vxkrn::StoredRow(bitmap, 2)));
  EXPECT_EQ(save.Get(bitmap, 3, 4), STATUS_BAD_PARAMETER);
  EXPECT_EQ(save.Get(bitmap, 0, 5), STATUS_BAD_PARAMETER);
  EXPECT_EQ(save.End(bitmap), STATUS_OK);
}

TEST_F(ConvertTest, PngStreamsInGlobalMemoryKeepWhatTheirDepthCan) {
  OwnedBitmap bitmap;
  Make(&bitmap, {32}, 9, 5, 12);
  bitmap.Flags |= vxkrn::kBitmapHasAlpha;
  for (int x = 0; x < 9; ++x) bitmap.Pixels[4 * x + 3] = static_cast<unsigned char>(30 * x);
  std::fill_n(bitmap.Pixels, 4 * 4, uint8_t{77});  // hidden pixels of a colour of their own
  vxkrn::ColorRows source(bitmap);
  int count = 0;
  int sums[3] = {};
  for (int row = 0; row < 5; ++row) {
    for (const Rgba pixel : source.Read(row)) {
      if (pixel.alpha < 128) continue;
      ++count;
      sums[0] += pixel.red, sums[1] += pixel.green, sums[2] += pixel.blue;
    }
  }
  const auto mean = [&](int channel) { return static_cast<unsigned>((sums[channel] + count / 2) / count); };
  for (const int bits : {1, 4, 8, 24, 32}) {
    void* handle = nullptr;
    unsigned int size = 0;
    ASSERT_EQ(vxkrn::SaveToMemory(&handle, &bitmap, FMT_PNG, bits, 0, &size, 0), STATUS_OK);
    const auto* stream = static_cast<const unsigned char*>(WinGlobalLock(handle));
    OwnedBitmap decoded;
    vxkrn::PngDescription description = {};
    ASSERT_EQ(vxkrn::DecodePng(stream, size, 0, &decoded, &description), STATUS_OK);
    EXPECT_EQ(WinGlobalUnlock(handle), STATUS_OK);
    EXPECT_EQ(VX_OsFreeHandle(handle, 0, ""), STATUS_OK);
    EXPECT_EQ(VX_OsFreeHandle(handle, 0, ""), STATUS_BAD_PARAMETER);
    ASSERT_TRUE(description.hasAlpha);
    decoded.Flags |= vxkrn::kBitmapHasAlpha;
    vxkrn::ColorRows result(decoded);
    for (int row = 0; row < 5; ++row) {
      const std::span<const Rgba> before = source.Read(4 - row);  // the decoded one is top-down
      const std::span<const Rgba> after = result.Read(row);
      for (std::size_t x = 0; x < before.size(); ++x) {
        const int alpha = bits == 32 ? before[x].alpha : before[x].alpha >= 128 ? 255 : 0;
        ASSERT_EQ(after[x].alpha, alpha) << bits << " bits, row " << row << ", pixel " << x;
        if (bits >= 4 && alpha != 0) {
          ASSERT_EQ(vxkrn::ColorOf(after[x]), vxkrn::ColorOf(before[x])) << bits << " bits";
        } else if (alpha != 0) {  // the one entry beside the transparent one
          ASSERT_EQ(vxkrn::ColorOf(after[x]), mean(0) << 16 | mean(1) << 8 | mean(2));
        }
      }
    }
  }
  void* handle = nullptr;
  unsigned int size = 0;
  EXPECT_EQ(vxkrn::SaveToMemory(&handle, &bitmap, FMT_BMP, 24, 0, &size, 0), STATUS_NOT_SUPPORTED);
  EXPECT_EQ(vxkrn::SaveToMemory(&handle, &bitmap, FMT_PNG, 16, 0, &size, 0), STATUS_BAD_BPP);
  vxkrn::memory::SetLimit(vxkrn::memory::InUse() + 100);
  EXPECT_EQ(vxkrn::SaveToMemory(&handle, &bitmap, FMT_PNG, 8, 0, &size, 0), STATUS_NO_MEMORY);
}

}  // namespace
