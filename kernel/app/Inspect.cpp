// What files are made of, to applications.
#include <algorithm>
#include <array>

#include "app/Frames.h"
#include "base/Errors.h"
#include "beyond/BitmapFile.h"
#include "beyond/RunLengthCodes.h"
#include "inspect/Fields.h"
#include "inspect/FileParts.h"
#include "vx/inspect.h"

namespace vxkrn {
namespace {

constexpr std::array<const char*, VX_PART_UNREFERENCED + 1> kPartNames = {
    "none",       "image",       "array-header", "file-header", "os2-icon-header", "core-header",
    "os2-header", "info-header", "masks",        "color-table", "pixels",          "xor-mask",
    "and-mask",   "profile",     "directory",    "icon-entry",  "cursor-entry",    "png-signature",
    "png-chunk",  "riff-chunk",  "unknown",      "unreferenced"};

constexpr vx_code_kind KindOf(CodeKind kind) noexcept {
  switch (kind) {
    case CodeKind::kRun: return VX_CODE_RUN;
    case CodeKind::kLiteral: return VX_CODE_LITERAL;
    case CodeKind::kEndOfLine: return VX_CODE_END_OF_LINE;
    case CodeKind::kEndOfBitmap: return VX_CODE_END_OF_BITMAP;
    case CodeKind::kDelta: break;
  }
  return VX_CODE_DELTA;
}

bool HasCodes(const BitmapImage& image) noexcept {
  const bool isFilters = image.decoder == bmp::Decoder::kFilter && !IsPlain(image.layout, image.decoder);
  return isFilters || image.decoder == bmp::Decoder::kRunOn || image.decoder == bmp::Decoder::kRle24;
}

int ReadCodes(const vx_source& source, int page, vx_code_function take, void* user) {
  std::optional<BitmapImage> image;
  const int status = FindBitmap(source, page, &image);
  if (status != STATUS_OK) return NameFailure(status, source.Name());
  if (!image || !HasCodes(*image)) {
    return Fail({STATUS_NOT_SUPPORTED, VX_REASON_BAD_ARGUMENT}, source.Name(), ": page ", page,
                " has no run-length data");
  }
  const auto size = static_cast<uint64_t>(std::max<int64_t>(source.Size(), 0));
  RunLengthCodes codes(source, image->layout);
  RunLengthCode code;
  while (codes.Next(&code) && code.offset + code.length <= size) {
    const vx_code told = {KindOf(code.kind), code.row,    code.x,     code.count,
                          code.value,        code.offset, code.length};
    if (take(user, &told) != 0) break;
  }
  return STATUS_OK;
}

}  // namespace
}  // namespace vxkrn

int vx_inspect(vx_source* source, vx_structure** structure) {
  return vxkrn::Guarded([&]() -> int {
    if (structure != nullptr) *structure = nullptr;
    if (source == nullptr || structure == nullptr) {
      return vxkrn::FailForArgument("the source and the place for the structure must be given");
    }
    auto found = vxkrn::memory::Make<vx_structure>({"kernel/Inspect", __LINE__});
    if (found == nullptr) return vxkrn::FailForMemory("a list of parts", sizeof(vx_structure));
    const int status = vxkrn::FindParts(*source, &found->parts);
    if (status != STATUS_OK) return status;
    vxkrn::SettleParts(static_cast<uint64_t>(std::max<int64_t>(source->Size(), 0)), &found->parts);
    *structure = found.release();
    return VX_OK;
  });
}

const vx_part* vx_structure_parts(const vx_structure* structure, int* count) {
  if (count != nullptr) *count = structure == nullptr ? 0 : static_cast<int>(structure->parts.size());
  return structure == nullptr ? nullptr : structure->parts.data();
}

void vx_structure_free(vx_structure* structure) {
  const vxkrn::memory::Owned<vx_structure> owner(structure);
}

int vx_part_fields(vx_source* source, const vx_part* part, vx_field* fields, int* count) {
  return vxkrn::Guarded([&]() -> int {
    if (count != nullptr) *count = 0;
    if (source == nullptr || part == nullptr || fields == nullptr || count == nullptr) {
      return vxkrn::FailForArgument(
          "the source, the part and the places for fields and their number must be given");
    }
    *count = vxkrn::ReadFields(*source, *part, fields);
    return VX_OK;
  });
}

const char* vx_part_name(int kind) {
  const bool isKnown = kind >= 0 && kind <= VX_PART_UNREFERENCED;
  return isKnown ? vxkrn::kPartNames[static_cast<std::size_t>(kind)] : "unknown";
}

int vx_read_codes(vx_source* source, int page, vx_code_function take, void* user) {
  return vxkrn::Guarded([&]() -> int {
    if (source == nullptr || take == nullptr || page < 1) {
      return vxkrn::FailForArgument(
          "the source, a page from 1 on and the function that takes codes must be given");
    }
    return vxkrn::ReadCodes(*source, page, take, user);
  });
}
