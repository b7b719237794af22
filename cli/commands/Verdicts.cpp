#include "commands/Verdicts.h"

#include <fmt/format.h>

#include "failures/Errors.h"
#include "streams/Output.h"
#include "words/Json.h"
#include "words/Style.h"
#include "words/Text.h"

namespace cli {
namespace {

class List final : public Verdicts {
 public:
  List(bool withAdvice, bool isQuiet)
      : withAdvice_(withAdvice), isQuiet_(isQuiet), style_(Style::OfStandardOutput()) {}

  void Add(const std::string& file, const vx_finding& finding) override {
    const std::string page = finding.page > 0 ? fmt::format(", page {}", finding.page) : "";
    const std::string byte = finding.offset >= 0 ? fmt::format(", byte {}", finding.offset) : "";
    const char* severity = vx_severity_name(finding.severity);
    std::string line = fmt::format("{}{}: {}: {} ({}{})\n", style_.Strong(Printable(file)), page,
                                   finding.severity == VX_NOTE ? severity : style_.Warning(severity),
                                   Printable(finding.text), vx_finding_name(finding.code), byte);
    if (withAdvice_) line += style_.Faint(fmt::format("  {}", vx_finding_advice(finding.code))) + '\n';
    PrintToStandardOutput(line);
  }

  void End(const std::string& file, const FindingCounts& counts) override {
    if (counts.All() > 0 || isQuiet_) return;
    PrintToStandardOutput(fmt::format("{}: nothing found\n", style_.Strong(Printable(file))));
  }

  void Fail(const std::string& /*file*/, const vx::Error& /*error*/) override {}

 private:
  bool withAdvice_;
  bool isQuiet_;
  Style style_;
};

class Lines final : public Verdicts {
 public:
  void Add(const std::string& file, const vx_finding& finding) override {
    JsonLine line = NewLine(file);
    line.Add("finding", vx_finding_name(finding.code));
    line.Add("severity", vx_severity_name(finding.severity));
    if (finding.page > 0) line.Add("page", finding.page);
    if (finding.offset >= 0) line.Add("offset", finding.offset);
    line.Add("first", finding.first);
    line.Add("second", finding.second);
    line.Add("text", finding.text);
    line.Add("advice", vx_finding_advice(finding.code));
    line.Add("repairable", vx_finding_can_be_mended(finding.code) != 0);
    PrintToStandardOutput(line.Text());
  }

  void End(const std::string& file, const FindingCounts& counts) override {
    JsonLine line = NewLine(file);
    line.Add("errors", counts.of[VX_ERROR]);
    line.Add("warnings", counts.of[VX_WARNING]);
    line.Add("notes", counts.of[VX_NOTE]);
    PrintToStandardOutput(line.Text());
  }

  void Fail(const std::string& file, const vx::Error& error) override {
    JsonLine line = NewLine(file);
    line.AddFailure(error.status(), ProblemOf(error));
    PrintToStandardOutput(line.Text());
  }

 private:
  static JsonLine NewLine(const std::string& file) {
    JsonLine line;
    line.Add("schema", 1);
    line.AddFile(file);
    return line;
  }
};

}  // namespace

std::unique_ptr<Verdicts> NewVerdictList(bool withAdvice, bool isQuiet) {
  return std::make_unique<List>(withAdvice, isQuiet);
}

std::unique_ptr<Verdicts> NewVerdictLines() {
  return std::make_unique<Lines>();
}

}  // namespace cli
