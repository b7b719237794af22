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
    {VX_REMARK_ROWS_MISSING, "rows-missing", "The file ends early; the rows that it lacks are made up."},
    {VX_REMARK_OFFSET_MENDED, "offset-mended",
     "No pixels can be where the file says; they were taken from behind the colour table."},
    {VX_REMARK_NO_FILE_HEADER, "no-file-header", "The bitmap has no file header, as on clipboards."},
    {VX_REMARK_ALPHA_TAKEN, "alpha-taken",
     "The fourth bytes of the pixels are in use; they are taken as alpha."},
    {VX_REMARK_ALPHA_IGNORED, "alpha-ignored",
     "The fourth bytes of the pixels are in use, but nothing says that they are alpha; they are not taken."},
    {VX_REMARK_ALPHA_EMPTY, "alpha-empty",
     "The alpha channel would hide every pixel; all are taken as opaque."},
    {VX_REMARK_PROFILE_LINKED, "profile-linked",
     "The colour profile is another file, which is not opened; colours stay as they are."},
    {VX_REMARK_PROFILE_DAMAGED, "profile-damaged",
     "The colour profile cannot be used; colours stay as they are."},
    {VX_REMARK_MASK_MISSING, "mask-missing",
     "The page's mask is missing or cut short; what it lacks is taken as opaque."},
    {VX_REMARK_ENTRY_SIZE, "entry-size", "The directory says another size than the page has."},
    {VX_REMARK_ENTRY_DEPTH, "entry-depth", "The directory says another depth than the page has."},
    {VX_REMARK_ENTRY_LENGTH, "entry-length", "The directory says another length than the page has."},
    {VX_REMARK_BODIES_OVERLAP, "bodies-overlap", "The page shares bytes with another."},
    {VX_REMARK_PNG_IN_CURSOR, "png-in-cursor",
     "The page is a PNG stream, which few readers of cursors take."},
    {VX_REMARK_HEIGHT_NOT_DOUBLED, "height-not-doubled",
     "The page's header counts its rows without those of the mask."},
    {VX_REMARK_HEADER_IN_ICON, "header-in-icon",
     "The page has an image header that few readers of icons take."},
    {VX_REMARK_CHUNK_SIZE, "chunk-size", "A size or a count in the animated cursor is wrong; what is there was taken."},
    {VX_REMARK_ALPHA_HARDENED, "alpha-hardened",
     "Soft edges became hard: half opaque and more became opaque, the rest transparent."},
    {VX_REMARK_ALPHA_DROPPED, "alpha-dropped", "Transparency is lost; every pixel is opaque."},
    {VX_REMARK_COLORS_LOST, "colors-lost", "Some pixels changed their colour."},
    {VX_REMARK_PROFILE_DROPPED, "profile-dropped", "The format has no place for the colour profile."},
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
