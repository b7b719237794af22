// Follows run-length codes to where they end. Other readers stop at the first code that does not fit, cut it
// off, or let it run into the next row, so what one sees says little of what is wrong.
#include "beyond/RunLengthCodes.h"
#include "bitmap/Bitmap.h"
#include "inspect/BitmapParts.h"
#include "inspect/Fields.h"
#include "verify/ImageView.h"

namespace vxkrn {
namespace {

constexpr bool HasPixels(CodeKind kind) {
  return kind == CodeKind::kRun || kind == CodeKind::kLiteral;
}

/// What is wrong with the codes of a picture.
struct CodeFaults {
  uint64_t overruns = 0;
  uint64_t firstOverrunAt = 0;
  int firstOverrunRow = 0;
  uint64_t outside = 0;
  uint64_t firstOutsideAt = 0;
  uint64_t unknownColors = 0;  ///< pixels
  uint64_t firstUnknownAt = 0;
  bool hasEnd = false;
  bool isWalked = true;  ///< to where they end
  uint64_t end = 0;
  int row = 0;  ///< where they end
  int64_t x = 0;
};

class CodeWalk {
 public:
  CodeWalk(const ImageView& view, PixelBudget* budget) noexcept
      : view_(view), budget_(*budget), layout_(view.image.layout), codes_(view.source, layout_) {
    faults_.end = layout_.pixelOffset;
  }

  CodeFaults Run() {
    RunLengthCode code;
    while (codes_.Next(&code) && code.offset + code.length <= view_.FileSize() && MayFollow(code)) {
      if (!budget_.Take(code.length)) {
        faults_.isWalked = false;
        break;
      }
      if (HasPixels(code.kind)) Judge(code);
      faults_.hasEnd = code.kind == CodeKind::kEndOfBitmap;
      faults_.end = code.offset + code.length;
      faults_.row = codes_.Row();
      faults_.x = codes_.X();
    }
    return faults_;
  }

 private:
  /// Behind the last row there is the code that ends the picture or, where the header says that there are
  /// more bytes of it, what should not be.
  [[nodiscard]] bool MayFollow(const RunLengthCode& code) const noexcept {
    if (code.row < layout_.height || code.kind == CodeKind::kEndOfBitmap) return true;
    return code.offset + code.length <= layout_.pixelOffset + layout_.imageSize;
  }

  void Judge(const RunLengthCode& code) {
    if (code.row >= layout_.height) {
      if (faults_.outside++ == 0) faults_.firstOutsideAt = code.offset;
      return;
    }
    const bool mayRunOn = view_.image.decoder == bmp::Decoder::kRunOn;
    if (!mayRunOn && code.x + code.count > layout_.width && faults_.overruns++ == 0) {
      faults_.firstOverrunAt = code.offset;
      faults_.firstOverrunRow = code.row;
    }
    const bool mayBeUnknown = layout_.depth <= 8 && layout_.paletteCount < bmp::PaletteSize(layout_.depth);
    if (mayBeUnknown) CountUnknown(code);
  }

  void CountUnknown(const RunLengthCode& code) {
    constexpr uint32_t kMost = 256;
    const bool isRun = code.kind == CodeKind::kRun;
    const auto bytes = isRun ? bmp::Block<kMost>{} : view_.source.BlockAt<kMost>(code.offset + 2);
    for (int i = 0; i < code.count; ++i) {
      const bool isHalf = layout_.depth == 4;
      const auto index = static_cast<std::size_t>(isHalf ? i / 2 : i);
      const int byte = isRun ? code.value : bytes[index];
      const int value = !isHalf ? byte : i % 2 == 0 ? byte >> 4 : byte & 15;
      const bool isUnknown = static_cast<uint32_t>(value) >= layout_.paletteCount;
      if (isUnknown && faults_.unknownColors++ == 0) faults_.firstUnknownAt = code.offset;
    }
  }

  const ImageView& view_;
  PixelBudget& budget_;
  const bmp::BitmapLayout& layout_;
  RunLengthCodes codes_;
  CodeFaults faults_;
};

void JudgeEnd(const ImageView& view, const CodeFaults& faults, Findings* findings) {
  const bmp::BitmapLayout& layout = view.image.layout;
  if (faults.hasEnd) return;
  const bool isLastFull = faults.row == layout.height - 1 && faults.x >= layout.width;
  if (faults.row >= layout.height || isLastFull || view.image.decoder == bmp::Decoder::kRunOn) {
    view.Add(findings, VX_FINDING_CODES_NO_END, faults.end);
  } else {
    view.Add(findings, VX_FINDING_CODES_CUT, faults.end, static_cast<uint64_t>(faults.row),
             static_cast<uint64_t>(layout.height));
  }
}

/// Data may be padded to whole words.
void JudgeSize(const ImageView& view, const CodeFaults& faults, Findings* findings) {
  const FieldSet header(view.source, HeaderPartOf(view.image.layout));
  const vx_field* said = header.Find("image_size");
  if (said == nullptr || !faults.hasEnd) return;
  const uint64_t own = faults.end - view.image.layout.pixelOffset;
  const auto size = static_cast<uint64_t>(said->value);
  const bool isPadded =
      size >= own && size < own + 4 && size <= view.RoomBehind(view.image.layout.pixelOffset);
  if (!isPadded) view.Add(findings, VX_FINDING_IMAGE_SIZE, said->offset, size, own);
}

/// Where nothing but the codes says where the mask begins.
void JudgeMaskBehind(const ImageView& view, const CodeFaults& faults, Findings* findings) {
  const bmp::BitmapLayout& layout = view.image.layout;
  if (!view.IsPage() || view.image.icon->maskOffset != 0 || !faults.hasEnd) return;
  const auto height = static_cast<uint64_t>(layout.height);
  const uint64_t there = view.RoomBehind(faults.end) / static_cast<uint64_t>(Stride(layout.width, 1));
  if (there < height) view.Add(findings, VX_FINDING_MASK_CUT, faults.end, there, height);
}

}  // namespace

void JudgeCodes(const ImageView& view, PixelBudget* budget, Findings* findings) {
  const bmp::BitmapLayout& layout = view.image.layout;
  const CodeFaults faults = CodeWalk(view, budget).Run();
  if (view.image.decoder == bmp::Decoder::kRunOn) {
    view.Add(findings, VX_FINDING_CODES_RUN_ON, layout.pixelOffset);
  }
  if (faults.overruns > 0) {
    view.Add(findings, VX_FINDING_CODES_OVERRUN, faults.firstOverrunAt, faults.overruns,
             static_cast<uint64_t>(faults.firstOverrunRow));
  }
  if (faults.outside > 0) {
    view.Add(findings, VX_FINDING_CODES_OUTSIDE, faults.firstOutsideAt, faults.outside,
             static_cast<uint64_t>(layout.height));
  }
  if (faults.unknownColors > 0) {
    view.Add(findings, VX_FINDING_PALETTE_INDEX, faults.firstUnknownAt, faults.unknownColors,
             layout.paletteCount);
  }
  if (!faults.isWalked) return view.Add(findings, VX_FINDING_NOT_LOOKED_AT, layout.pixelOffset);
  JudgeEnd(view, faults, findings);
  JudgeSize(view, faults, findings);
  JudgeMaskBehind(view, faults, findings);
}

}  // namespace vxkrn
