// Icon pages that are PNG streams: the kernel encodes them, these functions give them their place in a file.
#include "Pages/PngPage.h"

#include "Kernel.h"
#include "format/HeaderEncoding.h"

namespace bmp {
namespace {

constexpr int kTrackedInNewFile = 3;
constexpr int kTrackedInPage = 1;

/// The stream, in a global memory block of the kernel's.
class PngStream {
 public:
  PngStream() = default;
  ~PngStream() { Free(); }
  PngStream(const PngStream&) = delete;
  PngStream& operator=(const PngStream&) = delete;

  /// Has the dispatch's bitmap encoded. @return SaveToMemory's status
  [[nodiscard]] int Encode(const _SAVEDISPATCH& dispatch, int kind) {
    void* memory = nullptr;
    const int status =
        dispatch.SaveToMemory(&memory, dispatch.Bitmap, FMT_PNG, dispatch.BitsPerPixel, 0, &size_, 0);
    if (status != STATUS_OK) return status;
    memory_ = memory;
    isOwned_ = true;
    VX_ResourceAdd(kind, memory_, __LINE__, kFileTag);
    return STATUS_OK;
  }

  [[nodiscard]] uint32_t Size() const { return size_; }

  /// Gives the stream an address, for WriteTo. It stays locked until it is freed.
  void Lock() {
    bytes_ = WinGlobalLock(memory_);
    isLocked_ = true;
  }
  /// Writes the stream where the file stands.
  [[nodiscard]] bool WriteTo(HANDLE file) const {
    return bytes_ != nullptr && WriteExactly(file, bytes_, size_);
  }

  void Free() {
    if (isLocked_) WinGlobalUnlock(memory_);
    if (isOwned_) VX_OsFreeHandle(memory_, __LINE__, kFileTag);
    isLocked_ = false;
    isOwned_ = false;
  }

 private:
  void* memory_ = nullptr;
  const void* bytes_ = nullptr;
  uint32_t size_ = 0;
  bool isOwned_ = false;
  bool isLocked_ = false;
};

ICONDIRENTRY EntryOf(const _SAVEDISPATCH& dispatch, uint32_t size, uint32_t offset) {
  return {.Width = EntrySide(dispatch.Bitmap->Width),
          .Height = EntrySide(dispatch.Bitmap->Height),
          .ColorCount = EntryColorCount(dispatch.BitsPerPixel),
          .Reserved = 0,
          .Planes = 0,
          .BitCount = static_cast<uint16_t>(dispatch.BitsPerPixel),
          .BytesInRes = size,
          .ImageOffset = offset};
}

}  // namespace

int WriteNewPngIcon(_SAVEDISPATCH& dispatch) {
  PngStream stream;  // freed after the file is closed
  const File file(dispatch.FileName, kForNewPngIcon);
  if (!file.IsOpen()) return STATUS_OPEN_WRITE_ERROR;
  constexpr ICONDIR kOneIcon = {.Reserved = 0, .Type = kIconType, .Count = 1};
  if (!WriteBlock(file.Handle(), EncodeDirectory(kOneIcon))) return STATUS_WRITE_ERROR;

  const int status = stream.Encode(dispatch, kTrackedInNewFile);
  if (status != STATUS_OK) return status;
  const ICONDIRENTRY entry = EntryOf(dispatch, stream.Size(), EntryOffset(2));
  if (!WriteBlock(file.Handle(), EncodeEntry(entry))) {
    stream.Free();  // here before the file is closed
    return STATUS_WRITE_ERROR;
  }
  stream.Lock();
  return stream.WriteTo(file.Handle()) ? STATUS_OK : STATUS_WRITE_ERROR;
}

int InsertPngPage(_SAVEDISPATCH& dispatch, HANDLE file, uint32_t entryOffset) {
  PngStream stream;  // freed after the file is closed
  const File owned(file);
  const int status = stream.Encode(dispatch, kTrackedInPage);
  if (status != STATUS_OK) return status;
  const auto end = static_cast<uint32_t>(VX_RedirectedSeek(file, 0, VX_SEEK_END));
  GoTo(file, entryOffset);
  if (!WriteBlock(file, EncodeEntry(EntryOf(dispatch, stream.Size(), end)))) {
    return STATUS_WRITE_ERROR;
  }
  stream.Lock();
  VX_RedirectedSeek(file, 0, VX_SEEK_END);
  return stream.WriteTo(file) ? STATUS_OK : STATUS_WRITE_ERROR;
}

}  // namespace bmp
