// The wording of failures. Hints are a table of what helps with which reason, and when.
#include "failures/Report.h"

#include <fmt/format.h>

#include <cstdio>
#include <string>
#include <utility>

#include "failures/Errors.h"
#include "words/Text.h"

namespace cli {
namespace {

struct Hint {
  vx_reason reason;
  bool Circumstances::*condition;  ///< what the command must be able to do; null: nothing
  const char* text;
};

constexpr Hint kHints[] = {
    {VX_REASON_ROWS_MISSING, &Circumstances::takesTruncated,
     "--allow-truncated takes what is there of a file that ends early"},
    {VX_REASON_NO_SIGNATURE, &Circumstances::mayBeRaw,
     "pixel data without a header is described with --raw WIDTHxHEIGHTxBITS"},
    {VX_REASON_OVER_MEMORY_LIMIT, nullptr,
     "--memory-limit SIZE sets how much memory a picture may take, such as 4G"},
    {VX_REASON_NEEDS_PNG_ICON, nullptr, "--to png-icon, or --png for a page, makes such an icon"},
    {VX_REASON_TOO_LARGE, &Circumstances::makesIcon,
     "vxbmp icon makes icons of larger pictures: vxbmp icon logo.png -o favicon.ico"},
    {VX_REASON_NO_DISPLAY, nullptr,
     "VXDIS.so is built where libchafa is installed, and belongs beside the library"},
    {VX_REASON_NO_FILTER, nullptr, "VX_FILTER_PATH may name the folder that holds the filter"},
    {VX_REASON_BAD_FILTER, nullptr, "VX_FILTER_PATH may name the folder that holds the filter"},
};

/// Who turns pictures of other kinds into PNG files, with the Debian package that has the program.
constexpr std::pair<vx_foreign, const char*> kConverters[] = {
    {VX_FOREIGN_JPEG, "convert photo.jpg photo.png makes a PNG file of it (package imagemagick)"},
    {VX_FOREIGN_GIF, "convert 'picture.gif[0]' picture.png makes a PNG file of it (package imagemagick)"},
    {VX_FOREIGN_WEBP, "dwebp picture.webp -o picture.png makes a PNG file of it (package webp)"},
    {VX_FOREIGN_SVG,
     "rsvg-convert -w 512 drawing.svg -o drawing.png makes a PNG file of it (package librsvg2-bin)"},
    {VX_FOREIGN_TIFF, "convert picture.tif picture.png makes a PNG file of it (package imagemagick)"},
};

/// What the library advises programs is no help at a command line.
constexpr std::pair<vx_reason, const char*> kAdvice[] = {
    {VX_REASON_NOT_A_FILE, "name a file: this is a folder, or what files are not read from or written to"},
    {VX_REASON_NO_SIGNATURE, "use a program for files of that kind"},
    {VX_REASON_OVER_MEMORY_LIMIT, "--memory-limit SIZE raises the limit, such as 4G"},
    {VX_REASON_ROWS_MISSING, "--allow-truncated takes what is there"},
    {VX_REASON_NO_SUCH_PAGE, "vxbmp info FILE lists the pages"},
    {VX_REASON_FORMAT_NOT_WRITTEN, "choose another format with --to"},
    {VX_REASON_DEPTH_NOT_IN_FORMAT, "choose other --bits, or leave them out"},
    {VX_REASON_CODING_NOT_AT_DEPTH, "take another copy; --as-filter may make something of it"},
    {VX_REASON_PROFILE_DAMAGED, "leave out --srgb"},
};

thread_local Hearing* hearing = nullptr;

/// Standard error may be closed; there is nobody left to tell that.
void Print(const std::string& line) {
  std::fputs(line.c_str(), stderr);
}

/// Whether the text begins with the file's name, and not with a longer word that begins like it.
bool NamesFile(std::string_view text, std::string_view file) {
  if (!text.starts_with(file)) return false;
  text.remove_prefix(file.size());
  return text.starts_with(":") || text.starts_with(",") || text.starts_with(" ");
}

void PrintHint(const char* text) {
  if (hearing != nullptr) {
    hearing->hints.emplace_back(text);
  } else {
    Print(fmt::format("  hint: {}\n", text));
  }
}

void PrintHints(const vx_error_info& error, const Circumstances& circumstances) {
  for (const Hint& hint : kHints) {
    const bool helps = hint.condition == nullptr || circumstances.*hint.condition;
    if (hint.reason == error.reason && helps) PrintHint(hint.text);
  }
  for (const auto& [kind, text] : kConverters) {
    if (error.reason == VX_REASON_FOREIGN && error.first == kind) PrintHint(text);
  }
}

}  // namespace

void ReportFailure(const vx::Error& error, const Circumstances& circumstances) {
  const std::string problem = ProblemOf(error);
  const std::string prefix =
      NamesFile(problem, circumstances.file) ? "" : fmt::format("{}: ", Printable(circumstances.file));
  ReportMessage(fmt::format("{}{} ({}, {})", prefix, Printable(problem), vx_status_name(error.status()),
                            error.status()));
  PrintHints(error.info(), circumstances);
}

std::string AdviceOn(int reason) {
  for (const auto& [known, text] : kAdvice) {
    if (known == reason) return text;
  }
  return vx_reason_advice(reason);
}

void ReportMessage(std::string_view message) {
  if (hearing != nullptr) {
    hearing->messages.emplace_back(message);
    return;
  }
  Print(fmt::format("vxbmp: {}\n", message));
}

void ReportRemarks(std::string_view file, int except) {
  for (const vx_remark& remark : vx::Remarks()) {
    if (remark.code == except) continue;
    std::string words = vx_remark_text(remark.code);
    for (const auto& [place, number] : {std::pair("{1}", remark.first), {"{2}", remark.second}}) {
      if (const size_t at = words.find(place); at != std::string::npos)
        words.replace(at, 3, std::to_string(number));
    }
    const std::string page = remark.page > 0 ? fmt::format(", page {}", remark.page) : "";
    ReportMessage(fmt::format("{}{}: {}", Printable(file), page, words));
  }
}

Hearing::Hearing() {
  hearing = this;
}

Hearing::~Hearing() {
  hearing = nullptr;
}

}  // namespace cli
