// vxsamples: writes all samples into a folder, with their palettes and a list of what they are.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "samples/Samples.h"

namespace {

constexpr const char* kUsage =
    "usage: vxsamples FOLDER [PICTURES]\n"
    "\n"
    "Writes the sample bitmaps, icons and cursors into FOLDER (made when missing), and samples.tsv, which\n"
    "lists them: file name, what it is, what a reader is expected to make of it, and for headerless data "
    "the\n"
    "arguments that describe it to vxbmp convert.\n"
    "Into PICTURES go the pixels that the first pages of those that load must have: under the names of the\n"
    "samples, 4 bytes a pixel, red, green, blue and alpha, top row first.\n";

void WriteFile(const std::filesystem::path& path, const std::vector<uint8_t>& bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  std::copy(bytes.begin(), bytes.end(), std::ostreambuf_iterator<char>(file));
  if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
}

void WritePictures(const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  for (const samples::Sample& sample : samples::All()) {
    if (!sample.rgba.empty()) WriteFile(folder / sample.name, sample.rgba);
  }
}

void WriteAll(const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  std::string list;
  for (const samples::Sample& sample : samples::All()) {
    WriteFile(folder / sample.name, sample.bytes);
    if (!sample.palette.empty()) WriteFile(folder / samples::PaletteFileName(sample), sample.palette);
    list += sample.name + '\t' + sample.title + '\t' + samples::OutcomeName(sample.outcome) + '\t' +
            sample.raw + '\n';
  }
  WriteFile(folder / "samples.tsv", {list.begin(), list.end()});
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3 || argv[1][0] == '-') {
    std::fputs(kUsage, argc == 2 && std::string(argv[1]) == "--help" ? stdout : stderr);
    return argc == 2 && std::string(argv[1]) == "--help" ? 0 : 2;
  }
  try {
    WriteAll(argv[1]);
    if (argc == 3) WritePictures(argv[2]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vxsamples: %s\n", error.what());
    return 1;
  }
  return 0;
}
