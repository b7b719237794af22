// What becomes of files: replaced whole or left as they were, whatever fails on the way.
#include "Replacing.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <thread>

#include "../common/MemoryFile.h"

namespace saving {
namespace {

namespace fs = std::filesystem;

TEST_P(Replacing, KeepsModeAndLinksAndLeavesNothingBeside) {
  WriteFile(old_, std::string(100000, 'x'));
  ASSERT_EQ(chmod(old_.c_str(), 0640), 0);
  fs::create_hard_link(old_, folder_ / "hard.bmp");
  fs::create_symlink("old.bmp", folder_ / "soft.bmp");
  fs::create_symlink("new.bmp", folder_ / "dangling.bmp");
  fs::create_symlink(folder_ / "soft.bmp", folder_ / "absolute.bmp");
  SaveTo(folder_ / "absolute.bmp");
  SaveTo(folder_ / "dangling.bmp");

  EXPECT_TRUE(ReadFile(old_) == saved_) << "no byte of the longer old file is left";
  EXPECT_TRUE(ReadFile(folder_ / "new.bmp") == saved_);
  EXPECT_EQ(ReadFile(folder_ / "hard.bmp").size(), 100000U);
  EXPECT_TRUE(fs::is_symlink(folder_ / "soft.bmp"));
  EXPECT_EQ(ModeOf(old_), 0640U);
  const std::vector<std::string> names = {"absolute.bmp", "dangling.bmp", "hard.bmp",
                                          "new.bmp",      "old.bmp",      "soft.bmp"};
  EXPECT_EQ(folder_.Names(), names);
}

TEST_P(Replacing, InPlaceLeavesTheTailOfALongerFile) {
  WriteFile(old_, std::string(100000, 'x'));
  vx::SaveOptions options;
  options.in_place = 1;
  picture_.Save(old_, options);
  EXPECT_TRUE(ReadFile(old_) == saved_ + std::string(100000 - saved_.size(), 'x'));
}

TEST_P(Replacing, FailsWithTheOldFileUntouched) {
  ExpectUntouched(folder_ / "gone/new.bmp", VX_OPEN_WRITE_ERROR, "No such file");
  ExpectUntouched(old_ + "/new.bmp", VX_OPEN_WRITE_ERROR, "Not a directory");
  ExpectUntouched(folder_ / ".", VX_OPEN_WRITE_ERROR, "");
  const std::pair<const char*, int> failures[] = {
      {"fsync", EIO}, {"pwrite", ENOSPC}, {"fchmod", EIO}, {"renameat", ENOSPC}, {"linkat", ENOSPC}};
  for (const auto& [call, error] : failures) {
    if (GetParam() && call == std::string("linkat")) continue;  // it has a name already
    system_calls::Fail(call, error);
    ExpectUntouched(old_, VX_WRITE_ERROR, std::strerror(error));
  }
  system_calls::before = nullptr;
  ASSERT_EQ(chmod(old_.c_str(), 0444), 0);
  AsOrdinaryUser(folder_, [&] { ExpectUntouched(old_, VX_OPEN_WRITE_ERROR, "Permission denied"); });
  ASSERT_EQ(chmod(old_.c_str(), 0644), 0);
  if (GetParam()) return;  // what has a name stays when the process is killed
  system_calls::before = [](const std::string& call, int) { return call == "fsync" ? raise(SIGKILL) : 0; };
  EXPECT_EXIT(SaveTo(old_), testing::KilledBySignal(SIGKILL), "");
  EXPECT_EQ(ReadFile(old_), "old");
  EXPECT_EQ(folder_.Names(), std::vector<std::string>{"old.bmp"});
}

TEST_P(Replacing, NewFilesHaveTheModeThatFilesHave) {
  const mode_t mask = umask(027);
  SaveTo(folder_ / "new.bmp");
  umask(mask);
  EXPECT_EQ(ModeOf(folder_ / "new.bmp"), 0640U);
}

TEST_P(Replacing, WritesToDevicesAndPipes) {
  SaveTo("/dev/null");
  ExpectUntouched("/dev/full", VX_WRITE_ERROR, "No space");
  const std::string path = folder_ / "pipe";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  std::string read;
  std::thread reader([&] { read = ReadFile(path); });
  SaveTo(path);
  reader.join();
  EXPECT_TRUE(read == saved_);
}

TEST_P(Replacing, ComesThroughEveryLackOfMemory) {
  const vx::Bitmap icon = WithAlpha(40, 40, [](int x, int y) -> Pixel {
    return {static_cast<uint8_t>(x), static_cast<uint8_t>(y), 0, static_cast<uint8_t>(6 * x)};
  });
  for (const auto& [format, depth] : {std::pair(VX_FORMAT_ICO, 8),
                                      {VX_FORMAT_VISTA_ICO, 8},
                                      {VX_FORMAT_PNG, 8},
                                      {VX_FORMAT_BMP_RLE, 8},
                                      {VX_FORMAT_BMP, 32},
                                      {VX_FORMAT_ICO, 32}}) {
    WriteFile(old_, "old");
    const vx::SaveOptions options(format, depth);
    EXPECT_GT(
        FailuresForWantOfMemory([&] { icon.Save(old_, options); }, [&] { ASSERT_EQ(ReadFile(old_), "old"); }),
        2);
  }
}

TEST_P(Replacing, NoFailureOfAnApplicationsFilesPassesForSuccess) {
  for (int calls = 0;; ++calls) {
    MemoryFile file;
    file.callsUntilFailure = calls;
    ASSERT_EQ(vx_redirect_files(&MemoryFile::kFunctions, &file), VX_OK);
    const int status = StatusOf([&] { SaveTo("anything"); });
    if (status == VX_OK) {
      EXPECT_TRUE(std::string(file.bytes.begin(), file.bytes.end()) == saved_);
      EXPECT_GT(calls, 2);
      return;
    }
    ASSERT_EQ(status, calls == 0 ? VX_OPEN_WRITE_ERROR : VX_WRITE_ERROR) << calls;
    ASSERT_STRNE(vx_error_detail(), "");
  }
}

INSTANTIATE_TEST_SUITE_P(Files, Replacing, testing::Bool(), [](const auto& each) {
  return each.param ? std::string("Named") : std::string("Nameless");
});

}  // namespace
}  // namespace saving
