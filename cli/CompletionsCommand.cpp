// vxbmp completions: what makes shells complete vxbmp's own arguments.
#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "Command.h"
#include "Completions.h"
#include "Output.h"
#include "Text.h"

namespace cli {
namespace {

struct Shell {
  const char* name;
  std::string (*write)(const std::vector<Place>&);
};

constexpr Shell kShells[] = {{"bash", BashScript}, {"zsh", ZshScript}, {"fish", FishScript}};

ExitCode Print(const CLI::App& app, const std::string& name) {
  const auto* shell = std::find_if(std::begin(kShells), std::end(kShells),
                                   [&](const Shell& each) { return each.name == name; });
  if (shell == std::end(kShells)) {
    throw UsageError(
        fmt::format("there are completions for bash, zsh and fish, not for {}", Printable(name)));
  }
  PrintToStandardOutput(shell->write(PlacesOf(app)));
  return kExitOk;
}

}  // namespace

Action DeclareCompletions(CLI::App& command) {
  auto shell = std::make_shared<std::string>();
  command.add_option("SHELL", *shell, "bash, zsh or fish")->type_name("bash|zsh|fish")->required();
  return [&command, shell] { return Print(*command.get_parent(), *shell); };
}

}  // namespace cli
