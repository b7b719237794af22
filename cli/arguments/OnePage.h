// Which page of a file, and how it is loaded: --page, --allow-truncated, --alpha, --as-filter, --srgb, and
// what people ought to know about either. Some commands may also take all pages.
#pragma once

#include <optional>
#include <string>
#include <vx/image.hpp>

#include "arguments/Arguments.h"
#include "words/Numbers.h"

namespace cli {

class OnePage {
 public:
  /// What becomes of the page once it is loaded.
  enum class Then {
    kShown,
    kSaved,
    kSavedEach,  ///< of each of many files
    kCompared    ///< with that of another file, all pages unless one is named
  };

  /// Adds the options to a command. The object must stay where it is until the arguments are parsed.
  void Declare(Arguments& command, Then then);

  /// What holds whatever the file; its page is 1 until one is chosen. @throws UsageError
  [[nodiscard]] vx::LoadOptions Options() const;
  /// Sets the page that was asked for, which may depend on what the file has. @throws vx::Error
  void ChooseFrom(const vx::Source& source, vx_load_options& options) const;

  /// Whether a page was named, or all were.
  [[nodiscard]] bool WasGiven() const { return !page_.empty(); }
  /// Whether all pages are meant by name.
  [[nodiscard]] bool MeansAll() const;

  /// Whether the page is to be saved without its alpha.
  [[nodiscard]] bool DropsAlpha() const;

  /// What rows become that the file has not; nothing where they stay as the library makes them up.
  /// @throws UsageError
  [[nodiscard]] std::optional<Rgba> Missing() const;

  /// Tells those who named no page that there are more than the first.
  void RemarkOnOthers(const vx::Source& source, const std::string& file) const;

 private:
  [[nodiscard]] bool IsSaved() const { return then_ == Then::kSaved || then_ == Then::kSavedEach; }
  [[nodiscard]] bool MayMeanAll() const { return then_ != Then::kShown; }

  std::string page_;
  bool allowTruncated_ = false;
  std::string missing_;
  bool asFilter_ = false;
  bool toSrgb_ = false;
  Then then_ = Then::kShown;
  std::string alpha_;
};

}  // namespace cli
