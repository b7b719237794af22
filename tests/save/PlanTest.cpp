// What a save decides before it writes anything: depths, refusals, and what it says is lost.
#include <gtest/gtest.h>

#include "Sources.h"

namespace saving {
namespace {

struct Choice {
  const char* what;
  vx_format format;
  int asked;
  int format_written;
  int depth;
  int colorsLost;
  int transparency;
};

void ExpectChoices(const vx::Bitmap& picture, std::initializer_list<Choice> choices) {
  for (const Choice& choice : choices) {
    const vx_save_plan plan = picture.Plan(vx::SaveOptions(choice.format, choice.asked));
    EXPECT_EQ(plan.format, choice.format_written) << choice.what;
    EXPECT_EQ(plan.bits_per_pixel, choice.depth) << choice.what;
    EXPECT_EQ(plan.colors_lost, choice.colorsLost) << choice.what;
    EXPECT_EQ(plan.transparency, choice.transparency) << choice.what;
  }
}

TEST(Plan, TakesTheDepthThatLosesLeast) {
  constexpr int kKept = VX_TRANSPARENCY_KEPT;
  ExpectChoices(Noise(30, 30, 32),
                {{"own depth", VX_FORMAT_BMP, 0, VX_FORMAT_BMP, 32, 0, kKept},
                 {"no such depth", VX_FORMAT_ICO, 0, VX_FORMAT_ICO, 24, 0, kKept},
                 {"alpha for nothing", VX_FORMAT_PNG, 0, VX_FORMAT_PNG, 24, 0, kKept},
                 {"what readers expect", VX_FORMAT_VISTA_ICO, 0, VX_FORMAT_VISTA_ICO, 32, 0, kKept},
                 {"too few", VX_FORMAT_BMP, 8, VX_FORMAT_BMP, 8, 1, kKept},
                 {"no run-length coding", VX_FORMAT_BMP_RLE, 0, VX_FORMAT_BMP, 24, 0, kKept}});
  ExpectChoices(Colors24(30, 30, 16),
                {{"few colours, own depth", VX_FORMAT_OS2, 0, VX_FORMAT_OS2, 24, 0, kKept},
                 {"few colours fit", VX_FORMAT_OS2, 4, VX_FORMAT_OS2, 4, 0, kKept},
                 {"and not", VX_FORMAT_OS2, 1, VX_FORMAT_OS2, 1, 1, kKept}});
  ExpectChoices(Noise(30, 30, 16, VX_BOTTOM_UP, true),
                {{"5-6-5", VX_FORMAT_BMP, 0, VX_FORMAT_BMP, 16, 0, kKept},
                 {"OS/2 knows 5-5-5 alone", VX_FORMAT_OS2_2, 0, VX_FORMAT_OS2_2, 24, 0, kKept},
                 {"asked for", VX_FORMAT_BMP, 16, VX_FORMAT_BMP, 16, 1, kKept}});
  const vx::Bitmap soft = WithAlpha(4, 4, [](int x, int /*y*/) -> Pixel {
    return {0, 0, 0, static_cast<uint8_t>(x * 60)};
  });
  ExpectChoices(soft, {{"lost", VX_FORMAT_BMP, 24, VX_FORMAT_BMP, 24, 0, VX_TRANSPARENCY_LOST},
                       {"no place for it", VX_FORMAT_BMP_RLE, 0, VX_FORMAT_BMP, 1, 0, VX_TRANSPARENCY_LOST},
                       {"hardened", VX_FORMAT_CUR, 1, VX_FORMAT_CUR, 1, 0, VX_TRANSPARENCY_HARDENED},
                       {"kept", VX_FORMAT_BMP, 0, VX_FORMAT_BMP, 32, 0, kKept},
                       {"kept", VX_FORMAT_ICO, 0, VX_FORMAT_ICO, 32, 0, kKept},
                       {"hardened", VX_FORMAT_PNG, 8, VX_FORMAT_PNG, 8, 0, VX_TRANSPARENCY_HARDENED},
                       {"kept", VX_FORMAT_PNG, 0, VX_FORMAT_PNG, 32, 0, kKept}});
  const vx::Bitmap hardly = WithAlpha(1, 1, [](int, int) -> Pixel { return {0, 0, 0, 254}; });
  ExpectChoices(hardly, {{"hardly soft", VX_FORMAT_CUR, 1, VX_FORMAT_CUR, 1, 0, VX_TRANSPARENCY_HARDENED},
                         {"and kept", VX_FORMAT_CUR, 0, VX_FORMAT_CUR, 32, 0, kKept}});
  const vx::Bitmap hard = WithAlpha(4, 1, [](int x, int) -> Pixel {
    return {0, 0, 0, static_cast<uint8_t>(x % 2 * 255)};
  });
  ExpectChoices(hard, {{"a mask keeps it", VX_FORMAT_ICO, 0, VX_FORMAT_ICO, 1, 0, kKept},
                       {"bitmaps have none", VX_FORMAT_BMP, 0, VX_FORMAT_BMP, 32, 0, kKept}});
  const vx::Bitmap hidden = WithAlpha(40, 4, [](int x, int y) -> Pixel {
    return y == 0 ? Pixel{9, 9, 9, 255} : Pixel{static_cast<uint8_t>(x), 0, 0, 0};
  });
  ExpectChoices(hidden, {{"nobody sees their colours", VX_FORMAT_PNG, 1, VX_FORMAT_PNG, 1, 0, kKept}});
}

struct Refusal {
  vx_save_options options;
  int width;
  int status;
  const char* word;  ///< in the detail
};

TEST(Plan, RefusesWhatAFormatHasNoRoomFor) {
  const auto with = [](int format, int bits, int use565 = 0, int palette = 0, int dither = 0, int masks = 0,
                       int dpi = 0) {
    return vx_save_options{format, bits, use565, palette, dither, 0, 0, masks, dpi};
  };
  const Refusal refusals[] = {
      {with(VX_FORMAT_ICO, 16), 8, VX_BAD_BPP, "it has 1, 4, 8, 24, 32"},
      {with(VX_FORMAT_CUR, 32), 256, VX_BAD_DIMENSIONS, "255 x 255"},
      {with(VX_FORMAT_BMP_RLE, 16), 8, VX_BAD_BPP, "not go"},
      {with(VX_FORMAT_PNG, 16), 8, VX_BAD_BPP, "1, 4, 8, 24, 32"},
      {with(VX_FORMAT_BMP, 2), 8, VX_BAD_BPP, "2 bits"},
      {with(VX_FORMAT_ICO, 0), 256, VX_BAD_DIMENSIONS, "PNG pages"},
      {with(VX_FORMAT_CUR, 0), 300, VX_BAD_DIMENSIONS, "255 x 255"},
      {with(VX_FORMAT_VISTA_ICO, 0), 257, VX_BAD_DIMENSIONS, "256 x 256"},
      {with(VX_FORMAT_OS2, 0), 65536, VX_BAD_DIMENSIONS, "65535"},
      {with(VX_FORMAT_RAW, 0), 8, VX_NOT_SUPPORTED, "raw"},
      {with(12345, 0), 8, VX_NOT_SUPPORTED, "12345"},
      {with(0, 0), 8, VX_NOT_SUPPORTED, "format 0"},
      {with(VX_FORMAT_OS2, 16, 1), 8, VX_BAD_PARAMETER, "5-6-5"},
      {with(VX_FORMAT_BMP, 8, 1), 8, VX_BAD_PARAMETER, "5-6-5"},
      {with(VX_FORMAT_BMP, 8, 0, 2), 8, VX_BAD_PARAMETER, "palette"},
      {with(VX_FORMAT_BMP, 8, 0, 0, -1), 8, VX_BAD_PARAMETER, "dither"},
      {with(VX_FORMAT_BMP, 16, 0, 0, 0, 3), 8, VX_BAD_PARAMETER, "vx_masks"},
      {with(VX_FORMAT_BMP, 32, 0, 0, 0, 1), 8, VX_BAD_PARAMETER, "16 bits"},
      {with(VX_FORMAT_BMP, 16, 1, 0, 0, 1), 8, VX_BAD_PARAMETER, "5-6-5"},
      {with(VX_FORMAT_OS2, 16, 0, 0, 0, 2), 8, VX_BAD_PARAMETER, "Windows bitmaps"},
      {with(VX_FORMAT_BMP, 0, 0, 0, 0, 0, -1), 8, VX_BAD_PARAMETER, "dpi is -1"},
      {with(VX_FORMAT_BMP, 0, 0, 0, 0, 0, 65536), 8, VX_BAD_PARAMETER, "65535"},
      {with(VX_FORMAT_ICO, 0, 0, 0, 0, 0, 72), 8, VX_BAD_PARAMETER, "no resolution"},
      {with(VX_FORMAT_OS2, 0, 0, 0, 0, 0, 72), 8, VX_BAD_PARAMETER, "no resolution"},
  };
  for (const Refusal& refusal : refusals) {
    const vx::Bitmap picture = Noise(refusal.width, 1, 8);
    vx_save_plan plan;
    EXPECT_EQ(vx_plan_save(picture.Get(), &refusal.options, &plan), refusal.status) << refusal.word;
    EXPECT_NE(std::string(vx_error_detail()).find(refusal.word), std::string::npos) << vx_error_detail();
    uint8_t* bytes = nullptr;
    size_t size = 1;
    EXPECT_EQ(vx_save_memory(picture.Get(), &refusal.options, &bytes, &size), refusal.status);
    EXPECT_EQ(size, 0U);
    vx_format_limits limits;
    const bool isSaved = refusal.status != VX_NOT_SUPPORTED;
    EXPECT_EQ(vx_format_describe(refusal.options.format, &limits), isSaved ? VX_OK : VX_NOT_SUPPORTED);
  }
  EXPECT_EQ(vx_plan_save(nullptr, nullptr, nullptr), VX_BAD_PARAMETER);
  EXPECT_EQ(vx_save_file(nullptr, nullptr, nullptr), VX_BAD_PARAMETER);
  EXPECT_EQ(vx_save_memory(nullptr, nullptr, nullptr, nullptr), VX_BAD_PARAMETER);
}

}  // namespace
}  // namespace saving
