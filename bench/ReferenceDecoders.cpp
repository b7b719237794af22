// Tight loops over well-formed data in memory: the least work that decodes it.
#include "ReferenceDecoders.h"

#include <cstring>

namespace bench {

void DecodeRle8(const std::vector<uint8_t>& data, int stride, int rows, RowSink sink) {
  std::vector<uint8_t> row(static_cast<size_t>(stride));
  const uint8_t* in = data.data();
  for (int r = 0; r < rows; ++r) {
    std::memset(row.data(), 0, row.size());
    size_t x = 0;
    for (;;) {
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

void DecodeRle4(const std::vector<uint8_t>& data, int stride, int rows, RowSink sink) {
  std::vector<uint8_t> row(static_cast<size_t>(stride));
  const uint8_t* in = data.data();
  const auto put = [&row](size_t x, unsigned nibble) {
    if (x / 2 < row.size()) row[x / 2] = static_cast<uint8_t>(x % 2 == 0 ? nibble << 4 : row[x / 2] | nibble);
  };
  for (int r = 0; r < rows; ++r) {
    std::memset(row.data(), 0, row.size());
    size_t x = 0;
    for (;;) {
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

void Convert565(const std::vector<uint8_t>& data, int stride, int rows, RowSink sink) {
  std::vector<uint8_t> row(static_cast<size_t>(stride));
  for (int r = 0; r < rows; ++r) {
    const uint8_t* in = data.data() + static_cast<size_t>(r) * row.size();
    for (size_t i = 0; i + 1 < row.size(); i += 2) {
      const unsigned v = in[i] | static_cast<unsigned>(in[i + 1]) << 8;
      const unsigned p = (v & 0x1FU) << 10 | (v & 0x3E0U) | (v & 0x7C00U) >> 10;
      row[i] = static_cast<uint8_t>(p);
      row[i + 1] = static_cast<uint8_t>(p >> 8);
    }
    sink(row.data(), stride);
  }
}

void CopyRows(const std::vector<uint8_t>& data, int stride, int rows, RowSink sink) {
  std::vector<uint8_t> row(static_cast<size_t>(stride));
  for (int r = 0; r < rows; ++r) {
    std::memcpy(row.data(), data.data() + static_cast<size_t>(r) * row.size(), row.size());
    sink(row.data(), stride);
  }
}

}  // namespace bench
