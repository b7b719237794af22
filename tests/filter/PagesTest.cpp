// Editing icon and cursor files in place: what every edit does to directory and bodies, and what is left when
// something fails half way. Pages are expected to be what a new file would hold.
#include <algorithm>
#include <array>
#include <map>
#include <random>
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
  PageRig rig(IconOf({30, 40}), FMT_CUR, 24, 48, 48);
  const Bytes before = rig.kernel.file;
  const Page page = rig.AsNew();
  ASSERT_EQ(rig.Put(SAVE_PAGE_INSERT, 1), STATUS_OK);
  EXPECT_EQ(ToHex(page.entry), "3030000000000000a81c0000");
  const Bytes& file = rig.kernel.file;
  const std::vector<Page> old = PagesOf(before);
  EXPECT_EQ(PagesOf(file), (std::vector<Page>{page, old[0], old[1]}));
  EXPECT_EQ(Number(file, 18, 4), before.size() + 16);
  EXPECT_EQ(Number(file, 34, 4), Number(before, 18, 4) + 16);
  EXPECT_EQ(file.size(), before.size() + 16 + page.body.size());
  EXPECT_EQ(Number(file, 2, 2), 1U) << "the type is the file's";
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

TEST(Pages, TailsOfEveryLengthMoveBothWays) {
  for (const std::size_t tail : {0U, 1U, 1023U, 1024U, 1025U, 3000U, 4096U}) {
    PageRig longer(IconOf({0, tail}));
    const std::vector<Page> old = PagesOf(longer.kernel.file);
    const Page page = longer.AsNew();
    ASSERT_EQ(longer.Put(0, 2), STATUS_OK);  // behind the last one, whatever the number
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
  whole.kernel.file = IconOf({0, 1024});
  whole.kernel.fault =
      Fault{Kind::kWrite, 2};  // a file that cannot end earlier has stale bytes behind its end
  EXPECT_EQ(whole.Delete(2), STATUS_OK);
  // Towards the end: room first, then from the last chunk to the first.
  PageRig grown(IconOf({3000 - 16}), FMT_VISTA_ICO);
  EXPECT_EQ(calls(grown, grown.Put(SAVE_PAGE_INSERT, 1)),
            "read 6, write 3006 16, read 1024, write 1998 1024, read 1024, write 974 1024, read 952, "
            "write 22 952, read 16, write 22 16, read 6, write 0 6, write 6 16, write 3022 5");
}

TEST(Pages, AMoveThatStopsHalfWayCountsNothing) {
  PageRig rig(IconOf({30, 3000}));
  const Bytes before = rig.kernel.file;
  rig.kernel.fault = Fault{Kind::kRead, 3, false, -1};
  ASSERT_EQ(rig.Delete(1), STATUS_READ_ERROR);
  Bytes expected = before;  // but for one chunk, which is where the slot was
  std::copy_n(before.begin() + 22, 1024, expected.begin() + 6);
  EXPECT_EQ(rig.kernel.file, expected);
}

TEST(Pages, TheCountThatIsReadAgainCounts) {
  PageRig rig(IconOf({10, 20, 30, 40}));
  rig.kernel.meanwhile = [&rig](Kind kind, int) {
    if (kind == Kind::kWrite) rig.kernel.file[4] = 3;
  };
  ASSERT_EQ(rig.Delete(4), STATUS_OK);
  EXPECT_EQ(rig.kernel.Log({Kind::kWrite}), "write 54 100, write 154 0, write 0 6, write 6 16, write 22 16");
}

TEST(Pages, ADirectoryMayPromiseMoreThanTheFileHolds) {
  const Bytes cut = Hex("0000 0100 0500 0101 0000 0000 0000 0400 0000 1600");  // within its first entry
  PageRig inserted(cut, FMT_VISTA_ICO);
  EXPECT_EQ(inserted.Put(SAVE_PAGE_INSERT, 4), STATUS_BAD_FORMAT);
  EXPECT_EQ(inserted.kernel.file, cut);
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
  Bytes full = Hex("0000 0100 feff");
  full.resize(6 + 16 * 65534);
  PageRig last(full);
  EXPECT_EQ(last.Put(SAVE_PAGE_INSERT, 65535), STATUS_OK);
  full = last.kernel.file;
  PageRig nowhere(two);
  nowhere.kernel.fault = Fault{Kind::kOpen, 1};
  EXPECT_EQ(nowhere.Delete(1), STATUS_OPEN_WRITE_ERROR);
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
  // A callback that answers so while a page is edited says the same.
  PageRig refused(IconOf({30}), FMT_VISTA_ICO);
  refused.kernel.fault = Fault{Kind::kEncode, 1, false, STATUS_OPEN_WRITE_ERROR};
  EXPECT_EQ(refused.Put(SAVE_PAGE_REPLACE, 1), STATUS_OK);
  EXPECT_EQ(refused.kernel.Log({Kind::kOpen}), "open picture 2 256, open picture 66 256");
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

/// The orders, between bars, in which edits give back what they had got hold of when they ended.
const std::string kOrders =
    "|close|close, end|free #1, close, end|free bitmap, free #1, close, end|"
    "close, release 1 1, free bitmap, free #1, end|"
    "close, release 1 1, free bitmap, free #1, free #2, end|close, free block|"
    "close, unlock, free block|";

/// What comes of an edit of page 1 when its first call of a kind fails, its second, and so on. A letter each:
/// '=' the file is as if nothing had failed, '~' it is not, and that is not told; else which failure is told,
/// in lower case where the file is not what it was before.
std::string Outcomes(int format, unsigned pageFlags, Kind kind, int result) {
  static const std::map<int, char> told = {
      {STATUS_WRITE_ERROR, 'W'}, {STATUS_READ_ERROR, 'R'}, {STATUS_BAD_PAGE, 'P'}, {STATUS_BAD_FORMAT, 'F'}};
  const Bytes before = IconOf({30, 1500});
  Bytes whole;
  std::string letters;
  for (int nth = 0;; ++nth) {  // 0: none fails
    PageRig rig(before, format, 8, 5, 1);
    rig.kernel.fault = Fault{kind, nth, false, result};
    const int status = pageFlags == 0 ? rig.Delete(1) : rig.Put(pageFlags, 1);
    if (nth > 0 && !rig.kernel.faultStruck) return letters;
    if (nth == 0) whole = rig.kernel.file;
    if (nth == 0) continue;
    const char letter = status == STATUS_OK ? (rig.kernel.file == whole ? '=' : '~') : told.at(status);
    const bool isSpoilt = status != STATUS_OK && rig.kernel.file != before;
    letters += isSpoilt ? static_cast<char>(letter + ('a' - 'A')) : letter;
  }
}

TEST(Pages, WhichFailuresAreTold) {
  const auto outcomes = [](int format, unsigned flags) {
    std::string text;
    for (const auto& [kind, result] : {std::pair{Kind::kRead, -1},
                                       {Kind::kRead, Fault::kHalf},
                                       {Kind::kSeek, -1},
                                       {Kind::kSeek, Fault::kElsewhere},
                                       {Kind::kWrite, -1},
                                       {Kind::kWrite, Fault::kHalf}}) {
      text += Outcomes(format, flags, kind, result) + " ";
    }
    return text;
  };
  // Failing and half reads, failing and wrong seeks, failing and half writes. Nobody looks at whether the
  // entries of old pages are corrected; a file without a first byte is made anew.
  EXPECT_EQ(outcomes(FMT_ICO, SAVE_PAGE_INSERT),
            "~RR~~= FRR~~= WWWWWW~~~~=wwww ~WWWWW~~~~=w~w~ WWW~~wwwwww WWW~~wwwwww ");
  EXPECT_EQ(outcomes(FMT_VISTA_ICO, SAVE_PAGE_INSERT),
            "~RR~~= FRR~~= WWWWWW~~~~=w~~~ ~WWWWW~~~~=w~~~ WWW~~www WWW~~www ");
  EXPECT_EQ(outcomes(FMT_ICO, SAVE_PAGE_REPLACE), "~ F WWw ~W~ Wwwww wwwww ");
  EXPECT_EQ(outcomes(FMT_VISTA_ICO, SAVE_PAGE_REPLACE), "~ F ~~~ ~~~ Ww ww ");
  EXPECT_EQ(outcomes(FMT_ICO, 0), "PRr=~ P~~=~ WWWww=w~w WWWww=w~w Ww~ww ww~ww ");  // a deletion
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

struct Edit {
  int format;
  unsigned flags;  // 0: a deletion
};

/// Fails each call of a kind in turn while page 2 of three is edited; BeginSave and the like answer -99.
void FailEach(const Edit& edit, Kind kind, std::optional<int> expected) {
  for (int nth = 1;; ++nth) {
    SCOPED_TRACE(testing::Message() << edit.format << " " << edit.flags << " " << int(kind) << " " << nth);
    PageRig rig(IconOf({30, 2000, 50}), edit.format, 4, 20, 3);
    std::vector<Page> old = PagesOf(rig.kernel.file);
    ++rig.kernel.saved.converted.BytesPerLine;
    rig.kernel.fault = Fault{kind, nth, false, kind >= Kind::kBeginSave ? -99 : -1};
    const int status = edit.flags == 0 ? rig.Delete(2) : rig.Put(edit.flags, 2);
    if (!rig.kernel.faultStruck) return;
    EXPECT_TRUE(status == expected.value_or(status)) << status;
    const std::string released = rig.kernel.Log({Kind::kClose, Kind::kRelease, Kind::kFreeBitmap, Kind::kFree,
                                                 Kind::kUnlock, Kind::kFreeGlobal, Kind::kEndSave});
    const bool isNewFile = nth == 1 && (kind == Kind::kOpen || kind == Kind::kRead);
    EXPECT_TRUE(isNewFile || kOrders.find("|" + released + "|") != std::string::npos) << released;
    const std::string log = rig.kernel.Log({Kind::kBeginSave, Kind::kEndSave});
    EXPECT_TRUE(log.empty() || log == "begin 4 0 1 11 12, end") << log;
    EXPECT_EQ(rig.kernel.LastEvent() == Kind::kEndSave, !log.empty());
    // Once the slot is there nothing that fails touches the other pages, nor before its entry the old one.
    const bool replaces = edit.flags == SAVE_PAGE_REPLACE;
    if (!expected && !(replaces && kind == Kind::kWrite)) continue;
    std::vector<Page> now = PagesOf(rig.kernel.file);
    ASSERT_EQ(now.size(), replaces ? 3U : 4U);
    if (replaces && (kind == Kind::kMask || kind == Kind::kBeginSave || kind == Kind::kEncode)) {
      EXPECT_EQ(now[1], old[1]);
    }
    now.erase(now.begin() + 1);
    if (replaces) old.erase(old.begin() + 1);
    EXPECT_EQ(now, old);
  }
}

TEST(Pages, WhateverFailsIsReleasedAndEndedOnceAndSparesOtherPages) {
  for (const Edit& edit :
       {Edit{FMT_ICO, SAVE_PAGE_INSERT}, Edit{FMT_VISTA_ICO, SAVE_PAGE_INSERT},
        Edit{FMT_ICO, SAVE_PAGE_REPLACE}, Edit{FMT_VISTA_ICO, SAVE_PAGE_REPLACE}, Edit{FMT_ICO, 0}}) {
    for (const Kind kind : {Kind::kOpen, Kind::kRead, Kind::kSeek, Kind::kWrite})
      FailEach(edit, kind, std::nullopt);
    for (const Kind kind : {Kind::kAlloc, Kind::kMask, Kind::kAccess}) FailEach(edit, kind, STATUS_NO_MEMORY);
    for (const Kind kind : {Kind::kBeginSave, Kind::kSaveRow, Kind::kEncode}) FailEach(edit, kind, -99);
    FailEach(edit, Kind::kLock, STATUS_WRITE_ERROR);
  }
}

}  // namespace
