// What is saved is found again: every format at every depth, and what becomes of transparency.
#include <gtest/gtest.h>

#include "Sources.h"

namespace saving {
namespace {

constexpr vx_format kFormats[] = {VX_FORMAT_BMP,     VX_FORMAT_OS2, VX_FORMAT_OS2_2,     VX_FORMAT_PNG,
                                  VX_FORMAT_BMP_RLE, VX_FORMAT_ICO, VX_FORMAT_VISTA_ICO, VX_FORMAT_CUR};
constexpr int kDepths[] = {1, 4, 8, 16, 24, 32};

class RoundTrip : public testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(vx_memory_in_use(), 0U); }
};

bool Has(vx_format format, int depth) {
  vx_format_limits limits;
  EXPECT_EQ(vx_format_describe(format, &limits), VX_OK);
  return (limits.depths >> (depth - 1) & 1U) != 0;
}

/// Saves the picture and loads it again. Expects to find what the plan says, and the colours unchanged.
void ExpectSame(const vx::Bitmap& picture, const vx_save_options& options, const std::string& what) {
  const vx_save_plan plan = picture.Plan(options);
  ASSERT_EQ(plan.colors_lost, 0) << what;
  const vx::Buffer file = picture.Save(options);
  const vx::Source source = vx::Source::Memory(file.Bytes());
  const vx_info info = source.Describe();
  ASSERT_EQ(info.format, plan.format) << what;
  ASSERT_EQ(info.bits_per_pixel, plan.bits_per_pixel) << what;
  ASSERT_EQ(source.Load().Rgba(), picture.Rgba()) << what;
}

TEST_F(RoundTrip, EveryFormatAtEveryDepthKeepsEveryPixel) {
  for (const int depth : kDepths) {
    for (const vx_format format : kFormats) {
      if (!Has(format, depth)) continue;
      for (const int orientation : {VX_BOTTOM_UP, VX_TOP_DOWN}) {
        for (int width = 1; width <= 40; ++width) {
          const std::string what = "format " + std::to_string(format) + ", depth " + std::to_string(depth) +
                                   ", orientation " + std::to_string(orientation) + ", width " +
                                   std::to_string(width);
          ASSERT_NO_FATAL_FAILURE(
              ExpectSame(Noise(width, 5, depth, orientation), vx::SaveOptions(format, depth), what));
        }
      }
    }
  }
}

TEST_F(RoundTrip, SixteenBitsKeepTheirLayout) {
  for (const bool is565 : {false, true}) {
    const vx::Bitmap picture = Noise(13, 4, 16, VX_BOTTOM_UP, is565);
    ExpectSame(picture, vx::SaveOptions(VX_FORMAT_BMP), "own layout");
    for (const vx_format format : kFormats) ExpectSame(picture, vx::SaveOptions(format), "own depth or more");
  }
  const vx::Bitmap from565 = Noise(13, 4, 16, VX_BOTTOM_UP, true);
  for (const vx_format format : {VX_FORMAT_BMP, VX_FORMAT_OS2, VX_FORMAT_OS2_2}) {
    const vx::SaveOptions options(format, 16);
    EXPECT_EQ(from565.Plan(options).colors_lost, 1);
    const vx::Bitmap narrowed = LoadFrom(from565.Save(options).Bytes());
    EXPECT_EQ(narrowed.Describe().color_order, VX_ORDER_BGR);
    const std::vector<uint8_t> before = from565.Rgba();
    const std::vector<uint8_t> after = narrowed.Rgba();
    for (size_t i = 0; i < before.size(); ++i) ASSERT_LE(std::abs(before[i] - after[i]), 4) << i;
  }
  vx::SaveOptions wide(VX_FORMAT_BMP);
  wide.use_565 = 1;
  const vx::Bitmap widened = LoadFrom(Noise(13, 4, 24).Save(wide).Bytes());
  EXPECT_EQ(widened.Describe().color_order, VX_ORDER_565);
}

TEST_F(RoundTrip, PngPagesAreConvertedAsPngFilesAre) {
  const vx::Bitmap picture = Noise(20, 20, 24);
  for (const int palette : {VX_PALETTE_BEST, VX_PALETTE_FIXED}) {
    for (const int dither : {VX_DITHER_NONE, VX_DITHER_DIFFUSE}) {
      vx::SaveOptions file(VX_FORMAT_PNG, 4);
      file.palette = palette;
      file.dither = dither;
      vx::SaveOptions page = file;
      page.format = VX_FORMAT_VISTA_ICO;
      EXPECT_EQ(LoadFrom(picture.Save(page).Bytes()).Rgba(), LoadFrom(picture.Save(file).Bytes()).Rgba());
    }
  }
}

TEST_F(RoundTrip, BandsOfPngFilesAreTheirRows) {
  const vx::Bitmap soft = WithAlpha(9, 10, [](int x, int y) -> Pixel {
    return {1, 2, 3, static_cast<uint8_t>(9 * x + y)};
  });
  const vx::Bitmap indexed = Noise(9, 10, 8);
  for (const vx::Bitmap* picture : {&indexed, &soft}) {
    const vx::Buffer png = picture->Save(vx::SaveOptions(VX_FORMAT_PNG));
    const vx::Source source = vx::Source::Memory(png.Bytes());
    vx::LoadOptions options;
    options.band_first = 3;
    options.band_count = 4;
    const std::vector<uint8_t> band = source.Load(options).Rgba();
    const std::vector<uint8_t> whole = picture->Rgba();
    EXPECT_TRUE(std::equal(band.begin(), band.end(), whole.begin() + 3 * 9 * 4));
    options.page = 2;
    EXPECT_THROW(static_cast<void>(source.Load(options)), vx::Error);
  }
}

/// Alpha rises from left to right; hidden pixels have colours of their own.
Pixel Ramp(int x, int y) {
  return {static_cast<uint8_t>(y * 40), static_cast<uint8_t>(255 - y), 9, static_cast<uint8_t>(x * 16)};
}

TEST_F(RoundTrip, TransparencyIsKeptWholeOrHardened) {
  const vx::Bitmap soft = WithAlpha(16, 6, Ramp);
  const std::vector<uint8_t> before = soft.Rgba();
  for (const vx_format format :
       {VX_FORMAT_PNG, VX_FORMAT_VISTA_ICO, VX_FORMAT_BMP, VX_FORMAT_ICO, VX_FORMAT_CUR}) {
    EXPECT_EQ(LoadFrom(soft.Save(vx::SaveOptions(format)).Bytes()).Rgba(), before) << format;
    vx::SaveOptions dropped(format);
    dropped.drop_alpha = 1;
    EXPECT_EQ(soft.Plan(dropped).transparency, VX_TRANSPARENCY_LOST);
    std::vector<uint8_t> opaque = before;
    for (size_t i = 3; i < opaque.size(); i += 4) opaque[i] = 255;
    EXPECT_EQ(LoadFrom(soft.Save(dropped).Bytes()).Rgba(), opaque) << format;
  }
  for (const vx_format format : {VX_FORMAT_ICO, VX_FORMAT_CUR, VX_FORMAT_PNG, VX_FORMAT_VISTA_ICO}) {
    for (const int depth : {4, 8, 24}) {
      const vx::SaveOptions options(format, depth);
      EXPECT_EQ(soft.Plan(options).transparency, VX_TRANSPARENCY_HARDENED);
      const std::vector<uint8_t> after = LoadFrom(soft.Save(options).Bytes()).Rgba();
      for (size_t i = 0; i < before.size(); i += 4) {
        const bool isOpaque = before[i + 3] >= 128;
        ASSERT_EQ(after[i + 3], isOpaque ? 255 : 0) << format << ", " << depth << ", byte " << i;
        if (isOpaque) {
          ASSERT_TRUE(std::equal(&before[i], &before[i] + 3, &after[i])) << format << ", " << depth;
        }
        // A colour under a transparent mask bit would show as its inverse.
        if (!isOpaque && format == VX_FORMAT_ICO) {
          ASSERT_EQ(after[i] | after[i + 1] | after[i + 2], 0);
        }
      }
    }
  }
  EXPECT_EQ(soft.Rgba(), before) << "the picture itself stays as it is";
}

TEST_F(RoundTrip, SixteenBitsHaveAlphaWhereAskedFor) {
  const vx::Bitmap soft = WithAlpha(16, 6, Ramp);  // every alpha is a multiple of 16, hardly any of 17
  vx::SaveOptions options(VX_FORMAT_BMP);
  const std::vector<uint8_t> before = soft.Rgba();
  const auto saved = [&](int masks) {
    options.masks = masks;
    return LoadFrom(soft.Save(options).Bytes()).Rgba();
  };
  const std::vector<uint8_t> fours = saved(VX_MASKS_4444);
  const std::vector<uint8_t> fives = saved(VX_MASKS_1555);
  for (size_t i = 0; i < before.size(); ++i) {
    ASSERT_EQ(fours[i], (before[i] + 8) / 17 * 17) << i;
    const bool isAlpha = i % 4 == 3;
    ASSERT_LE(std::abs(fives[i] - (isAlpha ? before[i] / 128 * 255 : before[i])), isAlpha ? 0 : 4) << i;
  }
  EXPECT_EQ(soft.Plan(options).transparency, VX_TRANSPARENCY_HARDENED);
  options.masks = VX_MASKS_4444;
  EXPECT_EQ(soft.Plan(options).transparency, VX_TRANSPARENCY_KEPT);
  EXPECT_EQ(soft.Plan(options).colors_lost, 1);
  const vx::Bitmap fitting = LoadFrom(soft.Save(options).Bytes());
  EXPECT_EQ(fitting.Plan(options).colors_lost, 0);
  EXPECT_EQ(LoadFrom(fitting.Save(options).Bytes()).Rgba(), fours);
}

/// Bytes from hexadecimal digits; what stands between them does not count.
std::vector<uint8_t> Hex(const std::string& text) {
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i < text.size(); i += text[i] == ' ' ? 1U : 2U) {
    if (text[i] != ' ') bytes.push_back(static_cast<uint8_t>(std::stoi(text.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

/// Alpha that would hide every pixel is not believed where there are colours, so those are left out.
TEST_F(RoundTrip, NothingToBeSeenStaysNothing) {
  for (const auto& [alpha, bits] : {std::pair<uint8_t, int>{0, 32}, {0, 16}, {8, 16}}) {
    std::vector<uint8_t> rgba;
    for (int i = 0; i < 6; ++i) rgba.insert(rgba.end(), {200, 100, 50, alpha});
    vx::SaveOptions options(VX_FORMAT_BMP, bits);
    if (bits == 16) options.masks = VX_MASKS_4444;
    const vx::Buffer file = vx::Bitmap::FromRgba(3, 2, rgba.data()).Save(options);
    const std::vector<uint8_t> again = vx::Source::Memory(file.Bytes()).Load().Rgba();
    EXPECT_EQ(again, std::vector<uint8_t>(rgba.size(), 0)) << int{alpha} << ", " << bits;
  }
}

TEST_F(RoundTrip, FilesWithAlphaAreByteForByteAsCommonToolsHaveThem) {
  const vx::Bitmap column = WithAlpha(1, 2, [](int, int y) -> Pixel {
    return y == 0 ? Pixel{0x11, 0x22, 0x33, 0x80} : Pixel{0x44, 0x55, 0x66, 0x7F};
  });
  const std::string noFields = std::string(4 * 12 * 2, '0');  // end points and gamma
  struct Expected {
    const char* what;
    vx::SaveOptions options;
    std::string bytes;
  };
  Expected files[] = {
      {"a page and its mask, from below", vx::SaveOptions(VX_FORMAT_ICO),
       "0000 0100 0100  01 02 00 00 0100 2000 38000000 16000000"
       "28000000 01000000 04000000 0100 2000 00000000 10000000 00000000 00000000 00000000 00000000"
       "6655447F 33221180 80000000 00000000"},
      {"a hot spot stands where planes and depth are", vx::SaveOptions(VX_FORMAT_CUR),
       "0000 0200 0100  01 02 00 00 0000 0000 38000000 16000000"
       "28000000 01000000 04000000 0100 2000 00000000 10000000 00000000 00000000 00000000 00000000"
       "6655447F 33221180 80000000 00000000"},
      {"four masks, sRGB, 72 dots per inch", vx::SaveOptions(VX_FORMAT_BMP),
       "424D 92000000 00000000 8A000000"
       "7C000000 01000000 02000000 0100 2000 03000000 08000000 130B0000 130B0000 00000000 00000000"
       "0000FF00 00FF0000 FF000000 000000FF 42475273" +
           noFields + "04000000 00000000 00000000 00000000 6655447F 33221180"},
      {"4-4-4-4, rows of whole words", vx::SaveOptions(VX_FORMAT_BMP),
       "424D 92000000 00000000 8A000000"
       "7C000000 01000000 02000000 0100 1000 03000000 08000000 130B0000 130B0000 00000000 00000000"
       "000F0000 F0000000 0F000000 00F00000 42475273" +
           noFields + "04000000 00000000 00000000 00000000 5674 0000 2381 0000"},
  };
  files[2].options.dpi = files[3].options.dpi = 72;
  files[3].options.masks = VX_MASKS_4444;
  for (const Expected& expected : files) {
    const vx::Buffer file = column.Save(expected.options);
    EXPECT_EQ(std::vector<uint8_t>(file.Bytes().begin(), file.Bytes().end()), Hex(expected.bytes))
        << expected.what;
  }
}

TEST_F(RoundTrip, AResolutionThatIsAskedForIsStated) {
  const vx::Bitmap opaque = Noise(5, 5, 8);
  for (const vx_format format : {VX_FORMAT_BMP, VX_FORMAT_BMP_RLE, VX_FORMAT_OS2_2, VX_FORMAT_PNG}) {
    vx::SaveOptions options(format);
    options.dpi = 300;
    const vx::Buffer file = opaque.Save(options);
    EXPECT_EQ(vx::Source::Memory(file.Bytes()).Describe().y_dpi, 300) << format;
  }
}

/// Names of the remarks of the last call.
std::string Remarks() {
  int count = 0;
  const vx_remark* remark = vx_remarks(&count);
  std::string names;
  for (int i = 0; i < count; ++i) {
    names += vx_remark_name(remark[i].code) + (" " + std::to_string(remark[i].page)) + " " +
             std::to_string(remark[i].first) + ";";
  }
  return names;
}

TEST_F(RoundTrip, WhatASaveLosesItRemarksOn) {
  const vx::Bitmap soft = WithAlpha(40, 20, Ramp);
  (void)soft.Save(vx::SaveOptions(VX_FORMAT_BMP));
  EXPECT_EQ(Remarks(), "");
  (void)soft.Save(vx::SaveOptions(VX_FORMAT_OS2, 4));
  EXPECT_EQ(Remarks(), "alpha-dropped 0 0;colors-lost 0 4;");
  const Folder folder;
  soft.Save(folder / "a.cur", vx::SaveOptions(VX_FORMAT_CUR, 24));
  EXPECT_EQ(Remarks(), "alpha-hardened 0 0;");
  const vx::SaveOptions few(VX_FORMAT_CUR, 1);
  vx::Edit edit(folder / "a.cur");
  edit.Add(soft, &few);
  EXPECT_EQ(Remarks(), "alpha-hardened 2 0;colors-lost 2 1;");
}

TEST_F(RoundTrip, RegionsBecomeMasksAndAlphaAndComeBack) {
  const vx::Bitmap hard = WithAlpha(9, 4, [](int x, int y) -> Pixel {
    if ((x + y) % 3 == 0) return {0, 0, 0, 0};
    if ((x + y) % 3 == 1) return {0, 0, 0, 255};  // the colour that would mark the hidden pixels
    return {static_cast<uint8_t>(x), 200, 0, 255};
  });
  const vx::Bitmap icon = LoadFrom(hard.Save(vx::SaveOptions(VX_FORMAT_ICO)).Bytes());
  ASSERT_EQ(icon.Describe().has_region, 1);
  ASSERT_EQ(icon.Rgba(), hard.Rgba());
  ASSERT_EQ(LoadFrom(icon.Save(vx::SaveOptions(VX_FORMAT_BMP)).Bytes()).Rgba(), hard.Rgba());
  for (const vx_format format : {VX_FORMAT_CUR, VX_FORMAT_PNG, VX_FORMAT_VISTA_ICO}) {
    for (const int depth : {0, 4, 8, 24, 32}) {
      const vx::Bitmap again = LoadFrom(icon.Save(vx::SaveOptions(format, depth)).Bytes());
      const std::vector<uint8_t> before = icon.Rgba();
      const std::vector<uint8_t> after = again.Rgba();
      for (size_t i = 0; i < before.size(); ++i) {
        if (i % 4 == 3 || before[i | 3] != 0) {
          ASSERT_EQ(after[i], before[i]) << format << ", " << depth;
        }
      }
    }
  }
}

}  // namespace
}  // namespace saving
