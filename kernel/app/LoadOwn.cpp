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

int FailForRow(const vx_source& source, const LoadPlan& plan, int row) {
  const int64_t size = source.Size();
  return Fail(Cause(STATUS_READ_ERROR, VX_REASON_ROWS_MISSING, plan.image->layout.pixelOffset).At(size),
              "the file ends at byte ", size, ", in row ", row, " of the ", plan.info.Height,
              " that are stored");
}

/// Reads rows until the data ends. What is missing stays 0 where that is allowed.
int ReadRows(const vx_source& source, const LoadPlan& plan, RowReader& reader, vx_bitmap* picture,
             uint32_t* fourthBytes) {
  const int first = FirstStoredRow(plan.bandFirst, plan.bandCount, plan.info.Height, plan.info.Orientation);
  int status = first > 0 ? reader.Skip(first) : int{STATUS_OK};
  const bool has32 = picture->record.BitsPerPixel == 32;
  int row = 0;
  for (; status == STATUS_OK && row < plan.bandCount; ++row) {
    uint8_t* const pixels = StoredRow(picture->record, row);
    status = reader.Next(pixels);
    if (has32) *fourthBytes |= FourthBytes(pixels, static_cast<std::size_t>(picture->record.Width));
  }
  if (status == STATUS_OK || !Detail().Empty()) return status;
  const bool isLastRow = row == plan.info.Height && IsPlain(plan.image->layout, plan.image->decoder);
  if (plan.options.allow_truncated == 0 && !isLastRow) return FailForRow(source, plan, first + row);
  picture->rowsPresent = std::max(row - 1, 0);
  return STATUS_OK;
}

int SetPalette(const vx_source& source, const LoadPlan& plan, vx_bitmap* picture) {
  _BITMAPHANDLE* record = &picture->record;
  if (record->BitsPerPixel > 8) return STATUS_OK;
  RGBQUAD palette[256];
  const int status = ReadPalette(source, plan.image->layout, palette);
  return status == STATUS_OK ? VX_SetBitmapNewPalette(record, palette, 1 << record->BitsPerPixel) : status;
}

}  // namespace

int SetOwnRegion(const vx_source& source, const LoadPlan& plan, _BITMAPHANDLE* record) {
  if (!plan.image->icon) return STATUS_OK;
  const int first = FirstStoredRow(plan.bandFirst, plan.bandCount, plan.info.Height, record->Orientation);
  return SetRegionOf(source, *plan.image->icon, first, record);
}

int LoadOwn(vx_source& source, const LoadPlan& plan, vx_bitmap* picture, uint32_t* fourthBytes) {
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
  status = SetPalette(source, plan, picture);
  if (status == STATUS_OK) status = ReadRows(source, plan, *reader, picture, fourthBytes);
  return status == STATUS_OK ? SetOwnRegion(source, plan, record) : status;
}

}  // namespace vxkrn
