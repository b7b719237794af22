// Qt 6: bitmaps, PNG and icons. It decodes 4 bits and run-length codes to 8 bits, and saves no run-length
// codes; at 8 bits it takes its own fixed colours.
#include <QBuffer>
#include <QCoreApplication>
#include <QImage>
#include <QImageReader>
#include <cstring>

#include "Peer.h"

namespace bench {
namespace {

class Qt6 : public Peer {
 public:
  Qt6() { QImageReader::setAllocationLimit(0); }
  [[nodiscard]] std::string Name() const override { return "Qt 6"; }

  bool Load(const Bytes& file) override {
    made_ = QImage();
    return loaded_.loadFromData(file.data(), static_cast<int>(file.size()), "BMP");
  }
  bool Expand() override {
    made_ = loaded_.convertToFormat(QImage::Format_RGBA8888);
    return !made_.isNull();
  }
  bool Reduce(bool diffuse) override {
    made_ =
        loaded_.convertToFormat(QImage::Format_Indexed8, diffuse ? Qt::DiffuseDither : Qt::ThresholdDither);
    return !made_.isNull();
  }
  bool Save(const std::string& path, Form form) override {
    if (form == Form::BmpRle) return false;
    return loaded_.save(QString::fromStdString(path), form == Form::Png ? "PNG" : "BMP");
  }
  Bytes Pixels() override {
    const QImage rgba = (made_.isNull() ? loaded_ : made_).convertToFormat(QImage::Format_RGBA8888);
    const auto rowBytes = static_cast<size_t>(rgba.width()) * 4;
    Bytes pixels(rowBytes * static_cast<size_t>(rgba.height()));
    for (int y = 0; y < rgba.height(); ++y) {
      std::memcpy(pixels.data() + static_cast<size_t>(y) * rowBytes, rgba.constScanLine(y), rowBytes);
    }
    return pixels;
  }

  bool Identify(const std::string& path, int& width, int& height) override {
    const QSize size = QImageReader(QString::fromStdString(path)).size();
    width = size.width();
    height = size.height();
    return size.isValid();
  }
  int ListPages(const std::string& path) override {
    QImageReader reader(QString::fromStdString(path), "ico");
    const int count = reader.imageCount();
    int sized = 0;
    for (int i = 0; i < count; ++i) {
      if (reader.jumpToImage(i) && reader.size().isValid()) ++sized;
    }
    return sized;
  }

 private:
  int argc_ = 1;
  char name_[8] = "vxbench";
  char* argv_[2] = {name_, nullptr};
  QCoreApplication application_{argc_, argv_};  // finds the plug-in for icons
  QImage loaded_;
  QImage made_;
};

}  // namespace

std::unique_ptr<Peer> MakeQt() {
  return std::make_unique<Qt6>();
}

}  // namespace bench
