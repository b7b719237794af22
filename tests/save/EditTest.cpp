// Edits of icon and cursor files: the right pages afterwards, the untouched ones bit for bit, and of the file
// the old one or the new one, whatever happens on the way.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <random>

#include "Sources.h"
#include "SystemCalls.h"

namespace saving {
namespace {

std::vector<Bytes> PicturesOf(const std::string& path) {
  const vx::Source source = vx::Source::File(path);
  std::vector<Bytes> pictures;
  const int count = source.Describe().page_count;
  for (int page = 1; page <= count; ++page) pictures.push_back(source.Load(page).Rgba());
  return pictures;
}

Bytes BodyOf(const std::string& path, int page) {
  const vx_page_info info = vx::Source::File(path).DescribePage(page);
  const std::string file = Read(path);
  const auto begin = file.begin() + static_cast<std::ptrdiff_t>(info.offset);
  return {begin, begin + static_cast<std::ptrdiff_t>(info.size)};
}

template <class Call>
void ExpectFailure(int status, const std::string& word, const Call& call) {
  try {
    call();
    ADD_FAILURE() << "it worked";
  } catch (const vx::Error& error) {
    EXPECT_EQ(error.status(), status) << error.what();
    EXPECT_NE(error.detail().find(word), std::string::npos) << error.what();
  }
}

template <class Call>
int StatusOf(const Call& call) try {
  call();
  return VX_OK;
} catch (const vx::Error& error) {
  return error.status();
}

vx::Bitmap Soft(int side) {
  return WithAlpha(side, side, [](int x, int y) -> Pixel {
    return {static_cast<uint8_t>(7 * x), static_cast<uint8_t>(y), 5, static_cast<uint8_t>(1 + 9 * x)};
  });
}

class Editing : public testing::Test {
 protected:
  void SetUp() override {
    Noise(16, 16, 8).Save(icon_, vx::SaveOptions(VX_FORMAT_ICO));
    Noise(16, 16, 4).Save(cursor_, vx::SaveOptions(VX_FORMAT_CUR));
  }
  void TearDown() override {
    system_calls::Restore();
    vx_set_memory_limit(0);
    EXPECT_EQ(vx_memory_in_use(), 0U);
  }

  Folder folder_;
  std::string icon_ = folder_ / "a.ico";
  std::string cursor_ = folder_ / "a.cur";
};

TEST_F(Editing, LongChainsAgreeWithAPlainList) {
  std::minstd_rand random(3);
  const auto below = [&random](int limit) {
    return 1 + static_cast<int>(random() % static_cast<unsigned>(limit));
  };
  std::vector<Bytes> model = PicturesOf(icon_);
  for (int step = 0; step < 80; ++step) {
    vx::Edit edit(icon_, step % 3 == 0 ? VX_EDIT_IN_PLACE : 0);
    const int count = static_cast<int>(model.size());
    ASSERT_EQ(edit.PageCount(), count);
    const int page = below(count);
    const vx::Bitmap picture = below(2) == 1 ? Soft(below(30)) : Noise(below(40), below(9), 8);
    switch (below(count > 8 ? 3 : 5)) {
      case 1:
        edit.Replace(page, picture);
        model[static_cast<size_t>(page) - 1] = picture.Rgba();
        break;
      case 2:
        if (count == 1) break;
        edit.Delete(page);
        model.erase(model.begin() + (page - 1));
        break;
      case 3:
        if (step % 3 != 0) edit.Compact();
        break;
      case 4:
        edit.Insert(page, picture);
        model.insert(model.begin() + (page - 1), picture.Rgba());
        break;
      default:
        edit.Add(picture);
        model.push_back(picture.Rgba());
        break;
    }
    edit.Commit();
    ASSERT_TRUE(PicturesOf(icon_) == model) << "step " << step;
  }
}

TEST_F(Editing, WhatNobodyRefersToIsDroppedAndTheRestStays) {
  {
    vx::Edit edit(icon_);
    edit.Add(Soft(20));
    edit.Add(Noise(9, 9, 24));
    edit.Replace(1, Noise(30, 30, 8));
    edit.Delete(3);
    edit.Commit();
  }
  const std::vector<Bytes> pictures = PicturesOf(icon_);
  const Bytes first = BodyOf(icon_, 1);
  const Bytes second = BodyOf(icon_, 2);
  const size_t size = Read(icon_).size();
  const uint64_t free = vx::Source::File(icon_).UnreferencedBytes();
  EXPECT_GT(free, 16U * 16U);
  vx::Edit edit(icon_);
  edit.Compact();
  edit.Commit();
  EXPECT_EQ(vx::Source::File(icon_).UnreferencedBytes(), 0U);
  EXPECT_EQ(Read(icon_).size(), size - free);
  EXPECT_TRUE(BodyOf(icon_, 1) == first);
  EXPECT_TRUE(BodyOf(icon_, 2) == second);
  EXPECT_TRUE(PicturesOf(icon_) == pictures);
}

TEST_F(Editing, ABodyThatIsLongerThanTheDirectorySaysIsKept) {
  const std::vector<Bytes> pictures = PicturesOf(icon_);
  std::string file = Read(icon_);
  file[14] = 41;  // bytes of the body
  file[15] = 0;
  Write(icon_, file + "rest");
  EXPECT_EQ(vx::Source::File(icon_).UnreferencedBytes(), 4U);
  vx::Edit edit(icon_);
  edit.Compact();
  edit.Commit();
  EXPECT_TRUE(PicturesOf(icon_) == pictures);
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
  std::string file = Read(icon_);
  const auto size = static_cast<uint32_t>(file.size());
  const std::string inner = file.substr(vx::Source::File(icon_).DescribePage(2).offset, 40 + 9 * (28 + 4));
  file.replace(86 + 1064, inner.size(), inner);  // over the pixels of page 1, and beyond
  SetEntry(&file, 2, static_cast<uint32_t>(inner.size()), 86 + 1064);
  SetEntry(&file, 3, 0, 86 + 1384 + 40);  // of no bytes, in what belongs to nobody
  SetEntry(&file, 4, 50, size + 7);
  Write(icon_, file);
  const vx::Source before = vx::Source::File(icon_);
  const Bytes outside = before.Load(1).Rgba();
  const Bytes inside = before.Load(2).Rgba();
  const Bytes last = before.Load(5).Rgba();
  {
    vx::Edit edit(icon_);
    edit.Compact();
    edit.Add(Soft(20));  // behind the last body, where no entry may point by chance
    edit.Commit();
  }
  const vx::Source after = vx::Source::File(icon_);
  EXPECT_EQ(after.DescribePage(2).offset, after.DescribePage(1).offset + 1064);
  EXPECT_EQ(after.DescribePage(3).offset, 16U);  // 0, and an entry more
  EXPECT_EQ(after.DescribePage(4).offset, after.DescribePage(6).offset + 7);
  EXPECT_LT(after.DescribePage(6).offset, size);
  EXPECT_EQ(before.Describe(1).format, VX_FORMAT_ICO);  // which it takes a look at page 4 to tell
  EXPECT_EQ(after.Describe(1).format, VX_FORMAT_VISTA_ICO);
  EXPECT_TRUE(after.Load(1).Rgba() == outside);
  EXPECT_TRUE(after.Load(2).Rgba() == inside);
  EXPECT_TRUE(after.Load(5).Rgba() == last);

  // The entries of pages 2 to 4 become the header of page 1: 40 bytes, 1 x 2 pixels of 24 bits.
  const char header[] = {40, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 1, 0, 24, 0, 0, 0, 0, 0};
  file.replace(22, sizeof header, header, sizeof header);
  SetEntry(&file, 1, 48, 22);
  Write(icon_, file);
  vx::Edit edit(icon_);
  ExpectFailure(VX_BAD_FORMAT, "lies in the directory", [&] { edit.Compact(); });
  vx::Edit inPlace(cursor_, VX_EDIT_IN_PLACE);
  const std::string cursor = Read(cursor_);
  ExpectFailure(VX_NOT_SUPPORTED, "compacted in place", [&] { inPlace.Compact(); });
  EXPECT_EQ(Read(cursor_), cursor);
}

TEST_F(Editing, AfterAnEditThatFailedHalfWayNothingIsStored) {
  const std::string before = Read(icon_);
  const vx::Bitmap picture = Noise(40, 40, 24);
  int failures = 0;
  for (uint64_t room = 1; Read(icon_) == before; room += 500 + room / 8) {
    vx::Edit edit(icon_);
    vx_set_memory_limit(vx_memory_in_use() + room);
    const int status = StatusOf([&] { edit.Add(picture); });
    vx_set_memory_limit(0);
    if (status == VX_OK) {
      edit.Commit();
    } else if (StatusOf([&] { EXPECT_EQ(edit.PageCount(), 1); }) != VX_OK) {  // it had begun
      ++failures;
      ExpectFailure(VX_BAD_PARAMETER, "failed half way", [&] { edit.Add(picture); });
      ExpectFailure(VX_BAD_PARAMETER, "failed half way", [&] { edit.Commit(); });
    }
  }
  EXPECT_GT(failures, 0);
  EXPECT_EQ(PicturesOf(icon_).size(), 2U);
}

TEST_F(Editing, CursorsKeepTheirHotSpots) {
  vx::Edit edit(cursor_);
  edit.SetHotSpot(1, 3, 300);
  edit.Replace(1, Noise(8, 8, 8));
  edit.Insert(1, Noise(9, 9, 8));
  edit.Commit();
  const vx::Source source = vx::Source::File(cursor_);
  EXPECT_EQ(source.DescribePage(1).hot_x, 0);
  EXPECT_EQ(source.DescribePage(2).hot_x, 3);
  EXPECT_EQ(source.DescribePage(2).hot_y, 300);
}

TEST_F(Editing, HotSpotsComeAlongWithPictures) {
  vx::Edit edit(cursor_);
  edit.SetHotSpot(1, 0, 300);
  edit.Commit();
  const vx::Bitmap picture = vx::Source::File(cursor_).Load();
  EXPECT_EQ(picture.Describe().hot_x, 0);
  EXPECT_EQ(picture.Describe().hot_y, 300);
  const std::string saved = folder_ / "saved.cur";
  picture.Save(saved, vx::SaveOptions(VX_FORMAT_CUR));
  const vx::Buffer icon = picture.Save(vx::SaveOptions(VX_FORMAT_ICO));
  EXPECT_EQ(icon.Bytes()[12] | icon.Bytes()[13], 0) << "icons have none";
  vx::Edit more(saved);
  more.Add(Noise(9, 9, 8));
  more.Insert(2, picture);
  more.Commit();
  const vx::Source source = vx::Source::File(saved);
  for (const int page : {1, 2}) EXPECT_EQ(source.DescribePage(page).hot_y, 300) << page;
  EXPECT_EQ(source.DescribePage(3).hot_y, 0);
  vx::LoadOptions band;
  band.band_count = 1;
  EXPECT_EQ(source.Load(band).Describe().hot_y, 0);  // a row of it is no cursor
}

TEST_F(Editing, WhatCannotBeMeantIsRefusedAndNothingChanges) {
  const std::string icon = Read(icon_);
  const std::string bitmap = folder_ / "a.bmp";
  const vx::Bitmap picture = Noise(8, 8, 8);
  picture.Save(bitmap, vx::SaveOptions());
  const vx::SaveOptions png(VX_FORMAT_VISTA_ICO);
  const vx::SaveOptions cursor(VX_FORMAT_CUR);
  const vx::SaveOptions plain(VX_FORMAT_BMP);
  ExpectFailure(VX_BAD_FORMAT, "no icon", [&] { vx::Edit{bitmap}; });
  ExpectFailure(VX_OPEN_WRITE_ERROR, "No such file", [&] { vx::Edit{folder_ / "none.ico"}; });
  {
    vx::Edit onCursor(cursor_);
    ExpectFailure(VX_NOT_SUPPORTED, "a cursor file", [&] { onCursor.Add(picture, &png); });
  }
  vx::Edit edit(icon_);
  ExpectFailure(VX_NOT_SUPPORTED, "an icon file", [&] { edit.Add(picture, &cursor); });
  ExpectFailure(VX_NOT_SUPPORTED, "Windows bitmap", [&] { edit.Add(picture, &plain); });
  ExpectFailure(VX_BAD_DIMENSIONS, "256 x 256", [&] { edit.Add(Noise(257, 2, 8)); });
  ExpectFailure(VX_BAD_PAGE, "1 to 2", [&] { edit.Insert(3, picture); });
  ExpectFailure(VX_BAD_PAGE, "no page 2", [&] { edit.Replace(2, picture); });
  ExpectFailure(VX_BAD_PAGE, "no page 0", [&] { edit.Delete(0); });
  ExpectFailure(VX_LAST_PAGE, "only page", [&] { edit.Delete(1); });
  ExpectFailure(VX_NOT_SUPPORTED, "hot spots", [&] { edit.SetHotSpot(1, 0, 0); });
  EXPECT_EQ(vx_edit_add(nullptr, picture.Get(), nullptr), VX_BAD_PARAMETER);
  EXPECT_EQ(Read(icon_), icon);
  edit.Add(picture);
  edit.Commit();
  ExpectFailure(VX_BAD_PARAMETER, "stored already", [&] { edit.Add(picture); });
  EXPECT_EQ(PicturesOf(icon_).size(), 2U);
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
  EXPECT_EQ(source.DescribePage(1).is_png, 1);
  EXPECT_EQ(source.DescribePage(2).is_png, 1);
  EXPECT_EQ(source.DescribePage(3).is_png, 0);
}

/// Adds a page and replaces another.
void EditTwice(const std::string& path) {
  vx::Edit edit(path);
  edit.Add(Noise(40, 40, 24));
  edit.Replace(1, Soft(50));
  edit.Commit();
}

TEST_F(Editing, WhatFailsOrEndsInTheMiddleLeavesTheOldFile) {
  const std::string before = Read(icon_);
  const std::vector<std::string> names = folder_.Names();
  const auto isUntouched = [&] { return Read(icon_) == before && folder_.Names() == names; };
  int writes = 0;
  for (bool isDone = false; !isDone;) {
    ++writes;
    system_calls::Restore();
    system_calls::before = [left = writes](const std::string& call, int) mutable {
      return call == "pwrite" && --left == 0 ? raise(SIGKILL) : 0;
    };
    const pid_t child = fork();
    if (child == 0) {
      EditTwice(icon_);
      _exit(0);
    }
    int ended = 0;
    ASSERT_EQ(waitpid(child, &ended, 0), child);
    isDone = WIFEXITED(ended);
    EXPECT_TRUE(isDone || isUntouched()) << writes;
  }
  EXPECT_GT(writes, 1);
  EXPECT_EQ(PicturesOf(icon_).size(), 2U);
  Write(icon_, before);

  system_calls::Restore();
  system_calls::Fail("pwrite", ENOSPC);
  ExpectFailure(VX_WRITE_ERROR, "No space", [&] { EditTwice(icon_); });
  EXPECT_TRUE(isUntouched());
  system_calls::Restore();
  system_calls::Fail("fsync", EIO);
  ExpectFailure(VX_WRITE_ERROR, "Input/output", [&] { EditTwice(icon_); });
  EXPECT_TRUE(isUntouched());
  system_calls::Restore();
  int failures = 0;
  int status = VX_NO_MEMORY;
  for (uint64_t room = 1; status == VX_NO_MEMORY; room += 500 + room / 8, ++failures) {
    vx_set_memory_limit(vx_memory_in_use() + room);
    try {
      EditTwice(icon_);
      status = VX_OK;
    } catch (const vx::Error& error) {
      status = error.status();
      ASSERT_TRUE(isUntouched()) << error.what();
    }
  }
  EXPECT_EQ(status, VX_OK);
  EXPECT_GT(failures, 3);
}

TEST_F(Editing, AfterOneThatFailedHalfWayOnlyTheEndIsLeft) {
  vx::Edit edit(icon_, VX_EDIT_IN_PLACE);
  system_calls::Fail("pwrite", ENOSPC);
  ExpectFailure(VX_WRITE_ERROR, "No space", [&] { edit.Add(Soft(20)); });
  system_calls::Restore();
  ExpectFailure(VX_BAD_PARAMETER, "half way", [&] { edit.Delete(1); });
  ExpectFailure(VX_BAD_PARAMETER, "half way", [&] { edit.Commit(); });
}

}  // namespace
}  // namespace saving
