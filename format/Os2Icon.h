// The file headers of OS/2 icons and pointers. They differ from a bitmap's in the signature, and have the hot
// spot where that one has nothing.
#pragma once

#include <cstdint>

namespace bmp {

inline constexpr uint16_t kOs2Icon = 0x4349;           // 'IC'
inline constexpr uint16_t kOs2ColourIcon = 0x4943;     // 'CI'
inline constexpr uint16_t kOs2Pointer = 0x5450;        // 'PT'
inline constexpr uint16_t kOs2ColourPointer = 0x5043;  // 'CP'
inline constexpr uint16_t kOs2IconSignatures[] = {kOs2Icon, kOs2ColourIcon, kOs2Pointer, kOs2ColourPointer};

constexpr bool IsOs2Pointer(uint16_t signature) {
  return signature == kOs2Pointer || signature == kOs2ColourPointer;
}
constexpr bool IsOs2Coloured(uint16_t signature) {
  return signature == kOs2ColourIcon || signature == kOs2ColourPointer;
}

namespace os2_icon_at {
inline constexpr uint32_t kHotX = 6;
inline constexpr uint32_t kHotY = 8;  // from the bottom
}  // namespace os2_icon_at

}  // namespace bmp
