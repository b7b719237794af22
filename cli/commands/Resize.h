// Pictures in other sizes.
#pragma once

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

 private:
  int width_;  // the picture's
  int height_;
  vx::Bitmap pixels_;  // no side longer than the resizer takes
};

}  // namespace cli
