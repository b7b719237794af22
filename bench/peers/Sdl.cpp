// SDL 2: loads and saves bitmaps; 1 and 4 bits become 8. Knows neither PNG nor icons, and looks at no file
// without decoding it.
#include <SDL.h>

#include <cstring>

#include "Peer.h"

namespace bench {
namespace {

struct FreeSurface {
  void operator()(SDL_Surface* surface) const { SDL_FreeSurface(surface); }
};
using Surface = std::unique_ptr<SDL_Surface, FreeSurface>;

class Sdl : public Peer {
 public:
  [[nodiscard]] std::string Name() const override { return "SDL2"; }

  bool Load(const Bytes& file) override {
    made_.reset();
    loaded_.reset(SDL_LoadBMP_RW(SDL_RWFromConstMem(file.data(), static_cast<int>(file.size())), 1));
    return loaded_ != nullptr;
  }
  bool Expand() override {
    made_.reset(SDL_ConvertSurfaceFormat(loaded_.get(), SDL_PIXELFORMAT_RGBA32, 0));
    return made_ != nullptr;
  }
  bool Reduce(bool diffuse) override {
    if (diffuse) return false;
    made_.reset(SDL_ConvertSurfaceFormat(loaded_.get(), SDL_PIXELFORMAT_INDEX8, 0));
    return made_ != nullptr;
  }
  bool Save(const std::string& path, Form form) override {
    return form == Form::Bmp && SDL_SaveBMP(loaded_.get(), path.c_str()) == 0;
  }
  Bytes Pixels() override {
    SDL_Surface* const from = made_ != nullptr ? made_.get() : loaded_.get();
    const Surface rgba(SDL_ConvertSurfaceFormat(from, SDL_PIXELFORMAT_RGBA32, 0));
    if (rgba == nullptr) return {};
    const auto rowBytes = static_cast<size_t>(rgba->w) * 4;
    Bytes pixels(rowBytes * static_cast<size_t>(rgba->h));
    for (size_t y = 0; y < static_cast<size_t>(rgba->h); ++y) {
      const auto* const row =
          static_cast<const uint8_t*>(rgba->pixels) + y * static_cast<size_t>(rgba->pitch);
      std::memcpy(pixels.data() + y * rowBytes, row, rowBytes);
    }
    return pixels;
  }

 private:
  Surface loaded_;
  Surface made_;
};

}  // namespace

std::unique_ptr<Peer> MakeSdl() {
  return std::make_unique<Sdl>();
}

}  // namespace bench
