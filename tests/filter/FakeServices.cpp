// The functions of the contract, as the filter finds them in this program before it looks into the real
// kernel, and the callbacks. They serve the fake kernel of the running test.
#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "FakeKernel.h"

namespace {

constexpr std::uint64_t kMemoryLimit = 1U << 20U;
constexpr std::int64_t kHighestPosition = 0xFFFFFFFE;
constexpr int kGarbage = 0xA5;  // what fresh memory holds

FakeKernel& Kernel() {
  return FakeKernel::Current();
}

std::ptrdiff_t Offset(std::size_t index) {
  return static_cast<std::ptrdiff_t>(index);
}

int RowSize(int width, int bits) {
  return static_cast<int>((std::int64_t{width} * bits + 31) / 32 * 4);
}

void CheckTag(int line, std::string_view tag) {
  if (tag != "API/Filters/Bmp/Common/Bmp" || line <= 0) Kernel().Complain("memory without its tag");
}

}  // namespace

extern "C" {

// ---- files

HANDLE VX_RedirectedOpen(const char* fileName, int flags, int permission) {
  const auto failure = Kernel().Happens(Kind::kOpen, "open " + std::string(fileName), {flags, permission});
  if (failure || std::string_view(fileName) != FakeKernel::kFileName)
    return std::bit_cast<HANDLE>(std::intptr_t{-1});
  Kernel().handles.push_back(std::make_unique<tagHANDLE>());
  return Kernel().handles.back().get();
}

int VX_RedirectedRead(HANDLE file, void* buffer, unsigned int count) {
  if (count == 0 || !Kernel().Usable(file)) return 0;
  const auto failure = Kernel().Happens(Kind::kRead, "read", {count});
  if (failure && *failure != Fault::kHalf) return *failure;
  const Bytes& bytes = Kernel().file;
  const std::size_t start = std::min<std::size_t>(file->position, bytes.size());
  std::size_t arrived = std::min<std::size_t>(count, bytes.size() - start);
  if (failure) arrived /= 2;
  std::copy_n(bytes.begin() + Offset(start), arrived, static_cast<std::uint8_t*>(buffer));
  file->position += static_cast<std::uint32_t>(arrived);
  return static_cast<int>(arrived);
}

int VX_RedirectedSeek(HANDLE file, int offset, int origin) {
  if (!Kernel().Usable(file)) return -1;
  const auto failure = Kernel().Happens(Kind::kSeek, "seek", {offset, origin});
  if (failure && *failure != Fault::kElsewhere) return -1;
  std::int64_t position = static_cast<std::uint32_t>(offset);
  if (origin == VX_SEEK_CURRENT) position = std::int64_t{file->position} + offset;
  if (origin == VX_SEEK_END) position = static_cast<std::int64_t>(Kernel().file.size()) + offset;
  if (failure) ++position;
  if (position < 0 || position > kHighestPosition) return -1;
  file->position = static_cast<std::uint32_t>(position);
  return static_cast<int>(file->position);
}

int VX_RedirectedClose(HANDLE file) {
  if (!Kernel().Usable(file)) return STATUS_BAD_PARAMETER;
  (void)Kernel().Happens(Kind::kClose, "close", {});
  file->open = false;
  return STATUS_OK;
}

// ---- memory

void* VX_LocalAlloc(unsigned int count, unsigned int size, int line, const char* file) {
  CheckTag(line, file);
  if (size != 1 && size != 3 && size != 4 && size != 216) Kernel().Complain("strange element size");
  const std::uint64_t bytes = std::uint64_t{count} * size;
  const std::string text = "alloc #" + std::to_string(Kernel().blocksMade + 1);
  const auto failure = Kernel().Happens(Kind::kAlloc, text, {static_cast<std::int64_t>(bytes)});
  if (failure || bytes > kMemoryLimit) return nullptr;
  void* memory = std::malloc(static_cast<std::size_t>(std::max<std::uint64_t>(bytes, 1)));
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
  (void)Kernel().Happens(Kind::kFree, "free #" + std::to_string(block->second), {});
  for (const auto& bitmap : Kernel().bitmaps) {
    if (bitmap.first == memory) Kernel().Complain("record of a live bitmap freed");
  }
  Kernel().blocks.erase(block);
  std::free(memory);
}

void VX_MemorySet(void* destination, int value, unsigned int count) {
  std::memset(destination, value, count);
}
void VX_MemoryCopy(void* destination, const void* source, unsigned int count) {
  std::memcpy(destination, source, count);
}
int VX_MemoryCompare(const void* first, const void* second, unsigned int count) {
  return std::memcmp(first, second, count);
}

// ---- bitmaps

int VX_InitBitmap(_BITMAPHANDLE* bitmap, unsigned int recordSize, int width, int height, int bitsPerPixel) {
  const auto failure = Kernel().Happens(Kind::kInitBitmap, "init", {recordSize, width, height, bitsPerPixel});
  if (failure) return *failure;
  *bitmap = {};
  bitmap->StructSize = recordSize;
  bitmap->Width = width;
  bitmap->Height = height;
  bitmap->BitsPerPixel = bitsPerPixel;
  bitmap->BytesPerLine = RowSize(width, bitsPerPixel) + Kernel().longerMaskRows;
  bitmap->Orientation = ORIENT_BOTTOM_UP;
  Kernel().bitmaps[bitmap] = {};
  return STATUS_OK;
}

int VX_AllocateBitmap(_BITMAPHANDLE* bitmap, int option) {
  const auto failure = Kernel().Happens(Kind::kAllocateBitmap, "allocate", {option});
  if (Kernel().Known(bitmap) == nullptr || failure) return failure.value_or(STATUS_BAD_PARAMETER);
  bitmap->Flags |= BITMAP_ALLOCATED;
  return STATUS_OK;
}

void VX_FreeBitmap(_BITMAPHANDLE* bitmap) {
  (void)Kernel().Happens(Kind::kFreeBitmap, "free bitmap", {});
  const auto* state = Kernel().Known(bitmap);
  if (state != nullptr && state->accessed) Kernel().Complain("bitmap freed while accessed");
  Kernel().bitmaps.erase(bitmap);
  *bitmap = {};
}

int VX_IntAccessBitmap(_BITMAPHANDLE* bitmap, int option) {
  const auto failure = Kernel().Happens(Kind::kAccess, "access", {option});
  auto* state = Kernel().Known(bitmap);
  if (failure || state == nullptr) return failure.value_or(STATUS_BAD_PARAMETER);
  state->accessed = true;
  return STATUS_OK;
}

int VX_IntReleaseBitmap(_BITMAPHANDLE* bitmap, int option, int status) {
  const auto failure = Kernel().Happens(Kind::kRelease, "release", {option, status});
  auto* state = Kernel().Known(bitmap);
  if (state != nullptr && !std::exchange(state->accessed, false)) Kernel().Complain("release without access");
  return failure.value_or(status);
}

int VX_GetBitmapRow(_BITMAPHANDLE* bitmap, unsigned char* buffer, int row, unsigned int byteCount) {
  const auto failure = Kernel().Happens(Kind::kGet, "get", {row, byteCount});
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
  const auto failure = Kernel().Happens(Kind::kPut, "put", {row, byteCount});
  const auto* state = Kernel().Known(bitmap);
  if (failure || state == nullptr) return failure.value_or(STATUS_BAD_PARAMETER);
  if (!state->accessed || row < 0 || row >= bitmap->Height ||
      static_cast<int>(byteCount) != bitmap->BytesPerLine)
    Kernel().Complain("row put without access or outside the mask");
  Kernel().maskRows.emplace_back(buffer, buffer + byteCount);
  return static_cast<int>(byteCount);
}

void VX_GetFixedPalette(RGBQUAD* palette, int bitsPerPixel) {
  (void)Kernel().Happens(Kind::kFixedPalette, "fixed palette", {bitsPerPixel});
  for (int i = 0; i < 1 << bitsPerPixel; ++i)
    palette[i] = {static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(bitsPerPixel), 0xEE, 0};
}

int VX_SetBitmapNewPalette(_BITMAPHANDLE* bitmap, const RGBQUAD* palette, int count) {
  const bool ofTarget = bitmap == &Kernel().target;
  const auto failure =
      Kernel().Happens(Kind::kPalette, ofTarget ? "palette of target" : "palette of mask", {count});
  if (!ofTarget) (void)Kernel().Known(bitmap);
  for (int i = 0; ofTarget && i < count; ++i) {
    const RGBQUAD& color = palette[i];
    Kernel().palette.insert(Kernel().palette.end(), {color.Blue, color.Green, color.Red, color.Reserved});
  }
  return failure.value_or(STATUS_OK);
}

int VX_SetBitmapRgnFromMask(_BITMAPHANDLE* bitmap, int option, _BITMAPHANDLE* mask, int combine) {
  const auto failure = Kernel().Happens(Kind::kRegion, "region", {option, combine});
  const auto* state = Kernel().Known(mask);
  if (bitmap != &Kernel().target || (state != nullptr && state->accessed))
    Kernel().Complain("region of another bitmap, or from a mask still accessed");
  return failure.value_or(STATUS_OK);
}

}  // extern "C"

// ---- callbacks

int FakeRowCallback(IMAGEINFO* info, _BITMAPHANDLE* bitmap, unsigned char* row, unsigned int flags,
                    int rowNumber, int lineCount, void* userData) {
  FakeKernel& kernel = Kernel();
  const auto failure = kernel.Happens(Kind::kRow, "row", {rowNumber, flags});
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
  const auto failure = kernel.Happens(Kind::kPngLoad, "load png", {bitsPerPixel, bufferSize});
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
  *bitmap = {};
  bitmap->StructSize = bitmapRecordSize;
  bitmap->Width = kernel.png.width;
  bitmap->Height = kernel.png.height;
  bitmap->BitsPerPixel = kernel.png.bits;
  bitmap->BytesPerLine = RowSize(kernel.png.width, kernel.png.bits);
  bitmap->ColorCount = kernel.png.colors;
  bitmap->Palette = colors;
  bitmap->Orientation = ORIENT_TOP_DOWN;
  bitmap->ColorOrder = kernel.png.bits > 8 ? ORDER_BGR : ORDER_RGB;
  bitmap->XResolution = 72;
  bitmap->YResolution = 144;
  if (!kernel.png.allocated) return STATUS_OK;
  bitmap->Flags = BITMAP_ALLOCATED;
  Bytes& pixels = kernel.bitmaps[bitmap].pixels;
  for (int row = 0; row < bitmap->Height; ++row) {
    for (int i = 0; i < bitmap->BytesPerLine; ++i) pixels.push_back(static_cast<std::uint8_t>(16 * row + i));
  }
  return STATUS_OK;
}

int FakeGetPngInfo(unsigned char* buffer, IMAGEINFO* info, unsigned int infoRecordSize,
                   unsigned int bufferSize, int reserved0, int reserved1) {
  FakeKernel& kernel = Kernel();
  const auto failure = kernel.Happens(Kind::kPngInfo, "describe png", {infoRecordSize, bufferSize});
  kernel.stream.assign(buffer, buffer + bufferSize);
  IMAGEINFO empty{};
  empty.StructSize = sizeof empty;
  if (std::memcmp(info, &empty, sizeof empty) != 0 || reserved0 != 0 || reserved1 != 0)
    kernel.Complain("PNG description with wrong arguments");
  if (failure) return *failure;
  *info = kernel.pngInfo;
  return STATUS_OK;
}
