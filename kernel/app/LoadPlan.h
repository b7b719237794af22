// What a load was asked to do, checked and complete: nothing later has to look at the options again.
#pragma once

#include "base/Contract.h"
#include "beyond/WideFields.h"
#include "files/Source.h"

namespace vxkrn {

struct LoadPlan {
  vx_load_options options;  ///< with every default filled in
  IMAGEINFO info;           ///< the page, or the headerless data's description
  int bandFirst;            ///< rows wanted, from the top
  int bandCount;
  bool isIcon;
  bool isPng;
  std::optional<WideFields> wideFields;  ///< the pixels' channels have to be sorted here
  bool filterCutsBand;  ///< the filter is asked for the band's rows alone (and says in its flags if it was)
};

/// Checks the options and describes the page. @return STATUS_OK, or a failure with its detail set.
[[nodiscard]] int PlanLoad(vx_source& source, const vx_load_options* options, LoadPlan* plan);

}  // namespace vxkrn
