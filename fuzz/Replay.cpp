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

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, std::size_t size);

namespace {

using Bytes = std::vector<uint8_t>;

constexpr int kRunsAFile = 40;
constexpr int kSeedsAFile = 4;

/// The file behind the ordinary choices at first, then behind others.
Bytes BehindChoices(int run, const Bytes& file, std::mt19937& random) {
  Bytes bytes(fuzz::kChoices + file.size());
  const auto choices = bytes.begin() + fuzz::kChoices;
  if (run > 0) std::generate(bytes.begin(), choices, [&] { return static_cast<uint8_t>(random()); });
  std::copy(file.begin(), file.end(), choices);
  return bytes;
}

/// Runs a file behind many choices; keeps inputs that went all the way, or else the ordinary one, where there
/// is a folder for seeds. @return how many went all the way, at most as many as are kept.
int Run(const std::filesystem::path& path, const std::filesystem::path& seeds, std::mt19937& random) {
  std::ifstream stream(path, std::ios::binary);
  const Bytes file{std::istreambuf_iterator<char>(stream), {}};
  const auto keep = [&](const Bytes& bytes, const std::string& prefix) {
    if (seeds.empty()) return;
    std::ofstream seed(seeds / (prefix + path.filename().string()), std::ios::binary);
    seed.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  };
  int whole = 0;
  for (int run = 0; run < kRunsAFile; ++run) {
    const Bytes bytes = BehindChoices(run, file, random);
    (void)LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    if (fuzz::wentAllTheWay && whole < kSeedsAFile) keep(bytes, "whole-" + std::to_string(whole++) + "-");
  }
  if (whole == 0) keep(BehindChoices(0, file, random), "refused-");
  return whole;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 && argc != 3) {
    std::fputs("usage: replay FOLDER [FOLDER-FOR-SEEDS]\n", stderr);
    return 2;
  }
  const std::filesystem::path folder = argc == 3 ? argv[2] : "";
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[1])) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());  // so that every run makes the same choices
  std::mt19937 random(1);
  int seeds = 0;
  const std::ptrdiff_t whole = std::count_if(files.begin(), files.end(), [&](const auto& file) {
    const int kept = Run(file, folder, random);
    seeds += kept;
    return kept > 0;
  });
  std::printf("%zu files, %td of them all the way, %d seeds of those\n", files.size(), whole, seeds);
  return 0;
}
