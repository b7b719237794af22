// Icon pages that are PNG streams: the kernel encodes them, these functions give them their place in a file.
#include "../Bmp.h"
#include "../Format/HeaderEncoding.h"
#include "../Resources.h"

namespace bmp {
namespace {

constexpr int kTrackedInNewFile = 3;

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

  /// Writes the stream where the file stands. It stays locked until it is freed.
  [[nodiscard]] bool WriteTo(HANDLE file) {
    const void* bytes = WinGlobalLock(memory_);
    isLocked_ = true;
    return bytes != nullptr && WriteExactly(file, bytes, size_);
  }

  void Free() {
    if (isLocked_) WinGlobalUnlock(memory_);
    if (isOwned_) VX_OsFreeHandle(memory_, __LINE__, kFileTag);
    isLocked_ = false;
    isOwned_ = false;
  }

 private:
  void* memory_ = nullptr;
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
}  // namespace bmp

int OverwriteVistaIcon(_SAVEDISPATCH* dispatch) {
  bmp::PngStream stream;  // freed after the file is closed
  const bmp::File file(dispatch->FileName, bmp::kForNewPngIcon);
  if (!file.IsOpen()) return STATUS_OPEN_WRITE_ERROR;
  constexpr ICONDIR kOneIcon = {.Reserved = 0, .Type = bmp::kIconType, .Count = 1};
  if (!bmp::WriteBlock(file.Handle(), bmp::EncodeDirectory(kOneIcon))) return STATUS_WRITE_ERROR;

  const int status = stream.Encode(*dispatch, bmp::kTrackedInNewFile);
  if (status != STATUS_OK) return status;
  const ICONDIRENTRY entry = bmp::EntryOf(*dispatch, stream.Size(), bmp::EntryOffset(2));
  if (!bmp::WriteBlock(file.Handle(), bmp::EncodeEntry(entry))) {
    stream.Free();  // here before the file is closed
    return STATUS_WRITE_ERROR;
  }
  return stream.WriteTo(file.Handle()) ? STATUS_OK : STATUS_WRITE_ERROR;
}
