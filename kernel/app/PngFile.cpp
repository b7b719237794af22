// PNG rows come from the top, so a band is a piece of what was decoded.
#include "app/PngFile.h"

#include <cstring>
#include <utility>

#include "app/Describe.h"
#include "base/Errors.h"
#include "filter/PngCallbacks.h"
#include "format/IconDirectory.h"
#include "png/Png.h"

namespace vxkrn {
namespace {

int FailForSource(const vx_source& source) {
  if (memory::LastRefusal() != 0) return FailForMemory("reading it", memory::LastRefusal());
  return Fail({STATUS_READ_ERROR, VX_REASON_SYSTEM_ERROR}, "not all of its ", source.Size(),
              " bytes can be read");
}

/// Keeps `count` rows of a record from stored row `first` on.
int Cut(_BITMAPHANDLE* record, int first, int count) {
  OwnedBitmap band;
  int status = VX_InitBitmap(&band, sizeof(_BITMAPHANDLE), record->Width, count, record->BitsPerPixel);
  if (status == STATUS_OK) status = VX_AllocateBitmap(&band, BITMAP_ALLOCATE_PIXELS);
  if (status == STATUS_OK) status = VX_SetBitmapNewPalette(&band, record->Palette, record->ColorCount);
  if (status == STATUS_NO_MEMORY) return FailForMemory("the band", memory::LastRefusal());
  if (status != STATUS_OK) return status;
  band.Orientation = record->Orientation;
  band.XResolution = record->XResolution;
  band.YResolution = record->YResolution;
  std::memcpy(band.Pixels, StoredRow(*record, first),
              static_cast<std::size_t>(PictureBytes(band.Width, count, band.BitsPerPixel)));
  std::swap<_BITMAPHANDLE>(band, *record);
  return STATUS_OK;
}

}  // namespace

bool IsPngFile(const vx_source& source) noexcept {
  return source.BlockAt<bmp::kPngSignatureSize>(0) == bmp::kPngSignatures[0];
}

int DescribePngFile(vx_source& source, IMAGEINFO* info) {
  if (!source.Hold()) return FailForSource(source);
  *info = IMAGEINFO{};
  info->StructSize = sizeof *info;
  info->PageNumber = 1;
  info->TotalPages = 1;
  // The stream is only read.
  auto* bytes = const_cast<unsigned char*>(source.memory.bytes);
  const int status =
      DescribePngPage(bytes, info, sizeof *info, static_cast<unsigned int>(source.memory.size), 0, 0);
  if (status != STATUS_OK) return status;
  const uint64_t size = static_cast<uint64_t>(PixelBytes(info->Width, info->BitsPerPixel)) *
                        static_cast<unsigned int>(info->Height);
  info->DataSize = static_cast<int>(static_cast<uint32_t>(size));
  return STATUS_OK;
}

int LoadPngFile(vx_source& source, int first, int count, vx_bitmap* picture) {
  if (!source.Hold()) return FailForSource(source);
  PngDescription description = {};
  _BITMAPHANDLE* record = &picture->record;
  int status = DecodePng(source.memory.bytes, static_cast<std::size_t>(source.memory.size), 0, record,
                         &description, &picture->colorSpace);
  if (status == STATUS_OK && count < record->Height) status = Cut(record, first, count);
  if (status != STATUS_OK) return status;
  picture->rowsPresent = record->Height;
  if (description.hasAlpha) record->Flags |= kBitmapHasAlpha;
  picture->TakeColors();
  return STATUS_OK;
}

}  // namespace vxkrn
