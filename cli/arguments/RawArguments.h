// The arguments that describe headerless pixel data, and the description made of them.
#pragma once

#include <vx/vx.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "arguments/PaletteArgument.h"

namespace cli {

/// A description of headerless data that owns its palette.
class RawDescription {
 public:
  const vx_raw& Get() const { return raw_; }

 private:
  friend class RawArguments;
  vx_raw raw_{};
  std::vector<uint8_t> palette_;
};

class RawArguments {
 public:
  /// Adds the options to a command. The object must stay where it is until the arguments are parsed.
  void Declare(Arguments& command);

  /// @return null when --raw was not given.
  /// @throws UsageError where the values make no sense, FileError where the palette cannot be read.
  std::unique_ptr<RawDescription> Describe() const;

  /// --palette. The file that it may name is read here; its words are about OUT.
  [[nodiscard]] const PaletteArgument& Palette() const { return palette_; }

 private:
  std::string shape_;
  std::string offset_;
  PaletteArgument palette_;
  std::string masks_;
  bool topDown_ = false;
};

}  // namespace cli
