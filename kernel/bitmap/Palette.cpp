// The palette services and the fixed palettes:
//   1 bit   black, white
//   4 bits  the sixteen colours of VGA text screens, in their order
//   8 bits  a cube of 6 x 6 x 6 colours (entry 36 red + 6 green + blue, steps of 51), then 40 greys that the
//           cube has not, from dark to light; all 256 differ
#include <array>
#include <cstring>

#include "base/Contract.h"
#include "base/Memory.h"

namespace {

constexpr RGBQUAD Color(unsigned int red, unsigned int green, unsigned int blue) {
  return {static_cast<unsigned char>(blue), static_cast<unsigned char>(green),
          static_cast<unsigned char>(red), 0};
}

constexpr std::array<RGBQUAD, 2> kFixed1 = {Color(0, 0, 0), Color(255, 255, 255)};

constexpr std::array<RGBQUAD, 16> kFixed4 = {
    Color(0, 0, 0),       Color(128, 0, 0),   Color(0, 128, 0),   Color(128, 128, 0),
    Color(0, 0, 128),     Color(128, 0, 128), Color(0, 128, 128), Color(192, 192, 192),
    Color(128, 128, 128), Color(255, 0, 0),   Color(0, 255, 0),   Color(255, 255, 0),
    Color(0, 0, 255),     Color(255, 0, 255), Color(0, 255, 255), Color(255, 255, 255)};

constexpr std::array<RGBQUAD, 256> MakeFixed8() {
  constexpr unsigned int kCube = 216;
  constexpr unsigned int kGreys = 256 - kCube;
  std::array<RGBQUAD, 256> palette{};
  for (unsigned int i = 0; i < kCube; ++i) palette[i] = Color(i / 36 * 51, i / 6 % 6 * 51, i % 6 * 51);
  for (unsigned int i = 0; i < kGreys; ++i) {
    const unsigned int level = (i + 1) * 255 / (kGreys + 1);
    palette[kCube + i] = Color(level, level, level);
  }
  return palette;
}

constexpr std::array<RGBQUAD, 256> kFixed8 = MakeFixed8();

}  // namespace

void VX_GetFixedPalette(RGBQUAD* palette, int bitsPerPixel) {
  if (palette == nullptr) return;
  switch (bitsPerPixel) {
    case 1: std::memcpy(palette, kFixed1.data(), sizeof kFixed1); break;
    case 4: std::memcpy(palette, kFixed4.data(), sizeof kFixed4); break;
    case 8: std::memcpy(palette, kFixed8.data(), sizeof kFixed8); break;
    default: break;
  }
}

int VX_SetBitmapNewPalette(_BITMAPHANDLE* bitmap, const RGBQUAD* palette, int count) {
  if (bitmap == nullptr || count < 0 || count > 256 || (palette == nullptr && count > 0)) {
    return STATUS_BAD_PARAMETER;
  }
  RGBQUAD* copy = nullptr;
  if (count > 0) {
    const std::size_t bytes = static_cast<std::size_t>(count) * sizeof(RGBQUAD);
    copy = static_cast<RGBQUAD*>(vxkrn::memory::Allocate(bytes, {"kernel/Palette", __LINE__}));
    if (copy == nullptr) return STATUS_NO_MEMORY;
    std::memcpy(copy, palette, bytes);
  }
  vxkrn::memory::Free(bitmap->Palette);
  bitmap->Palette = copy;
  bitmap->ColorCount = count;
  return STATUS_OK;
}
