// Describes PNG streams, and decodes them into bitmaps: rows are read straight into them.
#include <algorithm>
#include <cstring>

#include "base/Errors.h"
#include "base/Memory.h"
#include "bitmap/Bitmap.h"
#include "png/Png.h"
#include "png/PngRows.h"

namespace vxkrn {

PngInput InputFrom(PngBlock& block) noexcept {
  return {&block, [](void* owner, unsigned char* to, std::size_t count) {
            auto* from = static_cast<PngBlock*>(owner);
            const std::size_t got = std::min(count, from->left);
            if (got > 0)
              std::memcpy(to, from->bytes, got);  // a stream without bytes may have no address either
            from->bytes += got;
            from->left -= got;
            return got;
          }};
}

int InitPngRecord(const PngDescription& description, _BITMAPHANDLE* bitmap) {
  const int depth = description.bitsPerPixel;
  const int status = VX_InitBitmap(bitmap, sizeof *bitmap, description.width, description.height, depth);
  if (status != STATUS_OK) {
    return Fail({status, VX_REASON_BAD_SIZE, description.width, description.height}, "its PNG stream says ",
                description.width, " x ", description.height, " pixels, which is too wide");
  }
  if (description.hasAlpha) bitmap->Flags |= kBitmapHasAlpha;
  bitmap->Orientation = ORIENT_TOP_DOWN;
  bitmap->XResolution = description.xDpi;
  bitmap->YResolution = description.yDpi;
  return STATUS_OK;
}

int DescribePng(const PngInput& input, PngDescription* description) {
  PngRows rows(input, false);
  return rows.ReadHeader(description, nullptr);
}

int DescribePng(const unsigned char* bytes, std::size_t size, PngDescription* description) {
  PngBlock block = {bytes, size};
  return DescribePng(InputFrom(block), description);
}

namespace {

/// Makes bitmap ready to take the pixels.
int Prepare(const PngDescription& description, _BITMAPHANDLE* bitmap) {
  const int depth = description.bitsPerPixel;
  const uint64_t bytes = PictureBytes(description.width, description.height, depth);
  if (!memory::Fits(bytes)) return FailForMemory("the PNG picture", bytes);
  int status = InitPngRecord(description, bitmap);
  if (status == STATUS_OK) status = VX_AllocateBitmap(bitmap, BITMAP_ALLOCATE_PIXELS);
  return status == STATUS_NO_MEMORY ? FailForMemory("the PNG picture", bytes) : status;
}

/// @param rowsThere null where the stream must be whole
int Decode(const PngInput& input, int askedDepth, _BITMAPHANDLE* bitmap, PngDescription* description,
           ColorSpace* colors, int* rowsThere) {
  *bitmap = _BITMAPHANDLE{};
  PngRows rows(input, colors != nullptr);
  int status = rows.ReadHeader(description, colors);
  if (status != STATUS_OK) return status;
  description->bitsPerPixel = PngTargetDepth(description->bitsPerPixel, askedDepth);
  status = Prepare(*description, bitmap);
  if (status != STATUS_OK) return status;
  status = rowsThere == nullptr ? rows.ReadPicture(*bitmap) : rows.ReadParts(*bitmap, rowsThere);
  if (status == STATUS_OK && bitmap->BitsPerPixel <= 8) status = rows.AttachPalette(bitmap);
  if (status != STATUS_OK) VX_FreeBitmap(bitmap);
  return status;
}

}  // namespace

int DecodePng(const unsigned char* bytes, std::size_t size, int askedDepth, _BITMAPHANDLE* bitmap,
              PngDescription* description, ColorSpace* colors) {
  PngBlock block = {bytes, size};
  return DecodePng(InputFrom(block), askedDepth, bitmap, description, colors);
}

int DecodePng(const PngInput& input, int askedDepth, _BITMAPHANDLE* bitmap, PngDescription* description,
              ColorSpace* colors) {
  return Decode(input, askedDepth, bitmap, description, colors, nullptr);
}

int DecodePngRows(const PngInput& input, _BITMAPHANDLE* bitmap, PngDescription* description, int* rowsThere) {
  return Decode(input, 0, bitmap, description, nullptr, rowsThere);
}

}  // namespace vxkrn
