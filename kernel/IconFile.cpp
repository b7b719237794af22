#include "IconFile.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

#include "Bitmap.h"
#include "Errors.h"
#include "FilterCalls.h"

namespace vxkrn {
namespace {

static_assert(std::endian::native == std::endian::little, "the records are used as they stand in the file");

constexpr std::uint16_t kCursorType = 2;
constexpr unsigned char kPngStart[4] = {0x89, 'P', 'N', 'G'};

/// The header of an image inside an icon.
struct InfoHeader {
  std::uint32_t size;
  std::int32_t width;
  std::int32_t height;
  std::uint16_t planes;
  std::uint16_t bitCount;
  std::uint32_t compression;
  std::uint32_t imageSize;
  std::uint32_t resolution[2];
  std::uint32_t colorsUsed;
  std::uint32_t colorsImportant;
};
static_assert(sizeof(InfoHeader) == 40);

/// Bytes of an uncompressed image of that header, with its mask; 0 for what nobody reads.
std::uint64_t ImageBytes(const InfoHeader& header) {
  const std::int64_t height = std::abs(std::int64_t{header.height}) / 2;
  const bool isImage = header.size == sizeof header && header.width > 0 && header.width <= kMaxSide &&
                       height <= kMaxSide && IsDepth(header.bitCount);
  if (!isImage) return 0;
  constexpr std::uint32_t kBitFields = 3;
  std::uint64_t colors = header.bitCount <= 8 ? std::uint64_t{1} << header.bitCount : 0;
  if (header.colorsUsed != 0) colors = std::min<std::uint64_t>(colors, header.colorsUsed);
  if (header.compression == kBitFields && header.bitCount > 8) colors = 3;
  const std::int64_t rowBytes = Stride(header.width, header.bitCount) + Stride(header.width, 1);
  return sizeof header + colors * sizeof(RGBQUAD) + static_cast<std::uint64_t>(rowBytes * height);
}

std::uint64_t DirectoryBytes(std::size_t pages) {
  return sizeof(ICONDIR) + sizeof(ICONDIRENTRY) * pages;
}

/// Says where bytes stand once the bodies follow one another behind the directory. What belongs to no body
/// must not come to stand where the next page will be written: its entry would then show that page.
class Relocation {
 public:
  Relocation(const std::vector<Extent>& bodies, std::uint64_t directoryBytes, std::uint64_t fileSize)
      : bodies_(bodies), directoryBytes_(directoryBytes), fileSize_(fileSize) {
    newBegins_.reserve(bodies.size());
    for (const Extent& body : bodies) {
      newBegins_.push_back(directoryBytes);
      directoryBytes += body.end - body.begin;
    }
    newEnd_ = directoryBytes;
  }

  [[nodiscard]] std::uint64_t Of(std::uint64_t old) const {
    if (old < directoryBytes_) return old;
    if (old >= fileSize_) return newEnd_ + (old - fileSize_);
    const auto behind =
        std::upper_bound(bodies_.begin(), bodies_.end(), old,
                         [](std::uint64_t at, const Extent& body) { return at < body.begin; });
    if (behind == bodies_.begin() || old >= std::prev(behind)->end) return 0;
    const auto body = std::prev(behind);
    return newBegins_[static_cast<std::size_t>(body - bodies_.begin())] + (old - body->begin);
  }

 private:
  const std::vector<Extent>& bodies_;
  std::uint64_t directoryBytes_;
  std::uint64_t fileSize_;
  std::vector<std::uint64_t> newBegins_;
  std::uint64_t newEnd_ = 0;
};

}  // namespace

std::uint64_t IconDirectory::EntryOffset(int page) noexcept {
  return DirectoryBytes(static_cast<std::size_t>(page) - 1);
}

bool IconReader::ReadEntry(int page, ICONDIRENTRY* entry) const noexcept {
  return ReadAt(IconDirectory::EntryOffset(page), entry, sizeof *entry);
}

int WriteHotSpot(const Backend& backend, const char* name, int page, HotSpot hotSpot) {
  const std::uint64_t place = IconDirectory::EntryOffset(page) + offsetof(ICONDIRENTRY, Planes);
  return Overwrite(backend, name, place, &hotSpot, sizeof hotSpot);
}

IconReader::IconReader(const Backend& backend, const char* name) noexcept
    : backend_(backend), file_(backend.functions.open(backend.user, name, VX_OPEN_READ)) {}

IconReader::~IconReader() {
  if (file_ != nullptr) (void)backend_.functions.close(backend_.user, file_);
}

bool IconReader::ReadAt(std::uint64_t position, void* bytes, std::uint32_t count) const noexcept {
  auto* next = static_cast<unsigned char*>(bytes);
  while (count > 0) {
    const std::int64_t got = backend_.functions.read_at(backend_.user, file_, next, count, position);
    if (got <= 0 || got > count) return false;
    next += got;
    position += static_cast<std::uint64_t>(got);
    count -= static_cast<std::uint32_t>(got);
  }
  return true;
}

int IconReader::ReadDirectory(IconDirectory* directory) const {
  if (file_ == nullptr) return Fail(STATUS_OPEN_ERROR, "it cannot be opened");
  const std::int64_t size = backend_.functions.size(backend_.user, file_);
  ICONDIR start = {};
  const bool isIcon = size >= 0 && ReadAt(0, &start, sizeof start) && start.Reserved == 0 &&
                      (start.Type == 1 || start.Type == kCursorType);
  if (!isIcon) return Fail(STATUS_BAD_FORMAT, "it is no icon or cursor file");
  directory->fileSize = static_cast<std::uint64_t>(size);
  directory->isCursor = start.Type == kCursorType;
  if (directory->fileSize < DirectoryBytes(start.Count)) {
    return Fail(STATUS_READ_ERROR, "the file ends at byte ", size, ", in the middle of the directory of its ",
                start.Count, " pages");
  }
  directory->entries.resize(start.Count);
  const auto bytes = static_cast<std::uint32_t>(sizeof(ICONDIRENTRY) * start.Count);
  if (ReadAt(sizeof start, directory->entries.data(), bytes)) return STATUS_OK;
  return Fail(STATUS_READ_ERROR, "its directory cannot be read");
}

bool IconReader::IsPng(const ICONDIRENTRY& entry) const noexcept {
  unsigned char start[sizeof kPngStart];
  return ReadAt(entry.ImageOffset, start, sizeof start) && std::memcmp(start, kPngStart, sizeof start) == 0;
}

bool IconReader::IsWithinReach(const ICONDIRENTRY& entry) const noexcept {
  constexpr std::uint32_t kSignature = 8;  // bytes of a PNG stream that tell it from a bitmap
  const bool saysItsSize = entry.Width != 0 && entry.Height != 0;
  unsigned char start[sizeof(InfoHeader)];
  return ReadAt(entry.ImageOffset, start, saysItsSize ? kSignature : sizeof start);
}

Extent IconReader::BodyOf(const ICONDIRENTRY& entry, std::uint64_t directoryBytes,
                          std::uint64_t fileSize) const noexcept {
  const std::uint64_t begin = std::min<std::uint64_t>(entry.ImageOffset, fileSize);
  InfoHeader header = {};
  const std::uint64_t imageBytes =
      ReadAt(entry.ImageOffset, &header, sizeof header) ? ImageBytes(header) : std::uint64_t{0};
  const bool isPicture = imageBytes > 0 || IsPng(entry);
  if (!isPicture && begin < directoryBytes) return {begin, begin};
  return {begin, std::min(begin + std::max<std::uint64_t>(entry.BytesInRes, imageBytes), fileSize)};
}

std::vector<Extent> IconReader::Bodies(const IconDirectory& directory) const {
  std::vector<Extent> bodies;
  bodies.reserve(directory.entries.size());
  const std::uint64_t directoryBytes = DirectoryBytes(directory.entries.size());
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

std::uint64_t UnreferencedBytes(const IconReader& reader, const IconDirectory& directory) {
  std::uint64_t free = 0;
  std::uint64_t end = DirectoryBytes(directory.entries.size());
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
  const std::uint64_t directoryBytes = DirectoryBytes(directory.entries.size());
  const std::vector<Extent> bodies = reader.Bodies(directory);
  if (!bodies.empty() && bodies.front().begin < directoryBytes) {
    return Fail(STATUS_BAD_FORMAT, "the page at byte ", bodies.front().begin,
                " lies in the directory, which ends at byte ", directoryBytes,
                "; delete or replace it first");
  }
  const Relocation relocation(bodies, directoryBytes, directory.fileSize);
  memory::Vector<std::uint8_t> compact(file->Data(), file->Data() + directoryBytes);
  for (std::size_t i = 0; i < directory.entries.size(); ++i) {
    ICONDIRENTRY& entry = directory.entries[i];
    entry.ImageOffset = static_cast<std::uint32_t>(relocation.Of(entry.ImageOffset));
    std::memcpy(compact.data() + DirectoryBytes(i), &entry, sizeof entry);
  }
  for (const Extent& body : bodies) {
    compact.insert(compact.end(), file->Data() + body.begin, file->Data() + body.end);
  }
  return file->Assign(compact.data(), compact.size()) ? STATUS_OK : STATUS_NO_MEMORY;
}

}  // namespace vxkrn
