// Pictures in other sizes.
#pragma once

#include <cstdint>
#include <vx/image.hpp>

namespace cli {

/// A picture that pages of many sizes are made from. Keeps a copy of bounded size, whatever the picture's, so
/// the picture itself may be freed.
class Resizable {
 public:
  /// @throws vx::Error
  explicit Resizable(const vx::Bitmap& picture);

  /// @return the picture fitted into a square of `side` pixels, with transparent margins where it is no
  /// square.
  /// Light is averaged, not its coding, and pixels count for as much as can be seen of them.
  /// @param side 1 to 256 @throws vx::Error, std::bad_alloc
  [[nodiscard]] vx::Bitmap FitInto(int side) const;

  /// @return the picture in its proportions, its longer side of `side` pixels. @param side 1 to 1024
  [[nodiscard]] vx::Bitmap ScaleTo(int side) const;

 private:
  struct Size {
    int width;
    int height;
  };
  [[nodiscard]] Size Scaled(int side) const;
  /// Puts the picture of that size into rows of red, green, blue, alpha. @param rowBytes from one to the next
  void ScaleInto(uint8_t* rows, const Size& size, int rowBytes) const;

  int width_;  // the picture's
  int height_;
  vx::Bitmap pixels_;  // no side longer than the resizer takes
};

}  // namespace cli
