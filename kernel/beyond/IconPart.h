// What an image has beside its colours in icon and cursor files, and in those of OS/2: where it stands in the
// file, what the directory says of it, and rows of one bit that tell what shows through.
#pragma once

#include "bitmap/HotSpot.h"
#include "format/IconDirectory.h"

namespace vxkrn {

struct IconPart {
  enum class Kind : uint8_t { kIcon, kCursor, kOs2Icon, kOs2Pointer };

  Kind kind = Kind::kIcon;
  bool isPng = false;
  bool isWholePng = false;          ///< a PNG stream with a sound start and an end
  bool isHeightNotDoubled = false;  ///< the header leaves out the rows of the mask
  HotSpot hotSpot;                  ///< of anything but icons of Windows
  ICONDIRENTRY entry = {};          ///< none in files of OS/2
  uint64_t bodyOffset = 0;
  uint64_t ownSize = 0;     ///< of the body, as far as the file has it; 0 where that is not known
  uint64_t maskOffset = 0;  ///< of the AND mask's first row; 0 where only decoding the colours tells
  uint64_t xorOffset = 0;   ///< of the XOR mask's, which colours of OS/2 have beside them; else 0
  int maskRowsThere = 0;    ///< whole ones

  [[nodiscard]] bool HasDirectory() const noexcept { return kind == Kind::kIcon || kind == Kind::kCursor; }
};

}  // namespace vxkrn
