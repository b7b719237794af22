// What becomes of an older file where a new one is to be: --no-clobber, --backup and, with them, --dry-run.
#pragma once

#include <string>
#include <string_view>

#include "arguments/Arguments.h"

namespace cli {

class Overwriting {
 public:
  /// Adds the options to a command. The object must stay where it is until the arguments are parsed.
  void Declare(Arguments& command);
  /// The same of a command that changes a file there is: --backup alone.
  void DeclareBackup(Arguments& command);

  /// Says what would be done, or leaves the old file, or keeps a copy of it under another name, as was asked.
  /// @param in what the file is made of @return whether it is to be written @throws FileError
  [[nodiscard]] bool Prepare(std::string_view in, const std::string& out) const;
  /// Keeps a copy where one was asked for and there is something to keep. @throws FileError
  void KeepOld(const std::string& file) const;

 private:
  bool noClobber_ = false;
  bool dryRun_ = false;
  std::string suffix_;
};

}  // namespace cli
