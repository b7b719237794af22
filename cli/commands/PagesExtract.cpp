// vxbmp pages extract: pages as files of their own.
#include <fmt/format.h>

#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "arguments/PageSelection.h"
#include "arguments/SaveArguments.h"
#include "commands/Pages.h"
#include "failures/Report.h"
#include "streams/Input.h"
#include "streams/Output.h"
#include "words/Facts.h"
#include "words/FileNames.h"
#include "words/Text.h"

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
  ReplaceAll(name, "{name}", StemOf(arguments.file));
  ReplaceAll(name, "{page}", fmt::to_string(info.page));
  ReplaceAll(name, "{size}", SizeText(info));
  ReplaceAll(name, "{bits}", fmt::to_string(info.bits_per_pixel));
  return name;
}

/// Takes out what can be taken out. A bad page is reported and does not stop the others.
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
    std::unordered_set<std::string> names;
    for (const int page : SelectPages(arguments_.selection, source_, arguments_.file)) {
      const std::optional<vx_info> info = OrReport([&] { return source_.Describe(page); });
      if (!info) continue;
      std::string out = NameFor(arguments_, *info);
      if (!names.insert(out).second) {
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
    ReportRemarks(InputName(arguments_.file.c_str()));
    const vx_save_plan plan = picture->Plan(options);
    WritePicture(*picture, job.out.c_str(), options);
    RemarkOnLosses(job.out, options, plan);
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

void DeclareExtract(Arguments& pages) {
  Arguments& command =
      pages.AddCommand({.name = "extract",
                        .summary = "Takes pages out as files of their own.",
                        .details = DetailsOf(true, "extract app.ico --page 32x32@24 -o small.png")});
  auto arguments = std::make_shared<ExtractArguments>();
  command.Add({.name = "FILE", .help = "icon or cursor file; - is standard input", .isRequired = true},
              arguments->file);
  command.Add({.name = "--page", .help = "pages to take out; all unless given", .value = "SEL"},
              arguments->selection);
  command.Add({.name = "-o",
               .help = "name of the files, with {name}, {page}, {size} and {bits} for\n"
                       "what they say; {name}-{page}.png unless given",
               .value = "PATTERN",
               .offers = "FILE"},
              arguments->pattern);
  command.SetAction([arguments] { return Extract(*arguments); });
}

}  // namespace cli
