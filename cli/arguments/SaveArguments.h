// The arguments that say what OUT is to be, and the options made of them.
#pragma once

#include <string>
#include <string_view>
#include <vx/image.hpp>

#include "arguments/Arguments.h"

namespace cli {

class SaveArguments {
 public:
  /// What the pictures become.
  enum class Into { kOneFile, kManyFiles };

  /// Adds the options to a command; for many files the format must be named. The object must stay where it is
  /// until the arguments are parsed.
  void Declare(Arguments& command, Into into = Into::kOneFile);

  /// @param out the file's name, from which the format is guessed where none was given
  /// @throws UsageError where the format cannot be told, or has not the depth asked for
  [[nodiscard]] vx::SaveOptions Describe(std::string_view out, vx_palette palette) const;

 private:
  void DescribeColors(vx::SaveOptions* options) const;

  std::string format_;
  std::string bits_;
  std::string dither_;
  std::string dpi_;
  bool is565_ = false;
  bool is1555_ = false;
  bool is4444_ = false;
};

/// How to save a file of that name where its name alone can say so. @throws UsageError where it does not
[[nodiscard]] vx::SaveOptions SaveOptionsByName(std::string_view out);

/// @return the ending that files of a format have, without its dot.
std::string_view EndingFor(int format);

/// @return what the formats have room for, a line each.
std::string FormatTable();

/// Says what saving costs the picture beyond what was asked for.
void RemarkOnLosses(std::string_view out, const vx_save_options& options, const vx_save_plan& plan);

/// The depth of a bitmap page. @throws UsageError
[[nodiscard]] int ParseIconDepth(const std::string& bits);

}  // namespace cli
