#include "Pages/Directory.h"

#include "Kernel.h"
#include "Pages/BlockMove.h"
#include "format/HeaderEncoding.h"

namespace bmp {
namespace {

/// Adds `distance` to where a page's body is. An entry that cannot be reached or read stays as it is.
/// @return false when it cannot be written
bool MoveBody(HANDLE file, int page, uint32_t distance) {
  const uint32_t offset = EntryOffset(page);
  Block<kEntrySize> bytes;
  if (!SeekTo(file, offset) || !ReadBlock(file, bytes)) return true;
  ICONDIRENTRY entry = DecodeEntry(bytes);
  entry.ImageOffset += distance;
  return SeekTo(file, offset) && WriteBlock(file, EncodeEntry(entry));
}

/// Adds to the count in the file's directory. Where the directory cannot be read again, the one read before
/// counts.
/// @return false when it cannot be written
bool Count(HANDLE file, ICONDIR& directory, int difference) {
  Block<kDirectorySize> bytes;
  if (SeekTo(file, 0) && ReadBlock(file, bytes)) directory = DecodeDirectory(bytes);
  directory.Count = static_cast<uint16_t>(static_cast<int>(directory.Count) + difference);
  return SeekTo(file, 0) && WriteBlock(file, EncodeDirectory(directory));
}

}  // namespace

int OpenSlot(HANDLE file, int page, ICONDIR directory) {
  const uint32_t slot = EntryOffset(page);
  const int status = BlockMove(file, slot, slot + kEntrySize);
  if (status != STATUS_OK) return status;
  for (int each = 1; each <= directory.Count + 1; ++each) {
    if (each != page) static_cast<void>(MoveBody(file, each, kEntrySize));
  }
  return Count(file, directory, 1) ? STATUS_OK : STATUS_WRITE_ERROR;
}

int CloseSlot(HANDLE file, int page, ICONDIR directory) {
  const uint32_t slot = EntryOffset(page);
  if (!SeekTo(file, slot)) return STATUS_WRITE_ERROR;
  const int status = BlockMove(file, slot + kEntrySize, slot);
  if (status != STATUS_OK) return status;
  if (!Count(file, directory, -1)) return STATUS_WRITE_ERROR;
  for (int each = 1; each <= directory.Count; ++each) {
    if (!MoveBody(file, each, 0U - kEntrySize)) return STATUS_WRITE_ERROR;
  }
  return STATUS_OK;
}

}  // namespace bmp
