// Rows that a file has not, in a colour that says so.
#pragma once

#include <vx/image.hpp>

#include "words/Numbers.h"

namespace cli {

/// Gives the rows that are made up the colour. The picture then has 32 bits a pixel; one that is whole stays
/// as it is. @param options what it was loaded with @throws vx::Error
void FillMissingRows(const vx::Source& source, const vx_load_options& options, const Rgba& color,
                     vx::Bitmap* picture);

}  // namespace cli
