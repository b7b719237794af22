// Looks for the filter where VX_FILTER_PATH says, in the filters' folder beside the kernel library, and right
// beside it. The first file that is there decides: one that cannot be loaded is an error, not a reason to
// take another silently.
#include "filter/FilterLoader.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <cstdlib>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "base/Errors.h"
#include "filter/Libraries.h"
#include "vx/vx.h"

namespace vxkrn {
namespace {

constexpr const char* kFilterName = "vxfbmp.so.18";
/// GetDisplayDispatch(_DISDISPATCH*, tagHANDLE*&), the one entry point with a C++ name
constexpr const char* kDisplayEntry = "_Z18GetDisplayDispatchP12_DISDISPATCHRP9tagHANDLE";

enum class Kind : uint8_t { kNothing, kFile, kFolder };

Kind KindOf(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) return Kind::kNothing;
  return S_ISDIR(status.st_mode) ? Kind::kFolder : Kind::kFile;
}

std::vector<std::string> Candidates(const char* searchPath) {
  std::vector<std::string> candidates;
  std::string_view rest = searchPath == nullptr ? "" : searchPath;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(':'), rest.size());
    std::string path(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (path.empty()) continue;
    if (KindOf(path) == Kind::kFolder) path.append("/").append(kFilterName);
    candidates.push_back(std::move(path));
  }
  if (const std::string folder = OwnFolder(); !folder.empty()) {
    candidates.push_back(folder + VX_FILTER_SUBDIR "/" + kFilterName);
    candidates.push_back(folder + kFilterName);
  }
  return candidates;
}

template <class Function>
bool FindEntry(void* library, const char* name, Function* entry) {
  *entry = reinterpret_cast<Function>(dlsym(library, name));
  return *entry != nullptr;
}

int OpenFilter(const std::string& path, Filter* filter) {
  // A name without a slash would be searched for in the system's folders.
  const std::string name = path.find('/') == std::string::npos ? "./" + path : path;
  void* library = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr)
    return Fail({VX_NO_FILTER, VX_REASON_BAD_FILTER}, "the filter cannot be loaded: ", dlerror());
  Filter found;
  const char* missing = nullptr;
  if (!FindEntry(library, kDisplayEntry, &found.display)) missing = "GetDisplayDispatch";
  if (!FindEntry(library, "fltDeletePage", &found.deletePage)) missing = "fltDeletePage";
  if (!FindEntry(library, "fltSave", &found.save)) missing = "fltSave";
  if (!FindEntry(library, "fltLoad", &found.load)) missing = "fltLoad";
  if (!FindEntry(library, "fltInfo", &found.info)) missing = "fltInfo";
  if (missing != nullptr) {
    dlclose(library);
    return Fail({VX_NO_FILTER, VX_REASON_BAD_FILTER}, path,
                " is not a filter of this kernel: it has no function ", missing);
  }
  *filter = found;
  return STATUS_OK;
}

}  // namespace

int FindFilter(const char* searchPath, Filter* filter) {
  const std::vector<std::string> candidates = Candidates(searchPath);
  for (const std::string& path : candidates) {
    if (KindOf(path) == Kind::kFile) return OpenFilter(path, filter);
  }
  const int status = Fail({VX_NO_FILTER, VX_REASON_NO_FILTER}, "no filter was found; looked for ");
  const char* separator = "";
  for (const std::string& path : candidates) {
    Detail() << separator << path;
    separator = ", ";
  }
  return status;
}

int LoadFilter(const Filter** filter) {
  static std::mutex mutex;
  static Filter loaded;
  const std::scoped_lock lock(mutex);
  const int status =
      loaded.load != nullptr ? STATUS_OK : FindFilter(secure_getenv("VX_FILTER_PATH"), &loaded);
  *filter = &loaded;
  return status;
}

}  // namespace vxkrn
