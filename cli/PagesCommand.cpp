// vxbmp pages: the pages of icon and cursor files, listed, taken out, and changed.
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Command.h"
#include "Facts.h"
#include "Input.h"
#include "Numbers.h"
#include "Output.h"
#include "PageSelection.h"
#include "Report.h"
#include "SaveArguments.h"
#include "Table.h"
#include "Text.h"

namespace cli {
namespace {

// ---- the list

struct ListArguments {
  std::string file;
  bool json = false;
};

/// What is known of a page: of one that is damaged, only where it lies.
struct Page {
  int number;
  vx_page_info place;
  std::optional<vx_info> info;
};

/// Describes a page as far as that goes; says what is wrong where it does not.
Page LookAt(const vx::Source& source, int number, const std::string& file) {
  Page page = {number, source.DescribePage(number), std::nullopt};
  try {
    page.info = source.Describe(number);
  } catch (const vx::Error& error) {
    ReportFailure(error, {.file = file});
  }
  return page;
}

TableRow RowOf(const Page& page, bool isCursor) {
  const vx_page_info& place = page.place;
  TableRow row = {fmt::to_string(page.number),
                  page.info ? SizeText(*page.info) : "?",
                  page.info ? fmt::to_string(page.info->bits_per_pixel) : "?",
                  place.is_png != 0 ? "PNG" : "bitmap",
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
  using Json = nlohmann::ordered_json;
  std::string text;
  for (const Page& page : pages) {
    Json line = {{"page", page.number}};
    if (page.info) {
      line["width"] = page.info->width;
      line["height"] = page.info->height;
      line["bits_per_pixel"] = page.info->bits_per_pixel;
    }
    line["form"] = page.place.is_png != 0 ? "PNG" : "bitmap";
    line["bytes"] = page.place.size;
    line["offset"] = page.place.offset;
    if (isCursor) line["hot_spot"] = {page.place.hot_x, page.place.hot_y};
    text.append(line.dump()).append("\n");
  }
  text.append(Json{{"unreferenced_bytes", unreferenced}}.dump()).append("\n");
  PrintToStandardOutput(text);
}

ExitCode List(const ListArguments& arguments) try {
  Input input(arguments.file.c_str());
  const vx::Source& source = input.Source();
  const uint64_t unreferenced = source.UnreferencedBytes();
  const vx_info first = source.Describe();
  const bool isCursor = first.format == VX_FORMAT_CUR;
  std::vector<Page> pages;
  for (int number = 1; number <= first.page_count; ++number) {
    pages.push_back(LookAt(source, number, InputName(arguments.file.c_str())));
  }
  const auto print = arguments.json ? PrintJson : PrintTable;
  print(pages, isCursor, unreferenced);
  const bool isWhole =
      std::all_of(pages.begin(), pages.end(), [](const Page& page) { return page.info.has_value(); });
  return isWhole ? kExitOk : kExitFailed;
} catch (const vx::Error& error) {
  ReportFailure(error, {.file = InputName(arguments.file.c_str())});
  return kExitFailed;
}

// ---- taking pages out

struct ExtractArguments {
  std::string file;
  std::string selection = "1-";
  std::string pattern = "{name}-{page}.png";
};

void ReplaceAll(std::string& text, std::string_view from, const std::string& to) {
  for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
}

std::string NameFor(const ExtractArguments& arguments, const vx_info& info) {
  std::string name = arguments.pattern;
  ReplaceAll(name, "{name}", std::filesystem::path(arguments.file).stem().string());
  ReplaceAll(name, "{page}", fmt::to_string(info.page));
  ReplaceAll(name, "{size}", SizeText(info));
  ReplaceAll(name, "{bits}", fmt::to_string(info.bits_per_pixel));
  return name;
}

void ExtractPage(const vx::Source& source, int page, const std::string& out) {
  const vx::SaveOptions options = SaveArguments().Describe(out, VX_PALETTE_BEST);
  const vx::Bitmap picture = source.Load(page);
  const vx_save_plan plan = picture.Plan(options);
  WritePicture(picture, out.c_str(), options);
  RemarkOnLosses(out, options, plan);
}

/// The names of the files to write, which must differ.
std::vector<std::string> NamesFor(const ExtractArguments& arguments, const vx::Source& source,
                                  const std::vector<int>& pages) {
  std::vector<std::string> names;
  for (const int page : pages) {
    std::string name = NameFor(arguments, source.Describe(page));
    if (std::find(names.begin(), names.end(), name) != names.end()) {
      throw UsageError(fmt::format("-o {}: several pages would become {}; the name needs {{page}}",
                                   Printable(arguments.pattern), Printable(name)));
    }
    names.push_back(std::move(name));
  }
  return names;
}

ExitCode Extract(const ExtractArguments& arguments) try {
  Input input(arguments.file.c_str());
  const vx::Source& source = input.Source();
  const std::vector<int> pages = SelectPages(arguments.selection, source, arguments.file);
  const std::vector<std::string> names = NamesFor(arguments, source, pages);
  for (size_t i = 0; i < pages.size(); ++i) ExtractPage(source, pages[i], names[i]);
  return kExitOk;
} catch (const vx::Error& error) {
  ReportFailure(error, {.file = InputName(arguments.file.c_str()), .isLoading = true});
  return kExitFailed;
}

// ---- editing

struct EditArguments {
  std::string file;
  std::vector<std::string> images;
  std::string selection;
  std::string at;
  std::string point;
  std::string bits;
  bool asPng = false;
};

/// Runs `edits` on the file and stores what became of it.
template <class Edits>
ExitCode Edit(const std::string& file, const Edits& edits) try {
  vx::Edit edit(file);
  edits(edit);
  edit.Commit();
  return kExitOk;
} catch (const vx::Error& error) {
  ReportFailure(error, {.file = file});
  return kExitFailed;
}

/// Loads the first page of each; reports the first that fails.
std::optional<std::vector<vx::Bitmap>> LoadAll(const std::vector<std::string>& images) {
  std::vector<vx::Bitmap> pictures;
  for (const std::string& image : images) {
    try {
      Input input(image.c_str());
      pictures.push_back(input.Source().Load());
    } catch (const vx::Error& error) {
      ReportFailure(error, {.file = InputName(image.c_str()), .isLoading = true});
      return std::nullopt;
    }
  }
  return pictures;
}

int ParseIconDepth(const std::string& bits) {
  const std::optional<int> depth = ParseInt(bits, 1);
  if (depth && (*depth == 1 || *depth == 4 || *depth == 8 || *depth == 24)) return *depth;
  throw UsageError(
      fmt::format("--bits {}: bitmap pages have one of 1, 4, 8, 24 bits a pixel", Printable(bits)));
}

bool IsCursorFile(const std::string& file) try {
  return vx::Source::File(file).Describe().format == VX_FORMAT_CUR;
} catch (const vx::Error&) {
  return false;  // what is wrong with it the edit says
}

/// How pictures become pages: as the library sees fit, unless the arguments say more.
vx::SaveOptions FormOf(const EditArguments& arguments) {
  if (arguments.asPng && !arguments.bits.empty()) {
    throw UsageError("--png pages have 32 bits a pixel; --bits is for bitmaps");
  }
  vx::SaveOptions options;
  options.format = 0;
  if (!arguments.bits.empty()) options.bits_per_pixel = ParseIconDepth(arguments.bits);
  if (arguments.asPng) {
    options.format = VX_FORMAT_VISTA_ICO;
  } else if (IsCursorFile(arguments.file)) {
    options.format = VX_FORMAT_CUR;
  } else if (options.bits_per_pixel != 0) {
    options.format = VX_FORMAT_ICO;
  }
  return options;
}

/// Loads the images, has `put` make pages of them, and says what that cost.
template <class Put>
ExitCode EditWithImages(const EditArguments& arguments, const Put& put) {
  const vx::SaveOptions options = FormOf(arguments);
  const std::optional<std::vector<vx::Bitmap>> pictures = LoadAll(arguments.images);
  if (!pictures) return kExitFailed;
  return Edit(arguments.file, [&](vx::Edit& edit) {
    for (const vx::Bitmap& picture : *pictures) {
      put(edit, picture, options);
      if (options.format != 0) RemarkOnLosses(arguments.file, options, picture.Plan(options));
    }
  });
}

int ParsePosition(const std::string& at) {
  if (const std::optional<int> number = ParseInt(at, 1)) return *number;
  throw UsageError(fmt::format("--at {}: a whole number from 1 is needed", Printable(at)));
}

std::pair<int, int> ParsePoint(const std::string& point) {
  const std::string_view text = point;
  const size_t comma = std::min(text.find(','), text.size());
  const std::optional<int> x = ParseInt(text.substr(0, comma), 0);
  const std::optional<int> y = ParseInt(text.substr(std::min(comma + 1, text.size())), 0);
  if (x && y) return {*x, *y};
  throw UsageError(
      fmt::format("{}: a point X,Y is needed, such as 0,0 for the top left pixel", Printable(point)));
}

ExitCode Add(const EditArguments& arguments) {
  return EditWithImages(arguments, [](vx::Edit& edit, const vx::Bitmap& picture,
                                      const vx_save_options& options) { edit.Add(picture, &options); });
}

ExitCode Insert(const EditArguments& arguments) {
  const int position = ParsePosition(arguments.at);
  return EditWithImages(arguments,
                        [&](vx::Edit& edit, const vx::Bitmap& picture, const vx_save_options& options) {
                          edit.Insert(position, picture, &options);
                        });
}

ExitCode Replace(const EditArguments& arguments) {
  return EditWithImages(
      arguments, [&](vx::Edit& edit, const vx::Bitmap& picture, const vx_save_options& options) {
        const int page = SelectPage(arguments.selection, vx::Source::File(arguments.file), arguments.file);
        edit.Replace(page, picture, &options);
      });
}

ExitCode Delete(const EditArguments& arguments) {
  return Edit(arguments.file, [&](vx::Edit& edit) {
    std::vector<int> pages =
        SelectPages(arguments.selection, vx::Source::File(arguments.file), arguments.file);
    if (static_cast<int>(pages.size()) == edit.PageCount()) {
      throw FileError(VX_LAST_PAGE, arguments.file, "these are all its pages, and one has to stay");
    }
    std::sort(pages.rbegin(), pages.rend());  // from the end, so that numbers stay what they were
    for (const int page : pages) edit.Delete(page);
  });
}

ExitCode Compact(const EditArguments& arguments) {
  return Edit(arguments.file, [](vx::Edit& edit) { edit.Compact(); });
}

ExitCode SetHotSpot(const EditArguments& arguments) {
  const std::pair<int, int> point = ParsePoint(arguments.point);
  return Edit(arguments.file, [&](vx::Edit& edit) {
    const int page = SelectPage(arguments.selection, vx::Source::File(arguments.file), arguments.file);
    edit.SetHotSpot(page, point.first, point.second);
  });
}

// ---- declarations

void DeclareFile(CLI::App& command, EditArguments& arguments) {
  command.add_option("FILE", arguments.file, "icon or cursor file to change")->required();
}

void DeclareImages(CLI::App& command, EditArguments& arguments, bool isMany) {
  CLI::Option* images = command.add_option(
      "IMAGE", arguments.images, isMany ? "pictures to add, in this order" : "picture to put there");
  images->required()->expected(1, isMany ? CLI::detail::expected_max_vector_size : 1);
  command.add_flag("--png", arguments.asPng, "store it as a PNG stream, which icons can have");
  command.add_option("--bits", arguments.bits, "store it as a bitmap of 1, 4, 8 or 24 bits a pixel")
      ->option_text("N")
      ->type_name("1|4|8|24");
}

void DeclareSelection(CLI::App& command, std::string& selection, const std::string& text) {
  command.add_option("--page", selection, text)->option_text("SEL");
}

struct EditCommand {
  const char* name;
  const char* summary;
  ExitCode (*run)(const EditArguments&);
  void (*declare)(CLI::App&, EditArguments&);
};

constexpr EditCommand kEditCommands[] = {
    {"add", "Adds pictures as pages behind the last one.", Add,
     [](CLI::App& command, EditArguments& arguments) { DeclareImages(command, arguments, true); }},
    {"insert", "Inserts a picture as page N.", Insert,
     [](CLI::App& command, EditArguments& arguments) {
       DeclareImages(command, arguments, false);
       command.add_option("--at", arguments.at, "number that the new page gets")
           ->option_text("N")
           ->required();
     }},
    {"replace", "Puts a picture in a page's place; a cursor's keeps its hot spot.", Replace,
     [](CLI::App& command, EditArguments& arguments) {
       DeclareImages(command, arguments, false);
       command.add_option("--page", arguments.selection, "page to replace")->option_text("SEL")->required();
     }},
    {"delete", "Deletes pages; one has to stay.", Delete,
     [](CLI::App& command, EditArguments& arguments) {
       command.add_option("--page", arguments.selection, "pages to delete")->option_text("SEL")->required();
     }},
    {"compact", "Drops bytes that belong to no page; the pages stay as they are, bit for bit.", Compact,
     [](CLI::App& /*command*/, EditArguments& /*arguments*/) {}},
    {"hotspot", "Sets the pixel that points, of a cursor.", SetHotSpot,
     [](CLI::App& command, EditArguments& arguments) {
       command.add_option("POINT", arguments.point, "X,Y of the pixel; 0,0 is the top left one")->required();
       command.add_option("--page", arguments.selection, "page that it belongs to")
           ->option_text("SEL")
           ->required();
     }},
};

using Nested = std::pair<CLI::App*, Action>;

Nested DeclareExtract(CLI::App& command) {
  CLI::App* sub = command.add_subcommand("extract", "Takes pages out as files of their own.");
  auto arguments = std::make_shared<ExtractArguments>();
  sub->add_option("FILE", arguments->file, "icon or cursor file; - is standard input")->required();
  DeclareSelection(*sub, arguments->selection, "pages to take out; all unless given");
  sub->add_option("-o", arguments->pattern,
                  "name of the files, with {name}, {page}, {size} and {bits} for\n"
                  "what they say; {name}-{page}.png unless given")
      ->option_text("PATTERN")
      ->type_name("FILE");
  return {sub, [arguments] { return Extract(*arguments); }};
}

Nested DeclareEdit(CLI::App& command, const EditCommand& edit) {
  CLI::App* sub = command.add_subcommand(edit.name, edit.summary);
  auto arguments = std::make_shared<EditArguments>();
  DeclareFile(*sub, *arguments);
  edit.declare(*sub, *arguments);
  return {sub, [arguments, run = edit.run] { return run(*arguments); }};
}

}  // namespace

Action DeclarePages(CLI::App& command) {
  auto arguments = std::make_shared<ListArguments>();
  command.require_subcommand(0, 1);
  command.add_option("FILE", arguments->file, "icon or cursor file to list; - is standard input");
  command.add_flag("--json", arguments->json, "print one JSON object a line, for scripts");
  std::vector<Nested> nested = {DeclareExtract(command)};
  for (const EditCommand& edit : kEditCommands) nested.push_back(DeclareEdit(command, edit));
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
