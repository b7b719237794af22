#include "Samples.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>

namespace bench {
namespace {

size_t Words(int n) {
  return static_cast<size_t>(n);
}

uint32_t Hash(uint32_t x) {
  x = (x ^ (x >> 16)) * 0x7FEB352DU;
  x = (x ^ (x >> 15)) * 0x846CA68BU;
  return x ^ (x >> 16);
}

void Put(Bytes& out, uint32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) out.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

struct Header {
  int bitsPerPixel;
  uint32_t compression = 0;
  uint32_t colors = 0;  ///< entries of the palette
  uint32_t dataSize = 0;
};

size_t StrideOf(int side, int bitsPerPixel) {
  return (Words(side) * Words(bitsPerPixel) + 31) / 32 * 4;
}

Bytes HeaderOf(int side, const Header& header) {
  const uint32_t masks = header.compression == 3 ? 12 : 0;
  const uint32_t start = 54 + header.colors * 4 + masks;
  Bytes out = {'B', 'M'};
  Put(out, start + header.dataSize, 4);
  Put(out, 0, 4);
  Put(out, start, 4);
  Put(out, 40, 4);
  Put(out, static_cast<uint32_t>(side), 4);
  Put(out, static_cast<uint32_t>(side), 4);
  Put(out, 1, 2);
  Put(out, static_cast<uint32_t>(header.bitsPerPixel), 2);
  Put(out, header.compression, 4);
  Put(out, header.dataSize, 4);
  Put(out, 3780, 4);
  Put(out, 3780, 4);
  Put(out, header.colors, 4);
  Put(out, 0, 4);
  for (const uint32_t mask : {0xF800U, 0x7E0U, 0x1FU}) {
    if (masks != 0) Put(out, mask, 4);
  }
  return out;
}

using Color = std::array<uint8_t, 3>;

/// Red, green and blue of an index: all different, and two of them black and white.
Color ColorOf(int index, int bitsPerPixel) {
  if (bitsPerPixel == 1) return index == 0 ? Color{0, 0, 0} : Color{255, 255, 255};
  const uint32_t spread = Hash(static_cast<uint32_t>(index));
  const auto level = index * 255 / ((1 << bitsPerPixel) - 1);
  return {static_cast<uint8_t>(level), static_cast<uint8_t>(spread >> 8), static_cast<uint8_t>(spread)};
}

void PutPalette(Bytes& file, int bitsPerPixel) {
  for (int i = 0; i < 1 << bitsPerPixel; ++i) {
    const Color color = ColorOf(i, bitsPerPixel);
    file.insert(file.end(), {color[2], color[1], color[0], 0});
  }
}

/// The index of a pixel of a drawing: runs of some length, and dots among them.
int DrawnIndex(int x, int y, int bitsPerPixel) {
  const uint32_t dot = Hash(static_cast<uint32_t>(y * 8191 + x));
  const uint32_t block = Hash(static_cast<uint32_t>((y / 24) * 4099 + (x + y / 3) / 24));
  return static_cast<int>((dot % 16 == 0 ? dot >> 8 : block >> 8) % (1U << bitsPerPixel));
}

}  // namespace

Scene::Scene(Look look, int width) : look_(look), width_(width), lattice_(1 << 16) {
  for (size_t i = 0; i < lattice_.size(); ++i) {
    lattice_[i] = static_cast<uint8_t>(Hash(static_cast<uint32_t>(i) + 77));
  }
}

void Scene::Row(int y, uint8_t* rgba) {
  if (look_ == Look::Photograph) {
    Photograph(y, rgba);
  } else {
    Screenshot(y, rgba);
  }
}

/// Light that changes slowly at several scales, a little colour, and the noise of a sensor.
void Scene::Photograph(int y, uint8_t* rgba) {
  const auto smooth = [&](int x, int size, int plane) {
    const auto at = [&](int i, int j) {
      return int{lattice_[Words((i * 311 + j * 17 + plane * 7919) & 0xFFFF)]};
    };
    const int i = x / size;
    const int j = y / size;
    const int u = x % size;
    const int v = y % size;
    const int top = at(i, j) * (size - u) + at(i + 1, j) * u;
    const int bottom = at(i, j + 1) * (size - u) + at(i + 1, j + 1) * u;
    return (top * (size - v) + bottom * v) / (size * size);
  };
  for (int x = 0; x < width_; ++x) {
    const int light = (smooth(x, 256, 0) * 4 + smooth(x, 32, 1) * 3 + smooth(x, 8, 2)) / 8;
    const int hue = smooth(x, 128, 3) - 128;
    const uint32_t noise = Hash(static_cast<uint32_t>(y) * 65599U + static_cast<uint32_t>(x));
    for (int c = 0; c < 3; ++c) {
      const int grain =
          static_cast<int>(noise >> (8 * c) & 3) + static_cast<int>(noise >> (8 * c + 2) & 3) - 3;
      const int value = light + hue * (1 - c) / 3 + grain;
      rgba[x * 4 + c] = static_cast<uint8_t>(std::min(std::max(value, 0), 255));
    }
    rgba[x * 4 + 3] = 255;
  }
}

/// Windows on a desktop: flat areas, title bars that shade off, lines of letters from a set of forty.
void Scene::Screenshot(int y, uint8_t* rgba) const {
  for (int x = 0; x < width_; ++x) {
    const int column = x / 640;
    const int line = y % 480;
    const int inside = x % 640;
    Color color = {240, 240, 242};
    if (line < 28) {
      const auto shade = static_cast<uint8_t>(90 + line * 4);
      color = {shade, static_cast<uint8_t>(shade + 20), 220};
    } else if (inside < 120) {
      color = {static_cast<uint8_t>(210 - (y / 40 % 4) * 6), 218, 226};
    } else if (line % 16 < 11 && inside % 8 < 6 &&
               Hash(static_cast<uint32_t>(y / 16 * 131 + column)) % 5 != 0) {
      const uint32_t letter = Hash(static_cast<uint32_t>(y / 16 * 977 + x / 8)) % 40;
      const uint32_t form = Hash(letter * 64 + static_cast<uint32_t>(line % 16 / 2));
      if ((form >> (inside % 8) & 1) != 0) color = {30, 30, 34};
    }
    rgba[x * 4] = color[0];
    rgba[x * 4 + 1] = color[1];
    rgba[x * 4 + 2] = color[2];
    rgba[x * 4 + 3] = 255;
  }
}

Sample TrueColor(int side, int bitsPerPixel, Look look) {
  const size_t stride = StrideOf(side, bitsPerPixel);
  const int bytes = bitsPerPixel / 8;
  Sample sample{HeaderOf(side, {bitsPerPixel, 0, 0, static_cast<uint32_t>(stride * Words(side))}),
                Bytes(Words(side) * Words(side) * 4), side, side};
  const size_t start = sample.file.size();
  sample.file.resize(start + stride * Words(side));
  Scene scene(look, side);
  for (int y = 0; y < side; ++y) {
    uint8_t* rgba = &sample.rgba[Words(y) * Words(side) * 4];
    uint8_t* row = &sample.file[start + Words(side - 1 - y) * stride];
    scene.Row(y, rgba);
    for (int x = 0; x < side; ++x) {
      for (int c = 0; c < bytes; ++c) row[x * bytes + c] = rgba[x * 4 + (c == 3 ? 3 : 2 - c)];
    }
  }
  return sample;
}

Sample Indexed(int side, int bitsPerPixel) {
  const size_t stride = StrideOf(side, bitsPerPixel);
  const auto colors = 1U << bitsPerPixel;
  Sample sample{HeaderOf(side, {bitsPerPixel, 0, colors, static_cast<uint32_t>(stride * Words(side))}),
                Bytes(Words(side) * Words(side) * 4), side, side};
  PutPalette(sample.file, bitsPerPixel);
  const size_t start = sample.file.size();
  sample.file.resize(start + stride * Words(side));
  const int perByte = 8 / bitsPerPixel;
  for (int y = 0; y < side; ++y) {
    uint8_t* rgba = &sample.rgba[Words(y) * Words(side) * 4];
    uint8_t* row = &sample.file[start + Words(side - 1 - y) * stride];
    for (int x = 0; x < side; ++x) {
      const int index = DrawnIndex(x, y, bitsPerPixel);
      const int shift = 8 - bitsPerPixel * (x % perByte + 1);
      row[x / perByte] = static_cast<uint8_t>(row[x / perByte] | index << shift);
      const Color color = ColorOf(index, bitsPerPixel);
      std::copy(color.begin(), color.end(), rgba + x * 4);
      rgba[x * 4 + 3] = 255;
    }
  }
  return sample;
}

Sample HighColor(int side, bool has565) {
  const size_t stride = StrideOf(side, 16);
  Sample sample = TrueColor(side, 24, Look::Photograph);
  sample.file = HeaderOf(side, {16, has565 ? 3U : 0U, 0, static_cast<uint32_t>(stride * Words(side))});
  const int greenBits = has565 ? 6 : 5;
  for (int y = side - 1; y >= 0; --y) {
    for (int x = 0; x < side; ++x) {
      uint8_t* pixel = &sample.rgba[(Words(y) * Words(side) + Words(x)) * 4];
      const int red = pixel[0] >> 3;
      const int green = pixel[1] >> (8 - greenBits);
      const int blue = pixel[2] >> 3;
      Put(sample.file, static_cast<uint32_t>(red << (5 + greenBits) | green << 5 | blue), 2);
      pixel[0] = static_cast<uint8_t>(red * 255 / 31);
      pixel[1] = static_cast<uint8_t>(green * 255 / ((1 << greenBits) - 1));
      pixel[2] = static_cast<uint8_t>(blue * 255 / 31);
    }
    sample.file.resize(sample.file.size() + stride - Words(side) * 2);
  }
  return sample;
}

namespace {

/// Codes of one row, and the indices that they mean.
class CodedRow {
 public:
  CodedRow(int bitsPerPixel, Bytes& codes, std::mt19937& random)
      : bits_(bitsPerPixel), codes_(codes), random_(random) {}

  void Run(int count, Bytes& indices) {
    const uint32_t value = random_() & 0xFF;
    codes_.insert(codes_.end(), {static_cast<uint8_t>(count), static_cast<uint8_t>(value)});
    for (int i = 0; i < count; ++i) indices.push_back(IndexAt(value, i));
  }
  void Literal(int count, Bytes& indices) {
    codes_.insert(codes_.end(), {0, static_cast<uint8_t>(count)});
    const int bytes = (count * bits_ + 7) / 8;
    for (int i = 0, pixel = 0; i < bytes + bytes % 2; ++i) {
      const uint32_t value = i < bytes ? random_() & 0xFF : 0;
      codes_.push_back(static_cast<uint8_t>(value));
      for (int n = 0; n < 8 / bits_ && pixel < count; ++n) indices.push_back(IndexAt(value, pixel++));
    }
  }

 private:
  [[nodiscard]] uint8_t IndexAt(uint32_t value, int pixel) const {
    if (bits_ == 8) return static_cast<uint8_t>(value);
    return static_cast<uint8_t>(pixel % 2 == 0 ? value >> 4 : value & 15U);
  }

  int bits_;
  Bytes& codes_;
  std::mt19937& random_;
};

}  // namespace

Sample RunLength(int side, int bitsPerPixel, int longestRun) {
  std::mt19937 random(7);
  Bytes codes;
  CodedRow row(bitsPerPixel, codes, random);
  Sample sample{{}, Bytes(Words(side) * Words(side) * 4), side, side};
  Bytes indices;
  for (int y = side - 1; y >= 0; --y) {
    indices.clear();
    while (indices.size() < Words(side)) {
      const int left = side - static_cast<int>(indices.size());
      const int count = std::min(1 + static_cast<int>(random() % static_cast<unsigned>(longestRun)), left);
      if (count >= 3 && random() % 2 == 0) {
        row.Literal(count, indices);
      } else {
        row.Run(count, indices);
      }
    }
    codes.insert(codes.end(), {0, static_cast<uint8_t>(y == 0 ? 1 : 0)});
    uint8_t* rgba = &sample.rgba[Words(y) * Words(side) * 4];
    for (int x = 0; x < side; ++x) {
      const Color color = ColorOf(indices[Words(x)], bitsPerPixel);
      std::copy(color.begin(), color.end(), rgba + x * 4);
      rgba[x * 4 + 3] = 255;
    }
  }
  sample.file = HeaderOf(side, {bitsPerPixel, bitsPerPixel == 8 ? 1U : 2U, 1U << bitsPerPixel,
                                static_cast<uint32_t>(codes.size())});
  PutPalette(sample.file, bitsPerPixel);
  sample.file.insert(sample.file.end(), codes.begin(), codes.end());
  return sample;
}

Bytes Icon(int pages) {
  constexpr uint32_t kBody = 40 + 64 + 128 + 64;
  Bytes file = {0, 0, 1, 0};
  Put(file, static_cast<uint32_t>(pages), 2);
  for (int i = 0; i < pages; ++i) {
    file.insert(file.end(), {16, 16, 16, 0, 1, 0, 4, 0});
    Put(file, kBody, 4);
    Put(file, 6 + 16 * static_cast<uint32_t>(pages) + kBody * static_cast<uint32_t>(i), 4);
  }
  for (int i = 0; i < pages; ++i) {
    for (const uint32_t word : {40U, 16U, 32U, 0x40001U, 0U, 128U + 64U, 0U, 0U, 0U, 0U}) Put(file, word, 4);
    PutPalette(file, 4);
    for (uint32_t n = 0; n < 128; ++n)
      file.push_back(static_cast<uint8_t>(Hash(n + 128U * static_cast<uint32_t>(i))));
    file.resize(file.size() + 64);
  }
  return file;
}

void WriteHuge(const std::string& path, int side) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "wb"), std::fclose);
  if (file == nullptr) return;
  const size_t stride = StrideOf(side, 24);
  const Bytes header = HeaderOf(side, {24, 0, 0, static_cast<uint32_t>(stride * Words(side))});
  std::fwrite(header.data(), 1, header.size(), file.get());
  Scene scene(Look::Photograph, side);
  Bytes rgba(Words(side) * 4);
  Bytes row(stride);
  for (int y = side - 1; y >= 0; --y) {
    scene.Row(y, rgba.data());
    for (int x = 0; x < side; ++x) {
      for (int c = 0; c < 3; ++c) row[Words(x * 3 + c)] = rgba[Words(x * 4 + 2 - c)];
    }
    std::fwrite(row.data(), 1, row.size(), file.get());
  }
}

std::string Difference(const Bytes& rgba, const Sample& sample, int tolerance) {
  if (rgba.size() != sample.rgba.size()) return "reads a picture of another size";
  for (size_t i = 0; i < rgba.size(); ++i) {
    if (i % 4 != 3 && std::abs(rgba[i] - sample.rgba[i]) > tolerance) return "reads another picture";
  }
  return "";
}

double MeanSquaredError(const Bytes& rgba, const Sample& sample) {
  if (rgba.size() != sample.rgba.size()) return -1;
  double sum = 0;
  for (size_t i = 0; i < rgba.size(); ++i) {
    const double difference = i % 4 == 3 ? 0 : rgba[i] - sample.rgba[i];
    sum += difference * difference;
  }
  return sum / (static_cast<double>(rgba.size()) * 3 / 4);
}

}  // namespace bench
