// What can go wrong on the way to a result, and the exit codes it leads to. Prints nothing.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vx/image.hpp>

namespace cli {

enum ExitCode : int {
  kExitOk = 0,
  kExitFailed = 1,  ///< a file could not be read or written
  kExitUsage = 2    ///< the arguments make no sense
};

/// The arguments ask for something that cannot be meant.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A file of the system could not be read or written; what() names it and the status, ready for a terminal.
class FileError : public std::runtime_error {
 public:
  FileError(vx_status status, std::string_view fileName, std::string_view problem);
  /// The problem is what errno says: `what` failed, "cannot write" for example.
  static FileError FromErrno(vx_status status, std::string_view fileName, std::string_view what);

  [[nodiscard]] vx_status status() const noexcept { return status_; }

 private:
  vx_status status_;
};

/// @return what went wrong, in the bytes of the library: its detail, which names the file where it speaks of
/// one, or else what the status means.
std::string ProblemOf(const vx::Error& error);

/// The reader of our output has gone. The command stops and reports nothing.
class OutputClosed : public std::runtime_error {
 public:
  OutputClosed() : std::runtime_error("the output was closed") {}
};

}  // namespace cli
