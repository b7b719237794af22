#include "beyond/IconFile.h"

#include <algorithm>

#include "base/Errors.h"
#include "bitmap/Bitmap.h"
#include "filter/FilterCalls.h"
#include "format/HeaderEncoding.h"
#include "format/IconDirectory.h"

namespace vxkrn {
namespace {

using bmp::DirectoryBytes;

/// Bytes of an uncompressed image of that header, with its mask; 0 for what nobody reads.
uint64_t ImageBytes(const bmp::ImageHeader& header) {
  const int64_t height = std::abs(int64_t{header.height}) / 2;
  const bool isImage = header.size == bmp::kInfoHeaderSize && header.width > 0 &&
                       header.width <= kLongestSide && height <= kLongestSide && IsDepth(header.bitCount);
  if (!isImage) return 0;
  uint64_t colors = bmp::StoredPaletteEntries(header);
  if (header.compression == bmp::kCompressionBitFields && header.bitCount > 8) {
    colors = bmp::kMasksSize / sizeof(RGBQUAD);
  }
  const int64_t rowBytes = Stride(header.width, header.bitCount) + Stride(header.width, 1);
  return header.size + colors * sizeof(RGBQUAD) + static_cast<uint64_t>(rowBytes * height);
}

/// Says where bytes stand once the bodies follow one another behind the directory. What belongs to no body
/// must not come to stand where the next page will be written: its entry would then show that page.
class Relocation {
 public:
  Relocation(const std::vector<Extent>& bodies, uint64_t directoryBytes, uint64_t fileSize)
      : bodies_(bodies), directoryBytes_(directoryBytes), fileSize_(fileSize) {
    newBegins_.reserve(bodies.size());
    for (const Extent& body : bodies) {
      newBegins_.push_back(directoryBytes);
      directoryBytes += body.end - body.begin;
    }
    newEnd_ = directoryBytes;
  }

  [[nodiscard]] uint64_t Of(uint64_t old) const {
    if (old < directoryBytes_) return old;
    if (old >= fileSize_) return newEnd_ + (old - fileSize_);
    const auto behind = std::upper_bound(bodies_.begin(), bodies_.end(), old,
                                         [](uint64_t at, const Extent& body) { return at < body.begin; });
    if (behind == bodies_.begin() || old >= std::prev(behind)->end) return 0;
    const auto body = std::prev(behind);
    return newBegins_[static_cast<std::size_t>(body - bodies_.begin())] + (old - body->begin);
  }

 private:
  const std::vector<Extent>& bodies_;
  uint64_t directoryBytes_;
  uint64_t fileSize_;
  std::vector<uint64_t> newBegins_;
  uint64_t newEnd_ = 0;
};

}  // namespace

int FailToReadDirectory() {
  return Fail({STATUS_READ_ERROR, VX_REASON_SYSTEM_ERROR}, "its directory cannot be read");
}

uint64_t IconDirectory::Bytes() const noexcept {
  return DirectoryBytes(static_cast<uint32_t>(count));
}

bool IconReader::ReadEntry(int page, ICONDIRENTRY* entry) const noexcept {
  bmp::Block<bmp::kEntrySize> bytes{};
  if (!ReadAt(bmp::EntryOffset(page), bytes.data(), bmp::kEntrySize)) return false;
  *entry = bmp::DecodeEntry(bytes);
  return true;
}

int WriteHotSpot(const Backend& backend, const char* name, int page, HotSpot hotSpot) {
  bmp::Block<4> bytes{};
  bmp::StoreU16(bytes, 0, hotSpot.x);
  bmp::StoreU16(bytes, bmp::entry_at::kBitCount - bmp::entry_at::kPlanes, hotSpot.y);
  return Overwrite(backend, name, bmp::EntryOffset(page) + bmp::entry_at::kPlanes, bytes.data(),
                   bytes.size());
}

IconReader::IconReader(const Backend& backend, const char* name) noexcept
    : backend_(backend), file_(backend.functions.open(backend.user, name, VX_OPEN_READ)) {}

IconReader::~IconReader() {
  if (file_ != nullptr) (void)backend_.functions.close(backend_.user, file_);
}

bool IconReader::ReadAt(uint64_t position, void* bytes, uint32_t count) const noexcept {
  auto* next = static_cast<unsigned char*>(bytes);
  while (count > 0) {
    const int64_t got = backend_.functions.read_at(backend_.user, file_, next, count, position);
    if (got <= 0 || got > count) return false;
    next += got;
    position += static_cast<uint64_t>(got);
    count -= static_cast<uint32_t>(got);
  }
  return true;
}

int IconReader::ReadStart(IconDirectory* directory) const {
  if (file_ == nullptr) return Fail({STATUS_OPEN_ERROR, VX_REASON_SYSTEM_ERROR}, "it cannot be opened");
  const int64_t size = backend_.functions.size(backend_.user, file_);
  bmp::Block<bmp::kDirectorySize> bytes{};
  const bool isThere = size >= 0 && ReadAt(0, bytes.data(), bmp::kDirectorySize);
  const ICONDIR start = bmp::DecodeDirectory(bytes);
  const bool isIcon =
      isThere && start.Reserved == 0 && (start.Type == bmp::kIconType || start.Type == bmp::kCursorType);
  if (!isIcon) return Fail({STATUS_BAD_FORMAT, VX_REASON_NOT_AN_ICON}, "it is no icon or cursor file");
  directory->fileSize = static_cast<uint64_t>(size);
  directory->isCursor = start.Type == bmp::kCursorType;
  directory->count = start.Count;
  if (directory->fileSize >= directory->Bytes()) return STATUS_OK;
  return Fail(Cause(STATUS_READ_ERROR, VX_REASON_ENDS_EARLY).At(size), "the file ends at byte ", size,
              ", in the middle of the directory of its ", start.Count, " pages");
}

int IconReader::ReadDirectory(IconDirectory* directory) const {
  if (const int status = ReadStart(directory); status != STATUS_OK) return status;
  const auto count = static_cast<uint32_t>(directory->count);
  std::vector<bmp::Block<bmp::kEntrySize>> entries(count);
  if (!ReadAt(bmp::kDirectorySize, entries.data(), bmp::kEntrySize * count)) return FailToReadDirectory();
  directory->entries.reserve(count);
  for (const auto& entry : entries) directory->entries.push_back(bmp::DecodeEntry(entry));
  return STATUS_OK;
}

bool IconReader::IsPng(const ICONDIRENTRY& entry) const noexcept {
  bmp::Block<4> start{};
  return ReadAt(entry.ImageOffset, start.data(), start.size()) && bmp::BeginsLikePng(start);
}

bool IconReader::IsWithinReach(const ICONDIRENTRY& entry) const noexcept {
  const bool saysItsSize = entry.Width != 0 && entry.Height != 0;
  bmp::Block<bmp::kInfoHeaderSize> start{};
  return ReadAt(entry.ImageOffset, start.data(), saysItsSize ? bmp::kPngSignatureSize : bmp::kInfoHeaderSize);
}

Extent IconReader::BodyOf(const ICONDIRENTRY& entry, uint64_t directoryBytes,
                          uint64_t fileSize) const noexcept {
  const uint64_t begin = std::min<uint64_t>(entry.ImageOffset, fileSize);
  bmp::Block<bmp::kInfoHeaderSize> header{};
  const bool hasHeader = ReadAt(entry.ImageOffset, header.data(), bmp::kInfoHeaderSize);
  const uint64_t imageBytes = hasHeader ? ImageBytes(bmp::DecodeInfoHeader(header)) : uint64_t{0};
  const bool isPicture = imageBytes > 0 || IsPng(entry);
  if (!isPicture && begin < directoryBytes) return {begin, begin};
  return {begin, std::min(begin + std::max<uint64_t>(entry.BytesInRes, imageBytes), fileSize)};
}

std::vector<Extent> IconReader::Bodies(const IconDirectory& directory) const {
  std::vector<Extent> bodies;
  bodies.reserve(directory.entries.size());
  const uint64_t directoryBytes = directory.Bytes();
  for (const ICONDIRENTRY& entry : directory.entries) {
    bodies.push_back(BodyOf(entry, directoryBytes, directory.fileSize));
  }
  std::sort(bodies.begin(), bodies.end(), [](const Extent& a, const Extent& b) { return a.begin < b.begin; });
  std::vector<Extent> merged;
  for (const Extent& body : bodies) {
    if (body.begin == body.end) continue;
    if (!merged.empty() && body.begin <= merged.back().end) {
      merged.back().end = std::max(merged.back().end, body.end);
    } else {
      merged.push_back(body);
    }
  }
  return merged;
}

uint64_t UnreferencedBytes(const IconReader& reader, const IconDirectory& directory) {
  uint64_t free = 0;
  uint64_t end = directory.Bytes();
  for (const Extent& body : reader.Bodies(directory)) {
    free += body.begin > end ? body.begin - end : 0;
    end = std::max(end, body.end);
  }
  return free + (directory.fileSize - end);
}

int Compact(MemoryTarget* file) {
  const IconReader reader(file->AsBackend(), "");
  IconDirectory directory;
  const int status = reader.ReadDirectory(&directory);
  if (status != STATUS_OK) return status;
  const uint64_t directoryBytes = directory.Bytes();
  const std::vector<Extent> bodies = reader.Bodies(directory);
  if (!bodies.empty() && bodies.front().begin < directoryBytes) {
    return Fail(
        Cause(STATUS_BAD_FORMAT, VX_REASON_PAGE_IN_DIRECTORY, directoryBytes).At(bodies.front().begin),
        "the page at byte ", bodies.front().begin, " lies in the directory, which ends at byte ",
        directoryBytes, "; delete or replace it first");
  }
  const Relocation relocation(bodies, directoryBytes, directory.fileSize);
  memory::Vector<uint8_t> compact(file->Data(), file->Data() + directoryBytes);
  for (std::size_t i = 0; i < directory.entries.size(); ++i) {
    ICONDIRENTRY& entry = directory.entries[i];
    entry.ImageOffset = static_cast<uint32_t>(relocation.Of(entry.ImageOffset));
    const auto bytes = bmp::EncodeEntry(entry);
    std::copy(bytes.begin(), bytes.end(), compact.data() + DirectoryBytes(static_cast<uint32_t>(i)));
  }
  for (const Extent& body : bodies) {
    compact.insert(compact.end(), file->Data() + body.begin, file->Data() + body.end);
  }
  return file->Assign(compact.data(), compact.size()) ? STATUS_OK : STATUS_NO_MEMORY;
}

}  // namespace vxkrn
