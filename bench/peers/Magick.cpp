// ImageMagick's library, which keeps 16 bits a channel: everything, as long as one waits.
#if __has_include(<wand/MagickWand.h>)
#include <wand/MagickWand.h>
#else
#include <MagickWand/MagickWand.h>
#endif

#include "Peer.h"

namespace bench {
namespace {

struct Destroy {
  void operator()(MagickWand* wand) const { DestroyMagickWand(wand); }
};
using Wand = std::unique_ptr<MagickWand, Destroy>;

class Magick : public Peer {
 public:
  Magick() { MagickWandGenesis(); }
  Magick(const Magick&) = delete;
  Magick& operator=(const Magick&) = delete;
  ~Magick() override {
    loaded_.reset();
    made_.reset();
    MagickWandTerminus();
  }
  [[nodiscard]] std::string Name() const override { return "ImageMagick"; }

  bool Load(const Bytes& file) override {
    made_.reset();
    expanded_.clear();
    loaded_.reset(NewMagickWand());
    return MagickReadImageBlob(loaded_.get(), file.data(), file.size()) != MagickFalse;
  }
  bool Expand() override {
    expanded_.resize(MagickGetImageWidth(loaded_.get()) * MagickGetImageHeight(loaded_.get()) * 4);
    return Export(loaded_.get(), expanded_);
  }
  bool Reduce(bool diffuse) override {
    made_.reset(CloneMagickWand(loaded_.get()));
#if MagickLibVersion >= 0x700
    const DitherMethod method = diffuse ? FloydSteinbergDitherMethod : NoDitherMethod;
#else
    const MagickBooleanType method = diffuse ? MagickTrue : MagickFalse;
#endif
    return MagickQuantizeImage(made_.get(), 256, sRGBColorspace, 0, method, MagickFalse) != MagickFalse;
  }
  bool Save(const std::string& path, Form form) override {
    MagickSetImageCompression(loaded_.get(), form == Form::BmpRle ? RLECompression : NoCompression);
    const std::string name = (form == Form::Png ? "PNG:" : "BMP3:") + path;
    return MagickWriteImage(loaded_.get(), name.c_str()) != MagickFalse;
  }
  Bytes Pixels() override {
    if (!expanded_.empty()) return expanded_;
    MagickWand* wand = made_ != nullptr ? made_.get() : loaded_.get();
    Bytes pixels(MagickGetImageWidth(wand) * MagickGetImageHeight(wand) * 4);
    if (!Export(wand, pixels)) return {};
    return pixels;
  }

  bool Identify(const std::string& path, int& width, int& height) override {
    const Wand wand(NewMagickWand());
    if (MagickPingImage(wand.get(), path.c_str()) == MagickFalse) return false;
    width = static_cast<int>(MagickGetImageWidth(wand.get()));
    height = static_cast<int>(MagickGetImageHeight(wand.get()));
    return true;
  }
  int ListPages(const std::string& path) override {
    const Wand wand(NewMagickWand());
    if (MagickPingImage(wand.get(), ("ICO:" + path).c_str()) == MagickFalse) return 0;
    return static_cast<int>(MagickGetNumberImages(wand.get()));
  }

 private:
  static bool Export(MagickWand* wand, Bytes& rgba) {
    return MagickExportImagePixels(wand, 0, 0, MagickGetImageWidth(wand), MagickGetImageHeight(wand), "RGBA",
                                   CharPixel, rgba.data()) != MagickFalse;
  }

  Wand loaded_;
  Wand made_;
  Bytes expanded_;
};

}  // namespace

std::unique_ptr<Peer> MakeMagick() {
  return std::make_unique<Magick>();
}

}  // namespace bench
