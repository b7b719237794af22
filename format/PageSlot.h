// Which entry of a directory a page being saved gets, and whether it is a new one.
#pragma once

#include <vxkrn.h>

#include <cstdint>

namespace bmp {

inline constexpr int kMostPages = 0xFFFF;  // the directory counts them in 16 bits

struct PageSlot {
  int page = 0;  ///< from 1; 0: there is no such page
  bool isNew = false;

  constexpr bool operator==(const PageSlot&) const = default;
};

/// @param saveFlags the save record's Flags
/// @param pageFlags the page options' Flags
/// @param page      the page options' PageNumber: -1 is the end of the directory
/// @param count     pages that there are
constexpr PageSlot FindPageSlot(unsigned int saveFlags, unsigned int pageFlags, int page, int count) {
  if (page < -1) return {};
  const bool isBehindTheLast = page == -1 || page > count;
  const int first = page < 1 ? 1 : page;
  const auto newSlot = [count](int slot) { return count < kMostPages ? PageSlot{slot, true} : PageSlot{}; };

  const bool asksForNew = (saveFlags & SAVE_ADD_PAGE) != 0 || (pageFlags & SAVE_PAGE_INSERT) != 0;
  if (asksForNew) return newSlot(isBehindTheLast ? count + 1 : first);
  if ((pageFlags & SAVE_PAGE_REPLACE) == 0 && page >= 2) return newSlot(count + 1);
  if (count == 0) return {};
  return {isBehindTheLast ? count : first, false};
}

namespace proof {

constexpr unsigned int kBoth = SAVE_PAGE_INSERT | SAVE_PAGE_REPLACE;
static_assert(FindPageSlot(SAVE_ADD_PAGE, SAVE_PAGE_REPLACE, 2, 3) == PageSlot{2, true});
static_assert(FindPageSlot(SAVE_ADD_PAGE, 0, 0, 3) == PageSlot{1, true});
static_assert(FindPageSlot(SAVE_ADD_PAGE, 0, -1, 3) == PageSlot{4, true});
static_assert(FindPageSlot(0, 0, 2, 3) == PageSlot{4, true} && FindPageSlot(0, 0, 9, 3) == PageSlot{4, true});
static_assert(FindPageSlot(0, 0, 1, 3) == PageSlot{1, false} &&
              FindPageSlot(0, 0, -1, 3) == PageSlot{3, false});
static_assert(FindPageSlot(0, kBoth, 1, 3) == PageSlot{1, true});
static_assert(FindPageSlot(0, SAVE_PAGE_INSERT, 0, 3) == PageSlot{1, true});
static_assert(FindPageSlot(0, SAVE_PAGE_INSERT, 7, 3) == PageSlot{4, true});
static_assert(FindPageSlot(0, SAVE_PAGE_INSERT, -1, 0) == PageSlot{1, true});
static_assert(FindPageSlot(0, SAVE_PAGE_REPLACE, 2, 3) == PageSlot{2, false});
static_assert(FindPageSlot(0, SAVE_PAGE_REPLACE, 9, 3) == PageSlot{3, false});
static_assert(FindPageSlot(0, SAVE_PAGE_REPLACE, -1, 3) == PageSlot{3, false});
static_assert(FindPageSlot(0, SAVE_PAGE_REPLACE, 0, 3) == PageSlot{1, false});
static_assert(FindPageSlot(0, SAVE_PAGE_REPLACE, 1, 0) == PageSlot{});
static_assert(FindPageSlot(0, SAVE_PAGE_INSERT, -2, 3) == PageSlot{});
static_assert(FindPageSlot(0, SAVE_PAGE_INSERT, 1, kMostPages) == PageSlot{});
static_assert(FindPageSlot(0, SAVE_PAGE_REPLACE, kMostPages, kMostPages) == PageSlot{kMostPages, false});

}  // namespace proof
}  // namespace bmp
