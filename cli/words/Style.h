// Emphasis for people: escape sequences where standard output is a terminal that takes them, else nothing.
#pragma once

#include <string>
#include <string_view>

namespace cli {

class Style {
 public:
  /// For standard output, unless the environment says NO_COLOR or the terminal is a dumb one.
  static Style OfStandardOutput();
  explicit constexpr Style(bool isColored) : isColored_(isColored) {}

  std::string Strong(std::string_view text) const { return Wrap("1", text); }
  std::string Faint(std::string_view text) const { return Wrap("2", text); }
  /// What is wrong, or worth a look.
  std::string Warning(std::string_view text) const { return Wrap("33", text); }

 private:
  std::string Wrap(std::string_view code, std::string_view text) const;

  bool isColored_;
};

}  // namespace cli
