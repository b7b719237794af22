// Bytes of unknown number on their way into memory. Growing moves no bytes and touches none ahead of time,
// so that what is held is what was read.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <span>

namespace cli {

class Bytes {
 public:
  std::span<const uint8_t> All() const { return {data_.get(), size_}; }
  size_t Size() const { return size_; }

  /// @return room behind the bytes, of one byte and more, such that there are never more than `most` bytes.
  /// @param most above Size() @throws std::bad_alloc
  std::span<uint8_t> Room(size_t most) {
    if (size_ == capacity_) Grow(most);
    return {data_.get() + size_, std::min(capacity_, most) - size_};
  }
  /// Takes the first `count` bytes of the room as written.
  void Add(size_t count) { size_ += count; }

 private:
  struct Free {
    void operator()(uint8_t* bytes) const { std::free(bytes); }
  };

  void Grow(size_t most) {
    constexpr size_t kFirst = size_t{64} * 1024;
    const size_t wanted = std::min(std::max(kFirst, capacity_ * 2), most);
    auto* grown = static_cast<uint8_t*>(std::realloc(data_.get(), wanted));
    if (grown == nullptr) throw std::bad_alloc();
    static_cast<void>(data_.release());  // realloc has it
    data_.reset(grown);
    capacity_ = wanted;
  }

  std::unique_ptr<uint8_t, Free> data_;
  size_t size_ = 0;
  size_t capacity_ = 0;
};

}  // namespace cli
