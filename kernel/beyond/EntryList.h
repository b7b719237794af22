// The entries of a directory while pages come and go. They stand in runs, so that one more or less moves few
// of the others: a directory can have 65,535.
#pragma once

#include <vxkrn.h>

#include <vector>

namespace vxkrn {

class EntryList {
 public:
  /// Throws std::bad_alloc, as Insert does.
  void Assign(const std::vector<ICONDIRENTRY>& entries);

  [[nodiscard]] int Count() const noexcept { return count_; }
  /// @param page from 1 to Count
  [[nodiscard]] ICONDIRENTRY& At(int page) noexcept;
  [[nodiscard]] const ICONDIRENTRY& At(int page) const noexcept;
  /// @param page from 1 to Count + 1: which it becomes
  void Insert(int page, const ICONDIRENTRY& entry);
  /// @param page from 1 to Count
  void Erase(int page) noexcept;

  template <class Use>
  void ForEach(const Use& use) const {
    for (const Run& run : runs_) {
      for (const ICONDIRENTRY& entry : run) use(entry);
    }
  }

 private:
  using Run = std::vector<ICONDIRENTRY>;
  static constexpr std::size_t kLongestRun = 512;  // entries

  struct Place {
    std::size_t run;
    std::size_t index;
  };
  [[nodiscard]] Place Find(int page) const noexcept;

  std::vector<Run> runs_;  // none of them empty
  int count_ = 0;
};

}  // namespace vxkrn
