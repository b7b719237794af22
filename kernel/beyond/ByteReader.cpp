// The buffer of a byte reader. Large runs go past it.
#include "beyond/ByteReader.h"

#include <algorithm>
#include <cstring>

namespace vxkrn {

bool ByteReader::Fill() noexcept {
  if (buffer_ == nullptr) buffer_ = memory::MakeBytes(kBufferSize, {"kernel/ByteReader", __LINE__});
  if (buffer_ == nullptr) return false;
  const int64_t got = source_.ReadAt(buffer_.get(), kBufferSize, position_);
  used_ = 0;
  hasFailed_ = hasFailed_ || got < 0;
  fill_ = got > 0 && got <= kBufferSize ? static_cast<uint32_t>(got) : 0;
  position_ += fill_;
  return fill_ > 0;
}

std::size_t ByteReader::Read(uint8_t* bytes, std::size_t count) noexcept {
  std::size_t done = 0;
  while (done < count) {
    if (used_ == fill_ && count - done >= kBufferSize) {
      const auto want = static_cast<uint32_t>(std::min<std::size_t>(count - done, INT32_MAX));
      const int64_t got = source_.ReadAt(bytes + done, want, position_);
      hasFailed_ = hasFailed_ || got < 0;
      if (got <= 0 || got > want) return done;
      position_ += static_cast<uint64_t>(got);
      done += static_cast<std::size_t>(got);
      continue;
    }
    if (used_ == fill_ && !Fill()) return done;
    const std::size_t part = std::min<std::size_t>(count - done, fill_ - used_);
    std::memcpy(bytes + done, buffer_.get() + used_, part);
    used_ += static_cast<uint32_t>(part);
    done += part;
  }
  return done;
}

void ByteReader::Skip(uint64_t count) noexcept {
  const uint64_t buffered = std::min<uint64_t>(count, fill_ - used_);
  used_ += static_cast<uint32_t>(buffered);
  position_ += count - buffered;
}

}  // namespace vxkrn
