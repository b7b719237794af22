#include "finding/NameList.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <string_view>

#include "failures/Errors.h"
#include "streams/Input.h"
#include "streams/Output.h"

namespace cli {
namespace {

constexpr size_t kChunk = 65536;  // longer than any name, so that the first chunk has the end of one

struct Close {
  void operator()(FILE* file) const {
    if (file != stdin) (void)std::fclose(file);  // was only read
  }
};

using File = std::unique_ptr<FILE, Close>;

File Open(const std::string& name) {
  File file(name == kStandardStream ? stdin : std::fopen(name.c_str(), "rbe"));
  if (file == nullptr) throw FileError::FromErrno(VX_OPEN_ERROR, name, "cannot open");
  return file;
}

}  // namespace

void ReadNames(const std::string& file, const std::function<void(const std::string&)>& take) {
  const File list = Open(file);
  std::array<char, kChunk> chunk{};
  std::string name;
  char end = '\0';
  bool isFirst = true;
  while (const size_t size = std::fread(chunk.data(), 1, chunk.size(), list.get())) {
    std::string_view rest(chunk.data(), size);
    if (isFirst) end = rest.find('\0') == std::string_view::npos ? '\n' : '\0';
    isFirst = false;
    for (size_t at = 0; (at = rest.find(end)) != std::string_view::npos; rest.remove_prefix(at + 1)) {
      name.append(rest.substr(0, at));
      if (!name.empty()) take(name);
      name.clear();
    }
    name.append(rest);
  }
  if (std::ferror(list.get()) != 0) {
    throw FileError::FromErrno(VX_READ_ERROR, InputName(file.c_str()), "cannot read");
  }
  if (!name.empty()) take(name);
}

}  // namespace cli
