// What several images, or the bytes between them, have to do with one another.
#include "verify/Judge.h"

#include <algorithm>
#include <array>

#include "base/CallRecord.h"
#include "base/Errors.h"
#include "beyond/Animation.h"
#include "bitmap/Bitmap.h"

namespace vxkrn {
namespace {

struct PurposeRule {
  int purpose;
  bool isCursor;
  std::array<int, 4> sides;  // 0: none
};
constexpr PurposeRule kPurposes[] = {{VX_PURPOSE_FAVICON, false, {16, 32, 48, 0}},
                                     {VX_PURPOSE_WINDOWS_ICON, false, {16, 32, 48, 256}},
                                     {VX_PURPOSE_CURSOR, true, {32, 0, 0, 0}}};

uint64_t EndOf(const vx_part& part) noexcept {
  return part.length > UINT64_MAX - part.offset ? UINT64_MAX : part.offset + part.length;
}

}  // namespace

bool IsPadding(const vx_source& source, const vx_part& part) noexcept {
  constexpr uint64_t kWord = 4;
  if (part.length >= kWord || EndOf(part) % kWord != 0) return false;
  const auto bytes = source.BlockAt<kWord>(part.offset);
  return std::all_of(bytes.begin(), bytes.begin() + part.length, [](uint8_t byte) { return byte == 0; });
}

void Judge::Take(vx_source& source, const ImagePlace& place, const BitmapImage& image) {
  const ImageView view = {source, place, image};
  const bool isReadable = JudgeHeaders(view, &findings_);
  JudgePage(view, isReadable, &findings_);
  if (view.IsPage()) KeepBody(place, image);
  if (place.isFirst && isReadable) JudgePixels(view, &budget_, &findings_);
}

void Judge::KeepBody(const ImagePlace& place, const BitmapImage& image) {
  const IconPart& part = *image.icon;
  (part.kind == IconPart::Kind::kCursor ? hasCursors_ : hasIcons_) = true;
  if (image.layout.width == image.layout.height) sides_.push_back(image.layout.width);
  const uint64_t begin = place.base + part.bodyOffset;
  const uint64_t size = std::max<uint64_t>(part.ownSize, part.entry.BytesInRes);
  if (place.base == 0) bodies_.push_back({begin, std::min(begin + size, fileSize_), place.page});
}

void Judge::TakeUnknown(vx_source& source, const ImagePlace& place) {
  const auto size = static_cast<uint64_t>(std::max<int64_t>(source.Size(), 0));
  const uint64_t at = place.base + place.offset;
  const auto signature = bmp::LoadU16(bmp::View<2>(source.BlockAt<2>(0)), 0);
  const bool isPage = signature == bmp::kIconSignature;
  if (isPage && place.offset >= size) {
    return findings_.Add(VX_FINDING_PAGE_MISSING, place.page, fileSize_, at);
  }
  if (isPage && place.base == 0) bodies_.push_back({at, at, place.page});  // nobody knows how long it is
  if (!Detail().Empty()) {
    const bool isCut = Failure().reason == VX_REASON_HEADER_CUT || Failure().reason == VX_REASON_ENDS_EARLY;
    const int64_t shows = Failure().offset;
    return findings_.AddFailure(isCut ? VX_FINDING_HEADER_CUT : VX_FINDING_UNREADABLE, place.page,
                                shows < 0 ? at : place.base + static_cast<uint64_t>(shows));
  }
  const uint64_t header = place.offset + (isPage ? 0 : bmp::kFileHeaderSize);
  if (header + sizeof(uint32_t) > size) {
    (void)Fail(Cause(STATUS_BAD_FORMAT, VX_REASON_HEADER_CUT), "the file ends at byte ", size,
               ", before its image header says how long it is");
    return findings_.AddFailure(VX_FINDING_HEADER_CUT, place.page, at);
  }
  const uint32_t length = bmp::LoadU32(bmp::View<4>(source.BlockAt<4>(header)), 0);
  findings_.Add(VX_FINDING_HEADER_UNKNOWN, place.page, place.base + header, length);
}

void Judge::JudgeDirectory(const vx_source& source) {
  const ICONDIR directory = bmp::DecodeDirectory(source.BlockAt<bmp::kDirectorySize>(0));
  if (!bmp::IsValidDirectory(directory)) return;
  const uint64_t end = bmp::DirectoryBytes(directory.Count);
  if (end > fileSize_) {
    const uint64_t there = (fileSize_ - std::min<uint64_t>(fileSize_, bmp::kDirectorySize)) / bmp::kEntrySize;
    findings_.Add(VX_FINDING_DIRECTORY_CUT, 0, fileSize_, directory.Count, there);
  }
  JudgeBodies(std::min(end, fileSize_));
}

void Judge::JudgeBodies(uint64_t directoryEnd) {
  std::stable_sort(bodies_.begin(), bodies_.end(),
                   [](const Body& one, const Body& other) { return one.begin < other.begin; });
  const Body* holder = nullptr;  // that reaches farthest, of those before
  for (const Body& body : bodies_) {
    if (body.begin < directoryEnd) {
      findings_.Add(VX_FINDING_PAGE_IN_DIRECTORY, body.page, body.begin, directoryEnd);
    }
    if (holder != nullptr && body.begin < holder->end) {
      const bool isSame = body.begin == holder->begin;
      findings_.Add(isSame ? VX_FINDING_PAGES_SHARED : VX_FINDING_PAGES_OVERLAP, body.page, body.begin,
                    static_cast<uint64_t>(holder->page));
    }
    if (holder == nullptr || body.end > holder->end) holder = &body;
  }
}

void Judge::JudgeAnimation(const vx_source& source) {
  if (!IsAnimation(source)) return;
  Animation animation;
  const int status = FindAnimation(source, &animation);
  const Remarks& remarks = ThisCall().remarks;
  if (remarks.count > 0) {
    const vx_remark& lie = remarks.all[0];
    findings_.Add(VX_FINDING_CHUNK_SIZE, 0, static_cast<uint64_t>(lie.first),
                  static_cast<uint64_t>(lie.second));
  }
  if (status != STATUS_OK) return findings_.AddFailure(VX_FINDING_UNREADABLE, 0, 0);
  BeginCall();
  uint64_t missing = 0;
  for (uint64_t step = 0; step < animation.StepCount(); ++step) {
    if (StepAt(source, animation, step).frame >= animation.frames.size()) ++missing;
  }
  if (missing > 0) {
    findings_.Add(VX_FINDING_FRAME_MISSING, 0, animation.sequence.begin, missing, animation.StepCount());
  }
}

void Judge::JudgePart(const vx_source& source, const vx_part& part) {
  const bool isCut = (part.flags & VX_PART_CUT) != 0;
  if (part.kind == VX_PART_UNREFERENCED && !IsPadding(source, part)) {
    const bool isTail = part.parent < 0 && EndOf(part) >= fileSize_;
    findings_.Add(isTail ? VX_FINDING_TRAILING : VX_FINDING_UNREFERENCED, part.page, part.offset,
                  part.length);
  } else if (part.kind == VX_PART_PROFILE && isCut) {
    findings_.Add(VX_FINDING_PROFILE_OUTSIDE, part.page, part.offset, part.length);
  } else if (part.kind == VX_PART_COLOR_TABLE && isCut) {
    findings_.Add(VX_FINDING_PALETTE_CUT, part.page, part.offset, part.length);
  }
}

void Judge::JudgeParts(const vx_source& source, std::span<const vx_part> parts) {
  for (const vx_part& part : parts) JudgePart(source, part);
  JudgeOverlaps(parts);
}

/// Structures of one picture; pages are told of as a whole, and masks that lack the room are cut.
void Judge::JudgeOverlaps(std::span<const vx_part> parts) {
  memory::Vector<const vx_part*> shared;
  for (const vx_part& part : parts) {
    const bool isStructure =
        part.kind != VX_PART_IMAGE && part.kind != VX_PART_AND_MASK && part.kind != VX_PART_UNKNOWN;
    if (isStructure && (part.flags & VX_PART_SHARED) != 0 && part.present > 0) shared.push_back(&part);
  }
  std::stable_sort(shared.begin(), shared.end(), [](const vx_part* one, const vx_part* other) {
    return one->page != other->page ? one->page < other->page : one->offset < other->offset;
  });
  const vx_part* holder = nullptr;
  for (const vx_part* part : shared) {
    const bool isOfOne = holder != nullptr && holder->page == part->page;
    if (isOfOne && part->offset < EndOf(*holder)) {
      findings_.Add(VX_FINDING_PARTS_OVERLAP, part->page, part->offset, holder->offset);
    }
    if (!isOfOne || EndOf(*part) > EndOf(*holder)) holder = part;
  }
}

void Judge::JudgePurpose(int purpose) {
  for (const PurposeRule& rule : kPurposes) {
    if (rule.purpose != purpose) continue;
    if (!(rule.isCursor ? hasCursors_ : hasIcons_)) return findings_.Add(VX_FINDING_WRONG_KIND, 0, kNoByte);
    for (const int side : rule.sides) {
      const bool isThere = side == 0 || std::find(sides_.begin(), sides_.end(), side) != sides_.end();
      if (!isThere) findings_.Add(VX_FINDING_SIZE_MISSING, 0, kNoByte, static_cast<uint64_t>(side));
    }
  }
}

int JudgeFile(vx_source& source, int purpose, Findings* findings) {
  const auto size = static_cast<uint64_t>(std::max<int64_t>(source.Size(), 0));
  BeginCall();  // what is found is told in the words of failures, none of which may be from before
  Judge judge(size, findings);
  memory::Vector<vx_part> parts;
  const int status = FindParts(source, &parts, &judge);
  if (status != STATUS_OK) return status;
  SettleParts(size, &parts);
  judge.JudgeParts(source, parts);
  judge.JudgeDirectory(source);
  judge.JudgeAnimation(source);
  judge.JudgePurpose(purpose);
  findings->Sort();
  BeginCall();
  return STATUS_OK;
}

}  // namespace vxkrn
