#include "finding/OutputNames.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <utility>

#include "failures/Errors.h"
#include "words/FileNames.h"
#include "words/Text.h"

namespace cli {
namespace {

constexpr std::string_view kPagePlace = "{page}";
constexpr std::string_view kShortPagePlace = "%p";  // the same

bool IsDigit(char c) {
  return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

std::string Replaced(std::string text, std::string_view what, std::string_view with) {
  for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size())
    text.replace(at, what.size(), with);
  return text;
}

/// Whether a path leads out of the folder that it starts from.
bool LeadsOut(const std::filesystem::path& path) {
  return path.is_absolute() || std::find(path.begin(), path.end(), "..") != path.end();
}

/// The path without double slashes, without dots that change nothing, and without a slash that begins it.
std::string Tidy(const std::string& path) {
  std::string tidy = std::filesystem::path(path).lexically_normal();
  tidy.erase(0, std::min(tidy.find_first_not_of('/'), tidy.size()));
  return tidy;
}

}  // namespace

OutputNames::OutputNames(const std::string& pattern, std::string_view ending, bool takesAllPages)
    : pattern_(Replaced(pattern, kShortPagePlace, kPagePlace)), ending_(ending) {
  if (pattern_.empty()) pattern_ = takesAllPages ? "{dir}/{stem}-{page}.{ext}" : "{dir}/{stem}.{ext}";
  if (LeadsOut(pattern_)) {
    throw UsageError(
        fmt::format("--name {}: new files lie below --dir, so neither / at the beginning nor .. "
                    "can be meant",
                    Printable(pattern_)));
  }
  Parse(pattern_);
  if (pattern_.ends_with('/')) {
    throw UsageError(fmt::format("--name {}: a name is needed behind the folder", Printable(pattern_)));
  }
  RefuseUnlessPagesStandApart();
  if (takesAllPages && !namesPages_) {
    throw UsageError(fmt::format("--name {}: with all pages the name needs {{page}}", Printable(pattern_)));
  }
}

void OutputNames::Parse(std::string_view pattern) {
  while (!pattern.empty()) {
    const size_t open = std::min(pattern.find('{'), pattern.size());
    if (open > 0) pieces_.push_back({What::kText, std::string(pattern.substr(0, open))});
    pattern.remove_prefix(open);
    if (pattern.empty()) return;
    const size_t close = std::min(pattern.find('}'), pattern.size() - 1);
    AddPlace(pattern.substr(0, close + 1));
    pattern.remove_prefix(close + 1);
  }
}

void OutputNames::AddPlace(std::string_view name) {
  constexpr std::pair<std::string_view, What> kPlaces[] = {{"{dir}", What::kDir},     {"{path}", What::kPath},
                                                           {"{stem}", What::kStem},   {"{file}", What::kFile},
                                                           {kPagePlace, What::kPage}, {"{ext}", What::kExt}};
  const auto* place = std::find_if(std::begin(kPlaces), std::end(kPlaces),
                                   [&](const auto& each) { return each.first == name; });
  if (place == std::end(kPlaces)) {
    throw UsageError(
        fmt::format("--name {}: {} is none of {{dir}}, {{path}}, {{stem}}, {{file}}, {{page}} and "
                    "{{ext}}",
                    Printable(pattern_), Printable(name)));
  }
  pieces_.push_back({place->second});
  namesPages_ = namesPages_ || place->second == What::kPage;
}

/// Page 1 of a1.ico and page 11 of a.ico would both be a11.png, were there nothing around {page}.
void OutputNames::RefuseUnlessPagesStandApart() const {
  for (size_t i = 0; i < pieces_.size(); ++i) {
    if (pieces_[i].what != What::kPage) continue;
    const bool isApartBefore =
        i == 0 || (pieces_[i - 1].what == What::kText && !IsDigit(pieces_[i - 1].text.back()));
    const bool isApartBehind = i + 1 == pieces_.size() ||
                               (pieces_[i + 1].what == What::kText && !IsDigit(pieces_[i + 1].text.front()));
    if (isApartBefore && isApartBehind) continue;
    throw UsageError(
        fmt::format("--name {}: something other than a digit must stand before and behind {{page}}, "
                    "or two pages could get one name",
                    Printable(pattern_)));
  }
}

std::string OutputNames::Fill(const Piece& piece, const FileList& files, size_t file, int page) const {
  switch (piece.what) {
    case What::kText: return piece.text;
    case What::kDir: return std::string(files.PlaceOf(file));
    case What::kPath: return std::string(files.FolderOf(file));
    case What::kStem: return StemOf(files.NameOf(file));
    case What::kFile: return std::string(files.NameOf(file));
    case What::kPage: return page == 0 ? std::string(kPagePlace) : std::to_string(page);
    case What::kExt: return ending_;
  }
  return "";
}

std::string OutputNames::For(const FileList& files, size_t file, int page) const {
  std::string name;
  for (const Piece& piece : pieces_) name += Fill(piece, files, file, page);
  name = Tidy(name);
  if (LeadsOut(name)) {
    throw UsageError(fmt::format("{}: {{path}} has .. in it, which would lead out of --dir",
                                 Printable(files.PathOf(file))));
  }
  return name;
}

bool HasPagePlace(std::string_view out) {
  return out.find(kShortPagePlace) != std::string_view::npos ||
         out.find(kPagePlace) != std::string_view::npos;
}

std::string NameOfPage(const std::string& out, int page) {
  if (HasPagePlace(out))
    return Replaced(Replaced(out, kShortPagePlace, kPagePlace), kPagePlace, std::to_string(page));
  const std::filesystem::path path(out);
  const std::string name = fmt::format("{}-{}{}", path.stem().string(), page, path.extension().string());
  return (path.parent_path() / name).string();
}

uint64_t HashOf(std::string_view name) {
  constexpr uint64_t kOffset = 0xCBF29CE484222325;  // FNV-1a of 64 bits
  constexpr uint64_t kPrime = 0x100000001B3;
  constexpr uint64_t kMix = 0xFF51AFD7ED558CCD;  // its lowest bits alone are spread badly
  uint64_t hash = kOffset;
  for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * kPrime;
  hash = (hash ^ hash >> 33U) * kMix;
  return hash ^ hash >> 33U;
}

}  // namespace cli
