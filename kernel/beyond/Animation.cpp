// Two questions the format leaves open. What if a size field lies? Old makers of cursors counted a header too
// many, left a size at 0 or did not pad odd chunks; other readers stop there, or take the rest of the file
// for one frame. Here a size is believed if a chunk, or the end, follows it, padded or not; else the length
// that the content itself tells is tried in the same way. And what belongs to which list? Lists are entered
// and their ends not looked at, so that frames count wherever they stand, at any depth, and no list can hide
// any.
#include "beyond/Animation.h"

#include <algorithm>
#include <array>

#include "base/Errors.h"
#include "base/Remarks.h"
#include "files/OpenFile.h"
#include "format/IconDirectory.h"

namespace vxkrn {
namespace {

namespace chunk = bmp::chunk;
using bmp::ChunkHeader;

constexpr uint64_t kWord = sizeof(uint32_t);

uint64_t SizeOf(const Extent& extent) noexcept {
  return extent.end - extent.begin;
}

uint32_t WordAt(const vx_source& source, uint64_t offset) noexcept {
  return bmp::LoadU32(bmp::View<kWord>(source.BlockAt<kWord>(offset)), 0);
}

/// How long an icon file at `offset` is by its directory; 0 for anything else. Of a directory only so much is
/// looked at as frames have pages: no more than a constant for a chunk.
uint64_t IconFileBytes(const vx_source& source, uint64_t offset) noexcept {
  constexpr uint32_t kMostPages = 64;
  const ICONDIR directory = bmp::DecodeDirectory(source.BlockAt<bmp::kDirectorySize>(offset));
  if (!bmp::IsValidDirectory(directory)) return 0;
  const auto bytes = source.BlockAt<bmp::kEntrySize * kMostPages>(offset + bmp::kDirectorySize);
  uint64_t end = 0;
  for (uint32_t i = 0; i < std::min<uint32_t>(directory.Count, kMostPages); ++i) {
    const ICONDIRENTRY entry = bmp::DecodeEntry(bmp::Slice<bmp::kEntrySize>(bytes, i * bmp::kEntrySize));
    end = std::max(end, uint64_t{entry.ImageOffset} + entry.BytesInRes);
  }
  return end;
}

/// From chunk to chunk, none twice.
class ChunkWalk {
 public:
  ChunkWalk(const vx_source& source, Animation* animation, memory::Vector<ChunkPlace>* chunks) noexcept
      : source_(source),
        animation_(*animation),
        chunks_(chunks),
        fileSize_(
            std::min<uint64_t>(static_cast<uint64_t>(std::max<int64_t>(source.Size(), 0)), kLastPosition)) {}

  void Run() {
    const uint32_t riffSize = WordAt(source_, bmp::chunk_at::kSize);
    riffEnd_ = bmp::kChunkHeaderSize + uint64_t{riffSize};
    if (riffEnd_ > fileSize_ + 1) RemarkOnSize(bmp::chunk_at::kSize, riffSize);
    constexpr int kMostChunks = 1 << 16;  // each takes a read, and no cursor has that many
    uint64_t at = bmp::kListHeaderSize;
    for (int i = 0; i < kMostChunks && HasChunkAt(at, bmp::IsChunkName); ++i) at = Pass(at);
    if (lastFrame_ > riffEnd_) RemarkOnSize(bmp::chunk_at::kSize, riffSize);
    CheckCounts();
  }

 private:
  struct Content {
    Extent extent;
    uint64_t next;  ///< where the chunk behind it begins
  };

  static void RemarkOnSize(uint64_t at, uint32_t says) noexcept {
    AddRemark(VX_REMARK_CHUNK_SIZE, static_cast<int64_t>(at), says);
  }

  [[nodiscard]] ChunkHeader HeaderAt(uint64_t at) const noexcept {
    return bmp::DecodeChunk(source_.BlockAt<bmp::kChunkHeaderSize>(at));
  }
  [[nodiscard]] bool HasChunkAt(uint64_t at, bool (*isName)(uint32_t)) const noexcept {
    return at <= fileSize_ && bmp::kChunkHeaderSize <= fileSize_ - at && isName(HeaderAt(at).name);
  }
  /// Whether what ends at `at` ends where it should: a chunk begins there, or nothing.
  [[nodiscard]] bool MayEndAt(uint64_t at, bool (*isName)(uint32_t)) const noexcept {
    return at == fileSize_ || at == fileSize_ + 1 || at == riffEnd_ || HasChunkAt(at, isName);
  }

  /// The length of a chunk's content by itself; 0 where it does not tell.
  [[nodiscard]] uint64_t OwnSize(const ChunkHeader& header, uint64_t begin) const noexcept {
    switch (header.name) {
      case chunk::kHeader: return bmp::kAnimationHeaderSize;
      case chunk::kRates:
      case chunk::kSequence: return kWord * animation_.header.steps;
      case chunk::kFrame: return IconFileBytes(source_, begin);
      default: return 0;
    }
  }

  [[nodiscard]] bool TrySize(uint64_t begin, uint64_t size, Content* content) const noexcept {
    if (size > fileSize_ - begin) return false;
    // A known name is more than four letters that happen to stand there.
    for (bool (*isName)(uint32_t) : {bmp::IsKnownChunk, bmp::IsChunkName}) {
      for (const uint64_t length : {bmp::PaddedSize(size), size}) {
        if (!MayEndAt(begin + length, isName)) continue;
        *content = {{begin, begin + size}, begin + length};
        return true;
      }
    }
    return false;
  }

  [[nodiscard]] Content Measure(const ChunkHeader& header, uint64_t begin) const noexcept {
    Content content = {};
    if (TrySize(begin, header.size, &content)) return content;
    RemarkOnSize(begin - kWord, header.size);
    const uint64_t own = OwnSize(header, begin);
    if (own > 0 && TrySize(begin, own, &content)) return content;
    const uint64_t size = std::min<uint64_t>(header.size, fileSize_ - begin);
    return {{begin, begin + size}, begin + bmp::PaddedSize(size)};
  }

  /// @return where the next chunk begins
  uint64_t Pass(uint64_t at) {
    const ChunkHeader header = HeaderAt(at);
    const uint64_t begin = at + bmp::kChunkHeaderSize;
    if (header.name == chunk::kList) {
      const bool isOfFrames = WordAt(source_, begin) == chunk::kFrames;
      if (header.size > fileSize_ - begin) RemarkOnSize(begin - kWord, header.size);
      if (isOfFrames) frameList_ = {begin, begin + header.size};
      List(header, at, bmp::kListHeaderSize);
      return at + bmp::kListHeaderSize;
    }
    const Content content = Measure(header, begin);
    Keep(header, content.extent);
    List(header, at, header.name == chunk::kFrame ? bmp::kChunkHeaderSize : content.next - at);
    return content.next;
  }

  void List(const ChunkHeader& header, uint64_t at, uint64_t length) const {
    if (chunks_ != nullptr) chunks_->push_back({header.name, at, length});
  }

  void Keep(const ChunkHeader& header, const Extent& extent) {
    switch (header.name) {
      case chunk::kHeader: return KeepHeader(header, extent);
      case chunk::kFrame: return KeepFrame(extent);
      case chunk::kRates: return KeepFirst(extent, &animation_.rates);
      case chunk::kSequence: return KeepFirst(extent, &animation_.sequence);
      case chunk::kTitle: return KeepFirst(extent, &animation_.title);
      case chunk::kAuthor: return KeepFirst(extent, &animation_.author);
      default: return;
    }
  }

  static void KeepFirst(const Extent& extent, Extent* place) noexcept {
    if (place->begin == 0) *place = extent;
  }

  void KeepHeader(const ChunkHeader& header, const Extent& extent) noexcept {
    if (headerAt_ != 0) return;
    headerAt_ = extent.begin;
    if (header.size != bmp::kAnimationHeaderSize) RemarkOnSize(extent.begin - kWord, header.size);
    auto bytes = source_.BlockAt<bmp::kAnimationHeaderSize>(extent.begin);
    const auto whole = static_cast<std::size_t>(std::min<uint64_t>(SizeOf(extent), bytes.size()));
    std::fill(bytes.begin() + whole, bytes.end(), uint8_t{0});
    animation_.header = bmp::DecodeAnimation(bytes);
  }

  void KeepFrame(const Extent& extent) {
    animation_.frames.push_back(extent);
    lastFrame_ = extent.begin;
    const bool isOutside = frameList_.begin != 0 && extent.end > frameList_.end;
    if (isOutside) RemarkOnSize(frameList_.begin - kWord, static_cast<uint32_t>(SizeOf(frameList_)));
  }

  /// What the header counts, against what there is.
  void CheckCounts() const noexcept {
    const bmp::AnimationHeader& header = animation_.header;
    if (headerAt_ == 0) return;
    if (header.frames != animation_.frames.size()) {
      RemarkOnSize(headerAt_ + bmp::animation_at::kFrames, header.frames);
    }
    if (SizeOf(animation_.sequence) >= kWord && header.steps != animation_.StepCount()) {
      RemarkOnSize(headerAt_ + bmp::animation_at::kSteps, header.steps);
    }
  }

  const vx_source& source_;
  Animation& animation_;
  memory::Vector<ChunkPlace>* chunks_;
  uint64_t fileSize_;
  uint64_t riffEnd_ = 0;
  uint64_t headerAt_ = 0;
  uint64_t lastFrame_ = 0;
  Extent frameList_ = {};
};

}  // namespace

uint64_t Animation::StepCount() const noexcept {
  const uint64_t inSequence = SizeOf(sequence) / kWord;
  return inSequence > 0 ? inSequence : frames.size();
}

bool IsAnimation(const vx_source& source) noexcept {
  const auto start = source.BlockAt<bmp::kListHeaderSize>(0);
  const bmp::View<bmp::kListHeaderSize> view(start);
  return bmp::LoadU32(view, bmp::chunk_at::kName) == chunk::kRiff &&
         bmp::LoadU32(view, bmp::chunk_at::kListOf) == chunk::kAnimation;
}

int FindAnimation(const vx_source& source, Animation* animation, memory::Vector<ChunkPlace>* chunks) {
  ChunkWalk(source, animation, chunks).Run();
  if (!animation->frames.empty()) return STATUS_OK;
  return Fail({STATUS_BAD_FORMAT, VX_REASON_NO_PAGES}, source.Name(),
              ": it begins like an animated cursor, but there is no frame in it");
}

AnimationStep StepAt(const vx_source& source, const Animation& animation, uint64_t step) noexcept {
  const auto wordOr = [&](const Extent& words, uint32_t otherwise) {
    return step < SizeOf(words) / kWord ? WordAt(source, words.begin + kWord * step) : otherwise;
  };
  return {wordOr(animation.sequence, static_cast<uint32_t>(step)),
          wordOr(animation.rates, animation.header.jiffies)};
}

}  // namespace vxkrn
