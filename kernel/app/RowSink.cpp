// The row callback. Trusts no row number and no size: the file may have changed since it was described.
#include "app/RowSink.h"

#include <cstring>

#include "base/Errors.h"
#include "base/Memory.h"

namespace vxkrn {
namespace {

int FailForChange() {
  return Fail({STATUS_BAD_FORMAT, VX_REASON_CHANGED_WHILE_READ},
              "the file changed while it was read, or contradicts itself");
}

bool IsBlank(const unsigned char* row, std::size_t count) {
  return row[0] == 0 && std::memcmp(row, row + 1, count - 1) == 0;
}

}  // namespace

int RowSink::Allocate(int bitsPerPixel) {
  const int width = plan_.info.Width;
  const int status = AllocatePixels(width, plan_.bandCount, bitsPerPixel, picture_);
  rowBytes_ = static_cast<std::size_t>(PixelBytes(width, bitsPerPixel));
  return status;
}

int RowSink::Callback(IMAGEINFO* /*info*/, _BITMAPHANDLE* bitmap, unsigned char* row, unsigned int flags,
                      int rowNumber, int /*lineCount*/, void* userData) {
  auto* sink = static_cast<RowSink*>(userData);
  return sink->Take(bitmap->Orientation, row, (flags & ROW_FLAG_UNCOMPRESSED) != 0, rowNumber);
}

/// A PNG page's depth is known only once it is decoded.
int RowSink::CheckPng() {
  if (plan_.isPng != context_.sawPng) return FailForChange();
  if (!plan_.isPng || rowBytes_ != 0) return STATUS_OK;
  if (context_.png.width != plan_.info.Width || context_.png.height != plan_.info.Height) {
    return FailForChange();
  }
  return Allocate(context_.png.bitsPerPixel);
}

/// Whether the next row may come without all its bytes: the filter then leaves what the row buffer held. Only
/// a picture's last row may end early unless truncated files are taken.
bool RowSink::MayRunShortAfter(int rowNumber) const noexcept {
  const int rows = plan_.filterCutsBand ? plan_.bandCount : plan_.info.Height;
  return plan_.options.allow_truncated != 0 || rowNumber >= rows - 2;
}

int RowSink::Take(int orientation, unsigned char* row, bool isUncompressed, int rowNumber) {
  const int status = CheckPng();
  if (status != STATUS_OK) return status;

  const int height = plan_.info.Height;
  const int count = plan_.bandCount;
  const bool isCut = plan_.filterCutsBand && isUncompressed;
  if (rowNumber < 0 || rowNumber >= (isCut ? count : height)) return FailForChange();
  if (rowNumber >= plan_.rowsTouched) return kAllRowsTaken;
  if (!plan_.isPng && picture_->record.BitsPerPixel == 32) {
    pixelBits_ |= vxkrn::PixelBits(row, rowBytes_ / 4);
  }

  // Rows of a band that the filter cut start at the band's first stored row.
  const int inBand = isCut ? FlipRow(rowNumber, count, orientation)
                           : FlipRow(rowNumber, height, orientation) - plan_.bandFirst;
  const bool isWanted = inBand >= 0 && inBand < count;
  // Fresh pixels are 0 already: blank rows of run-length coded pictures cost neither time nor pages.
  if (isWanted && (isUncompressed || !IsBlank(row, rowBytes_))) {
    std::memcpy(StoredRow(picture_->record, FlipRow(inBand, count, orientation)), row, rowBytes_);
  }
  ++rowsTaken_;
  if (isUncompressed && MayRunShortAfter(rowNumber)) std::memset(row, 0, rowBytes_);
  return STATUS_OK;
}

}  // namespace vxkrn
