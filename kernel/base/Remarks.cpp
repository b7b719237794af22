// The remarks of a call, and names and words for their codes. Must not allocate.
#include "base/Remarks.h"

#include <algorithm>
#include <array>
#include <span>

namespace vxkrn {

void AddRemark(vx_remark_code code, int64_t first, int64_t second, int page) noexcept {
  Remarks& remarks = ThisCall().remarks;
  const std::span<vx_remark> noted(remarks.all.data(), static_cast<std::size_t>(remarks.count));
  const bool isKnown = std::any_of(noted.begin(), noted.end(), [&](const vx_remark& remark) {
    return remark.code == code && remark.page == page;
  });
  if (isKnown || noted.size() == remarks.all.size()) return;
  remarks.all[noted.size()] = {code, page, first, second};
  ++remarks.count;
}

namespace {

struct RemarkEntry {
  int code;
  const char* name;
  const char* text;
};

constexpr std::array<RemarkEntry, 22> kRemarks = {{
    {VX_REMARK_NONE, "none", ""},
    {VX_REMARK_ROWS_MISSING, "rows-missing",
     "the file ends early: {1} of its {2} rows are there, the others are made up"},
    {VX_REMARK_OFFSET_MENDED, "offset-mended",
     "no pixels can be at byte {1}, where the file says; they are taken from byte {2} on"},
    {VX_REMARK_NO_FILE_HEADER, "no-file-header",
     "it has no file header: it begins with an image header of {1} bytes"},
    {VX_REMARK_ALPHA_TAKEN, "alpha-taken", "the fourth bytes of its pixels are in use and taken as alpha"},
    {VX_REMARK_ALPHA_IGNORED, "alpha-ignored",
     "the fourth bytes of its pixels are in use, but nothing says that they are alpha; they are left out"},
    {VX_REMARK_ALPHA_EMPTY, "alpha-empty", "its alpha channel would hide every pixel; all of them are shown"},
    {VX_REMARK_PROFILE_LINKED, "profile-linked",
     "its colour profile is in another file, which is not opened; colours stay as they are"},
    {VX_REMARK_PROFILE_DAMAGED, "profile-damaged",
     "its colour profile cannot be used; colours stay as they are"},
    {VX_REMARK_MASK_MISSING, "mask-missing",
     "its mask ends early: {1} of {2} rows are there; what they lack is opaque"},
    {VX_REMARK_ENTRY_SIZE, "entry-size",
     "its entry in the directory says that it has {1} x {2} pixels, which is not so"},
    {VX_REMARK_ENTRY_DEPTH, "entry-depth",
     "its entry in the directory says {1} bits per pixel, but it has {2}"},
    {VX_REMARK_ENTRY_LENGTH, "entry-length",
     "its entry in the directory says that it has {1} bytes, but it has {2}"},
    {VX_REMARK_BODIES_OVERLAP, "bodies-overlap", "it shares bytes with page {1}"},
    {VX_REMARK_PNG_IN_CURSOR, "png-in-cursor", "it is a PNG stream, which few readers take in cursors"},
    {VX_REMARK_HEIGHT_NOT_DOUBLED, "height-not-doubled",
     "its header says {1} rows, and so leaves out those of the mask"},
    {VX_REMARK_HEADER_IN_ICON, "header-in-icon",
     "its image header has {1} bytes; few readers take that in icons"},
    {VX_REMARK_CHUNK_SIZE, "chunk-size",
     "the size or count at byte {1} says {2}, which is wrong; what is there is taken"},
    {VX_REMARK_ALPHA_HARDENED, "alpha-hardened",
     "soft edges became hard: half opaque and more became opaque, the rest transparent"},
    {VX_REMARK_ALPHA_DROPPED, "alpha-dropped", "transparency is lost: every pixel became opaque"},
    {VX_REMARK_COLORS_LOST, "colors-lost", "some pixels changed their colour, to fit into {1} bits"},
    {VX_REMARK_PROFILE_DROPPED, "profile-dropped",
     "the colour profile is lost: the format has no place for it"},
}};

const RemarkEntry* FindRemark(int code) {
  const auto* entry = std::find_if(kRemarks.begin(), kRemarks.end(),
                                   [code](const RemarkEntry& each) { return each.code == code; });
  return entry == kRemarks.end() ? nullptr : entry;
}

}  // namespace
}  // namespace vxkrn

const vx_remark* vx_remarks(int* count) {
  const vxkrn::Remarks& remarks = vxkrn::ThisCall().remarks;
  if (count != nullptr) *count = remarks.count;
  return remarks.all.data();
}

const char* vx_remark_name(int code) {
  const vxkrn::RemarkEntry* entry = vxkrn::FindRemark(code);
  return entry == nullptr ? "unknown" : entry->name;
}

const char* vx_remark_text(int code) {
  const vxkrn::RemarkEntry* entry = vxkrn::FindRemark(code);
  return entry == nullptr ? "" : entry->text;
}
