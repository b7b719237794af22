// gdk-pixbuf: everything becomes 8 bits of red, green and blue, with alpha or without; it saves 24 bits and
// PNG, and shows one page of an icon.
#include <gdk-pixbuf/gdk-pixbuf.h>

#include "Peer.h"

namespace bench {
namespace {

struct Unref {
  void operator()(gpointer object) const { g_object_unref(object); }
};
using Pixbuf = std::unique_ptr<GdkPixbuf, Unref>;

class GdkPixbufPeer : public Peer {
 public:
  [[nodiscard]] std::string Name() const override { return "gdk-pixbuf"; }

  bool Load(const Bytes& file) override {
    made_.reset();
    loaded_.reset();
    const std::unique_ptr<GdkPixbufLoader, Unref> loader(gdk_pixbuf_loader_new_with_type("bmp", nullptr));
    if (loader == nullptr) return false;
    const bool isRead = gdk_pixbuf_loader_write(loader.get(), file.data(), file.size(), nullptr) != FALSE;
    const bool isWhole = gdk_pixbuf_loader_close(loader.get(), nullptr) != FALSE;
    GdkPixbuf* pixbuf = gdk_pixbuf_loader_get_pixbuf(loader.get());
    if (!isRead || !isWhole || pixbuf == nullptr) return false;
    loaded_.reset(GDK_PIXBUF(g_object_ref(pixbuf)));
    return true;
  }
  bool Expand() override {
    made_.reset(gdk_pixbuf_add_alpha(loaded_.get(), FALSE, 0, 0, 0));
    return made_ != nullptr;
  }
  bool Save(const std::string& path, Form form) override {
    if (form == Form::BmpRle) return false;
    return gdk_pixbuf_save(loaded_.get(), path.c_str(), form == Form::Png ? "png" : "bmp", nullptr,
                           nullptr) != FALSE;
  }
  Bytes Pixels() override {
    GdkPixbuf* from = made_ != nullptr ? made_.get() : loaded_.get();
    const int width = gdk_pixbuf_get_width(from);
    const int height = gdk_pixbuf_get_height(from);
    const int channels = gdk_pixbuf_get_n_channels(from);
    const guint8* row = gdk_pixbuf_read_pixels(from);
    Bytes pixels;
    pixels.reserve(static_cast<size_t>(width) * static_cast<size_t>(height) * 4);
    for (int y = 0; y < height; ++y, row += gdk_pixbuf_get_rowstride(from)) {
      for (int x = 0; x < width; ++x) {
        const guint8* pixel = row + x * channels;
        pixels.insert(pixels.end(), {pixel[0], pixel[1], pixel[2], channels == 4 ? pixel[3] : guint8{255}});
      }
    }
    return pixels;
  }
  bool Identify(const std::string& path, int& width, int& height) override {
    return gdk_pixbuf_get_file_info(path.c_str(), &width, &height) != nullptr;
  }

 private:
  Pixbuf loaded_;
  Pixbuf made_;
};

}  // namespace

std::unique_ptr<Peer> MakeGdkPixbuf() {
  return std::make_unique<GdkPixbufPeer>();
}

}  // namespace bench
