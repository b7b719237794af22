// Bitmaps that say what their colours look like. All of them exchange red and blue, so that nobody who looks
// at what becomes of them can miss it.
#include <string_view>

#include "samples/ColorProfile.h"
#include "samples/Families.h"
#include "samples/Headers.h"

namespace samples {
namespace {

constexpr int kWidth = 61;
constexpr int kHeight = 20;

constexpr uint32_t kLinked = 0x4C494E4B;
constexpr uint32_t kEmbedded = 0x4D424544;

void Append32BigEndian(Bytes& bytes, uint32_t value) {
  Append(bytes, {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
                 static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)});
}

void AppendText(Bytes& bytes, std::string_view text) {
  bytes.insert(bytes.end(), text.begin(), text.end());
}

void Put32(Bytes& bytes, size_t at, uint32_t value) {
  Bytes word;
  Append32(word, value);
  std::copy(word.begin(), word.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

Bytes HeaderOf(uint32_t size, uint32_t colorSpace) {
  ImageHeader header;
  header.size = size;
  header.width = kWidth;
  header.height = kHeight;
  header.bits = 24;
  Bytes bytes = Encode(header);
  Put32(bytes, 56, colorSpace);
  return bytes;
}

/// The profile, or its name, follows the pixels.
Sample WithProfile(std::string name, std::string title, std::string_view label, uint32_t kind,
                   const Bytes& profile) {
  const Picture picture = ColorWheel(kWidth, kHeight, label);
  const Bytes pixels = Rows24(picture);
  Bytes header = HeaderOf(124, kind);
  Put32(header, 112, 124 + Size32(pixels));
  Put32(header, 116, Size32(profile));
  Bytes file = BitmapFile(header, {}, pixels);
  Append(file, profile);
  return MakeSample(std::move(name), std::move(title), file, picture);
}

/// Endpoints of sRGB, blue's first, as parts of 2^30.
Sample Calibrated() {
  constexpr uint32_t kEnds[] = {0x0B8D4FDF, 0x049EECC0, 0x3CD35A86, 0x16E2EB1C, 0x2DC5D639,
                                0x07A120A5, 0x1A64C2F8, 0x0D9B3D08, 0x013C36F1};
  const Picture picture = ColorWheel(kWidth, kHeight, "CAL");
  Bytes header = HeaderOf(108, 0);
  for (size_t i = 0; i < 9; ++i) Put32(header, 60 + 4 * i, kEnds[i]);
  for (size_t i = 0; i < 3; ++i) Put32(header, 96 + 4 * i, 0x00023333);  // 2.2
  return MakeSample("win-v4-calibrated.bmp", "Windows bitmap, header of 108 bytes, calibrated colours",
                    BitmapFile(header, {}, Rows24(picture)), picture);
}

}  // namespace

Bytes SwappingProfile() {
  constexpr uint32_t kTags = 7;
  constexpr uint32_t kColumns = 128 + 4 + kTags * 12;
  constexpr uint32_t kCurve = kColumns + 4 * 20;
  Bytes bytes;
  Append32BigEndian(bytes, kCurve + 32);
  Append32BigEndian(bytes, 0);
  Append32BigEndian(bytes, 0x04000000);
  AppendText(bytes, "mntrRGB XYZ ");
  bytes.resize(36);
  AppendText(bytes, "acsp");
  bytes.resize(68);
  for (const uint32_t white : {0xF6D6U, 0x10000U, 0xD32DU}) Append32BigEndian(bytes, white);
  bytes.resize(128);
  Append32BigEndian(bytes, kTags);
  uint32_t at = kColumns;
  for (const std::string_view name : {"wtpt", "rXYZ", "gXYZ", "bXYZ"}) {
    AppendText(bytes, name);
    Append32BigEndian(bytes, at);
    Append32BigEndian(bytes, 20);
    at += 20;
  }
  for (const std::string_view name : {"rTRC", "gTRC", "bTRC"}) {
    AppendText(bytes, name);
    Append32BigEndian(bytes, kCurve);
    Append32BigEndian(bytes, 32);
  }
  // White of D50, then blue, green and red of sRGB as they look under it.
  constexpr uint32_t kLights[][3] = {{0xF6D6, 0x10000, 0xD32D},
                                     {0x24A0, 0x0F84, 0xB6CF},
                                     {0x6299, 0xB785, 0x18DA},
                                     {0x6FA2, 0x38F5, 0x0390}};
  for (const auto& light : kLights) {
    AppendText(bytes, "XYZ ");
    Append32BigEndian(bytes, 0);
    for (const uint32_t part : light) Append32BigEndian(bytes, part);
  }
  AppendText(bytes, "para");
  Append32BigEndian(bytes, 0);
  Append32BigEndian(bytes, 0x00030000);  // a line, then a power
  for (const uint32_t part : {0x26666U, 0xF2A7U, 0x0D59U, 0x13D0U, 0x0A5BU}) Append32BigEndian(bytes, part);
  return bytes;
}

std::vector<Sample> ColorSamples() {
  Bytes path;
  AppendText(path, "C:\\profiles\\display.icc");
  path.push_back(0);
  return {WithProfile("win-v5-profile.bmp", "Windows bitmap, header of 124 bytes, a colour profile in it",
                      "ICC", kEmbedded, SwappingProfile()),
          WithProfile("win-v5-linked-profile.bmp",
                      "Windows bitmap, header of 124 bytes, names a colour profile", "LINK", kLinked, path),
          Calibrated()};
}

}  // namespace samples
