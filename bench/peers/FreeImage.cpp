// FreeImage: bitmaps of every depth, RLE8 when it saves, PNG, icons; its 32 bits are blue, green, red, alpha.
#include <FreeImage.h>

#include "Peer.h"

namespace bench {
namespace {

struct Unload {
  void operator()(FIBITMAP* bitmap) const { FreeImage_Unload(bitmap); }
};
using Picture = std::unique_ptr<FIBITMAP, Unload>;

class FreeImage : public Peer {
 public:
  [[nodiscard]] std::string Name() const override { return "FreeImage"; }

  bool Load(const Bytes& file) override {
    made_.reset();
    FIMEMORY* memory = FreeImage_OpenMemory(const_cast<BYTE*>(file.data()), static_cast<DWORD>(file.size()));
    loaded_.reset(FreeImage_LoadFromMemory(FIF_BMP, memory, 0));
    FreeImage_CloseMemory(memory);
    return loaded_ != nullptr;
  }
  bool Expand() override {
    made_.reset(FreeImage_ConvertTo32Bits(loaded_.get()));
    return made_ != nullptr;
  }
  bool Reduce(bool diffuse) override {
    if (diffuse) return false;
    made_.reset(FreeImage_ColorQuantize(loaded_.get(), FIQ_WUQUANT));
    return made_ != nullptr;
  }
  bool Save(const std::string& path, Form form) override {
    const FREE_IMAGE_FORMAT format = form == Form::Png ? FIF_PNG : FIF_BMP;
    const int flags = form == Form::BmpRle ? BMP_SAVE_RLE : 0;
    return FreeImage_Save(format, loaded_.get(), path.c_str(), flags) != FALSE;
  }
  Bytes Pixels() override {
    const Picture bgra(FreeImage_ConvertTo32Bits(made_ != nullptr ? made_.get() : loaded_.get()));
    if (bgra == nullptr) return {};
    const unsigned width = FreeImage_GetWidth(bgra.get());
    const unsigned height = FreeImage_GetHeight(bgra.get());
    Bytes pixels;
    pixels.reserve(size_t{width} * height * 4);
    for (unsigned y = height; y-- > 0;) {
      const BYTE* row = FreeImage_GetScanLine(bgra.get(), static_cast<int>(y));
      for (unsigned x = 0; x < width; ++x, row += 4) {
        pixels.insert(pixels.end(),
                      {row[FI_RGBA_RED], row[FI_RGBA_GREEN], row[FI_RGBA_BLUE], row[FI_RGBA_ALPHA]});
      }
    }
    return pixels;
  }

  bool Identify(const std::string& path, int& width, int& height) override {
    const Picture header(FreeImage_Load(FIF_BMP, path.c_str(), FIF_LOAD_NOPIXELS));
    if (header == nullptr) return false;
    width = static_cast<int>(FreeImage_GetWidth(header.get()));
    height = static_cast<int>(FreeImage_GetHeight(header.get()));
    return true;
  }
  int ListPages(const std::string& path) override {
    FIMULTIBITMAP* icon =
        FreeImage_OpenMultiBitmap(FIF_ICO, path.c_str(), FALSE, TRUE, FALSE, FIF_LOAD_NOPIXELS);
    if (icon == nullptr) return 0;
    const int count = FreeImage_GetPageCount(icon);
    int sized = 0;
    for (int i = 0; i < count; ++i) {
      FIBITMAP* page = FreeImage_LockPage(icon, i);
      if (page == nullptr) continue;
      if (FreeImage_GetWidth(page) > 0) ++sized;
      FreeImage_UnlockPage(icon, page, FALSE);
    }
    FreeImage_CloseMultiBitmap(icon, 0);
    return sized;
  }

 private:
  Picture loaded_;
  Picture made_;
};

}  // namespace

std::unique_ptr<Peer> MakeFreeImage() {
  return std::make_unique<FreeImage>();
}

}  // namespace bench
