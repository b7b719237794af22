// Functions of the system that the test program stands in for, so that they can fail or be where a process
// ends.
#pragma once

#include <functional>

namespace system_calls {

/// Called for every fsync: the last step before a file gets its name.
extern std::function<int()> insteadOfFsync;
/// Called before every pwrite, with its number, from 1; -1 makes it fail.
extern std::function<int(int number)> beforeWrite;
/// Whether files need a name from the start.
extern bool needsName;

/// Everything as the system has it (but that nothing is ever stored for good), and counting from 1 again.
void Restore();

}  // namespace system_calls
