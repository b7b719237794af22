// The stack of this thread's calls into the filter. No policy here.
#include "CallContext.h"

namespace vxkrn {
namespace {
thread_local CallContext* current = nullptr;
}

CallScope::CallScope(CallContext* context) noexcept : outer_(current) {
  current = context;
}

CallScope::~CallScope() {
  current = outer_;
}

CallContext* CurrentCall() noexcept {
  return current;
}

}  // namespace vxkrn
