// vx/image.hpp - vx.h for C++20, with ownership and exceptions taken care of. Holds no logic of its own.
//
//     vx::Source source = vx::Source::File("app.ico");
//     for (int page = 1; page <= source.Describe().page_count; ++page) {
//       vx::Bitmap bitmap = source.Load(page);
//       std::vector<uint8_t> pixels = bitmap.Rgba();
//     }
//
// Functions throw vx::Error where their C counterparts fail.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "vx/vx.h"

namespace vx {

/// A failed call: its status and reason, and in what() the status's name and the library's detail.
class Error : public std::runtime_error {
 public:
  /// Of this thread's last call, which failed with status.
  explicit Error(int status) : Error(status, vx_error_detail()) { vx_last_error(&info_); }
  Error(int status, const std::string& detail)
      : std::runtime_error(vx_status_name(status) + (detail.empty() ? detail : ": " + detail)),
        info_{status, VX_REASON_NONE, 0, 0, -1, 0, 0},
        detail_(detail) {}

  /// The vx_status.
  [[nodiscard]] int status() const noexcept { return info_.status; }
  /// The vx_reason; VX_REASON_NONE where no call of the library failed.
  [[nodiscard]] int reason() const noexcept { return info_.reason; }
  /// The numbers of it, with byte and page.
  [[nodiscard]] const vx_error_info& info() const noexcept { return info_; }
  /// What the call found wrong, in words; "" when there is nothing to add to the status.
  [[nodiscard]] const std::string& detail() const noexcept { return detail_; }

 private:
  vx_error_info info_{};
  std::string detail_;
};

/// Throws unless the call worked.
inline void Check(int status) {
  if (status != VX_OK) throw Error(status);
}

/// Load options that start from the defaults.
struct LoadOptions : vx_load_options {
  LoadOptions() noexcept : vx_load_options VX_LOAD_OPTIONS_DEFAULT {}
};

/// Save options that start from the defaults.
struct SaveOptions : vx_save_options {
  explicit SaveOptions(vx_format form = VX_FORMAT_BMP, int bitsPerPixel = 0) noexcept
      : vx_save_options{form, bitsPerPixel, 0, VX_PALETTE_BEST, VX_DITHER_DIFFUSE, 0, 0, VX_MASKS_NONE, 0} {}
};

/// Options of drawing that start from the defaults.
struct DrawOptions : vx_draw_options {
  DrawOptions() noexcept : vx_draw_options VX_DRAW_OPTIONS_DEFAULT {}
};

/// What this thread's last load or save has to remark; valid until its next call.
[[nodiscard]] inline std::span<const vx_remark> Remarks() noexcept {
  int count = 0;
  const vx_remark* remarks = vx_remarks(&count);
  return {remarks, static_cast<std::size_t>(count)};
}

/// Options of building animated cursors that start from the defaults.
struct AnimationOptions : vx_animation_options {
  AnimationOptions() noexcept : vx_animation_options VX_ANIMATION_OPTIONS_DEFAULT {}
};

/// Bytes that the library allocated.
class Buffer {
 public:
  Buffer(uint8_t* bytes, std::size_t size) noexcept : bytes_(bytes), size_(size) {}
  [[nodiscard]] std::span<const uint8_t> Bytes() const noexcept { return {bytes_.get(), size_}; }

 private:
  struct Free {
    void operator()(uint8_t* bytes) const noexcept { vx_free(bytes); }
  };
  std::unique_ptr<uint8_t[], Free> bytes_;
  std::size_t size_;
};

/// A picture in memory.
class Bitmap {
 public:
  /// Takes ownership.
  explicit Bitmap(vx_bitmap* bitmap) noexcept : bitmap_(bitmap) {}

  /// Takes 4 x width bytes a row, the top one first: red, green, blue, alpha.
  [[nodiscard]] static Bitmap FromRgba(int width, int height, const uint8_t* rgba) {
    vx_bitmap* bitmap = nullptr;
    Check(vx_bitmap_from_rgba(width, height, rgba, &bitmap));
    return Bitmap(bitmap);
  }

  /// A smaller picture, of 32 bits: the means of blocks of pixels. @param largestSide pixels, 1 and more
  [[nodiscard]] Bitmap Shrink(int largestSide) const {
    vx_bitmap* smaller = nullptr;
    Check(vx_bitmap_shrink(bitmap_.get(), largestSide, &smaller));
    return Bitmap(smaller);
  }

  [[nodiscard]] vx_bitmap_info Describe() const {
    vx_bitmap_info info;
    Check(vx_bitmap_describe(bitmap_.get(), &info));
    return info;
  }
  /// One row as stored; lives as long as the bitmap, or until the next row is asked for where it was loaded
  /// row by row. @throws Error when row is out of range, or cannot be read
  [[nodiscard]] std::span<const uint8_t> Row(int row) const {
    const vx_bitmap_info info = Describe();
    const uint8_t* bytes = vx_bitmap_row(bitmap_.get(), row);
    if (bytes != nullptr) return {bytes, static_cast<std::size_t>(info.bytes_per_line)};
    if (row < 0 || row >= info.height)
      throw Error(VX_BAD_PARAMETER, "there is no row " + std::to_string(row));
    vx_error_info failure;
    vx_last_error(&failure);
    throw Error(failure.status);
  }
  /// The palette, 4 bytes an entry (blue, green, red, 0); empty above 8 bits.
  [[nodiscard]] std::span<const uint8_t> Palette() const {
    return {vx_bitmap_palette(bitmap_.get()), static_cast<std::size_t>(Describe().palette_count) * 4};
  }
  /// One row as red, green, blue, alpha. @param rgba 4 x width bytes
  void ReadRgba(int row, uint8_t* rgba) const { Check(vx_bitmap_read_rgba(bitmap_.get(), row, rgba)); }
  /// `count` rows from row `first` on, `stride` bytes from one to the next, which are 4 x width or more.
  void ReadRgba(int first, int count, uint8_t* rgba, std::size_t stride) const {
    Check(vx_bitmap_read_rgba_rows(bitmap_.get(), first, count, rgba, stride));
  }
  /// All rows from the top as red, green, blue, alpha: 4 bytes a pixel, which the memory limit knows nothing
  /// of.
  [[nodiscard]] std::vector<uint8_t> Rgba() const {
    const vx_bitmap_info info = Describe();
    const std::size_t rowBytes = static_cast<std::size_t>(info.width) * 4;
    std::vector<uint8_t> pixels(rowBytes * static_cast<std::size_t>(info.height));
    ReadRgba(0, info.height, pixels.data(), rowBytes);
    return pixels;
  }
  /// The ICC profile of its colours, which lives as long as the bitmap; empty where it has none.
  [[nodiscard]] std::span<const uint8_t> Profile() const noexcept {
    std::size_t size = 0;
    const uint8_t* bytes = vx_bitmap_profile(bitmap_.get(), &size);
    return {bytes, size};
  }
  /// The name of the file that holds the profile; "" unless it is linked.
  [[nodiscard]] std::string ProfileName() const {
    const char* name = vx_bitmap_profile_name(bitmap_.get());
    return name == nullptr ? "" : name;
  }
  [[nodiscard]] Buffer EncodePng() const {
    uint8_t* png = nullptr;
    std::size_t size = 0;
    Check(vx_bitmap_encode_png(bitmap_.get(), &png, &size));
    return {png, size};
  }
  /// What saving does to the picture; throws where saving would.
  [[nodiscard]] vx_save_plan Plan(const vx_save_options& options) const {
    vx_save_plan plan;
    Check(vx_plan_save(bitmap_.get(), &options, &plan));
    return plan;
  }
  /// Saves a file of its own, which appears whole or not at all.
  void Save(const std::string& path, const vx_save_options& options) const {
    Check(vx_save_file(bitmap_.get(), path.c_str(), &options));
  }
  [[nodiscard]] Buffer Save(const vx_save_options& options) const {
    uint8_t* bytes = nullptr;
    std::size_t size = 0;
    Check(vx_save_memory(bitmap_.get(), &options, &bytes, &size));
    return {bytes, size};
  }
  /// The picture as text for a terminal.
  [[nodiscard]] std::string Draw(const vx_draw_options& options) const {
    char* text = nullptr;
    std::size_t size = 0;
    Check(vx_bitmap_draw(bitmap_.get(), &options, &text, &size));
    const std::unique_ptr<char, void (*)(void*)> owner(text, vx_free);
    return {text, size};
  }
  [[nodiscard]] vx_bitmap* Get() const noexcept { return bitmap_.get(); }

 private:
  struct Free {
    void operator()(vx_bitmap* bitmap) const noexcept { vx_bitmap_free(bitmap); }
  };
  std::unique_ptr<vx_bitmap, Free> bitmap_;
};

/// A file or memory block that images are read from.
class Source {
 public:
  [[nodiscard]] static Source File(const std::string& path) {
    vx_source* source = nullptr;
    Check(vx_open_file(path.c_str(), &source));
    return Source(source);
  }
  /// The bytes are not copied and must outlive the source. @param name for messages
  [[nodiscard]] static Source Memory(std::span<const uint8_t> bytes, const std::string& name = "memory") {
    vx_source* source = nullptr;
    Check(vx_open_memory(bytes.data(), bytes.size(), name.c_str(), &source));
    return Source(source);
  }
  /// Reads a stream to its end, unless it begins like no picture. @param flags vx_stream_flags
  [[nodiscard]] static Source Stream(vx_read_function read, void* user, const std::string& name = "stream",
                                     unsigned int flags = 0) {
    vx_source* source = nullptr;
    Check(vx_open_stream(read, user, name.c_str(), flags, &source));
    return Source(source);
  }
  /// Takes ownership.
  explicit Source(vx_source* source) noexcept : source_(source) {}

  /// Describes one page; pages count from 1.
  [[nodiscard]] vx_info Describe(int page = 1) const {
    vx_info info;
    Check(vx_describe(source_.get(), page, &info));
    return info;
  }
  /// How a page is stored, and how much of it the file has.
  [[nodiscard]] vx_storage_info DescribeStorage(int page = 1) const {
    vx_storage_info info;
    Check(vx_storage_describe(source_.get(), page, &info));
    return info;
  }
  /// The page that people mean who want a picture of that width; 0: the largest there is.
  [[nodiscard]] int BestPage(int width = 0) const {
    int page = 0;
    Check(vx_best_page(source_.get(), width, &page));
    return page;
  }
  [[nodiscard]] Bitmap Load(const vx_load_options& options) const {
    vx_bitmap* bitmap = nullptr;
    Check(vx_load(source_.get(), &options, &bitmap));
    return Bitmap(bitmap);
  }
  [[nodiscard]] Bitmap Load(int page = 1) const {
    LoadOptions options;
    options.page = page;
    return Load(options);
  }
  /// What an icon or cursor file says of itself, whatever its pages are like.
  [[nodiscard]] vx_directory_info DescribeDirectory() const {
    vx_directory_info info;
    Check(vx_directory_describe(source_.get(), &info));
    return info;
  }
  /// Where a page of an icon or cursor file lies.
  [[nodiscard]] vx_page_info DescribePage(int page) const {
    vx_page_info info;
    Check(vx_page_describe(source_.get(), page, &info));
    return info;
  }
  /// Bytes of an icon or cursor file that belong to no page.
  [[nodiscard]] uint64_t UnreferencedBytes() const {
    uint64_t bytes = 0;
    Check(vx_unreferenced_bytes(source_.get(), &bytes));
    return bytes;
  }
  /// What an animated cursor says of itself.
  [[nodiscard]] vx_animation_info DescribeAnimation() const {
    vx_animation_info info;
    Check(vx_animation_describe(source_.get(), &info));
    return info;
  }
  /// Steps of an animated cursor. @param first from 0
  [[nodiscard]] std::vector<vx_animation_step> AnimationSteps(int first, int count) const {
    std::vector<vx_animation_step> steps(static_cast<std::size_t>(count));
    Check(vx_animation_steps(source_.get(), first, count, steps.data()));
    return steps;
  }
  [[nodiscard]] vx_source* Get() const noexcept { return source_.get(); }

 private:
  struct Close {
    void operator()(vx_source* source) const noexcept { vx_close(source); }
  };
  std::unique_ptr<vx_source, Close> source_;
};

/// Saves rows, which `give` fills from the top, as a file that appears whole or not at all.
/// @param give called with the row and with (width * bits_per_pixel + 7) / 8 bytes as Bitmap::Row has them;
/// what it throws ends the save, and is thrown from here
template <std::invocable<int, uint8_t*> Give>
void SaveRows(const vx_rows& rows, Give&& give, const std::string& path, const vx_save_options& options) {
  struct Giver {
    std::remove_reference_t<Give>& give;
    std::exception_ptr thrown = nullptr;

    static int Call(void* user, int row, uint8_t* pixels) noexcept {
      auto& giver = *static_cast<Giver*>(user);
      try {
        giver.give(row, pixels);
        return 1;
      } catch (...) {
        giver.thrown = std::current_exception();
        return 0;
      }
    }
  } giver{give};
  const int status = vx_save_rows(&rows, Giver::Call, &giver, path.c_str(), &options);
  if (giver.thrown != nullptr) std::rethrow_exception(giver.thrown);
  Check(status);
}

/// Saves an animated cursor, which appears whole or not at all.
inline void SaveAnimation(std::span<const Bitmap> frames, const vx_animation_options& options,
                          const std::string& path) {
  std::vector<const vx_bitmap*> pictures;
  for (const Bitmap& frame : frames) pictures.push_back(frame.Get());
  Check(vx_save_animation(pictures.data(), static_cast<int>(pictures.size()), &options, path.c_str()));
}

/// Edits of an icon or cursor file, which show in the file once they are committed. Options may be null.
class Edit {
 public:
  /// @param flags vx_edit_flags
  explicit Edit(const std::string& path, unsigned int flags = 0) {
    vx_edit* edit = nullptr;
    Check(vx_edit_open(path.c_str(), flags, &edit));
    edit_.reset(edit);
  }

  [[nodiscard]] int PageCount() const {
    int count = 0;
    Check(vx_edit_page_count(edit_.get(), &count));
    return count;
  }
  void Add(const Bitmap& bitmap, const vx_save_options* options = nullptr) {
    Check(vx_edit_add(edit_.get(), bitmap.Get(), options));
  }
  void Insert(int page, const Bitmap& bitmap, const vx_save_options* options = nullptr) {
    Check(vx_edit_insert(edit_.get(), page, bitmap.Get(), options));
  }
  void Replace(int page, const Bitmap& bitmap, const vx_save_options* options = nullptr) {
    Check(vx_edit_replace(edit_.get(), page, bitmap.Get(), options));
  }
  void Delete(int page) { Check(vx_edit_delete(edit_.get(), page)); }
  void SetHotSpot(int page, int x, int y) { Check(vx_edit_set_hot_spot(edit_.get(), page, x, y)); }
  void Compact() { Check(vx_edit_compact(edit_.get())); }
  void Commit() { Check(vx_edit_commit(edit_.get())); }
  [[nodiscard]] bool IsLocked() const noexcept { return vx_edit_is_locked(edit_.get()) != 0; }

 private:
  struct Close {
    void operator()(vx_edit* edit) const noexcept { vx_edit_close(edit); }
  };
  std::unique_ptr<vx_edit, Close> edit_;
};

}  // namespace vx
