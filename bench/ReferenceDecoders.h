// The loops that the filter's decoders are measured against: straight over memory, a byte at a time, no
// buffer to refill and no file behind it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace bench {

/// Takes one finished row, as a row callback would.
using RowSink = void (*)(const uint8_t* row, int stride);

void DecodeRle8(const std::vector<uint8_t>& data, int stride, int rows, RowSink sink);
void DecodeRle4(const std::vector<uint8_t>& data, int stride, int rows, RowSink sink);
void Convert565(const std::vector<uint8_t>& data, int stride, int rows, RowSink sink);
void CopyRows(const std::vector<uint8_t>& data, int stride, int rows, RowSink sink);

}  // namespace bench
