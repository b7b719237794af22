// Preloaded into a program, it ends the process at the n-th call that touches files, fails the n-th call of a
// kind, or stores half of what it is given. VX_FAULT says which: kill:any:7, fail:fsync:1:5 (an errno),
// short:pwrite:2. VX_FAULT_LOG names a file that gets "KIND COUNT" lines in the end. Nothing is stored for
// good.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>

namespace {

struct Fault {
  std::string act, kind, number, error;

  Fault() {
    const char* text = std::getenv("VX_FAULT");
    std::istringstream parts(text != nullptr ? text : "");
    for (std::string* part : {&act, &kind, &number, &error}) std::getline(parts, *part, ':');
  }
  int Error() const { return error.empty() ? EIO : std::stoi(error); }
  bool Is(const char* name) const { return act == name; }
};

std::map<std::string, int>& Counts() {
  static auto* counts = new std::map<std::string, int>;  // calls come until the very end
  return *counts;
}

/// Counts a call. @return whether the fault is meant for it, and has not killed the process
bool IsHit(const char* kind) {
  static const auto* fault = new Fault;
  ++Counts()["any"];
  const int number = ++Counts()[kind];
  if (fault->Is("kill") && std::to_string(Counts()["any"]) == fault->number) raise(SIGKILL);
  return std::to_string(number) == fault->number && fault->kind == kind;
}

template <class Result, class... Arguments>
Result Pass(const char* name, Arguments... arguments) {
  using Function = Result (*)(Arguments...);
  void* real = dlsym(RTLD_NEXT, (std::string(name) + "64").c_str());
  if (real == nullptr) real = dlsym(RTLD_NEXT, name);
  return reinterpret_cast<Function>(real)(arguments...);
}

template <class Result, class... Arguments>
Result Call(const char* name, Arguments... arguments) {
  static const Fault fault;
  if (!IsHit(name)) return Pass<Result>(name, arguments...);
  errno = fault.Error();
  return -1;
}

__attribute__((destructor)) void Log() {
  const char* path = std::getenv("VX_FAULT_LOG");
  std::FILE* file = path != nullptr ? std::fopen(path, "w") : nullptr;
  if (file == nullptr) return;
  const std::map<std::string, int> counts = Counts();
  for (const auto& [kind, count] : counts) std::fprintf(file, "%s %d\n", kind.c_str(), count);
  std::fclose(file);
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

int open(const char* path, int flags, ...) {
  va_list list;
  va_start(list, flags);
  // The analyzer forgets the va_start in every file but its first.
  const bool makes = (flags & (O_CREAT | O_TMPFILE)) != 0;
  const mode_t mode = makes ? va_arg(list, mode_t) : 0;  // NOLINT(clang-analyzer-valist.Uninitialized)
  va_end(list);
  return Call<int>("open", path, flags, mode);
}
int openat(int folder, const char* path, int flags, ...) {
  va_list list;
  va_start(list, flags);
  // The analyzer forgets the va_start in every file but its first.
  const bool makes = (flags & (O_CREAT | O_TMPFILE)) != 0;
  const mode_t mode = makes ? va_arg(list, mode_t) : 0;  // NOLINT(clang-analyzer-valist.Uninitialized)
  va_end(list);
  return Call<int>("openat", folder, path, flags, mode);
}
int close(int file) {
  if (!IsHit("close")) return Pass<int>("close", file);
  (void)Pass<int>("close", file);
  errno = EIO;
  return -1;
}
ssize_t pread(int file, void* bytes, size_t count, off_t at) {
  return Call<ssize_t>("pread", file, bytes, count, at);
}
ssize_t pwrite(int file, const void* bytes, size_t count, off_t at) {
  static const Fault fault;
  if (fault.Is("short") && IsHit("pwrite")) return Pass<ssize_t>("pwrite", file, bytes, (count + 1) / 2, at);
  if (fault.Is("short")) return Pass<ssize_t>("pwrite", file, bytes, count, at);
  return Call<ssize_t>("pwrite", file, bytes, count, at);
}
ssize_t read(int file, void* bytes, size_t count) {
  return Call<ssize_t>("read", file, bytes, count);
}
ssize_t write(int file, const void* bytes, size_t count) {
  return Call<ssize_t>("write", file, bytes, count);
}
int fsync(int /*file*/) {
  static const Fault fault;
  if (!IsHit("fsync")) return 0;
  errno = fault.Error();
  return -1;
}
int ftruncate(int file, off_t size) noexcept {
  return Call<int>("ftruncate", file, size);
}
int fstat(int file, struct stat* status) noexcept {
  return Call<int>("fstat", file, status);
}
int stat(const char* path, struct stat* status) noexcept {
  return Call<int>("stat", path, status);
}
int fstatat(int folder, const char* path, struct stat* status, int flags) noexcept {
  return Call<int>("fstatat", folder, path, status, flags);
}
int access(const char* path, int mode) noexcept {
  return Call<int>("access", path, mode);
}
int faccessat(int folder, const char* path, int mode, int flags) noexcept {
  return Call<int>("faccessat", folder, path, mode, flags);
}
int flock(int file, int operation) noexcept {
  return Call<int>("flock", file, operation);
}
int linkat(int folder, const char* path, int otherFolder, const char* other, int flags) noexcept {
  return Call<int>("linkat", folder, path, otherFolder, other, flags);
}
int unlinkat(int folder, const char* path, int flags) noexcept {
  return Call<int>("unlinkat", folder, path, flags);
}
int renameat(int folder, const char* path, int otherFolder, const char* other) noexcept {
  return Call<int>("renameat", folder, path, otherFolder, other);
}
int renameat2(int folder, const char* path, int otherFolder, const char* other, unsigned flags) noexcept {
  return Call<int>("renameat2", folder, path, otherFolder, other, flags);
}
int fchown(int file, uid_t owner, gid_t group) noexcept {
  return Call<int>("fchown", file, owner, group);
}
int fchmod(int file, mode_t mode) noexcept {
  return Call<int>("fchmod", file, mode);
}
ssize_t flistxattr(int file, char* list, size_t size) noexcept {
  return Call<ssize_t>("flistxattr", file, list, size);
}
ssize_t fgetxattr(int file, const char* name, void* value, size_t size) noexcept {
  return Call<ssize_t>("fgetxattr", file, name, value, size);
}
int fsetxattr(int file, const char* name, const void* value, size_t size, int flags) noexcept {
  return Call<int>("fsetxattr", file, name, value, size, flags);
}
int fremovexattr(int file, const char* name) noexcept {
  return Call<int>("fremovexattr", file, name);
}

}  // extern "C"
#pragma GCC visibility pop
