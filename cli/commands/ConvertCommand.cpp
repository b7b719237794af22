// vxbmp convert: one page, a band of it, or headerless data, into a file of any format.
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "arguments/OnePage.h"
#include "arguments/Overwriting.h"
#include "arguments/PageSelection.h"
#include "arguments/RawArguments.h"
#include "arguments/SaveArguments.h"
#include "commands/Command.h"
#include "finding/OutputNames.h"
#include "jobs/Conversion.h"
#include "streams/Input.h"
#include "streams/Output.h"
#include "words/Numbers.h"
#include "words/Text.h"

namespace cli {
namespace {

struct ConvertArguments {
  std::string in;
  std::string out;
  OnePage page;
  std::string band;
  RawArguments raw;
  SaveArguments save;
  Overwriting overwriting;
};

/// FIRST:COUNT, both whole numbers; rows count from 0.
void ParseBand(std::string_view band, vx_load_options& options) {
  const size_t colon = std::min(band.find(':'), band.size());
  const std::optional<int> first = ParseInt(band.substr(0, colon), 0);
  const std::optional<int> count = ParseInt(band.substr(std::min(colon + 1, band.size())), 1);
  if (!first || !count) {
    throw UsageError(
        fmt::format("--band {}: FIRST:COUNT is needed, such as 0:100 for the top 100 rows", Printable(band)));
  }
  options.band_first = *first;
  options.band_count = *count;
}

vx::LoadOptions OptionsFor(const ConvertArguments& arguments, const RawDescription* raw) {
  vx::LoadOptions options = arguments.page.Options();
  if (!arguments.band.empty()) ParseBand(arguments.band, options);
  if (raw != nullptr) options.raw = &raw->Get();
  return options;
}

/// A new file in the place of the original is hardly ever what was meant.
void RefuseToReplace(const std::string& in, const std::string& out) {
  if (in == kStandardStream || out == kStandardStream) return;
  if (AreSameFile(in, out)) {
    throw UsageError("IN and OUT are the same file; the new one needs a name of its own");
  }
}

Conversion DescribeConversion(const ConvertArguments& arguments, const RawDescription* raw) {
  Conversion conversion;
  conversion.save = arguments.save.Describe(arguments.out, arguments.raw.Palette().ForOutput());
  conversion.save.drop_alpha = arguments.page.DropsAlpha() ? 1 : 0;
  conversion.load = OptionsFor(arguments, raw);
  conversion.missing = arguments.page.Missing();
  if (raw == nullptr) conversion.page = &arguments.page;
  return conversion;
}

/// The page that conversion names, as a file. @return whether it is one now, as far as that was asked for
bool ConvertOne(Input& input, const ConvertArguments& arguments, const std::string& out,
                const Conversion& conversion) {
  RefuseToReplace(arguments.in, out);
  if (!arguments.overwriting.Prepare(InputName(arguments.in.c_str()), out)) return true;
  return !ConvertPicture(input, arguments.in, out, conversion).failure;
}

/// Every page as a file of its own; a bad one is no matter of the others.
bool ConvertAll(Input& input, const ConvertArguments& arguments, Conversion conversion) {
  if (arguments.out == kStandardStream) {
    throw UsageError("all pages need files of their own, which standard output is not; such as out-%p.png");
  }
  conversion.page = nullptr;
  const int pages = CountPages(input.Source());
  bool isDone = true;
  for (int page = 1; page <= pages; ++page) {
    conversion.load.page = page;
    isDone = ConvertOne(input, arguments, NameOfPage(arguments.out, page), conversion) && isDone;
  }
  return isDone;
}

ExitCode Convert(const ConvertArguments& arguments) {
  const std::unique_ptr<RawDescription> raw = arguments.raw.Describe();
  Conversion conversion = DescribeConversion(arguments, raw.get());
  RefuseToReplace(arguments.in, arguments.out);
  RefuseTerminal(arguments.out.c_str());
  const bool hasPlace = raw == nullptr && HasPagePlace(arguments.out);
  try {
    Input input(arguments.in.c_str(), raw ? Content::Headerless : Content::Picture);
    if (arguments.page.MeansAll() || (hasPlace && !arguments.page.WasGiven())) {
      return ConvertAll(input, arguments, conversion) ? kExitOk : kExitFailed;
    }
    if (conversion.page != nullptr) conversion.page->ChooseFrom(input.Source(), conversion.load);
    const std::string out = hasPlace ? NameOfPage(arguments.out, conversion.load.page) : arguments.out;
    return ConvertOne(input, arguments, out, conversion) ? kExitOk : kExitFailed;
  } catch (const vx::Error& error) {
    ReportInputFailure(error, arguments.in, conversion);
    return kExitFailed;
  }
}

}  // namespace

Action DeclareConvert(Arguments& command) {
  auto arguments = std::make_shared<ConvertArguments>();
  command.Add({.name = "IN", .help = "file to read; - is standard input", .isRequired = true}, arguments->in);
  command.Add({.name = "OUT",
               .help = "file to write; - is standard output. With %p in its name every page\n"
                       "becomes a file, with its number there",
               .isRequired = true},
              arguments->out);
  arguments->page.Declare(command, OnePage::Then::kSaved);
  command.Add({.name = "--band",
               .help = "convert COUNT rows only, from row FIRST; the top row is 0",
               .value = "FIRST:COUNT"},
              arguments->band);
  arguments->save.Declare(command);
  arguments->raw.Declare(command);
  arguments->overwriting.Declare(command);
  command.Exclude("--raw", "--page");
  command.PointElsewhere("vxbmp batch converts many files: vxbmp batch *.bmp --to png --dir NEW");
  command.PutAboveDetails(FormatTable() + "\n");
  return [arguments] { return Convert(*arguments); };
}

}  // namespace cli
