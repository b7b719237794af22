// A new file out of bytes: whole or not at all, and never in the place of another.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace cli {

/// Makes a folder with all that it lies in, where they are not there. @throws FileError
void MakeFolder(const std::string& folder);

class NewFile {
 public:
  /// Makes a file without a name, in the folder that `path` names. @throws FileError
  explicit NewFile(const std::string& path);
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  /// @throws FileError
  void Write(std::span<const uint8_t> bytes);
  /// Gives it its name. @return false where there is a file of that name, which stays @throws FileError
  [[nodiscard]] bool Finish();

 private:
  std::string path_;
  std::string temporary_;  // "" while it has no name
  int descriptor_;
};

}  // namespace cli
