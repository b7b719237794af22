// The file services over every backend, held against a plain vector of bytes; then the limits of positions,
// and writes that fail after they seemed to work.
#include "files/Files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <random>

#include "../common/Folder.h"
#include "../common/MemoryFile.h"
#include "Leaks.h"
#include "files/MemoryTarget.h"
#include "files/MirroredFile.h"
#include "files/Source.h"

namespace {
/// Whether the system's reads and writes are interrupted every other time and do 700 bytes at most.
bool isSlow = false;

template <class Buffer>
ssize_t Slowly(long call, int descriptor, Buffer buffer, size_t count, off64_t position) {
  static unsigned int calls = 0;
  if (isSlow && ++calls % 2 != 0) return errno = EINTR, -1;
  return syscall(call, descriptor, buffer, isSlow ? std::min<size_t>(count, 700) : count, position);
}
}  // namespace

#pragma GCC visibility push(default)
extern "C" ssize_t pread64(int descriptor, void* buffer, size_t count, off64_t position) {
  return Slowly(SYS_pread64, descriptor, buffer, count, position);
}
extern "C" ssize_t pwrite64(int descriptor, const void* buffer, size_t count, off64_t position) {
  return Slowly(SYS_pwrite64, descriptor, buffer, count, position);
}
#pragma GCC visibility pop

namespace {

using Bytes = std::vector<unsigned char>;

/// The descriptor that the next file gets.
int NextDescriptor() {
  const int next = dup(STDIN_FILENO);
  close(next);
  return next;
}

class Files : public Leaks {
 protected:
  void TearDown() override {
    isSlow = false;
    vx_redirect_files(nullptr, nullptr);
    Leaks::TearDown();
  }
  void Redirect() { ASSERT_EQ(vx_redirect_files(&MemoryFile::kFunctions, &vector_), VX_OK); }
  HANDLE Open(int flags) { return VX_RedirectedOpen(path_.c_str(), flags, 0); }

  /// Does the same random things to a file and to a vector, and compares after each.
  void CompareWithModel(int flags, Bytes model, unsigned int seed) {
    HANDLE file = Open(flags);
    ASSERT_NE(file, vxkrn::InvalidHandle());
    auto random = [engine = std::mt19937(seed)]() mutable { return static_cast<unsigned int>(engine()); };
    std::size_t position = 0;
    constexpr unsigned int kCounts[] = {1, 1, 2, 7, 100, 511, 5000, 16384, 40000};
    const unsigned int actions = flags == VX_OPEN_READ ? 3 : 7;
    for (int step = 0; step < 4000; ++step) {
      const unsigned int count = kCounts[random() % std::size(kCounts)];
      const unsigned int action = random() % actions;
      if (action < 2) {
        Bytes got(count, 0xEE);
        const std::size_t expected =
            position < model.size() ? std::min<std::size_t>(count, model.size() - position) : 0;
        ASSERT_EQ(VX_RedirectedRead(file, got.data(), count), static_cast<int>(expected)) << step;
        for (std::size_t i = 0; i < expected; ++i) ASSERT_EQ(got[i], model[position + i]) << step;
        position += expected;
      } else if (action == 2) {
        const int origin = static_cast<int>(random() % 3);
        const std::size_t base = origin == 0 ? 0 : origin == 1 ? position : model.size();
        const std::size_t target = random() % (model.size() + 1000);
        const auto offset =
            static_cast<int>(static_cast<std::ptrdiff_t>(target) - static_cast<std::ptrdiff_t>(base));
        ASSERT_EQ(VX_RedirectedSeek(file, offset, origin), static_cast<int>(target)) << step;
        position = target;
      } else if (action < 6 || random() % 20 != 0) {
        Bytes put(std::min(count, 20000U));
        for (unsigned char& byte : put) byte = static_cast<unsigned char>(random());
        ASSERT_EQ(VX_RedirectedWrite(file, put.data(), static_cast<unsigned int>(put.size())),
                  static_cast<int>(put.size()));
        if (model.size() < position + put.size()) model.resize(position + put.size());
        std::copy(put.begin(), put.end(), model.begin() + static_cast<std::ptrdiff_t>(position));
        position += put.size();
      } else {
        ASSERT_EQ(VX_RedirectedWrite(file, "", 0), 0);
        model.resize(position);
      }
    }
    ASSERT_EQ(VX_RedirectedSeek(file, 0, VX_SEEK_END), static_cast<int>(model.size()));
    ASSERT_EQ(VX_RedirectedClose(file), 0);
    expected_ = std::move(model);
  }

  Folder folder_;
  std::string path_ = folder_ / "file";
  MemoryFile vector_;
  Bytes expected_;
};

TEST_F(Files, OfTheSystemDoAsAVectorOfBytesDoes) {
  for (unsigned int seed = 1; seed <= 3; ++seed) {
    isSlow = seed != 1;
    CompareWithModel(VX_OPEN_CREATE, std::exchange(expected_, {}), seed);
    if (HasFatalFailure()) return;
    EXPECT_EQ(std::filesystem::file_size(path_), expected_.size());
  }
  CompareWithModel(VX_OPEN_READ, expected_, 9);
}

TEST_F(Files, OfAnApplicationDoAsAVectorOfBytesDoes) {
  Redirect();
  CompareWithModel(VX_OPEN_UPDATE, {}, 4);
  EXPECT_EQ(vector_.bytes, expected_);
  vxkrn::memory::SetLimit(1);  // without memory for a window
  CompareWithModel(VX_OPEN_UPDATE, vector_.bytes, 5);
  EXPECT_EQ(vector_.bytes, expected_);
}

TEST_F(Files, InMemoryAreReadAndNotWritten) {
  Bytes bytes(100000);
  std::mt19937 random(6);
  for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
  vxkrn::MemoryFile memory = {bytes.data(), bytes.size()};
  const vxkrn::Backend backend = vxkrn::MemoryBackend(&memory);
  const vxkrn::BackendScope scope(backend);
  { const vxkrn::BackendScope inner(vxkrn::kSystemBackend); }
  CompareWithModel(VX_OPEN_READ, bytes, 7);
  EXPECT_EQ(Open(VX_OPEN_UPDATE), vxkrn::InvalidHandle());
}

TEST_F(Files, InMemoryGrowAsAVectorOfBytesDoes) {
  vxkrn::MemoryTarget target;
  const vxkrn::Backend backend = target.AsBackend();
  {
    const vxkrn::BackendScope scope(backend);
    CompareWithModel(VX_OPEN_UPDATE, {}, 8);
  }
  EXPECT_EQ(Bytes(target.Data(), target.Data() + target.Size()), expected_);
  vector_.bytes = expected_;
  vxkrn::MemoryTarget copy;  // of a file that comes in portions
  ASSERT_EQ(copy.ReadFrom({MemoryFile::kFunctions, &vector_}, &vector_), STATUS_OK);
  EXPECT_EQ(Bytes(copy.Data(), copy.Data() + copy.Size()), expected_);
}

/// Written from the top in any pieces, the rows of a bitmap file end up from below.
TEST_F(Files, ThatAreMirroredHaveTheirRowsTheOtherWayRound) {
  struct {
    std::size_t rowBytes;
    int rows;
    uint64_t limit;  // of memory; 0: none
  } const kCases[] = {{4, 1, 0},       {4, 700, 0},    {300, 700, 1},   {300, 9000, 0},
                      {1 << 20, 2, 0}, {700000, 3, 0}, {2000000, 2, 0}, {4, 300000, 0}};
  constexpr std::size_t kHeaders = 74;
  for (const auto& [rowBytes, rows, limit] : kCases) {
    SCOPED_TRACE(std::to_string(rows) + " rows of " + std::to_string(rowBytes));
    const std::size_t size = kHeaders + rowBytes * static_cast<std::size_t>(rows);
    Bytes expected(size);
    std::mt19937 random(10);
    for (std::size_t at = 0; at < size; at += 3) expected[at] = static_cast<uint8_t>(random());
    expected[10] = kHeaders;
    expected[11] = expected[12] = expected[13] = 0;
    Bytes fromTop(expected.begin(), expected.begin() + kHeaders);
    for (auto end = expected.cend(); fromTop.size() < size; end -= static_cast<std::ptrdiff_t>(rowBytes)) {
      fromTop.insert(fromTop.end(), end - static_cast<std::ptrdiff_t>(rowBytes), end);
    }
    vector_.bytes.clear();
    vector_.most = 70000;
    vxkrn::memory::SetLimit(limit);
    const vxkrn::Backend inner = {MemoryFile::kFunctions, &vector_};
    vxkrn::MirroredFile mirrored(inner, rowBytes, rows);
    vxkrn::memory::SetLimit(0);
    const vxkrn::Backend backend = mirrored.AsBackend();
    void* const file = backend.functions.open(backend.user, "", VX_OPEN_CREATE);
    for (std::size_t at = 0; at < size;) {
      const auto most = static_cast<std::uint32_t>(random() % (at == 0 ? 100 : 200000) + 14);
      const auto count = static_cast<std::uint32_t>(std::min<std::size_t>(most, size - at));
      const int64_t taken = backend.functions.write_at(backend.user, file, fromTop.data() + at, count, at);
      ASSERT_TRUE(taken > 0 && taken <= count);
      at += static_cast<std::size_t>(taken);
    }
    EXPECT_EQ(backend.functions.size(backend.user, file), static_cast<int64_t>(size));
    EXPECT_TRUE(vector_.bytes == expected);
  }
}

TEST_F(Files, PositionsEndTwoBelowTheirWord) {
  HANDLE file = Open(VX_OPEN_CREATE);
  ASSERT_EQ(VX_RedirectedWrite(file, "0123456789", 10), 10);
  struct {
    int offset, origin, expected;
  } const seeks[] = {{4, VX_SEEK_START, 4},    {-5, VX_SEEK_CURRENT, -1},
                     {-11, VX_SEEK_END, -1},   {0, 3, -1},
                     {-2, VX_SEEK_START, -2},  {1, VX_SEEK_CURRENT, -1},
                     {0, VX_SEEK_CURRENT, -2}, {INT32_MAX, VX_SEEK_START, INT32_MAX}};
  for (const auto& seek : seeks) {
    EXPECT_EQ(VX_RedirectedSeek(file, seek.offset, seek.origin), seek.expected)
        << seek.offset << ' ' << seek.origin;
  }
  char byte = 0;
  EXPECT_EQ(VX_RedirectedRead(file, &byte, 1), 0) << "beyond the end";
  EXPECT_EQ(VX_RedirectedSeek(file, -3, VX_SEEK_START), -3);
  EXPECT_EQ(VX_RedirectedWrite(file, "no", 2), -1) << "past the last position";
  EXPECT_EQ(VX_RedirectedSeek(file, 0, VX_SEEK_CURRENT), -3) << "a failure does not move";
  EXPECT_EQ(VX_RedirectedClose(file), 0);
  EXPECT_EQ(std::filesystem::file_size(path_), 10U);
  EXPECT_EQ(Open(1), vxkrn::InvalidHandle()) << "unknown flags";
}

TEST_F(Files, ThatCannotBeFilesDoNotOpen) {
  const int next = NextDescriptor();
  EXPECT_EQ(Open(VX_OPEN_READ), vxkrn::InvalidHandle()) << "missing";
  EXPECT_EQ(Open(VX_OPEN_UPDATE), vxkrn::InvalidHandle()) << "missing";
  EXPECT_EQ(VX_RedirectedOpen(nullptr, VX_OPEN_READ, 0), vxkrn::InvalidHandle());
  EXPECT_EQ(VX_RedirectedOpen(testing::TempDir().c_str(), VX_OPEN_READ, 0), vxkrn::InvalidHandle());
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  for (const int flags : {VX_OPEN_READ, VX_OPEN_UPDATE, VX_OPEN_CREATE}) {
    EXPECT_EQ(Open(flags), vxkrn::InvalidHandle()) << "a pipe, which would wait for its other end";
  }
  EXPECT_EQ(NextDescriptor(), next) << "one was left open";
}

TEST_F(Files, AreCreatedForAllAsTheUmaskLets) {
  const mode_t old = umask(027);
  const int descriptor = NextDescriptor();
  HANDLE file = VX_RedirectedOpen(path_.c_str(), VX_OPEN_CREATE, 128);
  EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0) << "no program that is started inherits it";
  EXPECT_EQ(VX_RedirectedClose(file), 0);
  EXPECT_EQ(NextDescriptor(), descriptor);
  umask(old);
  struct stat status = {};
  ASSERT_EQ(stat(path_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

TEST_F(Files, WritesThatFailLaterAreToldAfterClosing) {
  Redirect();
  const auto writeTen = [&] {
    HANDLE file = Open(VX_OPEN_UPDATE);
    EXPECT_EQ(VX_RedirectedWrite(file, "0123456789", 10), 10);
    return file;
  };
  EXPECT_EQ(VX_RedirectedClose(writeTen()), 0);
  EXPECT_FALSE(vxkrn::TakeLateWrite().failed);

  vector_.room = 5;
  EXPECT_EQ(VX_RedirectedClose(writeTen()), -1);
  const vxkrn::LateWrite late = vxkrn::TakeLateWrite();
  EXPECT_TRUE(late.failed);
  EXPECT_EQ(late.error, ENOSPC);
  EXPECT_FALSE(vxkrn::TakeLateWrite().failed) << "asked for once";

  HANDLE file = writeTen();
  char byte = 0;
  EXPECT_EQ(VX_RedirectedRead(file, &byte, 1), -1) << "what waits must be stored before reading";
  EXPECT_EQ(VX_RedirectedWrite(file, "x", 1), -1) << "a handle that lost bytes takes no more";
  EXPECT_EQ(VX_RedirectedClose(file), -1);
  EXPECT_TRUE(vxkrn::TakeLateWrite().failed);

  vector_ = {{}, SIZE_MAX, true};
  EXPECT_EQ(VX_RedirectedClose(writeTen()), -1);
  EXPECT_EQ(vxkrn::TakeLateWrite().error, EIO) << "closing itself failed";
  EXPECT_EQ(VX_RedirectedClose(Open(VX_OPEN_READ)), 0) << "nothing was written that could be lost";
  vector_ = {{}, 5, true};
  EXPECT_EQ(VX_RedirectedClose(writeTen()), -1);
  vector_ = {{}, SIZE_MAX, true};
  EXPECT_EQ(VX_RedirectedClose(writeTen()), -1);
  EXPECT_EQ(vxkrn::TakeLateWrite().error, ENOSPC) << "the first of all that failed";

  vector_ = {{}, SIZE_MAX, false};
  file = Open(VX_OPEN_READ);
  EXPECT_EQ(VX_RedirectedWrite(file, "x", 1), -1);
  EXPECT_EQ(VX_RedirectedWrite(file, "", 0), -1);
  EXPECT_EQ(VX_RedirectedClose(file), 0);
}

TEST_F(Files, FunctionsThatLieOrAreMissingAreCaught) {
  vx_file_functions functions = MemoryFile::kFunctions;
  functions.read_at = [](void*, void*, void*, uint32_t count, uint64_t) -> int64_t {
    return int64_t{count} + 1;
  };
  ASSERT_EQ(vx_redirect_files(&functions, &vector_), VX_OK);
  HANDLE file = Open(VX_OPEN_READ);
  char bytes[4];
  EXPECT_EQ(VX_RedirectedRead(file, bytes, 4), -1);
  EXPECT_EQ(VX_RedirectedClose(file), 0);
  functions.read_at = [](void*, void*, void*, uint32_t, uint64_t position) -> int64_t {
    return position == 0 ? 2 : -1;
  };
  ASSERT_EQ(vx_redirect_files(&functions, &vector_), VX_OK);
  file = Open(VX_OPEN_READ);
  EXPECT_EQ(VX_RedirectedRead(file, bytes, 4), 2) << "what came before the failure";
  EXPECT_EQ(VX_RedirectedRead(file, bytes, 4), -1);
  EXPECT_EQ(VX_RedirectedClose(file), 0);
  functions.write_at = [](void*, void*, const void*, uint32_t, uint64_t) -> int64_t { return 0; };
  ASSERT_EQ(vx_redirect_files(&functions, &vector_), VX_OK);
  file = Open(VX_OPEN_UPDATE);
  EXPECT_EQ(VX_RedirectedWrite(file, "x", 1), 1);
  EXPECT_EQ(VX_RedirectedClose(file), -1) << "nothing is stored, for ever";
  EXPECT_TRUE(vxkrn::TakeLateWrite().failed);
  for (const auto& leave :
       {+[](vx_file_functions& f) { f.open = nullptr; }, +[](vx_file_functions& f) { f.read_at = nullptr; },
        +[](vx_file_functions& f) { f.size = nullptr; }, +[](vx_file_functions& f) { f.close = nullptr; },
        +[](vx_file_functions& f) { f.write_at = nullptr; },
        +[](vx_file_functions& f) { f.truncate = nullptr; }}) {
    functions = MemoryFile::kFunctions;
    leave(functions);
    EXPECT_EQ(vx_redirect_files(&functions, &vector_), VX_BAD_PARAMETER);
  }
}

}  // namespace
