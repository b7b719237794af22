// Files on their way in: what a name on the command line stands for, opened.
#pragma once

#include <cstddef>
#include <string>
#include <vx/image.hpp>

#include "Bytes.h"

namespace cli {

/// @return the name of an input for messages: "standard input" for "-".
std::string InputName(const char* path);

/// @return the bytes of a file, a pipe, or standard input for "-", but at most the first `most`.
/// @throws FileError when it cannot be read.
Bytes ReadUpTo(const char* path, size_t most);

/// What a file is taken for.
enum class Content { Picture, Headerless };

/// An opened image file. What cannot be read twice, a pipe or standard input, is taken into memory: up to
/// the memory limit, and not to its end where its first bytes are those of no picture.
class Input {
 public:
  /// @throws vx::Error, FileError
  explicit Input(const char* path, Content content = Content::Picture);

  vx::Source& Source() { return source_; }

 private:
  Bytes bytes_;  // the source's, where it is one of memory
  vx::Source source_;
};

}  // namespace cli
