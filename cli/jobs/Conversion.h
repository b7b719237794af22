// A picture out of one file into another, with everything that there is to say about it: what convert does
// once and batch many times over.
#pragma once

#include <optional>
#include <string>
#include <vector>
#include <vx/image.hpp>

#include "arguments/OnePage.h"
#include "streams/Input.h"

namespace cli {

/// How pictures are loaded and saved.
struct Conversion {
  vx::LoadOptions load;  ///< whose page counts, and whose raw says that IN is headerless
  vx::SaveOptions save;
  std::optional<Rgba> missing{};  ///< the colour of rows that are not there; nothing: as they are made up
  const OnePage* page = nullptr;  ///< what tells of the other pages; null: nobody does
};

/// What became of a picture. All of it has been reported.
struct Converted {
  std::optional<vx::Error> failure;
  std::vector<int> remarks;  ///< vx_remark_code, of loading and then of saving
};

/// Loads a picture from an opened file and saves it as `out`, whole or not at all; reports on both.
/// @param in the name that `input` was opened by @throws FileError, UsageError, OutputClosed
Converted ConvertPicture(Input& input, const std::string& in, const std::string& out,
                         const Conversion& conversion);

/// Reports what went wrong before there was a picture.
void ReportInputFailure(const vx::Error& error, const std::string& in, const Conversion& conversion);

}  // namespace cli
