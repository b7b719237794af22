// vxbmp completions: what makes shells complete vxbmp's own arguments.
#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "commands/Command.h"
#include "completions/Completions.h"
#include "streams/Output.h"
#include "words/Text.h"

namespace cli {
namespace {

struct Shell {
  const char* name;
  std::string (*write)(const std::vector<Place>&);
};

constexpr Shell kShells[] = {{"bash", BashScript}, {"zsh", ZshScript}, {"fish", FishScript}};

ExitCode Print(const Arguments& top, const std::string& name) {
  const auto* shell = std::find_if(std::begin(kShells), std::end(kShells),
                                   [&](const Shell& each) { return each.name == name; });
  if (shell == std::end(kShells)) {
    throw UsageError(
        fmt::format("there are completions for bash, zsh and fish, not for {}", Printable(name)));
  }
  PrintToStandardOutput(shell->write(PlacesOf(top)));
  return kExitOk;
}

}  // namespace

Action DeclareCompletions(Arguments& command) {
  auto shell = std::make_shared<std::string>();
  command.Add({.name = "SHELL", .help = "bash, zsh or fish", .offers = "bash|zsh|fish", .isRequired = true},
              *shell);
  return [&command, shell] { return Print(command.Top(), *shell); };
}

}  // namespace cli
