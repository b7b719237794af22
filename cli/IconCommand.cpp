// vxbmp icon: an icon file of many sizes from one picture, or from the pictures there are.
#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Command.h"
#include "Input.h"
#include "Numbers.h"
#include "Output.h"
#include "PageSelection.h"
#include "Report.h"
#include "Resize.h"
#include "Text.h"

namespace cli {
namespace {

constexpr int kLargestPage = 256;

struct IconArguments {
  std::vector<std::string> images;
  std::string out;
  std::string sizes;
  std::string pngFrom;
};

int ParseSize(std::string_view text, std::string_view option, std::string_view all) {
  const std::optional<int> size = ParseInt(text, 1);
  if (size && *size <= kLargestPage) return *size;
  throw UsageError(
      fmt::format("{} {}: sizes are whole numbers from 1 to {}", option, Printable(all), kLargestPage));
}

std::vector<int> ParseSizes(std::string_view list) {
  std::vector<int> sizes;
  for (size_t start = 0; start <= list.size();) {
    const size_t end = std::min(list.find(',', start), list.size());
    sizes.push_back(ParseSize(list.substr(start, end - start), "--sizes", list));
    start = end + 1;
  }
  std::sort(sizes.begin(), sizes.end());
  sizes.erase(std::unique(sizes.begin(), sizes.end()), sizes.end());
  return sizes;
}

struct Picture {
  vx::Bitmap bitmap;
  int side;  // the longer one
  bool isSquare;
};

void LoadPage(const vx::Source& source, int page, std::vector<Picture>& pictures) {
  vx::Bitmap bitmap = source.Load(page);
  const vx_bitmap_info info = bitmap.Describe();
  pictures.push_back({std::move(bitmap), std::max(info.width, info.height), info.width == info.height});
}

/// Loads every page of every image, for icons to be made of icons. A bad page is told of and left out, as
/// long as there is a good one.
void LoadPages(const std::string& image, std::vector<Picture>& pictures) {
  Input input(image.c_str());
  const int count = CountPages(input.Source());
  int left = count;
  for (int page = 1; page <= count; ++page) {
    try {
      LoadPage(input.Source(), page, pictures);
    } catch (const vx::Error& error) {
      if (error.status() == VX_NO_MEMORY || --left == 0) throw;
      ReportFailure(error, {.file = InputName(image.c_str())});
      ReportMessage(fmt::format("{}: page {} is left out", Printable(InputName(image.c_str())), page));
    }
  }
}

std::optional<std::vector<Picture>> LoadAll(const std::vector<std::string>& images) {
  std::vector<Picture> pictures;
  for (const std::string& image : images) {
    try {
      LoadPages(image, pictures);
    } catch (const vx::Error& error) {
      ReportFailure(error, {.file = InputName(image.c_str())});
      return std::nullopt;
    }
  }
  std::stable_sort(pictures.begin(), pictures.end(),
                   [](const Picture& a, const Picture& b) { return a.side < b.side; });
  return pictures;
}

/// The usual sizes, but none that would have to be made up.
std::vector<int> SizesFor(const std::vector<Picture>& pictures) {
  std::vector<int> sizes = {16, 24, 32, 48, 64, 128, 256};
  const int largest = pictures.back().side;
  const auto end =
      std::find_if(sizes.begin() + 1, sizes.end(), [largest](int size) { return size > largest; });
  sizes.erase(end, sizes.end());
  return sizes;
}

/// The picture that a page of `size` is made from: the smallest that is large enough, else the largest.
const Picture& SourceFor(const std::vector<Picture>& pictures, int size) {
  const auto enough = std::find_if(pictures.begin(), pictures.end(),
                                   [size](const Picture& each) { return each.side >= size; });
  return enough == pictures.end() ? pictures.back() : *enough;
}

void AddPage(vx::Edit& edit, const Picture& source, int size, int pngFrom) {
  vx::SaveOptions options;
  options.format = size >= pngFrom ? VX_FORMAT_VISTA_ICO : 0;
  if (source.side == size && source.isSquare) {
    edit.Add(source.bitmap, &options);
  } else {
    edit.Add(FitInto(source.bitmap, size), &options);
  }
}

/// Under another name the icon would be taken for another kind of file.
void RequireIconName(const std::string& out) {
  RefuseTerminal(out.c_str());
  if (out == kStandardStream) return;
  std::string ending = std::filesystem::path(out).extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (ending.empty() || ending == ".ico") return;
  throw UsageError(fmt::format("-o {}: the name of an icon file ends with .ico", Printable(out)));
}

ExitCode MakeIcon(const IconArguments& arguments) {
  RequireIconName(arguments.out);
  const int pngFrom = arguments.pngFrom.empty()
                          ? kLargestPage
                          : ParseSize(arguments.pngFrom, "--png-from", arguments.pngFrom);
  std::vector<int> sizes;
  if (!arguments.sizes.empty()) sizes = ParseSizes(arguments.sizes);
  const std::optional<std::vector<Picture>> pictures = LoadAll(arguments.images);
  if (!pictures) return kExitFailed;
  if (sizes.empty()) sizes = SizesFor(*pictures);
  try {
    vx::Edit edit(arguments.out == kStandardStream ? "/dev/stdout" : arguments.out, VX_EDIT_NEW);
    for (const int size : sizes) AddPage(edit, SourceFor(*pictures, size), size, pngFrom);
    edit.Commit();
  } catch (const vx::Error& error) {
    ReportFailure(error, {.file = arguments.out});
    return kExitFailed;
  }
  return kExitOk;
}

}  // namespace

Action DeclareIcon(CLI::App& command) {
  auto arguments = std::make_shared<IconArguments>();
  command
      .add_option("IMAGE", arguments->images, "picture, or pictures in several sizes; - is standard input")
      ->required();
  command.add_option("-o", arguments->out, "icon file to write; - is standard output")
      ->option_text("FILE")
      ->required();
  command
      .add_option("--sizes", arguments->sizes,
                  "sides of the pages, in pixels; 16,24,32,48,64,128,256\n"
                  "unless given, as far as the largest picture goes")
      ->option_text("LIST");
  command
      .add_option("--png-from", arguments->pngFrom,
                  "pages of this size and larger are PNG streams; 256\n"
                  "unless given. Pages with soft edges always are")
      ->option_text("SIZE");
  return [arguments] { return MakeIcon(*arguments); };
}

}  // namespace cli
