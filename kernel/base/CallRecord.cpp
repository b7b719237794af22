// Where the record of this thread's calls lives: the library's one variable that every thread has of its own.
#include "base/CallRecord.h"

namespace vxkrn {

CallRecord& ThisCall() noexcept {
  static thread_local constinit CallRecord record;
  return record;
}

}  // namespace vxkrn
