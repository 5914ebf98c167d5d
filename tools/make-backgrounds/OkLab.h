#pragma once

#include <cmath>

// Colours are mixed in the OKLab space: blends between two hues stay bright
// and even instead of going muddy through grey as sRGB blends do.
struct OkLab {
    double L = 0;
    double a = 0;
    double b = 0;
};

struct LinearRGB {
    double r = 0;
    double g = 0;
    double b = 0;
};

inline double srgbToLinear(double x) {
    return x <= 0.04045 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4);
}

inline double linearToSrgb(double x) {
    if (x <= 0) return 0;
    if (x >= 1) return 1;
    return x <= 0.0031308 ? 12.92 * x : 1.055 * std::pow(x, 1 / 2.4) - 0.055;
}

inline OkLab toOkLab(LinearRGB c) {
    double l = std::cbrt(0.4122214708 * c.r + 0.5363325363 * c.g + 0.0514459929 * c.b);
    double m = std::cbrt(0.2119034982 * c.r + 0.6806995451 * c.g + 0.1073969566 * c.b);
    double s = std::cbrt(0.0883024619 * c.r + 0.2817188376 * c.g + 0.6299787005 * c.b);
    return {0.2104542553 * l + 0.7936177850 * m - 0.0040720468 * s,
            1.9779984951 * l - 2.4285922050 * m + 0.4505937099 * s,
            0.0259040371 * l + 0.7827717662 * m - 0.8086757660 * s};
}

inline LinearRGB toLinearRGB(OkLab c) {
    double l = c.L + 0.3963377774 * c.a + 0.2158037573 * c.b;
    double m = c.L - 0.1055613458 * c.a - 0.0638541728 * c.b;
    double s = c.L - 0.0894841775 * c.a - 1.2914855480 * c.b;
    l = l * l * l;
    m = m * m * m;
    s = s * s * s;
    return {4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s,
            -1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s,
            -0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s};
}

// "#RRGGBB" to OKLab.
inline OkLab hexColour(const char* text) {
    auto digit = [](char c) { return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10; };
    auto channel = [&](int i) { return srgbToLinear((digit(text[1 + 2 * i]) * 16 + digit(text[2 + 2 * i])) / 255.0); };
    return toOkLab({channel(0), channel(1), channel(2)});
}

inline OkLab mix(OkLab from, OkLab to, double t) {
    return {from.L + (to.L - from.L) * t, from.a + (to.a - from.a) * t, from.b + (to.b - from.b) * t};
}
