// Every reason that a call can fail for, reached as an application would, with its numbers. The few that a
// whole file of their own tests are listed at the end.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <samples/Headers.h>
#include <samples/Icons.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>

#include "../common/MemoryFile.h"
#include "vx/image.hpp"

namespace {

using samples::Bytes;

constexpr int kSide = 16;

/// A 24-bit bitmap with one byte after another replaced: {place, value}.
Bytes Bitmap(std::initializer_list<std::pair<std::size_t, int>> changes, std::size_t size = SIZE_MAX) {
  const samples::Picture picture = samples::Sunset(kSide, kSide, "");
  samples::ImageHeader header;
  header.width = header.height = kSide;
  header.bits = 24;
  Bytes file = samples::BitmapFile(samples::Encode(header), {}, samples::Rows24(picture));
  for (const auto& [place, value] : changes) file[place] = static_cast<uint8_t>(value);
  file.resize(std::min(file.size(), size));
  return file;
}

Bytes Icon(samples::IconType type, bool isPng,
           std::initializer_list<std::pair<std::size_t, int>> changes = {}) {
  const samples::Picture picture = samples::MoonBadge(kSide);
  Bytes file = samples::IconFile(type, {isPng ? samples::PngPage(picture) : samples::TrueColorPage(picture)});
  for (const auto& [place, value] : changes) file[place] = static_cast<uint8_t>(value);
  return file;
}

vx::Bitmap Picture(int side) {
  const std::vector<uint8_t> rgba(static_cast<std::size_t>(side) * 4, 255);
  return vx::Bitmap::FromRgba(side, 1, rgba.data());
}

class Reasons : public testing::Test {
 protected:
  void TearDown() override {
    vx_redirect_files(nullptr, nullptr);
    vx_set_memory_limit(0);
    std::filesystem::remove(path_);
  }

  /// The call must fail, for that reason, with those numbers.
  template <class Call>
  void Expect(int status, vx_reason reason, Call&& call, int64_t offset = -1, int64_t first = 0,
              int64_t second = 0, int page = 0) {
    SCOPED_TRACE(vx_reason_name(reason));
    reached_.insert(reason);
    try {
      call();
      ADD_FAILURE() << "it worked";
    } catch (const vx::Error& error) {
      const vx_error_info& info = error.info();
      const std::array<int64_t, 6> found = {info.status, info.reason, info.offset,
                                            info.first,  info.second, info.page};
      EXPECT_EQ(found, (std::array<int64_t, 6>{status, reason, offset, first, second, page})) << error.what();
      EXPECT_EQ(vx_error_reason(), reason);
    }
    vx_format_limits limits;
    vx::Check(vx_format_describe(VX_FORMAT_BMP, &limits));
    EXPECT_EQ(vx_error_reason(), VX_REASON_NONE) << "of a call that works";
  }
  void ExpectOfFile(int status, vx_reason reason, const Bytes& file, int64_t offset = -1, int64_t first = 0,
                    int64_t second = 0) {
    Expect(
        status, reason, [&] { (void)vx::Source::Memory(file).Load(); }, offset, first, second);
  }
  void ExpectAsFilter(int status, vx_reason reason, const Bytes& file, int64_t offset = -1) {
    vx::LoadOptions options;
    options.flags = VX_LOAD_AS_FILTER;
    Expect(
        status, reason, [&] { (void)vx::Source::Memory(file).Load(options); }, offset);
  }
  void ExpectOfFunctions(int status, vx_reason reason, const vx_file_functions& functions,
                         int64_t offset = -1, int64_t first = 0) {
    MemoryFile file = {.bytes = Bitmap({})};
    vx::Check(vx_redirect_files(&functions, &file));
    Expect(
        status, reason, [] { (void)vx::Source::File("it").Load(); }, offset, first);
    vx::Check(vx_redirect_files(nullptr, nullptr));
  }
  void ExpectOfSave(int status, vx_reason reason, int side, vx_format format, int bits, int64_t first,
                    int64_t second) {
    const vx::SaveOptions options(format, bits);
    Expect(
        status, reason, [&] { Picture(side).Save(path_, options); }, -1, first, second);
  }
  vx::Edit Edit(const Bytes& file, unsigned int flags = 0) {
    std::ofstream(path_, std::ios::binary)
        .write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
    return vx::Edit(path_, flags);
  }

  const std::string path_ = testing::TempDir() + "vx-reasons-" + std::to_string(getpid());
  static inline std::set<int> reached_;
};

TEST_F(Reasons, OfFilesThatAreNotWhole) {
  ExpectOfFile(VX_READ_ERROR, VX_REASON_EMPTY_FILE, Bitmap({}, 0));
  ExpectOfFile(VX_BAD_FORMAT, VX_REASON_TOO_SHORT, Bitmap({}, 1), -1, 1);
  ExpectOfFile(VX_BAD_FORMAT, VX_REASON_ENDS_EARLY, Bitmap({}, 16), 16, 14);
  ExpectOfFile(VX_BAD_FORMAT, VX_REASON_HEADER_CUT, Bitmap({}, 30), 30, 14, 40);
  ExpectOfFile(VX_READ_ERROR, VX_REASON_ENDS_EARLY, Bitmap({{28, 16}, {30, 3}}, 56), 56, 54);
  ExpectOfFile(VX_READ_ERROR, VX_REASON_TABLE_CUT, Bitmap({{28, 2}, {10, 70}}, 60), 60, 54, 16);
  ExpectOfFile(VX_READ_ERROR, VX_REASON_TOO_LITTLE_DATA, Bitmap({}, 101), 101, 47, 48);
  ExpectOfFile(VX_READ_ERROR, VX_REASON_ROWS_MISSING, Bitmap({}, 203), 203, 3, kSide);
  ExpectOfFile(VX_READ_ERROR, VX_REASON_BEHIND_END, Bitmap({{12, 1}}), 0x10000 + 54, 822);
  Bytes icon = Icon(samples::IconType::Icon, false, {{20, 1}});
  ExpectOfFile(VX_READ_ERROR, VX_REASON_BEHIND_END, icon, 0x10000 + 22, static_cast<int64_t>(icon.size()));
  const Bytes beyond = Bitmap({{10, 255}, {11, 255}, {12, 255}, {13, 255}});
  ExpectAsFilter(VX_SEEK_ERROR, VX_REASON_OUT_OF_REACH, beyond);
}

TEST_F(Reasons, OfWhatAFileSays) {
  ExpectOfFile(VX_BAD_FORMAT, VX_REASON_NO_SIGNATURE, {'T', 'e', 'x', 't'}, 0, 'T', 'e');
  const std::pair<vx_foreign, std::string_view> foreign[] = {
      {VX_FOREIGN_JPEG, "\xFF\xD8\xFF\xE0"},
      {VX_FOREIGN_GIF, "GIF89a"},
      {VX_FOREIGN_WEBP, "RIFF\x04\x01\x01\x01WEBPVP8 "},
      {VX_FOREIGN_SVG, "<?xml version='1.0'?><!-- a drawing --><svg>"},
      {VX_FOREIGN_TIFF, {"MM\0*", 4}}};
  for (const auto& [kind, text] : foreign)
    ExpectOfFile(VX_BAD_FORMAT, VX_REASON_FOREIGN, Bytes(text.begin(), text.end()), 0, kind);
  ExpectOfFile(VX_BAD_FORMAT, VX_REASON_HEADER_TOO_SHORT, Bitmap({{14, 8}}), 14, 8);
  ExpectOfFile(VX_UNKNOWN_HEADER, VX_REASON_UNKNOWN_HEADER, Bitmap({{14, 13}}), 14, 13);
  ExpectOfFile(VX_BAD_FORMAT, VX_REASON_BAD_DEPTH, Bitmap({{28, 3}}), 14, 3);
  ExpectOfFile(VX_BAD_FORMAT, VX_REASON_UNSUPPORTED_CODING, Bitmap({{30, 77}}), 14, 77, 24);
  ExpectOfFile(VX_BAD_FORMAT, VX_REASON_CODING_NOT_AT_DEPTH, Bitmap({{30, 3}}), 14, 3, 24);
  samples::ImageHeader masked;
  masked.width = masked.height = 1;
  masked.bits = 32;
  masked.compression = samples::Compression::BitFields;
  const Bytes pixel(4);
  ExpectOfFile(VX_BAD_FORMAT, VX_REASON_BAD_MASKS,
               samples::BitmapFile(samples::Encode(masked), samples::Encode(samples::Masks{}), pixel), 14,
               32);
  ExpectOfFile(VX_BAD_DIMENSIONS, VX_REASON_BAD_SIZE, Bitmap({{18, 0}}), 14, 0, kSide);
  const auto icon = samples::IconType::Icon;
  ExpectOfFile(VX_BAD_FORMAT, VX_REASON_WRONG_ICON_TYPE, Icon(icon, false, {{2, 7}}), -1, 7);
  ExpectOfFile(VX_BAD_FORMAT, VX_REASON_NO_PAGES, Icon(icon, false, {{4, 0}}));
  ExpectOfFile(VX_BAD_FORMAT, VX_REASON_PNG_DAMAGED, Icon(icon, true, {{22 + 20, 1}}));
  const Bytes cursor = Icon(samples::IconType::Cursor, true);
  ExpectAsFilter(VX_BAD_FORMAT, VX_REASON_PNG_IN_CURSOR, cursor, 22);
  Bytes cut = Icon(icon, false, {{22 + 14, 0}});
  cut.resize(cut.size() - 1);
  ExpectAsFilter(VX_BAD_FORMAT, VX_REASON_PAGE_DAMAGED, cut, 22);
  const Bytes two = samples::IconFile(icon, {samples::TrueColorPage(samples::MoonBadge(kSide)),
                                             samples::TrueColorPage(samples::MoonBadge(kSide))});
  Expect(
      VX_BAD_PAGE, VX_REASON_NO_SUCH_PAGE, [&] { (void)vx::Source::Memory(two).Load(3); }, -1, 3, 2);
}

TEST_F(Reasons, OfTheSystemAndOfMemory) {
  const auto opening = [](void* (*open)(void*, const char*, int)) {
    vx_file_functions functions = MemoryFile::kFunctions;
    functions.open = open;
    return functions;
  };
  ExpectOfFunctions(VX_OPEN_ERROR, VX_REASON_NO_SUCH_FILE,
                    opening([](void*, const char*, int) -> void* { return errno = ENOENT, nullptr; }), -1,
                    ENOENT);
  ExpectOfFunctions(VX_OPEN_ERROR, VX_REASON_NO_PERMISSION,
                    opening([](void*, const char*, int) -> void* { return errno = EACCES, nullptr; }), -1,
                    EACCES);
  ExpectOfFunctions(VX_UNKNOWN_HEADER, VX_REASON_INTERNAL,
                    opening([](void*, const char*, int) -> void* { throw std::runtime_error("its own"); }));
  vx_file_functions broken = MemoryFile::kFunctions;
  broken.read_at = [](void*, void*, void*, uint32_t, uint64_t) { return int64_t{-1}; };
  ExpectOfFunctions(VX_READ_ERROR, VX_REASON_SYSTEM_ERROR, broken, 0);
  Expect(
      VX_OPEN_ERROR, VX_REASON_NOT_A_FILE, [] { (void)vx::Source::File("/"); }, -1, EISDIR);
  Expect(
      VX_WRITE_ERROR, VX_REASON_DISK_FULL, [] { Picture(9).Save("/dev/full", vx::SaveOptions()); }, -1,
      ENOSPC);
  const Bytes file = Bitmap({});
  const vx::Source source = vx::Source::Memory(file);
  const uint64_t needed = 16 * 48;
  vx_set_memory_limit(vx_memory_in_use() + needed - 1);
  Expect(
      VX_NO_MEMORY, VX_REASON_OVER_MEMORY_LIMIT, [&] { (void)source.Load(); }, -1, needed,
      static_cast<int64_t>(vx_memory_limit()));
}

TEST_F(Reasons, OfAFileThatChangesWhileItIsRead) {
  // A page far from the file's beginning, which is kept, in a file too large to be held.
  constexpr uint32_t kPage = 1 << 16;
  const Bytes icon = Icon(samples::IconType::Icon, false, {{18, 0}, {20, 1}});
  bool changed = false;
  for (int reads = 0; reads < 40 && !changed; ++reads) {
    MemoryFile file = {.bytes = Bytes(icon.begin(), icon.begin() + 22)};
    file.bytes.resize(5 << 20);
    std::copy(icon.begin() + 22, icon.end(), file.bytes.begin() + kPage);
    file.read = [&, left = reads](uint64_t) mutable {
      if (left-- == 0) file.bytes[kPage + 8] = 4 * kSide;  // the height
    };
    vx::Check(vx_redirect_files(&MemoryFile::kFunctions, &file));
    vx_source* source = nullptr;
    vx_bitmap* bitmap = nullptr;
    if (vx_open_file("it", &source) == VX_OK) (void)vx_load(source, nullptr, &bitmap);
    changed = vx_error_reason() == VX_REASON_CHANGED_WHILE_READ;
    vx_bitmap_free(bitmap);
    vx_close(source);
  }
  EXPECT_TRUE(changed);
}

TEST_F(Reasons, OfSaves) {
  Expect(VX_BAD_PARAMETER, VX_REASON_BAD_ARGUMENT, [] { vx::Check(vx_save_file(nullptr, "a", nullptr)); });
  ExpectOfSave(VX_NOT_SUPPORTED, VX_REASON_FORMAT_NOT_WRITTEN, 9, VX_FORMAT_RAW, 0, VX_FORMAT_RAW, 0);
  ExpectOfSave(VX_BAD_BPP, VX_REASON_DEPTH_NOT_IN_FORMAT, 9, VX_FORMAT_ICO, 16, 16, VX_FORMAT_ICO);
  ExpectOfSave(VX_BAD_DIMENSIONS, VX_REASON_TOO_LARGE, 300, VX_FORMAT_ICO, 0, 255, VX_FORMAT_ICO);
  ExpectOfSave(VX_BAD_DIMENSIONS, VX_REASON_NEEDS_PNG_ICON, 256, VX_FORMAT_ICO, 0, 255, VX_FORMAT_ICO);
}

TEST_F(Reasons, OfEdits) {
  const auto icon = samples::IconType::Icon;
  const vx::SaveOptions png(VX_FORMAT_VISTA_ICO);
  vx::Edit edit = Edit(Icon(icon, false));
  Expect(VX_LAST_PAGE, VX_REASON_LAST_PAGE, [&] { edit.Delete(1); });
  Expect(VX_NOT_SUPPORTED, VX_REASON_NOT_A_CURSOR, [&] { edit.SetHotSpot(1, 0, 0); });
  edit.Commit();
  Expect(VX_BAD_PARAMETER, VX_REASON_EDIT_IS_OVER, [&] { edit.Commit(); });
  Expect(VX_BAD_FORMAT, VX_REASON_NOT_AN_ICON, [&] { (void)Edit(Bitmap({})).PageCount(); });
  Expect(
      VX_NOT_SUPPORTED, VX_REASON_PAGE_NOT_IN_FILE,
      [&] { Edit(Icon(samples::IconType::Cursor, false)).Add(Picture(9), &png); }, -1, VX_FORMAT_VISTA_ICO);
  Expect(VX_NOT_SUPPORTED, VX_REASON_NOT_IN_PLACE,
         [&] { Edit(Icon(icon, false), VX_EDIT_IN_PLACE).Compact(); });
  Expect(
      VX_BAD_FORMAT, VX_REASON_PAGE_IN_DIRECTORY,
      [&] {
        Bytes inside =
            Icon(icon, false);  // a second entry, whose image is the directory's end and the image's begin
        inside[4] = 2;
        Edit(inside).Compact();
      },
      22, 38);
  Bytes full = Icon(icon, false);
  const Bytes entry(full.begin() + 6, full.begin() + 22);
  full[4] = full[5] = 255;
  for (int page = 1; page < 0xFFFF; ++page) full.insert(full.begin() + 22, entry.begin(), entry.end());
  Expect(
      VX_BAD_PAGE, VX_REASON_TOO_MANY_PAGES, [&] { Edit(full).Add(Picture(9)); }, -1, 0xFFFF);
  const vx::Edit open = Edit(Icon(icon, false));
  Expect(VX_OPEN_WRITE_ERROR, VX_REASON_LOCKED, [&] { vx::Edit{path_}; });
  MemoryFile own = {.bytes = Icon(icon, false)};
  vx::Check(vx_redirect_files(&MemoryFile::kFunctions, &own));
  Expect(VX_NOT_SUPPORTED, VX_REASON_NO_LOCKS, [] { vx::Edit("it", VX_EDIT_REQUIRE_LOCK); });
}

TEST_F(Reasons, AreAllReachedAndHaveNames) {
  // These take a system call that fails, another filter or display library, or a codec: their own tests reach
  // them.
  const std::set<int> elsewhere = {
      VX_REASON_OUT_OF_MEMORY,   VX_REASON_CHANGED_WHILE_READ, VX_REASON_FILE_TOO_LARGE,
      VX_REASON_FILE_CHANGED,    VX_REASON_FOLDER_NOT_STORED,  VX_REASON_NO_FILTER,
      VX_REASON_BAD_FILTER,      VX_REASON_NO_DISPLAY,         VX_REASON_BAD_DISPLAY,
      VX_REASON_FILTER_GAVE_UP,  VX_REASON_JPEG_DAMAGED,       VX_REASON_NO_JPEG,
      VX_REASON_PROFILE_DAMAGED, VX_REASON_NO_COLOR_MANAGEMENT};
  for (int reason = VX_REASON_BAD_ARGUMENT; reason <= VX_REASON_FOREIGN; ++reason) {
    EXPECT_STRNE(vx_reason_name(reason), "unknown") << reason;
    EXPECT_STRNE(vx_reason_advice(reason), "") << vx_reason_name(reason);
    EXPECT_TRUE(reached_.empty() || reached_.contains(reason) != elsewhere.contains(reason))
        << vx_reason_name(reason);
  }
  EXPECT_STREQ(vx_reason_name(VX_REASON_FOREIGN + 1), "unknown");
  EXPECT_STREQ(vx_reason_advice(-1), "");
}

}  // namespace
