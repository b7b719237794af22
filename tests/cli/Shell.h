// Runs shell commands in a folder of their own, the way people use vxbmp. Holds no expectations itself.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

struct Outcome {
  int code = -1;  // exit code; -1 when a signal ended it
  std::string out;
  std::string err;
};

/// A fresh folder, gone again at the end.
class Shell {
 public:
  Shell();
  ~Shell();
  Shell(const Shell&) = delete;
  Shell& operator=(const Shell&) = delete;

  /// Runs `command` with sh in the folder; vxbmp and vxdemo stand for the programs under test.
  Outcome Run(const std::string& command) const;

  void Write(const std::string& name, const std::vector<uint8_t>& bytes) const;
  void Write(const std::string& name, const std::string& text) const;
  std::string Read(const std::string& name) const;
  /// Names of all files, hidden ones too, in order.
  std::vector<std::string> Names() const;
  std::filesystem::path Path(const std::string& name) const { return folder_ / name; }

 private:
  std::filesystem::path folder_;   // the commands' own
  std::filesystem::path streams_;  // where their output is caught
};

/// @return `text` as one word for sh.
std::string Quoted(const std::string& text);
