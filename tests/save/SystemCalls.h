// Functions of the system that a program stands in for, so that they can fail or be where a process
// ends. Nothing is ever stored for good.
#pragma once

#include <functional>
#include <string>

namespace system_calls {

/// Called before everything that touches files, with the name and, of what changes one, the file where there
/// is one; -1 makes the call fail with the errno that it sets.
extern std::function<int(const std::string& call, int file)> before;
/// Called after fsync, flock, linkat, renameat, fchown, fchmod and fsetxattr that went well.
extern std::function<void(const std::string& call, int file)> after;
/// Whether files need a name from the start.
extern bool needsName;
/// Whether pwrite stores half of what it is given.
extern bool writesAreShort;

/// Has every call of that name fail with `error`.
void Fail(const std::string& call, int error);
/// Everything as the system has it.
void Restore();

}  // namespace system_calls
