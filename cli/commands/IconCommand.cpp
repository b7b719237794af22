// vxbmp icon: an icon file of many sizes from one picture, or from the pictures there are.
#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <deque>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "arguments/Overwriting.h"
#include "arguments/PageSelection.h"
#include "arguments/SaveArguments.h"
#include "commands/Command.h"
#include "commands/IconPresets.h"
#include "commands/Resize.h"
#include "failures/Report.h"
#include "streams/Input.h"
#include "streams/Output.h"
#include "words/FileNames.h"
#include "words/Numbers.h"
#include "words/Text.h"

namespace cli {
namespace {

constexpr int kLargestPage = 256;

struct IconArguments {
  std::vector<std::string> images;
  std::string out;
  std::string sizes;
  std::string pngFrom;
  std::string bits;
  std::string preset;
  bool toSrgb = false;
  bool enlarges = false;
  bool printsHtml = false;
  Overwriting overwriting;
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

/// One of the images. A stream stays open, for it cannot be read twice; a file is opened when it is needed.
class Image {
 public:
  /// @throws vx::Error, FileError
  explicit Image(const char* path) : path_(path), isStream_(IsStream(path)) {
    if (isStream_) input_.emplace(path);
  }

  std::string Name() const { return InputName(path_); }
  /// Has `use` look at the image, and leaves it open. @throws vx::Error
  template <class Use>
  auto With(const Use& use) {
    if (!input_) input_.emplace(path_);
    return use(input_->Source());
  }
  void Close() {
    if (!isStream_) input_.reset();
  }

  int pagesLeft = 0;  ///< that are not known to be bad

 private:
  const char* path_;
  bool isStream_;
  std::optional<Input> input_;
};

/// A page of an image, not loaded yet.
struct Original {
  Image* image;
  int page;
};

/// By their longer side; those of the same in the order in which they came.
using Originals = std::multimap<int, Original>;

/// Tells that a page is bad and goes on without it, as long as its image has a good one. @throws vx::Error
void LeaveOut(const vx::Error& error, const std::string& image, int page, int othersLeft) {
  if (error.status() == VX_NO_MEMORY || othersLeft == 0) throw error;
  ReportFailure(error, {.file = image});
  ReportMessage(fmt::format("{}: page {} is left out", Printable(image), page));
}

/// Finds every page of an image, for icons to be made of icons.
void FindPages(Image& image, Originals& originals) {
  image.With([&](const vx::Source& source) {
    const int count = CountPages(source);
    image.pagesLeft = count;
    for (int page = 1; page <= count; ++page) {
      try {
        const vx_info info = source.Describe(page);
        originals.insert({std::max(info.width, info.height), {&image, page}});
      } catch (const vx::Error& error) {
        LeaveOut(error, image.Name(), page, --image.pagesLeft);
      }
    }
  });
  image.Close();
}

/// The sizes that are usual, without those larger than every picture: their details would have to be made up.
std::vector<int> SizesFor(const Originals& originals) {
  std::vector<int> sizes(UsualIcon().sizes.begin(), UsualIcon().sizes.end());
  const int largest = originals.rbegin()->first;
  const auto end =
      std::find_if(sizes.begin() + 1, sizes.end(), [largest](int size) { return size > largest; });
  sizes.erase(end, sizes.end());
  return sizes;
}

/// What a page of `size` is made from: the smallest that is large enough, else the largest.
Originals::iterator OriginalFor(Originals& originals, int size) {
  const auto enough = originals.lower_bound(size);
  return enough == originals.end() ? std::prev(enough) : enough;
}

/// A picture while pages are made from it. It is kept whole only if it can be a page itself.
class Picture {
 public:
  explicit Picture(vx::Bitmap picture) : resizable_(picture) {
    const vx_bitmap_info info = picture.Describe();
    if (info.width != info.height || info.width > kLargestPage) return;
    side_ = info.width;
    page_ = std::move(picture);
  }

  void AddTo(vx::Edit& edit, int size, int pngFrom, int bits) const {
    vx::SaveOptions options;
    const bool isPng = size >= pngFrom;
    options.format = isPng ? VX_FORMAT_VISTA_ICO : bits == 0 ? 0 : VX_FORMAT_ICO;
    if (!isPng) options.bits_per_pixel = bits;
    if (size == side_) {
      edit.Add(page_, &options);
    } else {
      edit.Add(resizable_.FitInto(size), &options);
    }
  }

 private:
  Resizable resizable_;
  vx::Bitmap page_{nullptr};  // as it is
  int side_ = 0;
};

/// Under another name the icon would be taken for another kind of file.
void RequireIconName(const std::string& out) {
  RefuseTerminal(out.c_str());
  if (out == kStandardStream) return;
  const std::string ending = EndingOf(out);
  if (ending.empty() || ending == ".ico") return;
  throw UsageError(fmt::format("-o {}: the name of an icon file ends with .ico", Printable(out)));
}

/// Pages carry no word on their colours. Said once for all that are made of the picture.
void RemarkOnColors(const vx::Bitmap& picture, const std::string& name) {
  const int space = picture.Describe().color_space;
  if (space != VX_COLOR_SPACE_PROFILE && space != VX_COLOR_SPACE_CALIBRATED) return;
  ReportMessage(
      fmt::format("{}: icons have no place for its colour profile; --srgb applies it", Printable(name)));
}

const IconPreset& PresetOf(const IconArguments& arguments) {
  if (arguments.preset.empty()) return UsualIcon();
  if (const IconPreset* preset = FindIconPreset(arguments.preset)) return *preset;
  throw UsageError(
      fmt::format("--preset {}: one of {} is needed", Printable(arguments.preset), IconPresetNames(", ")));
}

/// What the head of a page says of an icon beside it; its name stands in a place where anything may be meant.
std::string LinkLine(const std::string& out, const std::vector<int>& sizes) {
  std::string name;
  for (const char c : std::string_view(out).substr(out.rfind('/') + 1)) {
    const bool isPlain = std::isalnum(static_cast<unsigned char>(c)) != 0 ||
                         std::string_view("-_.~").find(c) != std::string_view::npos;
    name += isPlain ? std::string(1, c) : fmt::format("%{:02X}", static_cast<unsigned char>(c));
  }
  std::string words;
  for (const int size : sizes) words += fmt::format("{}{}x{}", words.empty() ? "" : " ", size, size);
  return fmt::format("<link rel=\"icon\" href=\"/{}\" sizes=\"{}\">\n", name, words);
}

/// The pages, one after the other, with the name of the file that is being worked on for messages.
class IconMaker {
 public:
  explicit IconMaker(const IconArguments& arguments)
      : arguments_(arguments),
        preset_(PresetOf(arguments)),
        pngFrom_(arguments.pngFrom.empty() ? preset_.pngFrom
                                           : ParseSize(arguments.pngFrom, "--png-from", arguments.pngFrom)),
        bits_(arguments.bits.empty() ? preset_.bits : ParseIconDepth(arguments.bits)) {
    if (!arguments.sizes.empty()) {
      sizes_ = ParseSizes(arguments.sizes);
    } else if (!arguments.preset.empty()) {
      sizes_.assign(preset_.sizes.begin(), preset_.sizes.end());
    }
  }

  ExitCode Run() try {
    FindOriginals();
    const bool areGiven = !sizes_.empty();
    if (!areGiven) sizes_ = SizesFor(originals_);
    RefuseToEnlarge();
    at_ = arguments_.out;
    if (!arguments_.overwriting.Prepare(InputName(arguments_.images.front().c_str()), at_)) return kExitOk;
    vx::Edit edit(arguments_.out == kStandardStream ? "/dev/stdout" : arguments_.out, VX_EDIT_NEW);
    for (const int size : sizes_) {
      const Picture& picture = PictureFor(size);
      // A bad page that was left out may have been the largest.
      const int largest = originals_.rbegin()->first;
      if (size > largest && size != sizes_.front() && !areGiven) break;
      if (size > largest) RemarkOnEnlarging(size, largest);
      picture.AddTo(edit, size, pngFrom_, bits_);
      made_.push_back(size);
      ReportRemarks(arguments_.out, VX_REMARK_PROFILE_DROPPED);
    }
    edit.Commit();
    if (arguments_.printsHtml) PrintToStandardOutput(LinkLine(arguments_.out, made_));
    return kExitOk;
  } catch (const vx::Error& error) {
    ReportFailure(error, {.file = at_});
    return kExitFailed;
  }

 private:
  void FindOriginals() {
    for (const std::string& path : arguments_.images) {
      at_ = InputName(path.c_str());
      FindPages(images_.emplace_back(path.c_str()), originals_);
    }
  }

  void RefuseToEnlarge() const {
    const int largest = originals_.rbegin()->first;
    if (arguments_.enlarges || sizes_.back() <= largest) return;
    throw UsageError(
        fmt::format("{} pixels are wanted, and the largest picture has {}; draw a larger one, name "
                    "--sizes that fit, or take --enlarge, which blurs",
                    sizes_.back(), largest));
  }

  void RemarkOnEnlarging(int size, int largest) const {
    ReportMessage(fmt::format("{}: the page of {} pixels is enlarged from {}, and blurred",
                              Printable(arguments_.out), size, largest));
  }

  /// Sizes ascend, and so do the pictures they are made from: a picture is not needed again once the next one
  /// is loaded.
  const Picture& PictureFor(int size) {
    auto original = OriginalFor(originals_, size);
    const auto& [image, page] = original->second;
    if (picture_ && image == loaded_.image && page == loaded_.page) return *picture_;
    picture_.reset();
    while (!Load(original)) original = OriginalFor(originals_, size);
    loaded_.image->Close();
    return *picture_;
  }

  /// @return false for a bad page, which is left out then
  bool Load(Originals::iterator original) {
    loaded_ = original->second;
    Image& image = *loaded_.image;
    at_ = image.Name();
    try {
      vx::LoadOptions options;
      options.page = loaded_.page;
      if (arguments_.toSrgb) options.flags |= VX_LOAD_TO_SRGB;
      // Such a picture is made smaller as it is read, and never kept.
      if (original->first > kLargestPage) options.flags |= VX_LOAD_ROW_BY_ROW;
      vx::Bitmap picture = image.With([&](const vx::Source& source) { return source.Load(options); });
      RemarkOnColors(picture, at_);
      picture_.emplace(std::move(picture));
      ReportRemarks(at_);
    } catch (const vx::Error& error) {
      LeaveOut(error, at_, loaded_.page, --image.pagesLeft);
      originals_.erase(original);
      return false;
    }
    at_ = arguments_.out;
    return true;
  }

  const IconArguments& arguments_;
  const IconPreset& preset_;
  int pngFrom_;
  int bits_;  // of bitmap pages; 0: as suits the picture
  std::vector<int> sizes_;
  std::vector<int> made_;
  std::deque<Image> images_;  // which stay where they are
  Originals originals_;
  Original loaded_ = {};  // or tried last
  std::optional<Picture> picture_;
  std::string at_;
};

ExitCode MakeIcon(const IconArguments& arguments) {
  RequireIconName(arguments.out);
  if (arguments.printsHtml && arguments.out == kStandardStream) {
    throw UsageError("--html prints on standard output, so the icon needs a file");
  }
  return IconMaker(arguments).Run();
}

}  // namespace

Action DeclareIcon(Arguments& command) {
  auto arguments = std::make_shared<IconArguments>();
  command.Add({.name = "IMAGE",
               .help = "picture, or pictures in several sizes; - is standard input",
               .isRequired = true},
              arguments->images);
  command.Add(
      {.name = "-o", .help = "icon file to write; - is standard output", .value = "FILE", .isRequired = true},
      arguments->out);
  command.Add({.name = "--preset",
               .help = "sizes and forms for " + IconPresetNames(", "),
               .value = IconPresetNames("|")},
              arguments->preset);
  command.Add({.name = "--enlarge", .help = "make pages that are larger than the largest picture, too"},
              arguments->enlarges);
  command.Add({.name = "--html", .help = "print the line that a web page has for the icon"},
              arguments->printsHtml);
  command.Add({.name = "--sizes",
               .help = "sides of the pages, in pixels; 16,24,32,48,64,128,256\n"
                       "unless given, as far as the largest picture goes",
               .value = "LIST"},
              arguments->sizes);
  command.Add({.name = "--png-from",
               .help = "pages of this size and larger are PNG streams; 256\n"
                       "unless given. Smaller ones with soft edges have 32 bits",
               .value = "SIZE"},
              arguments->pngFrom);
  command.Add({.name = "--bits",
               .help = "bits a pixel of the bitmap pages: 1, 4, 8, 24 or 32; unless given\n"
                       "32 where edges are soft, else as few as lose nothing",
               .value = "N",
               .offers = "1|4|8|24|32"},
              arguments->bits);
  command.Add({.name = "--srgb", .help = "convert colours by a profile, or calibrated ones, to sRGB"},
              arguments->toSrgb);
  arguments->overwriting.Declare(command);
  command.PutAboveDetails(IconPresetTable() + "\n");
  return [arguments] { return MakeIcon(*arguments); };
}

}  // namespace cli
