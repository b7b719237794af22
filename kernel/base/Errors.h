// What this thread's last failed call found wrong: a reason for programs, a sentence for people. Written
// without allocating, because it must work when memory is what ran out.
#pragma once

#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <exception>
#include <new>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "base/Contract.h"
#include "vx/vx.h"

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

/// Why a call fails: the status, the reason, and the numbers that vx_reason says belong to it.
struct Cause {
  template <std::integral First = int, std::integral Second = int>
  Cause(int status, vx_reason reason, First first = 0, Second second = 0) noexcept
      : info{status, reason, 0, 0, -1, static_cast<int64_t>(first), static_cast<int64_t>(second)} {}

  /// The byte of the file where it shows.
  template <std::integral Offset>
  [[nodiscard]] Cause At(Offset offset) const noexcept {
    Cause cause = *this;
    cause.info.offset = static_cast<int64_t>(offset);
    return cause;
  }
  /// The page of the file where it shows, from 1.
  [[nodiscard]] Cause OnPage(int page) const noexcept {
    Cause cause = *this;
    cause.info.page = page;
    return cause;
  }

  vx_error_info info;
};

/// What the system refused, by its error number; 0 where that is not known.
[[nodiscard]] Cause SystemCause(int status, int error) noexcept;

/// The detail of this thread's last failure.
Text& Detail() noexcept;
/// The numbers of it.
vx_error_info& Failure() noexcept;

/// Forgets what earlier calls of this thread left: every call of an application starts with it.
void BeginCall() noexcept;

/// Says what went wrong. @return the cause's status, for `return Fail(...)`.
template <class... Parts>
int Fail(const Cause& cause, const Parts&... parts) noexcept {
  Failure() = cause.info;
  Detail().Clear();
  (Detail() << ... << parts);
  return cause.info.status;
}

/// STATUS_BAD_PARAMETER: an argument is null or out of its range.
template <class... Parts>
int FailForArgument(const Parts&... parts) noexcept {
  return Fail({STATUS_BAD_PARAMETER, VX_REASON_BAD_ARGUMENT}, parts...);
}

/// STATUS_NO_MEMORY with what was needed, and whether the limit or the system had no more.
int FailForMemory(std::string_view what, uint64_t needed) noexcept;

/// STATUS_NO_MEMORY after an exception, which does not say what the memory was for.
int FailForException() noexcept;

/// Puts the name of the file, and the page where that is worth saying, before the detail of what failed; what
/// FailRow failed names another one already.
/// @return status
int NameFailure(int status, std::string_view name, int page = 0) noexcept;

/// A failure on its way out of where rows are asked for, which return pixels: its detail is set.
struct Failed {
  int status;
};
/// Fails a row that was asked for: what is told of it already is all that there is to say.
[[noreturn]] void FailRow(int status);

/// Runs an application's call: no exception leaves it. std::bad_alloc means that memory ran out. Anything
/// else that is thrown is a fault of this library, or of functions of the application's.
template <class Call>
int Guarded(Call&& call) noexcept {
  BeginCall();
  try {
    return std::forward<Call>(call)();
  } catch (const Failed& failed) {
    return failed.status;
  } catch (const std::bad_alloc&) {
    return FailForException();
  } catch (const std::length_error&) {  // more than any container holds
    return FailForException();
  } catch (const std::exception& error) {
    return Fail({STATUS_FAILURE, VX_REASON_INTERNAL}, "an unexpected fault: ", error.what());
  }
}

}  // namespace vxkrn
