// Saving new files: every byte against a model that builds the file whole, and what no format can hold.
// Editing pages against a plain list.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "Story.h"

namespace {

constexpr int kDepths[] = {1, 4, 8, 16, 24, 32};
constexpr int kAnyFormat = 1234;
constexpr int kFormats[] = {FMT_BMP, FMT_OS2, FMT_OS2_2, FMT_BMP_RLE, FMT_ICO, FMT_CUR, kAnyFormat};

bool Admits(int format, int bits) {
  if (bits == 16) return format == FMT_BMP || format == FMT_OS2 || format == FMT_OS2_2;
  if (bits == 32) return format == FMT_BMP;
  return bits == 1 || bits == 4 || bits == 8 || bits == 24;
}

// ---- the model: a file built from what was asked for

/// One row in run-length codes: literals up to the next run of `shortest` bytes, then the run.
void PutCodes(Bytes& file, const Bytes& row, int bits) {
  const std::size_t shortest = bits == 8 ? 4 : 2;
  const std::size_t longestRun = bits == 8 ? 255 : 127;
  const std::size_t longestLiteral = bits == 8 ? 254 : 127;
  const std::size_t pixels = bits == 8 ? 1 : 2;  // of a byte
  const auto runAt = [&row](std::size_t at) {
    std::size_t n = 1;
    while (at + n < row.size() && row[at + n] == row[at]) ++n;
    return n;
  };
  for (std::size_t at = 0; at < row.size();) {
    std::size_t start = at;
    while (start < row.size() && runAt(start) < shortest) ++start;
    for (std::size_t n = 0; at < start; at += n) {
      n = std::min(start - at, longestLiteral);
      if (n * pixels <= 2) n = 1;  // the least literal is of three
      Append(file, {static_cast<uint8_t>(n == 1 ? pixels : 0)});
      if (n > 1) Put(file, n * pixels, 1);
      Append(file, Part(row, at, n));
      if (n > 1 && n % 2 != 0) Put(file, 0, 1);
    }
    const std::size_t end = start < row.size() ? start + runAt(start) : start;
    for (std::size_t n = 0; at < end; at += n) {
      n = std::min(end - at, longestRun);
      Append(file, {static_cast<uint8_t>(n * pixels), row[at]});
    }
  }
  Put(file, 0, 2);
}

/// The colour rows and mask rows, from the bottom up.
Bytes ModelRows(const Rig& rig) {
  const int bits = rig.save.BitsPerPixel;
  const int height = rig.bitmap.Height;
  const bool coded = rig.save.Format == FMT_BMP_RLE;
  const bool hasMask = rig.save.Format == FMT_ICO || rig.save.Format == FMT_CUR;
  const int codedSize = bits == 8 ? rig.bitmap.Width : (rig.bitmap.Width + 1) / 2;
  const auto rowOf = [&](int fromBottom, int size, int have, uint8_t (*at)(int, int), int flip) {
    const int row = rig.bitmap.Orientation == ORIENT_BOTTOM_UP ? fromBottom : height - 1 - fromBottom;
    Bytes bytes;
    for (int i = 0; i < size; ++i) Put(bytes, i < have ? static_cast<unsigned>(at(row, i) ^ flip) : 0U, 1);
    return bytes;
  };
  Bytes rows;
  for (int i = 0; i < height; ++i) {
    const int size = coded ? codedSize : rig.FileRowSize();
    const Bytes row = rowOf(i, size, rig.kernel.saved.converted.BytesPerLine, Saved::PixelAt, 0);
    if (coded) {
      PutCodes(rows, row, bits);
    } else {
      Append(rows, row);
    }
  }
  if (coded) Append(rows, {0, 1});
  for (int i = 0; i < height && hasMask; ++i)
    Append(rows, rowOf(i, rig.MaskRowSize(), rig.kernel.saved.maskBytesPerLine, Saved::MaskAt, 0xFF));
  return rows;
}

Bytes ModelFile(const Rig& rig) {
  const int format = rig.save.Format;  // as the save left it
  const auto bits = static_cast<uint32_t>(rig.save.BitsPerPixel);
  const auto width = static_cast<uint32_t>(rig.bitmap.Width);
  const auto height = static_cast<uint32_t>(rig.bitmap.Height);
  const bool isIcon = format == FMT_ICO || format == FMT_CUR;
  const bool isLong = format == FMT_OS2_2 || format == kAnyFormat;
  const bool masks = !isLong && format != FMT_OS2 && bits == 16 && rig.bitmap.ColorOrder == ORDER_565;
  const uint32_t entries = bits <= 8 ? 1U << bits : 0;
  const uint32_t colors = masks ? 12 : entries * (format == FMT_OS2 ? 3 : 4);
  const uint32_t header = format == FMT_OS2 ? 12 : isLong ? 64 : 40;
  const Bytes rows = ModelRows(rig);
  const auto size = static_cast<uint32_t>(rows.size());

  Bytes file;
  if (isIcon) {
    Append(file, {0, 0, static_cast<uint8_t>(format == FMT_CUR ? 2 : 1), 0, 1, 0});
    for (const auto byte : {width, height, bits < 8 ? 1U << bits : 0U}) Put(file, byte, 1);
    Put(file, 0, 5);
    Put(file, 40 + colors + size, 4);
    Put(file, 22, 4);
  } else {
    Append(file, {'B', 'M'});
    for (const auto word : {14 + header + colors + size, 0U, 14 + header + colors}) Put(file, word, 4);
  }
  const uint32_t coding = bits == 8 ? 1 : 2;
  Append(file, Header{.size = header,
                      .width = width,
                      .height = height * (isIcon ? 2 : 1),
                      .bits = bits,
                      .compression = masks                   ? 3
                                     : format == FMT_BMP_RLE ? coding
                                                             : 0,
                      .imageSize = size,
                      .xPixelsPerMetre = isIcon ? 0U : 3780U,
                      .yPixelsPerMetre = isIcon ? 0U : 11811U}
                   .Encode());
  if (masks) Append(file, Data("F800. 7E0. 1F."));
  for (uint32_t i = 0; i < entries; ++i) {
    const RGBQUAD& entry = rig.kernel.saved.saveFile.Palette[i];
    Append(file, {entry.Blue, entry.Green, entry.Red});
    if (format != FMT_OS2) Put(file, 0, 1);
  }
  Append(file, rows);
  return file;
}

// ---- what is held to it

struct Variant {
  int format, bits, width, height;
  int orientation = ORIENT_BOTTOM_UP;
  int order = ORDER_BGR;
  int longer = 0;  // bytes that converted rows and masks have beyond the file's
};

void ExpectAsModelled(const Variant& variant) {
  const auto& [format, bits, width, height, orientation, order, longer] = variant;
  if (!Admits(format, bits)) return;
  SCOPED_TRACE(testing::Message() << "format " << format << ", " << bits << " bits, width " << width << ", "
                                  << longer);
  Rig rig;
  rig.Picture(format, bits, width, height);
  rig.bitmap.Orientation = orientation;
  rig.bitmap.ColorOrder = order;
  rig.kernel.saved.converted.BytesPerLine += longer;
  rig.kernel.saved.maskBytesPerLine += longer;
  ASSERT_EQ(rig.Save(), STATUS_OK);
  ASSERT_EQ(ToHex(rig.kernel.file), ToHex(ModelFile(rig)));
  ASSERT_EQ(rig.kernel.Log({"open"}), "open picture 66 128");
}

TEST(Save, EveryFormatDepthWidthAndOrientation) {
  for (const int format : kFormats) {
    for (const int bits : kDepths) {
      for (int width = 0; width <= 40; ++width) {
        for (const int orientation : {ORIENT_BOTTOM_UP, ORIENT_TOP_DOWN}) {
          for (const int order : {ORDER_BGR, ORDER_565})
            ExpectAsModelled({format, bits, width, 3, orientation, order});
        }
      }
      for (const int longer : {-4, -1, 1, 4}) {
        if (format != FMT_BMP_RLE)
          ExpectAsModelled({.format = format, .bits = bits, .width = 33, .height = 2, .longer = longer});
      }
    }
  }
}

TEST(Save, RunsAndLiteralsOfEveryLength) {
  for (const int bits : {4, 8}) {
    for (int width = 240; width <= 700; width += width < 270 ? 1 : 43)
      ExpectAsModelled({FMT_BMP_RLE, bits, width, 5});
  }
}

TEST(Save, WhatAFormatCannotHoldIsRefusedUntouched) {
  for (const int format : kFormats) {
    for (int bits = -1; bits <= 33; ++bits) {
      if (Admits(format, bits)) continue;
      Rig rig;
      rig.Picture(format, bits, 300, 3);
      EXPECT_EQ(rig.Save(), STATUS_BAD_BPP) << format << " " << bits;
      EXPECT_EQ(rig.kernel.Log(), "");
      EXPECT_EQ(rig.save.Format, format);
      EXPECT_EQ(rig.save.Flags, 0U);
    }
  }
}

// ---- pages: the stories tell the rest

TEST(Pages, AMoveThatStopsHalfWayCountsNothing) {
  Rig rig;
  (void)Build(rig.kernel.file, {"icon", "raw=1 : 30+11 / raw=1 : 3000+22"});
  Bytes expected = rig.kernel.file;  // but for one chunk, which is where the slot was
  std::copy_n(rig.kernel.file.begin() + 22, 1024, expected.begin() + 6);
  rig.kernel.faults = {{"read", 3}};
  ASSERT_EQ(rig.Delete(1), STATUS_READ_ERROR);
  EXPECT_EQ(rig.kernel.file, expected);
}

TEST(Pages, TheCountThatIsReadAgainCounts) {
  Rig rig;
  (void)Build(rig.kernel.file, {"icon", "raw=1 : 10+11 / raw=1 : 20+11 / raw=1 : 30+11 / raw=1 : 40+11"});
  rig.kernel.meanwhile = [&rig](const std::string& kind) {
    if (kind == "write") rig.kernel.file[4] = 3;
  };
  ASSERT_EQ(rig.Delete(4), STATUS_OK);
  EXPECT_EQ(rig.kernel.Log({"write"}), "write 54 100, write 154 0, write 0 6, write 6 16, write 22 16");
}

TEST(Pages, LongChainsOfEditsAgreeWithAPlainList) {
  std::minstd_rand random(1);
  const auto below = [&random](int limit) {
    return static_cast<int>(random() % static_cast<unsigned>(limit));
  };
  Rig rig;
  (void)Build(rig.kernel.file, {"icon", "raw=1 : 30+11"});
  std::vector<Page> model = PagesOf(rig.kernel.file);
  for (int step = 0; step < 600; ++step) {
    const int count = static_cast<int>(model.size());
    const int page = 1 + below(count);
    const auto at = model.begin() + (page - 1);
    const int edit = below(count > 12 ? 4 : 8);
    if (edit <= 1) {
      ASSERT_EQ(rig.Delete(page), count == 1 ? STATUS_LAST_PAGE : STATUS_OK);
      if (count > 1) model.erase(at);
    } else {
      constexpr int kPageDepths[] = {1, 4, 8, 24};
      rig.Picture(below(2) == 0 ? FMT_ICO : FMT_VISTA_ICO, kPageDepths[below(4)], 1 + below(40), below(6));
      rig.bitmap.Orientation = below(2) == 0 ? ORIENT_BOTTOM_UP : ORIENT_TOP_DOWN;
      rig.kernel.saved.converted.BytesPerLine += below(3) * 4;
      rig.kernel.saved.maskBytesPerLine += below(2);
      rig.kernel.saved.png = Bytes(1 + static_cast<std::size_t>(below(90)), static_cast<uint8_t>(step));
      const Page made = AsNew(rig);
      const bool replaces = edit <= 3;
      const bool isAtEnd = below(4) == 0;
      ASSERT_EQ(rig.Save(replaces ? SAVE_PAGE_REPLACE : SAVE_PAGE_INSERT, isAtEnd ? -1 : page), STATUS_OK);
      if (replaces) (isAtEnd ? model.back() : *at) = made;
      if (!replaces) model.insert(isAtEnd ? model.end() : at, made);
    }
    ASSERT_EQ(PagesOf(rig.kernel.file), model) << "step " << step;
  }
}

}  // namespace
