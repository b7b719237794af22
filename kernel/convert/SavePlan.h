// What a save was asked to do, checked and complete, and the picture as its writer is shown it. Writes
// nothing.
#pragma once

#include "format/Writers.h"

#include "bitmap/Picture.h"
#include "convert/RowConverter.h"

namespace vxkrn {

struct SavePlan {
  vx_save_plan outcome;  ///< format, depth, and what is lost
  bmp::Writer writer;
  bmp::FieldMasks masks;         ///< where channels and alpha lie, for those writers that store alpha
  HotSpot hotSpot;               ///< for cursors
  const ColorSpace* colorSpace;  ///< the picture's
  RowTarget rows;                ///< how rows are converted, as far as the filter lets us choose
  /// The picture's own record, or one that borrows its pixels from it or from `copy`. Nobody frees it.
  _BITMAPHANDLE shown;
  LazyCensus census{shown};
  OwnedBitmap copy;  ///< pixels that had to be changed for the format; empty where none had to

  [[nodiscard]] int ConvertArg1() const noexcept {
    return rows.usesFixedPalette ? CONVERT_PALETTE_FIXED : CONVERT_PALETTE_BEST;
  }
  [[nodiscard]] int ConvertArg2() const noexcept { return rows.diffuses ? CONVERT_DIFFUSE : CONVERT_NEAREST; }
};

/// Checks the options (null: the defaults) against picture and format, and decides. Throws std::bad_alloc.
/// @return STATUS_OK, or a failure with its detail set. The picture must outlive the plan.
[[nodiscard]] int PlanSave(const vx_bitmap& picture, const vx_save_options* options, SavePlan* plan);

/// Remarks on what a save that went well has lost. @param page the page that was saved; 0: the whole file
void RemarkOnLosses(const SavePlan& plan, int page) noexcept;

}  // namespace vxkrn
