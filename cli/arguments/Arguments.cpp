#include "arguments/Arguments.h"

namespace cli {

Arguments::Arguments(const CommandWords& words, const Arguments* parent) : words_(words), parent_(parent) {
  declared_.push_back(
      {.argument = {.name = "-h,--help", .help = "print help that fits a small terminal, and exit"}});
  declared_.push_back(
      {.argument = {.name = std::string(kHelpAll), .help = "print all of the help and exit"}});
}

void Arguments::Add(const Argument& flag, bool& target) {
  declared_.push_back({.argument = flag, .flag = &target});
}

void Arguments::Add(const Argument& argument, std::string& target) {
  declared_.push_back({.argument = argument, .value = &target});
}

void Arguments::Add(const Argument& argument, std::vector<std::string>& target) {
  declared_.push_back({.argument = argument, .values = &target});
}

void Arguments::AddVersion(const Argument& flag, const std::string& version) {
  declared_.push_back({.argument = flag, .version = version});
}

std::string Arguments::Path() const {
  if (parent_ == nullptr) return "";
  const std::string path = parent_->Path();
  return path.empty() ? words_.name : path + " " + words_.name;
}

}  // namespace cli
