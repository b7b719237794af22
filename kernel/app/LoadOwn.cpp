// Rows of a reader go straight into the picture, in the order in which the file has them.
#include "app/LoadOwn.h"

#include <algorithm>

#include "app/PngFile.h"
#include "base/Errors.h"
#include "beyond/IconMask.h"
#include "beyond/RowReader.h"
#include "format/Rules.h"

namespace vxkrn {
namespace {

int FailForRows(const vx_source& source, const LoadPlan& plan, const RowReader& reader, int there) {
  const int64_t size = source.Size();
  const uint64_t end = reader.DataEnd();
  const bool breaksOff = size >= 0 && end < static_cast<uint64_t>(size);
  return Fail(Cause(STATUS_READ_ERROR, VX_REASON_ROWS_MISSING, there, plan.info.Height)
                  .At(breaksOff ? static_cast<int64_t>(end) : size),
              breaksOff ? "its pixel data breaks off at byte " : "the file ends at byte ",
              breaksOff ? static_cast<int64_t>(end) : size, ": ", there, " of its ", plan.info.Height,
              " rows are there");
}

/// Reads rows until the data ends. What is missing stays 0 where that is allowed.
int ReadRows(const vx_source& source, const LoadPlan& plan, RowReader& reader, vx_bitmap* picture,
             uint32_t* pixelBits) {
  const int first = FirstStoredRow(plan.bandFirst, plan.bandCount, plan.info.Height, plan.info.Orientation);
  int status = first > 0 ? reader.Skip(first) : int{STATUS_OK};
  const bool has32 = picture->record.BitsPerPixel == 32;
  int row = 0;
  for (; status == STATUS_OK && row < plan.bandCount; ++row) {
    uint8_t* const pixels = StoredRow(picture->record, row);
    status = reader.Next(pixels);
    if (has32) *pixelBits |= PixelBits(pixels, static_cast<std::size_t>(picture->record.Width));
  }
  if (status == STATUS_OK || !Detail().Empty()) return status;
  const bool isLastRow = row == plan.bandCount && IsPlain(plan.image->layout, plan.image->decoder);
  // Run-length data may end anywhere, in every coding alike; what is missing is remarked on.
  const bmp::Decoder decoder = plan.image->decoder;
  const bool isRunLength = decoder == bmp::Decoder::kRle24 || decoder == bmp::Decoder::kRunOn;
  const bool mayEnd = plan.options.allow_truncated != 0 || isRunLength;
  if (!mayEnd && !isLastRow) return FailForRows(source, plan, reader, first + row - 1);
  picture->rowsPresent = std::max(row - 1, 0);
  return STATUS_OK;
}

/// Whether some pixel of the image can be seen: a band may lie where none can.
int SeeAlpha(vx_source& source, const LoadPlan& plan, uint32_t* pixelBits) {
  memory::Owned<RowReader> reader;
  int status = MakeRowReader(source, *plan.image, &reader);
  if (status != STATUS_OK) return status;
  memory::Vector<uint8_t> row(static_cast<std::size_t>(Stride(plan.info.Width, 32)));
  for (int i = 0; status == STATUS_OK && !UseFourthByte(*pixelBits) && i < plan.info.Height; ++i) {
    std::fill(row.begin(), row.end(), uint8_t{0});
    status = reader->Next(row.data());
    *pixelBits |= PixelBits(row.data(), static_cast<std::size_t>(plan.info.Width));
  }
  return status == STATUS_OK || Detail().Empty() ? int{STATUS_OK} : status;
}

int SetPalette(const vx_source& source, const LoadPlan& plan, const RowReader& reader, vx_bitmap* picture) {
  _BITMAPHANDLE* record = &picture->record;
  if (record->BitsPerPixel > 8) return STATUS_OK;
  RGBQUAD palette[256];
  const RGBQUAD* const own = reader.Palette();
  if (own != nullptr) std::copy_n(own, std::size(palette), palette);
  const int status = own != nullptr ? int{STATUS_OK} : ReadPalette(source, plan.image->layout, palette);
  return status == STATUS_OK ? VX_SetBitmapNewPalette(record, palette, 1 << record->BitsPerPixel) : status;
}

}  // namespace

int SetOwnRegion(const vx_source& source, const LoadPlan& plan, _BITMAPHANDLE* record) {
  if (!plan.image->icon) return STATUS_OK;
  const int first = FirstStoredRow(plan.bandFirst, plan.bandCount, plan.info.Height, record->Orientation);
  return SetRegionOf(source, *plan.image->icon, first, record);
}

int LoadOwn(vx_source& source, const LoadPlan& plan, vx_bitmap* picture, uint32_t* pixelBits) {
  if (plan.IsPngHere()) {
    return LoadPngBody(source, *plan.image->icon, plan.bandFirst, plan.bandCount, picture);
  }
  memory::Owned<RowReader> reader;
  int status = MakeRowReader(source, *plan.image, &reader);
  if (status != STATUS_OK) return status;
  const RowShape shape = reader->Shape();
  status = AllocatePixels(plan.info.Width, plan.bandCount, shape.bitsPerPixel, picture);
  if (status != STATUS_OK) return status;
  _BITMAPHANDLE* record = &picture->record;
  record->Orientation = reader->IsTopDown() ? ORIENT_TOP_DOWN : ORIENT_BOTTOM_UP;
  record->ColorOrder = bmp::ImpliedColorOrder(shape.bitsPerPixel, plan.info.ColorOrder == ORDER_565);
  record->XResolution = plan.info.XResolution;
  record->YResolution = plan.info.YResolution;
  if (shape.hasAlpha) record->Flags |= kBitmapHasAlpha;
  status = SetPalette(source, plan, *reader, picture);
  if (status == STATUS_OK) status = ReadRows(source, plan, *reader, picture, pixelBits);
  const bool mayBeHidden = shape.hasAlpha && !UseFourthByte(*pixelBits) && plan.bandCount < plan.info.Height;
  if (status == STATUS_OK && mayBeHidden) status = SeeAlpha(source, plan, pixelBits);
  return status == STATUS_OK ? SetOwnRegion(source, plan, record) : status;
}

}  // namespace vxkrn
