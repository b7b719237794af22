// Files on their way in: what a name on the command line stands for, opened.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>
#include <vx/image.hpp>

namespace cli {

/// @return the name of an input for messages: "standard input" for "-".
std::string InputName(const char* path);

/// Whether a name stands for what can be read only once: a pipe, a device, a socket, or "-".
bool IsStream(const char* path);

/// @return the bytes of a file, a pipe, or standard input for "-", but at most the first `most`,
/// which should be few. @throws FileError when it cannot be read.
std::vector<uint8_t> ReadUpTo(const char* path, size_t most);

/// What a file is taken for.
enum class Content { Picture, Headerless };

/// An opened image file. A pipe or standard input, which cannot be read twice, is read into the library's
/// memory. Reading stops early where the first bytes are those of no picture.
class Input {
 public:
  /// @throws vx::Error, FileError
  explicit Input(const char* path, Content content = Content::Picture);

  vx::Source& Source() { return source_; }

 private:
  vx::Source source_;
};

}  // namespace cli
