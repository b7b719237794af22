// What the --json of every command has in common: how names and failures are told.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace cli {

using Json = nlohmann::ordered_json;

/// Tells of which file the line speaks. JSON has no way to hold a name that is not UTF-8: of such a one
/// "file" is for people, with \xNN for what is none, and "file_bytes" has all its bytes, two hexadecimal
/// digits each.
void AddFile(Json& line, std::string_view file);

/// Adds "error", "status" and "message".
void AddFailure(Json& line, int status, std::string_view message);

/// @return the object and the end of the line, in ASCII.
std::string LineOf(const Json& line);

}  // namespace cli
