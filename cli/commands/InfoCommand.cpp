// vxbmp info: what is in the files, a line a page, as a table or as JSON.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "arguments/PageSelection.h"
#include "commands/Command.h"
#include "failures/Report.h"
#include "streams/Input.h"
#include "streams/Output.h"
#include "words/Facts.h"
#include "words/Json.h"
#include "words/Numbers.h"
#include "words/Table.h"
#include "words/Text.h"

namespace cli {
namespace {

constexpr std::string_view kAllPages = "all";
constexpr int kStepsListed = 100;  // more than any real animation has

struct InfoArguments {
  std::vector<std::string> files;
  std::string page;
  bool json = false;
};

/// A page or a whole file of which nothing can be told.
struct Failure {
  int page;   ///< 0: no page in particular
  int pages;  ///< 0: not known
  int status;
  std::string message;
};

/// Where the facts go.
class Listing {
 public:
  Listing() = default;
  Listing(const Listing&) = delete;
  Listing& operator=(const Listing&) = delete;
  virtual ~Listing() = default;

  virtual void Add(const std::string& file, const vx_info& info) = 0;
  virtual void Add(const std::string& file, const Failure& failure) = 0;
  /// What is known of an animated cursor as a whole, and its first steps.
  virtual void Add(const std::string& file, const vx_animation_info& info,
                   const std::vector<vx_animation_step>& steps) = 0;
  virtual void Finish() = 0;
};

std::optional<vx_animation_info> FindAnimation(const vx::Source& source) try {
  return source.DescribeAnimation();
} catch (const vx::Error& error) {
  if (error.status() == VX_BAD_FORMAT) return std::nullopt;
  throw;
}

constexpr std::array kTitles = {"FILE", "PAGE", "KIND", "SIZE", "BITS", "CODING", "ROWS", "COLOURS", "DPI"};

class TableLines final : public Listing {
 public:
  void Add(const std::string& file, const vx_info& info) override {
    Add({Printable(file), fmt::format("{}/{}", info.page, info.page_count), vx_format_name(info.format),
         SizeText(info), fmt::to_string(info.bits_per_pixel), CompressionText(info), OrientationText(info),
         ColorOrderText(info), ResolutionText(info)});
  }

  /// A page among others has a line. What is wrong with it stands on standard error.
  void Add(const std::string& file, const Failure& failure) override {
    if (failure.pages == 0 || failure.page > failure.pages) return;
    TableRow row = {Printable(file), fmt::format("{}/{}", failure.page, failure.pages), "bad"};
    row.resize(kTitles.size(), "?");
    Add(row);
  }

  /// Stands below the table, a line for the whole and one a step.
  void Add(const std::string& file, const vx_animation_info& info,
           const std::vector<vx_animation_step>& steps) override {
    animations_ += fmt::format("{}: {} steps", Printable(file), info.step_count);
    if (info.title[0] != '\0') animations_ += fmt::format(", title: {}", Printable(info.title));
    if (info.author[0] != '\0') animations_ += fmt::format(", author: {}", Printable(info.author));
    animations_ += '\n';
    for (size_t i = 0; i < steps.size(); ++i) {
      const auto& [frame, jiffies] = steps[i];
      const std::string page = frame == 0 ? "no page that there is" : fmt::format("page {}", frame);
      animations_ += fmt::format("  step {}: {}, {}/60 s\n", i + 1, page, jiffies);
    }
  }

  void Finish() override {
    const std::string lines = table_.Finish();
    if (hasRows_) PrintToStandardOutput(lines + animations_);
  }

 private:
  void Add(const TableRow& row) {
    hasRows_ = true;
    const std::string lines = table_.Add(row);
    if (!lines.empty()) PrintToStandardOutput(lines);
  }

  Table table_{TableRow(kTitles.begin(), kTitles.end())};
  std::string animations_;
  bool hasRows_ = false;
};

class JsonLines final : public Listing {
 public:
  void Add(const std::string& file, const vx_info& info) override {
    JsonLine line;
    line.AddFile(file);
    line.Add("page", info.page);
    line.Add("pages", info.page_count);
    line.Add("kind", vx_format_name(info.format));
    line.Add("format", info.format);
    line.Add("width", info.width);
    line.Add("height", info.height);
    line.Add("bits_per_pixel", info.bits_per_pixel);
    line.Add("compression", CompressionText(info));
    line.Add("orientation", OrientationText(info));
    line.Add("color_order", ColorOrderText(info));
    line.Add("x_dpi", info.x_dpi);
    line.Add("y_dpi", info.y_dpi);
    line.Add("data_size", info.data_size);
    PrintToStandardOutput(line.Text());
  }

  void Add(const std::string& file, const Failure& failure) override {
    JsonLine line;
    line.AddFile(file);
    if (failure.page > 0) line.Add("page", failure.page);
    if (failure.pages > 0) line.Add("pages", failure.pages);
    line.AddFailure(failure.status, failure.message);
    PrintToStandardOutput(line.Text());
  }

  void Add(const std::string& file, const vx_animation_info& info,
           const std::vector<vx_animation_step>& steps) override {
    JsonLine line;
    line.AddFile(file);
    line.Add("pages", info.frame_count);
    line.Add("steps", info.step_count);
    line.Add("jiffies", info.jiffies);
    line.Add("title", info.title);
    line.Add("author", info.author);
    PrintToStandardOutput(line.Text());
    for (size_t i = 0; i < steps.size(); ++i) {
      JsonLine each;
      each.AddFile(file);
      each.Add("step", i + 1);
      each.Add("page", steps[i].frame);
      each.Add("jiffies", steps[i].jiffies);
      PrintToStandardOutput(each.Text());
    }
  }

  void Finish() override {}
};

class InfoCommand {
 public:
  explicit InfoCommand(const InfoArguments& arguments)
      : page_(ParsePage(arguments.page)), all_(arguments.page == kAllPages), files_(arguments.files) {
    if (arguments.json) {
      listing_ = std::make_unique<JsonLines>();
    } else {
      listing_ = std::make_unique<TableLines>();
    }
  }

  ExitCode Run() {
    for (const std::string& file : files_) ListFile(file);
    listing_->Finish();
    return exitCode_;
  }

 private:
  static constexpr int kNoPage = 0;
  static constexpr int kNotKnown = 0;

  static int ParsePage(const std::string& page) {
    if (page.empty() || page == kAllPages) return kNoPage;
    if (const std::optional<int> number = ParseInt(page, 1)) return *number;
    throw UsageError(fmt::format("--page {}: a whole number from 1, or all, is needed", Printable(page)));
  }

  void ListFile(const std::string& file) {
    std::optional<Input> input = Open(file);
    if (!input) return;
    if (page_ != kNoPage) {
      ListPage(file, input->Source(), page_, kNotKnown);
    } else {
      ListAllPages(file, input->Source());
    }
  }

  std::optional<Input> Open(const std::string& file) try {
    return std::optional<Input>(std::in_place, file.c_str());
  } catch (const vx::Error& error) {
    Fail(error, file, kNoPage, kNotKnown);
    return std::nullopt;
  } catch (const FileError& error) {
    ReportMessage(error.what());
    listing_->Add(file, Failure{kNoPage, kNotKnown, error.status(), error.what()});
    exitCode_ = kExitFailed;
    return std::nullopt;
  }

  void ListPage(const std::string& file, const vx::Source& source, int page, int pages) try {
    listing_->Add(file, source.Describe(page));
  } catch (const vx::Error& error) {
    Fail(error, file, page, pages);
  }

  /// A directory that lies may announce 65535 pages. So, unless all pages were asked for, the list ends after
  /// more than any real file has.
  void ListAllPages(const std::string& file, const vx::Source& source) try {
    constexpr int kPagesListed = 100;
    const Contents contents = LookInto(source);
    if (contents.animation) {
      listing_->Add(file, *contents.animation,
                    source.AnimationSteps(0, std::min(contents.animation->step_count, kStepsListed)));
    }
    const int pages = contents.pages;
    if (pages == kNotKnown) return ListPage(file, source, 1, kNotKnown);
    const int last = all_ ? pages : std::min(pages, kPagesListed);
    for (int page = 1; page <= last; ++page) ListPage(file, source, page, pages);
    if (last == pages) return;
    ReportMessage(fmt::format("{}: {} pages; those from {} on were left out, --page all lists them",
                              Printable(InputName(file.c_str())), pages, last + 1));
  } catch (const vx::Error& error) {
    Fail(error, file, kNoPage, kNotKnown);
  }

  struct Contents {
    std::optional<vx_animation_info> animation;
    int pages;
  };

  /// What a file is its first page tells, without an error for all that it is not. Files without a directory
  /// have one page, whose failure speaks for the file.
  static Contents LookInto(const vx::Source& source) {
    vx_info first = {};
    const bool isKnown = vx_describe(source.Get(), 1, &first) == VX_OK;
    const bool isIcon =
        first.format == VX_FORMAT_ICO || first.format == VX_FORMAT_CUR || first.format == VX_FORMAT_VISTA_ICO;
    Contents contents = {std::nullopt, kNotKnown};
    if (!isKnown || first.format == VX_FORMAT_ANI) contents.animation = FindAnimation(source);
    if (contents.animation) {
      contents.pages = contents.animation->frame_count;
    } else if (!isKnown || isIcon) {
      const std::optional<vx_directory_info> directory = FindDirectory(source);
      if (directory) contents.pages = directory->page_count;
    }
    return contents;
  }

  void Fail(const vx::Error& error, const std::string& file, int page, int pages) {
    ReportFailure(error, {.file = InputName(file.c_str())});
    listing_->Add(file, Failure{page, pages, error.status(), ProblemOf(error)});
    exitCode_ = kExitFailed;
  }

  int page_;  // kNoPage: every page, within reason
  bool all_;  // every page, whatever their number
  const std::vector<std::string>& files_;
  std::unique_ptr<Listing> listing_;
  ExitCode exitCode_ = kExitOk;
};

}  // namespace

Action DeclareInfo(Arguments& command) {
  auto arguments = std::make_shared<InfoArguments>();
  command.Add({.name = "FILE", .help = "files to look into; - is standard input", .isRequired = true},
              arguments->files);
  command.Add({.name = "--page",
               .help = "show page N only, or really all where there are more than 100",
               .value = "N|all"},
              arguments->page);
  command.Add({.name = "--json", .help = "print one JSON object a line, for scripts"}, arguments->json);
  return [arguments] { return InfoCommand(*arguments).Run(); };
}

}  // namespace cli
