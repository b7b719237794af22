// vxbmp diff: whether two files show the same, how far off they are, and what is stored differently. Like
// other programs that compare, it keeps 1 for a difference and 2 for whatever goes wrong.
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "arguments/OnePage.h"
#include "arguments/PageSelection.h"
#include "arguments/SaveArguments.h"
#include "commands/Command.h"
#include "failures/Report.h"
#include "jobs/Comparison.h"
#include "streams/Input.h"
#include "streams/Output.h"
#include "words/Facts.h"
#include "words/Json.h"
#include "words/Text.h"

namespace cli {
namespace {

constexpr ExitCode kExitDifferent = kExitFailed;
constexpr ExitCode kExitTrouble = kExitUsage;

struct DiffArguments {
  std::string file;
  std::string other;
  std::string out;
  bool strict = false;
  bool json = false;
  bool quiet = false;
  OnePage page;
};

/// What is known of two pages.
struct PageDifference {
  int page = 0;
  int other = 0;
  std::string size{};
  std::string otherSize{};
  PixelDifference pixels{};
  std::vector<StoredDifference> stored{};

  [[nodiscard]] bool ShowsTheSame() const { return size == otherSize && pixels.differing == 0; }
  /// Also in what cannot be seen.
  [[nodiscard]] bool IsStoredTheSame() const { return stored.empty() && pixels.hidden == 0; }
};

// ---- words

/// "255,0,0,255"
std::string PixelText(const Rgba& pixel) {
  return fmt::to_string(fmt::join(pixel, ","));
}

std::string ChannelsText(const PixelDifference& pixels) {
  constexpr const char* kNames[] = {"red", "green", "blue", "alpha"};
  std::string text;
  for (size_t channel = 0; channel < pixels.most.size(); ++channel) {
    if (pixels.most[channel] == 0) continue;
    text += fmt::format("{}{} by {} at most, {:.3g} on average", text.empty() ? "" : "; ", kNames[channel],
                        pixels.most[channel], pixels.MeanOf(channel));
  }
  return text;
}

std::string PixelsText(const PixelDifference& pixels) {
  if (pixels.differing == 0) return fmt::format("{} pixels, all the same\n", pixels.compared);
  constexpr double kPercent = 100;
  const double part = kPercent * static_cast<double>(pixels.differing) / static_cast<double>(pixels.compared);
  return fmt::format("{} of {} pixels differ ({:.3g} %), first at {},{}: {} / {}\n  {}\n", pixels.differing,
                     pixels.compared, part, pixels.firstX, pixels.firstY, PixelText(pixels.first),
                     PixelText(pixels.other), ChannelsText(pixels));
}

std::string TextOf(const PageDifference& difference, bool namesPages) {
  std::string text;
  if (namesPages) {
    text = difference.page == difference.other
               ? fmt::format("page {}: ", difference.page)
               : fmt::format("pages {} / {}: ", difference.page, difference.other);
  }
  text += PixelsText(difference.pixels);
  if (difference.size != difference.otherSize) {
    text += fmt::format("  size: {} / {}; the pixels are those that both have\n", difference.size,
                        difference.otherSize);
  }
  if (difference.pixels.hidden > 0) {
    text += fmt::format("  colours that cannot be seen: {} pixels\n", difference.pixels.hidden);
  }
  for (const StoredDifference& stored : difference.stored) {
    text += fmt::format("  {}: {} / {}\n", stored.name, stored.value, stored.other);
  }
  return text;
}

JsonLine JsonBegin(const DiffArguments& arguments, int page, int other) {
  JsonLine line;
  line.Add("schema", 1);
  line.AddFile(arguments.file);
  line.AddFile(arguments.other, "other");
  line.Add("page", page);
  line.Add("other_page", other);
  return line;
}

std::string JsonOf(const DiffArguments& arguments, const PageDifference& difference) {
  const PixelDifference& pixels = difference.pixels;
  JsonLine line = JsonBegin(arguments, difference.page, difference.other);
  line.Add("same", difference.ShowsTheSame());
  line.Add("size", difference.size);
  line.Add("other_size", difference.otherSize);
  line.Add("pixels", pixels.compared);
  line.Add("differing", pixels.differing);
  line.Add("hidden", pixels.hidden);
  if (pixels.differing > 0) line.Add("first", {pixels.firstX, pixels.firstY});
  constexpr const char* kNames[] = {"red", "green", "blue", "alpha"};
  for (size_t channel = 0; channel < pixels.most.size(); ++channel) {
    line.Add(fmt::format("{}_max", kNames[channel]), pixels.most[channel]);
    line.AddReal(fmt::format("{}_mean", kNames[channel]), pixels.MeanOf(channel));
  }
  std::vector<std::string> stored;
  for (const StoredDifference& each : difference.stored) stored.push_back(each.key);
  line.Add("stored", stored);
  return line.Text();
}

// ---- work

class Diff {
 public:
  explicit Diff(const DiffArguments& arguments) : arguments_(arguments), options_(arguments.page.Options()) {
    if (arguments.file == kStandardStream && arguments.other == kStandardStream) {
      throw UsageError("only one of the two can be standard input");
    }
    if (arguments.out.empty()) return;
    save_ = SaveOptionsByName(arguments.out);
    RefuseTerminal(arguments.out.c_str());
    if (AreSameFile(arguments.out, arguments.file) || AreSameFile(arguments.out, arguments.other)) {
      throw UsageError("-o names one of the two files that are compared");
    }
  }

  ExitCode Run() {
    std::optional<Input> input = Open(arguments_.file);
    std::optional<Input> other = Open(arguments_.other);
    if (!input || !other) return kExitTrouble;
    CompareFiles(input->Source(), other->Source());
    WriteDrawing();
    if (hasTrouble_) return kExitTrouble;
    return isSame_ && (isStoredSame_ || !arguments_.strict) ? kExitOk : kExitDifferent;
  }

 private:
  struct Loaded {
    vx_info page;
    vx_storage_info storage;
    vx::Bitmap picture;
  };

  std::optional<Input> Open(const std::string& file) try {
    return std::optional<Input>(std::in_place, file.c_str());
  } catch (const vx::Error& error) {
    Fail(error, file, 0, 0);
    return std::nullopt;
  }

  void CompareFiles(const vx::Source& source, const vx::Source& other) {
    const std::optional<int> pages = Count(source, arguments_.file);
    const std::optional<int> otherPages = Count(other, arguments_.other);
    if (!pages || !otherPages) return;
    if (arguments_.page.WasGiven() && !arguments_.page.MeansAll()) {
      namesPages_ = *pages > 1 || *otherPages > 1;
      const std::optional<int> page = Choose(source, *pages, arguments_.file);
      const std::optional<int> otherPage = Choose(other, *otherPages, arguments_.other);
      if (page && otherPage) Compare(source, *page, other, *otherPage);
      return;
    }
    namesPages_ = std::max(*pages, *otherPages) > 1;
    for (int page = 1; page <= std::min(*pages, *otherPages); ++page) Compare(source, page, other, page);
    for (int page = *otherPages + 1; page <= *pages; ++page) TellOfOne(page, 0, arguments_.file);
    for (int page = *pages + 1; page <= *otherPages; ++page) TellOfOne(0, page, arguments_.other);
  }

  std::optional<int> Count(const vx::Source& source, const std::string& file) try {
    return CountPages(source);
  } catch (const vx::Error& error) {
    Fail(error, file, 0, 0);
    return std::nullopt;
  }

  /// The page that was asked for. A file that has only one is compared with it, whatever its number.
  std::optional<int> Choose(const vx::Source& source, int pages, const std::string& file) try {
    vx::LoadOptions options = options_;
    arguments_.page.ChooseFrom(source, options);
    return pages == 1 ? 1 : options.page;
  } catch (const vx::Error& error) {
    Fail(error, file, 0, 0);
    return std::nullopt;
  }

  std::optional<Loaded> Load(const vx::Source& source, int page, int other, bool isOther) {
    const std::string& file = isOther ? arguments_.other : arguments_.file;
    try {
      vx::LoadOptions options = options_;
      options.page = isOther ? other : page;
      vx::Bitmap picture = source.Load(options);
      if (!arguments_.quiet) ReportRemarks(InputName(file.c_str()));
      return Loaded{source.Describe(options.page), source.DescribeStorage(options.page), std::move(picture)};
    } catch (const vx::Error& error) {
      Fail(error, file, page, other);
      return std::nullopt;
    }
  }

  void Compare(const vx::Source& source, int page, const vx::Source& other, int otherPage) {
    const std::optional<Loaded> loaded = Load(source, page, otherPage, false);
    const std::optional<Loaded> otherLoaded = Load(other, page, otherPage, true);
    if (!loaded || !otherLoaded) return;
    const PictureSide side{loaded->page, loaded->storage, loaded->picture.Describe(), loaded->picture};
    const PictureSide otherSide{otherLoaded->page, otherLoaded->storage, otherLoaded->picture.Describe(),
                                otherLoaded->picture};
    const PageDifference difference{.page = page,
                                    .other = otherPage,
                                    .size = SizeText(side.page),
                                    .otherSize = SizeText(otherSide.page),
                                    .pixels = ComparePixels(side.picture, otherSide.picture),
                                    .stored = CompareStored(side, otherSide)};
    Draw(side.picture, otherSide.picture, difference.ShowsTheSame());
    isSame_ = isSame_ && difference.ShowsTheSame();
    isStoredSame_ = isStoredSame_ && difference.IsStoredTheSame();
    if (arguments_.json) {
      PrintToStandardOutput(JsonOf(arguments_, difference));
    } else if (!arguments_.quiet) {
      PrintToStandardOutput(TextOf(difference, namesPages_));
    }
  }

  /// A page that only one of the files has.
  void TellOfOne(int page, int other, const std::string& file) {
    isSame_ = false;
    if (arguments_.json) {
      JsonLine line = JsonBegin(arguments_, page, other);
      line.Add("same", false);
      PrintToStandardOutput(line.Text());
    } else if (!arguments_.quiet) {
      PrintToStandardOutput(
          fmt::format("page {}: only in {}\n", std::max(page, other), Printable(InputName(file.c_str()))));
    }
  }

  /// The first page that differs is drawn, or the first of all where none does.
  void Draw(const vx::Bitmap& picture, const vx::Bitmap& other, bool isSame) try {
    if (arguments_.out.empty() || (drawing_ && (isSame || !isSame_))) return;
    drawing_.reset();  // before there are two
    drawing_ = DrawDifference(picture, other);
  } catch (const vx::Error& error) {
    Fail(error, arguments_.out, 0, 0);
  }

  void WriteDrawing() try {
    if (drawing_) WritePicture(*drawing_, arguments_.out.c_str(), save_);
  } catch (const vx::Error& error) {
    Fail(error, arguments_.out, 0, 0);
  }

  void Fail(const vx::Error& error, const std::string& file, int page, int other) {
    hasTrouble_ = true;
    ReportFailure(error, {.file = InputName(file.c_str()), .takesTruncated = true});
    if (!arguments_.json) return;
    JsonLine line = JsonBegin(arguments_, page, other);
    line.AddFailure(error.status(), ProblemOf(error));
    PrintToStandardOutput(line.Text());
  }

  const DiffArguments& arguments_;
  vx::LoadOptions options_;
  vx::SaveOptions save_;
  std::optional<vx::Bitmap> drawing_;
  bool namesPages_ = false;
  bool isSame_ = true;
  bool isStoredSame_ = true;
  bool hasTrouble_ = false;
};

ExitCode Run(const DiffArguments& arguments) {
  try {
    return Diff(arguments).Run();
  } catch (const FileError& error) {
    ReportMessage(error.what());
    return kExitTrouble;
  }
}

}  // namespace

Action DeclareDiff(Arguments& command) {
  auto arguments = std::make_shared<DiffArguments>();
  command.Add({.name = "A", .help = "a file; - is standard input", .offers = "FILE", .isRequired = true},
              arguments->file);
  command.Add({.name = "B", .help = "the file to compare it with", .offers = "FILE", .isRequired = true},
              arguments->other);
  arguments->page.Declare(command, OnePage::Then::kCompared);
  command.Add({.name = "-o", .help = "draw where they differ, in red on pale grey", .value = "FILE"},
              arguments->out);
  command.Add({.name = "--strict", .help = "what is stored differently counts, too"}, arguments->strict);
  command.Add({.name = "--json", .help = "print one JSON object a page, for scripts"}, arguments->json);
  command.Add({.name = "-q,--quiet", .help = "print nothing: the exit code tells"}, arguments->quiet);
  return [arguments] { return Run(*arguments); };
}

}  // namespace cli
