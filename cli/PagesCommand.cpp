// vxbmp pages: the list of an icon or cursor file's pages, and the commands that take pages out or change
// them.
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Facts.h"
#include "Input.h"
#include "Json.h"
#include "Output.h"
#include "PageSelection.h"
#include "Pages.h"
#include "Report.h"
#include "Table.h"
#include "Text.h"

namespace cli {
namespace {

struct ListArguments {
  std::string file;
  bool json = false;
};

/// What is known of a page: of one that is damaged, only where it is said to lie.
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

void PrintTable(const std::vector<Page>& pages, bool isCursor, uint64_t unreferenced) {
  std::vector<TableRow> rows = {{"PAGE", "SIZE", "BITS", "FORM", "BYTES", "OFFSET"}};
  if (isCursor) rows.front().emplace_back("HOT SPOT");
  for (const Page& page : pages) rows.push_back(RowOf(page, isCursor));
  std::string text = InColumns(rows);
  if (unreferenced > 0) {
    text += fmt::format("{} belong to no page; vxbmp pages compact drops them\n", ByteCount(unreferenced));
  }
  PrintToStandardOutput(text);
}

void PrintJson(const std::vector<Page>& pages, bool isCursor, uint64_t unreferenced) {
  std::string text;
  for (const Page& page : pages) {
    Json line = {{"page", page.number}};
    if (page.info) {
      line["width"] = page.info->width;
      line["height"] = page.info->height;
      line["bits_per_pixel"] = page.info->bits_per_pixel;
    }
    line["form"] = FormOf(page);
    line["bytes"] = page.place.size;
    line["offset"] = page.place.offset;
    if (isCursor) line["hot_spot"] = {page.place.hot_x, page.place.hot_y};
    if (page.failure) AddFailure(line, page.failure->status(), ProblemOf(*page.failure));
    text += LineOf(line);
  }
  PrintToStandardOutput(text + LineOf({{"unreferenced_bytes", unreferenced}}));
}

ExitCode List(const ListArguments& arguments) try {
  Input input(arguments.file.c_str());
  const vx::Source& source = input.Source();
  const uint64_t unreferenced = source.UnreferencedBytes();
  const int count = CountPages(source);
  const bool isCursor = source.DescribeDirectory().is_cursor != 0;
  std::vector<Page> pages;
  for (int number = 1; number <= count; ++number) {
    pages.push_back(LookAt(source, number, InputName(arguments.file.c_str())));
  }
  const auto print = arguments.json ? PrintJson : PrintTable;
  print(pages, isCursor, unreferenced);
  const bool isWhole =
      std::all_of(pages.begin(), pages.end(), [](const Page& page) { return page.info.has_value(); });
  return isWhole ? kExitOk : kExitFailed;
} catch (const vx::Error& error) {
  ReportFailure(error, {.file = InputName(arguments.file.c_str())});
  if (arguments.json) {
    Json line;
    AddFailure(line, error.status(), ProblemOf(error));
    PrintToStandardOutput(LineOf(line));
  }
  return kExitFailed;
}

}  // namespace

std::string DetailsOf(bool selects, const std::string& example) {
  const std::string selection = fmt::format("SEL is a page or several: {}.\n\n", kSelectionForms);
  return fmt::format("{}Example:\n  vxbmp pages {}", selects ? selection : "", example);
}

Action DeclarePages(CLI::App& command) {
  auto arguments = std::make_shared<ListArguments>();
  command.require_subcommand(0, 1);
  command.add_option("FILE", arguments->file, "icon or cursor file to list; - is standard input");
  command.add_flag("--json", arguments->json, "print one JSON object a line, for scripts");
  std::vector<Nested> nested = {DeclareExtract(command)};
  DeclareEdits(command, nested);
  for (const Nested& each : nested) each.first->group("Commands");
  return [arguments, nested] {
    for (const auto& [sub, action] : nested) {
      if (!sub->parsed()) continue;
      if (!arguments->file.empty()) throw UsageError(Printable(arguments->file) + " is a word too many");
      if (arguments->json) throw UsageError("--json is for the list of pages");
      return action();
    }
    if (arguments->file.empty()) throw UsageError("the name of a file or a command is needed");
    return List(*arguments);
  };
}

}  // namespace cli
