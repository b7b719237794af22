#include "OnePage.h"

#include <fmt/format.h>

#include <optional>

#include "Errors.h"
#include "Numbers.h"
#include "Text.h"

namespace cli {
namespace {

int ParsePage(const std::string& page) {
  if (page.empty()) return 1;
  if (const std::optional<int> number = ParseInt(page, 1)) return *number;
  throw UsageError(fmt::format("--page {}: a whole number from 1 is needed", Printable(page)));
}

}  // namespace

CLI::Option* OnePage::Declare(CLI::App& command) {
  CLI::Option* page =
      command.add_option("--page", page_, "page of an icon or cursor, from 1; 1 unless given")
          ->option_text("N");
  command.add_flag("--allow-truncated", allowTruncated_, "take what is there of a file cut short");
  return page;
}

vx::LoadOptions OnePage::Options() const {
  vx::LoadOptions options;
  options.page = ParsePage(page_);
  options.allow_truncated = allowTruncated_ ? 1 : 0;
  return options;
}

void OnePage::RemarkOnOthers(const vx::Source& source, const std::string& file) const {
  if (!page_.empty()) return;
  const int pages = source.Describe(1).page_count;
  if (pages < 2) return;
  Remark(fmt::format("{}: page 1 of {}; --page N takes another", Printable(file), pages));
}

vx::Bitmap LoadPage(const vx::Source& source, const vx::LoadOptions& options, Circumstances& at) try {
  return source.Load(options);
} catch (const vx::Error&) {
  at.loadsWhenTruncated = vx_error_rows_missing() != 0;
  throw;
}

}  // namespace cli
