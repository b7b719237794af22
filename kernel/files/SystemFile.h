// What stands behind the system backend's files, for those that open such a file in a way of their own and
// use the backend's other functions on it.
#pragma once

namespace vxkrn {

struct SystemFile {
  int descriptor;
};

}  // namespace vxkrn
