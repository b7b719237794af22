// Judges a whole file: every image as it is found, then what they and the parts are together.
#pragma once

#include "verify/ImageView.h"

namespace vxkrn {

class Judge final : public ImageTaker {
 public:
  Judge(uint64_t fileSize, Findings* findings) noexcept
      : fileSize_(fileSize), budget_(fileSize), findings_(*findings) {}

  // Each may throw std::bad_alloc.

  void Take(vx_source& source, const ImagePlace& place, const BitmapImage& image) override;
  void TakeUnknown(vx_source& source, const ImagePlace& place) override;

  /// The directory, and pages that share bytes.
  void JudgeDirectory(const vx_source& source);
  /// Sizes and counts of an animated cursor.
  void JudgeAnimation(const vx_source& source);
  /// @param parts settled, in the order of the tree
  void JudgeParts(const vx_source& source, std::span<const vx_part> parts);
  /// @param purpose vx_purpose
  void JudgePurpose(int purpose);

 private:
  struct Body {
    uint64_t begin;
    uint64_t end;
    int page;
  };

  void KeepBody(const ImagePlace& place, const BitmapImage& image);
  void JudgeBodies(uint64_t directoryEnd);
  void JudgeOverlaps(std::span<const vx_part> parts);
  void JudgePart(const vx_source& source, const vx_part& part);

  uint64_t fileSize_;
  PixelBudget budget_;
  Findings& findings_;
  memory::Vector<Body> bodies_;  ///< of a file with a directory
  memory::Vector<int> sides_;    ///< of square pages
  bool hasIcons_ = false;
  bool hasCursors_ = false;
};

/// Whether a part that nobody refers to is a few zeros that make what follows begin at a whole word.
[[nodiscard]] bool IsPadding(const vx_source& source, const vx_part& part) noexcept;

/// Judges the source. Throws std::bad_alloc. @return as vx_verify
[[nodiscard]] int JudgeFile(vx_source& source, int purpose, Findings* findings);

}  // namespace vxkrn
