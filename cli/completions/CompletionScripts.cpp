// The shells' languages. Each script first finds the place that the words so far lead to.
#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "completions/Completions.h"

namespace cli {
namespace {

std::string Joined(const std::vector<std::string>& words, const char* separator = " ") {
  return fmt::to_string(fmt::join(words, separator));
}

/// One word for the shell.
std::string Quoted(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

/// A pattern that matches a place and a word behind it.
std::string Step(const Place& place, std::string_view word) {
  return Quoted(fmt::format("{} {}", place.path, word));
}

/// Every step from a place to a command within it.
std::vector<std::string> StepsDown(const std::vector<Place>& places) {
  std::vector<std::string> steps;
  for (const Place& place : places) {
    for (const OfferedCommand& command : place.commands) steps.push_back(Step(place, command.name));
  }
  return steps;
}

bool TakesFiles(const Place& place) {
  return std::any_of(place.arguments.begin(), place.arguments.end(),
                     [](const OfferedArgument& argument) { return argument.value.isFile; });
}

/// Words that are neither options nor files.
std::vector<std::string> PlainWords(const Place& place) {
  std::vector<std::string> words;
  for (const OfferedCommand& command : place.commands) words.push_back(command.name);
  for (const OfferedArgument& argument : place.arguments) {
    words.insert(words.end(), argument.value.words.begin(), argument.value.words.end());
  }
  return words;
}

// ---- bash

constexpr const char* kBash = R"(# vxbmp in bash; "vxbmp completions bash" wrote this
_vxbmp() {{
  local place='' words='' options='' files='' i
  for ((i = 1; i < COMP_CWORD; ++i)); do
    case "$place ${{COMP_WORDS[i]}}" in
      {}) place="${{place:+$place }}${{COMP_WORDS[i]}}" ;;
      {}) i=$((i + 1)) ;;
    esac
  done
  local current=${{COMP_WORDS[COMP_CWORD]}} before=${{COMP_WORDS[COMP_CWORD - 1]}}
  if [[ $current == '=' ]]; then  # --option=, which is three words here
    current=''
  elif [[ $before == '=' ]]; then
    before=${{COMP_WORDS[COMP_CWORD - 2]}}
  fi
  case "$place $before" in
{}    *)
      case "$place" in
{}      esac
      if [[ $current == -* ]]; then words=$options files=''; fi
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
  if [[ -z $files ]]; then
    compopt +o default 2>/dev/null
  elif [[ -n $words ]]; then  # alone, files are bash's own business
    compopt -o filenames 2>/dev/null
    mapfile -t -O ${{#COMPREPLY[@]}} COMPREPLY < <(compgen -f -- "$current")
  fi
}}
complete -o default -F _vxbmp vxbmp
)";

std::string BashOffer(const std::vector<std::string>& words, bool isFile) {
  return fmt::format("words={} files={}", Quoted(Joined(words)), isFile ? "1" : "''");
}

}  // namespace

std::string BashScript(const std::vector<Place>& places) {
  std::vector<std::string> skipped;  // options whose value could pass for a command
  std::string values;
  std::string offers;
  for (const Place& place : places) {
    std::vector<std::string> names;
    for (const OfferedOption& option : place.options) {
      names.insert(names.end(), option.names.begin(), option.names.end());
      if (option.value.name.empty()) continue;
      std::vector<std::string> steps;
      for (const std::string& name : option.names) steps.push_back(Step(place, name));
      values += fmt::format("    {}) {} ;;\n", Joined(steps, " | "),
                            BashOffer(option.value.words, option.value.isFile));
      if (!place.commands.empty()) skipped.insert(skipped.end(), steps.begin(), steps.end());
    }
    offers += fmt::format("        {}) {} options={} ;;\n", Quoted(place.path),
                          BashOffer(PlainWords(place), TakesFiles(place)), Quoted(Joined(names)));
  }
  return fmt::format(kBash, Joined(StepsDown(places), " | "), Joined(skipped, " | "), values, offers);
}

// ---- zsh

namespace {

/// Text between the brackets and colons that have a meaning.
std::string ZshText(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (std::string_view(R"(\[]:)").find(c) != std::string_view::npos) escaped += '\\';
    escaped += c;
  }
  return escaped;
}

std::string ZshValue(const Value& value) {
  const std::string name = ZshText(value.name);
  const auto words = Joined(value.words);
  if (value.words.empty()) return fmt::format(":{}:{}", name, value.isFile ? "_files" : " ");
  if (!value.isFile) return fmt::format(":{}:({})", name, words);
  return fmt::format(":{0}:{{ compadd {1}; _files }}", name, words);
}

std::string ZshOption(const OfferedOption& option) {
  std::string described;
  for (const std::string& name : option.names) {
    const bool isLong = name.starts_with("--");
    const bool hasValue = !option.value.name.empty();
    described += " \\\n    " + Quoted(fmt::format("({}){}{}[{}]{}", Joined(option.names), name,
                                                  isLong && hasValue ? "=" : "", ZshText(option.summary),
                                                  hasValue ? ZshValue(option.value) : ""));
  }
  return described;
}

std::string ZshName(std::string path) {
  std::replace(path.begin(), path.end(), ' ', '_');
  return path.empty() ? "_vxbmp" : "_vxbmp_" + path;
}

/// What offers the first word behind a place and goes on from there.
std::string ZshBranches(const Place& place) {
  std::string text = "  case $state in\n    first)\n      local -a commands=(\n";
  for (const OfferedCommand& command : place.commands) {
    text += fmt::format("        {}\n", Quoted(command.name + ":" + ZshText(command.summary)));
  }
  text += "      )\n      _describe -t commands command commands\n";
  if (TakesFiles(place)) text += "      _files\n";
  text += "      ;;\n    rest)\n      case $line[1] in\n";
  for (const OfferedCommand& command : place.commands) {
    const std::string path = place.path.empty() ? command.name : place.path + " " + command.name;
    text += fmt::format("        {}) {} ;;\n", command.name, ZshName(path));
  }
  return text + "      esac\n      ;;\n  esac\n";
}

std::string ZshFunction(const Place& place) {
  std::string text = fmt::format(
      "\n{}() {{\n  local curcontext=$curcontext state line\n  typeset -A opt_args\n  _arguments -C",
      ZshName(place.path));
  for (const OfferedOption& option : place.options) text += ZshOption(option);
  if (!place.commands.empty()) {
    return text + " \\\n    '1: :->first' '*:: :->rest'\n" + ZshBranches(place) + "}\n";
  }
  for (const OfferedArgument& argument : place.arguments) {
    text += " \\\n    " + Quoted((argument.isMany ? "*" : "") + ZshValue(argument.value));
  }
  return text + "\n}\n";
}

}  // namespace

std::string ZshScript(const std::vector<Place>& places) {
  std::string script = "#compdef vxbmp\n# vxbmp in zsh; \"vxbmp completions zsh\" wrote this\n";
  for (const Place& place : places) script += ZshFunction(place);
  // When zsh loads the script as the function _vxbmp, it completes at once; when a user sources it, it
  // registers that function.
  return script + R"(
if [[ $funcstack[1] == _vxbmp ]]; then
  _vxbmp "$@"
else
  compdef _vxbmp vxbmp
fi
)";
}

// ---- fish

namespace {

constexpr const char* kFish = R"(# vxbmp in fish; "vxbmp completions fish" wrote this
function __vxbmp_at --description 'whether the words so far lead to this command of vxbmp'
    set -l place
    for word in (commandline -opc)[2..-1]
        switch "$place $word"
            case {}
                set place (string trim -- "$place $word")
        end
    end
    test "$place" = "$argv"
end
complete -c vxbmp -f
)";

std::string FishOption(const OfferedOption& option) {
  std::string text;
  for (const std::string& name : option.names) {
    text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
  }
  if (option.value.isFile) {
    text += " -rF";
  } else if (!option.value.name.empty()) {
    text += " -x";
  }
  if (!option.value.words.empty()) {
    text += " -a " + Quoted(Joined(option.value.words));
  }
  return text + " -d " + Quoted(option.summary);
}

}  // namespace

std::string FishScript(const std::vector<Place>& places) {
  std::string script = fmt::format(kFish, Joined(StepsDown(places)));
  for (const Place& place : places) {
    const std::string start = fmt::format(
        "complete -c vxbmp -n {}", Quoted(place.path.empty() ? "__vxbmp_at" : "__vxbmp_at " + place.path));
    for (const OfferedCommand& command : place.commands) {
      script += fmt::format("{} -a {} -d {}\n", start, command.name, Quoted(command.summary));
    }
    for (const OfferedArgument& argument : place.arguments) {
      if (argument.value.words.empty()) continue;
      script += fmt::format("{} -a {}\n", start, Quoted(Joined(argument.value.words)));
    }
    if (TakesFiles(place)) script += start + " -F\n";
    for (const OfferedOption& option : place.options) script += start + FishOption(option) + "\n";
  }
  return script;
}

}  // namespace cli
