// Every field that files have, a table a structure: name, place, size, and what its value means. Inspection,
// checks and documents read these.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "format/Animation.h"
#include "format/BitmapLayout.h"
#include "format/IconDirectory.h"
#include "format/Os2Icon.h"
#include "vx/inspect.h"

namespace vxkrn {

/// How the words for a value are found.
enum class Meaning : uint8_t {
  kNothing,
  kDepth,        ///< bits per pixel
  kRowOrder,     ///< a height: rows from the top where it is negative
  kCompression,  ///< of either family
  kResolution,   ///< pixels per metre
  kColourCount,  ///< 0: as many as the depth can have
  kMask,         ///< the bits that are set
  kColourSpace,  ///< four characters, highest first, or a number
  kCoordinate,   ///< 2.30 fixed point
  kGamma,        ///< 16.16 fixed point
  kIntent,
  kIconType,
  kIconSide,  ///< 0: 256
  kPngColourType,
  kPngInterlace,
  kPngUnit,
  kPngGamma,  ///< in 100,000ths
  kJiffies,   ///< sixtieths of a second
  kAnimationFlags,
};

struct FieldRule {
  const char* name;
  uint8_t at;    ///< from the start of the part
  uint8_t size;  ///< bytes: 1, 2 or 4
  vx_field_form form = VX_FIELD_NUMBER;
  bool isSigned = false;
  Meaning meaning = Meaning::kNothing;
};

namespace fields {

constexpr FieldRule Byte(const char* name, uint32_t at, Meaning meaning = Meaning::kNothing) {
  return {name, static_cast<uint8_t>(at), 1, VX_FIELD_NUMBER, false, meaning};
}
constexpr FieldRule Word(const char* name, uint32_t at, Meaning meaning = Meaning::kNothing) {
  return {name, static_cast<uint8_t>(at), 2, VX_FIELD_NUMBER, false, meaning};
}
constexpr FieldRule Long(const char* name, uint32_t at, Meaning meaning = Meaning::kNothing) {
  return {name, static_cast<uint8_t>(at), 4, VX_FIELD_NUMBER, false, meaning};
}
constexpr FieldRule Signed(const char* name, uint32_t at, Meaning meaning = Meaning::kNothing) {
  return {name, static_cast<uint8_t>(at), 4, VX_FIELD_NUMBER, true, meaning};
}
constexpr FieldRule Bits(const char* name, uint32_t at, Meaning meaning = Meaning::kNothing) {
  return {name, static_cast<uint8_t>(at), 4, VX_FIELD_HEX, false, meaning};
}
constexpr FieldRule Characters(const char* name, uint32_t at, uint8_t count) {
  return {name, static_cast<uint8_t>(at), count, VX_FIELD_TEXT, false, Meaning::kNothing};
}

/// One table behind the other.
template <std::size_t First, std::size_t Second>
constexpr std::array<FieldRule, First + Second> Join(const std::array<FieldRule, First>& first,
                                                     const std::array<FieldRule, Second>& second) {
  std::array<FieldRule, First + Second> all{};
  std::copy(first.begin(), first.end(), all.begin());
  std::copy(second.begin(), second.end(), all.begin() + First);
  return all;
}

inline constexpr std::array kFileHeader = {
    Characters("signature", bmp::file_at::kSignature, 2), Long("file_size", bmp::file_at::kFileSize),
    Word("reserved_1", bmp::file_at::kReserved1), Word("reserved_2", bmp::file_at::kReserved2),
    Long("data_offset", bmp::file_at::kDataOffset)};

inline constexpr std::array kOs2IconHeader = {
    Characters("signature", bmp::file_at::kSignature, 2), Long("file_size", bmp::file_at::kFileSize),
    Word("hot_x", bmp::os2_icon_at::kHotX), Word("hot_y", bmp::os2_icon_at::kHotY),
    Long("data_offset", bmp::file_at::kDataOffset)};

inline constexpr std::array kArrayHeader = {
    Characters("signature", bmp::array_at::kSignature, 2), Long("size", bmp::array_at::kSize),
    Long("next", bmp::array_at::kNext), Word("screen_width", bmp::array_at::kScreenWidth),
    Word("screen_height", bmp::array_at::kScreenHeight)};

inline constexpr std::array kCoreHeader = {
    Long("header_size", bmp::core_at::kSize), Word("width", bmp::core_at::kWidth),
    Word("height", bmp::core_at::kHeight), Word("planes", bmp::core_at::kPlanes),
    Word("bits_per_pixel", bmp::core_at::kBitCount, Meaning::kDepth)};

/// What the headers of OS/2 2.x and of Windows have in common. Compression stands in the tables of each.
inline constexpr std::array kLongHeader = {
    Long("header_size", bmp::info_at::kSize),
    Signed("width", bmp::info_at::kWidth),
    Signed("height", bmp::info_at::kHeight, Meaning::kRowOrder),
    Word("planes", bmp::info_at::kPlanes),
    Word("bits_per_pixel", bmp::info_at::kBitCount, Meaning::kDepth),
    Long("compression", bmp::info_at::kCompression, Meaning::kCompression),
    Long("image_size", bmp::info_at::kImageSize),
    Signed("x_pixels_per_metre", bmp::info_at::kXPixelsPerMetre, Meaning::kResolution),
    Signed("y_pixels_per_metre", bmp::info_at::kYPixelsPerMetre, Meaning::kResolution),
    Long("colors_used", bmp::info_at::kColoursUsed, Meaning::kColourCount),
    Long("colors_important", bmp::info_at::kColoursImportant)};

inline constexpr std::array kOs2Header = Join(
    kLongHeader,
    std::array{
        Word("resolution_unit", bmp::os2_at::kResolutionUnit), Word("reserved", bmp::os2_at::kReserved),
        Word("recording", bmp::os2_at::kRecording), Word("rendering", bmp::os2_at::kRendering),
        Long("halftone_1", bmp::os2_at::kHalftone1), Long("halftone_2", bmp::os2_at::kHalftone2),
        Long("color_encoding", bmp::os2_at::kColourEncoding), Long("identifier", bmp::os2_at::kIdentifier)});

inline constexpr std::array kInfoHeader = Join(
    kLongHeader, std::array{Bits("red_mask", bmp::info_at::kMasks + bmp::masks_at::kRed, Meaning::kMask),
                            Bits("green_mask", bmp::info_at::kMasks + bmp::masks_at::kGreen, Meaning::kMask),
                            Bits("blue_mask", bmp::info_at::kMasks + bmp::masks_at::kBlue, Meaning::kMask),
                            Bits("alpha_mask", bmp::long_at::kAlphaMask, Meaning::kMask),
                            Bits("color_space", bmp::long_at::kColourSpace, Meaning::kColourSpace),
                            Long("red_x", bmp::long_at::kEndpoints, Meaning::kCoordinate),
                            Long("red_y", bmp::long_at::kEndpoints + 4, Meaning::kCoordinate),
                            Long("red_z", bmp::long_at::kEndpoints + 8, Meaning::kCoordinate),
                            Long("green_x", bmp::long_at::kEndpoints + 12, Meaning::kCoordinate),
                            Long("green_y", bmp::long_at::kEndpoints + 16, Meaning::kCoordinate),
                            Long("green_z", bmp::long_at::kEndpoints + 20, Meaning::kCoordinate),
                            Long("blue_x", bmp::long_at::kEndpoints + 24, Meaning::kCoordinate),
                            Long("blue_y", bmp::long_at::kEndpoints + 28, Meaning::kCoordinate),
                            Long("blue_z", bmp::long_at::kEndpoints + 32, Meaning::kCoordinate),
                            Long("red_gamma", bmp::long_at::kGamma, Meaning::kGamma),
                            Long("green_gamma", bmp::long_at::kGamma + 4, Meaning::kGamma),
                            Long("blue_gamma", bmp::long_at::kGamma + 8, Meaning::kGamma),
                            Long("intent", bmp::long_at::kIntent, Meaning::kIntent),
                            Long("profile_offset", bmp::long_at::kProfileOffset),
                            Long("profile_size", bmp::long_at::kProfileSize),
                            Long("reserved", bmp::long_at::kReserved)});

inline constexpr std::array kMasks = {
    Bits("red_mask", bmp::masks_at::kRed, Meaning::kMask),
    Bits("green_mask", bmp::masks_at::kGreen, Meaning::kMask),
    Bits("blue_mask", bmp::masks_at::kBlue, Meaning::kMask),
    Bits("alpha_mask", bmp::long_at::kAlphaMask - bmp::info_at::kMasks, Meaning::kMask)};

inline constexpr std::array kDirectory = {Word("reserved", bmp::directory_at::kReserved),
                                          Word("type", bmp::directory_at::kType, Meaning::kIconType),
                                          Word("count", bmp::directory_at::kCount)};

inline constexpr std::array kIconEntry = {Byte("width", bmp::entry_at::kWidth, Meaning::kIconSide),
                                          Byte("height", bmp::entry_at::kHeight, Meaning::kIconSide),
                                          Byte("colors", bmp::entry_at::kColorCount),
                                          Byte("reserved", bmp::entry_at::kReserved),
                                          Word("planes", bmp::entry_at::kPlanes),
                                          Word("bits_per_pixel", bmp::entry_at::kBitCount),
                                          Long("size", bmp::entry_at::kBytesInRes),
                                          Long("offset", bmp::entry_at::kImageOffset)};

inline constexpr std::array kCursorEntry = {Byte("width", bmp::entry_at::kWidth, Meaning::kIconSide),
                                            Byte("height", bmp::entry_at::kHeight, Meaning::kIconSide),
                                            Byte("colors", bmp::entry_at::kColorCount),
                                            Byte("reserved", bmp::entry_at::kReserved),
                                            Word("hot_x", bmp::entry_at::kPlanes),
                                            Word("hot_y", bmp::entry_at::kBitCount),
                                            Long("size", bmp::entry_at::kBytesInRes),
                                            Long("offset", bmp::entry_at::kImageOffset)};

// Numbers of PNG have their highest byte first.
inline constexpr std::array kPngChunk = {Long("length", 0), Characters("type", 4, 4)};
inline constexpr std::array kPngHeader =
    Join(kPngChunk, std::array{Long("width", 8), Long("height", 12), Byte("bit_depth", 16),
                               Byte("color_type", 17, Meaning::kPngColourType), Byte("compression", 18),
                               Byte("filter", 19), Byte("interlace", 20, Meaning::kPngInterlace)});
inline constexpr std::array kPngResolution =
    Join(kPngChunk, std::array{Long("x_pixels_per_unit", 8), Long("y_pixels_per_unit", 12),
                               Byte("unit", 16, Meaning::kPngUnit)});
inline constexpr std::array kPngGamma = Join(kPngChunk, std::array{Long("gamma", 8, Meaning::kPngGamma)});

inline constexpr std::array kRiffChunk = {Characters("name", bmp::chunk_at::kName, 4),
                                          Long("size", bmp::chunk_at::kSize)};
inline constexpr std::array kRiffList =
    Join(kRiffChunk, std::array{Characters("list_of", bmp::chunk_at::kListOf, 4)});
inline constexpr uint32_t kContent = bmp::kChunkHeaderSize;
inline constexpr std::array kAnimationHeader = Join(
    kRiffChunk, std::array{Long("header_size", kContent + bmp::animation_at::kSize),
                           Long("frames", kContent + bmp::animation_at::kFrames),
                           Long("steps", kContent + bmp::animation_at::kSteps),
                           Long("width", kContent + bmp::animation_at::kWidth),
                           Long("height", kContent + bmp::animation_at::kHeight),
                           Long("bits_per_pixel", kContent + bmp::animation_at::kBits),
                           Long("planes", kContent + bmp::animation_at::kPlanes),
                           Long("jiffies", kContent + bmp::animation_at::kJiffies, Meaning::kJiffies),
                           Bits("flags", kContent + bmp::animation_at::kFlags, Meaning::kAnimationFlags)});

static_assert(kInfoHeader.size() <= VX_MOST_FIELDS);

}  // namespace fields

/// The fields of a part, whether or not it is long enough for all of them; none of kinds without fields.
[[nodiscard]] std::span<const FieldRule> FieldsOf(const vx_part& part) noexcept;

}  // namespace vxkrn
