// Opens and closes sources, and lends them to the filter as files. Must not read pictures.
#include "files/Source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/Errors.h"
#include "files/OpenFile.h"

namespace {

vx_source* SourceOf(void* user) {
  return static_cast<vx_source*>(user);
}

void* OpenView(void* user, const char* /*name*/, int flags) {
  return flags == VX_OPEN_READ ? user : nullptr;
}

int64_t ReadView(void* user, void* /*file*/, void* buffer, uint32_t count, uint64_t position) {
  return SourceOf(user)->ReadAt(buffer, count, position);
}

int64_t SizeOfView(void* user, void* /*file*/) {
  return SourceOf(user)->Size();
}

int CloseView(void* /*user*/, void* /*file*/) {
  return 0;
}

constexpr const char* kMemoryName = "memory";

const char* WhyNot(int error) {
  return error == 0 ? "the file functions refused it" : std::strerror(error);
}

}  // namespace

vxkrn::memory::Owned<vx_source> vxkrn::NewSource(const char* name) {
  auto source = memory::Make<vx_source>({"kernel/Source", __LINE__});
  if (source == nullptr) return source;
  const std::size_t size = std::strlen(name) + 1;
  source->name.reset(static_cast<uint8_t*>(memory::AllocateRecord(size, {"kernel/Source", __LINE__})));
  if (source->name == nullptr) return nullptr;
  std::memcpy(source->name.get(), name, size);
  return source;
}

vx_source::vx_source() noexcept : backend{}, file(nullptr), memory{} {}

vx_source::~vx_source() {
  if (file != nullptr) (void)backend.functions.close(backend.user, file);
}

const char* vx_source::Name() const noexcept {
  const void* text = name.get();
  return static_cast<const char*>(text);
}

void vx_source::KeepHead() noexcept {
  head = vxkrn::memory::Make<Head>({"kernel/Source", __LINE__}, Size());
  if (head == nullptr) return;
  const auto size = static_cast<uint32_t>(head->bytes.size());
  const int64_t got = backend.functions.read_at(backend.user, file, head->bytes.data(), size, 0);
  if (got > 0 && got <= size) head->fill = static_cast<uint32_t>(got);
}

void vx_source::HoldIfSmallIcon() noexcept {
  constexpr int64_t kSmall = 4 << 20;  // bytes
  uint16_t signature = 1;
  if (Peek(&signature, 2, 0) != 2 || signature != 0) return;
  const int64_t size = Size();
  const bool isKept = head != nullptr && size == head->fill;
  if (size < 2 || size > kSmall || isKept) return;
  (void)Hold();
}

bool vx_source::Hold() noexcept {
  if (file == &memory) return true;
  const int64_t size = Size();
  if (size < 0 || size > static_cast<int64_t>(vxkrn::kLastPosition)) return false;
  const auto count = static_cast<uint32_t>(size);
  vxkrn::memory::Bytes bytes = vxkrn::memory::MakeBytes(count, {"kernel/Source", __LINE__});
  if (bytes == nullptr || Peek(bytes.get(), count, 0) != count) return false;
  (void)backend.functions.close(backend.user, file);
  held = std::move(bytes);
  ReadFromMemory(held.get(), count);
  return true;
}

void vx_source::ReadFromMemory(const unsigned char* bytes, std::size_t size) noexcept {
  memory = {bytes, size};
  backend = vxkrn::MemoryBackend(&memory);
  file = &memory;
}

int64_t vx_source::Size() const noexcept {
  return head != nullptr && head->size >= 0 ? head->size : backend.functions.size(backend.user, file);
}

/// The application's bytes may change, and those in memory are as near as they can be.
bool vx_source::HasWindows() const noexcept {
  if (head == nullptr || file == &memory) return false;
  if (head->windows == nullptr) {
    head->windows = vxkrn::memory::Make<vxkrn::PeekWindows>({"kernel/Source", __LINE__});
  }
  return head->windows != nullptr;
}

int64_t vx_source::ReadAt(void* buffer, uint32_t count, uint64_t position) const noexcept {
  const uint32_t fill = head == nullptr ? 0 : head->fill;
  if (position < fill) {
    const uint32_t kept = std::min(count, fill - static_cast<uint32_t>(position));
    std::memcpy(buffer, head->bytes.data() + position, kept);
    return kept;
  }
  const bool isKnownEnd = head != nullptr && head->size >= 0 && position >= static_cast<uint64_t>(head->size);
  if (isKnownEnd || count == 0) return 0;
  const bool isSmall = count <= vxkrn::PeekWindows::kMostBytes && HasWindows();
  return isSmall ? head->windows->Read(backend, file, buffer, count, position)
                 : backend.functions.read_at(backend.user, file, buffer, count, position);
}

uint32_t vx_source::Peek(void* buffer, uint32_t count, uint64_t offset) const noexcept {
  return offset > vxkrn::kLastPosition ? 0 : PeekAnywhere(buffer, count, offset);
}

uint32_t vx_source::PeekAnywhere(void* buffer, uint32_t count, uint64_t offset) const noexcept {
  uint32_t done = 0;
  while (done < count) {
    const int64_t got = ReadAt(static_cast<uint8_t*>(buffer) + done, count - done, offset + done);
    if (got <= 0 || got > count - done) break;
    done += static_cast<uint32_t>(got);
  }
  return done;
}

vxkrn::Backend vx_source::View() noexcept {
  return {{OpenView, ReadView, nullptr, SizeOfView, nullptr, CloseView}, this};
}

int vx_open_file(const char* path, vx_source** source) {
  return vxkrn::Guarded([&]() -> int {
    if (source != nullptr) *source = nullptr;
    if (path == nullptr || source == nullptr) {
      return vxkrn::FailForArgument("the path and the place for the source must be given");
    }
    auto opened = vxkrn::NewSource(path);
    if (opened == nullptr) return vxkrn::FailForMemory("opening a file", sizeof(vx_source));
    opened->backend = vxkrn::InstalledBackend();
    errno = 0;
    opened->file = opened->backend.functions.open(opened->backend.user, path, VX_OPEN_READ);
    if (opened->file == nullptr) {
      return vxkrn::Fail(vxkrn::SystemCause(VX_OPEN_ERROR, errno), path,
                         " cannot be opened: ", WhyNot(errno));
    }
    opened->KeepHead();
    opened->HoldIfSmallIcon();
    *source = opened.release();
    return VX_OK;
  });
}

int vx_open_memory(const void* bytes, size_t size, const char* name, vx_source** source) {
  return vxkrn::Guarded([&]() -> int {
    if (source != nullptr) *source = nullptr;
    if ((bytes == nullptr && size > 0) || source == nullptr) {
      return vxkrn::FailForArgument("the bytes and the place for the source must be given");
    }
    if (size > vxkrn::kLastPosition) {
      return vxkrn::FailForArgument("the block has ", size, " bytes; at most ", vxkrn::kLastPosition,
                                    " can be read");
    }
    auto opened = vxkrn::NewSource(name == nullptr ? kMemoryName : name);
    if (opened == nullptr) return vxkrn::FailForMemory("opening a block of memory", sizeof(vx_source));
    opened->ReadFromMemory(static_cast<const unsigned char*>(bytes), size);
    *source = opened.release();
    return VX_OK;
  });
}

void vx_close(vx_source* source) {
  if (source != nullptr) vxkrn::memory::Release{}(source);
}
