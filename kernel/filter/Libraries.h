// Where this library lies, and with it the libraries that belong to it.
#pragma once

#include <string>

#include "base/Contract.h"

namespace vxkrn {

/// The folder this library was loaded from, absolute and with its last slash; empty when that cannot be told.
[[nodiscard]] std::string OwnFolder();

}  // namespace vxkrn
