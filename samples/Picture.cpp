// The drawings. Each is a function from a place in the unit square to a colour; the edges are smoothed by
// asking at several places of every pixel.
#include "samples/Picture.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "samples/Lettering.h"

namespace samples {
namespace {

struct Point {
  double x;
  double y;
};

constexpr Color kClear{0, 0, 0, 0};
constexpr Color kInk{20, 18, 38, 255};
constexpr Color kPaper{255, 250, 240, 255};

uint8_t ToByte(double value) {
  return static_cast<uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
}

Color Mix(const Color& from, const Color& to, double share) {
  const double t = std::clamp(share, 0.0, 1.0);
  const auto channel = [&](uint8_t a, uint8_t b) { return ToByte(a + (b - a) * t); };
  return {channel(from.red, to.red), channel(from.green, to.green), channel(from.blue, to.blue),
          channel(from.alpha, to.alpha)};
}

double Distance(Point a, Point b) {
  return std::hypot(a.x - b.x, a.y - b.y);
}

/// Even-odd rule.
bool Inside(const std::vector<Point>& polygon, Point p) {
  bool inside = false;
  for (size_t i = 0, j = polygon.size() - 1; i < polygon.size(); j = i++) {
    const Point& a = polygon[i];
    const Point& b = polygon[j];
    if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x) inside = !inside;
  }
  return inside;
}

/// The average of side x side answers of `shader`, weighted by their alpha.
template <typename Shader>
Color Average(const Shader& shader, int x, int y, int width, int height, int side) {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 0;
  for (int i = 0; i < side * side; ++i) {
    const int column = i % side;
    const int row = i / side;
    const double u = (x + (column + 0.5) / side) / width;
    const double v = (y + (row + 0.5) / side) / height;
    const Color color = shader(Point{u, v});
    red += color.red * color.alpha;
    green += color.green * color.alpha;
    blue += color.blue * color.alpha;
    alpha += color.alpha;
  }
  if (alpha == 0) return kClear;
  return {ToByte(red / alpha), ToByte(green / alpha), ToByte(blue / alpha), ToByte(alpha / (side * side))};
}

template <typename Shader>
Picture Draw(int width, int height, int side, const Shader& shader) {
  Picture picture(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) picture.At(x, y) = Average(shader, x, y, width, height, side);
  }
  return picture;
}

void Label(Picture& picture, int left, int top, std::string_view text) {
  constexpr int kScale = 2;
  Write(picture, left + 1, top + 1, kScale, kInk, text);
  Write(picture, left, top, kScale, kPaper, text);
}

constexpr double kHorizon = 0.64;

Color Sky(Point p, double aspect) {
  const Point sun{0.66 * aspect, 0.52};
  const double fromSun = Distance({p.x * aspect, p.y}, sun);
  if (fromSun < 0.21) return Mix({255, 240, 170, 255}, {255, 120, 84, 255}, (p.y - 0.31) / (kHorizon - 0.31));
  const double hills = kHorizon - 0.13 * std::exp(-40 * (p.x - 0.16) * (p.x - 0.16)) -
                       0.07 * std::exp(-60 * (p.x - 0.4) * (p.x - 0.4));
  if (p.y > hills) return {62, 38, 92, 255};
  const Color high = Mix({34, 34, 98, 255}, {206, 78, 116, 255}, p.y / 0.4);
  return p.y < 0.4 ? high : Mix({206, 78, 116, 255}, {255, 178, 96, 255}, (p.y - 0.4) / (kHorizon - 0.4));
}

Color Sea(Point p) {
  const double depth = (p.y - kHorizon) / (1 - kHorizon);
  const bool ripple = std::sin(depth * depth * 18 + 1.2) > 0.1;
  const double reach = 0.13 * (1 - 0.55 * depth) + 0.02 * std::sin(depth * 23);
  if (ripple && std::abs(p.x - 0.66) < reach) return Mix({255, 190, 120, 255}, {214, 96, 110, 255}, depth);
  return Mix({112, 66, 124, 255}, {24, 26, 66, 255}, depth);
}

Color WheelColor(Point fromMiddle, double radius) {
  const double hue = std::atan2(fromMiddle.y, fromMiddle.x) / (2 * std::numbers::pi) * 6 + 6;
  const double saturation = std::pow(std::hypot(fromMiddle.x, fromMiddle.y) / radius, 0.8);
  const auto channel = [&](double shift) {
    const double at = std::fmod(hue + shift, 6.0);
    const double pure = std::clamp(std::abs(at - 3) - 1, 0.0, 1.0);
    return ToByte(255 * (1 - saturation * (1 - pure)));
  };
  return {channel(0), channel(4), channel(2), 255};
}

}  // namespace

std::vector<uint8_t> Picture::Rgba() const {
  std::vector<uint8_t> rgba;
  rgba.reserve(pixels_.size() * 4);
  for (const Color& pixel : pixels_) {
    rgba.insert(rgba.end(), {pixel.red, pixel.green, pixel.blue, pixel.alpha});
  }
  return rgba;
}

Picture Sunset(int width, int height, std::string_view label) {
  const double aspect = static_cast<double>(width) / height;
  Picture picture = Draw(width, height, 4, [&](Point p) { return p.y < kHorizon ? Sky(p, aspect) : Sea(p); });
  Label(picture, 3, 3, label);
  return picture;
}

Picture ColorWheel(int width, int height, std::string_view label) {
  const double aspect = static_cast<double>(width) / height;
  const double radius = 0.47;
  Picture picture = Draw(width, height, 4, [&](Point p) {
    const Point fromMiddle{(p.x - 0.5) * aspect, p.y - 0.5};
    if (std::hypot(fromMiddle.x, fromMiddle.y) < radius) return WheelColor(fromMiddle, radius);
    return Mix({60, 62, 74, 255}, {32, 33, 42, 255}, p.y);
  });
  Label(picture, 2, height - 12, label);
  return picture;
}

Picture Boat(int width, int height, std::string_view label) {
  const std::vector<Point> hull{{0.22, 0.66}, {0.86, 0.66}, {0.76, 0.8}, {0.32, 0.8}};
  const std::vector<Point> mainSail{{0.52, 0.24}, {0.52, 0.62}, {0.24, 0.62}};
  const std::vector<Point> foreSail{{0.56, 0.3}, {0.56, 0.62}, {0.8, 0.62}};
  const std::vector<std::pair<const std::vector<Point>*, Color>> shapes{
      {&hull, {206, 62, 62, 255}}, {&mainSail, {250, 244, 226, 255}}, {&foreSail, {255, 190, 70, 255}}};
  Picture picture = Draw(width, height, 1, [&](Point p) -> Color {
    for (const auto& [polygon, color] : shapes) {
      if (Inside(*polygon, p)) return color;
    }
    if (std::abs(p.x - 0.54) < 0.012 && p.y > 0.2 && p.y < 0.66) return {150, 104, 70, 255};
    const bool wave = std::abs(p.y - 0.86 - 0.025 * std::sin(p.x * 26)) < 0.02;
    return wave ? Color{64, 150, 220, 255} : Color{0, 0, 0, 255};
  });
  Write(picture, 2, 2, 1, {120, 200, 120, 255}, label);
  return picture;
}

Picture MoonBadge(int size) {
  return Draw(size, size, 6, [](Point p) {
    if (Distance(p, {0.5, 0.5}) > 0.48) return kClear;
    if (Distance(p, {0.5, 0.5}) > 0.43) return Mix({255, 214, 120, 255}, {214, 130, 60, 255}, p.y);
    const bool moon = Distance(p, {0.46, 0.5}) < 0.27 && Distance(p, {0.58, 0.43}) > 0.23;
    if (moon) return Mix({255, 248, 214, 255}, {250, 214, 130, 255}, p.y);
    for (const auto& [star, radius] :
         {std::pair{Point{0.66, 0.34}, 0.05}, {Point{0.74, 0.58}, 0.035}, {Point{0.5, 0.2}, 0.03}}) {
      const double across = std::abs(p.x - star.x);
      const double along = std::abs(p.y - star.y);
      if (std::sqrt(across) + std::sqrt(along) < std::sqrt(radius * 1.6)) return kPaper;
    }
    return Mix({44, 62, 140, 255}, {96, 46, 128, 255}, p.y);
  });
}

Picture Arrow(int size) {
  const std::vector<Point> outer{{0, 0},      {0, 0.72},   {0.17, 0.56}, {0.3, 0.86},
                                 {0.43, 0.8}, {0.3, 0.51}, {0.53, 0.51}};
  const std::vector<Point> inner{{0.045, 0.11},  {0.045, 0.61}, {0.185, 0.475}, {0.325, 0.795},
                                 {0.365, 0.775}, {0.23, 0.465}, {0.42, 0.465}};
  return Draw(size, size, 1, [&](Point p) -> Color {
    if (Inside(inner, p)) return kPaper;
    return Inside(outer, p) ? Color{0, 0, 0, 255} : kClear;
  });
}

Picture CrossHairs(int size) {
  Picture picture(size, size);
  const int middle = size / 2;
  for (int y = 0; y < size; ++y) {
    for (int x = 0; x < size; ++x) {
      const int across = std::abs(x - middle);
      const int along = std::abs(y - middle);
      const bool arm = std::min(across, along) == 0 && std::max(across, along) > 2;
      const bool ring = std::abs(std::hypot(across, along) - size * 0.3) < 0.8;
      const bool halo = std::min(across, along) == 1 && std::max(across, along) > 2;
      picture.At(x, y) = arm || ring ? Color{220, 40, 60, 255} : halo ? kPaper : kClear;
    }
  }
  return picture;
}

Picture WithHardEdges(const Picture& picture) {
  Picture hard = picture;
  for (Color& pixel : hard.Pixels()) {
    if (pixel.alpha < 128) {
      pixel = kClear;
    } else {
      pixel.alpha = 255;
    }
  }
  return hard;
}

}  // namespace samples
