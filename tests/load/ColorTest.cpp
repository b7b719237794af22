// Colours that a file says something of: kept, carried on, converted; and profiles that are none.
#include <gtest/gtest.h>
#include <samples/ColorProfile.h>
#include <samples/Samples.h>

#include <algorithm>

#include "../common/Failures.h"
#include "Loading.h"

namespace {

using loading::Bytes;

Bytes FileOf(const std::string& name) {
  static const std::vector<samples::Sample> all = samples::All();
  for (const auto& sample : all) {
    if (sample.name == name) return sample.bytes;
  }
  ADD_FAILURE() << name;
  return {};
}

vx::Bitmap Load(std::span<const uint8_t> file, unsigned int flags = 0) {
  vx::LoadOptions options;
  options.flags = flags;
  return vx::Source::Memory(file).Load(options);
}

bool IsRemarked(vx_remark_code code) {
  int count = 0;
  const vx_remark* remarks = vx_remarks(&count);
  return std::any_of(remarks, remarks + count,
                     [code](const vx_remark& remark) { return remark.code == code; });
}

/// The profile's place in the file.
std::size_t ProfileOf(const Bytes& file) {
  return file.size() - samples::SwappingProfile().size();
}

TEST(Colors, AreCarriedToPngAndBack) {
  const struct {
    const char* name;
    vx_color_space kind;
    const char* chunk;
  } kCases[] = {{"win-v5-profile.bmp", VX_COLOR_SPACE_PROFILE, "iCCP"},
                {"win-v4-calibrated.bmp", VX_COLOR_SPACE_CALIBRATED, "cHRM"},
                {"win-v5-24bit.bmp", VX_COLOR_SPACE_SRGB, "sRGB"},
                {"win-24bit.bmp", VX_COLOR_SPACE_NONE, "IDAT"}};
  for (const auto& each : kCases) {
    SCOPED_TRACE(each.name);
    const Bytes file = FileOf(each.name);
    const vx::Bitmap picture = Load(file);
    EXPECT_EQ(picture.Describe().color_space, each.kind);
    for (const vx::Buffer& png : {picture.EncodePng(), picture.Save(vx::SaveOptions(VX_FORMAT_PNG))}) {
      const std::string text(png.Bytes().begin(), png.Bytes().end());
      EXPECT_NE(text.find(each.chunk), std::string::npos);
      const vx::Bitmap again = Load(png.Bytes());
      EXPECT_EQ(again.Describe().color_space, each.kind);
      EXPECT_TRUE(std::ranges::equal(again.Profile(), picture.Profile()));
      EXPECT_EQ(again.Rgba(), picture.Rgba());
    }
    const vx::Bitmap smaller = picture.Shrink(8);
    EXPECT_EQ(smaller.Describe().color_space, each.kind);
    EXPECT_TRUE(std::ranges::equal(smaller.Profile(), picture.Profile()));
    (void)picture.Save(vx::SaveOptions(VX_FORMAT_BMP));
    const bool isLost = each.kind == VX_COLOR_SPACE_PROFILE || each.kind == VX_COLOR_SPACE_CALIBRATED;
    EXPECT_EQ(IsRemarked(VX_REMARK_PROFILE_DROPPED), isLost);
  }
  EXPECT_TRUE(std::ranges::equal(Load(FileOf("win-v5-profile.bmp")).Profile(), samples::SwappingProfile()));
}

TEST(Colors, ALinkedProfileIsNamed) {
  const vx::Bitmap picture = Load(FileOf("win-v5-linked-profile.bmp"), VX_LOAD_TO_SRGB);
  EXPECT_TRUE(IsRemarked(VX_REMARK_PROFILE_LINKED));
  EXPECT_EQ(picture.ProfileName(), "C:\\profiles\\display.icc");
  EXPECT_EQ(picture.Describe().color_space, VX_COLOR_SPACE_LINKED);
}

TEST(Colors, AProfileThatIsNoneIsLeftOutOrRefused) {
  const Bytes good = FileOf("win-v5-profile.bmp");
  const std::size_t profile = ProfileOf(good);
  constexpr std::size_t kHeader = 14;
  const struct {
    const char* what;
    std::size_t at;
    std::vector<uint8_t> bytes;
  } kCases[] = {
      {"offset at the end", kHeader + 112, {0xFF, 0xFF, 0xFF, 0xFF}},
      {"one byte too far", kHeader + 112, {static_cast<uint8_t>(profile - kHeader + 1)}},
      {"size of 4 GiB", kHeader + 116, {0xFF, 0xFF, 0xFF, 0xFF}},
      {"no size", kHeader + 116, {0, 0}},
      {"a size within the profile", kHeader + 116, {140, 0}},
      {"a longer profile than there is", profile, {0, 0, 2, 0}},
      {"a shorter one than any", profile, {0, 0, 0, 20}},
      {"no signature", profile + 36, {'X'}},
      {"of printing inks", profile + 16, {'C', 'M', 'Y', 'K'}},
      {"from device to device", profile + 12, {'l', 'i', 'n', 'k'}},
      {"a hundred million tags", profile + 128, {6, 0, 0, 0}},
      {"a tag behind the end", profile + 132 + 4, {0x7F}},
      {"a tag that goes on behind it", profile + 132 + 8, {0xFF, 0xFF, 0xFF, 0xFF}},
      {"a list of elements", profile + 216, {'m', 'p', 'e', 't'}},
  };
  for (const auto& each : kCases) {
    SCOPED_TRACE(each.what);
    Bytes file = good;
    std::ranges::copy(each.bytes, file.begin() + static_cast<std::ptrdiff_t>(each.at));
    const vx::Bitmap picture = Load(file);
    EXPECT_TRUE(IsRemarked(VX_REMARK_PROFILE_DAMAGED));
    EXPECT_EQ(picture.Describe().color_space, VX_COLOR_SPACE_NONE);
    ExpectFailure(VX_BAD_FORMAT, "", [&] { (void)Load(file, VX_LOAD_TO_SRGB); });
    EXPECT_EQ(vx_error_reason(), VX_REASON_PROFILE_DAMAGED);
  }
}

#ifdef VX_HAS_COLOR_ENGINE

/// Red and blue exchanged, as far as `tolerance` goes.
void ExpectSwapped(const Bytes& before, const Bytes& after, int tolerance) {
  ASSERT_EQ(before.size(), after.size());
  for (std::size_t i = 0; i < before.size(); i += 4) {
    ASSERT_NEAR(before[i], after[i + 2], tolerance) << i;
    ASSERT_NEAR(before[i + 1], after[i + 1], tolerance) << i;
    ASSERT_NEAR(before[i + 2], after[i], tolerance) << i;
    ASSERT_EQ(before[i + 3], after[i + 3]) << i;
  }
}

/// The colours of a file with the swapping profile, which are put behind its end.
Bytes WithProfile(Bytes file) {
  const Bytes profile = samples::SwappingProfile();
  const std::array<std::size_t, 2> numbers = {file.size() - 14, profile.size()};
  std::ranges::copy(std::string("DEBM"), file.begin() + 14 + 56);
  for (std::size_t i = 0; i < 8; ++i) file[14 + 112 + i] = static_cast<uint8_t>(numbers[i / 4] >> i % 4 * 8);
  file.insert(file.end(), profile.begin(), profile.end());
  return file;
}

TEST(Colors, BecomeSrgbAtEveryDepth) {
  const Bytes indexed = WithProfile(FileOf("win-v5-8bit.bmp"));
  const Bytes colors = FileOf("win-v5-profile.bmp");
  for (const Bytes& file : {indexed, colors}) {
    const vx::Bitmap converted = Load(file, VX_LOAD_TO_SRGB);
    EXPECT_EQ(converted.Describe().color_space, VX_COLOR_SPACE_SRGB);
    EXPECT_EQ(converted.Describe().bits_per_pixel, Load(file).Describe().bits_per_pixel);
    ExpectSwapped(Load(file).Rgba(), converted.Rgba(), 1);
  }
  // The power of 2.2 and the curve of sRGB differ most in the dark: 16 is 7.4 there.
  const Bytes calibrated = FileOf("win-v4-calibrated.bmp");
  ExpectSwapped(Load(calibrated).Rgba(), Load(calibrated, VX_LOAD_TO_SRGB).Rgba(), 9);
  const vx::Buffer png = Load(colors).EncodePng();
  EXPECT_EQ(Load(png.Bytes(), VX_LOAD_TO_SRGB).Rgba(), Load(colors, VX_LOAD_TO_SRGB).Rgba());
}

TEST(Colors, ConvertingTakesMemoryThatIsCounted) {
  const Bytes file = FileOf("win-v5-profile.bmp");
  EXPECT_GT(FailuresForWantOfMemory([&] { (void)Load(file, VX_LOAD_TO_SRGB); }), 5);
}

#else

TEST(Colors, AreNotConvertedWithoutAnEngine) {
  const Bytes file = FileOf("win-v5-profile.bmp");
  ExpectFailure(VX_NOT_SUPPORTED, "liblcms2", [&] { (void)Load(file, VX_LOAD_TO_SRGB); });
  EXPECT_EQ(vx_error_reason(), VX_REASON_NO_COLOR_MANAGEMENT);
}

#endif

}  // namespace
