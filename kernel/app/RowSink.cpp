// The row callback. Trusts no row number and no size: the file may have changed since it was described.
#include "app/RowSink.h"

#include <algorithm>
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
  // Run-length coded pictures may be blank for the most part.
  isBlank_ = plan_.info.Compression[0] != '\0';
  rowsSet_ = 0;
  const int status = AllocatePixels(width, plan_.bandCount, bitsPerPixel, picture_,
                                    isBlank_ ? FreshPixels::kBlank : FreshPixels::kAny);
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

/// Makes the stored rows before this one what they should be, where nothing came for them.
void RowSink::BlankUpTo(int storedRow) noexcept {
  const auto bytes = static_cast<std::size_t>(picture_->record.BytesPerLine);
  for (; rowsSet_ < storedRow; ++rowsSet_) {
    if (!isBlank_) std::memset(StoredRow(picture_->record, rowsSet_), 0, bytes);
  }
}

void RowSink::Put(int storedRow, const unsigned char* row) noexcept {
  BlankUpTo(storedRow);
  rowsSet_ = std::max(rowsSet_, storedRow + 1);
  // Blank rows of run-length coded pictures cost neither time nor pages.
  if (isBlank_ && IsBlank(row, rowBytes_)) return;
  unsigned char* const stored = StoredRow(picture_->record, storedRow);
  std::memcpy(stored, row, rowBytes_);
  std::memset(stored + rowBytes_, 0, static_cast<std::size_t>(picture_->record.BytesPerLine) - rowBytes_);
}

void RowSink::Finish() noexcept {
  if (picture_->record.Pixels != nullptr) BlankUpTo(picture_->record.Height);
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
  if (inBand >= 0 && inBand < count) Put(FlipRow(inBand, count, orientation), row);
  ++rowsTaken_;
  if (isUncompressed && MayRunShortAfter(rowNumber)) std::memset(row, 0, rowBytes_);
  return STATUS_OK;
}

}  // namespace vxkrn
