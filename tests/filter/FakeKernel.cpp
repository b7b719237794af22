// The fake kernel's services. What the filter may not do (foreign pointers, closed handles, wrong
// tags) becomes a complaint in the verdict instead of a crash, so that one run reports all of it.
#include "FakeKernel.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

struct tagHANDLE {
  std::uint32_t position = 0;
  bool open = true;
  bool handedOver = false;
};

namespace {

constexpr std::uint64_t kMemoryLimit = 1U << 20U;
constexpr std::uint64_t kHighestPosition = 0xFFFFFFFEU;
constexpr int kGarbage = 0xA5;  // what fresh memory holds

FakeKernel* current = nullptr;

std::string Text(std::initializer_list<std::int64_t> numbers) {
  std::string text;
  for (const auto number : numbers) text += " " + std::to_string(number);
  return text;
}

std::size_t RowSize(int width, int bits) {
  return (static_cast<std::size_t>(width) * static_cast<unsigned>(bits) + 31) / 32 * 4;
}

}  // namespace

FakeKernel::FakeKernel() {
  current = this;
}

FakeKernel::~FakeKernel() {
  for (const auto& block : blocks) std::free(block.first);
  current = nullptr;
}

FakeKernel& FakeKernel::Current() {
  return *current;
}

void FakeKernel::StartCall() {
  events.clear();
  turns.clear();
  problems.clear();
  rows.clear();
  maskRows.clear();
  palette.clear();
  stream.clear();
  faultStruck = false;
  blocksMade = 0;
}

std::string FakeKernel::Verdict() const {
  std::string text;
  for (const auto& problem : problems) text += problem + "; ";
  for (const auto& block : blocks) text += "leaked block #" + std::to_string(block.second.id) + "; ";
  for (const auto& bitmap : bitmaps)
    text += bitmap.second.accessed ? "bitmap left accessed; " : "leaked bitmap; ";
  for (const auto& handle : handles) {
    if (handle->open != handle->handedOver) text += handle->open ? "file left open; " : "handle closed; ";
  }
  return text;
}

std::string FakeKernel::Log(std::initializer_list<Kind> kinds) const {
  std::string text;
  for (const auto& event : events) {
    if (std::find(kinds.begin(), kinds.end(), event.kind) == kinds.end()) continue;
    text += (text.empty() ? "" : ", ") + event.text;
  }
  return text;
}

Kind FakeKernel::LastEvent() const {
  return events.empty() ? Kind::kKinds : events.back().kind;
}

std::optional<int> FakeKernel::Happens(Kind kind, const std::string& text) {
  events.push_back({kind, text});
  const int turn = ++turns[kind];
  if (!fault || fault->kind != kind || !fault->Strikes(turn)) return std::nullopt;
  faultStruck = true;
  return fault->result;
}

// ---- files ------------------------------------------------------------------------------------------

HANDLE FakeKernel::HandOver() {
  handles.push_back(std::make_unique<tagHANDLE>());
  handles.back()->handedOver = true;
  return handles.back().get();
}

void FakeKernel::TakeBack(HANDLE handle) {
  std::erase_if(handles, [handle](const auto& each) { return each.get() == handle; });
}

std::uint32_t FakeKernel::Position(HANDLE handle) {
  return handle->position;
}

bool FakeKernel::Usable(HANDLE handle, const char* service) {
  const bool usable = std::any_of(handles.begin(), handles.end(),
                                  [&](const auto& each) { return each.get() == handle && each->open; });
  if (!usable) Complain(std::string(service) + " on a handle that is not open");
  return usable;
}

HANDLE FakeKernel::Open(const char* name, int flags, int permission) {
  const auto failure = Happens(Kind::kOpen, "open " + std::string(name) + Text({flags, permission}));
  if (failure || std::string_view(name) != kFileName) return std::bit_cast<HANDLE>(std::intptr_t{-1});
  handles.push_back(std::make_unique<tagHANDLE>());
  return handles.back().get();
}

int FakeKernel::Read(HANDLE handle, void* buffer, unsigned count) {
  if (count == 0 || !Usable(handle, "read")) return 0;
  const auto failure = Happens(Kind::kRead, "read" + Text({count}));
  if (failure && *failure != Fault::kHalfRead) return *failure;
  const std::size_t start = std::min<std::size_t>(handle->position, file.size());
  std::size_t arrived = std::min<std::size_t>(count, file.size() - start);
  if (failure) arrived /= 2;
  std::copy_n(file.begin() + static_cast<std::ptrdiff_t>(start), arrived, static_cast<std::uint8_t*>(buffer));
  handle->position += static_cast<std::uint32_t>(arrived);
  return static_cast<int>(arrived);
}

int FakeKernel::Seek(HANDLE handle, int offset, int origin) {
  if (!Usable(handle, "seek")) return -1;
  if (Happens(Kind::kSeek, "seek" + Text({offset, origin}))) return -1;
  std::int64_t position = static_cast<std::uint32_t>(offset);
  if (origin == VX_SEEK_CURRENT) position = static_cast<std::int64_t>(handle->position) + offset;
  if (origin == VX_SEEK_END) position = static_cast<std::int64_t>(file.size()) + offset;
  if (position < 0 || position > static_cast<std::int64_t>(kHighestPosition)) return -1;
  handle->position = static_cast<std::uint32_t>(position);
  return static_cast<int>(handle->position);
}

void FakeKernel::Close(HANDLE handle) {
  if (!Usable(handle, "close")) return;
  (void)Happens(Kind::kClose, "close");
  handle->open = false;
}

// ---- memory -----------------------------------------------------------------------------------------

void* FakeKernel::Allocate(unsigned count, unsigned size, int line, const char* tag) {
  const std::uint64_t bytes = std::uint64_t{count} * size;
  const std::string id = " #" + std::to_string(blocksMade + 1);
  const auto failure = Happens(Kind::kAlloc, "alloc" + id + " " + std::to_string(bytes));
  if (std::string_view(tag) != "API/Filters/Bmp/Common/Bmp" || line <= 0) Complain("allocation without tag");
  if (size != 1 && size != 3 && size != 4 && size != 216) Complain("strange element size");
  if (failure || bytes > kMemoryLimit) return nullptr;
  void* memory = std::malloc(static_cast<std::size_t>(std::max<std::uint64_t>(bytes, 1)));
  if (bytes != 0) std::memset(memory, kGarbage, static_cast<std::size_t>(bytes));
  blocks[memory] = {++blocksMade};
  return memory;
}

void FakeKernel::Free(void* memory, int line, const char* tag) {
  if (memory == nullptr) return;
  if (std::string_view(tag) != "API/Filters/Bmp/Common/Bmp" || line <= 0) Complain("free without tag");
  const auto block = blocks.find(memory);
  if (block == blocks.end()) return Complain("free of memory that is not allocated");
  (void)Happens(Kind::kFree, "free #" + std::to_string(block->second.id));
  for (const auto& bitmap : bitmaps) {
    if (bitmap.first == memory) Complain("record of a live bitmap freed");
  }
  blocks.erase(block);
  std::free(memory);
}

// ---- bitmaps ----------------------------------------------------------------------------------------

FakeKernel::BitmapState* FakeKernel::Known(_BITMAPHANDLE* bitmap, const char* service) {
  const auto found = bitmaps.find(bitmap);
  if (found != bitmaps.end()) return &found->second;
  Complain(std::string(service) + " on a bitmap that was never made");
  return nullptr;
}

int FakeKernel::InitBitmap(_BITMAPHANDLE* bitmap, unsigned recordSize, int width, int height, int bits) {
  const auto failure = Happens(Kind::kInitBitmap, "init" + Text({recordSize, width, height, bits}));
  if (failure) return *failure;
  *bitmap = {};
  bitmap->StructSize = recordSize;
  bitmap->Width = width;
  bitmap->Height = height;
  bitmap->BitsPerPixel = bits;
  bitmap->BytesPerLine = static_cast<int>(RowSize(width, bits));
  bitmap->Orientation = ORIENT_BOTTOM_UP;
  bitmaps[bitmap] = {};
  return STATUS_OK;
}

int FakeKernel::AllocateBitmap(_BITMAPHANDLE* bitmap, int option) {
  const auto failure = Happens(Kind::kAllocateBitmap, "allocate" + Text({option}));
  BitmapState* state = Known(bitmap, "allocate");
  if (failure || state == nullptr) return failure.value_or(STATUS_BAD_PARAMETER);
  state->pixels.resize(static_cast<std::size_t>(bitmap->BytesPerLine) *
                       static_cast<std::size_t>(std::max(bitmap->Height, 0)));
  bitmap->Flags |= BITMAP_ALLOCATED;
  return STATUS_OK;
}

void FakeKernel::FreeBitmap(_BITMAPHANDLE* bitmap) {
  (void)Happens(Kind::kFreeBitmap, "free bitmap");
  const BitmapState* state = Known(bitmap, "free bitmap");
  if (state != nullptr && state->accessed) Complain("bitmap freed while accessed");
  bitmaps.erase(bitmap);
  *bitmap = {};
}

int FakeKernel::Access(_BITMAPHANDLE* bitmap, int option) {
  const auto failure = Happens(Kind::kAccess, "access" + Text({option}));
  BitmapState* state = Known(bitmap, "access");
  if (failure || state == nullptr) return failure.value_or(STATUS_BAD_PARAMETER);
  state->accessed = true;
  return STATUS_OK;
}

int FakeKernel::Release(_BITMAPHANDLE* bitmap, int option, int status) {
  const auto failure = Happens(Kind::kRelease, "release" + Text({option, status}));
  BitmapState* state = Known(bitmap, "release");
  if (state != nullptr && !std::exchange(state->accessed, false)) Complain("release without access");
  return failure.value_or(status);
}

int FakeKernel::GetRow(_BITMAPHANDLE* bitmap, unsigned char* buffer, int row, unsigned count) {
  const auto failure = Happens(Kind::kGet, "get" + Text({row, count}));
  const BitmapState* state = Known(bitmap, "get row");
  if (failure || state == nullptr) return failure.value_or(STATUS_BAD_PARAMETER);
  const std::size_t start = static_cast<std::size_t>(row) * static_cast<unsigned>(bitmap->BytesPerLine);
  if (row < 0 || start + count > state->pixels.size())
    Complain("row outside the bitmap fetched");
  else
    std::copy_n(state->pixels.begin() + static_cast<std::ptrdiff_t>(start), count, buffer);
  return static_cast<int>(count);
}

int FakeKernel::PutRow(_BITMAPHANDLE* bitmap, const unsigned char* buffer, int row, unsigned count) {
  const auto failure = Happens(Kind::kPut, "put" + Text({row, count}));
  const BitmapState* state = Known(bitmap, "put row");
  if (failure || state == nullptr) return failure.value_or(STATUS_BAD_PARAMETER);
  if (!state->accessed) Complain("row put without access");
  if (row < 0 || row >= bitmap->Height) Complain("row put outside the bitmap");
  if (static_cast<int>(count) != bitmap->BytesPerLine) Complain("row of another length put");
  maskRows.emplace_back(buffer, buffer + count);
  return static_cast<int>(count);
}

void FakeKernel::FixedPalette(RGBQUAD* colors, int bits) {
  (void)Happens(Kind::kFixedPalette, "fixed palette" + Text({bits}));
  for (int i = 0; i < 1 << bits; ++i)
    colors[i] = {static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(bits), 0xEE, 0};
}

int FakeKernel::SetPalette(_BITMAPHANDLE* bitmap, const RGBQUAD* colors, int count) {
  const char* whose = bitmap == &target ? "target" : "mask";
  const auto failure = Happens(Kind::kPalette, std::string("palette of ") + whose + Text({count}));
  if (bitmap != &target) (void)Known(bitmap, "palette");
  if (bitmap == &target) palette.clear();
  for (int i = 0; bitmap == &target && i < count; ++i)
    palette.insert(palette.end(), {colors[i].Blue, colors[i].Green, colors[i].Red, colors[i].Reserved});
  return failure.value_or(STATUS_OK);
}

int FakeKernel::SetRegion(_BITMAPHANDLE* bitmap, int option, _BITMAPHANDLE* mask, int combine) {
  const auto failure = Happens(Kind::kRegion, "region" + Text({option, combine}));
  const BitmapState* state = Known(mask, "region");
  if (bitmap != &target) Complain("region of a bitmap other than the target");
  if (state != nullptr && state->accessed) Complain("region from a mask still accessed");
  return failure.value_or(STATUS_OK);
}

// ---- callbacks --------------------------------------------------------------------------------------

int FakeKernel::TakeRow(_BITMAPHANDLE* bitmap, const unsigned char* row, unsigned flags, int number,
                        int lineCount) {
  const auto failure = Happens(Kind::kRow, "row" + Text({number, flags}));
  if (bitmap != &target || lineCount != 1) Complain("row callback with wrong arguments");
  const auto kept = rowBytes.value_or(static_cast<std::size_t>(target.BytesPerLine));
  rows.push_back({flags, number, Bytes(row, row + kept)});
  if (failure) return *failure;
  return static_cast<std::size_t>(rowsAccepted) < rows.size() ? kRefused : STATUS_OK;
}

int FakeKernel::LoadPng(_BITMAPHANDLE* bitmap, unsigned recordSize, int bits, unsigned size,
                        const IMAGEINFO* info) {
  const auto failure = Happens(Kind::kPngLoad, "load png" + Text({bits, size}));
  if (recordSize != sizeof(_BITMAPHANDLE)) Complain("bitmap record of another size");
  if (info->Format != FMT_PNG || info->Flags != 0x1000U) Complain("PNG load without its marks in FileInfo");
  if ((bitmap->Flags & BITMAP_ALLOCATED) != 0 || bitmap->Palette != nullptr)
    Complain("decoded bitmap not empty");
  if (failure) return *failure;
  static RGBQUAD colors[256];
  for (int i = 0; i < 256; ++i)
    colors[i] = {static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(255 - i), 7, 0};
  *bitmap = {};
  bitmap->StructSize = recordSize;
  bitmap->Width = png.width;
  bitmap->Height = png.height;
  bitmap->BitsPerPixel = png.bits;
  bitmap->BytesPerLine = static_cast<int>(RowSize(png.width, png.bits));
  bitmap->ColorCount = png.colors;
  bitmap->Palette = png.colors > 0 ? colors : nullptr;
  bitmap->Orientation = ORIENT_TOP_DOWN;
  bitmap->ColorOrder = png.bits > 8 ? ORDER_BGR : ORDER_RGB;
  bitmap->XResolution = 72;
  bitmap->YResolution = 144;
  if (!png.allocated) return STATUS_OK;
  bitmap->Flags = BITMAP_ALLOCATED;
  Bytes& pixels = bitmaps[bitmap].pixels;
  for (int row = 0; row < png.height; ++row) {
    for (int i = 0; i < bitmap->BytesPerLine; ++i) pixels.push_back(static_cast<std::uint8_t>(16 * row + i));
  }
  return STATUS_OK;
}

int FakeKernel::DescribePng(IMAGEINFO* info, unsigned recordSize, unsigned size) {
  const auto failure = Happens(Kind::kPngInfo, "describe png" + Text({recordSize, size}));
  IMAGEINFO empty{};
  empty.StructSize = sizeof(IMAGEINFO);
  if (std::memcmp(info, &empty, sizeof empty) != 0) Complain("description record not cleared");
  if (failure) return *failure;
  *info = pngInfo;
  return STATUS_OK;
}
