// What stands behind the system backend's files, for those that open such a file in a way of their own and
// use the backend's other functions on it.
#pragma once

#include <cstdint>

namespace vxkrn {

struct SystemFile {
  int descriptor;
  int64_t size = -1;  ///< of a file that is only read, as it was when it was opened; of others -1
};

}  // namespace vxkrn
