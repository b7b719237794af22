// Files inside others. A glance at every byte finds where one may begin; its headers are then taken apart,
// and it is one where they speak of nothing that is not there. Each place is looked at for itself: a header
// that lies hides nothing that begins behind it.
#include <algorithm>
#include <array>
#include <optional>

#include "base/Errors.h"
#include "beyond/Animation.h"
#include "beyond/FrameView.h"
#include "format/FileStart.h"
#include "inspect/FileParts.h"

namespace vxkrn {
namespace {

constexpr uint32_t kMostPages = 1000;  // else a crafted source would have each place look at 65,535

using Start = bmp::View<bmp::kFileStartSize>;

bool IsWorthALook(Start start) noexcept {
  return bmp::BeginsLikeFile(start) &&
         !(bmp::BeginsLikeIcon(start) && bmp::LoadU16(start, bmp::directory_at::kCount) > kMostPages);
}

uint64_t SizeOf(const vx_source& source) noexcept {
  return static_cast<uint64_t>(std::max<int64_t>(source.Size(), 0));
}

/// How long the file says it is, in a header at its beginning; 0 where it does not.
uint64_t StatedLength(Start start) noexcept {
  if (bmp::BeginsLikeAnimation(start)) {
    return bmp::kChunkHeaderSize + bmp::PaddedSize(bmp::LoadU32(start, bmp::chunk_at::kSize));
  }
  return bmp::BeginsLikeBitmap(start) ? bmp::LoadU32(start, bmp::file_at::kFileSize) : 0;
}

/// Where the last part ends; nothing where some part is none that anybody knows.
std::optional<uint64_t> EndOf(const memory::Vector<vx_part>& parts) noexcept {
  uint64_t end = 0;
  for (const vx_part& part : parts) {
    if (part.kind == VX_PART_UNKNOWN || part.length > INT64_MAX || part.offset > INT64_MAX) return {};
    end = std::max(end, part.offset + part.length);
  }
  return end;
}

/// Takes the file apart that has those bytes at most. Throws std::bad_alloc. @param found of length 0 where
/// it is none
/// @return STATUS_OK, or a failure with its detail set
int Measure(vx_source& source, const Extent& extent, uint64_t stated, vx_found_file* found) {
  constexpr uint64_t kMostPadding = 3;
  FrameView view(source, extent);
  const int status = view.Open(1);
  if (status != STATUS_OK) return status;
  memory::Vector<vx_part> parts;
  const std::optional<uint64_t> end =
      FindParts(view.Source(), &parts) == STATUS_OK ? EndOf(parts) : std::nullopt;
  vx_info info{};
  const bool isFile = end && vx_describe(&view.Source(), 1, &info) == VX_OK;
  BeginCall();  // what is wrong with bytes that are no file is told nobody
  if (!isFile) return STATUS_OK;
  const uint64_t there = extent.end - extent.begin;
  const bool isPadded = stated > *end && stated - *end <= kMostPadding && stated <= there;
  const uint64_t length = isPadded ? stated : *end;
  if (length > there && length != stated) return STATUS_OK;
  *found = {info.format, info.page_count, extent.begin, length, std::min(length, there)};
  return STATUS_OK;
}

/// The file that begins at `offset`; of length 0 where none does. What it says of its own length is tried
/// first: codes without an end would go on through what follows. Throws std::bad_alloc. @return STATUS_OK, or
/// a failure with its detail set
int LookAt(vx_source& source, uint64_t offset, vx_found_file* found) {
  *found = {};
  bmp::Block<bmp::kFileStartSize> start{};
  (void)source.PeekAnywhere(start.data(), bmp::kFileStartSize, offset);
  if (offset >= SizeOf(source) || !IsWorthALook(start)) return STATUS_OK;
  const uint64_t there = SizeOf(source) - offset;
  const uint64_t stated = StatedLength(start);
  if (stated >= bmp::kFileStartSize && stated < there) {
    const int status = Measure(source, {offset, offset + stated}, stated, found);
    if (status != STATUS_OK || (found->length > 0 && found->length <= stated)) return status;
  }
  return Measure(source, {offset, offset + there}, stated, found);
}

/// The places of a source where a file may begin, one after the other.
class Places {
 public:
  Places(const vx_source& source, uint64_t from, uint64_t until) noexcept
      : source_(source), at_(from), until_(std::min(until, SizeOf(source))) {}

  /// Throws Failed. @return nothing behind the last one
  std::optional<uint64_t> Next() {
    while (at_ < until_) {
      if (at_ + bmp::kFileStartSize > end_) Fill();
      const uint64_t last = std::min(until_, end_ - bmp::kFileStartSize + 1);
      for (const uint8_t* next = &window_[static_cast<std::size_t>(at_ - begin_)]; at_ < last;
           ++at_, ++next) {
        if (bmp::MayBeginWith(*next) && IsWorthALook(Start(next, bmp::kFileStartSize))) return at_++;
      }
    }
    return {};
  }

 private:
  /// Zeros follow the end of the source.
  void Fill() {
    const auto wanted =
        static_cast<uint32_t>(std::min<uint64_t>(kWindow, until_ - at_ + bmp::kFileStartSize));
    const uint32_t got = source_.PeekAnywhere(window_.data(), wanted, at_);
    const bool isLast = at_ + got >= SizeOf(source_);
    if (got < wanted && !isLast) {
      throw Failed{
          Fail(Cause(STATUS_READ_ERROR, VX_REASON_CHANGED_WHILE_READ).At(static_cast<int64_t>(at_ + got)),
               source_.Name(), ": cannot read at byte ", at_ + got)};
    }
    std::fill_n(window_.data() + got, bmp::kFileStartSize, uint8_t{0});
    begin_ = at_;
    end_ = at_ + got + (isLast ? bmp::kFileStartSize : 0);
  }

  static constexpr uint32_t kWindow = 1 << 18;

  const vx_source& source_;
  uint64_t at_;
  uint64_t until_;
  memory::Vector<uint8_t> window_ = memory::Vector<uint8_t>(kWindow + bmp::kFileStartSize);
  uint64_t begin_ = 0;
  uint64_t end_ = 0;
};

int FindFile(vx_source& source, uint64_t from, uint64_t until, vx_found_file* found) {
  Places places(source, from, until);
  while (const std::optional<uint64_t> place = places.Next()) {
    const int status = LookAt(source, *place, found);
    if (status != STATUS_OK || found->length > 0) return status;
  }
  return STATUS_OK;
}

}  // namespace
}  // namespace vxkrn

int vx_extent(vx_source* source, uint64_t offset, vx_found_file* found) {
  return vxkrn::Guarded([&]() -> int {
    if (found != nullptr) *found = {};
    if (source == nullptr || found == nullptr) {
      return vxkrn::FailForArgument("the source and the record to fill must be given");
    }
    const int status = vxkrn::LookAt(*source, offset, found);
    if (status != VX_OK || found->length > 0) return status;
    return vxkrn::Fail(vxkrn::Cause(VX_BAD_FORMAT, VX_REASON_NO_SIGNATURE).At(static_cast<int64_t>(offset)),
                       source->Name(), ": no whole bitmap, icon or cursor begins at byte ", offset);
  });
}

int vx_find_file(vx_source* source, uint64_t from, uint64_t until, vx_found_file* found) {
  return vxkrn::Guarded([&]() -> int {
    if (found != nullptr) *found = {};
    if (source == nullptr || found == nullptr || from > until) {
      return vxkrn::FailForArgument(
          "the source, the record to fill, and bytes of which the first is not behind the "
          "last must be given");
    }
    return vxkrn::FindFile(*source, from, until, found);
  });
}

int vx_read_bytes(vx_source* source, uint64_t offset, void* buffer, size_t count, size_t* read) {
  return vxkrn::Guarded([&]() -> int {
    if (read != nullptr) *read = 0;
    if (source == nullptr || buffer == nullptr || read == nullptr || count > UINT32_MAX) {
      return vxkrn::FailForArgument(
          "the source, the places for bytes and their number, and a count below 4 GiB must be given");
    }
    *read = source->PeekAnywhere(buffer, static_cast<uint32_t>(count), offset);
    return VX_OK;
  });
}
