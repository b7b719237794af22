// Puts into words why the filter refused a source. Only looks; decides nothing.
#pragma once

#include "files/OpenFile.h"
#include "files/Source.h"

namespace vxkrn {

/// Sets the detail: the source, the page (0: not worth saying), and what a callback or service already said
/// or else what status and the filter's last read tell. @return status.
int Explain(int status, const vx_source& source, int page, const ReadTrace& trace) noexcept;

}  // namespace vxkrn
