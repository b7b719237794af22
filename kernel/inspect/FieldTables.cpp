// Which table is whose.
#include "inspect/FieldTables.h"

#include <string_view>

namespace vxkrn {
namespace {

struct ChunkFields {
  std::string_view name;
  std::span<const FieldRule> rules;
};

constexpr ChunkFields kPngChunks[] = {{"IHDR", fields::kPngHeader},
                                      {"pHYs", fields::kPngResolution},
                                      {"gAMA", fields::kPngGamma},
                                      {"", fields::kPngChunk}};
constexpr ChunkFields kRiffChunks[] = {{"RIFF", fields::kRiffList},
                                       {"LIST", fields::kRiffList},
                                       {"anih", fields::kAnimationHeader},
                                       {"", fields::kRiffChunk}};

template <std::size_t Count>
std::span<const FieldRule> ByName(const ChunkFields (&chunks)[Count], std::string_view name) noexcept {
  return std::find_if(std::begin(chunks), std::end(chunks),
                      [&](const ChunkFields& each) { return each.name == name || each.name.empty(); })
      ->rules;
}

}  // namespace

std::span<const FieldRule> FieldsOf(const vx_part& part) noexcept {
  switch (part.kind) {
    case VX_PART_ARRAY_HEADER: return fields::kArrayHeader;
    case VX_PART_FILE_HEADER: return fields::kFileHeader;
    case VX_PART_OS2_ICON_HEADER: return fields::kOs2IconHeader;
    case VX_PART_CORE_HEADER: return fields::kCoreHeader;
    case VX_PART_OS2_HEADER: return fields::kOs2Header;
    case VX_PART_INFO_HEADER: return fields::kInfoHeader;
    case VX_PART_MASKS: return fields::kMasks;
    case VX_PART_DIRECTORY: return fields::kDirectory;
    case VX_PART_ICON_ENTRY: return fields::kIconEntry;
    case VX_PART_CURSOR_ENTRY: return fields::kCursorEntry;
    case VX_PART_PNG_CHUNK: return ByName(kPngChunks, part.name);
    case VX_PART_RIFF_CHUNK: return ByName(kRiffChunks, part.name);
    default: return {};
  }
}

}  // namespace vxkrn
