// Telling people on standard error what went wrong and what they can do about it.
#pragma once

#include <string_view>
#include <vx/image.hpp>

namespace cli {

/// What was being done when something failed.
struct Circumstances {
  std::string_view file;        ///< the name for messages
  bool mayBeRaw = false;        ///< --raw could have been given, and was not
  bool takesTruncated = false;  ///< --allow-truncated can be given
};

/// "vxbmp: FILE, page N: what is wrong (STATUS, number)", and a hint where there is one.
void ReportFailure(const vx::Error& error, const Circumstances& circumstances);

/// "vxbmp: message"
void ReportMessage(std::string_view message);

/// "vxbmp: FILE: remark" for everything that the last load or save has to remark, but for one code that is
/// told in other words.
void ReportRemarks(std::string_view file, int except = VX_REMARK_NONE);

/// The same, but only where standard error is a terminal: for remarks on what went well.
void Remark(std::string_view message);

}  // namespace cli
