// The functions of the contract, as the filter finds them in this program before it looks into the real
// kernel (which is left to serve those that copy and compare memory), and the callbacks. They serve the fake
// kernel of the running test.
#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "FakeKernel.h"

namespace {

constexpr uint64_t kMemoryLimit = 1U << 20U;
constexpr int64_t kHighestPosition = 0xFFFFFFFE;
constexpr int kGarbage = 0xA5;  // what fresh memory holds

FakeKernel& Kernel() {
  return FakeKernel::Current();
}

std::ptrdiff_t Offset(std::size_t index) {
  return static_cast<std::ptrdiff_t>(index);
}

/// Gives a bitmap pixels: byte i of a row is at(row, i).
void Fill(_BITMAPHANDLE* bitmap, uint8_t (*at)(int, int)) {
  Bytes& pixels = Kernel().bitmaps[bitmap].pixels;
  for (int row = 0; row < bitmap->Height; ++row) {
    for (int i = 0; i < bitmap->BytesPerLine; ++i) pixels.push_back(at(row, i));
  }
}

void CheckTag(int line, std::string_view tag) {
  if (tag != "API/Filters/Bmp/Common/Bmp" || line <= 0) Kernel().Complain("memory without its tag");
}

tagHANDLE displayLibrary;

/// The one global block, which the filter must only hand back.
int globalBlock;

void CheckGlobal(const void* handle) {
  if (handle != &globalBlock || Kernel().saved.globals != 1)
    Kernel().Complain("use of an unknown global block");
}

}  // namespace

extern "C" {

// ---- files

HANDLE VX_RedirectedOpen(const char* fileName, int flags, int permission) {
  const auto failure = Kernel().Happens("open", {flags, permission}, fileName);
  if (failure || std::string_view(fileName) != FakeKernel::kFileName)
    return std::bit_cast<HANDLE>(std::intptr_t{-1});
  Kernel().handles.push_back(std::make_unique<tagHANDLE>());
  return Kernel().handles.back().get();
}

int VX_RedirectedRead(HANDLE file, void* buffer, unsigned int count) {
  if (count == 0 || !Kernel().Usable(file)) return 0;
  const auto failure = Kernel().Happens("read", {count});
  if (failure && *failure != Fault::kHalf) return *failure;
  const Bytes& bytes = Kernel().file;
  const std::size_t start = std::min<std::size_t>(file->position, bytes.size());
  std::size_t arrived = std::min<std::size_t>(count, bytes.size() - start);
  if (failure) arrived /= 2;
  std::copy_n(bytes.begin() + Offset(start), arrived, static_cast<uint8_t*>(buffer));
  file->position += static_cast<uint32_t>(arrived);
  return static_cast<int>(arrived);
}

int VX_RedirectedSeek(HANDLE file, int offset, int origin) {
  if (!Kernel().Usable(file)) return -1;
  const auto failure = Kernel().Happens("seek", {offset, origin});
  if (failure && *failure != Fault::kElsewhere) return -1;
  int64_t position = static_cast<uint32_t>(offset);
  if (origin == VX_SEEK_CURRENT) position = int64_t{file->position} + offset;
  if (origin == VX_SEEK_END) position = static_cast<int64_t>(Kernel().file.size()) + offset;
  if (failure) ++position;
  if (position < 0 || position > kHighestPosition) return -1;
  file->position = static_cast<uint32_t>(position);
  return static_cast<int>(file->position);
}

int VX_RedirectedClose(HANDLE file) {
  if (!Kernel().Usable(file)) return STATUS_BAD_PARAMETER;
  (void)Kernel().Happens("close");
  file->open = false;
  return STATUS_OK;
}

// ---- memory

void* VX_LocalAlloc(unsigned int count, unsigned int size, int line, const char* file) {
  CheckTag(line, file);
  if (size != 1 && size != 3 && size != 4 && size != 216) Kernel().Complain("strange element size");
  const uint64_t bytes = uint64_t{count} * size;
  const std::string number = "#" + std::to_string(Kernel().blocksMade + 1);
  const auto failure = Kernel().Happens("alloc", {static_cast<int64_t>(bytes)}, number);
  if (failure || bytes > kMemoryLimit) return nullptr;
  void* memory = std::malloc(static_cast<std::size_t>(std::max<uint64_t>(bytes, 1)));
  if (bytes != 0) std::memset(memory, kGarbage, static_cast<std::size_t>(bytes));
  Kernel().blocks[memory] = ++Kernel().blocksMade;
  return memory;
}

void* VX_LocalAllocInit(unsigned int count, unsigned int size, int line, const char* file) {
  void* memory = VX_LocalAlloc(count, size, line, file);
  return memory == nullptr ? nullptr : std::memset(memory, 0, std::size_t{count} * size);
}

void VX_LocalFree(void* memory, int line, const char* file) {
  if (memory == nullptr) return;
  CheckTag(line, file);
  const auto block = Kernel().blocks.find(memory);
  if (block == Kernel().blocks.end()) return Kernel().Complain("free of memory that is not allocated");
  (void)Kernel().Happens("free", {}, "#" + std::to_string(block->second));
  for (const auto& bitmap : Kernel().bitmaps) {
    if (bitmap.first == memory) Kernel().Complain("record of a live bitmap freed");
  }
  Kernel().blocks.erase(block);
  std::free(memory);
}

// ---- bitmaps

int VX_InitBitmap(_BITMAPHANDLE* bitmap, unsigned int recordSize, int width, int height, int bitsPerPixel) {
  const auto failure = Kernel().Happens("init", {recordSize, width, height, bitsPerPixel});
  if (failure) return *failure;
  *bitmap = Record(width, height, bitsPerPixel);
  bitmap->BytesPerLine += Kernel().longerMaskRows;
  Kernel().bitmaps[bitmap] = {};
  return STATUS_OK;
}

int VX_AllocateBitmap(_BITMAPHANDLE* bitmap, int option) {
  const auto failure = Kernel().Happens("allocate", {option});
  if (Kernel().Known(bitmap) == nullptr || failure) return failure.value_or(STATUS_BAD_PARAMETER);
  bitmap->Flags |= BITMAP_ALLOCATED;
  return STATUS_OK;
}

void VX_FreeBitmap(_BITMAPHANDLE* bitmap) {
  (void)Kernel().Happens("free-bitmap");
  const auto* state = Kernel().Known(bitmap);
  if (state != nullptr && state->accessed) Kernel().Complain("bitmap freed while accessed");
  Kernel().bitmaps.erase(bitmap);
  *bitmap = {};
}

int VX_IntAccessBitmap(_BITMAPHANDLE* bitmap, int option) {
  const auto failure = Kernel().Happens("access", {option});
  auto* state = Kernel().Known(bitmap);
  if (failure || state == nullptr) return failure.value_or(STATUS_BAD_PARAMETER);
  state->accessed = true;
  return STATUS_OK;
}

int VX_IntReleaseBitmap(_BITMAPHANDLE* bitmap, int option, int status) {
  const auto failure = Kernel().Happens("release", {option, status});
  auto* state = Kernel().Known(bitmap);
  if (state != nullptr && !std::exchange(state->accessed, false)) Kernel().Complain("release without access");
  return failure.value_or(status);
}

int VX_GetBitmapRow(_BITMAPHANDLE* bitmap, unsigned char* buffer, int row, unsigned int byteCount) {
  const auto failure = Kernel().Happens("get", {row, byteCount});
  const auto* state = Kernel().Known(bitmap);
  if (failure || state == nullptr) return failure.value_or(STATUS_BAD_PARAMETER);
  const std::size_t start = static_cast<std::size_t>(row) * static_cast<unsigned>(bitmap->BytesPerLine);
  if (start + byteCount > state->pixels.size()) {
    Kernel().Complain("row outside the bitmap fetched");
  } else {
    std::copy_n(state->pixels.begin() + Offset(start), byteCount, buffer);
  }
  return static_cast<int>(byteCount);
}

int VX_PutBitmapRow(_BITMAPHANDLE* bitmap, const unsigned char* buffer, int row, unsigned int byteCount) {
  const auto failure = Kernel().Happens("put", {row, byteCount});
  const auto* state = Kernel().Known(bitmap);
  if (failure || state == nullptr) return failure.value_or(STATUS_BAD_PARAMETER);
  if (!state->accessed || row < 0 || row >= bitmap->Height ||
      static_cast<int>(byteCount) != bitmap->BytesPerLine)
    Kernel().Complain("row put without access or outside the mask");
  Kernel().maskRows.emplace_back(buffer, buffer + byteCount);
  return static_cast<int>(byteCount);
}

void VX_GetFixedPalette(RGBQUAD* palette, int bitsPerPixel) {
  (void)Kernel().Happens("fixed-palette", {bitsPerPixel});
  for (int i = 0; i < 1 << bitsPerPixel; ++i)
    palette[i] = {static_cast<uint8_t>(i), static_cast<uint8_t>(bitsPerPixel), 0xEE, 0};
}

int VX_SetBitmapNewPalette(_BITMAPHANDLE* bitmap, const RGBQUAD* palette, int count) {
  const bool ofTarget = bitmap == &Kernel().target;
  const auto failure = Kernel().Happens("palette", {count}, ofTarget ? "of target" : "of mask");
  if (!ofTarget) (void)Kernel().Known(bitmap);
  for (int i = 0; ofTarget && i < count; ++i) {
    const RGBQUAD& color = palette[i];
    Kernel().palette.insert(Kernel().palette.end(), {color.Blue, color.Green, color.Red, color.Reserved});
  }
  return failure.value_or(STATUS_OK);
}

int VX_SetBitmapRgnFromMask(_BITMAPHANDLE* bitmap, int option, _BITMAPHANDLE* mask, int combine) {
  const auto failure = Kernel().Happens("region", {option, combine});
  const auto* state = Kernel().Known(mask);
  if (bitmap != &Kernel().target || (state != nullptr && state->accessed))
    Kernel().Complain("region of another bitmap, or from a mask still accessed");
  return failure.value_or(STATUS_OK);
}

// ---- saving

int VX_RedirectedWrite(HANDLE file, const void* buffer, unsigned int count) {
  if (!Kernel().Usable(file)) return -1;
  const auto failure = Kernel().Happens("write", {file->position, count});
  if (failure && *failure != Fault::kHalf) return *failure;
  const uint32_t stored = failure ? count / 2 : count;
  Bytes& bytes = Kernel().file;
  const std::size_t end = std::size_t{file->position} + stored;
  bytes.resize(count == 0 && !failure ? end : std::max(bytes.size(), end));
  std::copy_n(static_cast<const uint8_t*>(buffer), stored,
              bytes.begin() + static_cast<std::ptrdiff_t>(file->position));
  file->position += stored;
  return static_cast<int>(stored);
}

int VX_CreateMaskFromBitmapRgn(_BITMAPHANDLE* bitmap, _BITMAPHANDLE* mask, unsigned int recordSize) {
  if (const auto failure = Kernel().Happens("mask", {recordSize})) return *failure;
  *mask = Record(bitmap->Width, bitmap->Height, 1);
  mask->BytesPerLine = Kernel().saved.maskBytesPerLine;
  Fill(mask, Saved::MaskAt);
  return STATUS_OK;
}

int VX_ResourceAdd(int kind, void* handle, int, const char*) {
  CheckGlobal(handle);
  (void)Kernel().Happens("track", {kind});
  return STATUS_OK;
}

void* WinGlobalLock(void* handle) {
  CheckGlobal(handle);
  return Kernel().Happens("lock") ? nullptr : Kernel().saved.png.data();
}

int WinGlobalUnlock(void* handle) {
  CheckGlobal(handle);
  (void)Kernel().Happens("unlock");
  return STATUS_OK;
}

int VX_OsFreeHandle(void* handle, int, const char*) {
  CheckGlobal(handle);
  (void)Kernel().Happens("free-block");
  --Kernel().saved.globals;
  return STATUS_OK;
}

// ---- the display: a library, whose dispatch is there once it is loaded

int VX_GetDisDispatch(_DISDISPATCH* dispatch) {
  dispatch->Reserved1 = 1;  // seen by the caller
  return Kernel().Happens("ask").value_or(STATUS_OK);
}

HANDLE LoadLibrary(const char* fileName) {
  return Kernel().Happens("library", {}, fileName) ? nullptr : &displayLibrary;
}

int FreeLibrary(HANDLE library) {
  if (library != &displayLibrary) Kernel().Complain("another library freed");
  return Kernel().Happens("free-library").value_or(1);
}

}  // extern "C"

// ---- callbacks

int FakeRowCallback(IMAGEINFO* info, _BITMAPHANDLE* bitmap, unsigned char* row, unsigned int flags,
                    int rowNumber, int lineCount, void* userData) {
  FakeKernel& kernel = Kernel();
  const auto failure = kernel.Happens("row", {rowNumber, flags});
  if (info == nullptr || bitmap != &kernel.target || lineCount != 1 || userData != &kernel)
    kernel.Complain("row callback with wrong arguments");
  const auto kept = kernel.rowBytes.value_or(static_cast<std::size_t>(bitmap->BytesPerLine));
  kernel.rows.push_back({flags, rowNumber, Bytes(row, row + kept)});
  if (failure) return *failure;
  return static_cast<std::size_t>(kernel.rowsAccepted) < kernel.rows.size() ? FakeKernel::kRefused
                                                                            : STATUS_OK;
}

int FakeLoadPng(unsigned char* buffer, _BITMAPHANDLE* bitmap, unsigned int bitmapRecordSize, int bitsPerPixel,
                int reserved1, unsigned int bufferSize, int reserved0, IMAGEINFO* info) {
  FakeKernel& kernel = Kernel();
  const auto failure = kernel.Happens("load-png", {bitsPerPixel, bufferSize});
  kernel.stream.assign(buffer, buffer + bufferSize);
  if (bitmapRecordSize != sizeof(_BITMAPHANDLE) || reserved1 != 1 || reserved0 != 0)
    kernel.Complain("PNG load with wrong arguments");
  if (info->Format != FMT_PNG || info->Flags != 0x1000U)
    kernel.Complain("PNG load without its marks in FileInfo");
  if ((bitmap->Flags & BITMAP_ALLOCATED) != 0 || bitmap->Palette != nullptr)
    kernel.Complain("record for the decoded bitmap not empty");
  bitmap->Flags = BITMAP_ALLOCATED;  // whatever a failure leaves there is none of the filter's
  if (failure) return *failure;
  static RGBQUAD colors[] = {{0, 255, 7, 0}, {1, 254, 7, 0}, {2, 253, 7, 0}};
  *bitmap = Record(kernel.png.width, kernel.png.height, kernel.png.bits,
                   kernel.png.bits > 8 ? ORDER_BGR : ORDER_RGB);
  bitmap->ColorCount = kernel.png.colors;
  bitmap->Palette = colors;
  bitmap->Orientation = ORIENT_TOP_DOWN;
  bitmap->XResolution = 72;
  bitmap->YResolution = 144;
  if (!kernel.png.allocated) return STATUS_OK;
  bitmap->Flags = BITMAP_ALLOCATED;
  Fill(bitmap, [](int row, int i) { return static_cast<uint8_t>(16 * row + i); });
  return STATUS_OK;
}

int FakeGetPngInfo(unsigned char* buffer, IMAGEINFO* info, unsigned int infoRecordSize,
                   unsigned int bufferSize, int reserved0, int reserved1) {
  FakeKernel& kernel = Kernel();
  const auto failure = kernel.Happens("describe-png", {infoRecordSize, bufferSize});
  kernel.stream.assign(buffer, buffer + bufferSize);
  IMAGEINFO empty{};
  empty.StructSize = sizeof empty;
  if (std::memcmp(info, &empty, sizeof empty) != 0 || reserved0 != 0 || reserved1 != 0)
    kernel.Complain("PNG description with wrong arguments");
  if (failure) return *failure;
  *info = kernel.pngInfo;
  return STATUS_OK;
}

int FakeBeginSave(_BITMAPHANDLE* bitmap, _BITMAPHANDLE** converted, int bitsPerPixel, unsigned int* flags,
                  unsigned char** rowBuffer, int rowsPerCall, int convertArg1, int convertArg2,
                  _SAVEFILESTRUCT** saveFile) {
  const auto answer =
      Kernel().Happens("begin", {bitsPerPixel, *flags, rowsPerCall, convertArg1, convertArg2});
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
  const auto failure = Kernel().Happens("save-row", {row, rowCount, flags, convertArg1, convertArg2});
  for (int i = 0; i < converted->BytesPerLine; ++i) rowBuffer[i] = Saved::PixelAt(row, i);
  return failure.value_or(STATUS_OK);
}

int FakeEndSave(_BITMAPHANDLE*, _BITMAPHANDLE**, unsigned int*, unsigned char**, _SAVEFILESTRUCT**) {
  (void)Kernel().Happens("end");
  return STATUS_OK;
}

int FakeSaveToMemory(void** memory, _BITMAPHANDLE*, int format, int bitsPerPixel, int reserved0,
                     unsigned int* size, int reserved1) {
  if (const auto failure = Kernel().Happens("encode", {format, bitsPerPixel, reserved0, reserved1})) {
    return *failure;
  }
  ++Kernel().saved.globals;
  *memory = &globalBlock;
  *size = static_cast<unsigned int>(Kernel().saved.png.size());
  return STATUS_OK;
}
