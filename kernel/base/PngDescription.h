// What is known of a PNG stream: decoded by one room, noted for a call, read by those that describe pictures.
#pragma once

namespace vxkrn {

/// What a PNG stream holds, as the bitmap it decodes to.
struct PngDescription {
  int width;
  int height;
  int bitsPerPixel;  ///< its own depth: 1, 4 or 8 with a palette, 24, or 32 where there is transparency
  int xDpi;          ///< 96 where the stream names none
  int yDpi;
  bool hasAlpha;
};

}  // namespace vxkrn
