// Two properties of machines that decide more than loops do: what a short copy costs whose length is not
// known before, and what memory costs that a process touches for the first time. "Ours" is the dear way here.
#include <sys/mman.h>

#include <cstring>
#include <random>

#include "rows/Rows.h"

namespace bench {
namespace {

struct ShortCopies {
  Bytes from;
  Bytes to;
  Bytes lengths;
  size_t pixels = 0;
};

std::shared_ptr<ShortCopies> MakeShortCopies() {
  auto copies = std::make_shared<ShortCopies>();
  std::mt19937 random(5);
  for (int i = 0; i < 1 << 16; ++i) {
    copies->lengths.push_back(static_cast<uint8_t>(1 + random() % 31));
    copies->pixels += copies->lengths.back();
  }
  copies->from.resize(copies->pixels + 32);
  copies->to.resize(copies->pixels + 32);
  return copies;
}

/// Whatever `copy` makes of each length, the next copy begins where this one was to end.
template <class Copy>
std::function<bool()> OnAll(const std::shared_ptr<ShortCopies>& copies, Copy copy) {
  return [=] {
    size_t at = 0;
    for (const size_t length : copies->lengths) {
      copy(copies->to.data() + at, copies->from.data() + at, length);
      at += length;
    }
    Use(copies->to.data());
    return true;
  };
}

Row MakeShortCopyRow() {
  const auto copies = MakeShortCopies();
  const auto asked = [](uint8_t* to, const uint8_t* from, size_t length) { std::memcpy(to, from, length); };
  const auto blind = [](uint8_t* to, const uint8_t* from, size_t length) {
    std::memcpy(to, from, 16);
    if (length > 16) std::memcpy(to + 16, from + 16, 16);
  };
  return {"",
          "byte",
          static_cast<double>(copies->pixels),
          0,
          0,
          {{Kind::Bound, "16 or 32 bytes, too many", OnAll(copies, blind)},
           {Kind::Ours, "memcpy of 1 to 31 bytes", OnAll(copies, asked)}}};
}

Row MakeFreshMemoryRow(const Options& options) {
  const auto size = static_cast<size_t>(options.side) * static_cast<size_t>(options.side);
  const auto from = std::make_shared<Bytes>(size, uint8_t{1});
  const auto warm = std::make_shared<Bytes>(size);
  const auto copyToFresh = [=] {
    void* const fresh = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (fresh == MAP_FAILED) return false;
    std::memcpy(fresh, from->data(), size);
    Use(fresh);
    return munmap(fresh, size) == 0;
  };
  const auto copyToWarm = [=] {
    std::memcpy(warm->data(), from->data(), size);
    Use(warm->data());
    return true;
  };
  return {"",
          "byte",
          static_cast<double>(size),
          0,
          0,
          {{Kind::Bound, "copy to memory used before", copyToWarm},
           {Kind::Ours, "copy to fresh memory", copyToFresh}}};
}

}  // namespace

void AddMachineRows(std::vector<RowMaker>& rows) {
  rows.push_back({"machine: short copies", [](const Options&) { return MakeShortCopyRow(); }});
  rows.push_back({"machine: fresh memory", MakeFreshMemoryRow});
}

}  // namespace bench
