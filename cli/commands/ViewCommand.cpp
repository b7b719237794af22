// vxbmp view: a page, drawn in the terminal.
#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "arguments/OnePage.h"
#include "commands/Command.h"
#include "failures/Report.h"
#include "streams/Input.h"
#include "streams/Output.h"
#include "words/Numbers.h"
#include "words/Text.h"

namespace cli {
namespace {

struct ViewArguments {
  std::string file;
  OnePage page;
  std::string size;
  std::string as;
};

struct Way {
  std::string_view name;
  int mode;
};

constexpr Way kWays[] = {{"symbols", VX_DRAW_SYMBOLS}, {"sixel", VX_DRAW_SIXEL}, {"kitty", VX_DRAW_KITTY}};

int ParseWay(const std::string& name) {
  if (name.empty()) return VX_DRAW_AUTO;
  const auto* way =
      std::find_if(std::begin(kWays), std::end(kWays), [&](const Way& each) { return each.name == name; });
  if (way != std::end(kWays)) return way->mode;
  throw UsageError(fmt::format("--as {}: symbols, sixel or kitty is needed", Printable(name)));
}

/// COLUMNSxROWS
void ParseSize(std::string_view size, vx_draw_options& options) {
  const size_t cross = std::min(size.find('x'), size.size());
  const std::optional<int> columns = ParseInt(size.substr(0, cross), 1);
  const std::optional<int> rows = ParseInt(size.substr(std::min(cross + 1, size.size())), 1);
  if (!columns || !rows) {
    throw UsageError(fmt::format("--size {}: COLUMNSxROWS is needed, such as 80x24", Printable(size)));
  }
  options.columns = *columns;
  options.rows = *rows;
  options.enlarge = 1;
}

/// What the terminal says of itself. The picture leaves a line for what comes after it.
void AskTerminal(vx_draw_options& options) {
  winsize window{};
  for (const int stream : {STDOUT_FILENO, STDERR_FILENO, STDIN_FILENO}) {
    if (ioctl(stream, TIOCGWINSZ, &window) != 0 || window.ws_col == 0 || window.ws_row == 0) continue;
    options.columns = window.ws_col;
    options.rows = std::max(window.ws_row - 1, 1);
    options.cell_width = window.ws_xpixel / window.ws_col;
    options.cell_height = window.ws_ypixel / window.ws_row;
    return;
  }
}

vx::DrawOptions DrawOptionsFor(const ViewArguments& arguments) {
  vx::DrawOptions options;
  options.mode = ParseWay(arguments.as);
  AskTerminal(options);
  if (!arguments.size.empty()) ParseSize(arguments.size, options);
  return options;
}

ExitCode View(const ViewArguments& arguments) {
  vx::LoadOptions loadOptions = arguments.page.Options();
  const vx::DrawOptions drawOptions = DrawOptionsFor(arguments);
  const std::string name = InputName(arguments.file.c_str());
  const Circumstances at{.file = name, .takesTruncated = true};
  try {
    Input input(arguments.file.c_str());
    arguments.page.ChooseFrom(input.Source(), loadOptions);
    const vx::Bitmap picture = input.Source().Load(loadOptions);
    ReportRemarks(name);
    arguments.page.RemarkOnOthers(input.Source(), name);
    PrintToStandardOutput(picture.Draw(drawOptions));
  } catch (const vx::Error& error) {
    ReportFailure(error, at);
    return kExitFailed;
  }
  return kExitOk;
}

}  // namespace

Action DeclareView(Arguments& command) {
  auto arguments = std::make_shared<ViewArguments>();
  command.Add({.name = "FILE", .help = "file to show; - is standard input", .isRequired = true},
              arguments->file);
  arguments->page.Declare(command, OnePage::Then::kShown);
  command.Add({.name = "--size",
               .help = "fill so many characters in one direction, such as 80x24; unless\n"
                       "given, a picture is as large as it is, and no larger than the terminal",
               .value = "COLUMNSxROWS"},
              arguments->size);
  command.Add({.name = "--as",
               .help = "draw with coloured symbols, or with pixels: sixel or kitty. Unless given,\n"
                       "with what the terminal is known to take",
               .value = "WAY",
               .offers = "symbols|sixel|kitty"},
              arguments->as);
  return [arguments] { return View(*arguments); };
}

}  // namespace cli
