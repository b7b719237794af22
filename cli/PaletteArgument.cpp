#include "PaletteArgument.h"

#include "Errors.h"

namespace cli {
namespace {

constexpr const char* kBest = "auto";
constexpr const char* kFixed = "fixed";

bool IsWord(const std::string& value) {
  return value == kBest || value == kFixed;
}

}  // namespace

void PaletteArgument::Declare(CLI::App& command) {
  command
      .add_option("--palette", given_,
                  "auto or fixed: up to 8 bits, colours chosen for the\n"
                  "picture, or the fixed ones; FILE: with --raw, the colours of IN")
      ->option_text("auto|fixed|FILE")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

std::string PaletteArgument::File() const {
  std::string file;
  for (const std::string& value : given_) {
    if (IsWord(value)) continue;
    if (!file.empty()) throw UsageError("--palette can name only one file");
    file = value;
  }
  return file;
}

vx_palette PaletteArgument::ForOutput() const {
  std::string word;
  for (const std::string& value : given_) {
    if (!IsWord(value)) continue;
    if (!word.empty()) throw UsageError("--palette can be auto or fixed only once");
    word = value;
  }
  return word == kFixed ? VX_PALETTE_FIXED : VX_PALETTE_BEST;
}

}  // namespace cli
