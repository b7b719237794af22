// What a load was asked to do, checked and complete: nothing later has to look at the options again.
#pragma once

#include <climits>
#include <optional>
#include "base/Contract.h"

#include "beyond/BitmapFile.h"
#include "files/Source.h"

namespace vxkrn {

struct LoadPlan {
  /// Whether the rows are found here, and not by the filter.
  [[nodiscard]] bool IsOwn() const noexcept { return image && !image->isFilters; }
  /// Whether they are decoded here, too.
  [[nodiscard]] bool IsDecodedHere() const noexcept {
    return IsOwn() && (image->decoder != bmp::Decoder::kFilter || IsPlain(image->layout, image->decoder));
  }

  /// Whether they are one PNG stream, which is decoded whole.
  [[nodiscard]] bool IsPngHere() const noexcept { return IsOwn() && image->icon && image->icon->isPng; }

  /// Whether any row of the page is found without the others, and nothing behind the rows belongs to them.
  /// (What the filter alone is asked for may be anything.)
  [[nodiscard]] bool HasPlainRows() const noexcept;
  /// Aims the plan at other rows of the page, which must exist, and decides who finds those.
  void AimAt(int first, int count) noexcept;

  vx_load_options options;  ///< with every default filled in
  IMAGEINFO info;           ///< the page, or the headerless data's description
  int bandFirst;            ///< rows wanted, from the top
  int bandCount;
  bool isIcon;
  bool isPng;
  std::optional<BitmapImage> image;  ///< of a bitmap, or of a page of an icon: what the library makes of it
  int rowsTouched = INT_MAX;         ///< stored rows behind these are blank: the filter need not go on
  bool isPiece = false;              ///< the rows are part of what was asked for, of which enough is known
  bool filterCutsBand;  ///< the filter is asked for the band's rows alone (and says in its flags if it was)
};

/// Checks the options and describes the page. @return STATUS_OK, or a failure with its detail set.
[[nodiscard]] int PlanLoad(vx_source& source, const vx_load_options* options, LoadPlan* plan);

}  // namespace vxkrn
