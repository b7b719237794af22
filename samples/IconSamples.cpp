// Icons and cursors: every depth with its AND mask, alpha, PNG pages, several pages, hot spots.
#include "samples/Families.h"
#include "samples/Icons.h"

namespace samples {
namespace {

Sample FromPages(std::string name, std::string title, IconType type, const std::vector<Page>& pages) {
  return MakeSample(std::move(name), std::move(title), IconFile(type, pages), pages.front().picture);
}

}  // namespace

std::vector<Sample> IconSamples() {
  const Page arrow = WithHotSpot(IndexedPage(Arrow(32), 1), 0, 0);
  const Page crossHairs = WithHotSpot(IndexedPage(CrossHairs(33), 4), 16, 16);
  return {
      FromPages("icon-1bit.ico", "Icon, 1 bit, one colour and black", IconType::Icon,
                {IndexedPage(MoonBadge(32), 1)}),
      FromPages("icon-4bit.ico", "Icon, 4 bits", IconType::Icon, {IndexedPage(MoonBadge(48), 4)}),
      FromPages("icon-8bit.ico", "Icon, 8 bits", IconType::Icon, {IndexedPage(MoonBadge(48), 8)}),
      FromPages("icon-24bit.ico", "Icon, 24 bits; its AND mask cuts hard edges", IconType::Icon,
                {TrueColorPage(MoonBadge(48))}),
      FromPages("icon-32bit.ico", "Icon, 32 bits; alpha makes soft edges", IconType::Icon,
                {AlphaPage(MoonBadge(48))}),
      FromPages("icon-sizes.ico", "Icon of four pages: 16, 24, 32 and 48 pixels, 4 to 32 bits",
                IconType::Icon,
                {IndexedPage(MoonBadge(16), 4), IndexedPage(MoonBadge(24), 8), TrueColorPage(MoonBadge(32)),
                 AlphaPage(MoonBadge(48))}),
      FromPages("icon-png.ico", "Icon whose only page is a PNG stream", IconType::Icon,
                {PngPage(MoonBadge(48))}),
      FromPages("icon-png-256.ico", "Icon of three pages; the largest, 256 pixels, is a PNG stream",
                IconType::Icon,
                {AlphaPage(MoonBadge(16)), IndexedPage(MoonBadge(32), 8), PngPage(MoonBadge(256))}),
      FromPages("cursor-1bit.cur", "Cursor, 1 bit, hot spot at its tip", IconType::Cursor, {arrow}),
      FromPages("cursor-4bit.cur", "Cursor, 4 bits, odd size, hot spot in the middle", IconType::Cursor,
                {crossHairs}),
      FromPages("cursor-sizes.cur", "Cursor of two pages", IconType::Cursor,
                {crossHairs, WithHotSpot(AlphaPage(Arrow(48)), 0, 0)}),
  };
}

}  // namespace samples
