// Any bytes as an icon or cursor file, and any edits of its pages, in place: the filter's own way of editing.
#include <algorithm>
#include <cstring>
#include <vector>
#include <vx/image.hpp>

#include "Input.h"

namespace {

/// The application's one file.
struct MemoryFile {
  std::vector<std::uint8_t> bytes;

  static constexpr std::size_t kMost = std::size_t{1} << 20;
  static MemoryFile* Of(void* file) { return static_cast<MemoryFile*>(file); }

  static void* Open(void* user, const char* /*name*/, int /*flags*/) { return user; }
  static std::int64_t ReadAt(void* /*user*/, void* file, void* buffer, std::uint32_t count,
                             std::uint64_t position) {
    const std::vector<std::uint8_t>& bytes = Of(file)->bytes;
    if (position >= bytes.size()) return 0;
    const std::size_t arrived =
        std::min<std::size_t>(count, bytes.size() - static_cast<std::size_t>(position));
    std::memcpy(buffer, bytes.data() + position, arrived);
    return static_cast<std::int64_t>(arrived);
  }
  static std::int64_t WriteAt(void* /*user*/, void* file, const void* buffer, std::uint32_t count,
                              std::uint64_t position) {
    std::vector<std::uint8_t>& bytes = Of(file)->bytes;
    if (position + count > kMost) return -1;
    const auto end = static_cast<std::size_t>(position + count);
    if (bytes.size() < end) bytes.resize(end);
    if (count > 0) std::memcpy(bytes.data() + position, buffer, count);
    return count;
  }
  static std::int64_t Size(void* /*user*/, void* file) {
    return static_cast<std::int64_t>(Of(file)->bytes.size());
  }
  static int Truncate(void* /*user*/, void* file, std::uint64_t size) {
    Of(file)->bytes.resize(static_cast<std::size_t>(std::min<std::uint64_t>(size, kMost)));
    return 0;
  }
  static int Close(void* /*user*/, void* /*file*/) { return 0; }
};

vx::Bitmap PictureFrom(fuzz::Input& input) {
  const int width = 1 + input.Byte();
  const int height = 1 + input.Choice(20);
  std::vector<std::uint8_t> rgba(4 * static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  const std::uint8_t step = input.Byte();
  for (std::size_t i = 0; i < rgba.size(); ++i) rgba[i] = static_cast<std::uint8_t>(i * step);
  return vx::Bitmap::FromRgba(width, height, rgba.data());
}

/// A page that was added, inserted or replaced without a complaint is there.
void RequirePage(const char* name, int page, const vx::Bitmap& picture) {
  const vx::Bitmap loaded = vx::Source::File(name).Load(page);
  fuzz::Require(loaded.Describe().width == picture.Describe().width);
  fuzz::Require(loaded.Describe().height == picture.Describe().height);
}

void EditOnce(fuzz::Input& input, const char* name) {
  vx::Edit edit(name, VX_EDIT_IN_PLACE);
  const int count = edit.PageCount();
  const int page = input.Page(3);
  switch (input.Choice(5)) {
    case 3: return edit.Delete(page);
    case 4: return edit.SetHotSpot(page, input.Byte(), input.Byte());
    default: break;
  }
  const vx::Bitmap picture = PictureFrom(input);
  constexpr int kDepths[] = {0, 1, 4, 8, 24, 32};
  vx_save_options options = VX_SAVE_OPTIONS_DEFAULT;
  options.format = 0;
  options.bits_per_pixel = kDepths[input.Choice(6)];
  switch (input.Choice(3)) {
    case 0: edit.Add(picture, &options); return RequirePage(name, count + 1, picture);
    case 1: edit.Insert(page, picture, &options); return RequirePage(name, page, picture);
    default: edit.Replace(page, picture, &options); return RequirePage(name, page, picture);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  constexpr vx_file_functions kFunctions = {MemoryFile::Open, MemoryFile::ReadAt,   MemoryFile::WriteAt,
                                            MemoryFile::Size, MemoryFile::Truncate, MemoryFile::Close};
  vx_set_memory_limit(fuzz::kMemoryLimit);
  fuzz::Input input(bytes, size);
  MemoryFile file{{input.File().begin(), input.File().end()}};
  (void)vx_redirect_files(&kFunctions, &file);
  fuzz::wentAllTheWay = true;
  for (int i = 0; i < 3; ++i) {
    try {
      EditOnce(input, "icon");
    } catch (const vx::Error&) {  // most edits make no sense
      fuzz::wentAllTheWay = false;
    }
  }
  fuzz::Require(vx_memory_in_use() == 0);
  (void)vx_redirect_files(nullptr, nullptr);
  return 0;
}
