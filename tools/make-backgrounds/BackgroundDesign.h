#pragma once

#include <QImage>

#include <cstdint>
#include <string>
#include <vector>

// Positions are fractions of the width (x) and height (y); sizes are
// fractions of the height, so a design keeps its shape at any resolution.

// A pool of colour: the mesh blends all glows by their Gaussian weights.
struct Glow {
    double x, y, radius, strength;
    const char* colour;
};

// A soft band along a wave across the picture, like light on water.
struct Ribbon {
    double y, amplitude, waves, phase, thickness, strength;
    const char* colour;
};

// Everything below a wave, with a soft edge: layered, they read as hills or
// swells seen from afar.
struct Sheet {
    double y, amplitude, waves, phase, softness, strength;
    const char* colour;
};

// A large disc with a soft rim.
struct Disc {
    double x, y, radius, softness, strength;
    const char* colour;
};

struct BackgroundDesign {
    std::string id;
    const char* base;
    std::vector<Glow> glows = {};
    std::vector<Ribbon> ribbons = {};
    std::vector<Sheet> sheets = {};
    std::vector<Disc> discs = {};
    double warp = 0.04;     // how far the field is bent, so pools don't look round
    double vignette = 0.0;  // darkening towards the corners
    std::uint64_t seed = 1; // of the grain that dithers away banding

    QImage render(int width, int height) const;
};
