#include "TightLoops.h"

#include <fcntl.h>
#include <png.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace bench {
namespace {

constexpr size_t kBufferSize = 1 << 16;

size_t ReadSome(int file, uint8_t* buffer, size_t size) {
  const ssize_t count = read(file, buffer, size);
  return count > 0 ? static_cast<size_t>(count) : 0;
}

void WriteAll(int file, const uint8_t* bytes, size_t size) {
  while (size > 0) {
    const ssize_t count = write(file, bytes, size);
    if (count <= 0) return;
    bytes += count;
    size -= static_cast<size_t>(count);
  }
}

}  // namespace

Feed::Feed(int file) : file_(file), buffer_(kBufferSize), end_(buffer_.data()), next_(end_) {
  Refill(end_);
}

const uint8_t* Feed::Refill(const uint8_t* at) {
  const auto left = static_cast<size_t>(end_ - at);
  std::memmove(buffer_.data(), at, left);
  end_ = buffer_.data() + left + ReadSome(file_, buffer_.data() + left, buffer_.size() - left);
  return next_ = buffer_.data();
}

const uint8_t* Feed::Take(size_t count) {
  if (static_cast<size_t>(end_ - next_) < count) Refill(next_);
  const uint8_t* taken = next_;
  next_ += count;
  return taken;
}

void DecodeRle8(int file, int stride, int rows, RowSink sink) {
  Bytes row(static_cast<size_t>(stride));
  Feed feed(file);
  const uint8_t* in = feed.Start();
  for (int r = 0; r < rows; ++r) {
    std::memset(row.data(), 0, row.size());
    size_t x = 0;
    for (;;) {
      in = feed.AtCode(in);
      const unsigned n = in[0];
      const uint8_t v = in[1];
      in += 2;
      if (n != 0) {
        for (unsigned i = 0; i < n && x < row.size(); ++i) row[x++] = v;
      } else if (v >= 3) {
        for (unsigned i = 0; i < v; ++i) {
          if (x < row.size()) row[x++] = in[i];
        }
        in += v + (v & 1U);
      } else {
        break;
      }
    }
    sink(row.data(), stride);
  }
}

void DecodeRle4(int file, int stride, int rows, RowSink sink) {
  Bytes row(static_cast<size_t>(stride));
  const auto put = [&row](size_t x, unsigned nibble) {
    if (x / 2 < row.size()) row[x / 2] = static_cast<uint8_t>(x % 2 == 0 ? nibble << 4 : row[x / 2] | nibble);
  };
  Feed feed(file);
  const uint8_t* in = feed.Start();
  for (int r = 0; r < rows; ++r) {
    std::memset(row.data(), 0, row.size());
    size_t x = 0;
    for (;;) {
      in = feed.AtCode(in);
      const unsigned n = in[0];
      const unsigned v = in[1];
      in += 2;
      if (n != 0) {
        for (unsigned i = 0; i < n; ++i) put(x++, i % 2 == 0 ? v >> 4 : v & 15U);
      } else if (v >= 3) {
        for (unsigned i = 0; i < v; ++i) put(x++, i % 2 == 0 ? in[i / 2] >> 4U : in[i / 2] & 15U);
        const unsigned bytes = (v + 1) / 2;
        in += bytes + (bytes & 1U);
      } else {
        break;
      }
    }
    sink(row.data(), stride);
  }
}

void SwapFields(int file, int stride, int rows, RowSink sink) {
  Bytes row(static_cast<size_t>(stride));
  Feed feed(file);
  for (int r = 0; r < rows; ++r) {
    const uint8_t* in = feed.Take(row.size());
    for (size_t i = 0; i + 1 < row.size(); i += 2) {
      const unsigned v = in[i] | static_cast<unsigned>(in[i + 1]) << 8;
      const unsigned p = (v & 0x1FU) << 10 | (v & 0x3E0U) | (v & 0x7C00U) >> 10;
      row[i] = static_cast<uint8_t>(p);
      row[i + 1] = static_cast<uint8_t>(p >> 8);
    }
    sink(row.data(), stride);
  }
}

void CopyRows(int file, int stride, int rows, RowSink sink) {
  Bytes row(static_cast<size_t>(stride));
  Feed feed(file);
  for (int r = 0; r < rows; ++r) {
    std::memcpy(row.data(), feed.Take(row.size()), row.size());
    sink(row.data(), stride);
  }
}

namespace {

void AppendLiterals(const Coding& coding, const uint8_t* bytes, size_t count, Bytes& out) {
  while (count > coding.mostSingles) {
    const size_t part = std::min(count, coding.longestLiteral);
    out.push_back(0);
    out.push_back(static_cast<uint8_t>(part * coding.pixelsPerByte));
    out.insert(out.end(), bytes, bytes + part);
    if (part % 2 != 0) out.push_back(0);
    bytes += part;
    count -= part;
  }
  for (; count > 0; --count) {
    out.push_back(static_cast<uint8_t>(coding.pixelsPerByte));
    out.push_back(*bytes++);
  }
}

}  // namespace

void AppendCodes(const Coding& coding, const uint8_t* row, size_t bytes, Bytes& out) {
  size_t literals = 0;
  for (size_t at = 0; at < bytes;) {
    size_t run = 1;
    while (at + run < bytes && row[at + run] == row[at]) ++run;
    if (run < coding.shortestRun) {
      literals += run;
      at += run;
      continue;
    }
    AppendLiterals(coding, row + at - literals, literals, out);
    literals = 0;
    for (size_t left = run; left > 0;) {
      const size_t part = std::min(left, coding.longestRun);
      out.push_back(static_cast<uint8_t>(part * coding.pixelsPerByte));
      out.push_back(row[at]);
      left -= part;
    }
    at += run;
  }
  AppendLiterals(coding, row + bytes - literals, literals, out);
  out.push_back(0);
  out.push_back(0);
}

// Without a word on it the compiler takes a processor of 2003, which has no such instruction.
#ifdef __x86_64__
__attribute__((target_clones("avx2", "ssse3", "default")))
#endif
void ShuffleToRgba(const uint8_t* bgr, size_t pixels, uint8_t* rgba) {
  using Vector = uint8_t __attribute__((vector_size(16)));
  size_t i = 0;
  for (; i + 6 <= pixels; i += 4) {  // 16 bytes are read for 12
    Vector in;
    std::memcpy(&in, bgr + i * 3, sizeof in);
    const Vector out =
        __builtin_shufflevector(in, Vector{} + 255, 2, 1, 0, 16, 5, 4, 3, 16, 8, 7, 6, 16, 11, 10, 9, 16);
    std::memcpy(rgba + i * 4, &out, sizeof out);
  }
  for (; i < pixels; ++i) {
    const uint8_t pixel[] = {bgr[i * 3 + 2], bgr[i * 3 + 1], bgr[i * 3], 255};
    std::memcpy(rgba + i * 4, pixel, sizeof pixel);
  }
}

void CopyAndWrite(const std::string& path, const uint8_t* bytes, size_t size) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
  Bytes buffer(kBufferSize);
  for (size_t at = 0; at < size; at += buffer.size()) {
    const size_t part = std::min(buffer.size(), size - at);
    std::memcpy(buffer.data(), bytes + at, part);
    WriteAll(file, buffer.data(), part);
  }
  close(file);
}

void CopyFile(const std::string& from, const std::string& to) {
  const int in = open(from.c_str(), O_RDONLY);
  const int out = open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
  Bytes buffer(kBufferSize);
  while (const size_t count = ReadSome(in, buffer.data(), buffer.size())) WriteAll(out, buffer.data(), count);
  close(in);
  close(out);
}

bool Peek(const std::string& path) {
  uint8_t head[4096];
  const int file = open(path.c_str(), O_RDONLY);
  const size_t count = file < 0 ? 0 : ReadSome(file, head, sizeof head);
  close(file);
  return count > 0;
}

void WritePng(const std::string& path, int width, int height, const std::function<const uint8_t*(int)>& row) {
  FILE* file = std::fopen(path.c_str(), "wb");
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file);
  png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8,
               PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  png_set_bgr(png);
  for (int y = 0; y < height; ++y) png_write_row(png, row(y));
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  std::fclose(file);
}

}  // namespace bench
