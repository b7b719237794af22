#include "jobs/Comparison.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "words/Facts.h"

namespace cli {
namespace {

constexpr size_t kChannels = 4;
constexpr size_t kAlpha = 3;

/// The rows of a picture as they are shown, one at a time.
class ShownRows {
 public:
  explicit ShownRows(const vx::Bitmap& picture)
      : picture_(picture), row_(static_cast<size_t>(picture.Describe().width) * kChannels) {}

  const uint8_t* Read(int row) {
    picture_.ReadRgba(row, row_.data());
    return row_.data();
  }

 private:
  const vx::Bitmap& picture_;
  std::vector<uint8_t> row_;
};

bool IsHidden(const uint8_t* pixel, const uint8_t* other) {
  return pixel[kAlpha] == 0 && other[kAlpha] == 0;
}

bool IsSame(const uint8_t* pixel, const uint8_t* other) {
  return std::memcmp(pixel, other, kChannels) == 0;
}

void AddDifference(const uint8_t* pixel, const uint8_t* other, PixelDifference& difference) {
  ++difference.differing;
  for (size_t channel = 0; channel < kChannels; ++channel) {
    const auto distance = static_cast<uint8_t>(std::abs(pixel[channel] - other[channel]));
    difference.most[channel] = std::max(difference.most[channel], distance);
    difference.sums[channel] += distance;
  }
}

void CompareRow(const uint8_t* pixels, const uint8_t* others, int width, int row,
                PixelDifference& difference) {
  for (int x = 0; x < width; ++x, pixels += kChannels, others += kChannels) {
    if (IsSame(pixels, others)) continue;
    if (IsHidden(pixels, others)) {
      ++difference.hidden;
      continue;
    }
    if (difference.differing == 0) {
      difference.firstX = x;
      difference.firstY = row;
      std::copy_n(pixels, kChannels, difference.first.begin());
      std::copy_n(others, kChannels, difference.other.begin());
    }
    AddDifference(pixels, others, difference);
  }
}

std::string ColorSpaceText(const vx_bitmap_info& bitmap) {
  switch (bitmap.color_space) {
    case VX_COLOR_SPACE_SRGB: return "sRGB";
    case VX_COLOR_SPACE_CALIBRATED: return "calibrated";
    case VX_COLOR_SPACE_PROFILE: return "a profile";
    case VX_COLOR_SPACE_LINKED: return "a profile in another file";
    default: return "none said";
  }
}

std::string YesOrNo(bool yes) {
  return yes ? "yes" : "no";
}

struct StoredFact {
  const char* key;
  const char* name;
  std::string (*text)(const PictureSide&);
};

constexpr StoredFact kStoredFacts[] = {
    {"kind", "kind", [](const PictureSide& side) -> std::string { return side.storage.kind; }},
    {"bits_per_pixel", "bits a pixel",
     [](const PictureSide& side) { return std::to_string(side.page.bits_per_pixel); }},
    {"compression", "coding", [](const PictureSide& side) { return CompressionText(side.page); }},
    {"orientation", "rows", [](const PictureSide& side) { return OrientationText(side.page); }},
    {"color_order", "colours", [](const PictureSide& side) { return ColorOrderText(side.page); }},
    {"dpi", "dots per inch", [](const PictureSide& side) { return ResolutionText(side.page); }},
    {"palette_count", "colours of the palette",
     [](const PictureSide& side) { return std::to_string(side.bitmap.palette_count); }},
    {"alpha", "alpha", [](const PictureSide& side) { return YesOrNo(side.bitmap.has_alpha != 0); }},
    {"mask", "mask", [](const PictureSide& side) { return YesOrNo(side.bitmap.has_region != 0); }},
    {"hot_spot", "hot spot",
     [](const PictureSide& side) { return fmt::format("{},{}", side.bitmap.hot_x, side.bitmap.hot_y); }},
    {"color_space", "colour space", [](const PictureSide& side) { return ColorSpaceText(side.bitmap); }},
    {"rows_present", "rows in the file",
     [](const PictureSide& side) {
       return fmt::format("{} of {}", side.bitmap.rows_present, side.bitmap.height);
     }},
};

/// Bytes that each picture has or has not; of equal length they still may differ.
void CompareBytes(const char* key, const char* name, std::span<const uint8_t> bytes,
                  std::span<const uint8_t> others, std::vector<StoredDifference>& differences) {
  if (std::equal(bytes.begin(), bytes.end(), others.begin(), others.end())) return;
  const std::string text = fmt::format("{} bytes", bytes.size());
  const std::string other =
      fmt::format("{} {}bytes", others.size(), bytes.size() == others.size() ? "other " : "");
  differences.push_back({key, name, text, other});
}

/// The first picture in pale grey, and red where the other is different, or where only one has pixels.
void DrawRow(const uint8_t* pixels, int width, const uint8_t* others, int otherWidth, uint8_t* drawn,
             int drawnWidth) {
  constexpr Rgba kRed = {255, 0, 0, 255};
  for (int x = 0; x < drawnWidth; ++x, drawn += kChannels) {
    const auto at = static_cast<size_t>(x) * kChannels;
    const uint8_t* pixel = pixels != nullptr && x < width ? pixels + at : nullptr;
    const uint8_t* other = others != nullptr && x < otherWidth ? others + at : nullptr;
    if (pixel == nullptr || other == nullptr || !(IsSame(pixel, other) || IsHidden(pixel, other))) {
      std::copy(kRed.begin(), kRed.end(), drawn);
      continue;
    }
    // A quarter of the light that is there, three quarters white; what cannot be seen is white.
    const int light = (pixel[0] * 2 + pixel[1] * 5 + pixel[2]) / 8;
    const int shown = 255 - (255 - light) * pixel[kAlpha] / 255 / 4;
    std::fill_n(drawn, kAlpha, static_cast<uint8_t>(shown));
    drawn[kAlpha] = 255;
  }
}

/// Memory that the library does not count.
void RefuseBeyondLimit(uint64_t bytes) {
  const uint64_t used = vx_memory_in_use();
  const uint64_t limit = vx_memory_limit();
  if (used <= limit && bytes <= limit - used) return;
  throw vx::Error(VX_NO_MEMORY,
                  fmt::format("the picture of the differences needs {} bytes, more than the memory "
                              "limit of {} bytes leaves; --memory-limit raises it",
                              bytes, limit));
}

}  // namespace

double PixelDifference::MeanOf(size_t channel) const {
  return compared == 0 ? 0 : static_cast<double>(sums[channel]) / static_cast<double>(compared);
}

PixelDifference ComparePixels(const vx::Bitmap& picture, const vx::Bitmap& other) {
  const vx_bitmap_info info = picture.Describe();
  const vx_bitmap_info otherInfo = other.Describe();
  const int width = std::min(info.width, otherInfo.width);
  const int height = std::min(info.height, otherInfo.height);
  ShownRows rows(picture);
  ShownRows others(other);
  PixelDifference difference;
  difference.compared = static_cast<uint64_t>(width) * static_cast<uint64_t>(height);
  for (int row = 0; row < height; ++row) CompareRow(rows.Read(row), others.Read(row), width, row, difference);
  return difference;
}

std::vector<StoredDifference> CompareStored(const PictureSide& side, const PictureSide& other) {
  std::vector<StoredDifference> differences;
  for (const StoredFact& fact : kStoredFacts) {
    const std::string text = fact.text(side);
    if (text != fact.text(other)) differences.push_back({fact.key, fact.name, text, fact.text(other)});
  }
  if (side.bitmap.palette_count == other.bitmap.palette_count) {
    CompareBytes("palette", "palette", side.picture.Palette(), other.picture.Palette(), differences);
  }
  CompareBytes("profile", "profile", side.picture.Profile(), other.picture.Profile(), differences);
  return differences;
}

vx::Bitmap DrawDifference(const vx::Bitmap& picture, const vx::Bitmap& other) {
  const vx_bitmap_info info = picture.Describe();
  const vx_bitmap_info otherInfo = other.Describe();
  const int width = std::max(info.width, otherInfo.width);
  const int height = std::max(info.height, otherInfo.height);
  const size_t rowSize = static_cast<size_t>(width) * kChannels;
  RefuseBeyondLimit(uint64_t{2} * rowSize *
                    static_cast<uint64_t>(height));  // here, and in the library's bitmap
  std::vector<uint8_t> drawn(rowSize * static_cast<size_t>(height));
  ShownRows rows(picture);
  ShownRows others(other);
  for (int row = 0; row < height; ++row) {
    DrawRow(row < info.height ? rows.Read(row) : nullptr, info.width,
            row < otherInfo.height ? others.Read(row) : nullptr, otherInfo.width,
            drawn.data() + rowSize * static_cast<size_t>(row), width);
  }
  return vx::Bitmap::FromRgba(width, height, drawn.data());
}

}  // namespace cli
