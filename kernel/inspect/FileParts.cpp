// Directories, and files within files.
#include "inspect/FileParts.h"

#include <algorithm>
#include <functional>
#include <set>

#include "base/Errors.h"
#include "beyond/Animation.h"
#include "beyond/FrameView.h"
#include "beyond/IconPage.h"
#include "beyond/Os2Icon.h"
#include "format/IconDirectory.h"
#include "inspect/BitmapParts.h"

namespace vxkrn {
namespace {

/// Offsets of bodies that were taken apart.
using Seen = std::set<uint64_t, std::less<>, memory::Counted<uint64_t>>;

void TellOfBody(vx_source& source, ImagePlace place, const std::optional<BitmapImage>& image,
                ImageTaker* taker) {
  if (taker == nullptr) return;
  if (image) return taker->Take(source, place, *image);
  taker->TakeUnknown(source, place);
}

void AddBody(vx_source& source, int page, const ICONDIRENTRY& entry, Seen* seen, ImageTaker* taker,
             PartList* list) {
  const int body = list->Add(VX_PART_IMAGE, entry.ImageOffset, entry.BytesInRes);
  const bool isFirst = seen->insert(entry.ImageOffset).second;
  const bool isTakenApart = isFirst && list->Parts().size() <= kMostParts;
  if (taker == nullptr && !isTakenApart) return;
  const int outer = list->Parent();
  list->SetParent(body);
  std::optional<BitmapImage> image;
  if (FindIconPage(source, page, &image) != STATUS_OK) image.reset();
  TellOfBody(source, {list->Base(), entry.ImageOffset, list->Page(), isFirst}, image, taker);
  if (isTakenApart && image) {
    AddImageParts(source, *image, list);
  } else if (isTakenApart && entry.BytesInRes > 0) {
    list->Add(VX_PART_UNKNOWN, entry.ImageOffset, entry.BytesInRes);
  }
  BeginCall();
  list->SetParent(outer);
}

/// @param isWhole the file is no frame of another, so that its pages have numbers of their own
void AddIconParts(vx_source& source, bool isWhole, ImageTaker* taker, PartList* list) {
  list->Add(VX_PART_DIRECTORY, 0, bmp::kDirectorySize);
  const ICONDIR directory = bmp::DecodeDirectory(source.BlockAt<bmp::kDirectorySize>(0));
  const bool isCursor = directory.Type == bmp::kCursorType;
  Seen seen;
  for (int page = 1; page <= directory.Count; ++page) {
    if (isWhole) list->SetPage(page);
    const uint64_t at = bmp::EntryOffset(page);
    list->Add(isCursor ? VX_PART_CURSOR_ENTRY : VX_PART_ICON_ENTRY, at, bmp::kEntrySize);
    bmp::Block<bmp::kEntrySize> bytes{};
    if (source.Peek(bytes.data(), bytes.size(), at) < bytes.size()) break;
    AddBody(source, page, bmp::DecodeEntry(bytes), &seen, taker, list);
  }
}

enum class FileKind : uint8_t { kNone, kBitmap, kIcon, kPng, kAnimation };

FileKind KindOf(const vx_source& source) noexcept {
  if (IsAnimation(source)) return FileKind::kAnimation;
  if (source.BlockAt<bmp::kPngSignatureSize>(0) == bmp::kPngSignatures[0]) return FileKind::kPng;
  if (bmp::IsValidDirectory(bmp::DecodeDirectory(source.BlockAt<bmp::kDirectorySize>(0))))
    return FileKind::kIcon;
  const auto signature = bmp::LoadU16(bmp::View<2>(source.BlockAt<2>(0)), 0);
  const bool isBitmap = signature == bmp::kBitmapSignature || signature == bmp::kArraySignature;
  if (isBitmap || IsOs2IconSignature(signature)) return FileKind::kBitmap;
  std::optional<BitmapImage> bare;
  const bool isFound = FindBitmap(source, 1, &bare) == STATUS_OK && bare;
  return isFound ? FileKind::kBitmap : FileKind::kNone;
}

void AddPngFile(vx_source& source, ImageTaker* taker, PartList* list) {
  BitmapImage image;
  image.decoder = bmp::Decoder::kPng;
  if (taker != nullptr) taker->Take(source, {.base = list->Base(), .page = list->Page()}, image);
  (void)AddPngParts(source, 0, static_cast<uint64_t>(source.Size()), list);
}

/// A file that is no list of others. @return whether its kind is known
bool AddSingle(vx_source& source, bool isWhole, ImageTaker* taker, PartList* list) {
  switch (KindOf(source)) {
    case FileKind::kIcon: AddIconParts(source, isWhole, taker, list); return true;
    case FileKind::kPng: AddPngFile(source, taker, list); return true;
    case FileKind::kBitmap: AddBitmapParts(source, taker, list); return true;
    default: return false;
  }
}

int AddFrame(vx_source& source, int page, const Extent& extent, ImageTaker* taker,
             memory::Vector<vx_part>* parts) {
  FrameView frame(source, extent);
  const int status = frame.Open(page);
  if (status != STATUS_OK) return status;
  PartList list(*parts, extent.begin);
  list.SetPage(page);
  list.SetParent(list.Add(VX_PART_IMAGE, 0, extent.end - extent.begin));
  if (AddSingle(frame.Source(), false, taker, &list)) return STATUS_OK;
  if (taker != nullptr) taker->TakeUnknown(frame.Source(), {.base = extent.begin, .page = page});
  if (extent.end > extent.begin) list.Add(VX_PART_UNKNOWN, 0, extent.end - extent.begin);
  return STATUS_OK;
}

int AddAnimationParts(vx_source& source, ImageTaker* taker, memory::Vector<vx_part>* parts) {
  Animation animation;
  memory::Vector<ChunkPlace> chunks;
  (void)FindAnimation(source, &animation, &chunks);  // one without frames has chunks all the same
  BeginCall();
  PartList list(*parts);
  list.AddChunk(VX_PART_RIFF_CHUNK, 0, bmp::kListHeaderSize, "RIFF");
  for (const ChunkPlace& chunk : chunks) {
    bmp::Block<4> name{};
    bmp::StoreU32(name, 0, chunk.name);
    list.AddChunk(VX_PART_RIFF_CHUNK, chunk.at, chunk.length,
                  {reinterpret_cast<const char*>(name.data()), name.size()});
  }
  int page = 0;
  for (const Extent& extent : animation.frames) {
    const int status = AddFrame(source, ++page, extent, taker, parts);
    if (status != STATUS_OK) return status;
  }
  return STATUS_OK;
}

}  // namespace

int FindParts(vx_source& source, memory::Vector<vx_part>* parts, ImageTaker* taker) {
  if (IsAnimation(source)) return AddAnimationParts(source, taker, parts);
  PartList list(*parts);
  if (AddSingle(source, true, taker, &list)) return STATUS_OK;
  return Fail(Cause(STATUS_BAD_FORMAT, VX_REASON_NO_SIGNATURE).At(0), source.Name(),
              ": it begins like no bitmap, icon, cursor or PNG file");
}

}  // namespace vxkrn
