// PNG rows come from the top, so a band is a piece of what was decoded.
#include "app/PngFile.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "app/Describe.h"
#include "base/Errors.h"
#include "beyond/PngReader.h"
#include "files/OpenFile.h"
#include "filter/PngCallbacks.h"
#include "format/IconDirectory.h"
#include "png/Png.h"

namespace vxkrn {
namespace {

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

int DescribeStream(const PngInput& input, IMAGEINFO* info) {
  PngDescription description = {};
  const int status = DescribePng(input, &description);
  if (status != STATUS_OK) return status;
  *info = IMAGEINFO{};
  info->StructSize = sizeof *info;
  info->PageNumber = 1;
  info->TotalPages = 1;
  TellOfPng(description, info);
  const uint64_t all = static_cast<uint64_t>(PixelBytes(info->Width, info->BitsPerPixel)) *
                       static_cast<unsigned int>(info->Height);
  info->DataSize = static_cast<int>(static_cast<uint32_t>(all));
  return STATUS_OK;
}

int LoadStream(const PngInput& input, int askedDepth, int first, int count, vx_bitmap* picture,
               ColorSpace* colors) {
  PngDescription description = {};
  _BITMAPHANDLE* record = &picture->record;
  int status = DecodePng(input, askedDepth, record, &description, colors);
  if (status == STATUS_OK && count < record->Height) status = Cut(record, first, count);
  if (status != STATUS_OK) return status;
  picture->rowsPresent = record->Height;
  if (description.hasAlpha) record->Flags |= kBitmapHasAlpha;
  picture->TakeColors();
  return STATUS_OK;
}

/// The stream of a page: to its end or, if it has none, as far as directory and file go.
struct Body {
  memory::Bytes bytes;
  uint32_t size = 0;
  PngBlock stream = {};  ///< what is not read yet

  PngInput AsInput() noexcept {
    stream = {bytes.get(), size};
    return InputFrom(stream);
  }
};

int ReadBody(const vx_source& source, const IconPart& page, Body* body) {
  const int64_t fileSize = source.Size();
  const uint64_t room = fileSize < 0 ? 0 : static_cast<uint64_t>(fileSize) - page.bodyOffset;
  const uint64_t wanted = page.ownSize != 0 ? page.ownSize : page.entry.BytesInRes;
  body->size = static_cast<uint32_t>(std::min<uint64_t>({wanted, room, kLastPosition}));
  body->bytes = memory::MakeBytes(std::max<uint32_t>(body->size, 1), {"kernel/PngFile", __LINE__});
  if (body->bytes == nullptr) return FailForMemory("reading it", body->size);
  if (source.Peek(body->bytes.get(), body->size, page.bodyOffset) == body->size) return STATUS_OK;
  return Fail(Cause(STATUS_READ_ERROR, VX_REASON_SYSTEM_ERROR).At(page.bodyOffset), "not all of the ",
              body->size, " bytes at byte ", page.bodyOffset, " can be read");
}

}  // namespace

bool IsPngFile(const vx_source& source) noexcept {
  return source.BlockAt<bmp::kPngSignatureSize>(0) == bmp::kPngSignatures[0];
}

int SettlePngFile(const vx_source& source, const ByteReader& bytes, int status) noexcept {
  if (status != STATUS_BAD_FORMAT || !bytes.HasFailed()) return SettlePng(status);
  return Fail({STATUS_READ_ERROR, VX_REASON_SYSTEM_ERROR}, "not all of its ", source.Size(),
              " bytes can be read");
}

int DescribePngFile(const vx_source& source, IMAGEINFO* info) {
  ByteReader bytes(source, 0);
  return SettlePngFile(source, bytes, DescribeStream(InputFrom(bytes), info));
}

int LoadPngFile(const vx_source& source, int first, int count, vx_bitmap* picture) {
  ByteReader bytes(source, 0);
  return SettlePngFile(source, bytes,
                       LoadStream(InputFrom(bytes), 0, first, count, picture, &picture->colorSpace));
}

int DescribePngBody(const vx_source& source, const IconPart& page, IMAGEINFO* info) {
  Body body;
  const int status = ReadBody(source, page, &body);
  return status == STATUS_OK ? DescribeStream(body.AsInput(), info) : status;
}

/// An icon's entry says to which depth; a cursor's has no room for one.
int LoadPngBody(const vx_source& source, const IconPart& page, int first, int count, vx_bitmap* picture) {
  Body body;
  const int status = ReadBody(source, page, &body);
  if (status != STATUS_OK) return status;
  const int askedDepth = page.kind == IconPart::Kind::kIcon ? page.entry.BitCount : 0;
  return LoadStream(body.AsInput(), askedDepth, first, count, picture, nullptr);
}

}  // namespace vxkrn
