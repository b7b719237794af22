// vxbmp cursor: a cursor of several pages, or an animated one, from the pictures there are.
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "arguments/Overwriting.h"
#include "arguments/PageSelection.h"
#include "commands/Command.h"
#include "failures/Report.h"
#include "streams/Input.h"
#include "streams/Output.h"
#include "words/FileNames.h"
#include "words/Numbers.h"
#include "words/Text.h"

namespace cli {
namespace {

struct CursorArguments {
  std::vector<std::string> frames;
  std::string out;
  std::string delay;
  std::string hotSpot;
  std::string title;
  std::string author;
  Overwriting overwriting;
};

/// Sixtieths of a second, or milliseconds, which become the nearest number of those.
int ParseDelay(std::string_view text) {
  constexpr int kLongest = 1'000'000;
  const bool isInMilliseconds = text.ends_with("ms");
  const std::optional<int> number = ParseInt(text.substr(0, text.size() - (isInMilliseconds ? 2 : 0)), 1);
  if (!number || *number > kLongest) {
    throw UsageError(
        fmt::format("--delay {}: sixtieths of a second are needed, such as 6, or milliseconds, "
                    "such as 100ms",
                    Printable(text)));
  }
  return isInMilliseconds ? std::max((*number * 60 + 500) / 1000, 1) : *number;
}

std::pair<int, int> ParsePoint(std::string_view text) {
  constexpr int kFarthest = 65535;
  const size_t comma = std::min(text.find(','), text.size());
  const std::optional<int> x = ParseInt(text.substr(0, comma), 0);
  const std::optional<int> y = ParseInt(text.substr(std::min(comma + 1, text.size())), 0);
  if (x && y && *x <= kFarthest && *y <= kFarthest) return {*x, *y};
  throw UsageError(fmt::format("--hotspot {}: X,Y is needed, such as 3,2", Printable(text)));
}

/// Every frame of an animated cursor, else the first page.
void LoadFrames(const vx::Source& source, std::vector<vx::Bitmap>& frames) {
  const vx_info first = source.Describe();
  const int last = first.format == VX_FORMAT_ANI ? first.page_count : 1;
  for (int page = 1; page <= last; ++page) frames.push_back(source.Load(page));
}

bool IsAnimated(const CursorArguments& arguments) {
  RefuseTerminal(arguments.out.c_str());
  const std::string ending = EndingOf(arguments.out);
  if (ending == ".ani") return true;
  const bool forAnimations =
      !arguments.delay.empty() || !arguments.title.empty() || !arguments.author.empty();
  if (ending == ".cur" && !forAnimations) return false;
  if (ending == ".cur") throw UsageError("--delay, --title and --author are for animated cursors (.ani)");
  throw UsageError(
      fmt::format("-o {}: the name of a cursor ends with .cur or .ani", Printable(arguments.out)));
}

void SavePages(const std::vector<vx::Bitmap>& frames, const CursorArguments& arguments) {
  vx::Edit edit(arguments.out, VX_EDIT_NEW);
  const vx::SaveOptions options(VX_FORMAT_CUR);
  for (size_t i = 0; i < frames.size(); ++i) {
    edit.Add(frames[i], &options);
    if (arguments.hotSpot.empty()) continue;
    const auto [x, y] = ParsePoint(arguments.hotSpot);
    edit.SetHotSpot(static_cast<int>(i) + 1, x, y);
  }
  edit.Commit();
}

/// @throws UsageError where the pixel that points lies beside a picture
void RequireInside(const std::vector<vx::Bitmap>& frames, const std::string& hotSpot) {
  if (hotSpot.empty()) return;
  const auto [x, y] = ParsePoint(hotSpot);
  for (const vx::Bitmap& frame : frames) {
    const vx_bitmap_info info = frame.Describe();
    if (x < info.width && y < info.height) continue;
    throw UsageError(fmt::format("--hotspot {}: it lies beside a picture, which has {}x{} pixels",
                                 Printable(hotSpot), info.width, info.height));
  }
}

ExitCode MakeCursor(const CursorArguments& arguments) {
  const bool isAnimated = IsAnimated(arguments);
  vx::AnimationOptions options;
  if (!arguments.delay.empty()) options.jiffies = ParseDelay(arguments.delay);
  if (!arguments.hotSpot.empty()) std::tie(options.hot_x, options.hot_y) = ParsePoint(arguments.hotSpot);
  options.title = arguments.title.c_str();
  options.author = arguments.author.c_str();
  std::string at;
  try {
    std::vector<vx::Bitmap> frames;
    for (const std::string& path : arguments.frames) {
      at = InputName(path.c_str());
      Input input(path.c_str());
      LoadFrames(input.Source(), frames);
    }
    at = arguments.out;
    RequireInside(frames, arguments.hotSpot);
    if (!arguments.overwriting.Prepare(InputName(arguments.frames.front().c_str()), at)) return kExitOk;
    if (isAnimated) {
      vx::SaveAnimation(frames, options, arguments.out);
    } else {
      SavePages(frames, arguments);
    }
    return kExitOk;
  } catch (const vx::Error& error) {
    ReportFailure(error, {.file = at});
    return kExitFailed;
  }
}

}  // namespace

Action DeclareCursor(Arguments& command) {
  auto arguments = std::make_shared<CursorArguments>();
  command.Add({.name = "FRAME", .help = "pictures in their order; - is standard input", .isRequired = true},
              arguments->frames);
  command.Add({.name = "-o", .help = "file to write, .cur or .ani", .value = "FILE", .isRequired = true},
              arguments->out);
  command.Add({.name = "--delay",
               .help = "how long each frame is shown: sixtieths of a second, or\n"
                       "milliseconds, such as 100ms; 6 unless given",
               .value = "N"},
              arguments->delay);
  command.Add(
      {.name = "--hotspot", .help = "pixel that points; that of each picture unless given", .value = "X,Y"},
      arguments->hotSpot);
  command.Add({.name = "--title", .help = "title of an animated cursor", .value = "TEXT"}, arguments->title);
  command.Add({.name = "--author", .help = "who made it", .value = "TEXT"}, arguments->author);
  arguments->overwriting.Declare(command);
  return [arguments] { return MakeCursor(*arguments); };
}

}  // namespace cli
