// One page of a file, as commands that take just one have it: --page, --allow-truncated, and what people
// ought to know about either.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vx/image.hpp>

#include "Report.h"

namespace cli {

class OnePage {
 public:
  /// Adds the options. @return --page
  CLI::Option* Declare(CLI::App& command);

  /// @throws UsageError
  [[nodiscard]] vx::LoadOptions Options() const;

  /// Tells people who watch, and who named no page, that there are more than the first.
  void RemarkOnOthers(const vx::Source& source, const std::string& file) const;

 private:
  std::string page_;
  bool allowTruncated_ = false;
};

/// Loads a page; when that fails, `at` is told what would have helped. @throws vx::Error
vx::Bitmap LoadPage(const vx::Source& source, const vx::LoadOptions& options, Circumstances& at);

}  // namespace cli
