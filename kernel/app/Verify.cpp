// vx_verify: findings, to applications.
#include "vx/verify.h"
#include <algorithm>

#include "base/Errors.h"
#include "verify/Judge.h"

int vx_verify(vx_source* source, int purpose, vx_finding_function take, void* user) {
  return vxkrn::Guarded([&]() -> int {
    const bool isPurpose = purpose >= VX_PURPOSE_ANY && purpose <= VX_PURPOSE_CURSOR;
    if (source == nullptr || take == nullptr || !isPurpose) {
      return vxkrn::FailForArgument(
          "the source, a purpose and the function that takes findings must be given");
    }
    vxkrn::Findings findings(static_cast<uint64_t>(std::max<int64_t>(source->Size(), 0)));
    const int status = vxkrn::JudgeFile(*source, purpose, &findings);
    if (status != STATUS_OK) return status;
    for (const vxkrn::Found& found : findings.All()) {
      if (findings.Tell(found, take, user) != 0) break;
    }
    return VX_OK;
  });
}
