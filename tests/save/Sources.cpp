#include "Sources.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <png.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>

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
  std::vector<Pixel> pixels;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) pixels.push_back(pixelAt(x, y));
  }
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(width);
  image.height = static_cast<png_uint_32>(height);
  image.format = PNG_FORMAT_RGBA;
  Bytes png(1024 + 8 * pixels.size());
  png_alloc_size_t size = png.size();
  EXPECT_NE(png_image_write_to_memory(&image, png.data(), &size, 0, pixels.data(), 0, nullptr), 0);
  png.resize(size);
  return LoadFrom(png);
}

vx::Bitmap Colors24(int width, int height, int colors) {
  Bytes rows;
  const size_t padding = (4 - static_cast<size_t>(width) * 3 % 4) % 4;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const int color = (y * width + x) % colors;
      for (const int level : {color * 7, color * 13 + 5, color}) rows.push_back(static_cast<uint8_t>(level));
    }
    rows.insert(rows.end(), padding, 0);
  }
  vx_raw raw = {};
  raw.format = VX_FORMAT_RAW;
  raw.width = width;
  raw.height = height;
  raw.bits_per_pixel = 24;
  vx::LoadOptions options;
  options.raw = &raw;
  return vx::Source::Memory(rows).Load(options);
}

vx::Bitmap LoadFrom(std::span<const uint8_t> file, int page) {
  return vx::Source::Memory(file).Load(page);
}

Folder::Folder() {
  std::string name = testing::TempDir() + "/vx-save-XXXXXX";
  EXPECT_NE(mkdtemp(name.data()), nullptr);
  path_ = name;
}

Folder::~Folder() {
  std::filesystem::remove_all(path_);
}

std::vector<std::string> Folder::Names() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(path_)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
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

void Write(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

std::string Read(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

}  // namespace saving
