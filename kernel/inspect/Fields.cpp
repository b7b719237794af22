// Decodes fields by their tables.
#include "inspect/Fields.h"

#include <algorithm>
#include <string_view>

#include "inspect/FieldTables.h"
#include "inspect/Meanings.h"

namespace vxkrn {
namespace {

constexpr uint32_t kLongest = bmp::kV5HeaderSize;  // of the parts that have fields

bool IsBigEndian(const vx_part& part) noexcept {
  return part.kind == VX_PART_PNG_CHUNK;
}

uint32_t Load(std::span<const uint8_t> bytes, bool isBigEndian) noexcept {
  uint32_t value = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    value = value << 8 | bytes[isBigEndian ? i : bytes.size() - 1 - i];
  }
  return value;
}

void CopyWords(const Text& words, vx_field* field) noexcept {
  std::string_view(words.CString()).copy(field->meaning, sizeof field->meaning - 1);
}

/// The characters as they stand there; those that no terminal shows as dots.
void CopyCharacters(std::span<const uint8_t> bytes, vx_field* field) noexcept {
  std::transform(bytes.begin(), bytes.end(), field->meaning,
                 [](uint8_t byte) { return byte >= ' ' && byte <= '~' ? static_cast<char>(byte) : '.'; });
}

vx_field Decode(const FieldRule& rule, const PartView& view) noexcept {
  const std::span<const uint8_t> bytes = view.bytes.subspan(rule.at, rule.size);
  const uint32_t word = Load(bytes, IsBigEndian(view.part));
  vx_field field = {rule.name, view.part.offset + rule.at, rule.size, rule.form, {}, word, ""};
  std::copy(bytes.begin(), bytes.end(), field.bytes);
  if (rule.isSigned) field.value = static_cast<int32_t>(word);
  if (rule.form == VX_FIELD_TEXT) {
    CopyCharacters(bytes, &field);
  } else {
    Text words;
    Explain(rule, field.value, view, words);
    CopyWords(words, &field);
  }
  return field;
}

}  // namespace

int ReadFields(const vx_source& source, const vx_part& part, vx_field* fields) noexcept {
  uint8_t bytes[kLongest];
  const auto wanted = static_cast<uint32_t>(std::min<uint64_t>(part.length, kLongest));
  const std::span<const FieldRule> rules = FieldsOf(part);
  const PartView view = {part, {bytes, rules.empty() ? 0 : source.Peek(bytes, wanted, part.offset)}};
  int count = 0;
  for (const FieldRule& rule : rules) {
    const bool isThere = std::size_t{rule.at} + rule.size <= view.bytes.size();
    if (isThere) fields[count++] = Decode(rule, view);
  }
  return count;
}

const vx_field* FieldSet::Find(std::string_view name) const noexcept {
  const auto* const end = fields_.data() + count_;
  const auto* const field =
      std::find_if(fields_.data(), end, [name](const vx_field& each) { return name == each.name; });
  return field == end ? nullptr : field;
}

}  // namespace vxkrn
