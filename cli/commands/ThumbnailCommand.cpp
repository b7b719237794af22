// vxbmp thumbnail: a small PNG of whatever there is, for file managers.
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>

#include "commands/Command.h"
#include "commands/Resize.h"
#include "failures/Report.h"
#include "streams/Input.h"
#include "streams/Output.h"
#include "words/Numbers.h"
#include "words/Text.h"

namespace cli {
namespace {

constexpr int kUsualSize = 256;
constexpr int kLargestSize = 1024;

struct ThumbnailArguments {
  std::string in;
  std::string out;
  std::string size;
};

int ParseThumbnailSize(const std::string& size) {
  if (size.empty()) return kUsualSize;
  const std::optional<int> number = ParseInt(size, 1);
  if (number && *number <= kLargestSize) return *number;
  throw UsageError(
      fmt::format("--size {}: a whole number from 1 to {} is needed", Printable(size), kLargestSize));
}

/// The page that suits the size, as far as the file has it.
vx::Bitmap LoadFor(const vx::Source& source, int size) {
  vx::LoadOptions options;
  options.page = source.BestPage(size);
  options.allow_truncated = 1;
  options.flags = VX_LOAD_ROW_BY_ROW;
  return source.Load(options);
}

ExitCode MakeThumbnail(const ThumbnailArguments& arguments) {
  const int size = ParseThumbnailSize(arguments.size);
  RefuseTerminal(arguments.out.c_str());
  std::string at = InputName(arguments.in.c_str());
  try {
    Input input(arguments.in.c_str());
    if (AreSameFile(arguments.in, arguments.out)) throw UsageError("IN and OUT are the same file");
    const vx::Bitmap picture = LoadFor(input.Source(), size);
    ReportRemarks(at);
    const vx_bitmap_info info = picture.Describe();
    const vx::SaveOptions png(VX_FORMAT_PNG);
    if (std::max(info.width, info.height) <= size) {
      WritePicture(picture, arguments.out.c_str(), png);
      return kExitOk;
    }
    const vx::Bitmap small = Resizable(picture).ScaleTo(size);
    at = arguments.out == kStandardStream ? "standard output" : arguments.out;
    WritePicture(small, arguments.out.c_str(), png);
    return kExitOk;
  } catch (const vx::Error& error) {
    ReportFailure(error, {.file = at});
    return kExitFailed;
  }
}

}  // namespace

Action DeclareThumbnail(Arguments& command) {
  auto arguments = std::make_shared<ThumbnailArguments>();
  command.Add({.name = "IN", .help = "file to read; - is standard input", .isRequired = true}, arguments->in);
  command.Add({.name = "OUT", .help = "PNG file to write; - is standard output", .isRequired = true},
              arguments->out);
  command.Add(
      {.name = "--size", .help = "pixels of the longer side, 1 to 1024; 256 unless given", .value = "N"},
      arguments->size);
  return [arguments] { return MakeThumbnail(*arguments); };
}

}  // namespace cli
