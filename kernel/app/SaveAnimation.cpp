// vx_save_animation: frames made as cursor files, chunks around them, and the whole into a file.
#include <cstring>

#include "app/Frames.h"
#include "app/StoreFile.h"
#include "base/Errors.h"
#include "base/Remarks.h"
#include "files/OpenFile.h"
#include "files/Place.h"
#include "files/Replacement.h"
#include "filter/FilterCalls.h"
#include "format/Animation.h"
#include "format/HeaderEncoding.h"
#include "format/IconDirectory.h"

namespace vxkrn {
namespace {

namespace chunk = bmp::chunk;

constexpr int kMostFrames = 65535;
constexpr int kLongestText = 65535;

/// A RIFF file as it grows: chunks, and lists whose sizes are known at their ends.
class ChunkWriter {
 public:
  void Add(uint32_t name, const uint8_t* bytes, std::size_t size) {
    Append(bmp::EncodeChunk({name, static_cast<uint32_t>(size)}));
    bytes_.insert(bytes_.end(), bytes, bytes + size);
    if (size % 2 != 0) bytes_.push_back(0);
  }
  /// @return where it begins, for EndList
  std::size_t BeginList(uint32_t name, uint32_t listOf) {
    const std::size_t begin = bytes_.size();
    Append(bmp::EncodeChunk({name, 0}));
    bmp::Block<sizeof listOf> word{};
    bmp::StoreU32(word, 0, listOf);
    Append(word);
    return begin;
  }
  void EndList(std::size_t begin) {
    bmp::Block<sizeof(uint32_t)> size{};
    bmp::StoreU32(size, 0, static_cast<uint32_t>(bytes_.size() - begin - bmp::kChunkHeaderSize));
    std::memcpy(bytes_.data() + begin + bmp::chunk_at::kSize, size.data(), size.size());
  }
  /// A text with its 0.
  void AddText(uint32_t name, const char* text) {
    if (text == nullptr || *text == '\0') return;
    Add(name, reinterpret_cast<const uint8_t*>(text), std::strlen(text) + 1);
  }
  [[nodiscard]] const memory::Vector<uint8_t>& Bytes() const { return bytes_; }

 private:
  template <std::size_t Size>
  void Append(const bmp::Block<Size>& block) {
    bytes_.insert(bytes_.end(), block.begin(), block.end());
  }

  memory::Vector<uint8_t> bytes_;
};

int CheckText(const char* text, std::string_view what) {
  if (text == nullptr || std::strlen(text) <= kLongestText) return STATUS_OK;
  return FailForArgument("the ", what, " has more than ", kLongestText, " bytes");
}

int CheckOptions(const vx_animation_options& options) {
  if (options.jiffies < 1) return FailForArgument("jiffies is ", options.jiffies, "; it must be 1 or more");
  const bool hasSpot = options.hot_x >= 0 && options.hot_y >= 0;
  const bool hasNone = options.hot_x < 0 && options.hot_y < 0;
  if ((!hasSpot && !hasNone) || options.hot_x > UINT16_MAX || options.hot_y > UINT16_MAX) {
    return FailForArgument("the hot spot is ", options.hot_x, ",", options.hot_y,
                           "; both are 0 to 65535, or below 0 for none");
  }
  const int status = CheckText(options.title, "title");
  return status == STATUS_OK ? CheckText(options.author, "author") : status;
}

void SetHotSpot(const vx_animation_options& options, uint8_t* cursor) {
  if (options.hot_x < 0) return;
  bmp::Block<4> spot{};
  bmp::StoreU16(spot, 0, static_cast<uint16_t>(options.hot_x));
  bmp::StoreU16(spot, 2, static_cast<uint16_t>(options.hot_y));
  std::memcpy(cursor + bmp::EntryOffset(1) + bmp::entry_at::kPlanes, spot.data(), spot.size());
}

/// Makes a frame of the picture. What is said of it names its page; what was said of others is kept.
int AddFrame(const vx_bitmap* picture, int page, const vx_animation_options& options, ChunkWriter* writer) {
  const Remarks before = ThisCall().remarks;
  vx_save_options saving = VX_SAVE_OPTIONS_DEFAULT;
  saving.format = VX_FORMAT_CUR;
  uint8_t* bytes = nullptr;
  std::size_t size = 0;
  const int status = vx_save_memory(picture, &saving, &bytes, &size);
  const memory::Bytes cursor(bytes);
  const Remarks own = ThisCall().remarks;
  ThisCall().remarks = before;
  for (int i = 0; i < own.count; ++i) {
    const vx_remark& remark = own.all[static_cast<std::size_t>(i)];
    AddRemark(static_cast<vx_remark_code>(remark.code), remark.first, remark.second, page);
  }
  if (status != STATUS_OK) return NameFailure(status, "the animation", page);
  SetHotSpot(options, cursor.get());
  writer->Add(chunk::kFrame, cursor.get(), size);
  return STATUS_OK;
}

int Build(const vx_bitmap* const* frames, int count, const vx_animation_options& options,
          ChunkWriter* writer) {
  const std::size_t file = writer->BeginList(chunk::kRiff, chunk::kAnimation);
  bmp::AnimationHeader header;
  header.frames = header.steps = static_cast<uint32_t>(count);
  header.jiffies = static_cast<uint32_t>(options.jiffies);
  header.flags = bmp::kFramesAreIcons;
  const auto bytes = bmp::EncodeAnimation(header);
  writer->Add(chunk::kHeader, bytes.data(), bytes.size());
  const bool hasTexts = (options.title != nullptr && *options.title != '\0') ||
                        (options.author != nullptr && *options.author != '\0');
  if (hasTexts) {
    const std::size_t info = writer->BeginList(chunk::kList, chunk::kInfo);
    writer->AddText(chunk::kTitle, options.title);
    writer->AddText(chunk::kAuthor, options.author);
    writer->EndList(info);
  }
  const std::size_t list = writer->BeginList(chunk::kList, chunk::kFrames);
  for (int i = 0; i < count; ++i) {
    const int status = AddFrame(frames[i], i + 1, options, writer);
    if (status != STATUS_OK) return status;
  }
  writer->EndList(list);
  writer->EndList(file);
  const std::size_t size = writer->Bytes().size();
  if (size <= kLastPosition) return STATUS_OK;
  return Fail({STATUS_WRITE_ERROR, VX_REASON_FILE_TOO_LARGE, size}, "the animation would have ", size,
              " bytes; files end below 4 GiB");
}

}  // namespace
}  // namespace vxkrn

int vx_save_animation(const vx_bitmap* const* frames, int count, const vx_animation_options* options,
                      const char* path) {
  return vxkrn::Guarded([&]() -> int {
    if (frames == nullptr || path == nullptr) {
      return vxkrn::FailForArgument("the frames and the path must be given");
    }
    if (count < 1 || count > vxkrn::kMostFrames) {
      return vxkrn::FailForArgument(count, " frames; there can be 1 to ", vxkrn::kMostFrames);
    }
    const vx_animation_options all =
        options == nullptr ? vx_animation_options VX_ANIMATION_OPTIONS_DEFAULT : *options;
    vxkrn::ChunkWriter writer;
    int status = vxkrn::CheckOptions(all);
    if (status == STATUS_OK) status = vxkrn::Build(frames, count, all, &writer);
    return status == STATUS_OK ? vxkrn::StoreFile(path, writer.Bytes()) : status;
  });
}
