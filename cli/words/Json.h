// What the --json of every command has in common: objects on a line each, and how names and failures are
// told.
#pragma once

#include <concepts>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cli {

/// A JSON object. Its members stand in the order in which they are added.
class JsonLine {
 public:
  /// @param text any bytes; those that are not UTF-8 are told as \xNN
  void Add(std::string_view name, std::string_view text);
  /// Adds a whole number, or true or false.
  void Add(std::string_view name, std::integral auto value) {
    if constexpr (std::same_as<decltype(value), bool>) {
      AddRaw(name, value ? "true" : "false");
    } else {
      AddRaw(name, std::to_string(value));
    }
  }
  void AddReal(std::string_view name, double number);
  /// Adds an array of the two numbers.
  void Add(std::string_view name, std::pair<int, int> point);
  /// Adds an array of numbers.
  void AddNumbers(std::string_view name, std::span<const uint32_t> numbers);
  /// Adds an array of texts.
  void Add(std::string_view name, const std::vector<std::string>& texts);
  /// Adds an array of objects.
  void Add(std::string_view name, const std::vector<JsonLine>& objects);

  /// Names the file that the line is about. JSON cannot hold a name that is not UTF-8: "file" is then for
  /// people, with \xNN for every byte that is not UTF-8, and "file_bytes" has all bytes, two hexadecimal
  /// digits each. Further files that it names are told in the same way. @param name in the place of "file"
  void AddFile(std::string_view file, std::string_view name = "file");
  /// Adds "error", "status" and "message".
  void AddFailure(int status, std::string_view message);

  /// @return the object and the end of the line, in ASCII.
  [[nodiscard]] std::string Text() const { return "{" + members_ + "}\n"; }

 private:
  void AddRaw(std::string_view name, std::string_view value);

  std::string members_;
};

}  // namespace cli
