// Reads colour tables: 4-byte entries, all or as many as are in use, or the 3-byte ones of OS/2 1.x.
#include "Read/Palette.h"

#include "Kernel.h"
#include "format/Geometry.h"

namespace bmp {
namespace {

int ReadUsedEntries(HANDLE file, const ImageHeader& header, Palette& palette) {
  const auto size = StoredPaletteEntries(header) * static_cast<uint32_t>(sizeof(RGBQUAD));
  if (!ReadExactly(file, palette.data(), size)) return STATUS_READ_ERROR;
  for (RGBQUAD& entry : palette) entry.Reserved = 0;
  return STATUS_OK;
}

/// Reads every entry the depth can have, `entrySize` bytes each, the first three of them the colour.
int ReadAllEntries(HANDLE file, const ImageHeader& header, uint32_t entrySize, Palette& palette) {
  const uint32_t count = PaletteSize(header.bitCount);
  const Buffer table(count, entrySize);
  if (!table) return STATUS_NO_MEMORY;
  if (!ReadExactly(file, table.Get(), count * entrySize)) return STATUS_READ_ERROR;
  const uint8_t* bytes = table.Get();
  for (uint32_t i = 0; i < count; ++i, bytes += entrySize) {
    palette[i] = {.Blue = bytes[0], .Green = bytes[1], .Red = bytes[2], .Reserved = 0};
  }
  return STATUS_OK;
}

}  // namespace

int ReadPalette(HANDLE file, const ImageHeader& header, Palette& palette) {
  switch (header.Kind()) {
    case HeaderKind::kInfo: return ReadUsedEntries(file, header, palette);
    case HeaderKind::kCore: return ReadAllEntries(file, header, 3, palette);
    case HeaderKind::kLong: break;
  }
  return ReadAllEntries(file, header, 4, palette);
}

}  // namespace bmp
