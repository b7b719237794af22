// What this thread's calls look up and leave behind. One record, so that nothing else travels on the side:
// the contract's services and callbacks have no argument that could bring it.
#pragma once

#include <array>

#include "base/Errors.h"
#include "base/Memory.h"
#include "base/PngDescription.h"
#include "vx/vx.h"

namespace vxkrn {

/// A provider of files. Both members are only borrowed by whoever holds a copy.
struct Backend {
  vx_file_functions functions;
  void* user;
};

/// What the last read asked for and got; tells people where a file went wrong.
struct ReadTrace {
  uint64_t offset = 0;
  uint32_t asked = 0;
  uint32_t got = 0;
};

/// How storing ended for the files that were closed since somebody asked last.
struct LateWrite {
  bool failed = false;
  int error = 0;  ///< the first failure's errno, 0 where the backend gave none
};

class LazyCensus;

/// What a call into the filter has to let the services and callbacks know.
struct FilterCall {
  bool toleratesMissingMask = false;  ///< a file may end before the mask: the picture then has none
  bool isMaskCut = false;             ///< and this one did
  bool sawPng = false;                ///< the filter had a PNG stream described or decoded: `png`
  PngDescription png = {};
  int convertArg1 = CONVERT_PALETTE_BEST;  ///< how SaveToMemory converts: its arguments do not say
  int convertArg2 = CONVERT_DIFFUSE;
  LazyCensus* census = nullptr;  ///< of the picture that is saved
};

/// What a call did that went well but not whole.
struct Remarks {
  std::array<vx_remark, 16> all = {};
  int count = 0;
};

struct CallRecord {
  vx_error_info error = {};  ///< of the last call that failed, its sentence in `detail`
  Text detail;
  Remarks remarks;
  memory::Refusal refusal = {};  ///< the last allocation that failed
  ReadTrace lastRead;            ///< of the handle that was closed last
  LateWrite lateWrite;
  Backend installed = {};            ///< the application's files; without functions: the system's
  const Backend* scoped = nullptr;   ///< outranks `installed`; null: none
  FilterCall* filterCall = nullptr;  ///< the innermost call into the filter; null outside any
};

/// This thread's.
CallRecord& ThisCall() noexcept;

/// While it lives, `call` is the innermost one into the filter. It must outlive the scope.
class FilterCallScope {
 public:
  explicit FilterCallScope(FilterCall* call) noexcept : outer_(ThisCall().filterCall) {
    ThisCall().filterCall = call;
  }
  ~FilterCallScope() { ThisCall().filterCall = outer_; }
  FilterCallScope(const FilterCallScope&) = delete;
  FilterCallScope& operator=(const FilterCallScope&) = delete;

 private:
  FilterCall* outer_;
};

}  // namespace vxkrn
