// The one file that knows the library for JSON. Writes ASCII only, so that the lines pass through whatever
// stands between here and their reader.
#include "words/Json.h"

#include <fmt/format.h>
#include <vx/vx.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "words/Text.h"

namespace cli {
namespace {

/// What comes from outside goes through Utf8, for the library would refuse it otherwise.
std::string Quoted(std::string_view bytes) {
  return nlohmann::json(Utf8(bytes)).dump(-1, ' ', true);
}

}  // namespace

void JsonLine::Add(std::string_view name, std::string_view text) {
  AddRaw(name, Quoted(text));
}

void JsonLine::Add(std::string_view name, std::pair<int, int> point) {
  AddRaw(name, fmt::format("[{},{}]", point.first, point.second));
}

void JsonLine::AddNumbers(std::string_view name, std::span<const uint32_t> numbers) {
  AddRaw(name, fmt::format("[{}]", fmt::join(numbers, ",")));
}

void JsonLine::Add(std::string_view name, const std::vector<std::string>& texts) {
  std::vector<std::string> quoted(texts.size());
  std::transform(texts.begin(), texts.end(), quoted.begin(), Quoted);
  AddRaw(name, fmt::format("[{}]", fmt::join(quoted, ",")));
}

void JsonLine::Add(std::string_view name, const std::vector<JsonLine>& objects) {
  std::vector<std::string> members(objects.size());
  std::transform(objects.begin(), objects.end(), members.begin(),
                 [](const JsonLine& each) { return each.members_; });
  AddRaw(name, fmt::format("[{}{}{}]", members.empty() ? "" : "{", fmt::join(members, "},{"),
                           members.empty() ? "" : "}"));
}

void JsonLine::AddReal(std::string_view name, double number) {
  AddRaw(name, fmt::format("{:.6g}", number));
}

void JsonLine::AddFile(std::string_view file, std::string_view name) {
  Add(name, file);
  if (Utf8(file) != file) Add(fmt::format("{}_bytes", name), Hexadecimal(file));
}

void JsonLine::AddFailure(int status, std::string_view message) {
  Add("error", vx_status_name(status));
  Add("status", status);
  Add("message", message);
}

void JsonLine::AddRaw(std::string_view name, std::string_view value) {
  members_ += fmt::format("{}\"{}\":{}", members_.empty() ? "" : ",", name, value);
}

}  // namespace cli
