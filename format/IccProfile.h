// As much of a colour profile as tells whether it can be used: header and table of tags. What the tags mean
// is for a colour engine. Pure; numbers of a profile are big-endian.
#pragma once

#include <cstdint>
#include <span>

namespace bmp {

/// More than any profile of a display, camera or scanner has.
inline constexpr uint32_t kLargestProfile = 4 << 20;

namespace profile_at {
inline constexpr uint32_t kSize = 0;
inline constexpr uint32_t kClass = 12;
inline constexpr uint32_t kColours = 16;     // what goes in
inline constexpr uint32_t kConnection = 20;  // what comes out
inline constexpr uint32_t kSignature = 36;
inline constexpr uint32_t kTagCount = 128;
inline constexpr uint32_t kTags = 132;  // signature, offset, size each
}  // namespace profile_at

namespace profile {

inline constexpr uint32_t kTagSize = 12;
inline constexpr uint32_t kMostTags = 100;  // real ones have 10 to 20

constexpr uint32_t WordAt(std::span<const uint8_t> bytes, uint32_t at) {
  return uint32_t{bytes[at]} << 24 | uint32_t{bytes[at + 1]} << 16 | uint32_t{bytes[at + 2]} << 8 |
         bytes[at + 3];
}
constexpr uint32_t Word(const char (&name)[5]) {
  uint32_t word = 0;
  for (int i = 0; i < 4; ++i) word = word << 8 | static_cast<uint8_t>(name[i]);
  return word;
}

/// Whether every tag lies in the profile and is none of a kind that takes any amount of time to work out:
/// lists of elements, all of which may be the same one.
constexpr bool AreTagsGood(std::span<const uint8_t> bytes) {
  const auto size = static_cast<uint32_t>(bytes.size());
  const uint32_t count = WordAt(bytes, profile_at::kTagCount);
  if (count > kMostTags || count * kTagSize > size - profile_at::kTags) return false;
  for (uint32_t i = 0; i < count; ++i) {
    const uint32_t tag = profile_at::kTags + i * kTagSize;
    const uint32_t offset = WordAt(bytes, tag + 4);
    const uint32_t length = WordAt(bytes, tag + 8);
    if (offset > size || length > size - offset || length < 8) return false;
    if (WordAt(bytes, offset) == Word("mpet")) return false;
  }
  return true;
}

}  // namespace profile

/// Bytes of the profile that begins with these, by its own word; 0 where they cannot be one's.
constexpr uint32_t ProfileSize(std::span<const uint8_t> bytes) {
  if (bytes.size() < profile_at::kTags) return 0;
  const uint32_t size = profile::WordAt(bytes, profile_at::kSize);
  return size >= profile_at::kTags && size <= bytes.size() && size <= kLargestProfile ? size : 0;
}

/// Whether the bytes, as many as ProfileSize says, are a profile that says what colours of red, green and
/// blue look like.
constexpr bool IsRgbProfile(std::span<const uint8_t> bytes) {
  using profile::Word;
  const auto word = [bytes](uint32_t at) { return profile::WordAt(bytes, at); };
  const uint32_t connection = word(profile_at::kConnection);
  const uint32_t kind = word(profile_at::kClass);
  return word(profile_at::kSignature) == Word("acsp") && word(profile_at::kColours) == Word("RGB ") &&
         (connection == Word("XYZ ") || connection == Word("Lab ")) && kind != Word("link") &&
         kind != Word("abst") && kind != Word("nmcl") && profile::AreTagsGood(bytes);
}

}  // namespace bmp
