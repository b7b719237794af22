// Words and keys; what they are about others have found out.
#include "commands/InfoListing.h"

#include <fmt/format.h>

#include <array>
#include <iterator>
#include <utility>

#include "failures/Report.h"
#include "streams/Input.h"
#include "streams/Output.h"
#include "words/Facts.h"
#include "words/Json.h"
#include "words/Table.h"
#include "words/Text.h"

namespace cli {
namespace {

constexpr std::array kTitles = {"FILE", "PAGE", "KIND", "SIZE", "BITS", "CODING", "ROWS", "COLOURS", "DPI"};

/// Goes on from "the file ends early".
std::string WhatIsMissing(const vx_info& info, const vx_storage_info& storage) {
  if (storage.rows_present < 0) return "";
  if (storage.rows_present == info.height) return ": all rows are there, but not all of the mask";
  return fmt::format(": {} of {} rows are there", storage.rows_present, info.height);
}

/// What is seen to be missing without decoding anything.
void ReportDamage(const std::string& file, const vx_info& info, const vx_storage_info& storage) {
  const std::string page = info.page_count > 1 ? fmt::format(", page {}", info.page) : "";
  ReportMessage(fmt::format("{}{}: the file ends early{}", Printable(InputName(file.c_str())), page,
                            WhatIsMissing(info, storage)));
}

class TableLines final : public Listing {
 public:
  void Add(const std::string& file, const vx_info& info, const vx_storage_info& storage) override {
    if (storage.ends_early != 0) ReportDamage(file, info, storage);
    Add({Printable(file), fmt::format("{}/{}", info.page, info.page_count), storage.kind, SizeText(info),
         fmt::to_string(info.bits_per_pixel), CompressionText(info), OrientationText(info),
         ColorOrderText(info), ResolutionText(info)});
  }

  /// A page among others has a line. What is wrong with it stands on standard error.
  void Add(const std::string& file, const Failure& failure) override {
    if (failure.pages == 0 || failure.page > failure.pages) return;
    TableRow row = {Printable(file), fmt::format("{}/{}", failure.page, failure.pages), "bad"};
    row.resize(kTitles.size(), "?");
    Add(row);
  }

  /// Stands below the table, a line for the whole and one a step.
  void Add(const std::string& file, const vx_animation_info& info,
           const std::vector<vx_animation_step>& steps) override {
    animations_ += fmt::format("{}: {} steps", Printable(file), info.step_count);
    if (info.title[0] != '\0') animations_ += fmt::format(", title: {}", Printable(info.title));
    if (info.author[0] != '\0') animations_ += fmt::format(", author: {}", Printable(info.author));
    animations_ += '\n';
    for (size_t i = 0; i < steps.size(); ++i) {
      const auto& [frame, jiffies] = steps[i];
      const std::string page = frame == 0 ? "no page that there is" : fmt::format("page {}", frame);
      animations_ += fmt::format("  step {}: {}, {}/60 s\n", i + 1, page, jiffies);
    }
  }

  void Finish() override {
    const std::string lines = table_.Finish();
    if (hasRows_) PrintToStandardOutput(lines + animations_);
  }

 private:
  void Add(const TableRow& row) {
    hasRows_ = true;
    const std::string lines = table_.Add(row);
    if (!lines.empty()) PrintToStandardOutput(lines);
  }

  Table table_{TableRow(kTitles.begin(), kTitles.end())};
  std::string animations_;
  bool hasRows_ = false;
};

constexpr const char* kColorSpaces[] = {"none", "srgb", "calibrated", "profile", "linked"};

bool HasHotSpot(const vx_info& info) {
  return info.format == VX_FORMAT_CUR || info.format == VX_FORMAT_ANI || info.format == VX_FORMAT_OS2_POINTER;
}

void AddStorage(const vx_info& info, const vx_storage_info& storage, JsonLine& line) {
  const auto& masks = storage.masks;
  if (storage.header_size > 0) line.Add("header_size", storage.header_size);
  line.Add("palette_count", storage.palette_count);
  if ((masks[0] | masks[1] | masks[2] | masks[3]) != 0) {
    line.AddNumbers("masks", masks);
  }
  line.Add("alpha", storage.has_alpha != 0);
  line.Add("color_space", kColorSpaces[storage.color_space]);
  if (HasHotSpot(info)) line.Add("hotspot", std::pair(storage.hot_x, storage.hot_y));
  if (storage.data_offset > 0) line.Add("data_offset", storage.data_offset);
  if (storage.file_size >= 0) line.Add("file_size", storage.file_size);
  if (storage.rows_present >= 0) line.Add("rows_present", storage.rows_present);
  line.Add("ends_early", storage.ends_early != 0);
}

class JsonLines final : public Listing {
 public:
  void Add(const std::string& file, const vx_info& info, const vx_storage_info& storage) override {
    JsonLine line = Begin(file);
    line.Add("page", info.page);
    line.Add("pages", info.page_count);
    line.Add("kind", storage.kind);
    line.Add("format", info.format);
    line.Add("width", info.width);
    line.Add("height", info.height);
    line.Add("bits_per_pixel", info.bits_per_pixel);
    line.Add("compression", CompressionText(info));
    line.Add("orientation", OrientationText(info));
    line.Add("color_order", ColorOrderText(info));
    line.Add("x_dpi", info.x_dpi);
    line.Add("y_dpi", info.y_dpi);
    line.Add("data_size", info.data_size);
    AddStorage(info, storage, line);
    PrintToStandardOutput(line.Text());
  }

  void Add(const std::string& file, const Failure& failure) override {
    JsonLine line = Begin(file);
    if (failure.page > 0) line.Add("page", failure.page);
    if (failure.pages > 0) line.Add("pages", failure.pages);
    line.AddFailure(failure.status, failure.message);
    PrintToStandardOutput(line.Text());
  }

  void Add(const std::string& file, const vx_animation_info& info,
           const std::vector<vx_animation_step>& steps) override {
    JsonLine line = Begin(file);
    line.Add("pages", info.frame_count);
    line.Add("steps", info.step_count);
    line.Add("jiffies", info.jiffies);
    line.Add("title", info.title);
    line.Add("author", info.author);
    PrintToStandardOutput(line.Text());
    for (size_t i = 0; i < steps.size(); ++i) {
      JsonLine each = Begin(file);
      each.Add("step", i + 1);
      each.Add("page", steps[i].frame);
      each.Add("jiffies", steps[i].jiffies);
      PrintToStandardOutput(each.Text());
    }
  }

  void Finish() override {}

 private:
  static JsonLine Begin(const std::string& file) {
    JsonLine line;
    line.Add("schema", 1);
    line.AddFile(file);
    return line;
  }
};

}  // namespace

std::unique_ptr<Listing> MakeListing(bool isJson) {
  if (isJson) return std::make_unique<JsonLines>();
  return std::make_unique<TableLines>();
}

}  // namespace cli
