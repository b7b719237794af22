// Mask rows stand in the same order as those of the colours.
#include "beyond/IconMask.h"

#include <algorithm>

#include "base/Errors.h"
#include "beyond/ByteReader.h"
#include "bitmap/Bitmap.h"

namespace vxkrn {
namespace {

constexpr std::size_t kPiece = 256;  // bytes of a row at once

/// Clears the bits that are set in the XOR mask: what is inverted cannot be shown, but can be seen.
void KeepInverted(ByteReader& inverting, std::size_t count, uint8_t* row) noexcept {
  uint8_t bits[kPiece];
  while (count > 0) {
    const std::size_t part = std::min(count, kPiece);
    const std::size_t got = inverting.Read(bits, part);
    for (std::size_t i = 0; i < got; ++i) row[i] = static_cast<uint8_t>(row[i] & ~bits[i]);
    if (got < part) return;
    row += part;
    count -= part;
  }
}

}  // namespace

int SetRegionOf(const vx_source& source, const IconPart& part, int firstStored,
                _BITMAPHANDLE* record) noexcept {
  const int there = std::clamp(part.maskRowsThere - firstStored, 0, record->Height);
  if (part.maskOffset == 0 || there == 0) return STATUS_OK;
  OwnedBitmap mask;
  int status = VX_InitBitmap(&mask, sizeof(_BITMAPHANDLE), record->Width, record->Height, 1);
  if (status == STATUS_OK) status = VX_AllocateBitmap(&mask, BITMAP_ALLOCATE_PIXELS);
  if (status != STATUS_OK) return FailForMemory("the mask", memory::LastRefusal());
  const auto rowBytes = static_cast<std::size_t>(Stride(record->Width, 1));
  const uint64_t before = uint64_t{rowBytes} * static_cast<uint64_t>(firstStored);
  ByteReader hiding(source, part.maskOffset + before);
  ByteReader inverting(source, part.xorOffset + before);
  for (int row = 0; row < there; ++row) {
    uint8_t* const bits = StoredRow(mask, row);
    if (hiding.Read(bits, rowBytes) < rowBytes) break;
    if (part.xorOffset != 0) KeepInverted(inverting, rowBytes, bits);
  }
  status = VX_SetBitmapRgnFromMask(record, REGION_OPTION_NONE, &mask, REGION_COMBINE_SET);
  return status == STATUS_NO_MEMORY ? FailForMemory("the region", memory::LastRefusal()) : status;
}

}  // namespace vxkrn
