// The contract's library services. Must not know what the libraries are for.
#include "Libraries.h"

#include <dlfcn.h>

#include <exception>
#include <string_view>

namespace vxkrn {

std::string OwnFolder() {
  static const char anchor = 0;
  Dl_info info = {};
  if (dladdr(&anchor, &info) == 0 || info.dli_fname == nullptr) return {};
  const std::string_view path = info.dli_fname;
  return std::string(path.substr(0, path.rfind('/') + 1));
}

namespace {

void* Open(const char* path) {
  return dlopen(path, RTLD_NOW | RTLD_LOCAL);
}

/// A name alone is looked for beside this library first.
void* OpenByName(const std::string& name) {
  const std::string folder = name.find('/') == std::string::npos ? OwnFolder() : "";
  if (!folder.empty()) {
    for (const char* place : {VX_PRIVATE_SUBDIR "/", ""}) {
      std::string path = folder;
      path.append(place).append(name);
      if (void* library = Open(path.c_str())) return library;
    }
  }
  return Open(name.c_str());
}

}  // namespace
}  // namespace vxkrn

HANDLE LoadLibrary(const char* fileName) {
  if (fileName == nullptr) return nullptr;
  try {
    return static_cast<HANDLE>(vxkrn::OpenByName(fileName));
  } catch (const std::exception&) {
    return nullptr;
  }
}

int FreeLibrary(HANDLE library) {
  return library != nullptr && dlclose(library) == 0 ? 1 : 0;
}
