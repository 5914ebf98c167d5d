#pragma once

#include <cstdint>

// Row operations on premultiplied pixels taken as plain bytes, all four
// channels alike, written so the compiler turns them into vector code.
namespace recorder::ByteRows {

// out = (a·(256 − w) + b·w) / 256, w in 0..256.
inline void mix(const std::uint8_t* a, const std::uint8_t* b, unsigned w, std::uint8_t* out, int bytes) {
    const unsigned v = 256 - w;
    for (int i = 0; i < bytes; ++i) out[i] = std::uint8_t((a[i] * v + b[i] * w) >> 8);
}

// The mean of a and b, rounding up or down; blurs of many passes alternate
// the two so the picture doesn't drift darker or lighter.
inline void average(const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* out, int bytes, bool roundUp) {
    const unsigned r = roundUp ? 1 : 0;
    for (int i = 0; i < bytes; ++i) out[i] = std::uint8_t((a[i] + b[i] + r) >> 1);
}

} // namespace recorder::ByteRows
