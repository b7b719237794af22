// 32-bit arithmetic that wraps, for numbers that a file or a caller chooses. It must stay free of
// undefined behaviour for every input; what a wrapped result means is for its user to decide.
#pragma once

#include <cstdint>

namespace bmp {

constexpr int32_t WrapAdd(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

constexpr int32_t WrapSubtract(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

constexpr int32_t WrapMultiply(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

/// The absolute value, except that INT32_MIN stays what it is.
constexpr int32_t WrapAbsolute(int32_t a) {
  return a < 0 ? WrapSubtract(0, a) : a;
}

static_assert(WrapAbsolute(-3) == 3 && WrapAbsolute(INT32_MIN) == INT32_MIN);
static_assert(WrapAdd(INT32_MAX, 1) == INT32_MIN);

}  // namespace bmp
