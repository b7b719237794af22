// What the fake kernel serves a filter that saves: writes, masks, conversion, PNG streams.
#include <algorithm>

#include "FakeKernel.h"

namespace {

FakeKernel& Kernel() {
  return FakeKernel::Current();
}

/// The one global block, which the filter must only hand back.
int globalBlock;

void CheckGlobal(const void* handle) {
  if (handle != &globalBlock || Kernel().saved.globals != 1)
    Kernel().Complain("use of an unknown global block");
}

}  // namespace

extern "C" {

int VX_RedirectedWrite(HANDLE file, const void* buffer, unsigned int count) {
  if (!Kernel().Usable(file)) return -1;
  const auto failure = Kernel().Happens(Kind::kWrite, "write", {file->position, count});
  if (failure && *failure != Fault::kHalf) return *failure;
  const std::uint32_t stored = failure ? count / 2 : count;
  Bytes& bytes = Kernel().file;
  const std::size_t end = std::size_t{file->position} + stored;
  bytes.resize(count == 0 && !failure ? end : std::max(bytes.size(), end));
  std::copy_n(static_cast<const std::uint8_t*>(buffer), stored,
              bytes.begin() + static_cast<std::ptrdiff_t>(file->position));
  file->position += stored;
  return static_cast<int>(stored);
}

int VX_CreateMaskFromBitmapRgn(_BITMAPHANDLE* bitmap, _BITMAPHANDLE* mask, unsigned int recordSize) {
  if (const auto failure = Kernel().Happens(Kind::kMask, "mask", {recordSize})) return *failure;
  *mask = {};
  mask->Width = bitmap->Width;
  mask->Height = bitmap->Height;
  mask->BitsPerPixel = 1;
  mask->BytesPerLine = Kernel().saved.maskBytesPerLine;
  Bytes& pixels = Kernel().bitmaps[mask].pixels;
  for (int row = 0; row < mask->Height; ++row) {
    for (int i = 0; i < mask->BytesPerLine; ++i) pixels.push_back(Saved::MaskAt(row, i));
  }
  return STATUS_OK;
}

int VX_ResourceAdd(int kind, void* handle, int, const char*) {
  CheckGlobal(handle);
  (void)Kernel().Happens(Kind::kTrack, "track", {kind});
  return STATUS_OK;
}

void* WinGlobalLock(void* handle) {
  CheckGlobal(handle);
  return Kernel().Happens(Kind::kLock, "lock", {}) ? nullptr : Kernel().saved.png.data();
}

int WinGlobalUnlock(void* handle) {
  CheckGlobal(handle);
  (void)Kernel().Happens(Kind::kUnlock, "unlock", {});
  return STATUS_OK;
}

int VX_OsFreeHandle(void* handle, int, const char*) {
  CheckGlobal(handle);
  (void)Kernel().Happens(Kind::kFreeGlobal, "free block", {});
  --Kernel().saved.globals;
  return STATUS_OK;
}

}  // extern "C"

int FakeBeginSave(_BITMAPHANDLE* bitmap, _BITMAPHANDLE** converted, int bitsPerPixel, unsigned int* flags,
                  unsigned char** rowBuffer, int rowsPerCall, int convertArg1, int convertArg2,
                  _SAVEFILESTRUCT** saveFile) {
  const auto answer = Kernel().Happens(Kind::kBeginSave, "begin",
                                       {bitsPerPixel, *flags, rowsPerCall, convertArg1, convertArg2});
  Saved& saved = Kernel().saved;
  saved.converted.Width = bitmap->Width;
  saved.converted.Height = bitmap->Height;
  saved.converted.BitsPerPixel = bitsPerPixel;
  saved.converted.ColorOrder = bitsPerPixel > 8 ? ORDER_BGR : ORDER_RGB;
  if (bitsPerPixel == 16 && (*flags & SAVE_ORDER_565) != 0) saved.converted.ColorOrder = ORDER_565;
  saved.rowBuffer.assign(
      static_cast<std::size_t>(std::max(saved.converted.BytesPerLine, saved.maskBytesPerLine)), 0xA5);
  *converted = &saved.converted;
  *rowBuffer = saved.rowBuffer.data();
  *saveFile = &saved.saveFile;
  return answer.value_or(STATUS_OK);
}

int FakeGetSaveRow(_BITMAPHANDLE*, _BITMAPHANDLE* converted, unsigned char* rowBuffer, int row, int rowCount,
                   unsigned int flags, int convertArg1, int convertArg2, _SAVEFILESTRUCT*) {
  const auto failure =
      Kernel().Happens(Kind::kSaveRow, "row", {row, rowCount, flags, convertArg1, convertArg2});
  for (int i = 0; i < converted->BytesPerLine; ++i) rowBuffer[i] = Saved::PixelAt(row, i);
  return failure.value_or(STATUS_OK);
}

int FakeEndSave(_BITMAPHANDLE*, _BITMAPHANDLE**, unsigned int*, unsigned char**, _SAVEFILESTRUCT**) {
  (void)Kernel().Happens(Kind::kEndSave, "end", {});
  return STATUS_OK;
}

int FakeSaveToMemory(void** memory, _BITMAPHANDLE*, int format, int bitsPerPixel, int reserved0,
                     unsigned int* size, int reserved1) {
  if (const auto failure =
          Kernel().Happens(Kind::kEncode, "encode", {format, bitsPerPixel, reserved0, reserved1})) {
    return *failure;
  }
  ++Kernel().saved.globals;
  *memory = &globalBlock;
  *size = static_cast<unsigned int>(Kernel().saved.png.size());
  return STATUS_OK;
}
