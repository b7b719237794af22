// Telling people on standard error what went wrong and what they can do about it.
#pragma once

#include <string>
#include <string_view>
#include <vector>
#include <vx/image.hpp>

namespace cli {

/// What was being done when something failed.
struct Circumstances {
  std::string_view file;        ///< the name for messages
  bool mayBeRaw = false;        ///< --raw could have been given, and was not
  bool takesTruncated = false;  ///< --allow-truncated can be given
  bool makesIcon = false;       ///< what is written is an icon
};

/// "vxbmp: FILE, page N: what is wrong (STATUS, number)", and a hint where there is one.
void ReportFailure(const vx::Error& error, const Circumstances& circumstances);

/// @return what helps with a reason, for people at a command line; "" where nothing does
std::string AdviceOn(int reason);

/// "vxbmp: message"
void ReportMessage(std::string_view message);

/// "vxbmp: FILE: remark" for everything that the last load or save has to remark, but for one code that is
/// told in other words.
void ReportRemarks(std::string_view file, int except = VX_REMARK_NONE);

/// While it lives, what its thread reports is kept in it instead of being printed: for commands that do many
/// things at once and know better where and when to say it. One at a time in a thread.
class Hearing {
 public:
  Hearing();
  ~Hearing();
  Hearing(const Hearing&) = delete;
  Hearing& operator=(const Hearing&) = delete;

  /// As ReportMessage was given them.
  std::vector<std::string> messages;
  std::vector<std::string> hints;
};

}  // namespace cli
