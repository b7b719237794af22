// Holds each thread's error detail. Must not allocate.
#include "Errors.h"

#include <algorithm>
#include <cstring>

#include "Memory.h"
#include "vx/vx.h"

namespace vxkrn {
namespace {
thread_local Text detail;
}

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

void BeginCall() noexcept {
  detail.Clear();
  memory::ForgetRefusal();
}

int FailForMemory(std::string_view what, std::uint64_t needed) noexcept {
  if (memory::Fits(needed)) {
    return Fail(STATUS_NO_MEMORY, what, " needs ", needed, " bytes, which the system does not have left");
  }
  return Fail(STATUS_NO_MEMORY, what, " needs ", needed, " bytes, but of the memory limit of ",
              memory::Limit(), " bytes ", memory::InUse(),
              " are in use. Raise the limit if this is expected");
}

}  // namespace vxkrn

const char* vx_error_detail(void) {
  return vxkrn::Detail().CString();
}
