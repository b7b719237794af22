// Output files when storing them fails or is interrupted half way. The test stands in for fsync, the last
// step before an unfinished file gets its name.
#include "Output.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>

#include "Errors.h"

namespace {

namespace fs = std::filesystem;

std::function<int()> insteadOfFsync;

class OutputTest : public testing::Test {
 protected:
  OutputTest() {
    std::string name = (fs::temp_directory_path() / "vxbmp-output-XXXXXX").string();
    folder_ = mkdtemp(name.data());
    insteadOfFsync = [] { return 0; };
  }
  ~OutputTest() override { fs::remove_all(folder_); }

  std::string Path(const std::string& name) const { return (folder_ / name).string(); }
  void Put(const std::string& name, const std::string& text) const { std::ofstream(Path(name)) << text; }
  std::string Get(const std::string& name) const {
    std::ifstream file(Path(name));
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
  }
  size_t FileCount() const {
    return static_cast<size_t>(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
  }

  fs::path folder_;
  const std::vector<uint8_t> new_{'n', 'e', 'w'};
};

TEST_F(OutputTest, FailureToStoreLeavesTheOldFile) {
  Put("file", "old");
  insteadOfFsync = [] {
    errno = EIO;
    return -1;
  };
  EXPECT_THROW(cli::WriteWhole(Path("file").c_str(), new_), cli::FileError);
  EXPECT_EQ(Get("file"), "old");
  EXPECT_EQ(FileCount(), 1U);

  // What failed once leaves nothing in the way.
  insteadOfFsync = [] { return 0; };
  cli::WriteWhole(Path("file").c_str(), new_);
  EXPECT_EQ(Get("file"), "new");
  EXPECT_EQ(FileCount(), 1U);
}

TEST_F(OutputTest, SignalsLeaveTheOldFile) {
  Put("file", "old");
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    insteadOfFsync = [=] { return raise(signal); };
    EXPECT_EXIT(cli::WriteWhole(Path("file").c_str(), new_), testing::KilledBySignal(signal), "");
    EXPECT_EQ(Get("file"), "old");
    EXPECT_EQ(FileCount(), 1U);
  }
}

TEST_F(OutputTest, IgnoredSignalsStayIgnored) {
  insteadOfFsync = [] { return raise(SIGHUP); };
  const auto write = [this] {
    std::signal(SIGHUP, SIG_IGN);
    cli::WriteWhole(Path("file").c_str(), new_);
    std::exit(0);
  };
  EXPECT_EXIT(write(), testing::ExitedWithCode(0), "");
  EXPECT_EQ(Get("file"), "new");
}

TEST_F(OutputTest, KeepsLinksAndPermissions) {
  Put("file", "old");
  fs::permissions(Path("file"), fs::perms(0640));
  fs::create_symlink("file", Path("link"));
  fs::create_symlink("not-yet", Path("dangling"));
  cli::WriteWhole(Path("link").c_str(), new_);
  cli::WriteWhole(Path("dangling").c_str(), new_);
  EXPECT_TRUE(fs::is_symlink(Path("link")));
  EXPECT_TRUE(fs::is_symlink(Path("dangling")));
  EXPECT_EQ(Get("file"), "new");
  EXPECT_EQ(Get("not-yet"), "new");
  EXPECT_EQ(fs::status(Path("file")).permissions(), fs::perms(0640));

  const mode_t mask = umask(027);
  cli::WriteWhole(Path("fresh").c_str(), new_);
  umask(mask);
  EXPECT_EQ(fs::status(Path("fresh")).permissions(), fs::perms(0640));
}

}  // namespace

extern "C" int fsync(int /*descriptor*/) {
  return insteadOfFsync();
}
