#include "Sources.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <random>

namespace saving {

vx::Bitmap Noise(int width, int height, int bitsPerPixel, int orientation, bool is565) {
  const size_t stride = (static_cast<size_t>(width * bitsPerPixel) + 31) / 32 * 4;
  Bytes rows(stride * static_cast<size_t>(height));
  std::minstd_rand random(static_cast<unsigned>(width * 64 + bitsPerPixel));
  // Runs as well as noise, so that run-length codes of both kinds come up.
  for (size_t i = 0; i < rows.size(); ++i) {
    rows[i] = i > 0 && random() % 3 != 0 ? rows[i - 1] : static_cast<uint8_t>(random() >> 8);
  }
  vx_raw raw = {};
  raw.format = bitsPerPixel == 16 ? VX_FORMAT_RAW_BITFIELDS : VX_FORMAT_RAW;
  raw.width = width;
  raw.height = height;
  raw.bits_per_pixel = bitsPerPixel;
  raw.orientation = orientation;
  if (bitsPerPixel == 16) {
    raw.has_masks = 1;
    raw.red_mask = is565 ? 0xF800 : 0x7C00;
    raw.green_mask = is565 ? 0x07E0 : 0x03E0;
    raw.blue_mask = 0x001F;
  }
  vx::LoadOptions options;
  options.raw = &raw;
  return vx::Source::Memory(rows).Load(options);
}

vx::Bitmap WithAlpha(int width, int height, const std::function<Pixel(int x, int y)>& pixelAt) {
  Bytes rgba;
  for (int i = 0; i < width * height; ++i) {
    const Pixel pixel = pixelAt(i % width, i / width);
    rgba.insert(rgba.end(), {pixel.red, pixel.green, pixel.blue, pixel.alpha});
  }
  return vx::Bitmap::FromRgba(width, height, rgba.data());
}

vx::Bitmap Soft(int side) {
  return WithAlpha(side, side, [](int x, int y) -> Pixel {
    return {static_cast<uint8_t>(7 * x), static_cast<uint8_t>(y), 5, static_cast<uint8_t>(1 + 9 * x)};
  });
}

vx::Bitmap Colors24(int width, int height, int colors) {
  const vx::Bitmap opaque = WithAlpha(width, height, [=](int x, int y) -> Pixel {
    const int color = (y * width + x) % colors;
    return {static_cast<uint8_t>(color), static_cast<uint8_t>(color * 13 + 5),
            static_cast<uint8_t>(color * 7), 255};
  });
  return LoadFrom(opaque.Save(vx::SaveOptions(VX_FORMAT_BMP, 24)).Bytes());
}

vx::Bitmap LoadFrom(std::span<const uint8_t> file, int page) {
  return vx::Source::Memory(file).Load(page);
}

void AsOrdinaryUser(const Folder& folder, const std::function<void()>& act) {
  if (geteuid() != 0) return act();
  constexpr uid_t kNobody = 65534;
  ASSERT_EQ(chown((folder / ".").c_str(), kNobody, kNobody), 0);
  const pid_t child = fork();
  if (child == 0) {
    const bool isOther = setgroups(0, nullptr) == 0 && setgid(kNobody) == 0 && setuid(kNobody) == 0;
    EXPECT_TRUE(isOther);
    act();
    std::fflush(nullptr);
    _exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int ended = 0;
  ASSERT_EQ(waitpid(child, &ended, 0), child);
  EXPECT_EQ(ended, 0) << "as an ordinary user";
}

}  // namespace saving
