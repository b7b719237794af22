// Reading WxHxBITS, masks and palette files. What the numbers lead to is the library's business; here they
// only have to be numbers of the right kind.
#include "arguments/RawArguments.h"

#include <fmt/format.h>

#include <algorithm>
#include <climits>
#include <optional>
#include <span>
#include <string_view>

#include "failures/Errors.h"
#include "streams/Input.h"
#include "words/Numbers.h"
#include "words/Text.h"

namespace cli {
namespace {

bool IsDepth(int depth) {
  constexpr int kDepths[] = {1, 4, 8, 16, 24, 32};
  return std::find(std::begin(kDepths), std::end(kDepths), depth) != std::end(kDepths);
}

struct Coding {
  std::string_view name;
  int format;
  std::string_view depths;  // bits a pixel that it goes with, for messages
  bool (*fits)(int depth);
};

constexpr Coding kCodings[] = {
    {"", VX_FORMAT_RAW, "1, 4, 8, 16, 24 or 32", IsDepth},
    {"rle4", VX_FORMAT_RAW_RLE4, "4", [](int depth) { return depth == 4; }},
    {"rle8", VX_FORMAT_RAW_RLE8, "8", [](int depth) { return depth == 8; }},
    {"bitfields", VX_FORMAT_RAW_BITFIELDS, "16 or 32", [](int depth) { return depth == 16 || depth == 32; }}};
constexpr int kDeepestWithPalette = 8;

constexpr size_t kMaxEntries = 256;
constexpr size_t kEntrySize = 4;
// Colour tables of 3 bytes an entry, red first; the longer kind ends with a count and an index.
constexpr size_t kTripletFileSizes[] = {768, 772};

/// @return what stands before the first `separator`, which is taken off `rest` together with it.
std::string_view TakeUntil(std::string_view& rest, char separator) {
  const size_t end = std::min(rest.find(separator), rest.size());
  const std::string_view taken = rest.substr(0, end);
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return taken;
}

int ParseSide(std::string_view text, std::string_view shape) {
  if (const std::optional<int> number = ParseInt(text, 1)) return *number;
  throw UsageError(
      fmt::format("--raw {}: WIDTHxHEIGHTxBITS[:CODING] is needed, such as 640x480x24", Printable(shape)));
}

const Coding& ParseCoding(std::string_view name, std::string_view shape) {
  const auto* coding = std::find_if(std::begin(kCodings), std::end(kCodings),
                                    [&](const Coding& each) { return each.name == name; });
  if (coding != std::end(kCodings)) return *coding;
  throw UsageError(fmt::format("--raw {}: the coding is one of rle4, rle8 and bitfields", Printable(shape)));
}

void ParseShape(std::string_view shape, vx_raw& raw) {
  std::string_view codingName = shape;
  std::string_view sides = TakeUntil(codingName, ':');
  const Coding& coding = ParseCoding(codingName, shape);
  if (shape.ends_with(':')) throw UsageError(fmt::format("--raw {}: a coding is missing", Printable(shape)));
  raw.format = coding.format;
  raw.width = ParseSide(TakeUntil(sides, 'x'), shape);
  raw.height = ParseSide(TakeUntil(sides, 'x'), shape);
  raw.bits_per_pixel = ParseSide(sides, shape);
  if (!coding.fits(raw.bits_per_pixel)) {
    const std::string pixels = coding.name.empty() ? "pixels" : fmt::format("{} pixels", coding.name);
    throw UsageError(fmt::format("--raw {}: {} have {} bits", Printable(shape), pixels, coding.depths));
  }
}

uint32_t ParseOffset(std::string_view offset) {
  if (const std::optional<int> number = ParseInt(offset, 0)) return static_cast<uint32_t>(*number);
  throw UsageError(
      fmt::format("--offset {}: a whole number from 0 to {} is needed", Printable(offset), INT_MAX));
}

void ParseMasks(std::string_view masks, vx_raw& raw) {
  if (raw.bits_per_pixel != 16) throw UsageError("--masks is for pixels of 16 bits");
  std::string_view rest = masks;
  raw.has_masks = 1;
  for (uint32_t* mask : {&raw.red_mask, &raw.green_mask, &raw.blue_mask}) {
    const std::optional<uint32_t> number = ParseBits(TakeUntil(rest, ','));
    if (!number || *number > 0xFFFF) {
      throw UsageError(fmt::format("--masks {}: three masks of 16 bits are needed, such as 0xF800,0x7E0,0x1F",
                                   Printable(masks)));
    }
    *mask = *number;
  }
  if (!rest.empty() || masks.ends_with(','))
    throw UsageError(fmt::format("--masks {}: three masks are enough", Printable(masks)));
}

std::vector<uint8_t> FromTriplets(std::span<const uint8_t> file) {
  std::vector<uint8_t> palette;
  for (size_t i = 0; i < kMaxEntries; ++i) {
    const uint8_t* entry = file.data() + i * 3;
    palette.insert(palette.end(), {entry[2], entry[1], entry[0], 0});
  }
  return palette;
}

std::vector<uint8_t> ReadPalette(const std::string& path) {
  constexpr size_t kMaxSize = kMaxEntries * kEntrySize;
  std::vector<uint8_t> file = ReadUpTo(path.c_str(), kMaxSize + 1);
  const bool isTriplets = std::find(std::begin(kTripletFileSizes), std::end(kTripletFileSizes),
                                    file.size()) != std::end(kTripletFileSizes);
  if (isTriplets) return FromTriplets(file);
  if (!file.empty() && file.size() % kEntrySize == 0) return file;
  const std::string size =
      file.size() > kMaxSize ? fmt::format("more than {} bytes", kMaxSize) : ByteCount(file.size());
  throw FileError(
      VX_BAD_FORMAT, path,
      fmt::format("not a palette: {}, not 4 an entry for 1 to 256 entries, nor 768 or 772", size));
}

}  // namespace

void RawArguments::Declare(Arguments& command) {
  constexpr const char* kSection = "Headerless data";
  command.Add({.name = "--raw",
               .help = "take IN as pixel data of this size, depth and coding",
               .value = "WxHxBITS[:CODING]",
               .section = kSection},
              shape_);
  command.Add({.name = "--offset",
               .help = "byte of IN at which the pixels begin",
               .value = "BYTES",
               .section = kSection,
               .needs = "--raw"},
              offset_);
  palette_.Declare(command);
  command.Add({.name = "--masks",
               .help = "bits that hold red, green and blue",
               .value = "R,G,B",
               .section = kSection,
               .needs = "--raw"},
              masks_);
  command.Add(
      {.name = "--top-down", .help = "its first row is the top one", .section = kSection, .needs = "--raw"},
      topDown_);
}

std::unique_ptr<RawDescription> RawArguments::Describe() const {
  const std::string palettePath = palette_.File();
  if (shape_.empty()) {
    if (palettePath.empty()) return nullptr;
    throw UsageError(fmt::format("--palette {}: a file of colours goes with --raw; otherwise auto or fixed",
                                 Printable(palettePath)));
  }
  auto description = std::make_unique<RawDescription>();
  vx_raw& raw = description->raw_;
  ParseShape(shape_, raw);
  if (!offset_.empty()) raw.offset = ParseOffset(offset_);
  raw.orientation = topDown_ ? VX_TOP_DOWN : VX_BOTTOM_UP;
  if (!masks_.empty()) ParseMasks(masks_, raw);
  if (!palettePath.empty()) {
    if (raw.bits_per_pixel > kDeepestWithPalette) throw UsageError("--palette is for pixels of up to 8 bits");
    description->palette_ = ReadPalette(palettePath);
    raw.palette = description->palette_.data();
    raw.palette_count = static_cast<int>(description->palette_.size() / kEntrySize);
  }
  return description;
}

}  // namespace cli
