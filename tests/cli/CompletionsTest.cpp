// The completions as bash sees them, which is here wherever these tests are; what the other shells get comes
// from the same table.
#include <gtest/gtest.h>

#include "Shell.h"

namespace {

struct Typed {
  const char* words;  ///< for bash, the last one being typed
  const char* offered;
};

class CompletionsTest : public testing::Test {
 protected:
  /// What the shell would offer, on one line.
  std::string Complete(const std::string& words) const {
    return shell
        .Run("vxbmp completions bash > script && bash -c " +
             Quoted("source ./script; complete -p vxbmp | grep -q -e '-F _vxbmp vxbmp' || exit\n"
                    "COMP_WORDS=(vxbmp " +
                    words +
                    "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n"
                    "_vxbmp; echo \"${COMPREPLY[*]}\""))
        .out;
  }

  Shell shell;
};

TEST_F(CompletionsTest, OffersWhatCanStandThere) {
  shell.Write("auto.pal", "");
  shell.Write("add me.ico", "");
  const Typed table[] = {
      {"co", "convert completions"},
      {"help pa", "pages"},
      {"--memory-limit pages c", "convert completions"},
      {"pages ad", "add add me.ico"},
      {"pages --json ex", "extract"},
      {"pages add x.ico --b", "--bits"},
      {"pages add --bits ''", "1 4 8 24"},
      {"convert a b --to p", "png-icon png"},
      {"convert a b --to = o", "os2 os2v2"},
      {"convert a b --to =", "bmp rle os2 os2v2 ico cur png-icon png"},
      {"convert --palette au", "auto auto.pal"},
      {"convert --band ''", ""},
      {"info pages ''", ""},
      {"info --j", "--json"},
      {"pages compact --mem", "--memory-limit"},
      {"completions ''", "bash zsh fish"},
  };
  for (const Typed& typed : table)
    EXPECT_EQ(Complete(typed.words), std::string(typed.offered) + "\n") << typed.words;
}

TEST_F(CompletionsTest, RefusesOtherShells) {
  const Outcome outcome = shell.Run("vxbmp completions tcsh");
  EXPECT_EQ(outcome.code, 2);
  EXPECT_NE(outcome.err.find("bash, zsh and fish"), std::string::npos) << outcome.err;
}

}  // namespace
