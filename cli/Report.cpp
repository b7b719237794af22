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
  bool (*helps)(const Circumstances&, std::string_view problem);
  const char* text;
};

bool Always(const Circumstances& /*unused*/, std::string_view /*unused*/) {
  return true;
}
bool TakesTruncated(const Circumstances& at, std::string_view /*unused*/) {
  return at.loadsWhenTruncated;
}
/// What begins like a picture is a damaged one.
bool MayBeRaw(const Circumstances& at, std::string_view problem) {
  return at.mayBeRaw && problem.find("it begins with the bytes") != std::string_view::npos;
}
bool FitsPngIcon(const Circumstances& /*unused*/, std::string_view problem) {
  return problem.find("Icons with PNG pages") != std::string_view::npos;
}
/// The limit is not all that memory can run out of.
bool IsOverLimit(const Circumstances& /*unused*/, std::string_view problem) {
  return problem.find("memory limit") != std::string_view::npos;
}

constexpr Hint kHints[] = {
    {VX_READ_ERROR, TakesTruncated, "--allow-truncated takes what is there of a file that ends early"},
    {VX_BAD_FORMAT, MayBeRaw, "pixel data without a header is described with --raw WIDTHxHEIGHTxBITS"},
    {VX_NO_MEMORY, IsOverLimit, "--memory-limit SIZE sets how much memory a picture may take, such as 4G"},
    {VX_BAD_DIMENSIONS, FitsPngIcon, "--to png-icon, or --png for a page, makes such an icon"},
    {VX_NO_DISPLAY_LIBRARY, Always,
     "VXDIS.so is built where libchafa is installed, and belongs beside the library"},
    {VX_NO_FILTER, Always, "VX_FILTER_PATH may name the folder that holds the filter"},
};

/// Standard error may be closed; there is nobody left to tell that.
void Print(const std::string& line) {
  std::fputs(line.c_str(), stderr);
}

/// Whether the text begins with the file's name as a name: what follows is no part of another word.
bool NamesFile(std::string_view text, std::string_view file) {
  if (!text.starts_with(file)) return false;
  text.remove_prefix(file.size());
  return text.starts_with(":") || text.starts_with(",") || text.starts_with(" ");
}

void PrintHint(int status, const Circumstances& circumstances, std::string_view problem) {
  for (const Hint& hint : kHints) {
    if (hint.status == status && hint.helps(circumstances, problem)) {
      Print(fmt::format("  hint: {}\n", hint.text));
    }
  }
}

}  // namespace

void ReportFailure(const vx::Error& error, const Circumstances& circumstances) {
  const std::string problem = ProblemOf(error);
  const std::string prefix =
      NamesFile(problem, circumstances.file) ? "" : fmt::format("{}: ", Printable(circumstances.file));
  ReportMessage(fmt::format("{}{} ({}, {})", prefix, Printable(problem), vx_status_name(error.status()),
                            error.status()));
  PrintHint(error.status(), circumstances, problem);
}

void ReportMessage(std::string_view message) {
  Print(fmt::format("vxbmp: {}\n", message));
}

void Remark(std::string_view message) {
  if (isatty(STDERR_FILENO) != 0) ReportMessage(message);
}

}  // namespace cli
