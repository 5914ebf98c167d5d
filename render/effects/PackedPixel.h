#pragma once

#include <cstdint>

// Arithmetic on a premultiplied 32-bit pixel as one word: the four channels
// ride in two 0x00FF00FF lanes, so one multiply weights two channels.
namespace recorder::PackedPixel {

// x·(256 − w) + y·w, all in 1/256 steps; w in 0..256.
inline std::uint32_t mix(std::uint32_t x, std::uint32_t y, std::uint32_t w) {
    std::uint32_t a = 256 - w;
    std::uint32_t rb = ((x & 0xFF00FF) * a + (y & 0xFF00FF) * w) >> 8;
    std::uint32_t ag = ((x >> 8) & 0xFF00FF) * a + ((y >> 8) & 0xFF00FF) * w;
    return (rb & 0xFF00FF) | (ag & 0xFF00FF00);
}

// Every channel times a/255, rounded.
inline std::uint32_t multiply(std::uint32_t x, std::uint32_t a) {
    std::uint32_t rb = (x & 0xFF00FF) * a;
    rb = ((rb + ((rb >> 8) & 0xFF00FF) + 0x800080) >> 8) & 0xFF00FF;
    std::uint32_t ag = ((x >> 8) & 0xFF00FF) * a;
    ag = (ag + ((ag >> 8) & 0xFF00FF) + 0x800080) & 0xFF00FF00;
    return rb | ag;
}

// A premultiplied pixel over another.
inline std::uint32_t over(std::uint32_t source, std::uint32_t destination) {
    std::uint32_t alpha = source >> 24;
    if (alpha == 255) return source;
    return source + multiply(destination, 255 - alpha);
}

// The rounded mean of four pixels.
inline std::uint32_t mean4(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
    std::uint32_t rb = (a & 0xFF00FF) + (b & 0xFF00FF) + (c & 0xFF00FF) + (d & 0xFF00FF) + 0x20002;
    std::uint32_t ag = ((a >> 8) & 0xFF00FF) + ((b >> 8) & 0xFF00FF) + ((c >> 8) & 0xFF00FF) + ((d >> 8) & 0xFF00FF) +
                       0x20002;
    return ((rb >> 2) & 0xFF00FF) | ((ag << 6) & 0xFF00FF00);
}

} // namespace recorder::PackedPixel
