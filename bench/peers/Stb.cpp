// stb: no run-length codes, no icons; decodes to 8 bits a channel and writes 24 bits and PNG.
#include <stb/stb_image.h>
#include <stb/stb_image_write.h>

#include "Peer.h"

namespace bench {
namespace {

struct Free {
  void operator()(stbi_uc* pixels) const { stbi_image_free(pixels); }
};

class Stb : public Peer {
 public:
  [[nodiscard]] std::string Name() const override { return "stb"; }

  bool Load(const Bytes& file) override {
    loaded_.reset(
        stbi_load_from_memory(file.data(), static_cast<int>(file.size()), &width_, &height_, &channels_, 0));
    return loaded_ != nullptr;
  }
  bool Save(const std::string& path, Form form) override {
    if (form == Form::Bmp)
      return stbi_write_bmp(path.c_str(), width_, height_, channels_, loaded_.get()) != 0;
    return form == Form::Png &&
           stbi_write_png(path.c_str(), width_, height_, channels_, loaded_.get(), 0) != 0;
  }
  Bytes Pixels() override {
    const size_t count = static_cast<size_t>(width_) * static_cast<size_t>(height_);
    Bytes pixels;
    pixels.reserve(count * 4);
    const stbi_uc* pixel = loaded_.get();
    for (size_t i = 0; i < count; ++i, pixel += channels_) {
      pixels.insert(pixels.end(), {pixel[0], pixel[1], pixel[2], channels_ == 4 ? pixel[3] : stbi_uc{255}});
    }
    return pixels;
  }
  bool Identify(const std::string& path, int& width, int& height) override {
    int channels = 0;
    return stbi_info(path.c_str(), &width, &height, &channels) != 0;
  }

 private:
  std::unique_ptr<stbi_uc, Free> loaded_;
  int width_ = 0;
  int height_ = 0;
  int channels_ = 0;
};

}  // namespace

std::unique_ptr<Peer> MakeStb() {
  return std::make_unique<Stb>();
}

}  // namespace bench
