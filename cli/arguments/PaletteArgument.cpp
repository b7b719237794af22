#include "arguments/PaletteArgument.h"

#include "failures/Errors.h"

namespace cli {
namespace {

constexpr const char* kBest = "auto";
constexpr const char* kFixed = "fixed";

bool IsWord(const std::string& value) {
  return value == kBest || value == kFixed;
}

}  // namespace

void PaletteArgument::Declare(Arguments& command) {
  command.Add({.name = "--palette",
               .help = "auto or fixed: up to 8 bits, colours chosen for the\n"
                       "picture, or the fixed ones; FILE: with --raw, the colours of IN",
               .value = "auto|fixed|FILE",
               .takes = Takes::OneATime},
              given_);
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
