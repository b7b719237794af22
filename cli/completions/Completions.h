// What a shell offers while somebody types a vxbmp command. Read off what the commands declare, so that it
// cannot lag behind them.
//
// The values of an option or argument are read from what it offers or, where that is empty, from what the
// help calls its value: words and FILE, with | between them, such as auto|fixed|FILE. FILE, IMAGE, IN and OUT
// stand for names of files; other words in capitals stand for values that cannot be listed.
#pragma once

#include <string>
#include <vector>

#include "arguments/Arguments.h"

namespace cli {

struct Value {
  std::string name;  ///< as the help calls it; "" where none is taken
  std::vector<std::string> words;
  bool isFile = false;
};

struct OfferedOption {
  std::vector<std::string> names;  ///< with their dashes
  std::string summary;
  Value value;
};

struct OfferedArgument {
  Value value;
  bool isMany;
};

struct OfferedCommand {
  std::string name;
  std::string summary;
};

/// A command, or a command within one: everything that can stand behind the words of `path`.
struct Place {
  std::string path;  ///< "" for vxbmp itself, "pages add"
  std::vector<OfferedCommand> commands;
  std::vector<OfferedOption> options;
  std::vector<OfferedArgument> arguments;
};

/// @return all places, vxbmp itself first. @param top vxbmp's own arguments
std::vector<Place> PlacesOf(const Arguments& top);

std::string BashScript(const std::vector<Place>& places);
std::string ZshScript(const std::vector<Place>& places);
std::string FishScript(const std::vector<Place>& places);

}  // namespace cli
