// The services that the measured functions call. Nothing is checked: the data is well formed.
#include "MemoryKernel.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

extern "C" {
HANDLE VX_RedirectedOpen(const char*, int, int) {
  return &bench::theFile;
}
int VX_RedirectedRead(HANDLE file, void* buffer, unsigned int count) {
  if (file->descriptor >= 0) return static_cast<int>(read(file->descriptor, buffer, count));
  const size_t take = std::min<size_t>(count, file->data.size() - file->position);
  std::memcpy(buffer, file->data.data() + file->position, take);
  file->position += take;
  return static_cast<int>(take);
}
int VX_RedirectedWrite(HANDLE file, const void* buffer, unsigned int count) {
  if (file->position + count > file->data.size()) return 0;
  std::memcpy(file->data.data() + file->position, buffer, count);
  file->position += count;
  return static_cast<int>(count);
}
int VX_RedirectedSeek(HANDLE file, int offset, int origin) {
  if (file->descriptor >= 0) {
    return static_cast<int>(lseek(file->descriptor, offset, origin == VX_SEEK_CURRENT ? SEEK_CUR : SEEK_SET));
  }
  file->position = (origin == VX_SEEK_CURRENT ? file->position : 0) + static_cast<size_t>(offset);
  return static_cast<int>(file->position);
}
int VX_RedirectedClose(HANDLE) {
  return 0;
}
void* VX_LocalAlloc(unsigned int count, unsigned int size, int, const char*) {
  return std::malloc(std::max<size_t>(size_t{count} * size, 1));
}
void VX_LocalFree(void* memory, int, const char*) {
  std::free(memory);
}
void VX_MemorySet(void* destination, int value, unsigned int count) {
  std::memset(destination, value, count);
}
void VX_MemoryCopy(void* destination, const void* source, unsigned int count) {
  std::memcpy(destination, source, count);
}
}
