// vxbmp repair: a file with everything mended that can be without guessing pixels.
#include <fmt/format.h>
#include <vx/verify.h>

#include <exception>
#include <memory>
#include <string>

#include "commands/Command.h"
#include "failures/Report.h"
#include "streams/Input.h"
#include "streams/Output.h"
#include "words/Json.h"
#include "words/Style.h"
#include "words/Text.h"

namespace cli {
namespace {

struct RepairArguments {
  std::string in;
  std::string out;
  bool inPlace = false;
  std::string backup;
  bool quiet = false;
  bool json = false;
};

/// Prints what was done and what is left. What printing throws must not pass through the library: it waits
/// here.
class StepPrinter {
 public:
  StepPrinter(const std::string& file, const RepairArguments& arguments)
      : file_(file), arguments_(arguments), style_(Style::OfStandardOutput()) {}

  static void Take(void* user, const vx_repair_step* step) {
    auto& self = *static_cast<StepPrinter*>(user);
    if (self.failure_) return;
    try {
      self.Print(*step);
    } catch (...) {
      self.failure_ = std::current_exception();
    }
  }
  void Rethrow() const {
    if (failure_) std::rethrow_exception(failure_);
  }
  [[nodiscard]] bool HasPrinted() const { return hasPrinted_; }

 private:
  void Print(const vx_repair_step& step) {
    hasPrinted_ = true;
    if (arguments_.json) return PrintObject(step);
    if (arguments_.quiet && step.is_mended != 0) return;
    const vx_finding& finding = *step.finding;
    const std::string page = finding.page > 0 ? fmt::format(", page {}", finding.page) : "";
    if (arguments_.out == kStandardStream) return ReportMessage(Printable(file_) + page + ": " + Words(step));
    PrintToStandardOutput(style_.Strong(Printable(file_)) + page + ": " + Words(step) + '\n');
  }

  [[nodiscard]] std::string Words(const vx_repair_step& step) const {
    const vx_finding& finding = *step.finding;
    const std::string found = Printable(finding.text);
    const char* code = vx_finding_name(finding.code);
    if (step.is_mended != 0) return fmt::format("mended: {}; {} ({})", found, step.text, code);
    return fmt::format("{}: {}: {} ({})\n{}", style_.Warning("not mended"),
                       vx_severity_name(finding.severity), found, code,
                       style_.Faint(fmt::format("  {}", step.text)));
  }

  void PrintObject(const vx_repair_step& step) const {
    const vx_finding& finding = *step.finding;
    JsonLine line;
    line.Add("schema", 1);
    line.AddFile(file_);
    line.Add("finding", vx_finding_name(finding.code));
    line.Add("severity", vx_severity_name(finding.severity));
    if (finding.page > 0) line.Add("page", finding.page);
    line.Add("mended", step.is_mended != 0);
    line.Add("text", finding.text);
    line.Add(step.is_mended != 0 ? "done" : "advice", step.text);
    PrintToStandardOutput(line.Text());
  }

  const std::string& file_;
  const RepairArguments& arguments_;
  Style style_;
  std::exception_ptr failure_;
  bool hasPrinted_ = false;
};

void Check(const RepairArguments& arguments) {
  if (arguments.inPlace) {
    if (arguments.in == kStandardStream) throw UsageError("--in-place: standard input is no file");
    if (arguments.backup.empty()) {
      throw UsageError("--in-place: --backup is needed, which keeps the old file as IN~");
    }
    if (arguments.backup.find('/') == std::string::npos) return;
    throw UsageError(fmt::format("--backup={}: an ending is needed, such as .old, not a path",
                                 Printable(arguments.backup)));
  }
  if (arguments.out.empty()) throw UsageError("-o OUT is required, or --in-place --backup");
  if (arguments.out != kStandardStream) return;
  if (arguments.json) throw UsageError("--json: standard output is where OUT goes");
  RefuseTerminal(arguments.out.c_str());
}

vx_repair_outcome Repair(const RepairArguments& arguments, StepPrinter& printer) {
  vx_repair_outcome outcome{};
  if (arguments.inPlace) {
    const std::string backup = arguments.in + arguments.backup;
    vx::Check(
        vx_repair_in_place(arguments.in.c_str(), backup.c_str(), StepPrinter::Take, &printer, &outcome));
  } else {
    Input input(arguments.in.c_str());
    const std::string out = arguments.out == kStandardStream ? "/dev/stdout" : arguments.out;
    vx::Check(vx_repair(input.Source().Get(), out.c_str(), StepPrinter::Take, &printer, &outcome));
  }
  printer.Rethrow();
  return outcome;
}

ExitCode Run(const RepairArguments& arguments) {
  Check(arguments);
  const std::string name = InputName(arguments.in.c_str());
  try {
    StepPrinter printer(name, arguments);
    const vx_repair_outcome outcome = Repair(arguments, printer);
    const bool isTalkative = !arguments.quiet && !arguments.json && arguments.out != kStandardStream;
    if (!printer.HasPrinted() && isTalkative) {
      PrintToStandardOutput(fmt::format("{}: nothing to mend\n", Printable(name)));
    }
    return outcome.errors_left == 0 ? kExitOk : kExitFailed;
  } catch (const vx::Error& error) {
    ReportFailure(error, {.file = name});
    return kExitFailed;
  }
}

}  // namespace

Action DeclareRepair(Arguments& command) {
  auto arguments = std::make_shared<RepairArguments>();
  command.Add({.name = "IN", .help = "file to mend; - is standard input", .isRequired = true}, arguments->in);
  command.Add({.name = "-o,--output",
               .help = "the mended file, written whether or not there was something\nto mend; it may be IN",
               .value = "OUT"},
              arguments->out);
  command.Add({.name = "--in-place", .help = "mend IN itself; needs --backup"}, arguments->inPlace);
  command.Add({.name = "--backup",
               .help = "keep the old file, with SUFFIX behind its name; ~ unless given",
               .value = "SUFFIX",
               .implied = "~"},
              arguments->backup);
  command.Exclude("--in-place", "--output");
  command.Add({.name = "-q,--quiet", .help = "say nothing but what is left"}, arguments->quiet);
  command.Add({.name = "--json", .help = "print one JSON object a line for all that is mended or left"},
              arguments->json);
  return [arguments] { return Run(*arguments); };
}

}  // namespace cli
