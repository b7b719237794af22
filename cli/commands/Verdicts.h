// Findings as a command prints them: a line each for people, or an object each for programs.
#pragma once

#include <vx/verify.h>

#include <array>
#include <memory>
#include <string>
#include <vx/image.hpp>

namespace cli {

/// How many findings a file has, by their severity.
struct FindingCounts {
  std::array<size_t, 3> of{};

  void Add(int severity) { ++of[static_cast<size_t>(severity)]; }
  [[nodiscard]] size_t Errors() const { return of[VX_ERROR]; }
  [[nodiscard]] size_t All() const { return of[VX_NOTE] + of[VX_WARNING] + of[VX_ERROR]; }
};

/// Prints the findings of one file after the other.
class Verdicts {
 public:
  Verdicts() = default;
  Verdicts(const Verdicts&) = delete;
  Verdicts& operator=(const Verdicts&) = delete;
  virtual ~Verdicts() = default;

  virtual void Add(const std::string& file, const vx_finding& finding) = 0;
  /// All of the file have been added.
  virtual void End(const std::string& file, const FindingCounts& counts) = 0;
  /// The file cannot be judged. It is told on standard error as well.
  virtual void Fail(const std::string& file, const vx::Error& error) = 0;
};

/// @param withAdvice says what to do about each @param isQuiet says nothing of files without findings
std::unique_ptr<Verdicts> NewVerdictList(bool withAdvice, bool isQuiet);
std::unique_ptr<Verdicts> NewVerdictLines();

}  // namespace cli
