// Saves over a file that is there, in a folder of its own. Holds no expectations but that of a failed save.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <array>

#include "../common/Failures.h"
#include "Sources.h"
#include "SystemCalls.h"

namespace saving {

inline mode_t ModeOf(const std::string& path) {
  struct stat status = {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777;
}

inline constexpr const char* kAccess = "system.posix_acl_access";
inline constexpr const char* kDefault = "system.posix_acl_default";

/// An access control list as the system has it: rights of the owner, user 1234, the group, the mask, others.
inline std::string List(std::array<int, 5> rights) {
  constexpr int kTags[] = {1, 2, 4, 16, 32};
  std::string list("\2\0\0\0", 4);
  for (size_t i = 0; i < rights.size(); ++i) {
    const uint32_t who = i == 1 ? 1234 : UINT32_MAX;
    for (const int word :
         {kTags[i], rights[i], static_cast<int>(who & 0xFFFF), static_cast<int>(who >> 16)}) {
      list += static_cast<char>(word & 0xFF);
      list += static_cast<char>(word >> 8);
    }
  }
  return list;
}

inline std::string Attribute(const std::string& path, const char* name) {
  char value[200];
  const ssize_t size = getxattr(path.c_str(), name, value, sizeof value);
  return size < 0 ? std::string("none") : std::string(value, static_cast<size_t>(size));
}

inline bool SetAttribute(const std::string& path, const char* name, const std::string& value) {
  return setxattr(path.c_str(), name, value.data(), value.size(), 0) == 0;
}

/// The parameter tells whether files need a name from the start.
class Replacing : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    system_calls::needsName = GetParam();
    WriteFile(old_, "old");
  }
  void TearDown() override {
    system_calls::Restore();
    vx_redirect_files(nullptr, nullptr);
  }

  void SaveTo(const std::string& path) const {
    vx::Check(vx_save_file(picture_.Get(), path.c_str(), nullptr));
  }
  /// Expects a save to fail and to leave the folder and the old file as they were.
  void ExpectUntouched(const std::string& path, int status, const std::string& word) const {
    const std::vector<std::string> names = folder_.Names();
    ExpectFailure(status, word, [&] { SaveTo(path); });
    EXPECT_EQ(ReadFile(old_), "old");
    EXPECT_EQ(folder_.Names(), names);
  }

  Folder folder_;
  std::string old_ = folder_ / "old.bmp";
  vx::Bitmap picture_ = Noise(100, 100, 24);
  std::string saved_ = [this] {
    const vx::Buffer file = picture_.Save(vx::SaveOptions());
    return std::string(file.Bytes().begin(), file.Bytes().end());
  }();
};

}  // namespace saving
