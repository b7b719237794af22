// Every text that comes from outside goes through Utf8, for the library would refuse it otherwise.
#include "Json.h"

#include <vx/vx.h>

#include "Text.h"

namespace cli {

void AddFile(Json& line, std::string_view file) {
  const std::string text = Utf8(file);
  line["file"] = text;
  if (text != file) line["file_bytes"] = Hexadecimal(file);
}

void AddFailure(Json& line, int status, std::string_view message) {
  line["error"] = vx_status_name(status);
  line["status"] = status;
  line["message"] = Utf8(message);
}

std::string LineOf(const Json& line) {
  return line.dump(-1, ' ', true) + "\n";
}

}  // namespace cli
