// The save driver: refuses what a format cannot hold before anything is touched, then writes a new file with
// one image, or has the image made a page of an old one.
#include "format/SaveRules.h"

#include "Drivers/Save.h"

#include "Kernel.h"
#include "Pages/AddPage.h"
#include "Pages/PngPage.h"
#include "Write/Conversion.h"
#include "Write/HeaderWriter.h"
#include "Write/IconMasks.h"
#include "Write/RowWriter.h"
#include "Write/RunLengthEncoder.h"
#include "format/HeaderEncoding.h"
#include "format/Rules.h"

namespace bmp {
namespace {

int CheckRequest(const _SAVEDISPATCH& dispatch) {
  if (IsRawFormat(dispatch.Format)) return STATUS_NOT_SUPPORTED;
  const SaveRule& rule = SaveRuleOf(dispatch.Format);
  if (!rule.depths.Has(dispatch.BitsPerPixel)) return STATUS_BAD_BPP;
  const _BITMAPHANDLE& bitmap = *dispatch.Bitmap;
  const bool isTooLarge = bitmap.Width > rule.largestSide || bitmap.Height > rule.largestSide;
  return rule.largestSide != 0 && isTooLarge ? STATUS_BAD_DIMENSIONS : STATUS_OK;
}

/// The flags that BeginSave and GetSaveRow get.
unsigned int ConversionFlags(const _SAVEDISPATCH& dispatch) {
  if (dispatch.Bitmap->ColorOrder == ORDER_565) return SAVE_ORDER_565;
  return dispatch.BitsPerPixel > 8 ? SAVE_DIRECT_COLOR : 0;
}

/// Whether the image is to become a page of a file that exists.
bool AsksForPage(const SAVEOPTIONS& options) {
  return (options.Flags & (SAVE_PAGE_REPLACE | SAVE_PAGE_INSERT)) != 0 || options.PageNumber > 1;
}

RowForm FormOfRows(SaveType type, int bitsPerPixel) {
  if (type != SAVETYPE_BMP_RLE) return RowForm::kPlain;
  return bitsPerPixel == 8 ? RowForm::kRle8 : RowForm::kRle4;
}

void Patch(HANDLE file, uint32_t value) {
  Block<4> bytes;
  StoreU32(bytes, 0, value);
  static_cast<void>(WriteBlock(file, bytes));
}

/// Ends a run-length coded image and puts the sizes that are known now into the headers. Readers do without
/// the sizes, so the save does not fail where they cannot be written.
int FinishRunLength(HANDLE file, int bitsPerPixel) {
  if (WriteEndOfBitmap(file) != STATUS_OK) return STATUS_WRITE_ERROR;
  const auto end = static_cast<uint32_t>(VX_RedirectedSeek(file, 0, VX_SEEK_CURRENT));
  const uint32_t dataOffset =
      kFileHeaderSize + kInfoHeaderSize + static_cast<uint32_t>(sizeof(RGBQUAD)) * PaletteSize(bitsPerPixel);
  if (SeekTo(file, kFileSizeOffset)) Patch(file, end);
  if (VX_RedirectedSeek(file, kImageSizeOffset, VX_SEEK_START) != -1) Patch(file, end - dataOffset);
  return STATUS_OK;
}

int WriteRows(HANDLE file, const _SAVEDISPATCH& dispatch, SaveType type, const Mask& mask, RowWriter& rows) {
  int status = rows.WriteColorRows(file);
  if (status == STATUS_OK && type == SAVETYPE_BMP_RLE) {
    status = FinishRunLength(file, dispatch.BitsPerPixel);
  }
  if (status == STATUS_OK && mask.Record() != nullptr) status = rows.WriteMaskRows(file, mask.Record());
  return status;
}

/// Writes a new file. What was acquired goes in the reverse of the order in which it is declared here.
int WriteNewFile(_SAVEDISPATCH& dispatch, SaveType type) {
  const Conversion conversion(dispatch);
  if (conversion.Status() < STATUS_OK) return conversion.Status();

  RowWriter rows(*dispatch.Bitmap, conversion, FormOfRows(type, dispatch.BitsPerPixel));
  Mask mask;
  const bool needsMask = type == SAVETYPE_ICO || type == SAVETYPE_CUR;
  if (needsMask && !mask.Make(dispatch.Bitmap)) return STATUS_NO_MEMORY;

  const File file(dispatch.FileName, kForNewImage);
  if (!file.IsOpen()) return STATUS_OPEN_WRITE_ERROR;
  int status =
      WriteHeaders(file.Handle(), conversion.Image(), dispatch.BitsPerPixel, type, conversion.SaveFile());
  if (status == STATUS_OK) status = rows.Prepare();
  if (status != STATUS_OK) return status;
  if (conversion.Status() != STATUS_OK) return conversion.Status();
  return WriteRows(file.Handle(), dispatch, type, mask, rows);
}

}  // namespace

int Save(_SAVEDISPATCH& dispatch) {
  const int status = CheckRequest(dispatch);
  if (status != STATUS_OK) return status;
  dispatch.Format = FormatToSave(dispatch.Format, dispatch.BitsPerPixel);
  dispatch.Flags |= ConversionFlags(dispatch);
  if (IsIconFormat(dispatch.Format)) {
    if (AsksForPage(*dispatch.SaveOptions)) {
      const int added = AddPage(dispatch);
      if (added != STATUS_OPEN_WRITE_ERROR) return added;  // without a file to edit there will be a new one
    }
    if (dispatch.Format == FMT_VISTA_ICO) return WriteNewPngIcon(dispatch);
  }
  return WriteNewFile(dispatch, SaveRuleOf(dispatch.Format).type);
}

}  // namespace bmp
