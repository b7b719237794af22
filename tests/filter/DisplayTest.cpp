// Getting the display dispatch: every answer of the kernel, and who is left with the display library.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Rig.h"

namespace {

/// The kernel's side. Its display library is this record.
struct Host {
  std::vector<int> answers;  // of VX_GetDisDispatch, in turn
  bool hasLibrary = true;
  _DISDISPATCH* asked = nullptr;
  std::string log;
};
Host host;
tagHANDLE displayLibrary;

struct Outcome {
  const char* name;
  std::vector<int> answers;
  bool hasLibrary;
  int result;
  bool keepsLibrary;
  const char* log;
};

TEST(Display, EveryAnswerOfTheKernel) {
  constexpr int kNone = STATUS_NO_DISPLAY_LIBRARY;
  const Outcome outcomes[] = {
      {"at once", {STATUS_OK}, true, STATUS_OK, false, "ask "},
      {"loaded", {kNone, STATUS_OK}, true, STATUS_OK, true, "ask load VXDIS.so ask "},
      {"no library", {kNone}, false, STATUS_FAILURE, false, "ask load VXDIS.so "},
      {"refused twice", {kNone, kNone}, true, kNone, false, "ask load VXDIS.so ask free "},
      {"refused otherwise", {kNone, 0}, true, 0, false, "ask load VXDIS.so ask free "},
      {"another failure", {STATUS_NO_MEMORY}, true, STATUS_NO_MEMORY, false, "ask "},
      {"no failure, and not OK", {2}, true, 2, false, "ask "}};
  for (const Outcome& outcome : outcomes) {
    SCOPED_TRACE(outcome.name);
    host = Host();
    host.answers = outcome.answers;
    host.hasLibrary = outcome.hasLibrary;
    _DISDISPATCH dispatch{};
    HANDLE library = &displayLibrary;  // must not be taken for an answer
    EXPECT_EQ(TheFilter().display(&dispatch, library), outcome.result);
    EXPECT_EQ(library, outcome.keepsLibrary ? &displayLibrary : nullptr);
    EXPECT_EQ(host.log, outcome.log);
    EXPECT_EQ(host.asked, &dispatch);
  }
}

}  // namespace

extern "C" {

int VX_GetDisDispatch(_DISDISPATCH* dispatch) {
  host.log += "ask ";
  host.asked = dispatch;
  const int answer = host.answers.front();
  host.answers.erase(host.answers.begin());
  return answer;
}

HANDLE LoadLibrary(const char* fileName) {
  host.log += "load " + std::string(fileName) + " ";
  return host.hasLibrary ? &displayLibrary : nullptr;
}

int FreeLibrary(HANDLE library) {
  host.log += library == &displayLibrary ? "free " : "free something else ";
  return 1;
}
}
