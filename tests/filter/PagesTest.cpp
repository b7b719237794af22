// Editing icon and cursor files in place: what every edit does to directory and bodies, and what is left when
// something fails half way. Pages are expected to be what a new file would hold.
#include <array>
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
  for (const int format : {FMT_ICO, FMT_VISTA_ICO}) {
    PageRig rig(IconOf({30, 40, 50}), format);
    const Bytes before = rig.kernel.file;
    const Page page = rig.AsNew();
    ASSERT_EQ(rig.Put(SAVE_PAGE_REPLACE, 2), STATUS_OK);
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
  // A tail of 100 bytes: one read, one write, and the end of the file.
  PageRig rig(IconOf({0, 100}));
  ASSERT_EQ(rig.Delete(2), STATUS_OK);
  EXPECT_EQ(rig.kernel.Log({Kind::kRead, Kind::kWrite}),
            "read 6, read 1024, write 22 100, write 122 0, read 6, write 0 6, read 16, write 6 16");
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
      rig.kernel.saved.png = Repeat(static_cast<std::size_t>(below(90)), static_cast<std::uint8_t>(step));
      const Page made = rig.AsNew();
      const bool replaces = edit <= 3;
      ASSERT_EQ(rig.Put(replaces ? SAVE_PAGE_REPLACE : SAVE_PAGE_INSERT, page), STATUS_OK);
      if (replaces) *at = made;
      if (!replaces) model.insert(at, made);
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
    // Some are not looked at; without a directory a new file is made.
    default:
      return status == STATUS_OK || status == STATUS_WRITE_ERROR || status == STATUS_OPEN_WRITE_ERROR ||
             status == STATUS_BAD_PAGE;
  }
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
