// Calibrated colours: what red, green, blue and white look like, and how light grows with the numbers. Pure.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "format/BitmapLayout.h"

namespace bmp {

/// A colour without its brightness, as CIE 1931 has it.
struct Chromaticity {
  double x = 0;
  double y = 0;
};

struct Calibration {
  bool hasEndpoints = false;  ///< else they are those of sRGB
  Chromaticity white;
  std::array<Chromaticity, 3> primaries;  ///< red, green, blue
  bool hasGamma = false;
  std::array<double, 3> gamma = {};  ///< light is the number to this power
};

inline constexpr Chromaticity kWhiteD65 = {0.3127, 0.3290};

namespace calibration {

struct Xyz {
  double x, y, z;

  [[nodiscard]] constexpr double Sum() const { return x + y + z; }
};

constexpr double Fixed30(uint32_t stored) {
  return static_cast<double>(static_cast<int32_t>(stored)) / (1 << 30);
}

constexpr double kLeastGamma = 0.1;
constexpr double kMostGamma = 10;

/// Twice the area between three chromaticities; next to nothing where they cannot be mixed to a white.
constexpr double Area(const std::array<Chromaticity, 3>& p) {
  const double area = (p[1].x - p[0].x) * (p[2].y - p[0].y) - (p[2].x - p[0].x) * (p[1].y - p[0].y);
  return area < 0 ? -area : area;
}

}  // namespace calibration

/// Whether anything was filled in: many writers leave 0 everywhere, which then says that colours are
/// calibrated.
constexpr bool SaysCalibration(const ColourSpace& colour) {
  bool isAny = false;
  for (const uint32_t endpoint : colour.endpoints) isAny = isAny || endpoint != 0;
  return isAny;
}

/// What a header's endpoints and gamma say; nothing where no colours can be like that.
///
/// Endpoints are the light of full red, green and blue, and white is all three together. Some writers put
/// chromaticities there instead (x, y, and the rest to 1), which say nothing of white: it is that of daylight
/// then.
constexpr std::optional<Calibration> CalibrationOf(const ColourSpace& colour) {
  using calibration::Fixed30;
  Calibration found;
  found.hasEndpoints = found.hasGamma = true;
  calibration::Xyz white = {};
  bool areChromaticities = true;
  for (std::size_t i = 0; i < 3; ++i) {
    const uint32_t* stored = colour.endpoints + 3 * i;
    const calibration::Xyz light = {Fixed30(stored[0]), Fixed30(stored[1]), Fixed30(stored[2])};
    if (light.Sum() < 0.001 || light.y < 0) return std::nullopt;
    found.primaries[i] = {light.x / light.Sum(), light.y / light.Sum()};
    white = {white.x + light.x, white.y + light.y, white.z + light.z};
    areChromaticities = areChromaticities && light.Sum() > 0.99 && light.Sum() < 1.01;
    found.gamma[i] = colour.gamma[i] / 65536.0;
    if (found.gamma[i] < calibration::kLeastGamma || found.gamma[i] > calibration::kMostGamma)
      return std::nullopt;
  }
  found.white = areChromaticities ? kWhiteD65 : Chromaticity{white.x / white.Sum(), white.y / white.Sum()};
  if (found.white.y < 0.001 || calibration::Area(found.primaries) < 0.001) return std::nullopt;
  return found;
}

}  // namespace bmp
