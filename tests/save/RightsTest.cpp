// Who may do what with files that are replaced, and where saves and edits end up: nobody gains rights, nobody
// leads a save elsewhere, and what others did meanwhile is not undone.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <thread>

#include "Replacing.h"

namespace saving {
namespace {

namespace fs = std::filesystem;

class Rights : public Replacing {};

TEST_P(Rights, NobodyGetsMoreThanHeHadAtAnyMoment) {
  const std::string list = List({6, 6, 0, 6, 0});
  ASSERT_EQ(chmod(old_.c_str(), 0640), 0);
  if (!SetAttribute(folder_ / ".", kDefault, List({7, 7, 7, 7, 7}))) GTEST_SKIP() << std::strerror(errno);
  const auto bits = [](int file) {
    struct stat status = {};
    EXPECT_EQ(fstat(file, &status), 0);
    return status.st_mode & 0777;
  };
  mode_t all = 0;
  system_calls::after = [&](const std::string& call, int file) {
    if (call == "fchown" || call == "fchmod" || call == "fsetxattr") all |= bits(file);
  };
  SaveTo(old_);  // user 1234 had nothing, and the folder would give him all
  EXPECT_EQ(all, 0640U);
  EXPECT_EQ(Attribute(old_, kAccess), "none");

  ASSERT_TRUE(SetAttribute(old_, kAccess, list) && SetAttribute(old_, "user.note", "kept"));
  system_calls::after = [&](const std::string& call, int file) {
    char now[200];
    const bool hasList = fgetxattr(file, kAccess, now, sizeof now) > 0;
    const bool isAttribute = call == "fchown" || call == "fchmod" || call == "fsetxattr";
    const bool isOpenToGroup = isAttribute && (bits(file) & 0070) != 0;
    EXPECT_TRUE(!isOpenToGroup || (hasList && std::string(now, list.size()) == list)) << call;
  };
  SaveTo(old_);
  EXPECT_EQ(Attribute(old_, kAccess), list);
  EXPECT_EQ(Attribute(old_, "user.note"), "kept");
}

TEST_P(Rights, AnOwnerWhoCannotBeKeptTakesRightsAlong) {
  if (geteuid() != 0) GTEST_SKIP() << "only root makes files of others";
  struct {
    mode_t before;
    std::string list;
    mode_t after;
    std::string listAfter;
  } cases[] = {
      {06626, "", 0602, "none"},  // the old group could write and not read, and is nobody special now
      {0606, "", 0600, "none"},
      {0666, List({6, 0, 4, 6, 6}), 0664, List({6, 0, 0, 6, 4})}};
  ASSERT_EQ(chmod((folder_ / ".").c_str(), 0777), 0);
  for (const auto& each : cases) {
    WriteFile(old_, "old");
    ASSERT_EQ(chown(old_.c_str(), 1234, 1234), 0);
    ASSERT_EQ(chmod(old_.c_str(), each.before), 0);
    if (!each.list.empty() && !SetAttribute(old_, kAccess, each.list)) continue;
    AsOrdinaryUser(folder_, [&] { SaveTo(old_); });
    EXPECT_EQ(ModeOf(old_), each.after);
    EXPECT_EQ(Attribute(old_, kAccess), each.listAfter);
    fs::remove(old_);
  }
}

TEST_P(Rights, OtherPeoplesLinksInFoldersForAllAreNotFollowed) {
  const std::string shared = folder_ / "shared";
  fs::create_directory(shared);
  ASSERT_EQ(chmod(shared.c_str(), 01777), 0);
  for (const std::string target : {"old.bmp", "new.bmp"}) {
    const std::string link = fs::path(shared) / target;
    fs::create_symlink("../" + target, link);
    WriteFile(old_, "old");
    if (geteuid() == 0) {
      ASSERT_EQ(lchown(link.c_str(), 1234, 1234), 0);
      ExpectUntouched(link, VX_OPEN_WRITE_ERROR, "a link that somebody else");
      ASSERT_EQ(chown(shared.c_str(), 1234, 1234), 0);  // whose links are
      SaveTo(link);
      fs::remove(folder_ / "new.bmp");
      ASSERT_EQ(chown(shared.c_str(), 0, 0), 0);
      ASSERT_EQ(lchown(link.c_str(), 0, 0), 0);
    }
    SaveTo(link);
    EXPECT_EQ(ReadFile(folder_ / target).substr(0, 2), "BM");
  }
}

TEST_P(Rights, AFolderThatMovesAndAChdirLeadNowhereElse) {
  const fs::path before = fs::current_path();
  for (const bool isNew : {false, true}) {
    fs::create_directories(folder_ / "a");
    const vx::Bitmap icon = Noise(8, 8, 8);
    if (!isNew) icon.Save(folder_ / "a/x.ico", vx::SaveOptions(VX_FORMAT_ICO));
    fs::current_path(folder_ / "a");
    vx::Edit edit("x.ico", isNew ? VX_EDIT_NEW : 0);
    edit.Add(icon);
    fs::current_path(before);
    fs::rename(folder_ / "a", folder_ / "b");
    fs::create_directory(folder_ / "a");
    edit.Commit();
    EXPECT_EQ(vx::Source::File(folder_ / "b/x.ico").Describe().page_count, isNew ? 1 : 2);
    EXPECT_TRUE(fs::is_empty(folder_ / "a"));
    fs::remove_all(folder_ / "b");
  }
}

TEST_P(Rights, FilesAreStoredBeforeTheyGetTheirNameAndFoldersAfter) {
  std::string calls;
  const auto note = [&calls](const std::string& call, int file) {
    struct stat status = {};
    if (call == "linkat" || call == "renameat") calls += call + " ";
    if (call == "fsync" && fstat(file, &status) == 0) calls += S_ISDIR(status.st_mode) ? "folder " : "file ";
  };
  system_calls::after = note;
  SaveTo(old_);
  EXPECT_EQ(calls, GetParam() ? "file renameat folder " : "file linkat renameat folder ");
  calls.clear();
  SaveTo(folder_ / "new.bmp");
  if (!GetParam()) {
    EXPECT_EQ(calls, "file linkat folder ");
  }
  for (const auto& [error, status] : {std::pair(EIO, VX_WRITE_ERROR), std::pair(EINVAL, VX_OK)}) {
    WriteFile(old_, "old");
    system_calls::before = [error = error, count = 0](const std::string& call, int) mutable {
      if (call != "fsync" || ++count < 2) return 0;
      return errno = error, -1;
    };
    EXPECT_EQ(StatusOf([&] { SaveTo(old_); }), status);
    EXPECT_EQ(ReadFile(old_).substr(0, 2), "BM");
  }
}

TEST_P(Rights, WhatAnEndedProcessLeftGoesWithTheNextSave) {
  system_calls::before = [](const std::string& call, int) { return call == "renameat" ? raise(SIGKILL) : 0; };
  EXPECT_EXIT(SaveTo(old_), testing::KilledBySignal(SIGKILL), "");
  system_calls::before = nullptr;
  EXPECT_EQ(folder_.Names(), (std::vector<std::string>{".vx-unfinished-0", "old.bmp"}));
  SaveTo(folder_ / "other.bmp");
  EXPECT_EQ(folder_.Names(), (std::vector<std::string>{"old.bmp", "other.bmp"}));
  // What is in use stays, and so does a name that is no file.
  vx::Edit edit(folder_ / "a.ico", VX_EDIT_NEW);
  edit.Add(picture_);
  fs::create_directory(folder_ / ".vx-unfinished-1");
  SaveTo(old_);
  edit.Commit();
  EXPECT_EQ(folder_.Names(), (std::vector<std::string>{".vx-unfinished-1", "a.ico", "old.bmp", "other.bmp"}));
}

TEST_P(Rights, ShortWritesAreGoneOnWithAndAFailedCloseIsTold) {
  system_calls::writesAreShort = true;
  SaveTo(old_);
  vx::Edit edit(folder_ / "a.ico", VX_EDIT_NEW);
  edit.Add(picture_);
  edit.Commit();
  EXPECT_TRUE(ReadFile(old_) == saved_);
  EXPECT_TRUE(vx::Source::File(folder_ / "a.ico").Load().Rgba() == picture_.Rgba());
  vx::SaveOptions inPlace;
  inPlace.in_place = 1;
  const std::string there = folder_ / "there.bmp";
  system_calls::Fail("close", EIO);
  for (const char* what : {"new", "there already"}) {
    EXPECT_EQ(vx_save_file(picture_.Get(), there.c_str(), &inPlace), VX_WRITE_ERROR) << what;
  }
  EXPECT_EQ(StatusOf([&] { SaveTo("/dev/null"); }), VX_WRITE_ERROR);
}

/// Opens `path`, saves an icon by the descriptor's name, and says what the file has then.
std::string SaveBehind(const std::string& path, int flags, off_t at, const std::string& folder) {
  const int file = open(path.c_str(), flags);
  lseek(file, at, SEEK_SET);
  if ((flags & O_TRUNC) != 0) unlink(path.c_str());
  const std::string name = folder + std::to_string(file);
  vx::Edit edit(name, VX_EDIT_NEW);
  edit.Add(Noise(8, 8, 8));
  edit.Commit();
  char bytes[5000];
  const int again = open(("/proc/self/fd/" + std::to_string(file)).c_str(), O_RDONLY);
  const ssize_t size = read(again, bytes, sizeof bytes);
  close(again);
  close(file);
  return {bytes, static_cast<size_t>(size)};
}

TEST_P(Rights, DescriptorsAreWrittenThroughFromWhereTheyStand) {
  const std::string path = folder_ / "a.ico";
  const std::string icon = SaveBehind(path, O_RDWR | O_CREAT | O_TRUNC, 0, "/dev/fd/");  // unlinked
  EXPECT_EQ(icon.substr(0, 6), std::string("\0\0\1\0\1\0", 6));
  const std::string longer(5000, 'x');
  const struct {
    int flags;
    off_t at;
    std::string before, after;
  } cases[] = {{O_WRONLY | O_APPEND, 0, "head", "head" + icon},
               {O_RDWR, 4, longer, "xxxx" + icon},
               {O_RDWR, 0, longer, icon}};
  for (const auto& each : cases) {
    WriteFile(path, each.before);
    struct stat before = {}, after = {};
    ASSERT_EQ(stat(path.c_str(), &before), 0);
    EXPECT_TRUE(SaveBehind(path, each.flags, each.at, "/proc/self/fd/") == each.after) << each.at;
    ASSERT_EQ(stat(path.c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
  }
  const int file = open(path.c_str(), O_RDWR);
  fs::remove(path);
  vx::Edit edit("/dev/fd/" + std::to_string(file));
  edit.Add(Noise(9, 9, 8));
  edit.Commit();
  EXPECT_EQ(vx::Source::File("/dev/fd/" + std::to_string(file)).Describe().page_count, 2);
  close(file);
  EXPECT_EQ(StatusOf([&] { SaveTo("/dev/fd/999"); }), VX_OPEN_WRITE_ERROR);
}

INSTANTIATE_TEST_SUITE_P(Files, Rights, testing::Bool(), [](const auto& each) {
  return each.param ? std::string("Named") : std::string("Nameless");
});

class Sharing : public testing::Test {
 protected:
  void SetUp() override { Noise(16, 16, 8).Save(icon_, vx::SaveOptions(VX_FORMAT_ICO)); }
  void TearDown() override { system_calls::Restore(); }

  Folder folder_;
  std::string icon_ = folder_ / "a.ico";
};

TEST_F(Sharing, WhatOthersDidMeanwhileIsToldAndStays) {
  const std::string before = ReadFile(icon_);
  const auto changed = [&] { return before.substr(0, before.size() - 1) + '!'; };
  const struct {
    const char* what;  // that the detail says; null: it is committed
    bool mayNew;       // told of a new file, too
    bool isElsewhere;  // told of an edit in place, too
    std::function<void()> act;
  } cases[] = {
      {"replaced", true, true,
       [&] {
         WriteFile(folder_ / "other", changed());
         fs::rename(folder_ / "other", icon_);
       }},
      {"written to", true, false, [&] { WriteFile(icon_, before + "more"); }},
      {"written to", false, false,
       [&] {
         const auto time = fs::last_write_time(icon_);
         WriteFile(icon_, changed());
         fs::last_write_time(icon_, time);
       }},
      {"deleted", true, true, [&] { fs::remove(icon_); }},
      {nullptr, true, false, [&] { ASSERT_EQ(chmod(icon_.c_str(), 0600), 0); }},
      {nullptr, false, false, [&] { fs::last_write_time(icon_, fs::file_time_type::clock::now()); }}};
  for (const auto& each : cases) {
    for (const unsigned flags : {0U, unsigned{VX_EDIT_NEW}, unsigned{VX_EDIT_IN_PLACE}}) {
      if (flags == VX_EDIT_NEW && !each.mayNew) continue;
      if (flags == VX_EDIT_IN_PLACE && !each.isElsewhere) continue;
      fs::remove(icon_);
      WriteFile(icon_, before);
      vx::Edit edit(icon_, flags);
      edit.Add(Noise(8, 8, 8));
      each.act();
      const std::string now = ReadFile(icon_);
      if (each.what != nullptr) {
        ExpectFailure(VX_FILE_CHANGED, each.what, [&] { edit.Commit(); });
        ExpectReason(VX_REASON_FILE_CHANGED);
      } else {
        edit.Commit();
      }
      EXPECT_EQ(ReadFile(icon_) == now, each.what != nullptr);
      EXPECT_LE(folder_.Names().size(), 1U);
    }
  }
  const std::string made = folder_ / "new.ico";
  vx::Edit edit(made, VX_EDIT_NEW);
  edit.Add(Noise(8, 8, 8));
  WriteFile(made, "mine");
  ExpectFailure(VX_FILE_CHANGED, "", [&] { edit.Commit(); });
  ExpectReason(VX_REASON_FILE_CHANGED);
  EXPECT_EQ(ReadFile(made), "mine");
}

TEST_F(Sharing, WhoeverEditsIsWaitedForByEditsAndSaves) {
  for (const unsigned flags : {0U, unsigned{VX_EDIT_NEW}}) {
    const vx::Edit held(icon_, flags);
    EXPECT_TRUE(held.IsLocked());
    vx::SaveOptions inPlace(VX_FORMAT_ICO);
    inPlace.in_place = 1;
    const std::function<void()> acts[] = {[&] { vx::Edit{icon_}; }, [&] { vx::Edit(icon_, VX_EDIT_NEW); },
                                          [&] { Noise(8, 8, 8).Save(icon_, vx::SaveOptions(VX_FORMAT_ICO)); },
                                          [&] { Noise(8, 8, 8).Save(icon_, inPlace); }};
    std::vector<std::thread> threads;
    for (const auto& act : acts) {
      threads.emplace_back([&act] { ExpectFailure(VX_OPEN_WRITE_ERROR, "another edit of this one", act); });
    }
    for (std::thread& each : threads) each.join();
  }
}

TEST_F(Sharing, AFileReplacedWhileItsLockWasWaitedForIsOpenedAgain) {
  WriteFile(folder_ / "other", "");
  Noise(9, 9, 8).Save(folder_ / "other", vx::SaveOptions(VX_FORMAT_ICO));
  system_calls::before = [&, isFirst = true](const std::string& call, int) mutable {
    if (call == "flock" && std::exchange(isFirst, false)) fs::rename(folder_ / "other", icon_);
    return 0;
  };
  vx::Edit edit(icon_);
  edit.Add(Noise(8, 8, 8));
  edit.Commit();
  EXPECT_EQ(vx::Source::File(icon_).Describe(1).width, 9);
}

TEST_F(Sharing, WhereFilesCannotBeLockedThatIsSaidOrRefused) {
  // As over NFS: what is open for reading alone cannot be locked.
  system_calls::before = [](const std::string& call, int file) {
    const bool isReadOnly = call == "flock" && (fcntl(file, F_GETFL) & O_ACCMODE) == O_RDONLY;
    return isReadOnly ? (errno = EBADF, -1) : 0;
  };
  EXPECT_TRUE(vx::Edit(icon_, VX_EDIT_REQUIRE_LOCK).IsLocked());
  for (const int error : {ENOLCK, EOPNOTSUPP}) {
    system_calls::Fail("flock", error);
    vx::Edit edit(icon_);
    EXPECT_FALSE(edit.IsLocked());
    edit.Add(Noise(8, 8, 8));
    edit.Commit();
    ExpectFailure(VX_OPEN_WRITE_ERROR, "cannot be locked", [&] { vx::Edit(icon_, VX_EDIT_REQUIRE_LOCK); });
    ExpectReason(VX_REASON_NO_LOCKS, error);
  }
  EXPECT_EQ(vx::Source::File(icon_).Describe().page_count, 3);
}

}  // namespace
}  // namespace saving
