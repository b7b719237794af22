// The table of findings: code, help, documents and repair read it.
#include "verify/Findings.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/Errors.h"

namespace vxkrn {
namespace {

constexpr std::array<FindingRule, VX_FINDING_SIZE_MISSING + 1> kRules = {{
    {VX_FINDING_NONE, "none", VX_NOTE, "", "", ""},
    {VX_FINDING_FILE_SIZE, "file-size", VX_WARNING, "the file size in the header is right now",
     "its header says that the file has {1} bytes, but it has {2}",
     "Readers do not look there, but some refuse the file; `vxbmp repair` writes the right number."},
    {VX_FINDING_DATA_OFFSET, "data-offset", VX_ERROR, "the header says where the pixels are now",
     "no pixels can be at byte {1}, where the header says; byte {2} is where they should be",
     "Readers that believe the header show something else; `vxbmp repair` writes the right place."},
    {VX_FINDING_IMAGE_SIZE, "image-size", VX_WARNING, "the image size in the header is right now",
     "its header says that the pixel data has {1} bytes, but it has {2}",
     "Few readers look there; `vxbmp repair` writes the right number."},
    {VX_FINDING_PLANES, "planes", VX_WARNING, "the header says one plane now",
     "its header says {1} planes; pictures have 1",
     "Strict readers refuse the file; `vxbmp repair` writes 1."},
    {VX_FINDING_PALETTE_COUNT, "palette-count", VX_WARNING,
     "the header says as many colours as can be used now", "its header says {1} colours; pixels can name {2}",
     "Strict readers refuse the file; `vxbmp repair` writes the most that the depth has."},
    {VX_FINDING_PALETTE_SHORT, "palette-short", VX_WARNING, "",
     "its colour table has room for {1} of the {2} colours that its header means",
     "Old writers shortened tables so, and readers that trust the header show wrong colours; convert the "
     "file."},
    {VX_FINDING_TOP_DOWN_COMPRESSED, "top-down-compressed", VX_WARNING, "",
     "its data is compressed and its header says that the top row is first, which no format allows",
     "Readers refuse it or show it upside down; convert the file."},
    {VX_FINDING_HEADER_UNKNOWN, "header-unknown", VX_ERROR, "",
     "no reader knows its image header, which says that it is {1} bytes long",
     "The file is damaged or no bitmap; get it anew."},
    {VX_FINDING_UNREADABLE, "unreadable", VX_ERROR, "", "",
     "No reader can show the picture; get the file anew, or write it with another program."},
    {VX_FINDING_HEADER_CUT, "header-cut", VX_ERROR, "", "", "The file was cut off; get it anew."},
    {VX_FINDING_PALETTE_CUT, "palette-cut", VX_ERROR, "",
     "the file ends inside its colour table, which should have {1} bytes",
     "The file was cut off; get it anew."},
    {VX_FINDING_ROWS_MISSING, "rows-missing", VX_ERROR, "",
     "the file ends early: {1} of its {2} rows are there",
     "The file was cut off; get it anew, or take what is there with `vxbmp convert --allow-truncated`."},
    {VX_FINDING_STREAM_DAMAGED, "stream-damaged", VX_ERROR, "", "",
     "The compressed stream cannot be decoded to its end; get the file anew."},
    {VX_FINDING_PROFILE_OUTSIDE, "profile-outside", VX_WARNING, "",
     "the file ends before its colour profile of {1} bytes does",
     "Colours are shown without it; convert the file, which leaves the profile out."},
    {VX_FINDING_PARTS_OVERLAP, "parts-overlap", VX_ERROR, "",
     "two of its structures claim the same bytes; the other one begins at byte {1}",
     "One of them is not what it should be: `vxbmp inspect` shows both."},
    {VX_FINDING_PALETTE_INDEX, "palette-index", VX_ERROR, "",
     "pixels whose colour lies behind the last of its {2}: {1}",
     "Readers show those pixels black, or refuse the file; convert it to fix what they are."},
    {VX_FINDING_ALPHA_EMPTY, "alpha-empty", VX_NOTE, "",
     "its alpha channel would hide every pixel, so readers show all that no mask hides",
     "Nothing has to be done, unless the picture should be transparent."},
    {VX_FINDING_CODES_CUT, "codes-cut", VX_ERROR, "",
     "its run-length data ends in row {1} of {2}, counted as stored",
     "The file was cut off; get it anew, or convert it as far as it goes."},
    {VX_FINDING_CODES_NO_END, "codes-no-end", VX_NOTE, "", "no code says that its run-length data ends",
     "All rows are there, and readers do not mind; convert the file to write it anew."},
    {VX_FINDING_CODES_OVERRUN, "codes-overrun", VX_ERROR, "",
     "runs that go beyond the end of their row: {1}, the first of them in row {2}",
     "Readers cut them off or refuse the file; convert it to write it anew."},
    {VX_FINDING_CODES_OUTSIDE, "codes-outside", VX_ERROR, "",
     "runs that lie behind the last of its {2} rows: {1}",
     "Readers leave them out or refuse the file; convert it to write it anew."},
    {VX_FINDING_CODES_RUN_ON, "codes-run-on", VX_ERROR, "",
     "no code ends a row of its run-length data, which runs on into the next",
     "Some readers show one row only; convert the file to write it anew."},
    {VX_FINDING_DIRECTORY_CUT, "directory-cut", VX_ERROR, "",
     "the file ends in the directory of its {1} pages, of which {2} have an entry",
     "The file was cut off; get it anew."},
    {VX_FINDING_PAGE_MISSING, "page-missing", VX_ERROR, "",
     "the file ends before byte {1}, where it should begin",
     "The page is lost; get the file anew, or take it out with `vxbmp pages delete`."},
    {VX_FINDING_PAGE_IN_DIRECTORY, "page-in-directory", VX_ERROR, "it has bytes of its own now",
     "it begins inside the directory, which ends at byte {1}",
     "Either the place or the number of pages is wrong; `vxbmp pages delete` takes the page out."},
    {VX_FINDING_PAGES_OVERLAP, "pages-overlap", VX_ERROR, "it has bytes of its own now",
     "it shares bytes with page {1}",
     "A change to one page damages the other; `vxbmp repair` gives each its own bytes."},
    {VX_FINDING_PAGES_SHARED, "pages-shared", VX_NOTE, "", "it is the very same bytes as page {1}",
     "Nothing has to be done; `vxbmp pages delete` takes one of them out."},
    {VX_FINDING_ENTRY_SIZE, "entry-size", VX_WARNING, "its entry says how large it is now",
     "its entry in the directory says that it has {1} x {2} pixels, which is not so",
     "Readers that choose a page by the directory choose the wrong one; `vxbmp repair` writes the right "
     "size."},
    {VX_FINDING_ENTRY_DEPTH, "entry-depth", VX_WARNING, "its entry says how many bits it has now",
     "its entry in the directory says {1} bits per pixel, but it has {2}",
     "Readers that choose a page by the directory choose the wrong one; `vxbmp repair` writes the right "
     "depth."},
    {VX_FINDING_ENTRY_LENGTH, "entry-length", VX_ERROR, "its entry says how long it is now",
     "its entry in the directory says that it has {1} bytes, but it has {2}",
     "Readers that believe it cut the page off, or refuse it; `vxbmp repair` writes the right length."},
    {VX_FINDING_HEIGHT_NOT_DOUBLED, "height-not-doubled", VX_ERROR,
     "its header counts the rows of the mask now",
     "its header says {1} rows, and so leaves out those of the mask",
     "Most readers show the upper half; `vxbmp repair` writes the right height, and the mask."},
    {VX_FINDING_HEADER_IN_ICON, "header-in-icon", VX_WARNING, "",
     "its image header has {1} bytes; few readers take that in icons",
     "Take the page out and add it again to have it written in the usual form."},
    {VX_FINDING_MASK_CUT, "mask-cut", VX_ERROR, "its mask is whole now",
     "its mask ends early: {1} of {2} rows are there",
     "Many readers refuse the page; `vxbmp repair` completes the mask, from alpha where there is some."},
    {VX_FINDING_MASK_DISAGREES, "mask-disagrees", VX_NOTE, "",
     "pixels that are opaque but hidden by its mask, or the other way round: {1}",
     "Readers that go by the mask show another shape; replace the page by itself to have the mask made from "
     "alpha."},
    {VX_FINDING_SOFT_EDGES_LOST, "soft-edges-lost", VX_WARNING, "",
     "pixels of soft edges, half opaque and more, that its mask hides: {1}",
     "Readers that look at both show hard edges; replace the page by itself to have the mask made from "
     "alpha."},
    {VX_FINDING_PNG_IN_CURSOR, "png-in-cursor", VX_WARNING, "",
     "it is a PNG stream, which few readers take in cursors",
     "Take the page out and add it again, which writes a bitmap."},
    {VX_FINDING_PNG_SMALL, "png-small", VX_NOTE, "",
     "it is a PNG stream of {1} x {2} pixels; old readers take such only where a side has 256",
     "Nothing has to be done, unless old systems are to show it: then replace the page by a bitmap."},
    {VX_FINDING_HOT_SPOT_OUTSIDE, "hot-spot-outside", VX_ERROR, "",
     "its hot spot, {1}, {2}, lies outside the picture",
     "Nobody can know where it should be; set it with `vxbmp pages hotspot`."},
    {VX_FINDING_CHUNK_SIZE, "chunk-size", VX_WARNING, "", "the size or count says {1}, which is wrong",
     "Some readers stop there; `vxbmp cursor FILE -o NEW.ani` writes the animation anew."},
    {VX_FINDING_FRAME_MISSING, "frame-missing", VX_ERROR, "",
     "steps that show a frame which it does not have: {1} of {2}",
     "Frames were lost, or the sequence is wrong; `vxbmp cursor FILE -o NEW.ani` writes what is there."},
    {VX_FINDING_UNREFERENCED, "unreferenced-bytes", VX_NOTE, "they are left out now",
     "bytes that nothing refers to: {1}",
     "They may be what an edit left behind; `vxbmp repair` leaves them out."},
    {VX_FINDING_TRAILING, "trailing-bytes", VX_NOTE, "they are left out now", "bytes behind its end: {1}",
     "They may be padding, or another file; `vxbmp repair` leaves them out."},
    {VX_FINDING_NOT_LOOKED_AT, "not-looked-at", VX_NOTE, "",
     "its pixels were not looked at: it is too large, or too many pages share their bytes",
     "A higher `--memory-limit` lets larger pictures be looked at."},
    {VX_FINDING_WRONG_KIND, "wrong-kind", VX_ERROR, "", "it is not of the kind that is asked for",
     "Make one with `vxbmp icon` or `vxbmp cursor`."},
    {VX_FINDING_SIZE_MISSING, "size-missing", VX_ERROR, "", "it has no page of {1} x {1} pixels",
     "Systems enlarge another page; add one with `vxbmp pages add`, or make the file with `vxbmp icon`."},
}};

constexpr bool AreInOrder() {
  for (std::size_t i = 0; i < kRules.size(); ++i) {
    if (kRules[i].code != static_cast<int>(i)) return false;
  }
  return true;
}
static_assert(AreInOrder());

constexpr std::array<const char*, 3> kSeverities = {"note", "warning", "error"};

/// The rule's words with the numbers in their places.
void Fill(const FindingRule& rule, const Found& found, Text& text) noexcept {
  std::string_view rest = rule.text;
  for (std::size_t at = rest.find('{'); at != std::string_view::npos; at = rest.find('{')) {
    text << rest.substr(0, at) << (rest[at + 1] == '1' ? found.first : found.second);
    rest.remove_prefix(at + 3);
  }
  text << rest;
}

}  // namespace

const FindingRule* FindingRuleOf(int code) noexcept {
  const bool isKnown = code > VX_FINDING_NONE && code < static_cast<int>(kRules.size());
  return isKnown ? &kRules[static_cast<std::size_t>(code)] : nullptr;
}

void Findings::Add(vx_finding_code code, int page, uint64_t offset, uint64_t first, uint64_t second) {
  const uint64_t shows = offset == kNoByte ? offset : std::min(offset, fileSize_);
  all_.push_back({code, page, static_cast<int64_t>(shows), static_cast<int64_t>(first),
                  static_cast<int64_t>(second), -1});
}

void Findings::AddFailure(vx_finding_code code, int page, uint64_t offset) {
  const std::string_view words = Detail().CString();
  sentences_.emplace_back(words.begin(), words.end()).push_back('\0');
  Add(code, page, offset);
  all_.back().sentence = static_cast<int>(sentences_.size()) - 1;
  BeginCall();
}

void Findings::Sort() {
  std::stable_sort(all_.begin(), all_.end(), [](const Found& one, const Found& other) {
    return one.page != other.page ? one.page < other.page : one.offset < other.offset;
  });
}

int Findings::Tell(const Found& found, vx_finding_function take, void* user) const noexcept {
  const FindingRule& rule = *FindingRuleOf(found.code);
  Text text;
  const char* words = text.CString();
  if (found.sentence >= 0) {
    words = sentences_[static_cast<std::size_t>(found.sentence)].data();
  } else {
    Fill(rule, found, text);
  }
  const vx_finding finding = {found.code,   rule.severity, found.page,   0,
                              found.offset, found.first,   found.second, words};
  return take(user, &finding);
}

}  // namespace vxkrn

const char* vx_finding_name(int code) {
  const vxkrn::FindingRule* rule = vxkrn::FindingRuleOf(code);
  return rule == nullptr ? "unknown" : rule->name;
}

const char* vx_finding_advice(int code) {
  const vxkrn::FindingRule* rule = vxkrn::FindingRuleOf(code);
  return rule == nullptr ? "" : rule->advice;
}

int vx_finding_can_be_mended(int code) {
  return vxkrn::CanBeMended(code) ? 1 : 0;
}

const char* vx_severity_name(int severity) {
  const bool isKnown = severity >= VX_NOTE && severity <= VX_ERROR;
  return isKnown ? vxkrn::kSeverities[static_cast<std::size_t>(severity)] : "unknown";
}
