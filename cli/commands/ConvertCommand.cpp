// vxbmp convert: one page, a band of it, or headerless data, into a file of any format.
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "arguments/OnePage.h"
#include "arguments/RawArguments.h"
#include "arguments/SaveArguments.h"
#include "commands/Command.h"
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
void RefuseToReplace(const ConvertArguments& arguments) {
  if (arguments.in == kStandardStream || arguments.out == kStandardStream) return;
  if (AreSameFile(arguments.in, arguments.out)) {
    throw UsageError("IN and OUT are the same file; the new one needs a name of its own");
  }
}

ExitCode Convert(const ConvertArguments& arguments) {
  RefuseToReplace(arguments);
  Conversion conversion;
  conversion.save = arguments.save.Describe(arguments.out, arguments.raw.Palette().ForOutput());
  conversion.save.drop_alpha = arguments.page.DropsAlpha() ? 1 : 0;
  const std::unique_ptr<RawDescription> raw = arguments.raw.Describe();
  conversion.load = OptionsFor(arguments, raw.get());
  if (raw == nullptr) conversion.page = &arguments.page;
  RefuseTerminal(arguments.out.c_str());
  try {
    Input input(arguments.in.c_str(), raw ? Content::Headerless : Content::Picture);
    if (conversion.page != nullptr) conversion.page->ChooseFrom(input.Source(), conversion.load);
    const Converted converted = ConvertPicture(input, arguments.in, arguments.out, conversion);
    return converted.failure ? kExitFailed : kExitOk;
  } catch (const vx::Error& error) {
    ReportInputFailure(error, arguments.in, conversion);
    return kExitFailed;
  }
}

}  // namespace

Action DeclareConvert(Arguments& command) {
  auto arguments = std::make_shared<ConvertArguments>();
  command.Add({.name = "IN", .help = "file to read; - is standard input", .isRequired = true}, arguments->in);
  command.Add({.name = "OUT", .help = "file to write; - is standard output", .isRequired = true},
              arguments->out);
  arguments->page.Declare(command, OnePage::Then::kSaved);
  command.Add({.name = "--band",
               .help = "convert COUNT rows only, from row FIRST; the top row is 0",
               .value = "FIRST:COUNT"},
              arguments->band);
  arguments->save.Declare(command);
  arguments->raw.Declare(command);
  command.Exclude("--raw", "--page");
  command.PutAboveDetails(FormatTable() + "\n");
  return [arguments] { return Convert(*arguments); };
}

}  // namespace cli
