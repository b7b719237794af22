// The way to the display library: whether it is loaded, and the application's call that draws with it. Must
// not know how anything is drawn.
#include <dlfcn.h>

#include "base/Errors.h"
#include "base/Memory.h"
#include "bitmap/Picture.h"
#include "filter/FilterLoader.h"

namespace vxkrn {
namespace {

constexpr const char* kDisplayName = "VXDIS.so";

/// The display library once it is loaded; asking does not load it. From the first time that its functions are
/// handed out it stays: whoever gets them from a library that somebody else loaded holds nothing of it.
class LoadedDisplay {
 public:
  LoadedDisplay() noexcept
      : library_(dlopen(kDisplayName, RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD | RTLD_NODELETE)) {}
  ~LoadedDisplay() {
    if (library_ != nullptr) dlclose(library_);
  }
  LoadedDisplay(const LoadedDisplay&) = delete;
  LoadedDisplay& operator=(const LoadedDisplay&) = delete;

  [[nodiscard]] bool IsThere() const noexcept { return library_ != nullptr; }
  [[nodiscard]] decltype(&disGetDispatch) Entry() const noexcept {
    return reinterpret_cast<decltype(&disGetDispatch)>(dlsym(library_, "disGetDispatch"));
  }

 private:
  void* library_;
};

/// The display's functions, and the library where it was loaded for them.
class Display {
 public:
  Display() noexcept { dispatch_.StructSize = sizeof dispatch_; }
  ~Display() {
    if (library_ != nullptr) FreeLibrary(library_);
  }
  Display(const Display&) = delete;
  Display& operator=(const Display&) = delete;

  int Open(const Filter& filter) {
    const int status = filter.display(&dispatch_, library_);
    if (status == STATUS_OK) return status;
    if (status != STATUS_FAILURE)
      return Fail({status, VX_REASON_BAD_DISPLAY}, "the display library, ", kDisplayName, ", does not work");
    const char* why = dlerror();
    return Fail({VX_NO_DISPLAY_LIBRARY, VX_REASON_NO_DISPLAY}, "the display library, ", kDisplayName,
                ", cannot be loaded: ", why == nullptr ? "the system does not say why" : why);
  }
  [[nodiscard]] DISPLAYDRAW Draw() const noexcept { return dispatch_.Draw; }

 private:
  _DISDISPATCH dispatch_ = {};
  HANDLE library_ = nullptr;
};

int CheckOptions(const vx_draw_options& options) {
  if (options.columns < 1 || options.rows < 1) {
    return FailForArgument("there is no room in ", options.columns, " x ", options.rows, " characters");
  }
  if (options.mode < VX_DRAW_AUTO || options.mode > VX_DRAW_KITTY) {
    return FailForArgument("there is no way of drawing ", options.mode);
  }
  return VX_OK;
}

DISPLAYOPTIONS DisplayOptionsOf(const vx_draw_options& options) {
  return {sizeof(DISPLAYOPTIONS), options.mode,        options.columns, options.rows,
          options.cell_width,     options.cell_height, options.enlarge};
}

static_assert(VX_DRAW_AUTO == DISPLAY_AUTO && VX_DRAW_SYMBOLS == DISPLAY_SYMBOLS);
static_assert(VX_DRAW_SIXEL == DISPLAY_SIXEL && VX_DRAW_KITTY == DISPLAY_KITTY);

int Draw(const vx_bitmap& bitmap, const vx_draw_options& options, char** text, std::size_t* size) {
  int status = CheckOptions(options);
  if (status != VX_OK) return status;
  const Filter* filter = nullptr;
  status = LoadFilter(&filter);
  if (status != STATUS_OK) return status;
  Display display;
  status = display.Open(*filter);
  if (status != STATUS_OK) return status;
  _BITMAPHANDLE shown = bitmap.record;  // its count of accesses changes, the picture does not
  OwnedBitmap copy;
  if (bitmap.provider != nullptr) {
    status = CopyPixels(bitmap.record, &copy);
    if (status != STATUS_OK) return status;
    shown.Pixels = copy.Pixels;
  }
  const DISPLAYOPTIONS how = DisplayOptionsOf(options);
  unsigned int count = 0;
  status = display.Draw()(&shown, &how, text, &count);
  *size = count;
  if (status == STATUS_NO_MEMORY) return FailForMemory("drawing the picture", memory::LastRefusal());
  return status == STATUS_OK ? status : Fail({status, VX_REASON_BAD_DISPLAY}, "the picture cannot be drawn");
}

}  // namespace
}  // namespace vxkrn

int VX_GetDisDispatch(_DISDISPATCH* dispatch) {
  if (dispatch == nullptr || dispatch->StructSize != sizeof *dispatch) return STATUS_BAD_PARAMETER;
  const vxkrn::LoadedDisplay display;
  if (!display.IsThere()) return STATUS_NO_DISPLAY_LIBRARY;
  const auto entry = display.Entry();
  const bool isFilled = entry != nullptr && entry(dispatch) == STATUS_OK && dispatch->Draw != nullptr;
  return isFilled ? STATUS_OK : STATUS_NOT_SUPPORTED;
}

int vx_bitmap_draw(const vx_bitmap* bitmap, const vx_draw_options* options, char** text, size_t* size) {
  return vxkrn::Guarded([&]() -> int {
    if (text != nullptr) *text = nullptr;
    if (size != nullptr) *size = 0;
    if (bitmap == nullptr || text == nullptr || size == nullptr) {
      return vxkrn::FailForArgument("the bitmap and the places for text and size must be given");
    }
    constexpr vx_draw_options kDefault = VX_DRAW_OPTIONS_DEFAULT;
    return vxkrn::Draw(*bitmap, options == nullptr ? kDefault : *options, text, size);
  });
}
