#include "arguments/OnePage.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string_view>

#include "failures/Errors.h"
#include "failures/Report.h"
#include "words/Numbers.h"
#include "words/Text.h"

namespace cli {
namespace {

/// A page by its number or, with number 0, the one that suits a width best.
struct Wish {
  int number = 1;
  int width = 0;
};

constexpr std::string_view kAll = "all";

Wish ParseWish(const std::string& page, bool mayBeAll) {
  constexpr std::string_view kNearest = "nearest:";
  if (page.empty() || (mayBeAll && page == kAll)) return {};
  if (page == "best") return {0, 0};
  if (page.starts_with(kNearest)) {
    const std::optional<int> width = ParseInt(std::string_view(page).substr(kNearest.size()), 1);
    if (width) return {0, *width};
  }
  if (const std::optional<int> number = ParseInt(page, 1)) return {*number, 0};
  throw UsageError(fmt::format("--page {}: a whole number from 1, {}best, or nearest: and a width is needed",
                               Printable(page), mayBeAll ? "all, " : ""));
}

constexpr std::string_view kDrop = "drop";
constexpr std::string_view kTransparent = "transparent";

int ParseAlpha(const std::string& alpha, bool isSaved) {
  if (alpha.empty() || alpha == "ignore" || (isSaved && alpha == kDrop)) return VX_ALPHA_IGNORE;
  if (alpha == "auto") return VX_ALPHA_AUTO;
  if (alpha == "force") return VX_ALPHA_FORCE;
  throw UsageError(fmt::format("--alpha {}: ignore, auto{} is needed", Printable(alpha),
                               isSaved ? ", force or drop" : " or force"));
}

}  // namespace

std::optional<Rgba> OnePage::Missing() const {
  if (missing_.empty()) return std::nullopt;
  if (missing_ == kTransparent) return Rgba{};
  if (const std::optional<Rgba> color = ParseColor(missing_)) return color;
  throw UsageError(
      fmt::format("--missing {}: transparent, or a colour such as FF8000 is needed", Printable(missing_)));
}

void OnePage::Declare(Arguments& command, Then then) {
  then_ = then;
  command.Add(
      {.name = "--page",
       .help = fmt::format("page of an icon or cursor, from 1; {} unless given. best takes the largest,\n"
                           "nearest:48 the one for 48 pixels{}",
                           then == Then::kCompared ? "all" : "1",
                           then == Then::kSavedEach ? ", all every one of them"
                           : then == Then::kSaved   ? ", all each into a file of its own"
                                                    : ""),
       .value = MayMeanAll() ? "N|all" : "N",
       .offers = MayMeanAll() ? "best|all" : "best"},
      page_);
  command.Add({.name = "--allow-truncated", .help = "take what is there of a file cut short"},
              allowTruncated_);
  if (IsSaved()) {
    command.Add({.name = "--missing",
                 .help = "the same, and make rows that are not there transparent, or of a colour,\n"
                         "such as FFFFFF; unless given they are black or the first colour",
                 .value = "transparent|RRGGBB"},
                missing_);
  }
  const std::string help =
      "the fourth bytes of 32-bit bitmaps where the file does not say what they are:\n"
      "left out, unless given; alpha where some are in use; or alpha";
  command.Add({.name = "--alpha",
               .help = IsSaved() ? help + ". drop saves every\npixel opaque, whatever was read" : help,
               .value = IsSaved() ? "ignore|auto|force|drop" : "ignore|auto|force"},
              alpha_);
  command.Add(
      {.name = "--as-filter", .help = "show exactly what the filter reads, and refuse what it refuses"},
      asFilter_);
  command.Add({.name = "--srgb", .help = "convert colours by a profile, or calibrated ones, to sRGB"},
              toSrgb_);
}

vx::LoadOptions OnePage::Options() const {
  vx::LoadOptions options;
  options.page = std::max(ParseWish(page_, MayMeanAll()).number, 1);
  options.allow_truncated = allowTruncated_ || !missing_.empty() ? 1 : 0;
  options.alpha = ParseAlpha(alpha_, IsSaved());
  if (asFilter_) options.flags |= VX_LOAD_AS_FILTER;
  if (toSrgb_) options.flags |= VX_LOAD_TO_SRGB;
  return options;
}

bool OnePage::MeansAll() const {
  return page_ == kAll;
}

bool OnePage::DropsAlpha() const {
  return alpha_ == kDrop;
}

void OnePage::ChooseFrom(const vx::Source& source, vx_load_options& options) const {
  const Wish wish = ParseWish(page_, MayMeanAll());
  if (wish.number == 0) options.page = source.BestPage(wish.width);
}

void OnePage::RemarkOnOthers(const vx::Source& source, const std::string& file) const {
  if (!page_.empty()) return;
  const int pages = source.Describe(1).page_count;
  if (pages < 2) return;
  ReportMessage(fmt::format("{}: page 1 of {} was taken; --page {}", Printable(file), pages,
                            then_ == Then::kSavedEach ? "all takes the others, too"
                            : then_ == Then::kSaved
                                ? "N takes another, --page all each into a file of its own"
                                : "N takes another"));
}

}  // namespace cli
