// The functions of the contract, as the filter finds them in this program before it looks into the
// real kernel. Each forwards to the fake kernel of the running test.
#include <cstring>

#include "FakeKernel.h"

extern "C" {

HANDLE VX_RedirectedOpen(const char* fileName, int flags, int permission) {
  return FakeKernel::Current().Open(fileName, flags, permission);
}
int VX_RedirectedRead(HANDLE file, void* buffer, unsigned int count) {
  return FakeKernel::Current().Read(file, buffer, count);
}
int VX_RedirectedSeek(HANDLE file, int offset, int origin) {
  return FakeKernel::Current().Seek(file, offset, origin);
}
int VX_RedirectedClose(HANDLE file) {
  FakeKernel::Current().Close(file);
  return STATUS_OK;
}
void* VX_LocalAlloc(unsigned int count, unsigned int size, int line, const char* file) {
  return FakeKernel::Current().Allocate(count, size, line, file);
}
void* VX_LocalAllocInit(unsigned int count, unsigned int size, int line, const char* file) {
  void* memory = VX_LocalAlloc(count, size, line, file);
  return memory == nullptr ? nullptr : std::memset(memory, 0, std::size_t{count} * size);
}
void VX_LocalFree(void* memory, int line, const char* file) {
  FakeKernel::Current().Free(memory, line, file);
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
int VX_InitBitmap(_BITMAPHANDLE* bitmap, unsigned int recordSize, int width, int height, int bitsPerPixel) {
  return FakeKernel::Current().InitBitmap(bitmap, recordSize, width, height, bitsPerPixel);
}
int VX_AllocateBitmap(_BITMAPHANDLE* bitmap, int option) {
  return FakeKernel::Current().AllocateBitmap(bitmap, option);
}
void VX_FreeBitmap(_BITMAPHANDLE* bitmap) {
  FakeKernel::Current().FreeBitmap(bitmap);
}
int VX_IntAccessBitmap(_BITMAPHANDLE* bitmap, int option) {
  return FakeKernel::Current().Access(bitmap, option);
}
int VX_IntReleaseBitmap(_BITMAPHANDLE* bitmap, int option, int status) {
  return FakeKernel::Current().Release(bitmap, option, status);
}
int VX_GetBitmapRow(_BITMAPHANDLE* bitmap, unsigned char* buffer, int row, unsigned int byteCount) {
  return FakeKernel::Current().GetRow(bitmap, buffer, row, byteCount);
}
int VX_PutBitmapRow(_BITMAPHANDLE* bitmap, const unsigned char* buffer, int row, unsigned int byteCount) {
  return FakeKernel::Current().PutRow(bitmap, buffer, row, byteCount);
}
void VX_GetFixedPalette(RGBQUAD* palette, int bitsPerPixel) {
  FakeKernel::Current().FixedPalette(palette, bitsPerPixel);
}
int VX_SetBitmapNewPalette(_BITMAPHANDLE* bitmap, const RGBQUAD* palette, int count) {
  return FakeKernel::Current().SetPalette(bitmap, palette, count);
}
int VX_SetBitmapRgnFromMask(_BITMAPHANDLE* bitmap, int option, _BITMAPHANDLE* mask, int combine) {
  return FakeKernel::Current().SetRegion(bitmap, option, mask, combine);
}

}  // extern "C"

int FakeRowCallback(IMAGEINFO* info, _BITMAPHANDLE* bitmap, unsigned char* row, unsigned int flags,
                    int rowNumber, int lineCount, void* userData) {
  FakeKernel& kernel = FakeKernel::Current();
  if (info == nullptr || userData != &kernel) kernel.Complain("row callback without its record or user data");
  return kernel.TakeRow(bitmap, row, flags, rowNumber, lineCount);
}

int FakeLoadPng(unsigned char* buffer, _BITMAPHANDLE* bitmap, unsigned int bitmapRecordSize, int bitsPerPixel,
                int reserved1, unsigned int bufferSize, int reserved0, IMAGEINFO* info) {
  FakeKernel& kernel = FakeKernel::Current();
  if (reserved1 != 1 || reserved0 != 0) kernel.Complain("wrong constants to LoadPngFromMemory");
  kernel.stream.assign(buffer, buffer + bufferSize);
  return kernel.LoadPng(bitmap, bitmapRecordSize, bitsPerPixel, bufferSize, info);
}

int FakeGetPngInfo(unsigned char* buffer, IMAGEINFO* info, unsigned int infoRecordSize,
                   unsigned int bufferSize, int reserved0, int reserved1) {
  FakeKernel& kernel = FakeKernel::Current();
  if (reserved0 != 0 || reserved1 != 0) kernel.Complain("wrong constants to GetPngInfoFromMemory");
  kernel.stream.assign(buffer, buffer + bufferSize);
  return kernel.DescribePng(info, infoRecordSize, bufferSize);
}
