// Translates between the contract's records and the PNG codec. Decodes nothing itself.
#include "filter/PngCallbacks.h"

#include <cstring>

#include "base/CallRecord.h"
#include "png/Png.h"

namespace vxkrn {
namespace {

void NotePng(const PngDescription& description) noexcept {
  FilterCall* context = ThisCall().filterCall;
  if (context == nullptr) return;
  context->sawPng = true;
  context->png = description;
}

}  // namespace

void TellOfPng(const PngDescription& description, IMAGEINFO* info) noexcept {
  info->Format = FMT_PNG;
  info->Width = description.width;
  info->Height = description.height;
  info->BitsPerPixel = description.bitsPerPixel;
  info->Orientation = ORIENT_TOP_DOWN;
  info->ColorOrder = description.bitsPerPixel > 8 ? ORDER_BGR : ORDER_RGB;
  info->XResolution = description.xDpi;
  info->YResolution = description.yDpi;
  std::strncpy(info->Compression, "PNG", sizeof info->Compression);
}

int DescribePngPage(unsigned char* buffer, IMAGEINFO* info, unsigned int infoRecordSize,
                    unsigned int bufferSize, int /*reserved0*/, int /*reserved1*/) {
  if (buffer == nullptr || info == nullptr || infoRecordSize != sizeof *info) return STATUS_BAD_PARAMETER;
  PngDescription description = {};
  const int status = DescribePng(buffer, bufferSize, &description);
  if (status != STATUS_OK) return status;
  TellOfPng(description, info);
  NotePng(description);
  return STATUS_OK;
}

int LoadPngPage(unsigned char* buffer, _BITMAPHANDLE* bitmap, unsigned int bitmapRecordSize, int bitsPerPixel,
                int /*reserved1*/, unsigned int bufferSize, int /*reserved0*/, IMAGEINFO* /*info*/) {
  if (buffer == nullptr || bitmap == nullptr || bitmapRecordSize != sizeof *bitmap) {
    return STATUS_BAD_PARAMETER;
  }
  PngDescription description = {};
  const int status = DecodePng(buffer, bufferSize, bitsPerPixel, bitmap, &description);
  if (status == STATUS_OK) NotePng(description);
  return status;
}

}  // namespace vxkrn
