// Both ways of printing read the same records.
#include "commands/Structure.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "streams/Output.h"
#include "words/Json.h"
#include "words/Style.h"
#include "words/Text.h"

namespace cli {
namespace {

constexpr std::array kCodeNames = {"run", "literal", "end-of-line", "end-of-bitmap", "delta"};

const char* CodeName(const vx_code& code) {
  return kCodeNames.at(static_cast<size_t>(code.kind));
}

/// "color table", and of a chunk what it is called.
std::string PartTitle(const vx_part& part, int depth) {
  std::string title = vx_part_name(part.kind);
  std::replace(title.begin(), title.end(), '-', ' ');
  if (part.kind == VX_PART_IMAGE && depth == 0) title = fmt::format("page {}", part.page);
  if (part.name[0] != '\0') title += fmt::format(" {}", Printable(part.name));
  return title;
}

std::string ValueText(const vx_field& field) {
  switch (field.form) {
    case VX_FIELD_TEXT: return field.meaning;
    case VX_FIELD_HEX: return fmt::format("0x{:0{}X}", field.value, 2 * field.size);
    default: return fmt::to_string(field.value);
  }
}

std::string BytesText(const vx_field& field) {
  return fmt::format("{:02X}", fmt::join(field.bytes, field.bytes + field.size, " "));
}

/// What a code does, in a few words.
std::string CodeText(const vx_code& code) {
  switch (code.kind) {
    case VX_CODE_RUN: return fmt::format("run of {} x 0x{:02X}", code.count, code.value);
    case VX_CODE_LITERAL: return fmt::format("{} literal pixels", code.count);
    case VX_CODE_DELTA: return fmt::format("delta, right {}, on {}", code.count, code.value);
    default: return CodeName(code);
  }
}

class Tree final : public StructureListing {
 public:
  explicit Tree(bool withBytes) : withBytes_(withBytes), style_(Style::OfStandardOutput()) {}

  void Begin(const std::string& file, uint64_t size) override {
    offsetWidth_ = fmt::formatted_size("{}", size);
    PrintToStandardOutput(
        fmt::format("{}{}: {}\n", isFirst_ ? "" : "\n", style_.Strong(Printable(file)), ByteCount(size)));
    isFirst_ = false;
  }

  void Add(int /*number*/, const vx_part& part, int depth, std::span<const vx_field> fields) override {
    const std::string indent(static_cast<size_t>(2 * depth), ' ');
    std::string line =
        fmt::format("{}  {}{}", Offset(part.offset), indent, style_.Strong(PartTitle(part, depth)));
    line += fmt::format(", {}", ByteCount(part.length));
    if (part.count > 0) line += fmt::format(": {} x {}", part.count, part.stride);
    if ((part.flags & VX_PART_CUT) != 0) {
      line += style_.Warning(fmt::format(", of which the file has {}", ByteCount(part.present)));
    }
    if ((part.flags & VX_PART_SHARED) != 0) line += style_.Warning(", shared with another part");
    if (part.kind == VX_PART_UNREFERENCED) line = style_.Warning(line);
    line += '\n';
    for (const vx_field& field : fields) AddField(field, indent, line);
    PrintToStandardOutput(line);
  }

  void Add(const vx_code& code) override {
    PrintToStandardOutput(
        fmt::format("{}      row {}, x {}: {}\n", Offset(code.offset), code.row, code.x, CodeText(code)));
  }

 private:
  std::string Offset(uint64_t offset) const {
    return style_.Faint(fmt::format("{:>{}}", offset, offsetWidth_));
  }

  void AddField(const vx_field& field, std::string_view indent, std::string& lines) const {
    constexpr size_t kNameWidth = 20;
    constexpr size_t kBytesWidth = 13;
    std::string line =
        fmt::format("{}  {}  {}", Offset(field.offset), indent, PadRight(field.name, kNameWidth));
    if (withBytes_) line += style_.Faint(PadRight(BytesText(field), kBytesWidth));
    line += ValueText(field);
    if (field.form != VX_FIELD_TEXT && field.meaning[0] != '\0') line += fmt::format("  ({})", field.meaning);
    lines += line + '\n';
  }

  bool withBytes_;
  Style style_;
  size_t offsetWidth_ = 0;
  bool isFirst_ = true;
};

class Lines final : public StructureListing {
 public:
  void Begin(const std::string& file, uint64_t /*size*/) override { file_ = file; }

  void Add(int number, const vx_part& part, int /*depth*/, std::span<const vx_field> fields) override {
    JsonLine line = NewLine();
    line.Add("part", number);
    line.Add("kind", vx_part_name(part.kind));
    if (part.parent >= 0) line.Add("parent", part.parent);
    if (part.page > 0) line.Add("page", part.page);
    if (part.name[0] != '\0') line.Add("name", part.name);
    line.Add("offset", part.offset);
    line.Add("length", part.length);
    line.Add("present", part.present);
    if (part.count > 0) {
      line.Add("count", part.count);
      line.Add("stride", part.stride);
    }
    line.Add("flags", FlagsOf(part));
    line.Add("fields", ObjectsOf(fields));
    PrintToStandardOutput(line.Text());
  }

  void Add(const vx_code& code) override {
    JsonLine line = NewLine();
    line.Add("code", CodeName(code));
    line.Add("row", code.row);
    line.Add("x", code.x);
    line.Add("count", code.count);
    line.Add("value", code.value);
    line.Add("offset", code.offset);
    line.Add("length", code.length);
    PrintToStandardOutput(line.Text());
  }

 private:
  JsonLine NewLine() const {
    JsonLine line;
    line.Add("schema", 1);
    line.AddFile(file_);
    return line;
  }

  static std::vector<std::string> FlagsOf(const vx_part& part) {
    std::vector<std::string> flags;
    if ((part.flags & VX_PART_CUT) != 0) flags.emplace_back("cut");
    if ((part.flags & VX_PART_SHARED) != 0) flags.emplace_back("shared");
    return flags;
  }

  static std::vector<JsonLine> ObjectsOf(std::span<const vx_field> fields) {
    std::vector<JsonLine> objects;
    for (const vx_field& field : fields) {
      JsonLine& object = objects.emplace_back();
      object.Add("name", field.name);
      object.Add("offset", field.offset);
      object.Add("bytes",
                 Hexadecimal({reinterpret_cast<const char*>(field.bytes), static_cast<size_t>(field.size)}));
      if (field.form == VX_FIELD_TEXT) {
        object.Add("value", field.meaning);
      } else {
        object.Add("value", field.value);
        if (field.meaning[0] != '\0') object.Add("meaning", field.meaning);
      }
    }
    return objects;
  }

  std::string file_;
};

}  // namespace

std::unique_ptr<StructureListing> NewTree(bool withBytes) {
  return std::make_unique<Tree>(withBytes);
}

std::unique_ptr<StructureListing> NewStructureLines() {
  return std::make_unique<Lines>();
}

}  // namespace cli
