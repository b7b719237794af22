// Animated cursors: with a sequence and rates, texts, odd chunks, frames of pixels alone, and sizes that lie.
#include <initializer_list>
#include <string_view>

#include "samples/Families.h"
#include "samples/Icons.h"

namespace samples {
namespace {

Bytes Text(std::string_view text) {
  return {text.begin(), text.end()};
}

Bytes Words(std::initializer_list<uint32_t> words) {
  Bytes bytes;
  for (const uint32_t word : words) Append32(bytes, word);
  return bytes;
}

Bytes Chunk(std::string_view name, const Bytes& content) {
  Bytes chunk = Text(name);
  Append32(chunk, Size32(content));
  Append(chunk, content);
  PadTo(chunk, 2);
  return chunk;
}

Bytes List(std::string_view name, std::string_view of, std::initializer_list<Bytes> chunks) {
  Bytes content = Text(of);
  for (const Bytes& chunk : chunks) Append(content, chunk);
  return Chunk(name, content);
}

Bytes Frame(const Page& page) {
  return Chunk("icon", IconFile(IconType::Cursor, {page}));
}

/// Two frames, shown in the order 2, 1, 2, for 5, 10 and 20 jiffies; its title has an odd number of bytes.
Bytes TwoFrames() {
  return List("RIFF", "ACON",
              {List("LIST", "INFO", {Chunk("INAM", Text("Turning")), Chunk("IART", Text("A. Maker\0"))}),
               Chunk("anih", Words({36, 2, 3, 0, 0, 0, 0, 6, 3})), Chunk("rate", Words({5, 10, 20})),
               Chunk("seq ", Words({1, 0, 1})),
               List("LIST", "fram",
                    {Frame(WithHotSpot(IndexedPage(CrossHairs(33), 4), 16, 15)),
                     Frame(WithHotSpot(IndexedPage(Arrow(32), 1), 1, 2))})});
}

Bytes WithLies(Bytes file) {
  const auto lie = [&](size_t at, uint32_t size) {
    for (int i = 0; i < 4; ++i) file[at + static_cast<size_t>(i)] = static_cast<uint8_t>(size >> 8 * i);
  };
  lie(4, 0);
  for (size_t at = 0; at + 8 < file.size(); ++at) {
    const std::string_view name(reinterpret_cast<const char*>(file.data()) + at, 4);
    if (name == "fram") lie(at - 4, 0xFFFFFFFF);
    if (name == "icon") lie(at + 4, at % 4 == 0 ? 0xFFFFFFFE : 0);
  }
  return file;
}

}  // namespace

std::vector<Sample> AnimationSamples() {
  const Picture first = IndexedPage(CrossHairs(33), 4).picture;
  return {MakeSample("animated.ani", "Animated cursor of two frames in three steps", TwoFrames(), first),
          MakeSample("animated-sizes.ani", "Animated cursor whose size fields are wrong",
                     WithLies(TwoFrames()), first)};
}

}  // namespace samples
