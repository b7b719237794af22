// Not everybody who writes to a file looks for locks, so what is about to be replaced is compared with what
// was opened. Its times are not compared: they are too coarse to notice a quick change, and change with its
// mode.
#include "files/EditFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "base/Errors.h"

namespace vxkrn {
namespace {

/// A sum over words, in lanes that need not wait for one another: every edit reads its file twice for it.
class Checksum {
 public:
  static constexpr std::size_t kStep = 32;  // bytes that are added at once

  /// Only the last of several calls may have a size that is no multiple of kStep.
  void Add(const uint8_t* bytes, std::size_t size) noexcept {
    const std::size_t whole = size - size % kStep;
    auto lanes = lanes_;
    for (std::size_t i = 0; i < whole; i += kStep) AddTo(lanes, bytes + i);
    lanes_ = lanes;
    if (whole == size) return;
    std::array<uint8_t, kStep> rest{};
    std::memcpy(rest.data(), bytes + whole, size - whole);
    AddTo(lanes_, rest.data());
  }
  [[nodiscard]] uint64_t Sum() const noexcept {
    uint64_t sum = 0;
    for (const uint64_t lane : lanes_) sum = Mix(sum, lane);
    return sum;
  }

 private:
  using Lanes = std::array<uint64_t, 4>;

  /// Any change of one word changes the outcome; the high half brings what multiplying carried away back
  /// down.
  static uint64_t Mix(uint64_t sum, uint64_t word) noexcept {
    constexpr uint64_t kPrime = 0x9E3779B97F4A7C15;
    const uint64_t product = (sum ^ word) * kPrime;
    return product ^ product >> 32;
  }
  static void AddTo(Lanes& lanes, const uint8_t* bytes) noexcept {
    for (std::size_t i = 0; i < lanes.size(); ++i) {
      uint64_t word = 0;
      std::memcpy(&word, bytes + i * sizeof word, sizeof word);
      lanes[i] = Mix(lanes[i], word);
    }
  }

  Lanes lanes_ = {1, 2, 3, 4};
};

/// Reads as much as there is room for, or as the file has. @return bytes; below 0 where it cannot be read
ssize_t ReadFully(int file, uint8_t* bytes, std::size_t room, off_t at) {
  std::size_t done = 0;
  ssize_t got = 1;
  while (done < room && got > 0) {
    got =
        Uninterrupted([&] { return pread(file, bytes + done, room - done, at + static_cast<off_t>(done)); });
    if (got > 0) done += static_cast<std::size_t>(got);
  }
  return got < 0 ? got : static_cast<ssize_t>(done);
}

/// @return false where it cannot be read
bool SumUp(int file, uint64_t* sum) {
  Checksum checksum;
  std::array<uint8_t, Checksum::kStep * 1024> bytes;
  ssize_t got = 0;
  off_t at = 0;
  do {
    got = ReadFully(file, bytes.data(), bytes.size(), at);
    if (got > 0) checksum.Add(bytes.data(), static_cast<std::size_t>(got));
    at += std::max<ssize_t>(got, 0);
  } while (got == static_cast<ssize_t>(bytes.size()));
  *sum = checksum.Sum();
  return got >= 0;
}

bool IsSameTime(const timespec& one, const timespec& other) {
  return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

int FailAsChanged(const std::string& path, std::string_view what) {
  return Fail({VX_FILE_CHANGED, VX_REASON_FILE_CHANGED}, path, " was ", what,
              " by somebody else since the edit began, and is not overwritten; open it again");
}

}  // namespace

int EditFile::TakeCopy() {
  int status = copy.ReadFrom(kSystemBackend, lock_.File());
  if (status == STATUS_NO_MEMORY) FailForMemory("a copy of it to edit", memory::LastRefusal());
  if (status == STATUS_READ_ERROR) Fail({status, VX_REASON_SYSTEM_ERROR}, "it cannot be read");
  if (status == STATUS_OK) {
    Checksum checksum;
    checksum.Add(copy.Data(), copy.Size());
    checksum_ = checksum.Sum();
    return status;
  }
  return NameFailure(status, path);
}

int EditFile::TakeLock(unsigned int flags) {
  if (isNew_ && place_.IsStream()) return STATUS_OK;
  const int status = isNew_ ? lock_.TakeIfThere(place_, path.c_str()) : lock_.Take(place_, path.c_str());
  if (status != STATUS_OK || !lock_.IsOpen()) return status;
  const bool isOverwritten = inPlace || place_.IsStream();
  if (isOverwritten && lock_.WhyReadOnly() != 0) {
    return Fail(SystemCause(STATUS_OPEN_WRITE_ERROR, lock_.WhyReadOnly()), path,
                " cannot be written: ", std::strerror(lock_.WhyReadOnly()));
  }
  if ((flags & VX_EDIT_REQUIRE_LOCK) == 0 || lock_.WhyUnlocked() == 0) return status;
  return Fail({STATUS_OPEN_WRITE_ERROR, VX_REASON_NO_LOCKS, lock_.WhyUnlocked()}, path,
              " cannot be locked: ", std::strerror(lock_.WhyUnlocked()),
              "; without VX_EDIT_REQUIRE_LOCK it is edited all the same");
}

int EditFile::OpenSystemFile(unsigned int flags) {
  int status = place_.Find(path.c_str());
  if (status == STATUS_OK) status = TakeLock(flags);
  if (status != STATUS_OK) return status;
  if (inPlace) backend = lock_.AsBackend();
  const bool isReplaced = !inPlace && !place_.IsStream();
  if (isReplaced) status = replacement_.Open(path.c_str(), place_);
  return status == STATUS_OK && !isNew_ && !inPlace ? TakeCopy() : status;
}

int EditFile::Open(unsigned int flags) {
  const bool areSystemFiles = InstalledBackend().functions.open == kSystemBackend.functions.open;
  isNew_ = (flags & VX_EDIT_NEW) != 0;
  inPlace = (flags & VX_EDIT_IN_PLACE) != 0 || !areSystemFiles;
  if (isNew_ && inPlace) {
    return Fail({STATUS_NOT_SUPPORTED, VX_REASON_NOT_IN_PLACE},
                "a new file cannot be made in place of an old one");
  }
  backend = inPlace ? InstalledBackend() : copy.AsBackend();
  if (areSystemFiles) return OpenSystemFile(flags);
  if ((flags & VX_EDIT_REQUIRE_LOCK) == 0) return STATUS_OK;
  return Fail({STATUS_NOT_SUPPORTED, VX_REASON_NO_LOCKS}, path,
              ": files of the application's own cannot be locked");
}

/// Whether the name still means what was opened.
int EditFile::CheckIsSameFile() const {
  struct stat named = {};
  if (!place_.Look(&named)) {
    return errno == ENOENT ? FailAsChanged(path, "deleted")
                           : Fail(SystemCause(STATUS_WRITE_ERROR, errno), path,
                                  " cannot be looked at: ", std::strerror(errno));
  }
  return AreSameFile(named, lock_.Locked()) ? STATUS_OK : FailAsChanged(path, "replaced");
}

int EditFile::CheckIsUnchanged() const {
  if (const int status = CheckIsSameFile(); status != STATUS_OK) return status;
  const struct stat& opened = lock_.Locked();
  struct stat held = {};
  uint64_t sum = checksum_;
  const bool isReadable = fstat(lock_.Number(), &held) == 0 && (isNew_ || SumUp(lock_.Number(), &sum));
  if (!isReadable)
    return Fail(SystemCause(STATUS_READ_ERROR, errno), path, " cannot be compared: ", std::strerror(errno));
  const bool isTouched = isNew_ && !IsSameTime(held.st_mtim, opened.st_mtim);
  if (held.st_size == opened.st_size && sum == checksum_ && !isTouched) return STATUS_OK;
  return FailAsChanged(path, "written to");
}

/// The edits are in the file already. They are lost where nobody finds it under its name any more, and are
/// not stored yet. An application's own files are its own matter.
int EditFile::CommitInPlace() const {
  if (!lock_.IsOpen()) return STATUS_OK;
  if (const int status = CheckIsSameFile(); status != STATUS_OK) return status;
  if (Uninterrupted([this] { return fsync(lock_.Number()); }) == 0) return STATUS_OK;
  return Fail(SystemCause(STATUS_WRITE_ERROR, errno), path, " cannot be written: ", std::strerror(errno));
}

int EditFile::Commit() {
  if (inPlace) return CommitInPlace();
  if (place_.IsStream()) {
    if (isNew_) return WriteToStream(path.c_str(), place_, copy.Data(), copy.Size());
    const int status = CheckIsUnchanged();
    return status == STATUS_OK ? WriteOver(path.c_str(), lock_.Number(), copy.Data(), copy.Size()) : status;
  }
  const int status = replacement_.Fill(copy.Data(), copy.Size());
  if (status != STATUS_OK) return status;
  return replacement_.CommitOver(lock_, [this] { return CheckIsUnchanged(); });
}

}  // namespace vxkrn
