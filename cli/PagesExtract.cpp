// vxbmp pages extract: pages as files of their own.
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Facts.h"
#include "Input.h"
#include "Output.h"
#include "PageSelection.h"
#include "Pages.h"
#include "Report.h"
#include "SaveArguments.h"
#include "Text.h"

namespace cli {
namespace {

struct ExtractArguments {
  std::string file;
  std::string selection = "1-";
  std::string pattern = "{name}-{page}.png";
};

void ReplaceAll(std::string& text, std::string_view from, const std::string& to) {
  for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
}

std::string NameFor(const ExtractArguments& arguments, const vx_info& info) {
  std::string name = arguments.pattern;
  ReplaceAll(name, "{name}", std::filesystem::path(arguments.file).stem().string());
  ReplaceAll(name, "{page}", fmt::to_string(info.page));
  ReplaceAll(name, "{size}", SizeText(info));
  ReplaceAll(name, "{bits}", fmt::to_string(info.bits_per_pixel));
  return name;
}

/// Takes out what can be taken out; a bad page is told of and keeps no other from it.
class Extraction {
 public:
  Extraction(const ExtractArguments& arguments, const vx::Source& source)
      : arguments_(arguments), source_(source) {}

  ExitCode Run() {
    const std::vector<Job> jobs = PlanJobs();
    for (const Job& job : jobs) Extract(job);
    return exitCode_;
  }

 private:
  struct Job {
    int page;
    std::string out;
  };

  /// The files to write, whose names must differ.
  std::vector<Job> PlanJobs() {
    std::vector<Job> jobs;
    for (const int page : SelectPages(arguments_.selection, source_, arguments_.file)) {
      const std::optional<vx_info> info = OrReport([&] { return source_.Describe(page); });
      if (!info) continue;
      std::string out = NameFor(arguments_, *info);
      if (std::any_of(jobs.begin(), jobs.end(), [&](const Job& job) { return job.out == out; })) {
        throw UsageError(fmt::format("-o {}: several pages would become {}; the name needs {{page}}",
                                     Printable(arguments_.pattern), Printable(out)));
      }
      jobs.push_back({page, std::move(out)});
    }
    return jobs;
  }

  void Extract(const Job& job) {
    const vx::SaveOptions options = SaveArguments().Describe(job.out, VX_PALETTE_BEST);
    const std::optional<vx::Bitmap> picture = OrReport([&] { return source_.Load(job.page); });
    if (!picture) return;
    const vx_save_plan plan = picture->Plan(options);
    WritePicture(*picture, job.out.c_str(), options);
    RemarkOnLosses(job.out, options, plan, "a PNG file");
  }

  template <class Reads>
  auto OrReport(const Reads& reads) -> std::optional<decltype(reads())> try {
    return reads();
  } catch (const vx::Error& error) {
    ReportFailure(error, {.file = InputName(arguments_.file.c_str())});
    exitCode_ = kExitFailed;
    return std::nullopt;
  }

  const ExtractArguments& arguments_;
  const vx::Source& source_;
  ExitCode exitCode_ = kExitOk;
};

ExitCode Extract(const ExtractArguments& arguments) try {
  Input input(arguments.file.c_str());
  return Extraction(arguments, input.Source()).Run();
} catch (const vx::Error& error) {
  ReportFailure(error, {.file = InputName(arguments.file.c_str())});
  return kExitFailed;
}

}  // namespace

Nested DeclareExtract(CLI::App& command) {
  CLI::App* sub = command.add_subcommand("extract", "Takes pages out as files of their own.");
  auto arguments = std::make_shared<ExtractArguments>();
  sub->add_option("FILE", arguments->file, "icon or cursor file; - is standard input")->required();
  sub->add_option("--page", arguments->selection, "pages to take out; all unless given")->option_text("SEL");
  sub->add_option("-o", arguments->pattern,
                  "name of the files, with {name}, {page}, {size} and {bits} for\n"
                  "what they say; {name}-{page}.png unless given")
      ->option_text("PATTERN")
      ->type_name("FILE");
  sub->footer(DetailsOf(true, "extract app.ico --page 32x32@8 -o small.png"));
  return {sub, [arguments] { return Extract(*arguments); }};
}

}  // namespace cli
