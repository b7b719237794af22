// Every way to write a file, with every call of the system failed, cut short, and the end of the process:
// afterwards the old file is there or the new one, with the rights that it had, and nothing else beside it,
// at the latest after the next save.
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <map>
#include <set>

#include "Replacing.h"

namespace saving {
namespace {

namespace fs = std::filesystem;

using State = std::map<std::string, std::string>;  // what files have

/// A way to write a file.
struct Act {
  const char* what;
  std::string file;
  std::function<void(const std::string& path)> run;
};

Act Saved(const char* file, vx_format format) {
  return {"saved", file,
          [=](const std::string& path) { Noise(16, 16, 24).Save(path, vx::SaveOptions(format)); }};
}

Act SavedSoft(const char* file, vx_format format) {
  return {"saved with alpha", file,
          [=](const std::string& path) { Soft(20).Save(path, vx::SaveOptions(format, 32)); }};
}

/// Rows that come from the top, of which the lowest is written first.
Act SavedFromTop(const char* file) {
  return {"saved from the top", file, [=](const std::string& path) {
            const vx::Buffer png = Noise(16, 16, 24).EncodePng();
            vx::LoadOptions how;
            how.flags = VX_LOAD_ROW_BY_ROW;
            vx::Source::Memory(png.Bytes()).Load(how).Save(path, vx::SaveOptions());
          }};
}

Act Edited(const char* what, const char* file, void (*edits)(vx::Edit& edit), unsigned flags = 0) {
  return {what, file, [=](const std::string& path) {
            vx::Edit edit(path, flags);
            edits(edit);
            edit.Commit();
          }};
}

const Act kActs[] = {
    Saved("old.bmp", VX_FORMAT_BMP),
    SavedFromTop("old.bmp"),
    Saved("old.ico", VX_FORMAT_ICO),
    Saved("old.cur", VX_FORMAT_CUR),
    Saved("old.png", VX_FORMAT_PNG),
    SavedSoft("old.bmp", VX_FORMAT_BMP),
    SavedSoft("old.cur", VX_FORMAT_CUR),
    SavedSoft("new.ico", VX_FORMAT_ICO),
    Saved("new.bmp", VX_FORMAT_BMP),
    Saved("new.png", VX_FORMAT_PNG),
    Edited(
        "made", "old.ico", [](vx::Edit& edit) { edit.Add(Noise(9, 9, 8)); }, VX_EDIT_NEW),
    Edited(
        "made", "new.ico", [](vx::Edit& edit) { edit.Add(Noise(9, 9, 8)); }, VX_EDIT_NEW),
    Edited("added", "app.ico", [](vx::Edit& edit) { edit.Add(Noise(9, 9, 8)); }),
    Edited("inserted", "app.ico", [](vx::Edit& edit) { edit.Insert(1, Noise(9, 9, 8)); }),
    Edited("inserted softly", "app.ico", [](vx::Edit& edit) { edit.Insert(2, Soft(9)); }),
    Edited("replaced", "app.ico", [](vx::Edit& edit) { edit.Replace(1, Noise(9, 9, 8)); }),
    Edited("deleted", "app.ico", [](vx::Edit& edit) { edit.Delete(1); }),
    Edited("compacted", "app.ico", [](vx::Edit& edit) { edit.Compact(); }),
    Edited("pointed", "arrow.cur", [](vx::Edit& edit) { edit.SetHotSpot(1, 1, 2); }),
};

/// Calls that change nothing: a process that ends there leaves what it leaves at the next one that is none of
/// them.
const std::set<std::string> kLooks = {"access", "close",   "faccessat", "fgetxattr", "flistxattr", "flock",
                                      "fstat",  "fstatat", "pread",     "read",      "stat"};

class Faults : public Replacing {
 protected:
  void SetUp() override {
    Replacing::SetUp();
    Noise(16, 16, 24).Save(folder_ / "arrow.cur", vx::SaveOptions(VX_FORMAT_CUR));
    Noise(16, 16, 24).Save(folder_ / "app.ico", vx::SaveOptions(VX_FORMAT_ICO));
    for (const char* name : {"old.ico", "old.cur", "old.png"}) WriteFile(folder_ / name, "old");
    for (const int page : {0, 0, 2}) {  // two more, and then one less, which leaves a gap
      vx::Edit edit(folder_ / "app.ico");
      if (page == 0) edit.Add(Noise(16, 16, 24));
      if (page != 0) edit.Delete(page);
      edit.Commit();
    }
    before_ = Now();
    for (const auto& [name, value] :
         {std::pair(std::string(kAccess), List({6, 6, 0, 6, 0})), {"user.note", "kept"}}) {
      if (SetAttribute(old_, name.c_str(), value))
        attributes_[name] = value;  // those that the file system has
    }
  }

  void Prepare() {
    for (const std::string& name : folder_.Names()) fs::remove(folder_ / name);
    for (const auto& [name, content] : before_) {
      WriteFile(folder_ / name, content);
      for (const auto& [attribute, value] : attributes_)
        SetAttribute(folder_ / name, attribute.c_str(), value);
    }
  }

  State Now() const {
    State state;
    for (const std::string& name : folder_.Names()) state[name] = ReadFile(folder_ / name);
    return state;
  }

  /// Runs the act in files as they were, with something that happens at every call.
  int Run(const Act& act, const std::function<int(const std::string& call, int file)>& atCall) {
    Prepare();
    system_calls::before = atCall;
    const int status = StatusOf([&] { act.run(folder_ / act.file); });
    system_calls::before = nullptr;
    return status;
  }

  /// Expects nothing but the old state or the new one. @return whether it is the new one
  bool ExpectOldOrNew(const Act& act) {
    const State now = Now();
    EXPECT_TRUE(now == before_ || now == after_);
    for (const auto& [attribute, value] : attributes_) {
      EXPECT_TRUE(!before_.contains(act.file) || Attribute(folder_ / act.file, attribute.c_str()) == value);
    }
    return now == after_;
  }

  void Fail(const Act& act, size_t number) {
    const std::string& call = calls_[number];
    const int status = Run(act, [&, left = number](const std::string&, int) mutable {
      const bool isLock = call == "flock";
      const bool wantsRoom = call == "pwrite" || call == "linkat" || call == "fsetxattr";
      return left-- == 0 ? (errno = isLock             ? ENOLCK
                                    : call == "fchown" ? EPERM
                                    : wantsRoom        ? ENOSPC
                                                       : EIO,
                            -1)
                         : 0;
    });
    const bool isNew = ExpectOldOrNew(act);
    EXPECT_TRUE(status != VX_OK || isNew);
    // Once it has its name, a failure can only be told.
    EXPECT_TRUE(status == VX_OK || !isNew || call == "fsync") << vx_error_detail();
    if (status != VX_OK && isNew) ExpectReason(VX_REASON_FOLDER_NOT_STORED, EIO);
  }

  void CutShort(const Act& act, size_t number) {
    EXPECT_EQ(Run(act,
                  [left = number](const std::string&, int) mutable {
                    system_calls::writesAreShort = left-- == 0;
                    return 0;
                  }),
              VX_OK);
    system_calls::writesAreShort = false;
    EXPECT_TRUE(ExpectOldOrNew(act));
  }

  void Kill(const Act& act, size_t number) {
    const pid_t child = fork();
    if (child == 0) {
      Run(act, [left = number](const std::string&, int) mutable { return left-- == 0 ? raise(SIGKILL) : 0; });
      _exit(0);
    }
    int ended = 0;
    ASSERT_EQ(waitpid(child, &ended, 0), child);
    EXPECT_TRUE(WIFSIGNALED(ended));
    SaveTo(folder_ / "next.bmp");  // which clears what was left
    fs::remove(folder_ / "next.bmp");
    ExpectOldOrNew(act);
  }

  State before_, after_;
  State attributes_;
  std::vector<std::string> calls_;
};

TEST_P(Faults, LeaveTheOldFileOrTheNewOne) {
  for (const Act& act : kActs) {
    calls_.clear();
    const int status = Run(act, [&](const std::string& call, int) { return calls_.push_back(call), 0; });
    ASSERT_EQ(status, VX_OK) << vx_error_detail();
    after_ = Now();
    ASSERT_TRUE(after_ != before_);
    for (size_t i = 0; i < calls_.size() && !HasFailure(); ++i) {
      SCOPED_TRACE(testing::Message() << act.file << " " << act.what << ", call " << i << ": " << calls_[i]);
      Fail(act, i);
      if (calls_[i] == "pwrite") CutShort(act, i);
      if (!kLooks.contains(calls_[i])) Kill(act, i);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Files, Faults, testing::Bool(), [](const auto& each) {
  return each.param ? std::string("Named") : std::string("Nameless");
});

}  // namespace
}  // namespace saving
