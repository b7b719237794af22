// The contract's library services. Must not know what the libraries are for.
#include "filter/Libraries.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <array>
#include <climits>
#include <exception>

namespace vxkrn {

std::string OwnFolder() {
  static const char anchor = 0;
  Dl_info info = {};
  void* map = nullptr;
  std::array<char, PATH_MAX> origin{};
  // The name by which it was loaded may be relative to a folder that the process has left since.
  if (dladdr1(&anchor, &info, &map, RTLD_DL_LINKMAP) == 0 || map == nullptr ||
      dlinfo(map, RTLD_DI_ORIGIN, origin.data()) != 0 || origin.front() != '/') {
    return {};
  }
  return std::string(origin.data()) + "/";
}

namespace {

bool IsThere(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0;
}

/// A name alone is looked for beside this library first. What is there is taken or is an error.
std::string Located(const std::string& name) {
  const std::string folder = name.find('/') == std::string::npos ? OwnFolder() : "";
  if (folder.empty()) return name;
  for (const char* place : {VX_PRIVATE_SUBDIR "/", ""}) {
    std::string path = folder;
    path.append(place).append(name);
    if (IsThere(path)) return path;
  }
  return name;
}

}  // namespace
}  // namespace vxkrn

HANDLE LoadLibrary(const char* fileName) {
  if (fileName == nullptr || *fileName == '\0') return nullptr;
  try {
    return static_cast<HANDLE>(dlopen(vxkrn::Located(fileName).c_str(), RTLD_NOW | RTLD_LOCAL));
  } catch (const std::exception&) {
    return nullptr;
  }
}

int FreeLibrary(HANDLE library) {
  return library != nullptr && dlclose(library) == 0 ? 1 : 0;
}
