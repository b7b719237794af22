// Saving new files: every byte against a model that builds the file whole, what is refused before anything is
// touched, and what is released when anything fails.
#include <gtest/gtest.h>

#include <algorithm>

#include "SaveRig.h"

namespace {

constexpr int kDepths[] = {1, 4, 8, 16, 24, 32};
constexpr int kAnyFormat = 1234;

bool Admits(int format, int bits) {
  const bool basic = bits == 1 || bits == 4 || bits == 8 || bits == 24;
  switch (format) {
    case FMT_BMP: return basic || bits == 16 || bits == 32;
    case FMT_OS2:
    case FMT_OS2_2: return basic || bits == 16;
    case FMT_VISTA_ICO: return basic || bits == 32;
    default: return basic;
  }
}

bool HasMask(int format) {
  return format == FMT_ICO || format == FMT_CUR;
}

// ---- the model: a file built from what was asked for

void Append(Bytes& file, const Bytes& more) {
  file.insert(file.end(), more.begin(), more.end());
}

/// One row in run-length codes: literals up to the next run of `shortest` bytes, then the run.
void PutCodes(Bytes& file, const Bytes& row, int bits) {
  const std::size_t shortest = bits == 8 ? 4 : 2;
  const std::size_t longestRun = bits == 8 ? 255 : 127;
  const std::size_t longestLiteral = bits == 8 ? 254 : 127;
  const std::size_t singles = bits == 8 ? 2 : 1;
  const std::uint32_t pixels = bits == 8 ? 1 : 2;
  const auto runAt = [&row](std::size_t at) {
    std::size_t n = 1;
    while (at + n < row.size() && row[at + n] == row[at]) ++n;
    return n;
  };
  for (std::size_t at = 0; at < row.size();) {
    std::size_t start = at;
    while (start < row.size() && runAt(start) < shortest) ++start;
    std::size_t literals = start - at;
    while (literals > singles) {
      const std::size_t n = std::min(literals, longestLiteral);
      Put(file, 0, 1);
      Put(file, static_cast<std::uint32_t>(n) * pixels, 1);
      Append(file, Part(row, at, n));
      if (n % 2 != 0) Put(file, 0, 1);
      at += n;
      literals -= n;
    }
    for (; literals > 0; --literals) {
      Put(file, pixels, 1);
      Put(file, row[at++], 1);
    }
    if (start == row.size()) break;
    for (std::size_t left = runAt(start); left > 0;) {
      const std::size_t n = std::min(left, longestRun);
      Put(file, static_cast<std::uint32_t>(n) * pixels, 1);
      Put(file, row[start], 1);
      left -= n;
      at += n;
    }
  }
  Put(file, 0, 2);
}

Bytes ModelRow(int size, int have, int row, std::uint8_t (*at)(int, int), std::uint8_t flip) {
  Bytes bytes;
  for (int i = 0; i < size; ++i) {
    bytes.push_back(i < have ? static_cast<std::uint8_t>(at(row, i) ^ flip) : std::uint8_t{0});
  }
  return bytes;
}

/// The colour rows and mask rows, from the bottom up.
Bytes ModelRows(const SaveRig& rig, bool coded) {
  const Saved& saved = rig.kernel.saved;
  const int height = rig.bitmap.Height;
  const auto stored = [&](int fromBottom) {
    return rig.bitmap.Orientation == ORIENT_BOTTOM_UP ? fromBottom : height - 1 - fromBottom;
  };
  const int bits = rig.dispatch.BitsPerPixel;
  const int have = saved.converted.BytesPerLine;
  Bytes rows;
  for (int i = 0; i < height; ++i) {
    const int codedSize = bits == 8 ? rig.bitmap.Width : (rig.bitmap.Width + 1) / 2;
    const int size = coded ? codedSize : rig.RowSize();
    const Bytes row = ModelRow(size, have, stored(i), Saved::PixelAt, 0);
    if (coded) {
      PutCodes(rows, row, bits);
    } else {
      Append(rows, row);
    }
  }
  if (coded) Append(rows, {0, 1});
  for (int i = 0; i < height && HasMask(rig.dispatch.Format); ++i) {
    Append(rows, ModelRow(rig.MaskRowSize(), saved.maskBytesPerLine, stored(i), Saved::MaskAt, 0xFF));
  }
  return rows;
}

Bytes ModelFile(const SaveRig& rig) {
  const int format = rig.dispatch.Format;  // as the save left it
  const int bits = rig.dispatch.BitsPerPixel;
  const auto width = static_cast<std::uint32_t>(rig.bitmap.Width);
  const auto height = static_cast<std::uint32_t>(rig.bitmap.Height);
  const bool isIcon = HasMask(format);
  const bool isLong = format == FMT_OS2_2 || format == kAnyFormat;
  const bool isInfo = !isLong && format != FMT_OS2;
  const bool masks = isInfo && bits == 16 && rig.bitmap.ColorOrder == ORDER_565;
  const bool coded = format == FMT_BMP_RLE;
  const std::uint32_t entries = bits <= 8 ? 1U << bits : 0;
  const std::uint32_t colors = masks ? 12 : entries * (format == FMT_OS2 ? 3 : 4);
  const std::uint32_t header = format == FMT_OS2 ? 12 : isLong ? 64 : 40;
  const Bytes rows = ModelRows(rig, coded);
  const auto size = static_cast<std::uint32_t>(rows.size());

  Bytes file;
  if (isIcon) {
    Put(file, 0, 2);
    Put(file, format == FMT_CUR ? 2 : 1, 2);
    Put(file, 1, 2);
    Put(file, width, 1);
    Put(file, height, 1);
    Put(file, bits < 8 ? 1U << bits : 0, 1);
    Put(file, 0, 5);
    Put(file, 40 + colors + size, 4);
    Put(file, 22, 4);
  } else {
    Append(file, {'B', 'M'});
    Put(file, 14 + header + colors + size, 4);
    Put(file, 0, 4);
    Put(file, 14 + header + colors, 4);
  }
  const std::uint32_t compression = masks ? 3 : coded ? (bits == 8 ? 1 : 2) : 0;
  Append(file, Header{.size = header,
                      .width = rig.bitmap.Width,
                      .height = rig.bitmap.Height * (isIcon ? 2 : 1),
                      .bits = static_cast<unsigned>(bits),
                      .compression = compression,
                      .imageSize = size,
                      .xPixelsPerMetre = isIcon ? 0U : 3780U,
                      .yPixelsPerMetre = isIcon ? 0U : 11811U}
                   .Encode());
  if (masks) Append(file, Words({0xF800, 0x7E0, 0x1F}));
  for (std::uint32_t i = 0; i < entries; ++i) {
    const RGBQUAD& entry = rig.kernel.saved.saveFile.Palette[i];
    Append(file, {entry.Blue, entry.Green, entry.Red});
    if (format != FMT_OS2) Put(file, 0, 1);
  }
  Append(file, rows);
  return file;
}

constexpr int kFormats[] = {FMT_BMP, FMT_OS2, FMT_OS2_2, FMT_BMP_RLE, FMT_ICO, FMT_CUR, kAnyFormat};

TEST(Save, EveryFormatDepthWidthAndOrientation) {
  for (const int format : kFormats) {
    for (const int bits : kDepths) {
      if (!Admits(format, bits)) continue;
      for (int width = 0; width <= 40; ++width) {
        for (const int orientation : {ORIENT_BOTTOM_UP, ORIENT_TOP_DOWN}) {
          for (const int order : {ORDER_BGR, ORDER_565}) {
            SaveRig rig(format, bits, width, 3);
            rig.bitmap.Orientation = orientation;
            rig.bitmap.ColorOrder = order;
            ASSERT_EQ(rig.Save(), STATUS_OK);
            ASSERT_EQ(ToHex(rig.kernel.file), ToHex(ModelFile(rig)))
                << "format " << format << ", " << bits << " bits, width " << width;
            ASSERT_EQ(rig.kernel.Log({Kind::kOpen}), "open picture 66 128");
          }
        }
      }
    }
  }
}

TEST(Save, RowsOfOtherLengthsThanTheFiles) {
  for (const int bits : kDepths) {
    for (const int difference : {-4, -1, 1, 4}) {
      for (const int format : {FMT_BMP, FMT_ICO}) {
        if (!Admits(format, bits)) continue;
        SaveRig rig(format, bits, 33, 2);
        rig.kernel.saved.converted.BytesPerLine += difference;
        rig.kernel.saved.maskBytesPerLine += difference;
        ASSERT_EQ(rig.Save(), STATUS_OK);
        EXPECT_EQ(ToHex(rig.kernel.file), ToHex(ModelFile(rig))) << bits << " bits, " << difference;
      }
    }
  }
}

TEST(Save, RunsAndLiteralsOfEveryLength) {
  for (const int bits : {4, 8}) {
    for (int width = 240; width <= 700; width += width < 270 ? 1 : 43) {
      SaveRig rig(FMT_BMP_RLE, bits, width, 5);
      ASSERT_EQ(rig.Save(), STATUS_OK);
      ASSERT_EQ(ToHex(rig.kernel.file), ToHex(ModelFile(rig))) << bits << " bits, width " << width;
    }
  }
}

TEST(Save, WhatAFormatCannotHoldIsRefusedUntouched) {
  for (const int format : kFormats) {
    for (int bits = -1; bits <= 33; ++bits) {
      if (Admits(format, bits)) continue;
      SaveRig rig(format, bits, 300, 3);
      EXPECT_EQ(rig.Save(), STATUS_BAD_BPP) << format << " " << bits;
      EXPECT_EQ(rig.kernel.LastEvent(), Kind::kKinds);
      EXPECT_EQ(rig.dispatch.Format, format);
      EXPECT_EQ(rig.dispatch.Flags, 0U);
    }
  }
  for (int format = FMT_RAW; format <= FMT_RAW_BITFIELDS; ++format) {
    EXPECT_EQ(SaveRig(format, 8, 4, 4).Save(), STATUS_NOT_SUPPORTED);
  }
  EXPECT_EQ(SaveRig(FMT_ICO, 8, 256, 16).Save(), STATUS_BAD_DIMENSIONS);
  EXPECT_EQ(SaveRig(FMT_CUR, 8, 16, 256).Save(), STATUS_BAD_DIMENSIONS);
  EXPECT_EQ(SaveRig(FMT_ICO, 8, 255, 255).Save(), STATUS_OK);
  EXPECT_EQ(SaveRig(FMT_VISTA_ICO, 32, 257, 1).Save(), STATUS_BAD_DIMENSIONS);
  EXPECT_EQ(SaveRig(FMT_VISTA_ICO, 32, 256, 256).Save(), STATUS_OK);
  EXPECT_EQ(TheFilter().save(nullptr), STATUS_BAD_PARAMETER);
}

TEST(Save, TheRecordAndTheCallbacksAreToldTheSame) {
  SaveRig plain(FMT_BMP_RLE, 24, 4, 1);
  EXPECT_EQ(plain.Save(), STATUS_OK);
  EXPECT_EQ(plain.dispatch.Format, FMT_BMP);
  EXPECT_EQ(plain.dispatch.Flags, SAVE_DIRECT_COLOR);
  EXPECT_EQ(plain.kernel.Log({Kind::kBeginSave, Kind::kSaveRow, Kind::kEndSave}),
            "begin 24 4096 1 11 12, row 0 1 4096 11 12, end");
  SaveRig fields(FMT_BMP, 8, 4, 1);
  fields.bitmap.ColorOrder = ORDER_565;
  EXPECT_EQ(fields.Save(), STATUS_OK);
  EXPECT_EQ(fields.dispatch.Flags, SAVE_ORDER_565);
  SaveRig indices(FMT_BMP, 8, 4, 1);
  EXPECT_EQ(indices.Save(), STATUS_OK);
  EXPECT_EQ(indices.dispatch.Flags, 0U);
}

TEST(Save, AnOlderLongerFileKeepsItsTail) {
  for (const int format : {FMT_BMP, FMT_ICO}) {
    for (const int width : {4, 0}) {
      SaveRig rig(format, 24, width, 2);
      rig.kernel.file = Repeat(500, 9);
      rig.options.PageNumber = 1;  // asks for no page of it
      EXPECT_EQ(rig.Save(), STATUS_OK);
      Bytes expected = ModelFile(rig);
      expected.resize(500, 9);
      EXPECT_EQ(ToHex(rig.kernel.file), ToHex(expected)) << "format " << format << ", width " << width;
    }
  }
}

TEST(Save, BeginSaveDecidesWhetherThereAreRows) {
  for (const int answer : {-99, 0}) {
    SaveRig none(FMT_ICO, 8, 4, 2);
    none.kernel.fault = Fault{Kind::kBeginSave, 1, false, answer};
    EXPECT_EQ(none.Save(), answer);
    EXPECT_EQ(none.kernel.Log({Kind::kBeginSave, Kind::kEndSave, Kind::kOpen, Kind::kMask}),
              "begin 8 0 1 11 12, end");
  }
  SaveRig headers(FMT_ICO, 8, 4, 2);
  headers.kernel.fault = Fault{Kind::kBeginSave, 1, false, 5};
  EXPECT_EQ(headers.Save(), 5);
  EXPECT_EQ(headers.kernel.file.size(), 22U + 40 + 1024);
  EXPECT_EQ(headers.kernel.Log({Kind::kSaveRow, Kind::kGet}), "");
}

/// The orders, between bars, in which a save gives back what it had got hold of when it ended.
const std::string kOrders =
    "|end|free #1, end|free bitmap, free #1, end|release 1 1, free bitmap, free #1, end|close, end|"
    "close, free #1, end|close, release 1 1, free bitmap, free #1, end|"
    "close, release 1 1, free bitmap, free #1, free #2, end|";

TEST(Save, WhateverFailsIsReleasedInOrder) {
  const std::pair<Kind, int> kinds[] = {
      {Kind::kAlloc, STATUS_NO_MEMORY},   {Kind::kMask, STATUS_NO_MEMORY},
      {Kind::kAccess, STATUS_NO_MEMORY},  {Kind::kOpen, STATUS_OPEN_WRITE_ERROR},
      {Kind::kWrite, STATUS_WRITE_ERROR}, {Kind::kSaveRow, -99}};
  struct Case {
    int format, bits;
    int order = ORDER_BGR;
  };
  // Together they come to every write: pads of runs, masks, zeros behind the rows of a mask.
  for (const auto& [format, bits, order] : {Case{FMT_ICO, 4}, Case{FMT_BMP, 16, ORDER_565},
                                            Case{FMT_BMP_RLE, 4}, Case{FMT_BMP_RLE, 8}, Case{FMT_OS2, 4}}) {
    for (const auto& [kind, status] : kinds) {
      for (int nth = 1;; ++nth) {
        SaveRig rig(format, bits, 40, 3);
        rig.bitmap.ColorOrder = order;
        ++rig.kernel.saved.converted.BytesPerLine;
        rig.kernel.saved.maskBytesPerLine = 5;
        rig.kernel.fault = Fault{kind, nth, false,
                                 kind == Kind::kSaveRow ? -99
                                 : kind == Kind::kWrite ? Fault::kHalf
                                                        : 0};
        const int result = rig.Save();
        if (!rig.kernel.faultStruck) break;
        // The sizes that are patched last may fail: the picture is whole without them.
        SCOPED_TRACE(testing::Message() << format << " " << static_cast<int>(kind) << " " << nth);
        const std::string writes = rig.kernel.Log({Kind::kWrite});
        const bool isPatch = format == FMT_BMP_RLE && writes.find("write 2 4") != std::string::npos &&
                             nth >= std::count(writes.begin(), writes.end(), ',');
        EXPECT_EQ(result, isPatch ? STATUS_OK : status);
        const std::string released =
            rig.kernel.Log({Kind::kClose, Kind::kRelease, Kind::kFreeBitmap, Kind::kFree, Kind::kEndSave});
        EXPECT_NE(kOrders.find("|" + released + "|"), std::string::npos) << released;
        EXPECT_EQ(rig.kernel.LastEvent(), Kind::kEndSave);
      }
    }
  }
}

TEST(Save, SizesArePatchedWhereTheyBelongOrNotAtAll) {
  for (const auto& [nth, landed, last] :
       {std::tuple{2, -1, "write 34 4"}, {2, Fault::kElsewhere, "write 34 4"}, {3, -1, "write 2 4"}}) {
    SaveRig rig(FMT_BMP_RLE, 8, 4, 1);
    rig.kernel.fault = Fault{Kind::kSeek, nth, false, landed};
    EXPECT_EQ(rig.Save(), STATUS_OK);
    EXPECT_TRUE(rig.kernel.Log({Kind::kWrite}).ends_with("2, " + std::string(last)))
        << rig.kernel.Log({Kind::kWrite});
  }
}

TEST(Save, APngIconIsOneEntryAndTheStream) {
  SaveRig rig(FMT_VISTA_ICO, 32, 256, 48);
  EXPECT_EQ(rig.Save(), STATUS_OK);
  EXPECT_EQ(ToHex(rig.kernel.file),
            ToHex(Hex("0000 0100 0100  00 30 00 00 0000 2000 05000000 16000000 0102030405")));
  EXPECT_EQ(rig.kernel.Log({Kind::kOpen, Kind::kWrite, Kind::kEncode, Kind::kTrack, Kind::kLock, Kind::kClose,
                            Kind::kUnlock, Kind::kFreeGlobal}),
            "open picture 66 256, write 0 6, encode 75 32 0 0, track 3, write 6 16, lock, write 22 5, close, "
            "unlock, free block");
  SaveRig colors(FMT_VISTA_ICO, 4, 16, 16);
  EXPECT_EQ(colors.Save(), STATUS_OK);
  EXPECT_EQ(colors.kernel.file[8], 16);

  const auto ended = [](Fault fault) {
    SaveRig failing(FMT_VISTA_ICO, 8, 16, 16);
    failing.kernel.fault = fault;
    const int status = failing.Save();
    return std::to_string(status) + ": " +
           failing.kernel.Log({Kind::kClose, Kind::kUnlock, Kind::kFreeGlobal});
  };
  EXPECT_EQ(ended({Kind::kOpen, 1}), "-14: ");
  EXPECT_EQ(ended({Kind::kWrite, 1, false, 0}), "-5: close");
  EXPECT_EQ(ended({Kind::kEncode, 1, false, 0}), "0: close");
  EXPECT_EQ(ended({Kind::kWrite, 2, false, 0}), "-5: free block, close");
  EXPECT_EQ(ended({Kind::kWrite, 3, false, 0}), "-5: close, unlock, free block");
}

TEST(Save, MasksAloneAndInvertedBytes) {
  SaveRig rig(FMT_ICO, 8, 16, 2);
  rig.kernel.fault = Fault{Kind::kMask, 1};
  EXPECT_EQ(TheFilter().createMask(&rig.bitmap), nullptr);
  EXPECT_EQ(rig.kernel.Log({Kind::kFreeBitmap, Kind::kFree}), "free #1");
  rig.kernel.fault = Fault{Kind::kAccess, 1};
  EXPECT_EQ(TheFilter().createMask(&rig.bitmap), nullptr);
  EXPECT_EQ(rig.kernel.Log({Kind::kFreeBitmap, Kind::kFree}), "free #1, free bitmap, free #2");
  TheFilter().freeMask(nullptr);
  Bytes bytes = Hex("F0 0F 0F 0F");
  TheFilter().invert(bytes.data(), 0);
  EXPECT_EQ(bytes, Hex("F0 0F 0F 0F"));
  TheFilter().invert(bytes.data(), 4);
  EXPECT_EQ(bytes, Hex("0F F0 F0 F0"));
  EXPECT_EQ(rig.kernel.Verdict(), "");
}

}  // namespace
