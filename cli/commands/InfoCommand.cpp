// vxbmp info: what is in the files, a line a page, as a table or as JSON.
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "arguments/PageSelection.h"
#include "commands/Command.h"
#include "commands/InfoListing.h"
#include "failures/Report.h"
#include "streams/Input.h"
#include "words/Numbers.h"
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

std::optional<vx_animation_info> FindAnimation(const vx::Source& source) try {
  return source.DescribeAnimation();
} catch (const vx::Error& error) {
  if (error.status() == VX_BAD_FORMAT) return std::nullopt;
  throw;
}

class InfoCommand {
 public:
  explicit InfoCommand(const InfoArguments& arguments)
      : page_(ParsePage(arguments.page)),
        all_(arguments.page == kAllPages),
        files_(arguments.files),
        listing_(MakeListing(arguments.json)) {}

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
    const vx_info info = source.Describe(page);
    listing_->Add(file, info, source.DescribeStorage(page));
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
