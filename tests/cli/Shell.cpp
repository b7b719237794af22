// Commands, their streams and their folder.
#include "Shell.h"

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

fs::path MakeFolder() {
  std::string name = (fs::temp_directory_path() / "vxbmp-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make a folder for the test");
  return name;
}

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

}  // namespace

std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

Shell::Shell() : folder_(MakeFolder()), streams_(MakeFolder()) {}

Shell::~Shell() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
  fs::remove_all(streams_, ignored);
}

Outcome Shell::Run(const std::string& command) const {
  const std::string programs = "vxbmp() { " + Quoted(VXBMP_PROGRAM) + " \"$@\"; }\n" + "vxdemo() { " +
                               Quoted(VXDEMO_PROGRAM) + " \"$@\"; }\n";
  const std::string script = programs + "cd " + Quoted(folder_.string()) + "\n" + command + "\n";
  std::ofstream(streams_ / "script") << script;
  const std::string line = "sh " + Quoted((streams_ / "script").string()) + " >" +
                           Quoted((streams_ / "out").string()) + " 2>" + Quoted((streams_ / "err").string());
  const int status = std::system(line.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(streams_ / "out"),
          ReadFile(streams_ / "err")};
}

void Shell::Write(const std::string& name, const std::vector<uint8_t>& bytes) const {
  Write(name, std::string(bytes.begin(), bytes.end()));
}

void Shell::Write(const std::string& name, const std::string& text) const {
  std::ofstream(folder_ / name, std::ios::binary) << text;
}

std::string Shell::Read(const std::string& name) const {
  return ReadFile(folder_ / name);
}

std::vector<std::string> Shell::Names() const {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder_)) names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}
