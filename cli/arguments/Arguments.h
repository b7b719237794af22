// What commands take, said once: for the parser, for the help and for the shells that complete it. Says
// nothing of how a command line is parsed.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "failures/Errors.h"

namespace cli {

/// How many values an argument with a list of them takes.
enum class Takes {
  Many,      ///< as many as there are
  OneATime,  ///< one after the option's name, which may be given again
  One
};

/// An argument in the words of the help.
struct Argument {
  std::string name;  ///< "--page", "-h,--help"; "FILE", without dashes, is known by its place
  std::string help;
  std::string value{};    ///< what the help calls the value of an option: "N", "none|diffuse"
  std::string offers{};   ///< what shells offer, with | between, where `value` does not say: "1|4|8"
  std::string section{};  ///< the heading that it stands under in the help; "" for the usual one
  std::string implied{};  ///< the value where the name stands alone; any other stands behind = then
  std::string needs{};    ///< the option, declared before, that this one makes no sense without
  bool isRequired = false;
  Takes takes = Takes::Many;  ///< for lists
};

/// An argument as it was declared, with one target; without any where the parser itself acts on it.
struct Declared {
  Argument argument;
  bool* flag = nullptr;
  std::string* value = nullptr;
  std::vector<std::string>* values = nullptr;
  std::string version{};  ///< printed where it is given

  [[nodiscard]] bool IsPositional() const { return !argument.name.starts_with('-'); }
  [[nodiscard]] bool HasValue() const { return value != nullptr || values != nullptr; }
  /// Whether it takes several values in a row.
  [[nodiscard]] bool IsMany() const { return values != nullptr && argument.takes == Takes::Many; }
};

struct CommandWords {
  std::string name;
  std::string summary;
  std::string details;       ///< shown below the options
  std::string essentials{};  ///< names of options, as declared, that brief help shows; with spaces between
};

/// Does the work once the arguments are parsed.
/// @throws UsageError, FileError, OutputClosed, vx::Error
using Action = std::function<ExitCode()>;

/// The option that asks for more than brief help.
constexpr std::string_view kHelpAll = "--help-all";

/// The arguments of a command, and the commands below it.
class Arguments {
 public:
  /// With the help as its first option.
  explicit Arguments(const CommandWords& words, const Arguments* parent = nullptr);
  Arguments(const Arguments&) = delete;
  Arguments& operator=(const Arguments&) = delete;

  /// A flag of the program itself that prints the version and ends it.
  void AddVersion(const Argument& flag, const std::string& version);
  /// What is given is stored in `target`, which must stay where it is until all is parsed.
  void Add(const Argument& flag, bool& target);
  void Add(const Argument& argument, std::string& target);
  void Add(const Argument& argument, std::vector<std::string>& target);
  /// Two options, both declared, that cannot be given together.
  void Exclude(const std::string& one, const std::string& other) { exclusions_.emplace_back(one, other); }

  /// Adds a command below this one; its action is to be set.
  Arguments& AddCommand(const CommandWords& words) { return commands_.emplace_back(words, this); }
  void SetAction(Action action) { action_ = std::move(action); }
  /// Says what there is for those who give it more words than it takes.
  void PointElsewhere(std::string advice) { elsewhere_ = std::move(advice); }
  [[nodiscard]] const std::string& Elsewhere() const { return elsewhere_; }
  /// Puts text between the options and the details.
  void PutAboveDetails(const std::string& text) { words_.details.insert(0, text); }

  [[nodiscard]] const CommandWords& Words() const { return words_; }
  /// "pages delete"; "" for the program itself.
  [[nodiscard]] std::string Path() const;
  [[nodiscard]] const Arguments& Top() const { return parent_ == nullptr ? *this : parent_->Top(); }
  /// In the order of the help.
  [[nodiscard]] const std::vector<Declared>& All() const { return declared_; }
  [[nodiscard]] const std::vector<std::pair<std::string, std::string>>& Exclusions() const {
    return exclusions_;
  }
  [[nodiscard]] const std::deque<Arguments>& Commands() const { return commands_; }
  [[nodiscard]] std::deque<Arguments>& Commands() { return commands_; }
  [[nodiscard]] const Action& GetAction() const { return action_; }

 private:
  CommandWords words_;
  const Arguments* parent_;
  std::vector<Declared> declared_;
  std::vector<std::pair<std::string, std::string>> exclusions_;
  std::deque<Arguments> commands_;  // which stay where they are
  Action action_;
  std::string elsewhere_;
};

}  // namespace cli
