// Finds and loads the filter, once, when it is first needed. It stays loaded for the rest of the process.
#pragma once

#include "base/Contract.h"

namespace vxkrn {

/// The filter's entry points.
struct Filter {
  int (*info)(_INFODISPATCH*) = nullptr;
  int (*load)(_LOADDISPATCH*) = nullptr;
  int (*save)(_SAVEDISPATCH*) = nullptr;
  int (*deletePage)(_DELETEPAGEDISPATCH*) = nullptr;
  int (*display)(_DISDISPATCH*, HANDLE&) = nullptr;
};

/// @return STATUS_OK and the filter in *filter, or VX_NO_FILTER with a detail of what was tried. A failure is
/// not remembered: the next call tries again.
[[nodiscard]] int LoadFilter(const Filter** filter);

/// As LoadFilter, searching anew: first searchPath, a list of folders and files between colons that may be
/// null, then beside this library.
[[nodiscard]] int FindFilter(const char* searchPath, Filter* filter);

}  // namespace vxkrn
