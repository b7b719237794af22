// Pictures in memory and what the samples draw in them. Everything is computed; nothing here knows a file
// format.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace samples {

struct Color {
  uint8_t red = 0;
  uint8_t green = 0;
  uint8_t blue = 0;
  uint8_t alpha = 255;
};

inline bool operator==(const Color& a, const Color& b) {
  return a.red == b.red && a.green == b.green && a.blue == b.blue && a.alpha == b.alpha;
}

/// True colours, top row first.
class Picture {
 public:
  Picture(int width, int height)
      : width_(width), height_(height), pixels_(static_cast<size_t>(width) * static_cast<size_t>(height)) {}

  int Width() const { return width_; }
  int Height() const { return height_; }
  const Color& At(int x, int y) const { return pixels_[Index(x, y)]; }
  Color& At(int x, int y) { return pixels_[Index(x, y)]; }
  const std::vector<Color>& Pixels() const { return pixels_; }
  std::vector<Color>& Pixels() { return pixels_; }

  /// @return 4 bytes a pixel: red, green, blue, alpha.
  std::vector<uint8_t> Rgba() const;

 private:
  size_t Index(int x, int y) const {
    return static_cast<size_t>(y) * static_cast<size_t>(width_) + static_cast<size_t>(x);
  }

  int width_;
  int height_;
  std::vector<Color> pixels_;
};

/// A sun going down over the sea, with `label` written in the sky. Opaque.
Picture Sunset(int width, int height, std::string_view label);
/// A wheel of all hues, pale in the middle, on dark grey, with `label` below. Opaque.
Picture ColorWheel(int width, int height, std::string_view label);
/// A sailing boat in flat colours on plain black, which most pixels are. Opaque.
Picture Boat(int width, int height, std::string_view label);
/// A round night sky with a moon and stars, on transparent ground with a soft edge.
Picture MoonBadge(int size);
/// An arrow that points to its top left pixel, on transparent ground.
Picture Arrow(int size);
/// Cross hairs around the middle pixel, on transparent ground.
Picture CrossHairs(int size);

/// @return the picture with alpha made either 0 (and the pixel black) or 255, as an AND mask can say it.
Picture WithHardEdges(const Picture& picture);

}  // namespace samples
