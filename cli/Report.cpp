// The wording of failures. Hints are a table of what helps with which status, and when.
#include "Report.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "Errors.h"
#include "Text.h"

namespace cli {
namespace {

struct Hint {
  int status;
  bool (*helps)(const Circumstances&);
  const char* text;
};

bool Always(const Circumstances& /*unused*/) {
  return true;
}
bool MayTruncate(const Circumstances& at) {
  return at.isLoading && !at.allowTruncated;
}
bool MayBeRaw(const Circumstances& at) {
  return at.isLoading && !at.isRaw;
}

constexpr Hint kHints[] = {
    {VX_READ_ERROR, MayTruncate, "--allow-truncated takes what is there of a file that ends early"},
    {VX_BAD_FORMAT, MayBeRaw, "pixel data without a header is described with --raw WIDTHxHEIGHTxBITS"},
    {VX_NO_MEMORY, Always, "--memory-limit SIZE sets how much memory a picture may take, such as 4G"},
    {VX_NO_FILTER, Always, "VX_FILTER_PATH may name the folder that holds the filter"},
};

/// Standard error may be closed; there is nobody left to tell that.
void Print(const std::string& line) {
  std::fputs(line.c_str(), stderr);
}

void PrintHint(int status, const Circumstances& circumstances) {
  for (const Hint& hint : kHints) {
    if (hint.status == status && hint.helps(circumstances)) Print(fmt::format("  hint: {}\n", hint.text));
  }
}

}  // namespace

void ReportFailure(const vx::Error& error, const Circumstances& circumstances) {
  const std::string problem = ProblemOf(error);
  const std::string prefix =
      problem.starts_with(circumstances.file) ? "" : fmt::format("{}: ", Printable(circumstances.file));
  ReportMessage(fmt::format("{}{} ({}, {})", prefix, Printable(problem), vx_status_name(error.status()),
                            error.status()));
  PrintHint(error.status(), circumstances);
}

void ReportMessage(std::string_view message) {
  fmt::print(stderr, "vxbmp: {}\n", message);
}

void Remark(std::string_view message) {
  if (isatty(STDERR_FILENO) != 0) ReportMessage(message);
}

}  // namespace cli
