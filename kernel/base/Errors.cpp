// The words and numbers of failures. Must not allocate.
#include "base/Errors.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/CallRecord.h"

namespace vxkrn {
namespace {

constexpr std::size_t kLongestName = 500;  // bytes of a name that are shown, so that the rest finds room

vx_reason ReasonOf(int error) noexcept {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ENAMETOOLONG: return VX_REASON_NO_SUCH_FILE;
    case EACCES:
    case EPERM:
    case EROFS: return VX_REASON_NO_PERMISSION;
    case EISDIR:
    case ENXIO:
    case ESPIPE: return VX_REASON_NOT_A_FILE;
    case ENOSPC:
    case EDQUOT:
    case EFBIG: return VX_REASON_DISK_FULL;
    default: return VX_REASON_SYSTEM_ERROR;
  }
}

}  // namespace

Text& Text::operator<<(std::string_view part) noexcept {
  if (part.empty()) return *this;  // which may have no bytes to point to
  const std::size_t count = std::min(part.size(), text_.size() - 1 - size_);
  std::memcpy(text_.data() + size_, part.data(), count);
  size_ += count;
  text_[size_] = '\0';
  return *this;
}

Cause SystemCause(int status, int error) noexcept {
  return {status, ReasonOf(error), error};
}

Text& Detail() noexcept {
  return ThisCall().detail;
}

vx_error_info& Failure() noexcept {
  return ThisCall().error;
}

void BeginCall() noexcept {
  CallRecord& call = ThisCall();
  call.detail.Clear();
  call.error = {VX_OK, VX_REASON_NONE, 0, 0, -1, 0, 0};
  call.refusal = {};
  call.remarks.count = 0;
}

int FailForMemory(std::string_view what, uint64_t needed) noexcept {
  const memory::Refusal& refusal = ThisCall().refusal;
  const uint64_t used = refusal.bytes != 0 && refusal.bytes == needed ? refusal.inUse : memory::InUse();
  const uint64_t limit = memory::Limit();
  if (used <= limit && needed <= limit - used) {
    return Fail({STATUS_NO_MEMORY, VX_REASON_OUT_OF_MEMORY, needed}, what, " needs ", needed,
                " bytes, which the system does not have left");
  }
  return Fail({STATUS_NO_MEMORY, VX_REASON_OVER_MEMORY_LIMIT, needed, limit}, what, " needs ", needed,
              " bytes, but of the memory limit of ", limit, " bytes ", used,
              " are in use. Raise the limit if this is expected");
}

int FailForException() noexcept {
  const uint64_t refused = memory::LastRefusal();
  return refused != 0 ? FailForMemory("a buffer", refused)
                      : Fail({STATUS_NO_MEMORY, VX_REASON_OUT_OF_MEMORY}, "there is no memory left");
}

void FailRow(int status) {
  Failure().is_of_rows = 1;
  throw Failed{status};
}

int NameFailure(int status, std::string_view name, int page) noexcept {
  if (Failure().is_of_rows != 0) return status;
  const Text problem = Detail();
  Detail().Clear();
  if (name.size() > kLongestName) Detail() << "...";
  Detail() << name.substr(name.size() - std::min(name.size(), kLongestName));
  if (page > 0) Detail() << ", page " << page;
  Detail() << ": " << problem.CString();
  Failure().status = status;
  if (page > 0) Failure().page = page;
  return status;
}

}  // namespace vxkrn

int vx_error_reason(void) {
  return vxkrn::Failure().reason;
}

void vx_last_error(vx_error_info* info) {
  if (info != nullptr) *info = vxkrn::Failure();
}

int vx_error_rows_missing(void) {
  return vxkrn::Failure().reason == VX_REASON_ROWS_MISSING ? 1 : 0;
}

const char* vx_error_detail(void) {
  return vxkrn::Detail().CString();
}
