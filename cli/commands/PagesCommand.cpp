// vxbmp pages: the list of an icon or cursor file's pages, and the commands that take pages out or change
// them.
#include <fmt/format.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "arguments/PageSelection.h"
#include "commands/Pages.h"
#include "failures/Report.h"
#include "streams/Input.h"
#include "streams/Output.h"
#include "words/Facts.h"
#include "words/Json.h"
#include "words/Table.h"
#include "words/Text.h"

namespace cli {
namespace {

struct ListArguments {
  std::string file;
  bool json = false;
};

/// What is known of a page. Of a damaged one that is only the place that the directory names.
struct Page {
  int number;
  vx_page_info place;
  std::optional<vx_info> info;
  std::optional<vx::Error> failure;  // where there is no info
};

/// Describes a page as far as that goes; says what is wrong where it does not.
Page LookAt(const vx::Source& source, int number, const std::string& file) {
  Page page = {number, source.DescribePage(number), std::nullopt, std::nullopt};
  try {
    page.info = source.Describe(number);
  } catch (const vx::Error& error) {
    ReportFailure(error, {.file = file});
    page.failure = error;
  }
  return page;
}

std::string_view FormOf(const Page& page) {
  if (page.failure) return "bad";
  return page.place.is_png != 0 ? "PNG" : "bitmap";
}

TableRow RowOf(const Page& page, bool isCursor) {
  const vx_page_info& place = page.place;
  TableRow row = {fmt::to_string(page.number),
                  page.info ? SizeText(*page.info) : "?",
                  page.info ? fmt::to_string(page.info->bits_per_pixel) : "?",
                  std::string(FormOf(page)),
                  fmt::to_string(place.size),
                  fmt::to_string(place.offset)};
  if (isCursor) row.push_back(fmt::format("{},{}", place.hot_x, place.hot_y));
  return row;
}

std::string JsonOf(const Page& page, bool isCursor) {
  JsonLine line;
  line.Add("page", page.number);
  if (page.info) {
    line.Add("width", page.info->width);
    line.Add("height", page.info->height);
    line.Add("bits_per_pixel", page.info->bits_per_pixel);
  }
  line.Add("form", FormOf(page));
  line.Add("bytes", page.place.size);
  line.Add("offset", page.place.offset);
  if (isCursor) line.Add("hot_spot", std::pair<int, int>(page.place.hot_x, page.place.hot_y));
  if (page.failure) line.AddFailure(page.failure->status(), ProblemOf(*page.failure));
  return line.Text();
}

/// Where the facts go.
class PageList {
 public:
  PageList(bool isJson, bool isCursor) : isJson_(isJson), isCursor_(isCursor), table_(TitlesOf(isCursor)) {}

  void Add(const Page& page) {
    PrintToStandardOutput(isJson_ ? JsonOf(page, isCursor_) : table_.Add(RowOf(page, isCursor_)));
  }
  void Finish(uint64_t unreferenced) {
    std::string text = isJson_ ? std::string() : table_.Finish();
    if (isJson_) {
      JsonLine last;
      last.Add("unreferenced_bytes", unreferenced);
      text = last.Text();
    } else if (unreferenced > 0) {
      text += fmt::format("{} belong to no page; vxbmp pages compact drops them\n", ByteCount(unreferenced));
    }
    PrintToStandardOutput(text);
  }

 private:
  static TableRow TitlesOf(bool isCursor) {
    TableRow titles = {"PAGE", "SIZE", "BITS", "FORM", "BYTES", "OFFSET"};
    if (isCursor) titles.emplace_back("HOT SPOT");
    return titles;
  }

  bool isJson_;
  bool isCursor_;
  Table table_;
};

ExitCode List(const ListArguments& arguments) try {
  Input input(arguments.file.c_str());
  const vx::Source& source = input.Source();
  const uint64_t unreferenced = source.UnreferencedBytes();
  const int count = CountPages(source);
  PageList list(arguments.json, source.DescribeDirectory().is_cursor != 0);
  bool isWhole = true;
  for (int number = 1; number <= count; ++number) {
    const Page page = LookAt(source, number, InputName(arguments.file.c_str()));
    isWhole = isWhole && page.info.has_value();
    list.Add(page);
  }
  list.Finish(unreferenced);
  return isWhole ? kExitOk : kExitFailed;
} catch (const vx::Error& error) {
  ReportFailure(error, {.file = InputName(arguments.file.c_str())});
  if (arguments.json) {
    JsonLine line;
    line.AddFailure(error.status(), ProblemOf(error));
    PrintToStandardOutput(line.Text());
  }
  return kExitFailed;
}

/// The commands below take their own file, so a file before their name is one too many.
void RefuseListArguments(const ListArguments& arguments) {
  if (!arguments.file.empty()) throw UsageError(Printable(arguments.file) + " is a word too many");
  if (arguments.json) throw UsageError("--json is for the list of pages");
}

}  // namespace

std::string DetailsOf(bool selects, const std::string& example) {
  const std::string selection = fmt::format("SEL is a page or several: {}.\n\n", kSelectionForms);
  return fmt::format("{}Example:\n  vxbmp pages {}", selects ? selection : "", example);
}

Action DeclarePages(Arguments& command) {
  auto arguments = std::make_shared<ListArguments>();
  command.Add({.name = "FILE", .help = "icon or cursor file to list; - is standard input"}, arguments->file);
  command.Add({.name = "--json", .help = "print one JSON object a line, for scripts"}, arguments->json);
  DeclareExtract(command);
  DeclareEdits(command);
  for (Arguments& below : command.Commands()) {
    below.SetAction([arguments, action = below.GetAction()] {
      RefuseListArguments(*arguments);
      return action();
    });
  }
  return [arguments] {
    if (arguments->file.empty()) throw UsageError("the name of a file or a command is needed");
    return List(*arguments);
  };
}

}  // namespace cli
