#include "arguments/PageSelection.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "failures/Errors.h"
#include "words/Numbers.h"
#include "words/Text.h"

namespace cli {
namespace {

[[noreturn]] void FailToRead(std::string_view selection) {
  throw UsageError(fmt::format("{}: a page is {}", Printable(selection), kSelectionForms));
}

class Selector {
 public:
  Selector(const vx::Source& source, std::string_view file)
      : source_(source), file_(file), count_(CountPages(source)), isAdded_(static_cast<size_t>(count_) + 1) {}

  void Add(std::string_view item) {
    if (const std::optional<int> number = ParseInt(item, 1)) return AddRange(item, *number, *number);
    if (item.starts_with('-')) return AddFromEnd(item);
    const size_t dash = item.find('-');
    if (dash == std::string_view::npos) return AddBySize(item);
    const std::optional<int> first = ParseInt(item.substr(0, dash), 1);
    const std::string_view end = item.substr(dash + 1);
    const std::optional<int> last = end.empty() ? std::max(count_, first.value_or(1)) : ParseInt(end, 1);
    if (!first || !last || *first > *last) FailToRead(item);
    AddRange(item, *first, *last);
  }

  [[nodiscard]] std::vector<int> Pages() && { return std::move(pages_); }

 private:
  void AddPage(int page) {
    const auto index = static_cast<size_t>(page);
    if (isAdded_[index]) return;
    isAdded_[index] = true;
    pages_.push_back(page);
  }

  void AddRange(std::string_view item, int first, int last) {
    if (last > count_) FailToFind(item);
    for (int page = first; page <= last; ++page) AddPage(page);
  }

  void AddFromEnd(std::string_view item) {
    const std::optional<int> number = ParseInt(item.substr(1), 1);
    if (!number) FailToRead(item);
    if (*number > count_) FailToFind(item);
    AddPage(count_ + 1 - *number);
  }

  /// WxH or WxH@BITS
  void AddBySize(std::string_view item) {
    const size_t at = std::min(item.find('@'), item.size());
    const size_t by = std::min(item.find('x'), at);
    const std::optional<int> width = ParseInt(item.substr(0, by), 1);
    const std::optional<int> height =
        ParseInt(item.substr(std::min(by + 1, at), at - std::min(by + 1, at)), 1);
    const std::optional<int> bits = at < item.size() ? ParseInt(item.substr(at + 1), 1) : 0;
    if (!width || !height || !bits) FailToRead(item);
    const size_t before = pages_.size();
    bool isThere = false;
    for (int page = 1; page <= count_; ++page) {
      if (!IsOfSize(page, *width, *height, *bits)) continue;
      isThere = true;
      AddPage(page);
    }
    if (!isThere && pages_.size() == before) FailToFind(item);
  }

  /// A page that cannot be described matches no size.
  [[nodiscard]] bool IsOfSize(int page, int width, int height, int bits) const try {
    const vx_info info = source_.Describe(page);
    return info.width == width && info.height == height && (bits == 0 || info.bits_per_pixel == bits);
  } catch (const vx::Error&) {
    return false;
  }

  [[noreturn]] void FailToFind(std::string_view item) const {
    throw FileError(VX_BAD_PAGE, file_,
                    fmt::format("there is no page {}; its pages are 1 to {}", Printable(item), count_));
  }

  const vx::Source& source_;
  std::string_view file_;
  int count_;
  std::vector<bool> isAdded_;  // by page
  std::vector<int> pages_;
};

}  // namespace

std::optional<vx_directory_info> FindDirectory(const vx::Source& source) try {
  const vx_directory_info directory = source.DescribeDirectory();
  return directory.page_count > 0 ? std::optional(directory) : std::nullopt;
} catch (const vx::Error& error) {
  if (error.status() == VX_BAD_FORMAT) return std::nullopt;
  throw;
}

int CountPages(const vx::Source& source) {
  const std::optional<vx_directory_info> directory = FindDirectory(source);
  return directory ? directory->page_count : source.Describe().page_count;
}

std::vector<int> SelectPages(std::string_view selection, const vx::Source& source, std::string_view file) {
  Selector selector(source, file);
  for (size_t start = 0; start <= selection.size();) {
    const size_t end = std::min(selection.find(',', start), selection.size());
    selector.Add(selection.substr(start, end - start));
    start = end + 1;
  }
  return std::move(selector).Pages();
}

int SelectPage(std::string_view selection, const vx::Source& source, std::string_view file) {
  const std::vector<int> pages = SelectPages(selection, source, file);
  if (pages.size() == 1) return pages.front();
  throw UsageError(fmt::format("{}: {} pages are meant, one is needed", Printable(selection), pages.size()));
}

}  // namespace cli
