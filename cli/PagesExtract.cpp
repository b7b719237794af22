// vxbmp pages extract: pages as files of their own.
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Facts.h"
#include "Input.h"
#include "Output.h"
#include "PageSelection.h"
#include "Pages.h"
#include "Report.h"
#include "SaveArguments.h"
#include "Text.h"

namespace cli {
namespace {

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
  RemarkOnLosses(out, options, plan, "a PNG file");
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
  ReportFailure(error, {.file = InputName(arguments.file.c_str())});
  return kExitFailed;
}

}  // namespace

Nested DeclareExtract(CLI::App& command) {
  CLI::App* sub = command.add_subcommand("extract", "Takes pages out as files of their own.");
  auto arguments = std::make_shared<ExtractArguments>();
  sub->add_option("FILE", arguments->file, "icon or cursor file; - is standard input")->required();
  sub->add_option("--page", arguments->selection, "pages to take out; all unless given")->option_text("SEL");
  sub->add_option("-o", arguments->pattern,
                  "name of the files, with {name}, {page}, {size} and {bits} for\n"
                  "what they say; {name}-{page}.png unless given")
      ->option_text("PATTERN")
      ->type_name("FILE");
  sub->footer(DetailsOf(true, "extract app.ico --page 32x32@8 -o small.png"));
  return {sub, [arguments] { return Extract(*arguments); }};
}

}  // namespace cli
