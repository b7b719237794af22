// Editing icon and cursor files in place: what every edit does to directory and bodies, and what is left when
// something fails half way. Pages are expected to be what a new file would hold.
#include <algorithm>
#include <array>
#include <map>
#include <random>
#include <string_view>
#include <utility>

#include "SaveRig.h"

namespace {

/// A page as a reader finds it: its entry but for the offset, and its body.
struct Page {
  Bytes entry;
  Bytes body;
  bool operator==(const Page&) const = default;
};

std::uint32_t Number(const Bytes& bytes, std::size_t at, std::size_t count) {
  std::uint32_t number = 0;
  for (std::size_t i = count; i-- > 0;) number = number << 8 | bytes.at(at + i);
  return number;
}

Bytes Part(const Bytes& bytes, std::size_t at, std::size_t count) {
  if (at + count > bytes.size()) return {};
  const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(at);
  return {begin, begin + static_cast<std::ptrdiff_t>(count)};
}

std::vector<Page> PagesOf(const Bytes& file) {
  std::vector<Page> pages;
  for (std::size_t i = 0; i < Number(file, 4, 2); ++i) {
    const std::size_t entry = 6 + 16 * i;
    pages.push_back(
        {Part(file, entry, 12), Part(file, Number(file, entry + 12, 4), Number(file, entry + 8, 4))});
  }
  return pages;
}

/// An icon whose pages have bodies of these lengths and contents of their own.
Bytes IconOf(std::initializer_list<std::size_t> lengths) {
  std::vector<IconPage> pages;
  for (const std::size_t length : lengths) {
    IconPage page;
    page.body = Repeat(length, static_cast<std::uint8_t>(0x10 * (pages.size() + 1)));
    for (std::size_t i = 0; i < length; i += 7) page.body[i] = static_cast<std::uint8_t>(i);
    pages.push_back(page);
  }
  return IconFile(1, pages);
}

struct PageRig : SaveRig {
  explicit PageRig(Bytes file, int format = FMT_ICO, int bits = 8, int width = 5, int height = 3)
      : SaveRig(format, bits, width, height) {
    kernel.file = std::move(file);
  }

  int Put(unsigned pageFlags, int page, unsigned saveFlags = 0) {
    dispatch.Flags = saveFlags;
    options.Flags = pageFlags;
    options.PageNumber = page;
    return Save();
  }
  int Delete(int page) {
    kernel.StartCall();
    _DELETEPAGEDISPATCH request = {FakeKernel::kFileName, page};
    const int status = TheFilter().deletePage(&request);
    EXPECT_EQ(kernel.Verdict(), "");
    return status;
  }
  /// What the picture is as the page of a new file.
  Page AsNew() {
    const Bytes file = std::exchange(kernel.file, {});
    const auto fault = std::exchange(kernel.fault, std::nullopt);
    EXPECT_EQ(Put(0, 0), STATUS_OK);
    Page page = PagesOf(kernel.file).at(0);
    kernel.file = file;
    kernel.fault = fault;
    return page;
  }
};

TEST(Pages, InsertedAtTheFrontWithTheBodyAtTheEnd) {
  PageRig rig(IconOf({30, 40}));
  const Bytes before = rig.kernel.file;
  const Page page = rig.AsNew();
  ASSERT_EQ(rig.Put(SAVE_PAGE_INSERT, 1), STATUS_OK);
  const Bytes& file = rig.kernel.file;
  const std::vector<Page> old = PagesOf(before);
  EXPECT_EQ(PagesOf(file), (std::vector<Page>{page, old[0], old[1]}));
  EXPECT_EQ(Number(file, 18, 4), before.size() + 16);
  EXPECT_EQ(Number(file, 34, 4), Number(before, 18, 4) + 16);
  EXPECT_EQ(file.size(), before.size() + 16 + page.body.size());
  EXPECT_EQ(rig.kernel.Log({Kind::kOpen}), "open picture 2 256");
}

TEST(Pages, ReplacedKeepTheOldBodyInTheFile) {
  const std::pair<int, const char*> kinds[] = {
      {FMT_ICO,
       "begin 4 0 1 11 12, mask 216, seek 0 2, seek 22 0, write 22 16, seek 0 2, write 174 40, write 214 64, "
       "row 0 1 0 11 12, write 278 4, get 0 4, write 282 4, close, release 1 1, end"},
      {FMT_VISTA_ICO,
       "encode 75 4 0 0, track 1, seek 0 2, seek 22 0, write 22 16, lock, seek 0 2, write 174 5, close, "
       "unlock, free block"}};
  for (const auto& [format, calls] : kinds) {
    PageRig rig(IconOf({30, 40, 50}), format, 4, 5, 1);
    const Bytes before = rig.kernel.file;
    const Page page = rig.AsNew();
    ASSERT_EQ(rig.Put(SAVE_PAGE_REPLACE, 2), STATUS_OK);
    EXPECT_EQ(rig.kernel.Log({Kind::kSeek, Kind::kWrite, Kind::kClose, Kind::kRelease, Kind::kMask,
                              Kind::kBeginSave, Kind::kSaveRow, Kind::kGet, Kind::kEndSave, Kind::kEncode,
                              Kind::kTrack, Kind::kLock, Kind::kUnlock, Kind::kFreeGlobal}),
              calls);
    const std::vector<Page> old = PagesOf(before);
    EXPECT_EQ(PagesOf(rig.kernel.file), (std::vector<Page>{old[0], page, old[2]}));
    EXPECT_EQ(Number(rig.kernel.file, 34, 4), before.size());
    EXPECT_EQ(Part(rig.kernel.file, 54, before.size() - 54), Part(before, 54, before.size() - 54));
  }
}

TEST(Pages, SizesOfBodies) {
  PageRig small(IconOf({10}), FMT_ICO, 4, 32, 32);
  ASSERT_EQ(small.Put(0, 2), STATUS_OK);
  EXPECT_EQ(ToHex(Part(small.kernel.file, 22, 12)), "2020100000000000e8020000");
  PageRig large(IconOf({10}), FMT_CUR, 24, 48, 48);
  ASSERT_EQ(large.Put(0, 2), STATUS_OK);
  EXPECT_EQ(ToHex(Part(large.kernel.file, 22, 12)), "3030000000000000a81c0000");
  EXPECT_EQ(Number(large.kernel.file, 2, 2), 1U) << "the type is the file's";
}

TEST(Pages, TailsOfEveryLengthMoveBothWays) {
  for (const std::size_t tail : {0U, 1U, 1023U, 1024U, 1025U, 3000U, 4096U}) {
    PageRig longer(IconOf({0, tail}));
    const std::vector<Page> old = PagesOf(longer.kernel.file);
    const Page page = longer.AsNew();
    ASSERT_EQ(longer.Put(SAVE_PAGE_INSERT, -1), STATUS_OK);
    EXPECT_EQ(PagesOf(longer.kernel.file), (std::vector<Page>{old[0], old[1], page})) << tail;

    PageRig shorter(IconOf({0, tail}));
    const std::size_t size = shorter.kernel.file.size();
    ASSERT_EQ(shorter.Delete(1), STATUS_OK);
    EXPECT_EQ(PagesOf(shorter.kernel.file), std::vector<Page>{old[1]}) << tail;
    EXPECT_EQ(shorter.kernel.file.size(), size - 16);
  }
}

TEST(Pages, MovesGoChunkByChunk) {
  const auto calls = [](PageRig& rig, int status) {
    EXPECT_EQ(status, STATUS_OK);
    return rig.kernel.Log({Kind::kRead, Kind::kWrite});
  };
  // One read, one write, and the end of the file.
  PageRig brief(IconOf({0, 100}));
  EXPECT_EQ(calls(brief, brief.Delete(2)),
            "read 6, read 1024, write 22 100, write 122 0, read 6, write 0 6, read 16, write 6 16");
  // Only a second read tells that a whole chunk was the last one.
  PageRig whole(IconOf({0, 1024}));
  EXPECT_EQ(calls(whole, whole.Delete(2)),
            "read 6, read 1024, write 22 1024, read 1024, write 1046 0, write 1046 0, read 6, write 0 6, "
            "read 16, write 6 16");
  // Towards the end: room first, then from the last chunk to the first.
  PageRig grown(IconOf({3000 - 16}), FMT_VISTA_ICO);
  EXPECT_EQ(calls(grown, grown.Put(SAVE_PAGE_INSERT, 1)),
            "read 6, write 3006 16, read 1024, write 1998 1024, read 1024, write 974 1024, read 952, "
            "write 22 952, read 16, write 22 16, read 6, write 0 6, write 6 16, write 3022 5");
}

TEST(Pages, AMoveSparesWhatItCannotRead) {
  // Towards the end: the middle one of three chunks stays, all else is where it should be.
  PageRig grown(IconOf({30, 3000}), FMT_VISTA_ICO);
  const Bytes before = grown.kernel.file;
  ASSERT_EQ(grown.Put(SAVE_PAGE_INSERT, 1), STATUS_OK);
  Bytes expected = std::exchange(grown.kernel.file, before);
  const std::size_t chunk = before.size() - 2048;
  std::copy_n(before.begin() + static_cast<std::ptrdiff_t>(chunk + 16), 1024,
              expected.begin() + static_cast<std::ptrdiff_t>(chunk + 16));
  grown.kernel.fault = Fault{Kind::kRead, 3};
  ASSERT_EQ(grown.Put(SAVE_PAGE_INSERT, 1), STATUS_OK);
  EXPECT_EQ(grown.kernel.file, expected);

  // Towards the start: all behind the first chunk stays.
  PageRig shrunk(IconOf({30, 3000}));
  const Bytes whole = shrunk.kernel.file;
  shrunk.kernel.fault = Fault{Kind::kRead, 3};
  ASSERT_EQ(shrunk.Delete(1), STATUS_OK);
  EXPECT_EQ(Part(shrunk.kernel.file, 22, 1008), Part(whole, 38, 1008));
  EXPECT_EQ(Part(shrunk.kernel.file, 1030, whole.size() - 1030), Part(whole, 1030, whole.size() - 1030));
}

TEST(Pages, ADirectoryMayPromiseMoreThanTheFileHolds) {
  PageRig inserted(Hex("0000 0100 0500 0101 0000 0000 0000 0400 0000 1600"), FMT_VISTA_ICO);
  ASSERT_EQ(inserted.Put(SAVE_PAGE_INSERT, 4), STATUS_OK);
  EXPECT_EQ(inserted.kernel.Log({Kind::kWrite}), "write 0 6, write 54 16, write 70 5");
  PageRig deleted(Hex("0000 0100 0500"));
  ASSERT_EQ(deleted.Delete(1), STATUS_OK);
  EXPECT_EQ(deleted.kernel.file, Hex("0000 0100 0400"));
}

TEST(Pages, WhatIsNotThereIsRefusedUntouched) {
  const auto refused = [](const Bytes& file, int status, const auto& edit) {
    PageRig rig(file);
    EXPECT_EQ(edit(rig), status);
    EXPECT_EQ(rig.kernel.file, file);
    EXPECT_EQ(rig.kernel.Log({Kind::kWrite, Kind::kBeginSave}), "");
  };
  const Bytes two = IconOf({10, 20});
  Bytes full = Hex("0000 0100 ffff");
  full.resize(6 + 16 * 65535);
  for (const int page : {0, -1, 3, 70000}) {
    refused(two, STATUS_BAD_PAGE, [page](PageRig& rig) { return rig.Delete(page); });
  }
  refused(IconOf({10}), STATUS_LAST_PAGE, [](PageRig& rig) { return rig.Delete(1); });
  refused(IconOf({10}), STATUS_BAD_PAGE, [](PageRig& rig) { return rig.Delete(2); });
  refused(IconOf({}), STATUS_BAD_PAGE, [](PageRig& rig) { return rig.Delete(1); });
  refused(Hex("0000 01"), STATUS_BAD_PAGE, [](PageRig& rig) { return rig.Delete(1); });
  refused(two, STATUS_BAD_PAGE, [](PageRig& rig) { return rig.Put(SAVE_PAGE_INSERT, -2); });
  refused(two, STATUS_BAD_PAGE, [](PageRig& rig) { return rig.Put(SAVE_PAGE_REPLACE, -2); });
  refused(IconOf({}), STATUS_BAD_PAGE, [](PageRig& rig) { return rig.Put(SAVE_PAGE_REPLACE, 1); });
  refused(full, STATUS_BAD_PAGE, [](PageRig& rig) { return rig.Put(SAVE_PAGE_INSERT, 1); });
  refused(Hex("0000 01"), STATUS_BAD_FORMAT, [](PageRig& rig) { return rig.Put(SAVE_PAGE_INSERT, 1); });
}

TEST(Pages, WithoutAFileThereIsANewOne) {
  for (const int format : {FMT_ICO, FMT_CUR, FMT_VISTA_ICO}) {
    PageRig rig({}, format);
    const Page page = rig.AsNew();
    EXPECT_EQ(rig.Put(SAVE_PAGE_INSERT, 3), STATUS_OK);
    EXPECT_EQ(PagesOf(rig.kernel.file), std::vector<Page>{page});
  }
}

TEST(Pages, LongChainsOfEditsAgreeWithAPlainList) {
  std::minstd_rand random(1);
  const auto below = [&random](int limit) {
    return static_cast<int>(random() % static_cast<unsigned>(limit));
  };
  PageRig rig(IconOf({30}));
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
      rig.dispatch.Format = below(2) == 0 ? FMT_ICO : FMT_VISTA_ICO;
      rig.dispatch.BitsPerPixel = std::array{1, 4, 8, 24}[static_cast<std::size_t>(below(4))];
      rig.bitmap.Width = 1 + below(40);
      rig.bitmap.Height = below(6);
      rig.bitmap.Orientation = below(2) == 0 ? ORIENT_BOTTOM_UP : ORIENT_TOP_DOWN;
      rig.kernel.saved.converted.BytesPerLine = rig.RowSize() + below(3) * 4;
      rig.kernel.saved.maskBytesPerLine = rig.MaskRowSize() + below(2);
      rig.kernel.saved.png = Repeat(1 + static_cast<std::size_t>(below(90)), static_cast<std::uint8_t>(step));
      const Page made = rig.AsNew();
      const bool replaces = edit <= 3;
      const bool isAtEnd = below(4) == 0;
      ASSERT_EQ(rig.Put(replaces ? SAVE_PAGE_REPLACE : SAVE_PAGE_INSERT, isAtEnd ? -1 : page), STATUS_OK);
      if (replaces) (isAtEnd ? model.back() : *at) = made;
      if (!replaces) model.insert(isAtEnd ? model.end() : at, made);
    }
    ASSERT_EQ(PagesOf(rig.kernel.file), model) << "step " << step;
  }
}

constexpr Kind kFallible[] = {Kind::kOpen,    Kind::kRead,   Kind::kSeek,   Kind::kWrite,
                              Kind::kAlloc,   Kind::kMask,   Kind::kAccess, Kind::kBeginSave,
                              Kind::kSaveRow, Kind::kEncode, Kind::kLock};

/// What a failure of that kind may end in; BeginSave and the others answer -99 themselves.
bool IsExpected(Kind kind, int status) {
  switch (kind) {
    case Kind::kAlloc:
    case Kind::kMask:
    case Kind::kAccess: return status == STATUS_NO_MEMORY;
    case Kind::kBeginSave:
    case Kind::kSaveRow:
    case Kind::kEncode: return status == -99;
    case Kind::kLock: return status == STATUS_WRITE_ERROR;
    default: return true;  // of files, see above
  }
}

/// The orders in which edits give back what they had got hold of when they ended.
bool IsInOrder(const std::string& released) {
  static const std::string_view orders[] = {"close",
                                            "close, end",
                                            "free #1, close, end",
                                            "free bitmap, free #1, close, end",
                                            "close, release 1 1, free bitmap, free #1, end",
                                            "close, release 1 1, free bitmap, free #1, free #2, end",
                                            "close, free block",
                                            "close, unlock, free block"};
  return std::find(std::begin(orders), std::end(orders), released) != std::end(orders);
}

/// What comes of an edit of page 1 when its first call of a kind fails, its second, and so on. A letter each:
/// '=' the file is as if nothing had failed, '~' it is not, and that is not told; else which failure is told.
std::string Outcomes(int format, unsigned pageFlags, Kind kind, int result) {
  static const std::map<int, char> told = {
      {STATUS_WRITE_ERROR, 'W'}, {STATUS_BAD_PAGE, 'P'}, {STATUS_BAD_FORMAT, 'F'}};
  Bytes whole;
  std::string letters;
  for (int nth = 0;; ++nth) {  // 0: none fails
    PageRig rig(IconOf({30, 40}), format, 8, 5, 1);
    rig.kernel.fault = Fault{kind, nth, false, result};
    const int status = pageFlags == 0 ? rig.Delete(1) : rig.Put(pageFlags, 1);
    if (nth > 0 && !rig.kernel.faultStruck) return letters;
    const char isKept = rig.kernel.file == whole ? '=' : '~';
    if (nth == 0) whole = rig.kernel.file;
    if (nth > 0) letters += status == STATUS_OK ? isKept : told.at(status);
  }
}

TEST(Pages, WhichFailuresAreTold) {
  constexpr unsigned kDeletes = 0;
  // Failing reads, reads of half the bytes, failing seeks, failing writes.
  const auto outcomes = [](int format, unsigned flags) {
    return Outcomes(format, flags, Kind::kRead, -1) + " " +
           Outcomes(format, flags, Kind::kRead, Fault::kHalfRead) + " " +
           Outcomes(format, flags, Kind::kSeek, -1) + " " + Outcomes(format, flags, Kind::kWrite, -1);
  };
  // Nobody looks at what a move meets, nor at whether old entries are corrected; a file without a first byte
  // is made anew.
  EXPECT_EQ(outcomes(FMT_ICO, SAVE_PAGE_INSERT), "~~~~= F~~~= ~~~~~~~~=WWWW ~~~~WWWWWW");
  EXPECT_EQ(outcomes(FMT_VISTA_ICO, SAVE_PAGE_INSERT), "~~~~= F~~~= ~~~~~~~~=W~~~ ~~~~WWW");
  EXPECT_EQ(outcomes(FMT_ICO, SAVE_PAGE_REPLACE), "~ F WWW WWWWW");
  EXPECT_EQ(outcomes(FMT_VISTA_ICO, SAVE_PAGE_REPLACE), "~ F ~~~ WW");
  EXPECT_EQ(outcomes(FMT_ICO, kDeletes), "P~=~ P~=~ W~~=W~W ~~WW");
}

TEST(Pages, WhereTheConversionRefusesTheSlotIsLeftOpen) {
  for (const int page : {1, -1}) {
    PageRig rig(IconOf({30, 40}));
    const Bytes before = rig.kernel.file;
    rig.kernel.fault = Fault{Kind::kBeginSave, 1, false, 0};
    EXPECT_EQ(rig.Put(SAVE_PAGE_INSERT, page), 0);
    const std::size_t slot = page == 1 ? 6 : 38;
    EXPECT_EQ(Number(rig.kernel.file, 4, 2), 3U);
    EXPECT_EQ(Part(rig.kernel.file, slot, 16), Part(before, slot, 16)) << "what was there before";
    EXPECT_EQ(Part(rig.kernel.file, 54, 70), Part(before, 38, 70));
  }
}

TEST(Pages, WithoutRowsAPageEndsBehindItsPalette) {
  PageRig rig(IconOf({30, 40}));
  const int rows = (rig.RowSize() + rig.MaskRowSize()) * rig.bitmap.Height;
  const Bytes before = rig.kernel.file;
  ASSERT_EQ(rig.Put(SAVE_PAGE_INSERT, 2), STATUS_OK);
  const Bytes whole = std::exchange(rig.kernel.file, before);
  rig.kernel.fault = Fault{Kind::kBeginSave, 1, false, 7};
  EXPECT_EQ(rig.Put(SAVE_PAGE_INSERT, 2), 7);
  EXPECT_EQ(rig.kernel.Log({Kind::kSaveRow, Kind::kGet}), "");
  EXPECT_EQ(rig.kernel.file, Part(whole, 0, whole.size() - static_cast<std::size_t>(rows)));
}

TEST(Pages, WhateverFailsTheOtherPagesOfAReplacementStay) {
  for (const int format : {FMT_ICO, FMT_VISTA_ICO}) {
    for (const Kind kind : kFallible) {
      for (int nth = 1;; ++nth) {
        PageRig rig(IconOf({30, 40, 50}), format, 4, 20, 3);
        const std::vector<Page> old = PagesOf(rig.kernel.file);
        const Page made = rig.AsNew();
        ++rig.kernel.saved.converted.BytesPerLine;
        rig.kernel.fault = Fault{kind, nth, false, kind >= Kind::kBeginSave ? -99 : -1};
        const int status = rig.Put(SAVE_PAGE_REPLACE, 2);
        if (!rig.kernel.faultStruck) break;
        EXPECT_TRUE(IsExpected(kind, status)) << status << " " << static_cast<int>(kind) << " " << nth;
        if (kind == Kind::kOpen || kind == Kind::kRead || kind == Kind::kSeek) continue;
        const std::vector<Page> now = PagesOf(rig.kernel.file);
        ASSERT_EQ(now.size(), 3U);
        EXPECT_EQ(now[0], old[0]);
        EXPECT_EQ(now[2], old[2]);
        const bool isBeforeTheEntry =
            kind == Kind::kMask || kind == Kind::kBeginSave || kind == Kind::kEncode;
        if (isBeforeTheEntry) {
          EXPECT_EQ(now[1], old[1]);
        }
      }
    }
  }
}

TEST(Pages, WhateverFailsEverythingIsReleasedAndEndedOnce) {
  for (const int format : {FMT_ICO, FMT_VISTA_ICO, 0}) {  // 0: a deletion
    for (const Kind kind : kFallible) {
      for (int nth = 1;; ++nth) {
        PageRig rig(IconOf({30, 2000, 50}), format == 0 ? FMT_ICO : format, 4, 20, 3);
        const std::vector<Page> old = PagesOf(rig.kernel.file);
        ++rig.kernel.saved.converted.BytesPerLine;
        rig.kernel.fault = Fault{kind, nth, false, kind >= Kind::kBeginSave ? -99 : -1};
        const int status = format == 0 ? rig.Delete(2) : rig.Put(SAVE_PAGE_INSERT, 2);
        if (!rig.kernel.faultStruck) break;
        EXPECT_TRUE(IsExpected(kind, status)) << status << " " << static_cast<int>(kind) << " " << nth;
        const bool isNewFile = nth == 1 && (kind == Kind::kOpen || kind == Kind::kRead);
        const std::string released =
            rig.kernel.Log({Kind::kClose, Kind::kRelease, Kind::kFreeBitmap, Kind::kFree, Kind::kUnlock,
                            Kind::kFreeGlobal, Kind::kEndSave});
        EXPECT_TRUE(isNewFile || IsInOrder(released)) << released;
        const std::string log = rig.kernel.Log({Kind::kBeginSave, Kind::kEndSave});
        EXPECT_TRUE(log.empty() || log == "begin 4 0 1 11 12, end") << log;
        if (!log.empty()) {
          EXPECT_EQ(rig.kernel.LastEvent(), Kind::kEndSave);
        }
        // Once the slot is open nothing that fails touches the pages that were there.
        const bool isLater = kind >= Kind::kMask && kind != Kind::kWrite;
        if (!isLater) continue;
        const std::vector<Page> now = PagesOf(rig.kernel.file);
        ASSERT_EQ(now.size(), 4U);
        EXPECT_EQ(now[0], old[0]);
        EXPECT_EQ(now[2], old[1]);
        EXPECT_EQ(now[3], old[2]);
      }
    }
  }
}

}  // namespace
