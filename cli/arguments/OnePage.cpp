#include "arguments/OnePage.h"

#include <fmt/format.h>

#include <optional>

#include "failures/Errors.h"
#include "failures/Report.h"
#include "words/Numbers.h"
#include "words/Text.h"

namespace cli {
namespace {

int ParsePage(const std::string& page) {
  if (page.empty()) return 1;
  if (const std::optional<int> number = ParseInt(page, 1)) return *number;
  throw UsageError(fmt::format("--page {}: a whole number from 1 is needed", Printable(page)));
}

}  // namespace

void OnePage::Declare(Arguments& command) {
  command.Add({.name = "--page", .help = "page of an icon or cursor, from 1; 1 unless given", .value = "N"},
              page_);
  command.Add({.name = "--allow-truncated", .help = "take what is there of a file cut short"},
              allowTruncated_);
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

}  // namespace cli
