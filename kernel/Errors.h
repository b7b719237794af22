// What this thread's last failed call found wrong, in words. Written without allocating, because it must work
// when memory is what ran out.
#pragma once

#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <exception>
#include <string_view>
#include <utility>

#include "Contract.h"

namespace vxkrn {

/// A text of limited length; what does not fit is cut off.
class Text {
 public:
  Text& operator<<(std::string_view part) noexcept;
  template <std::integral Number>
  Text& operator<<(Number number) noexcept {
    std::array<char, 24> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    return *this << std::string_view(digits.data(), static_cast<std::size_t>(result.ptr - digits.data()));
  }
  void Clear() noexcept { text_[size_ = 0] = '\0'; }
  [[nodiscard]] bool Empty() const noexcept { return size_ == 0; }
  [[nodiscard]] const char* CString() const noexcept { return text_.data(); }

 private:
  std::array<char, 2048> text_{};
  std::size_t size_ = 0;
};

/// The detail of this thread's last failure.
Text& Detail() noexcept;

/// Notes that this thread's failed call missed rows of a picture and nothing else.
void NoteMissingRows() noexcept;

/// Forgets what earlier calls of this thread left: every call of an application starts with it.
void BeginCall() noexcept;

/// Says what went wrong. @return status, for `return Fail(...)`.
template <class... Parts>
int Fail(int status, const Parts&... parts) noexcept {
  Detail().Clear();
  (Detail() << ... << parts);
  return status;
}

/// STATUS_NO_MEMORY with what was needed, and whether the limit or the system had no more.
int FailForMemory(std::string_view what, std::uint64_t needed) noexcept;

/// STATUS_NO_MEMORY for want of memory that was noticed far from what it was for.
int FailForException() noexcept;

/// Runs an application's call: no exception leaves it.
template <class Call>
int Guarded(Call&& call) noexcept {
  BeginCall();
  try {
    return std::forward<Call>(call)();
  } catch (const std::exception&) {
    return FailForException();
  }
}

}  // namespace vxkrn
