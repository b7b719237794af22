// Files on their way in: what a name on the command line stands for, opened.
#pragma once

#include <cstdint>
#include <string>
#include <vector>
#include <vx/image.hpp>

namespace cli {

/// @return the name of an input for messages: "standard input" for "-".
std::string InputName(const char* path);

/// @return all bytes of a file, a pipe, or standard input for "-".
/// @throws FileError when it cannot be read or holds more than `limit` bytes.
std::vector<uint8_t> ReadWhole(const char* path, uint64_t limit);

/// An opened image file. What cannot be read twice, a pipe or standard input, is taken into memory.
class Input {
 public:
  /// @throws vx::Error, FileError
  explicit Input(const char* path);

  vx::Source& Source() { return source_; }

 private:
  std::vector<uint8_t> bytes_;  // the source's, where it is one of memory
  vx::Source source_;
};

}  // namespace cli
