// What a call into the filter has to let the services and callbacks know, which get no argument that would
// tell them: held for the thread while the call runs, innermost call first.
#pragma once

#include "Png.h"

namespace vxkrn {

struct CallContext {
  bool toleratesMissingMask = false;  ///< a file may end before the mask: the picture then has none
  bool sawPng = false;                ///< the filter had a PNG stream described or decoded: `png`
  PngDescription png = {};
  int convertArg1 = CONVERT_PALETTE_BEST;  ///< how SaveToMemory converts, which is not told
  int convertArg2 = CONVERT_DIFFUSE;
};

/// While it lives, `context` is this thread's. It must outlive the scope.
class CallScope {
 public:
  explicit CallScope(CallContext* context) noexcept;
  ~CallScope();
  CallScope(const CallScope&) = delete;
  CallScope& operator=(const CallScope&) = delete;

 private:
  CallContext* outer_;
};

/// The innermost context; null outside any call.
CallContext* CurrentCall() noexcept;

/// Whether a mask that cannot be read is no failure now.
inline bool ToleratesMissingMask() noexcept {
  const CallContext* context = CurrentCall();
  return context != nullptr && context->toleratesMissingMask;
}

}  // namespace vxkrn
