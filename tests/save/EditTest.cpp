// Edits of icon and cursor files: the right pages afterwards, the untouched ones bit for bit, and of the file
// the old one or the new one, whatever happens on the way.
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <random>

#include "../common/Failures.h"
#include "../common/MemoryFile.h"
#include "Sources.h"
#include "SystemCalls.h"

namespace saving {
namespace {

/// A page as it is to be found.
struct Page {
  Bytes rgba;
  std::pair<int, int> hotSpot;
  std::string body;  ///< empty: whatever it is

  explicit Page(const vx::Bitmap& picture)
      : rgba(picture.Rgba()), hotSpot(picture.Describe().hot_x, picture.Describe().hot_y) {}
  bool operator==(const Page&) const = default;
};

std::vector<Page> PagesOf(const std::string& path) {
  const vx::Source source = vx::Source::File(path);
  const std::string file = ReadFile(path);
  std::vector<Page> pages;
  const int count = source.Describe().page_count;
  for (int page = 1; page <= count; ++page) {
    const vx_page_info info = source.DescribePage(page);
    pages.emplace_back(source.Load(page));
    pages.back().body = file.substr(info.offset, info.size);
    EXPECT_TRUE(pages.back().hotSpot == std::pair(int{info.hot_x}, int{info.hot_y}));
  }
  return pages;
}

class Editing : public testing::Test {
 protected:
  void SetUp() override {
    Noise(16, 16, 8).Save(icon_, vx::SaveOptions(VX_FORMAT_ICO));
    Noise(16, 16, 4).Save(cursor_, vx::SaveOptions(VX_FORMAT_CUR));
  }
  void TearDown() override {
    system_calls::Restore();
    EXPECT_EQ(vx_memory_in_use(), 0U);
  }

  Folder folder_;
  std::string icon_ = folder_ / "a.ico";
  std::string cursor_ = folder_ / "a.cur";
};

/// Random edits of a file, and the same ones of a plain list.
class Chain {
 public:
  Chain(std::string path, bool isCursor)
      : path_(std::move(path)), isCursor_(isCursor), model_(PagesOf(path_)) {}

  void Step(bool isInPlace) {
    vx::Edit edit(path_, isInPlace ? VX_EDIT_IN_PLACE : 0);
    const int count = static_cast<int>(model_.size());
    ASSERT_EQ(edit.PageCount(), count);
    const bool isCompacted = !isInPlace && Below(4) == 1;
    if (isCompacted) edit.Compact();
    Act(edit, Below(count), Below(count > 8 ? 3 : 6));
    edit.Commit();
    const std::vector<Page> pages = PagesOf(path_);
    ASSERT_EQ(pages.size(), model_.size());
    size_t size = 6;
    for (size_t i = 0; i < pages.size(); ++i) {
      if (model_[i].body.empty()) model_[i].body = pages[i].body;
      ASSERT_TRUE(pages[i] == model_[i]) << "page " << i + 1;
      size += 16 + pages[i].body.size();
    }
    const uint64_t unreferenced = vx::Source::File(path_).UnreferencedBytes();
    ASSERT_EQ(ReadFile(path_).size(), size + unreferenced);
    ASSERT_TRUE(!isCompacted || unreferenced <= lost_);
  }

 private:
  int Below(int limit) { return 1 + static_cast<int>(random_() % static_cast<unsigned>(limit)); }

  vx::Bitmap Picture(int page) {
    if (Below(3) == 1) return vx::Source::File(path_).Load(page);
    return Below(2) == 1 ? Noise(Below(40), Below(9), 8) : Soft(Below(30));
  }

  /// Pages of the filter's, of the library's and PNG pages, none of which loses anything.
  vx::SaveOptions Form() {
    switch (Below(3)) {
      case 1: return vx::SaveOptions(isCursor_ ? VX_FORMAT_CUR : VX_FORMAT_ICO, 32);
      case 2: return vx::SaveOptions(isCursor_ ? VX_FORMAT_CUR : VX_FORMAT_VISTA_ICO);
      default: return vx::SaveOptions(vx_format{});
    }
  }

  void Act(vx::Edit& edit, int page, int act) {
    const vx::Bitmap picture = Picture(page);
    const vx::SaveOptions form = Form();
    const auto at = model_.begin() + (page - 1);
    lost_ = 0;
    if (act == 1) {
      lost_ = at->body.size();
      edit.Replace(page, picture, &form);
      const auto hotSpot = at->hotSpot;
      *at = Page(picture);
      at->hotSpot = hotSpot;
    } else if (act == 2 && model_.size() > 1) {
      lost_ = at->body.size() + 16;  // and its entry
      edit.Delete(page);
      model_.erase(at);
    } else if (act == 3 && isCursor_) {
      at->hotSpot = {Below(2) - 1, 299 + Below(2)};
      edit.SetHotSpot(page, at->hotSpot.first, at->hotSpot.second);
    } else if (act == 4) {
      edit.Insert(page, picture, &form);
      model_.insert(at, Page(picture));
    } else if (act > 4) {
      edit.Add(picture, &form);
      model_.emplace_back(picture);
    }
  }

  std::minstd_rand random_{3};
  std::string path_;
  bool isCursor_;
  std::vector<Page> model_;
  size_t lost_ = 0;  // bytes of this step that belong to nobody, unless compacted again
};

TEST_F(Editing, LongChainsAgreeWithAPlainList) {
  for (const std::string& path : {icon_, cursor_}) {
    Chain chain(path, path == cursor_);
    for (int step = 0; step < 80; ++step) {
      ASSERT_NO_FATAL_FAILURE(chain.Step(step % 3 == 0)) << path << ", step " << step;
    }
  }
}

/// Edits a file as a draft, and another one in place.
class Twice {
 public:
  Twice(const std::string& drafted, const std::string& inPlace)
      : edits_{vx::Edit(drafted), vx::Edit(inPlace, VX_EDIT_IN_PLACE)} {}

  template <class Act>
  void Do(const Act& act) {
    for (vx::Edit& edit : edits_) act(edit);
  }
  [[nodiscard]] int PageCount() const { return edits_[0].PageCount(); }

 private:
  vx::Edit edits_[2];
};

TEST_F(Editing, WhatBecomesOfADraftIsWhatTheFilterMakesOfTheFile) {
  constexpr int kPages = 600;
  for (const std::string& path : {icon_, cursor_}) {
    const std::string other = folder_ / "other";
    WriteFile(other, ReadFile(path));
    const vx::Bitmap pictures[] = {Noise(3, 2, 24), Soft(4), Noise(1, 1, 1)};
    std::minstd_rand random(7);
    Twice twice(path, other);
    const auto put = [&](int page) {
      const vx::Bitmap& picture = pictures[random() % std::size(pictures)];
      twice.Do([&](vx::Edit& edit) { edit.Insert(page, picture); });
    };
    for (int i = 0; i < kPages; ++i) put(1 + static_cast<int>(random()) % std::min(i + 1, 40));
    for (int i = 0; i < kPages; ++i) {
      const int page = 1 + static_cast<int>(random() % 30);
      switch (random() % 4) {
        case 0: put(twice.PageCount() + 1); break;
        case 1: twice.Do([&](vx::Edit& edit) { edit.Replace(page, pictures[1]); }); break;
        default: twice.Do([&](vx::Edit& edit) { edit.Delete(page); });
      }
      if (path == cursor_ && i % 9 == 0) twice.Do([&](vx::Edit& edit) { edit.SetHotSpot(page, i, 3); });
    }
    twice.Do([](vx::Edit& edit) { edit.Commit(); });
    EXPECT_TRUE(ReadFile(path) == ReadFile(other)) << path;
  }
}

TEST_F(Editing, InPlaceReadsAndWritesAFileInLargePieces) {
  {
    vx::Edit edit(icon_);
    for (int i = 0; i < 60; ++i) edit.Add(Noise(64, 64, 32));
    edit.Commit();
  }
  const std::string content = ReadFile(icon_);
  MemoryFile file = {.bytes = Bytes(content.begin(), content.end())};
  int reads = 0;
  file.most = UINT32_MAX;
  file.read = [&](uint64_t) { ++reads; };
  const int pieces = static_cast<int>(content.size() / (16 * 1024));
  vx::Check(vx_redirect_files(&MemoryFile::kFunctions, &file));
  for (const bool isInserted : {true, false}) {
    reads = 0;
    file.callsUntilFailure = INT_MAX;
    vx::Edit edit("it");
    if (isInserted) edit.Insert(2, Soft(16));
    if (!isInserted) edit.Delete(2);
    EXPECT_LT(reads, 2 * pieces + 30);
    EXPECT_LT(INT_MAX - file.callsUntilFailure, 2 * pieces + 30) << "opened, written, closed";
  }
  vx::Check(vx_redirect_files(nullptr, nullptr));
}

TEST_F(Editing, HotSpotsComeAlongWithWholePicturesOfCursors) {
  vx::Edit edit(cursor_);
  edit.SetHotSpot(1, 0, 300);
  edit.Commit();
  const vx::Source source = vx::Source::File(cursor_);
  const std::string saved = folder_ / "saved.cur";
  source.Load().Save(saved, vx::SaveOptions(VX_FORMAT_CUR));
  EXPECT_EQ(PagesOf(saved)[0].hotSpot, std::pair(0, 300));
  const vx::Buffer icon = source.Load().Save(vx::SaveOptions(VX_FORMAT_ICO));
  EXPECT_EQ(icon.Bytes()[12] | icon.Bytes()[13], 0) << "icons have none";
  vx::LoadOptions band;
  band.band_count = 1;
  EXPECT_EQ(source.Load(band).Describe().hot_y, 0) << "a row of it is no cursor";
}

TEST_F(Editing, ABodyThatIsLongerThanTheDirectorySaysIsKept) {
  const Bytes picture = PagesOf(icon_)[0].rgba;
  std::string file = ReadFile(icon_);
  file[14] = 41;  // bytes of the body
  file[15] = 0;
  WriteFile(icon_, file + "rest");
  EXPECT_EQ(vx::Source::File(icon_).UnreferencedBytes(), 4U);
  vx::Edit edit(icon_);
  edit.Compact();
  edit.Commit();
  EXPECT_TRUE(PagesOf(icon_)[0].rgba == picture);
}

/// Little-endian numbers in an icon file's directory.
void SetEntry(std::string* file, int page, uint32_t size, uint32_t offset) {
  const size_t at = 6 + 16 * static_cast<size_t>(page - 1) + 8;
  for (size_t i = 0; i < 4; ++i) {
    (*file)[at + i] = static_cast<char>(size >> 8 * i);
    (*file)[at + 4 + i] = static_cast<char>(offset >> 8 * i);
  }
}

TEST_F(Editing, CompactionKeepsWhatPagesShareAndWhatTheyLack) {
  {
    vx::Edit edit(icon_);
    for (int i = 0; i < 4; ++i) edit.Add(Noise(9, 9, 24));
    edit.Commit();
  }
  // Page 1 of 5 has 1384 bytes from byte 86 on: a header of 40, 256 colours of 4, 256 pixels, a mask of 64.
  std::string file = ReadFile(icon_);
  const auto size = static_cast<uint32_t>(file.size());
  const std::string inner = file.substr(vx::Source::File(icon_).DescribePage(2).offset, 40 + 9 * (28 + 4));
  file.replace(86 + 1064, inner.size(), inner);  // over the pixels of page 1, and beyond
  SetEntry(&file, 2, static_cast<uint32_t>(inner.size()), 86 + 1064);
  SetEntry(&file, 3, 0, 86 + 1384 + 40);  // of no bytes, in what belongs to nobody
  SetEntry(&file, 4, 50, size + 7);
  WriteFile(icon_, file);
  const vx::Source before = vx::Source::File(icon_);
  {
    vx::Edit edit(icon_);
    edit.Compact();
    const vx::SaveOptions png(VX_FORMAT_VISTA_ICO);
    edit.Add(Soft(20), &png);  // behind the last body, where no entry may point by chance
    edit.Commit();
  }
  const vx::Source after = vx::Source::File(icon_);
  EXPECT_EQ(after.DescribePage(2).offset, after.DescribePage(1).offset + 1064);
  EXPECT_EQ(after.DescribePage(3).offset, 16U);  // 0, and an entry more
  EXPECT_EQ(after.DescribePage(4).offset, after.DescribePage(6).offset + 7);
  EXPECT_LT(after.DescribePage(6).offset, size);
  EXPECT_EQ(before.Describe(1).format, VX_FORMAT_ICO);  // which it takes a look at page 4 to tell
  EXPECT_EQ(after.Describe(1).format, VX_FORMAT_VISTA_ICO);
  for (const int page : {1, 2, 5}) EXPECT_TRUE(after.Load(page).Rgba() == before.Load(page).Rgba()) << page;

  // The entries of pages 2 to 4 become the header of page 1: 40 bytes, 1 x 2 pixels of 24 bits.
  const char header[] = {40, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 1, 0, 24, 0, 0, 0, 0, 0};
  file.replace(22, sizeof header, header, sizeof header);
  SetEntry(&file, 1, 48, 22);
  WriteFile(icon_, file);
  vx::Edit edit(icon_);
  ExpectFailure(VX_BAD_FORMAT, "lies in the directory", [&] { edit.Compact(); });
}

TEST_F(Editing, AfterOneThatFailedHalfWayNothingMoreIsDone) {
  const std::string before = ReadFile(icon_);
  const vx::Bitmap picture = Noise(40, 40, 24);
  const auto expectOver = [&](vx::Edit& edit) {
    ExpectFailure(VX_BAD_PARAMETER, "failed half way", [&] { edit.Add(picture); });
    ExpectFailure(VX_BAD_PARAMETER, "failed half way", [&] { edit.Commit(); });
  };
  int halfDone = 0;
  int status = VX_NO_MEMORY;
  for (uint64_t room = 1; status != VX_OK; room += 500 + room / 8) {
    vx::Edit edit(icon_);
    vx_set_memory_limit(vx_memory_in_use() + room);
    status = StatusOf([&] { edit.Add(picture); });
    vx_set_memory_limit(0);
    if (StatusOf([&] { (void)edit.PageCount(); }) == VX_OK) continue;  // it had not begun
    ++halfDone;
    expectOver(edit);
  }
  EXPECT_GT(halfDone, 0);
  EXPECT_TRUE(ReadFile(icon_) == before);
  vx::Edit inPlace(icon_, VX_EDIT_IN_PLACE);
  system_calls::Fail("pwrite", ENOSPC);
  ExpectFailure(VX_WRITE_ERROR, "No space", [&] { inPlace.Add(picture); });
  system_calls::Restore();
  expectOver(inPlace);
}

TEST_F(Editing, WhatCannotBeMeantIsRefusedAndNothingChanges) {
  const std::string icon = ReadFile(icon_);
  const std::string cursor = ReadFile(cursor_);
  const std::string bitmap = folder_ / "a.bmp";
  const vx::Bitmap picture = Noise(8, 8, 8);
  picture.Save(bitmap, vx::SaveOptions());
  const auto adding = [&](vx::Edit& edit, vx_format format) {
    return [&, format] {
      const vx::SaveOptions options(format);
      edit.Add(picture, &options);
    };
  };
  ExpectFailure(VX_BAD_FORMAT, "no icon", [&] { vx::Edit{bitmap}; });
  ExpectFailure(VX_OPEN_WRITE_ERROR, "No such file", [&] { vx::Edit{folder_ / "none.ico"}; });
  {
    vx::Edit inPlace(cursor_, VX_EDIT_IN_PLACE);
    ExpectFailure(VX_NOT_SUPPORTED, "a cursor file", adding(inPlace, VX_FORMAT_VISTA_ICO));
    ExpectFailure(VX_NOT_SUPPORTED, "compacted in place", [&] { inPlace.Compact(); });
  }
  vx::Edit edit(icon_);
  ExpectFailure(VX_NOT_SUPPORTED, "an icon file", adding(edit, VX_FORMAT_CUR));
  ExpectFailure(VX_NOT_SUPPORTED, "Windows bitmap", adding(edit, VX_FORMAT_BMP));
  ExpectFailure(VX_BAD_DIMENSIONS, "256 x 256", [&] { edit.Add(Noise(257, 2, 8)); });
  ExpectFailure(VX_BAD_PAGE, "1 to 2", [&] { edit.Insert(3, picture); });
  ExpectFailure(VX_BAD_PAGE, "no page 2", [&] { edit.Replace(2, picture); });
  ExpectFailure(VX_BAD_PAGE, "no page 0", [&] { edit.Delete(0); });
  ExpectFailure(VX_LAST_PAGE, "only page", [&] { edit.Delete(1); });
  ExpectFailure(VX_NOT_SUPPORTED, "hot spots", [&] { edit.SetHotSpot(1, 0, 0); });
  EXPECT_EQ(vx_edit_add(nullptr, picture.Get(), nullptr), VX_BAD_PARAMETER);
  EXPECT_TRUE(ReadFile(icon_) + ReadFile(cursor_) == icon + cursor);
  edit.Add(picture);
  edit.Commit();
  ExpectFailure(VX_BAD_PARAMETER, "stored already", [&] { edit.Add(picture); });
  EXPECT_EQ(PagesOf(icon_).size(), 2U);
}

TEST_F(Editing, ANewFileTakesTheOldOnesPlace) {
  vx::Edit edit(icon_, VX_EDIT_NEW);
  ExpectFailure(VX_BAD_PARAMETER, "without pages", [&] { edit.Commit(); });
  edit.Add(Soft(16));
  edit.Add(Noise(256, 256, 8));
  edit.Add(Noise(32, 32, 8));
  edit.Commit();
  const vx::Source source = vx::Source::File(icon_);
  EXPECT_EQ(source.Describe().page_count, 3);
  EXPECT_EQ(source.DescribePage(1).is_png, 0);
  EXPECT_EQ(source.Describe(1).bits_per_pixel, 32);
  EXPECT_EQ(source.DescribePage(2).is_png, 1);
  EXPECT_EQ(source.DescribePage(3).is_png, 0);
}

TEST_F(Editing, WhatFailsInTheMiddleLeavesTheOldFile) {  // and what is killed, as FaultsTest.cpp shows
  const std::string before = ReadFile(icon_);
  const std::vector<std::string> names = folder_.Names();
  const auto expectUntouched = [&] {
    ASSERT_TRUE(ReadFile(icon_) == before);
    ASSERT_EQ(folder_.Names(), names);
  };
  const auto editTwice = [&] {
    vx::Edit edit(icon_);
    edit.Add(Noise(40, 40, 24));
    edit.Replace(1, Soft(50));
    edit.Commit();
  };
  for (const auto& [call, error, word] :
       {std::tuple("pwrite", ENOSPC, "No space"), {"fsync", EIO, "Input/output"}}) {
    system_calls::Fail(call, error);
    ExpectFailure(VX_WRITE_ERROR, word, editTwice);
    system_calls::Restore();
    expectUntouched();
  }
  system_calls::Fail("fsync", EIO);
  ExpectFailure(VX_WRITE_ERROR, "Input/output", [&] { vx::Edit(icon_, VX_EDIT_IN_PLACE).Commit(); });
  system_calls::Restore();
  expectUntouched();
  EXPECT_GT(FailuresForWantOfMemory(editTwice, expectUntouched), 3);
  EXPECT_EQ(PagesOf(icon_).size(), 2U);
}

}  // namespace
}  // namespace saving
