// Every byte of a file belongs to one part, to several, or to none.
#include <algorithm>
#include <numeric>

#include "inspect/FileParts.h"

namespace vxkrn {
namespace {

using Parts = memory::Vector<vx_part>;
using Numbers = memory::Vector<int>;

uint64_t EndOf(const vx_part& part) noexcept {
  return part.length > UINT64_MAX - part.offset ? UINT64_MAX : part.offset + part.length;
}

/// An image whose length nothing states reaches as far as what belongs to it.
void SpanImages(Parts& parts) {
  const Parts stated = parts;
  for (const vx_part& part : stated) {
    if (part.parent < 0 || stated[static_cast<std::size_t>(part.parent)].length != 0) continue;
    vx_part& image = parts[static_cast<std::size_t>(part.parent)];
    if (part.offset >= image.offset) image.length = std::max(image.length, EndOf(part) - image.offset);
  }
}

Numbers ByOffset(const Parts& parts) {
  Numbers order(parts.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
    return parts[static_cast<std::size_t>(a)].offset < parts[static_cast<std::size_t>(b)].offset;
  });
  return order;
}

/// Bytes that no part claims, told apart by the images that they lie in.
class Gaps {
 public:
  Gaps(const Parts& parts, Parts* gaps) noexcept : parts_(parts), gaps_(*gaps) {}

  void Enter(int image) { open_.push_back(image); }
  void Add(uint64_t begin, uint64_t end) {
    while (begin < end) {
      const vx_part* image = ImageAt(begin);
      const uint64_t until = image == nullptr ? end : std::min(end, EndOf(*image));
      gaps_.push_back({VX_PART_UNREFERENCED, image == nullptr ? -1 : open_.back(),
                       image == nullptr ? 0 : image->page, 0, begin, until - begin, until - begin, 0, 0, ""});
      begin = until;
    }
  }

 private:
  /// The innermost one, of those that began before the byte.
  const vx_part* ImageAt(uint64_t offset) noexcept {
    while (!open_.empty()) {
      const vx_part& image = parts_[static_cast<std::size_t>(open_.back())];
      if (EndOf(image) > offset) return &image;
      open_.pop_back();
    }
    return nullptr;
  }

  const Parts& parts_;
  Parts& gaps_;
  Numbers open_;
};

/// Parts that must not share bytes, met in the order of their offsets.
class Claims {
 public:
  void Meet(vx_part& part) noexcept {
    if (holder_ != nullptr && part.offset < end_) {
      part.flags |= VX_PART_SHARED;
      holder_->flags |= VX_PART_SHARED;
    }
    if (EndOf(part) <= end_) return;
    end_ = EndOf(part);
    holder_ = &part;
  }
  /// How far bytes are claimed.
  [[nodiscard]] uint64_t End() const noexcept { return end_; }

 private:
  uint64_t end_ = 0;
  vx_part* holder_ = nullptr;  // that claims the last of them
};

void FindGapsAndClashes(uint64_t fileSize, Parts& parts, Parts* found) {
  Claims bytes;
  Claims outerImages;
  Claims innerImages;  // of those
  Gaps gaps(parts, found);
  uint64_t told = 0;  // how far every byte is claimed, or in a gap
  for (const int number : ByOffset(parts)) {
    vx_part& part = parts[static_cast<std::size_t>(number)];
    part.present = std::min(part.length, fileSize - std::min(fileSize, part.offset));
    if (part.present < part.length) part.flags |= VX_PART_CUT;
    if (part.present == 0) continue;
    if (part.offset > told) gaps.Add(told, part.offset);
    told = std::max(told, part.offset);
    if (part.kind == VX_PART_IMAGE) {
      (part.parent < 0 ? outerImages : innerImages).Meet(part);
      gaps.Enter(number);
    } else {
      bytes.Meet(part);
      told = std::max(told, bytes.End());
    }
  }
  if (told < fileSize) gaps.Add(told, fileSize);
}

/// Puts every part behind the one that it belongs to, and those that belong to one into the order of the
/// file.
class Arrangement {
 public:
  explicit Arrangement(const Parts& parts) : parts_(parts), children_(parts.size()) {
    for (const int number : ByOffset(parts))
      ChildrenOf(parts[static_cast<std::size_t>(number)].parent).push_back(number);
  }

  Parts Run() {
    arranged_.reserve(parts_.size());
    Place(-1, -1);
    return std::move(arranged_);
  }

 private:
  Numbers& ChildrenOf(int number) noexcept {
    return number < 0 ? roots_ : children_[static_cast<std::size_t>(number)];
  }

  /// No deeper than files lie within files: three times.
  void Place(int old, int parent) {  // NOLINT(misc-no-recursion)
    for (const int child : ChildrenOf(old)) {
      arranged_.push_back(parts_[static_cast<std::size_t>(child)]);
      arranged_.back().parent = parent;
      Place(child, static_cast<int>(arranged_.size()) - 1);
    }
  }

  const Parts& parts_;
  Numbers roots_;
  memory::Vector<Numbers> children_;
  Parts arranged_;
};

}  // namespace

void SettleParts(uint64_t fileSize, Parts* parts) {
  SpanImages(*parts);
  Parts gaps;
  FindGapsAndClashes(fileSize, *parts, &gaps);
  parts->insert(parts->end(), gaps.begin(), gaps.end());
  *parts = Arrangement(*parts).Run();
}

}  // namespace vxkrn
