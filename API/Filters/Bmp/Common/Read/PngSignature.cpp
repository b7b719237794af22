// Tells image bodies that are PNG streams from those that are bitmaps.
#include "../Bmp.h"
#include "../Format/IconDirectory.h"

int IsPNGHeader(unsigned char* bytes) {
  for (const auto& signature : bmp::kPngSignatures) {
    if (VX_MemoryCompare(bytes, signature.data(), bmp::kPngSignatureSize) == 0) return 1;
  }
  return 0;
}
