// What becomes of files: replaced whole or left as they were, whatever fails on the way.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <thread>

#include "Sources.h"
#include "SystemCalls.h"

namespace saving {
namespace {

namespace fs = std::filesystem;

/// The parameter tells whether files need a name from the start.
class Replacing : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override { system_calls::needsName = GetParam(); }
  void TearDown() override {
    system_calls::Restore();
    vx_redirect_files(nullptr, nullptr);
    vx_set_memory_limit(0);
  }

  /// Expects a save to fail and to leave the folder and the old file as they were.
  void ExpectUntouched(const std::string& path, int status, const std::string& word) {
    const std::vector<std::string> names = folder_.Names();
    const std::string before = Read(path);
    const uint64_t inUse = vx_memory_in_use();
    EXPECT_EQ(vx_save_file(picture_.Get(), path.c_str(), nullptr), status);
    EXPECT_NE(std::string(vx_error_detail()).find(word), std::string::npos) << vx_error_detail();
    EXPECT_TRUE(Read(path) == before);
    EXPECT_EQ(folder_.Names(), names);
    EXPECT_EQ(vx_memory_in_use(), inUse);
  }

  Folder folder_;
  vx::Bitmap picture_ = Noise(100, 100, 24);
  std::string saved_ = [this] {
    const vx::Buffer file = picture_.Save(vx::SaveOptions());
    return std::string(file.Bytes().begin(), file.Bytes().end());
  }();
};

TEST_P(Replacing, KeepsModeAndLinksAndLeavesNothingBeside) {
  const std::string path = folder_ / "old.bmp";
  Write(path, std::string(100000, 'x'));
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  fs::create_hard_link(path, folder_ / "hard.bmp");
  fs::create_symlink("old.bmp", folder_ / "soft.bmp");
  fs::create_symlink("new.bmp", folder_ / "dangling.bmp");
  fs::create_symlink(folder_ / "soft.bmp", folder_ / "absolute.bmp");
  picture_.Save(folder_ / "absolute.bmp", vx::SaveOptions());
  picture_.Save(folder_ / "dangling.bmp", vx::SaveOptions());

  EXPECT_TRUE(Read(path) == saved_) << "no byte of the longer old file is left";
  EXPECT_TRUE(Read(folder_ / "new.bmp") == saved_);
  EXPECT_EQ(Read(folder_ / "hard.bmp").size(), 100000U);
  EXPECT_TRUE(fs::is_symlink(folder_ / "soft.bmp"));
  struct stat status = {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640U);
  const std::vector<std::string> names = {"absolute.bmp", "dangling.bmp", "hard.bmp",
                                          "new.bmp",      "old.bmp",      "soft.bmp"};
  EXPECT_EQ(folder_.Names(), names);
}

TEST_P(Replacing, InPlaceLeavesTheTailOfALongerFile) {
  const std::string path = folder_ / "old.bmp";
  Write(path, std::string(100000, 'x'));
  vx::SaveOptions options;
  options.in_place = 1;
  picture_.Save(path, options);
  const std::string after = Read(path);
  EXPECT_TRUE(after.starts_with(saved_));
  EXPECT_EQ(after.substr(saved_.size()), std::string(100000 - saved_.size(), 'x'));
}

TEST_P(Replacing, FailsWithTheOldFileUntouched) {
  const std::string path = folder_ / "old.bmp";
  Write(path, "old");
  ExpectUntouched(folder_ / "gone/new.bmp", VX_OPEN_WRITE_ERROR, "No such file");
  ExpectUntouched(path + "/new.bmp", VX_OPEN_WRITE_ERROR, "Not a directory");
  fs::create_directory(folder_ / "folder");
  EXPECT_EQ(vx_save_file(picture_.Get(), (folder_ / "folder").c_str(), nullptr), VX_OPEN_WRITE_ERROR);
  ASSERT_EQ(chmod(path.c_str(), 0444), 0);
  AsOrdinaryUser(folder_, [&] { ExpectUntouched(path, VX_OPEN_WRITE_ERROR, "Permission denied"); });
  // As little room as a full disk has.
  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit = {};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
  for (const rlim_t room : {rlim_t{0}, rlim_t{10}, rlim_t{20000}}) {
    const rlimit little = {room, limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &little), 0);
    ExpectUntouched(path, VX_WRITE_ERROR, "too large");
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  }
  std::signal(SIGXFSZ, before);
}

TEST_P(Replacing, IsInterruptedWithTheOldFileUntouched) {
  const std::string path = folder_ / "old.bmp";
  Write(path, "old");
  const std::pair<const char*, int> failures[] = {
      {"fsync", EIO}, {"pwrite", ENOSPC}, {"fchmod", EIO}, {"renameat", ENOSPC}, {"linkat", ENOSPC}};
  for (const auto& [call, error] : failures) {
    if (GetParam() && call == std::string("linkat")) continue;  // it has a name already
    system_calls::Fail(call, error);
    ExpectUntouched(path, VX_WRITE_ERROR, std::strerror(error));
  }
  if (GetParam()) return;  // what has a name stays when the process is killed
  for (const int signal : {SIGTERM, SIGKILL}) {
    system_calls::before = [signal](const std::string& call, int) {
      return call == "fsync" ? raise(signal) : 0;
    };
    EXPECT_EXIT(picture_.Save(path, vx::SaveOptions()), testing::KilledBySignal(signal), "");
    EXPECT_EQ(Read(path), "old");
    EXPECT_EQ(folder_.Names(), std::vector<std::string>{"old.bmp"});
  }
}

TEST_P(Replacing, NewFilesHaveTheModeThatFilesHave) {
  const mode_t mask = umask(027);
  picture_.Save(folder_ / "new.bmp", vx::SaveOptions());
  umask(mask);
  struct stat status = {};
  ASSERT_EQ(stat((folder_ / "new.bmp").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640U);
}

TEST_P(Replacing, WritesToDevicesAndPipes) {
  EXPECT_EQ(vx_save_file(picture_.Get(), "/dev/null", nullptr), VX_OK);
  EXPECT_EQ(vx_save_file(picture_.Get(), "/dev/full", nullptr), VX_WRITE_ERROR);
  EXPECT_NE(std::string(vx_error_detail()).find("No space"), std::string::npos) << vx_error_detail();
  const std::string path = folder_ / "pipe";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  std::string read;
  std::thread reader([&] { read = Read(path); });
  EXPECT_EQ(vx_save_file(picture_.Get(), path.c_str(), nullptr), VX_OK);
  reader.join();
  EXPECT_TRUE(read == saved_);
}

TEST_P(Replacing, ComesThroughEveryLackOfMemory) {
  const std::string path = folder_ / "old.bmp";
  Write(path, "old");
  const vx::Bitmap icon = WithAlpha(40, 40, [](int x, int y) -> Pixel {
    return {static_cast<uint8_t>(x), static_cast<uint8_t>(y), 0, static_cast<uint8_t>(6 * x)};
  });
  for (const vx_format format : {VX_FORMAT_ICO, VX_FORMAT_VISTA_ICO, VX_FORMAT_PNG, VX_FORMAT_BMP_RLE}) {
    const vx::SaveOptions options(format, 8);
    const uint64_t inUse = vx_memory_in_use();
    int failures = 0;
    int status = VX_NO_MEMORY;
    for (uint64_t room = 1; status == VX_NO_MEMORY; room += room / 16 + 7, ++failures) {
      vx_set_memory_limit(inUse + room);
      status = vx_save_file(icon.Get(), path.c_str(), &options);
      ASSERT_EQ(vx_memory_in_use(), inUse) << "limit of " << room;
      if (status != VX_OK) {
        ASSERT_EQ(Read(path), "old");
      }
    }
    vx_set_memory_limit(0);
    EXPECT_EQ(status, VX_OK) << vx_error_detail();
    EXPECT_GT(failures, 2);
    Write(path, "old");
  }
}

/// A file whose n-th call fails.
struct Faulty {
  Bytes bytes;
  int untilFailure;

  bool Fails() { return untilFailure-- == 0; }
};

vx_file_functions FaultyFunctions() {
  static const auto of = [](void* user) -> Faulty& { return *static_cast<Faulty*>(user); };
  return {.open = [](void* user, const char*, int) { return of(user).Fails() ? nullptr : user; },
          .read_at = [](void*, void*, void*, uint32_t, uint64_t) { return int64_t{0}; },
          .write_at = [](void* user, void*, const void* data, uint32_t count, uint64_t position) -> int64_t {
            Faulty& file = of(user);
            if (file.Fails()) return -1;
            const auto end = static_cast<std::size_t>(position + count);
            if (file.bytes.size() < end) file.bytes.resize(end);
            std::copy_n(static_cast<const uint8_t*>(data), count,
                        file.bytes.begin() + static_cast<std::ptrdiff_t>(position));
            return count;
          },
          .size = [](void* user, void*) { return static_cast<int64_t>(of(user).bytes.size()); },
          .truncate = [](void*, void*, uint64_t) { return 0; },
          .close = [](void* user, void*) { return of(user).Fails() ? -1 : 0; }};
}

TEST_P(Replacing, NoFailureOfAnApplicationsFilesPassesForSuccess) {
  const vx_file_functions functions = FaultyFunctions();
  const std::string expected(saved_.begin(), saved_.end());
  int status = VX_WRITE_ERROR;
  int failures = 0;
  while (status != VX_OK) {
    Faulty file = {{}, failures};
    ASSERT_EQ(vx_redirect_files(&functions, &file), VX_OK);
    status = vx_save_file(picture_.Get(), "anything", nullptr);
    if (status == VX_OK) {
      EXPECT_TRUE(std::string(file.bytes.begin(), file.bytes.end()) == expected);
      break;
    }
    ASSERT_EQ(status, failures == 0 ? VX_OPEN_WRITE_ERROR : VX_WRITE_ERROR) << failures;
    ASSERT_STRNE(vx_error_detail(), "");
    ++failures;
  }
  EXPECT_GT(failures, 2);
}

INSTANTIATE_TEST_SUITE_P(Files, Replacing, testing::Bool(), [](const auto& each) {
  return each.param ? std::string("Named") : std::string("Nameless");
});

}  // namespace
}  // namespace saving
