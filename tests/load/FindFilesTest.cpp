// Files inside others: all that lie in one are found, with their exact lengths, and nothing else is.
#include <gtest/gtest.h>
#include <vx/inspect.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "Loading.h"

namespace {

using Bytes = std::vector<uint8_t>;

/// What follows and what is looked through between files: none of it begins one.
void AppendNoise(Bytes* disk, size_t count) {
  static constexpr char kLure[] = "BM\x10\0\0\0BA\0\0\1\0\1\0 RIFF\4\0\0\0ACON CI IC PT\0\0\2\0\3\0\x89PNG";
  for (size_t i = 0; i < count; ++i) disk->push_back(static_cast<uint8_t>(kLure[i % (sizeof kLure - 1)]));
}

vx::Source Open(const Bytes& bytes) {
  return vx::Source::Memory(bytes, "disk");
}

std::map<uint64_t, vx_found_file> FindAll(const vx::Source& source, size_t size, uint64_t step) {
  std::map<uint64_t, vx_found_file> all;
  for (uint64_t at = 0; at < size;) {
    vx_found_file found{};
    EXPECT_EQ(vx_find_file(source.Get(), at, at + step, &found), VX_OK);
    at = found.length > 0 ? found.offset + found.length : at + step;
    if (found.length > 0) all[found.offset] = found;
  }
  return all;
}

TEST(FindFiles, AreFoundWhereverTheyLieWithTheirLengths) {
  constexpr const char* kNames[] = {"win-1bit.bmp",         "os2-24bit.bmp",      "win-rle8.bmp",
                                    "win-rle4-runs-on.bmp", "win-v5-profile.bmp", "cursor-sizes.cur",
                                    "icon-4bit.ico",        "cursor-png.cur",     "animated.ani"};
  Bytes disk;
  std::map<uint64_t, std::string> names;
  for (const char* name : kNames) {
    AppendNoise(&disk, 4000 + 97 * names.size());  // past what is kept of a file's beginning
    names[disk.size()] = name;
    const auto sample = loading::SampleNamed(name);
    disk.insert(disk.end(), sample.bytes.begin(), sample.bytes.end());
  }
  AppendNoise(&disk, 300'000);  // past what is searched at once
  const vx::Source source = Open(disk);
  for (const uint64_t step : {uint64_t{1} << 40, uint64_t{777}}) {
    const auto found = FindAll(source, disk.size(), step);
    ASSERT_EQ(found.size(), names.size());
    for (const auto& [offset, file] : found) {
      ASSERT_TRUE(names.contains(offset)) << offset;
      EXPECT_EQ(file.length, loading::SampleNamed(names[offset]).bytes.size()) << names[offset];
      EXPECT_EQ(file.present, file.length) << names[offset];
    }
  }
}

TEST(FindFiles, WhatIsCutOffIsAFileOnlyWhereItsHeadersAgree) {
  const auto bitmap = loading::SampleNamed("win-24bit.bmp").bytes;
  const auto icon = loading::SampleNamed("icon-4bit.ico").bytes;
  vx_found_file found{};
  const Bytes cut(bitmap.begin(), bitmap.end() - 100);
  ASSERT_EQ(vx_extent(Open(cut).Get(), 0, &found), VX_OK);
  EXPECT_EQ(found.length, bitmap.size());
  EXPECT_EQ(found.present, cut.size());
  Bytes lying = cut;
  lying[2] ^= 1;  // the length that the file header says
  EXPECT_EQ(vx_extent(Open(lying).Get(), 0, &found), VX_BAD_FORMAT);
  EXPECT_EQ(found.length, 0U);
  EXPECT_EQ(vx_extent(Open(Bytes(icon.begin(), icon.end() - 1)).Get(), 0, &found), VX_BAD_FORMAT);
}

}  // namespace
