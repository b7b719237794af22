// Runs a fuzzer over files without a fuzzing engine: behind the ordinary choices, and behind some that are
// made up. Makes seeds of those that go all the way, which tell an engine more than refusals do.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "Input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int kRunsAFile = 40;
constexpr int kSeedsAFile = 4;

struct Counts {
  int files = 0;
  int whole = 0;  ///< files that went all the way behind some choices
  int seeds = 0;
};

/// The file behind the ordinary choices at first, then behind others.
Bytes BehindChoices(int run, const Bytes& file, std::mt19937& random) {
  Bytes bytes(fuzz::kChoices + file.size());
  const auto choices = bytes.begin() + fuzz::kChoices;
  if (run > 0) std::generate(bytes.begin(), choices, [&] { return static_cast<std::uint8_t>(random()); });
  std::copy(file.begin(), file.end(), choices);
  return bytes;
}

/// Keeps an input where there is a folder for seeds: one that went all the way, or a file's only one.
void Keep(const Bytes& bytes, const std::filesystem::path& seeds, const std::string& name) {
  std::ofstream stream(seeds / name, std::ios::binary);
  stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void Run(const std::filesystem::path& path, const std::filesystem::path& seeds, std::mt19937& random,
         Counts& counts) {
  std::ifstream stream(path, std::ios::binary);
  const Bytes file{std::istreambuf_iterator<char>(stream), {}};
  int kept = 0;
  for (int run = 0; run < kRunsAFile; ++run) {
    const Bytes bytes = BehindChoices(run, file, random);
    (void)LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    if (!fuzz::wentAllTheWay || kept == kSeedsAFile) continue;
    if (!seeds.empty()) Keep(bytes, seeds, "whole-" + std::to_string(kept) + "-" + path.filename().string());
    ++kept;
  }
  if (kept == 0 && !seeds.empty()) {
    Keep(BehindChoices(0, file, random), seeds, "refused-" + path.filename().string());
  }
  ++counts.files;
  counts.whole += kept > 0 ? 1 : 0;
  counts.seeds += kept;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 && argc != 3) {
    std::fputs("usage: replay FOLDER [FOLDER-FOR-SEEDS]\n", stderr);
    return 2;
  }
  const std::filesystem::path seeds = argc == 3 ? argv[2] : "";
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[1])) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());  // so that every run makes the same choices
  std::mt19937 random(1);
  Counts counts;
  for (const auto& file : files) Run(file, seeds, random, counts);
  std::printf("%d files, %d of them all the way, %d seeds of those\n", counts.files, counts.whole,
              counts.seeds);
  return 0;
}
