// Where the rows begin says the file's header, which is written before all else.
#include "files/MirroredFile.h"

#include <algorithm>
#include <cstring>

#include "format/BitmapHeader.h"

namespace vxkrn {
namespace {

constexpr uint64_t kMostGathered = 1 << 20;  // bytes

}  // namespace

MirroredFile::MirroredFile(const Backend& inner, uint64_t rowBytes, int rows) noexcept
    : inner_(inner),
      rowBytes_(rowBytes),
      rows_(static_cast<uint64_t>(rows)),
      rowsAtOnce_(std::min(kMostGathered / rowBytes, rows_)) {
  if (rowsAtOnce_ == 0) return;
  gathered_ =
      memory::MakeBytes(static_cast<std::size_t>(rowsAtOnce_ * rowBytes), {"kernel/MirroredFile", __LINE__});
}

bool MirroredFile::WriteAll(void* file, const uint8_t* bytes, uint64_t count, uint64_t place) const noexcept {
  while (count > 0) {
    const int64_t stored =
        inner_.functions.write_at(inner_.user, file, bytes, static_cast<uint32_t>(count), place);
    if (stored <= 0 || static_cast<uint64_t>(stored) > count) return false;
    bytes += stored;
    count -= static_cast<uint64_t>(stored);
    place += static_cast<uint64_t>(stored);
  }
  return true;
}

/// Takes bytes that belong to one row. Rows are gathered from the end of the block to its start, and written
/// once the last of them is whole.
int64_t MirroredFile::WriteRow(void* file, const uint8_t* bytes, uint32_t count, uint64_t position) noexcept {
  const uint64_t row = (position - firstRow_) / rowBytes_;
  const uint64_t within = (position - firstRow_) % rowBytes_;
  const auto part = static_cast<uint32_t>(std::min<uint64_t>(count, rowBytes_ - within));
  const uint64_t place = firstRow_ + (rows_ - 1 - row) * rowBytes_;
  if (gathered_ == nullptr) return inner_.functions.write_at(inner_.user, file, bytes, part, place + within);
  const uint64_t before = row % rowsAtOnce_;  // rows that are gathered already
  uint8_t* const gatheredRow = gathered_.get() + (rowsAtOnce_ - 1 - before) * rowBytes_;
  std::memcpy(gatheredRow + within, bytes, part);
  const bool isWhole = within + part == rowBytes_;
  const bool isLast = before + 1 == rowsAtOnce_ || row + 1 == rows_;
  if (isWhole && isLast && !WriteAll(file, gatheredRow, (before + 1) * rowBytes_, place)) return -1;
  return part;
}

/// Takes the bytes up to where the next ones belong elsewhere. @return how many, below 0 for an error
int64_t MirroredFile::Write(void* file, const uint8_t* bytes, uint32_t count, uint64_t position) noexcept {
  if (position == 0 && count >= bmp::kFileHeaderSize) {
    firstRow_ =
        bmp::DecodeFileHeader(bmp::View<bmp::kFileHeaderSize>(bytes, bmp::kFileHeaderSize)).dataOffset;
  }
  if (position >= firstRow_) return WriteRow(file, bytes, count, position);
  const auto part = static_cast<uint32_t>(std::min<uint64_t>(count, firstRow_ - position));
  return inner_.functions.write_at(inner_.user, file, bytes, part, position);
}

Backend MirroredFile::AsBackend() noexcept {
  return {{.open =
               [](void* user, const char* name, int flags) {
                 const Backend& inner = Of(user).inner_;
                 return inner.functions.open(inner.user, name, flags);
               },
           .read_at = [](void* /*user*/, void* /*file*/, void* /*buffer*/, uint32_t /*count*/,
                         uint64_t /*position*/) -> int64_t { return -1; },  // nobody reads what he writes
           .write_at =
               [](void* user, void* file, const void* buffer, uint32_t count, uint64_t position) {
                 return Of(user).Write(file, static_cast<const uint8_t*>(buffer), count, position);
               },
           .size =
               [](void* user, void* file) {
                 const Backend& inner = Of(user).inner_;
                 return inner.functions.size(inner.user, file);
               },
           .truncate =
               [](void* user, void* file, uint64_t size) {
                 const Backend& inner = Of(user).inner_;
                 return inner.functions.truncate(inner.user, file, size);
               },
           .close =
               [](void* user, void* file) {
                 const Backend& inner = Of(user).inner_;
                 return inner.functions.close(inner.user, file);
               }},
          this};
}

}  // namespace vxkrn
