// vx_save_rows: rows that an application gives from the top, saved as a picture is. What is asked for twice,
// or in another order than it is given in, is kept.
#include <algorithm>
#include <cstring>

#include "app/Save.h"
#include "base/Errors.h"
#include "format/Rules.h"

namespace vxkrn {
namespace {

class GivenRows final : public RowProvider {
 public:
  /// @param record what the picture is like. May throw std::bad_alloc.
  GivenRows(const vx_rows& rows, vx_give_row_function give, void* user, const _BITMAPHANDLE& record)
      : mayRepeat_(rows.may_repeat != 0),
        give_(give),
        user_(user),
        like_(record),
        row_(static_cast<std::size_t>(record.BytesPerLine)) {
    like_.Palette = nullptr;  // the picture's
    SetProvider(&like_, this);
  }

  [[nodiscard]] bool IsSequential() const noexcept override { return kept_.Pixels == nullptr; }
  const uint8_t* Read(int row) override { return kept_.Pixels != nullptr ? StoredRow(kept_, row) : Ask(row); }
  void PrepareForAnotherPass() override {
    if (!mayRepeat_) Keep();
  }
  void PrepareForAnyOrder() override { Keep(); }

 private:
  void Keep();
  const uint8_t* Ask(int row);

  bool mayRepeat_;
  vx_give_row_function give_;
  void* user_;
  _BITMAPHANDLE like_;  // it owns nothing
  memory::Vector<uint8_t> row_;
  int last_ = -1;  // the row that was given last
  OwnedBitmap kept_;
};

const uint8_t* GivenRows::Ask(int row) {
  if (row == last_) return row_.data();
  last_ = row;
  std::fill(row_.begin(), row_.end(), uint8_t{0});  // what pads a row is the same whoever gives it
  if (give_(user_, row, row_.data()) == 0) {
    FailRow(Fail({STATUS_READ_ERROR, VX_REASON_SYSTEM_ERROR}, "row ", row, " of ", like_.Height,
                 " was not given"));
  }
  return row_.data();
}

void GivenRows::Keep() {
  if (kept_.Pixels != nullptr) return;
  OwnedBitmap all;  // apart until it is whole: its rows are asked for through this object
  if (const int status = CopyPixels(like_, &all); status != STATUS_OK) FailRow(status);
  std::swap<_BITMAPHANDLE>(all, kept_);
}

int CheckRows(const vx_rows& rows) {
  const auto isSide = [](int side) { return side >= 1 && side <= bmp::kLongestSide; };
  const int depth = rows.bits_per_pixel;
  if (!isSide(rows.width) || !isSide(rows.height)) {
    return Fail({VX_BAD_DIMENSIONS, VX_REASON_BAD_SIZE, rows.width, rows.height}, rows.width, " x ",
                rows.height, " pixels; a side can have 1 to ", bmp::kLongestSide);
  }
  if (!IsDepth(depth)) {
    return Fail({VX_BAD_BPP, VX_REASON_BAD_DEPTH, depth}, "bits_per_pixel is ", depth,
                "; it must be 1, 4, 8, 16, 24 or 32");
  }
  const bool hasPalette = rows.palette != nullptr && rows.palette_count >= 1;
  if (depth <= 8 && (!hasPalette || rows.palette_count > 1 << depth)) {
    return FailForArgument("palette_count is ", rows.palette_count, "; indices of ", depth,
                           " bits need a palette of 1 to ", 1 << depth, " entries");
  }
  return STATUS_OK;
}

int SetPalette(const vx_rows& rows, _BITMAPHANDLE* record) {
  if (record->BitsPerPixel > 8) return STATUS_OK;
  RGBQUAD palette[256] = {};
  for (int i = 0; i < rows.palette_count; ++i) {
    const uint8_t* entry = rows.palette + std::ptrdiff_t{4} * i;
    palette[i] = {entry[0], entry[1], entry[2], 0};
  }
  const int status = VX_SetBitmapNewPalette(record, palette, 1 << record->BitsPerPixel);
  return status == STATUS_OK ? status : FailForMemory("a palette", sizeof palette);
}

int Describe(const vx_rows& rows, vx_bitmap* picture) {
  _BITMAPHANDLE* record = &picture->record;
  const int depth = rows.bits_per_pixel;
  int status = VX_InitBitmap(record, sizeof *record, rows.width, rows.height, depth);
  if (status != STATUS_OK) {
    return Fail({status, VX_REASON_BAD_SIZE, rows.width, rows.height}, "no bitmap can be so wide");
  }
  record->Orientation = ORIENT_TOP_DOWN;
  record->ColorOrder = bmp::ImpliedColorOrder(depth, rows.color_order == VX_ORDER_565);
  if (rows.x_dpi > 0) record->XResolution = rows.x_dpi;
  if (rows.y_dpi > 0) record->YResolution = rows.y_dpi;
  if (depth == 32 && rows.has_alpha != 0) record->Flags |= kBitmapHasAlpha;
  picture->rowsPresent = rows.height;
  status = SetPalette(rows, record);
  picture->TakeColors();
  return status;
}

int SaveRows(const vx_rows& rows, vx_give_row_function give, void* user, const char* path,
             const vx_save_options* options) {
  vx_bitmap picture;
  int status = CheckRows(rows);
  if (status == STATUS_OK) status = Describe(rows, &picture);
  if (status != STATUS_OK) return status;
  auto given = memory::Make<GivenRows>({"kernel/SaveRows", __LINE__}, rows, give, user, picture.record);
  if (given == nullptr) return FailForMemory("the rows", sizeof(GivenRows));
  SetProvider(&picture.record, given.get());
  picture.provider.reset(given.release());
  return SavePictureAs(picture, path, options);
}

}  // namespace
}  // namespace vxkrn

int vx_save_rows(const vx_rows* rows, vx_give_row_function give, void* user, const char* path,
                 const vx_save_options* options) {
  return vxkrn::Guarded([&]() -> int {
    if (rows == nullptr || give == nullptr || path == nullptr) {
      return vxkrn::FailForArgument("the rows, the function that gives them and the path must be given");
    }
    return vxkrn::SaveRows(*rows, give, user, path, options);
  });
}
