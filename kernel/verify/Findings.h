// What is found while a file is judged, and the one table of what can be. Judges nothing itself.
#pragma once

#include <span>

#include "base/Memory.h"
#include "vx/verify.h"

namespace vxkrn {

/// A row of the table.
struct FindingRule {
  int code;
  const char* name;
  vx_severity severity;
  const char* done;    ///< words for what a repair did about it; "": it cannot be mended
  const char* text;    ///< with {1} and {2} in the places of first and second; "": the failure's own words
  const char* advice;  ///< what to do about it
};

/// @return the row, or null for other numbers
[[nodiscard]] const FindingRule* FindingRuleOf(int code) noexcept;
[[nodiscard]] inline bool CanBeMended(int code) noexcept {
  const FindingRule* rule = FindingRuleOf(code);
  return rule != nullptr && rule->done[0] != '\0';
}

struct Found {
  int code;
  int page;
  int64_t offset;
  int64_t first;
  int64_t second;
  int sentence;  ///< number of words of its own; below 0 where the table has them
};

/// For findings that no byte shows.
inline constexpr auto kNoByte = static_cast<uint64_t>(-1);

/// Gathers findings, and hands them over in order. Throws std::bad_alloc.
class Findings {
 public:
  /// @param fileSize what lies behind the end shows there
  explicit Findings(uint64_t fileSize) noexcept : fileSize_(fileSize) {}

  void Add(vx_finding_code code, int page, uint64_t offset, uint64_t first = 0, uint64_t second = 0);
  /// With the words of this thread's last failure, which it forgets.
  void AddFailure(vx_finding_code code, int page, uint64_t offset);

  /// Puts those of the whole file first, then page by page, each in the order of offsets.
  void Sort();
  [[nodiscard]] std::span<const Found> All() const noexcept { return all_; }
  /// Hands one over. @return what the function returned
  int Tell(const Found& found, vx_finding_function take, void* user) const noexcept;

 private:
  uint64_t fileSize_;
  memory::Vector<Found> all_;
  memory::Vector<memory::Vector<char>> sentences_;
};

}  // namespace vxkrn
