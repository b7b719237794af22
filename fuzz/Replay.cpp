// Runs a fuzzer over files without a fuzzing engine: as they are, and behind a few choices each.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

#include "Input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace {

constexpr int kRunsAFile = 40;

void RunBehindChoices(const std::vector<char>& file, std::mt19937& random) {
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i < fuzz::kChoices; ++i) bytes.push_back(static_cast<std::uint8_t>(random()));
  bytes.insert(bytes.end(), file.begin(), file.end());
  (void)LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

int Run(const std::filesystem::path& folder) {
  std::mt19937 random(1);
  int count = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    std::ifstream stream(entry.path(), std::ios::binary);
    const std::vector<char> file{std::istreambuf_iterator<char>(stream), {}};
    (void)LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(file.data()), file.size());
    for (int i = 0; i < kRunsAFile; ++i) RunBehindChoices(file, random);
    ++count;
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: replay FOLDER\n", stderr);
    return 2;
  }
  std::printf("%d files\n", Run(argv[1]));
  return 0;
}
