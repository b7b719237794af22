// --palette, which means two things: a word for the colours of OUT, a file with those of IN.
#pragma once

#include <vx/vx.h>

#include <string>
#include <vector>

#include "arguments/Arguments.h"

namespace cli {

class PaletteArgument {
 public:
  /// Adds the option to a command. The object must stay where it is until the arguments are parsed.
  void Declare(Arguments& command);

  /// @return the file named; "" where none is. @throws UsageError where two files are named
  [[nodiscard]] std::string File() const;
  /// @throws UsageError where both words are given
  [[nodiscard]] vx_palette ForOutput() const;

 private:
  std::vector<std::string> given_;
};

}  // namespace cli
