// One table says what formats are called and which names of files mean them.
#include "arguments/SaveArguments.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "failures/Errors.h"
#include "failures/Report.h"
#include "words/FileNames.h"
#include "words/Nearest.h"
#include "words/Numbers.h"
#include "words/Text.h"

namespace cli {
namespace {

struct Kind {
  std::string_view word;
  vx_format format;
  std::vector<std::string_view> endings;  ///< of names that mean it
  std::string_view ending;                ///< of names that are made for it: what other programs open
  std::string_view transparency;
};

const std::vector<Kind>& Kinds() {
  static constexpr std::string_view kNone = "none";
  static constexpr std::string_view kBitmap = "soft at 32 bits; none below, but see --4444";
  static constexpr std::string_view kAlpha = "soft at 32 bits, else there or not";
  static const std::vector<Kind> kinds = {{"bmp", VX_FORMAT_BMP, {".bmp", ".dib"}, "bmp", kBitmap},
                                          {"rle", VX_FORMAT_BMP_RLE, {".rle"}, "bmp", kNone},
                                          {"os2", VX_FORMAT_OS2, {}, "bmp", kNone},
                                          {"os2v2", VX_FORMAT_OS2_2, {}, "bmp", kNone},
                                          {"ico", VX_FORMAT_ICO, {".ico"}, "ico", kAlpha},
                                          {"cur", VX_FORMAT_CUR, {".cur"}, "cur", kAlpha},
                                          {"png-icon", VX_FORMAT_VISTA_ICO, {}, "ico", kAlpha},
                                          {"png", VX_FORMAT_PNG, {".png"}, "png", kAlpha}};
  return kinds;
}

std::string Words(std::string_view separator = ", ") {
  std::string words;
  for (const Kind& kind : Kinds()) words.append(words.empty() ? "" : separator).append(kind.word);
  return words;
}

const Kind& KindNamed(std::string_view word) {
  const auto kind =
      std::find_if(Kinds().begin(), Kinds().end(), [&](const Kind& each) { return each.word == word; });
  if (kind != Kinds().end()) return *kind;
  std::vector<std::string_view> words;
  for (const Kind& each : Kinds()) words.push_back(each.word);
  throw UsageError(
      fmt::format("--to {}: the format is one of {}{}", Printable(word), Words(), DidYouMean(word, words)));
}

/// @return null where no format goes with the name
const Kind* KindGuessed(std::string_view out) {
  const std::string ending = EndingOf(out);
  if (ending.size() < 2) return &KindNamed("png");
  const auto hasEnding = [&](const Kind& kind) {
    return std::find(kind.endings.begin(), kind.endings.end(), ending) != kind.endings.end();
  };
  const auto kind = std::find_if(Kinds().begin(), Kinds().end(), hasEnding);
  return kind == Kinds().end() ? nullptr : &*kind;
}

/// @param advice what helps where the name says nothing
const Kind& KindByName(std::string_view out, std::string_view advice) {
  if (const Kind* kind = KindGuessed(out)) return *kind;
  throw UsageError(fmt::format("{}: no format goes with this name; {}", Printable(out), advice));
}

vx_format_limits LimitsOf(const Kind& kind) {
  vx_format_limits limits{};
  vx::Check(vx_format_describe(kind.format, &limits));
  return limits;
}

bool HasDepth(const Kind& kind, int depth) {
  return depth >= 1 && depth <= 32 && (LimitsOf(kind).depths >> (depth - 1) & 1U) != 0;
}

/// "1, 4, 8, 24"
std::string DepthsOf(const Kind& kind) {
  std::string depths;
  for (int depth = 1; depth <= 32; ++depth) {
    if (HasDepth(kind, depth)) depths += fmt::format("{}{}", depths.empty() ? "" : ", ", depth);
  }
  return depths;
}

int ParseDepth(std::string_view bits, const Kind& kind) {
  if (bits.empty()) return 0;
  const std::optional<int> depth = ParseInt(bits, 1);
  if (depth && HasDepth(kind, *depth)) return *depth;
  throw UsageError(fmt::format("--bits {}: {} files have one of {} bits a pixel", Printable(bits), kind.word,
                               DepthsOf(kind)));
}

int ParseDpi(std::string_view dpi, int format) {
  if (dpi.empty()) return 0;
  constexpr int kMostDpi = 65535;
  const std::optional<int> number = ParseInt(dpi, 1);
  if (!number || *number > kMostDpi) {
    throw UsageError(
        fmt::format("--dpi {}: a whole number from 1 to {} is needed", Printable(dpi), kMostDpi));
  }
  if (format == VX_FORMAT_ICO || format == VX_FORMAT_CUR || format == VX_FORMAT_OS2) {
    throw UsageError("--dpi is for formats that state a resolution: bmp, rle, os2v2, png-icon, png");
  }
  return *number;
}

vx_dither ParseDither(std::string_view dither) {
  if (dither.empty() || dither == "diffuse") return VX_DITHER_DIFFUSE;
  if (dither == "none") return VX_DITHER_NONE;
  throw UsageError(fmt::format("--dither {}: none or diffuse is needed", Printable(dither)));
}

}  // namespace

vx::SaveOptions SaveOptionsByName(std::string_view out) {
  return vx::SaveOptions(KindByName(out, "one that ends with .png or .bmp would do").format);
}

std::string_view EndingFor(int format) {
  const auto kind =
      std::find_if(Kinds().begin(), Kinds().end(), [&](const Kind& each) { return each.format == format; });
  return kind == Kinds().end() ? "" : kind->ending;
}

std::string FormatTable() {
  std::string table = "  FORMAT    bits a pixel          largest  transparency\n";
  for (const Kind& kind : Kinds()) {
    const int side = LimitsOf(kind).largest_side;
    table += fmt::format("  {:<9} {:<21} {:<8} {}\n", kind.word, DepthsOf(kind),
                         side == 0 ? "any" : std::to_string(side), kind.transparency);
  }
  return table;
}

void SaveArguments::Declare(Arguments& command, Into into) {
  const bool isOne = into == Into::kOneFile;
  command.Add(
      {.name = "--to",
       .help = isOne ? "format of OUT: " + Words() +
                           ".\nGuessed from OUT's name unless given; png for a name that tells nothing"
                     : "format of the new files: " + Words(),
       .value = "FORMAT",
       .offers = Words("|"),
       .isRequired = !isOne},
      format_);
  command.Add({.name = "--bits",
               .help = "bits a pixel: 1, 4, 8, 16, 24 or 32, as far as the format has them;\n"
                       "unless given, those of the picture, or the fewest that lose nothing",
               .value = "N",
               .offers = "1|4|8|16|24|32"},
              bits_);
  command.Add({.name = "--565", .help = "16 bits with 6 for green, which only bmp has"}, is565_);
  command.Add({.name = "--1555", .help = "16 bits with a bit of alpha, which only bmp has"}, is1555_);
  command.Add({.name = "--4444", .help = "16 bits with 4 of alpha, which only bmp has"}, is4444_);
  command.Add(
      {.name = "--dpi", .help = "dots per inch to state; those of the picture unless given", .value = "N"},
      dpi_);
  command.Add({.name = "--dither",
               .help = "what becomes of colours that do not fit up to 8 bits:\n"
                       "diffuse spreads the difference over the neighbours, none does not",
               .value = "none|diffuse"},
              dither_);
}

vx::SaveOptions SaveArguments::Describe(std::string_view out, vx_palette palette) const {
  const Kind& kind = format_.empty() ? KindByName(out, "--to names one of " + Words()) : KindNamed(format_);
  vx::SaveOptions options(kind.format, ParseDepth(bits_, kind));
  options.palette = palette;
  options.dpi = ParseDpi(dpi_, kind.format);
  DescribeColors(&options);
  return options;
}

void SaveArguments::DescribeColors(vx::SaveOptions* options) const {
  options->dither = ParseDither(dither_);
  if (is1555_) options->masks = VX_MASKS_1555;
  if (is4444_) options->masks = VX_MASKS_4444;
  options->use_565 = is565_ ? 1 : 0;
  const bool has16 = options->bits_per_pixel == 0 || options->bits_per_pixel == 16;
  const bool isBmp16 = options->format == VX_FORMAT_BMP && has16;
  const std::pair<bool, std::string_view> forms[] = {
      {is565_, "--565"}, {is1555_, "--1555"}, {is4444_, "--4444"}};
  for (const auto& [isAsked, name] : forms) {
    if (isAsked && !isBmp16) throw UsageError(fmt::format("{} is for bmp files of 16 bits a pixel", name));
  }
  if (is565_ + is1555_ + is4444_ > 1) throw UsageError("--565, --1555 and --4444 do not go together");
}

void RemarkOnLosses(std::string_view out, const vx_save_options& options, const vx_save_plan& plan) {
  const std::string name = Printable(out);
  if (plan.transparency == VX_TRANSPARENCY_LOST && options.drop_alpha == 0) {
    ReportMessage(fmt::format("{}: the picture's transparency is lost; {} keeps it", name,
                              options.format == VX_FORMAT_BMP ? "--bits 32" : "--to png or an icon"));
  } else if (plan.transparency == VX_TRANSPARENCY_HARDENED) {
    ReportMessage(fmt::format(
        "{}: soft edges became hard: half opaque and more is opaque; --bits 32 keeps them", name));
  }
  if (plan.format != options.format) {
    ReportMessage(fmt::format("{}: {} bits a pixel have no run-length coding; saved without", name,
                              plan.bits_per_pixel));
  }
  const bool isAsked = options.bits_per_pixel != 0 || options.use_565 != 0 || options.masks != VX_MASKS_NONE;
  if (plan.colors_lost != 0 && !isAsked) {
    ReportMessage(fmt::format("{}: not all colours fit into {} bits a pixel", name, plan.bits_per_pixel));
  }
}

int ParseIconDepth(const std::string& bits) {
  const std::optional<int> depth = ParseInt(bits, 1);
  constexpr int kDepths[] = {1, 4, 8, 24, 32};
  if (depth && std::find(std::begin(kDepths), std::end(kDepths), *depth) != std::end(kDepths)) return *depth;
  throw UsageError(
      fmt::format("--bits {}: bitmap pages have one of 1, 4, 8, 24, 32 bits a pixel", Printable(bits)));
}

}  // namespace cli
