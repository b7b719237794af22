// Pieces follow whoever asks, downwards or upwards, so that every row is loaded once by those who take them
// in turn.
#include "app/PieceRows.h"

#include <algorithm>
#include <utility>

#include "base/CallRecord.h"
#include "base/Errors.h"
#include "convert/ToSrgb.h"

namespace vxkrn {
namespace {

bool AreAlike(const _BITMAPHANDLE& one, const _BITMAPHANDLE& other) noexcept {
  return one.Width == other.Width && one.BitsPerPixel == other.BitsPerPixel &&
         one.Orientation == other.Orientation;
}

}  // namespace

int PieceRows::Describe(vx_bitmap* sample, int height, vx_bitmap* picture) {
  _BITMAPHANDLE* record = &picture->record;
  const int status =
      VX_InitBitmap(record, sizeof *record, sample->record.Width, height, sample->record.BitsPerPixel);
  if (status != STATUS_OK)
    return Fail({status, VX_REASON_BAD_SIZE, sample->record.Width, height}, "no bitmap can hold it");
  record->Orientation = sample->record.Orientation;
  record->ColorOrder = sample->record.ColorOrder;
  record->XResolution = sample->record.XResolution;
  record->YResolution = sample->record.YResolution;
  record->Flags = sample->record.Flags & kBitmapHasAlpha;
  std::swap(record->Palette, sample->record.Palette);
  std::swap(record->ColorCount, sample->record.ColorCount);
  picture->rowsPresent = height;
  return STATUS_OK;
}

int PieceRows::Settle(bool toSrgb, int order, vx_bitmap* picture) {
  _BITMAPHANDLE* record = &picture->record;
  if (toSrgb && picture->colorSpace.NeedsPlace()) {
    int status = PrepareForSrgb(*picture, &transform_);
    convertsColors_ = record->BitsPerPixel > 8;
    if (status == STATUS_OK && !convertsColors_) status = ConvertPixels(transform_, picture);
    if (status != STATUS_OK) return status;
    picture->colorSpace = {.kind = VX_COLOR_SPACE_SRGB};
  }
  picture->TakeColors();
  all_ = *record;
  order_ = order;
  if (order != VX_ORDER_FILE && record->BitsPerPixel == 16) record->ColorOrder = order;
  SetProvider(record, this);
  return STATUS_OK;
}

int PieceRows::GoTo(int row) {
  const auto rows = static_cast<int>(std::clamp<int64_t>(pieceBytes_ / all_.BytesPerLine, 1, all_.Height));
  const bool goesUp = piece_ != nullptr && row < pieceFirst_ && !IsSequential();
  int first = goesUp ? std::max(row - rows + 1, 0) : row;
  piece_ = nullptr;  // before there is another one
  auto piece = memory::Make<vx_bitmap>({"kernel/PieceRows", __LINE__});
  if (piece == nullptr) return FailForMemory("a bitmap record", sizeof(vx_bitmap));
  int status = LoadPiece(&first, std::min(rows, all_.Height - first), piece.get());
  if (status != STATUS_OK) return status;
  if (!AreAlike(piece->record, all_)) {
    return NameFailure(
        Fail({STATUS_BAD_FORMAT, VX_REASON_CHANGED_WHILE_READ}, "the file changed while it was read"), file_);
  }
  if (convertsColors_) status = ConvertPixels(transform_, piece.get());
  if (status != STATUS_OK) return NameFailure(status, file_);
  if (order_ != VX_ORDER_FILE) piece->ConvertOrder(order_);
  piece_ = std::move(piece);
  pieceFirst_ = first;
  return STATUS_OK;
}

const uint8_t* PieceRows::Read(int row) {
  const int fromTop = FlipRow(row, all_.Height, all_.Orientation);
  const bool isHere =
      piece_ != nullptr && fromTop >= pieceFirst_ && fromTop - pieceFirst_ < piece_->record.Height;
  if (!isHere) {
    if (const int status = GoTo(fromTop); status != STATUS_OK) FailRow(status);
  }
  return StoredRow(piece_->record, piece_->Stored(fromTop - pieceFirst_));
}

}  // namespace vxkrn
