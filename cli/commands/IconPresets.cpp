// The table.
#include "commands/IconPresets.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace cli {
namespace {

constexpr int kUsual[] = {16, 24, 32, 48, 64, 128, 256};
constexpr int kWeb[] = {16, 32, 48};
constexpr int kWindows[] = {16, 20, 24, 32, 40, 48, 64, 96, 256};
constexpr int kMacOsWeb[] = {16, 32, 64, 128, 256};
constexpr int kElectron[] = {16, 24, 32, 48, 64, 128, 256};
constexpr int kClassic[] = {16, 32, 48};

constexpr int kAlways256 = 256;
constexpr int kNever = 257;

constexpr IconPreset kUsualPreset = {"usual", kUsual, kAlways256, 0, ""};

constexpr IconPreset kPresets[] = {
    {"web", kWeb, kNever, 0,
     "favicon.ico: tabs show 16, or 32 on fine screens; shortcuts 48. Small, so no more"},
    {"windows", kWindows, kAlways256, 0,
     "16, 32 and 48 at 100, 125, 150 and 200 %, and 256 for large views, as PNG"},
    {"macos-web", kMacOsWeb, 128, 0,
     "favicon.ico for fine screens, which show 16 and 32 with twice the pixels"},
    {"electron", kElectron, kAlways256, 0,
     "its packagers want 256 in the file, and take the others from there"},
    {"classic", kClassic, kNever, 8,
     "bitmaps of 256 colours with hard edges, which Windows 95 and later take"},
};

std::string Sizes(const IconPreset& preset) {
  return fmt::format("{}", fmt::join(preset.sizes, ","));
}

}  // namespace

const IconPreset& UsualIcon() {
  return kUsualPreset;
}

const IconPreset* FindIconPreset(std::string_view name) {
  const auto* preset = std::find_if(std::begin(kPresets), std::end(kPresets),
                                    [&](const IconPreset& each) { return each.name == name; });
  return preset == std::end(kPresets) ? nullptr : preset;
}

std::string IconPresetNames(std::string_view separator) {
  std::string names;
  for (const IconPreset& preset : kPresets) names.append(names.empty() ? "" : separator).append(preset.name);
  return names;
}

std::string IconPresetTable() {
  std::string table;
  for (const IconPreset& preset : kPresets) {
    table += fmt::format("  {:<10} {}\n             {}\n", preset.name, Sizes(preset), preset.why);
  }
  return table;
}

}  // namespace cli
