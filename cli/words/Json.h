// What the --json of every command has in common: objects on a line each, and how names and failures are
// told.
#pragma once

#include <concepts>
#include <string>
#include <string_view>
#include <utility>

namespace cli {

/// A JSON object. Its members stand in the order in which they are added.
class JsonLine {
 public:
  /// @param text any bytes; those that are not UTF-8 are told as \xNN
  void Add(std::string_view name, std::string_view text);
  void Add(std::string_view name, std::integral auto number) { AddRaw(name, std::to_string(number)); }
  /// An array of both.
  void Add(std::string_view name, std::pair<int, int> point);

  /// Tells of which file the line speaks. JSON has no way to hold a name that is not UTF-8: of such a one
  /// "file" is for people, with \xNN for what is none, and "file_bytes" has all its bytes, two hexadecimal
  /// digits each.
  void AddFile(std::string_view file);
  /// Adds "error", "status" and "message".
  void AddFailure(int status, std::string_view message);

  /// @return the object and the end of the line, in ASCII.
  [[nodiscard]] std::string Text() const { return "{" + members_ + "}\n"; }

 private:
  void AddRaw(std::string_view name, std::string_view value);

  std::string members_;
};

}  // namespace cli
