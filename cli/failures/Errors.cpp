// Wording of the failures that concern files of the system.
#include "failures/Errors.h"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>

#include "words/Text.h"

namespace cli {

FileError::FileError(vx_status status, std::string_view fileName, std::string_view problem)
    : std::runtime_error(fmt::format("{}: {} ({}, {})", Printable(fileName), problem, vx_status_name(status),
                                     static_cast<int>(status))),
      status_(status) {}

FileError FileError::FromErrno(vx_status status, std::string_view fileName, std::string_view what) {
  const std::error_code code(errno, std::generic_category());
  return {status, fileName, fmt::format("{}: {}", what, code.message())};
}

std::string ProblemOf(const vx::Error& error) {
  return error.detail().empty() ? vx_status_text(error.status()) : error.detail();
}

}  // namespace cli
