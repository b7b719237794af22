// The bitmap services: records, pixel memory, row access. Every row index and byte count is checked here,
// because the callers' numbers come out of files.
#include "bitmap/Bitmap.h"

#include <climits>
#include <cstring>

#include "base/CallRecord.h"
#include "base/Memory.h"
#include "bitmap/ReadRgba.h"

namespace {

bool HasRow(const _BITMAPHANDLE* bitmap, const void* buffer, int row, unsigned int byteCount) {
  return bitmap != nullptr && bitmap->Pixels != nullptr && buffer != nullptr && row >= 0 &&
         row < bitmap->Height && byteCount <= static_cast<unsigned int>(bitmap->BytesPerLine);
}

}  // namespace

int VX_InitBitmap(_BITMAPHANDLE* bitmap, unsigned int recordSize, int width, int height, int bitsPerPixel) {
  if (bitmap == nullptr || recordSize != sizeof *bitmap) return STATUS_BAD_PARAMETER;
  *bitmap = _BITMAPHANDLE{};  // so that freeing it is safe whatever comes
  if (!vxkrn::IsDepth(bitsPerPixel)) return STATUS_BAD_BPP;
  if (width < 1 || height < 1 || vxkrn::Stride(width, bitsPerPixel) > INT_MAX) return STATUS_BAD_DIMENSIONS;
  bitmap->StructSize = recordSize;
  bitmap->Width = width;
  bitmap->Height = height;
  bitmap->BitsPerPixel = bitsPerPixel;
  bitmap->BytesPerLine = static_cast<int>(vxkrn::Stride(width, bitsPerPixel));
  bitmap->Orientation = ORIENT_BOTTOM_UP;
  bitmap->ColorOrder = bitsPerPixel > 8 ? ORDER_BGR : ORDER_RGB;
  bitmap->XResolution = vxkrn::kDefaultDpi;
  bitmap->YResolution = vxkrn::kDefaultDpi;
  return STATUS_OK;
}

int VX_AllocateBitmap(_BITMAPHANDLE* bitmap, int option) {
  if (bitmap == nullptr || option != BITMAP_ALLOCATE_PIXELS) return STATUS_BAD_PARAMETER;
  return vxkrn::AllocateBitmap(bitmap, vxkrn::FreshPixels::kBlank);
}

int vxkrn::AllocateBitmap(_BITMAPHANDLE* bitmap, FreshPixels fresh) noexcept {
  if (bitmap->Pixels != nullptr || bitmap->Height < 1 || bitmap->BytesPerLine < 1)
    return STATUS_BAD_PARAMETER;
  const auto bytes = static_cast<uint64_t>(bitmap->BytesPerLine) * static_cast<uint64_t>(bitmap->Height);
  if (bytes > SIZE_MAX) return STATUS_NO_MEMORY;
  const auto allocate = fresh == FreshPixels::kBlank ? memory::AllocateZeroed : memory::Allocate;
  void* pixels = allocate(static_cast<std::size_t>(bytes), {"kernel/Bitmap", __LINE__});
  if (pixels == nullptr) return STATUS_NO_MEMORY;
  bitmap->Pixels = static_cast<unsigned char*>(pixels);
  bitmap->Flags |= BITMAP_ALLOCATED;
  return STATUS_OK;
}

void VX_FreeBitmap(_BITMAPHANDLE* bitmap) {
  if (bitmap == nullptr) return;
  vxkrn::memory::Free(bitmap->Pixels);
  vxkrn::memory::Free(bitmap->Palette);
  vxkrn::memory::Free(bitmap->Region);
  bitmap->Pixels = nullptr;
  bitmap->Palette = nullptr;
  bitmap->Region = nullptr;
  bitmap->ColorCount = 0;
  bitmap->RegionBytesPerLine = 0;
  bitmap->AccessCount = 0;
  bitmap->Flags = 0;
}

int VX_IntAccessBitmap(_BITMAPHANDLE* bitmap, int option) {
  if (bitmap == nullptr || option != BITMAP_ACCESS_ROWS || bitmap->Pixels == nullptr ||
      bitmap->AccessCount == UINT_MAX) {
    return STATUS_BAD_PARAMETER;
  }
  ++bitmap->AccessCount;
  return STATUS_OK;
}

int VX_IntReleaseBitmap(_BITMAPHANDLE* bitmap, int option, int status) {
  if (bitmap == nullptr || option != BITMAP_RELEASE_ROWS || bitmap->AccessCount == 0)
    return STATUS_BAD_PARAMETER;
  --bitmap->AccessCount;
  vxkrn::FilterCall* call = vxkrn::ThisCall().filterCall;
  if (status != STATUS_READ_ERROR || call == nullptr || !call->toleratesMissingMask) return status;
  call->isMaskCut = true;
  return STATUS_OK;
}

int VX_GetBitmapRow(_BITMAPHANDLE* bitmap, unsigned char* buffer, int row, unsigned int byteCount) {
  if (!HasRow(bitmap, buffer, row, byteCount)) return STATUS_BAD_PARAMETER;
  std::memcpy(buffer, vxkrn::StoredRow(*bitmap, row), byteCount);
  return static_cast<int>(byteCount);
}

int VX_GetBitmapColors(_BITMAPHANDLE* bitmap, unsigned char* rgba, int row) {
  if (!HasRow(bitmap, rgba, row, 0)) return STATUS_BAD_PARAMETER;
  vxkrn::ReadRgba(*bitmap, vxkrn::ColorsOf(*bitmap), row, rgba);
  return 4 * bitmap->Width;
}

int VX_PutBitmapRow(_BITMAPHANDLE* bitmap, const unsigned char* buffer, int row, unsigned int byteCount) {
  if (!HasRow(bitmap, buffer, row, byteCount)) return STATUS_BAD_PARAMETER;
  std::memcpy(vxkrn::StoredRow(*bitmap, row), buffer, byteCount);
  return static_cast<int>(byteCount);
}
