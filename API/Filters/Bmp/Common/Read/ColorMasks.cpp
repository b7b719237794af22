// Judges the channel masks of 16- and 32-bit pixels: which layouts are taken as they are, which are
// converted while reading, and which are refused.
#include "../Bmp.h"
#include "../Format/BitmapHeader.h"

int VerifyColorMasks(unsigned int* masks, int* convert, int* is565, int bitsPerPixel) {
  const bmp::ColorMasks given{.red = masks[0], .green = masks[1], .blue = masks[2]};
  *is565 = 0;
  switch (bitsPerPixel) {
    case 16:
      *is565 = given == bmp::kMasks565 ? 1 : 0;
      *convert = given == bmp::kMasks565 || given == bmp::kMasks555 ? 0 : 1;
      return STATUS_OK;
    case 32: return given == bmp::kMasks888 ? STATUS_OK : STATUS_BAD_FORMAT;
    default: return STATUS_BAD_FORMAT;
  }
}
