#include "finding/OutputCheck.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "failures/Errors.h"
#include "streams/Output.h"
#include "words/Text.h"

namespace cli {
namespace {

/// An output by the hash of its name: all names at once would take much room.
struct Output {
  uint64_t hash;
  uint32_t file;
};

bool AreOneFile(const std::string& path, const std::string& other) {
  return std::filesystem::path(path).lexically_normal() == std::filesystem::path(other).lexically_normal() ||
         AreSameFile(path, other);
}

std::vector<Output> Outputs(const FileList& files, const OutputNames& names, const FileIds& inputs,
                            const std::string& folder) {
  std::vector<Output> outputs;
  outputs.reserve(files.Size());
  for (size_t file = 0; file < files.Size(); ++file) {
    outputs.push_back({HashOf(names.For(files, file)), static_cast<uint32_t>(file)});
    const std::string path = Within(folder, names.For(files, file, 1));
    if (!IsAmong(inputs, path)) continue;
    throw UsageError(fmt::format("{} is one of the files to read; what becomes of {} would take its place",
                                 Printable(path), Printable(files.PathOf(file))));
  }
  std::sort(outputs.begin(), outputs.end(), [](const Output& one, const Output& other) {
    return one.hash != other.hash ? one.hash < other.hash : one.file < other.file;
  });
  return outputs;
}

/// Two files whose outputs have one name, unless they are one file.
void RefuseTwo(const FileList& files, const std::string& name, size_t one, size_t other) {
  throw UsageError(
      fmt::format("{} and {} would both become {}; --name with {{dir}}, {{path}} or {{file}} keeps "
                  "them apart",
                  Printable(files.PathOf(one)), Printable(files.PathOf(other)), Printable(name)));
}

}  // namespace

bool IsAmong(const FileIds& ids, const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && ids.Has(status);
}

void CheckOutputs(FileFinder& found, const OutputNames& names, const std::string& folder) {
  FileList& files = found.Files();
  found.Ids().Sort();
  const std::vector<Output> outputs = Outputs(files, names, found.Ids(), folder);
  std::vector<bool> isDropped(files.Size());
  for (size_t i = 0; i + 1 < outputs.size(); ++i) {
    // Of several with one hash each is compared with all that follow, which are few.
    for (size_t j = i + 1; j < outputs.size() && outputs[j].hash == outputs[i].hash; ++j) {
      const size_t one = outputs[i].file;
      const size_t other = outputs[j].file;
      const std::string name = names.For(files, one);
      if (isDropped[other] || name != names.For(files, other)) continue;
      if (!AreOneFile(files.PathOf(one), files.PathOf(other))) RefuseTwo(files, name, one, other);
      isDropped[other] = true;
    }
  }
  files.Drop(isDropped);
}

}  // namespace cli
