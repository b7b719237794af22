// vxbmp info: what is in the files, a line a page, as a table or as JSON.
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "Command.h"
#include "Facts.h"
#include "Input.h"
#include "Numbers.h"
#include "Output.h"
#include "Report.h"
#include "Table.h"
#include "Text.h"

namespace cli {
namespace {

constexpr std::string_view kAllPages = "all";

struct InfoArguments {
  std::vector<std::string> files;
  std::string page;
  bool json = false;
};

/// Where the facts go.
class Listing {
 public:
  Listing() = default;
  Listing(const Listing&) = delete;
  Listing& operator=(const Listing&) = delete;
  virtual ~Listing() = default;

  virtual void Add(const std::string& file, const vx_info& info) = 0;
  virtual void AddFailure(const std::string& file, int page, int status, const std::string& message) = 0;
  virtual void Finish() = 0;
};

/// Columns can only be aligned once all is known, so nothing is printed before the end.
class Table final : public Listing {
 public:
  void Add(const std::string& file, const vx_info& info) override {
    rows_.push_back({Printable(file), fmt::format("{}/{}", info.page, info.page_count),
                     vx_format_name(info.format), SizeText(info), fmt::to_string(info.bits_per_pixel),
                     CompressionText(info), OrientationText(info), ColorOrderText(info),
                     ResolutionText(info)});
  }

  void AddFailure(const std::string& /*file*/, int /*page*/, int /*status*/,
                  const std::string& /*message*/) override {}

  void Finish() override {
    if (rows_.empty()) return;
    rows_.insert(rows_.begin(), {"FILE", "PAGE", "KIND", "SIZE", "BITS", "CODING", "ROWS", "COLOURS", "DPI"});
    PrintToStandardOutput(InColumns(rows_));
  }

 private:
  std::vector<TableRow> rows_;
};

class JsonLines final : public Listing {
 public:
  void Add(const std::string& file, const vx_info& info) override {
    Print({{"file", file},
           {"page", info.page},
           {"pages", info.page_count},
           {"kind", vx_format_name(info.format)},
           {"format", info.format},
           {"width", info.width},
           {"height", info.height},
           {"bits_per_pixel", info.bits_per_pixel},
           {"compression", CompressionText(info)},
           {"orientation", OrientationText(info)},
           {"color_order", ColorOrderText(info)},
           {"x_dpi", info.x_dpi},
           {"y_dpi", info.y_dpi},
           {"data_size", info.data_size}});
  }

  void AddFailure(const std::string& file, int page, int status, const std::string& message) override {
    Json line{{"file", file}};
    if (page > 0) line["page"] = page;
    line["error"] = vx_status_name(status);
    line["status"] = status;
    line["message"] = message;
    Print(line);
  }

  void Finish() override {}

 private:
  using Json = nlohmann::ordered_json;

  /// Names need not be UTF-8, JSON has to be.
  static void Print(const Json& line) {
    PrintToStandardOutput(line.dump(-1, ' ', true, Json::error_handler_t::replace) + "\n");
  }
};

class InfoCommand {
 public:
  explicit InfoCommand(const InfoArguments& arguments)
      : page_(ParsePage(arguments.page)), all_(arguments.page == kAllPages), files_(arguments.files) {
    if (arguments.json) {
      listing_ = std::make_unique<JsonLines>();
    } else {
      listing_ = std::make_unique<Table>();
    }
  }

  ExitCode Run() {
    for (const std::string& file : files_) ListFile(file);
    listing_->Finish();
    return exitCode_;
  }

 private:
  static constexpr int kNoPage = 0;

  static int ParsePage(const std::string& page) {
    if (page.empty() || page == kAllPages) return kNoPage;
    if (const std::optional<int> number = ParseInt(page, 1)) return *number;
    throw UsageError(fmt::format("--page {}: a whole number from 1, or all, is needed", Printable(page)));
  }

  void ListFile(const std::string& file) {
    std::optional<Input> input = Open(file);
    if (!input) return;
    if (page_ != kNoPage) {
      ListPage(file, input->Source(), page_);
    } else {
      ListAllPages(file, input->Source());
    }
  }

  std::optional<Input> Open(const std::string& file) try {
    return std::optional<Input>(std::in_place, file.c_str());
  } catch (const vx::Error& error) {
    Fail(error, file, kNoPage);
    return std::nullopt;
  } catch (const FileError& error) {
    ReportMessage(error.what());
    listing_->AddFailure(file, kNoPage, error.status(), error.what());
    exitCode_ = kExitFailed;
    return std::nullopt;
  }

  bool ListPage(const std::string& file, vx::Source& source, int page) try {
    listing_->Add(file, source.Describe(page));
    return true;
  } catch (const vx::Error& error) {
    Fail(error, file, page);
    return false;
  }

  /// A hostile directory may announce 65535 pages, each of which takes a look at all others to describe, or
  /// as many pages of nothing. So the list ends after a few bad ones, and, unless all pages were asked for,
  /// after more than any real file has.
  void ListAllPages(const std::string& file, vx::Source& source) {
    constexpr int kPagesListed = 100;
    constexpr int kFailuresShown = 3;
    const int pages = CountPages(source);
    const int last = all_ ? pages : std::min(pages, kPagesListed);
    int failures = 0;
    int page = 1;
    for (; page <= last && (all_ || failures < kFailuresShown); ++page) {
      if (!ListPage(file, source, page)) ++failures;
    }
    if (page > pages) return;
    ReportMessage(fmt::format("{}: {} pages; those from {} on were left out, --page all lists them",
                              Printable(InputName(file.c_str())), pages, page));
  }

  /// Every good page knows how many there are, so one that can be read is looked for. A file without any
  /// counts as one page, whose failure then speaks for the file.
  static int CountPages(vx::Source& source) {
    constexpr int kPagesTried = 4;
    for (int page = 1; page <= kPagesTried; ++page) {
      try {
        return source.Describe(page).page_count;
      } catch (const vx::Error& error) {
        if (error.status() == VX_BAD_PAGE) return std::max(page - 1, 1);
      }
    }
    return 1;
  }

  void Fail(const vx::Error& error, const std::string& file, int page) {
    ReportFailure(error, {.file = InputName(file.c_str())});
    listing_->AddFailure(file, page, error.status(), ProblemOf(error));
    exitCode_ = kExitFailed;
  }

  int page_;  // kNoPage: every page, within reason
  bool all_;  // every page, whatever their number
  const std::vector<std::string>& files_;
  std::unique_ptr<Listing> listing_;
  ExitCode exitCode_ = kExitOk;
};

}  // namespace

Action DeclareInfo(CLI::App& command) {
  auto arguments = std::make_shared<InfoArguments>();
  command.add_option("FILE", arguments->files, "files to look into; - is standard input")->required();
  command
      .add_option("--page", arguments->page, "show page N only, or really all where there are more than 100")
      ->option_text("N|all");
  command.add_flag("--json", arguments->json, "print one JSON object a line, for scripts");
  return [arguments] { return InfoCommand(*arguments).Run(); };
}

}  // namespace cli
