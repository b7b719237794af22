// The list of a file's parts while it is made. Says nothing of what belongs into it.
#pragma once

#include <string_view>

#include "base/Memory.h"
#include "vx/inspect.h"

struct vx_structure {
  vxkrn::memory::Vector<vx_part> parts;
};

namespace vxkrn {

/// Adds parts, those of the page and below the part that are set. Throws std::bad_alloc.
class PartList {
 public:
  /// @param base where in the whole file the bytes begin that offsets count from
  explicit PartList(memory::Vector<vx_part>& parts, uint64_t base = 0) noexcept
      : parts_(parts), base_(base) {}

  /// @return the number of the part
  int Add(vx_part_kind kind, uint64_t offset, uint64_t length) {
    parts_.push_back({kind, parent_, page_, 0, base_ + offset, length, 0, 0, 0, ""});
    return static_cast<int>(parts_.size()) - 1;
  }
  /// A part of things of the same length.
  void Add(vx_part_kind kind, uint64_t offset, uint32_t count, uint32_t stride) {
    vx_part& part = parts_[static_cast<std::size_t>(Add(kind, offset, uint64_t{count} * stride))];
    part.count = count;
    part.stride = stride;
  }
  void AddChunk(vx_part_kind kind, uint64_t offset, uint64_t length, std::string_view name) {
    vx_part& part = parts_[static_cast<std::size_t>(Add(kind, offset, length))];
    name.copy(part.name, sizeof part.name - 1);
  }

  /// Notes that codes were walked to find where they end. @return whether there may be more of that: pages
  /// that share bytes could have a file walked over and over
  [[nodiscard]] bool MayWalkOn(uint64_t bytes, uint64_t fileSize) noexcept {
    walked_ += bytes;
    return walked_ / 4 <= fileSize;
  }

  void SetPage(int page) noexcept { page_ = page; }
  [[nodiscard]] int Page() const noexcept { return page_; }
  /// From now on parts lie in this one; -1: in none.
  void SetParent(int parent) noexcept { parent_ = parent; }
  [[nodiscard]] int Parent() const noexcept { return parent_; }
  [[nodiscard]] memory::Vector<vx_part>& Parts() noexcept { return parts_; }
  [[nodiscard]] uint64_t Base() const noexcept { return base_; }

 private:
  memory::Vector<vx_part>& parts_;
  uint64_t base_;
  uint64_t walked_ = 0;
  int page_ = 0;
  int parent_ = -1;
};

}  // namespace vxkrn
