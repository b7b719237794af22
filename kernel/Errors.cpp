// Holds each thread's error detail. Must not allocate.
#include "Errors.h"

#include <algorithm>
#include <cstring>

#include "Memory.h"
#include "vx/vx.h"

namespace vxkrn {
namespace {
thread_local Text detail;
thread_local bool missesRows = false;
}  // namespace

Text& Text::operator<<(std::string_view part) noexcept {
  const std::size_t count = std::min(part.size(), text_.size() - 1 - size_);
  std::memcpy(text_.data() + size_, part.data(), count);
  size_ += count;
  text_[size_] = '\0';
  return *this;
}

Text& Detail() noexcept {
  return detail;
}

void NoteMissingRows() noexcept {
  missesRows = true;
}

void BeginCall() noexcept {
  detail.Clear();
  missesRows = false;
  memory::ForgetRefusal();
}

int FailForMemory(std::string_view what, std::uint64_t needed) noexcept {
  const memory::Refusal refusal = memory::LastRefusalAndUse();
  const std::uint64_t used = refusal.bytes != 0 && refusal.bytes == needed ? refusal.inUse : memory::InUse();
  const std::uint64_t limit = memory::Limit();
  if (used <= limit && needed <= limit - used) {
    return Fail(STATUS_NO_MEMORY, what, " needs ", needed, " bytes, which the system does not have left");
  }
  return Fail(STATUS_NO_MEMORY, what, " needs ", needed, " bytes, but of the memory limit of ", limit,
              " bytes ", used, " are in use. Raise the limit if this is expected");
}

int FailForException() noexcept {
  const std::uint64_t refused = memory::LastRefusal();
  return refused != 0 ? FailForMemory("a buffer", refused)
                      : Fail(STATUS_NO_MEMORY, "there is no memory left");
}

}  // namespace vxkrn

int vx_error_rows_missing(void) {
  return vxkrn::missesRows ? 1 : 0;
}

const char* vx_error_detail(void) {
  return vxkrn::Detail().CString();
}
