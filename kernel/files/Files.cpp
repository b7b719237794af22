// The file services: handles over OpenFile, opened through the thread's backend. Refuses null handles and
// buffers; every other judgement is OpenFile's.
#include "files/Files.h"

#include <climits>

struct tagHANDLE : vxkrn::OpenFile {
  using OpenFile::OpenFile;
};

namespace vxkrn {
namespace {

bool IsUsable(HANDLE file) noexcept {
  return file != nullptr && file != InvalidHandle();
}

}  // namespace

ReadTrace TraceOf(HANDLE file) noexcept {
  return file->Trace();
}

LateWrite TakeLateWrite() noexcept {
  return std::exchange(ThisCall().lateWrite, {});
}

}  // namespace vxkrn

using vxkrn::IsUsable;

HANDLE VX_RedirectedOpen(const char* fileName, int flags, int /*permission*/) {
  const vxkrn::Backend& backend = vxkrn::CurrentBackend();
  const bool writable = flags != VX_OPEN_READ;
  const bool known = flags == VX_OPEN_READ || flags == VX_OPEN_UPDATE || flags == VX_OPEN_CREATE;
  if (fileName == nullptr || !known || (writable && backend.functions.write_at == nullptr)) {
    return vxkrn::InvalidHandle();
  }
  void* file = backend.functions.open(backend.user, fileName, flags);
  if (file == nullptr) return vxkrn::InvalidHandle();
  auto handle = vxkrn::memory::Make<tagHANDLE>({"kernel/Files", __LINE__}, backend, file, writable);
  if (handle != nullptr) return handle.release();
  (void)backend.functions.close(backend.user, file);
  return vxkrn::InvalidHandle();
}

int VX_RedirectedRead(HANDLE file, void* buffer, unsigned int count) {
  if (!IsUsable(file) || (buffer == nullptr && count > 0)) return -1;
  return file->Read(static_cast<uint8_t*>(buffer), count);
}

int VX_RedirectedWrite(HANDLE file, const void* buffer, unsigned int count) {
  if (!IsUsable(file) || (buffer == nullptr && count > 0)) return -1;
  return file->Write(static_cast<const uint8_t*>(buffer), count);
}

int VX_RedirectedSeek(HANDLE file, int offset, int origin) {
  if (!IsUsable(file)) return -1;
  int64_t target = -1;
  switch (origin) {
    case VX_SEEK_START: target = static_cast<unsigned int>(offset); break;
    case VX_SEEK_CURRENT: target = static_cast<int64_t>(file->Position()) + offset; break;
    case VX_SEEK_END:
      target = file->Size();
      if (target >= 0 && target <= INT64_MAX - INT_MAX) target += offset;
      break;
    default: break;
  }
  return file->MoveTo(target) ? static_cast<int>(static_cast<unsigned int>(target)) : -1;
}

int VX_RedirectedClose(HANDLE file) {
  if (!IsUsable(file)) return -1;
  const vxkrn::memory::Owned<tagHANDLE> handle(file);
  const bool kept = handle->Close();
  vxkrn::CallRecord& call = vxkrn::ThisCall();
  call.lastRead = handle->Trace();
  if (!kept && !call.lateWrite.failed) call.lateWrite = {true, handle->WriteError()};
  return kept ? 0 : -1;
}
