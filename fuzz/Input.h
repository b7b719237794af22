// The bytes of one fuzzing run: a few that choose what is done, and the file that it is done to. Choices of 0
// are the ordinary ones, so that a sample behind nothing but zeros is loaded or edited as users would.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vx/image.hpp>

namespace fuzz {

/// Bytes in front of the file.
constexpr std::size_t kChoices = 24;

class Input {
 public:
  Input(const uint8_t* bytes, std::size_t size) noexcept
      : choices_(bytes, std::min(size, kChoices)), file_(bytes + choices_.size(), bytes + size) {}

  /// The next byte; 0 behind the last.
  uint8_t Byte() noexcept {
    if (choices_.empty()) return 0;
    const uint8_t byte = choices_.front();
    choices_ = choices_.subspan(1);
    return byte;
  }
  /// A number from 0 to `count` - 1.
  int Choice(int count) noexcept { return Byte() % count; }
  /// A page from 1 to `most`, or 0, which no file has.
  int Page(int most) noexcept { return (1 + Choice(most + 1)) % (most + 1); }
  [[nodiscard]] std::span<const uint8_t> File() const noexcept { return file_; }

 private:
  std::span<const uint8_t> choices_;
  std::span<const uint8_t> file_;
};

/// Bytes of pictures that a run may have: what takes longer than reading tells nothing new.
constexpr uint64_t kMemoryLimit = uint64_t{32} << 20;

/// Whether the last run went all the way: nothing that it tried was refused. Set by the targets, for whoever
/// looks for seeds.
inline bool wentAllTheWay = false;

/// Ends the process, as a crash would, where what must hold does not.
inline void Require(bool holds) {
  if (!holds) __builtin_trap();
}

/// Has a target take an input. Most bytes make no sense to it.
template <class Target>
int Run(const uint8_t* bytes, std::size_t size, uint64_t memoryLimit, Target target) {
  vx_set_memory_limit(memoryLimit);
  wentAllTheWay = true;
  try {
    Input input(bytes, size);
    target(input);
  } catch (const vx::Error&) {
    wentAllTheWay = false;
  }
  Require(vx_memory_in_use() == 0);
  return 0;
}

}  // namespace fuzz
