#include "BackgroundDesign.h"

#include "OkLab.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double pi = 3.14159265358979323846;

std::uint64_t splitmix(std::uint64_t x) {
    x += 0x9E3779B97F4A7C15ull;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
    return x ^ (x >> 31);
}

// Triangular noise of ±1 step: it breaks up the 8-bit steps of a slow
// gradient without a visible grain.
double triangularNoise(std::uint64_t seed, std::uint64_t index) {
    std::uint64_t bits = splitmix(seed ^ splitmix(index));
    double first = double(bits & 0xFFFFFFFFu) / 4294967296.0;
    double second = double(bits >> 32) / 4294967296.0;
    return first + second - 1;
}

double smoothstep(double edge0, double edge1, double x) {
    double t = std::clamp((x - edge0) / (edge1 - edge0), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

// Height of a wave across the picture, x from 0 to 1: two sines so that
// crests differ from one another.
double waveAt(double x, double y, double amplitude, double waves, double phase) {
    return y + amplitude * std::sin(2 * pi * waves * x + phase) +
           0.35 * amplitude * std::sin(2 * pi * waves * 2.3 * x + phase * 1.7);
}

struct Prepared {
    OkLab base;
    std::vector<OkLab> glows, ribbons, sheets, discs;
};

Prepared prepare(const BackgroundDesign& design) {
    Prepared p{hexColour(design.base), {}, {}, {}, {}};
    for (const auto& g : design.glows) p.glows.push_back(hexColour(g.colour));
    for (const auto& r : design.ribbons) p.ribbons.push_back(hexColour(r.colour));
    for (const auto& s : design.sheets) p.sheets.push_back(hexColour(s.colour));
    for (const auto& d : design.discs) p.discs.push_back(hexColour(d.colour));
    return p;
}

class Field {
public:
    Field(const BackgroundDesign& design, double aspect) : design_(design), colours_(prepare(design)), aspect_(aspect) {}

    // u runs 0 to aspect, v 0 to 1.
    OkLab at(double u, double v) const {
        double wu = u + design_.warp * std::sin(v * 2.3 * pi + 1.1) + 0.5 * design_.warp * std::sin(v * 5.1 * pi + 0.3);
        double wv = v + design_.warp * std::sin(u * 1.7 * pi + 0.4) + 0.5 * design_.warp * std::sin(u * 4.3 * pi + 2.0);
        OkLab colour = mesh(wu, wv);
        colour = withDiscs(colour, u, v);
        colour = withSheets(colour, wu, wv);
        colour = withRibbons(colour, wu, wv);
        return withVignette(colour, u, v);
    }

private:
    OkLab mesh(double u, double v) const {
        double weightSum = 0.08;
        OkLab sum{colours_.base.L * weightSum, colours_.base.a * weightSum, colours_.base.b * weightSum};
        for (std::size_t i = 0; i < design_.glows.size(); ++i) {
            const Glow& g = design_.glows[i];
            double du = u - g.x * aspect_, dv = v - g.y;
            double w = g.strength * std::exp(-(du * du + dv * dv) / (g.radius * g.radius));
            sum.L += colours_.glows[i].L * w;
            sum.a += colours_.glows[i].a * w;
            sum.b += colours_.glows[i].b * w;
            weightSum += w;
        }
        return {sum.L / weightSum, sum.a / weightSum, sum.b / weightSum};
    }

    OkLab withRibbons(OkLab colour, double u, double v) const {
        for (std::size_t i = 0; i < design_.ribbons.size(); ++i) {
            const Ribbon& r = design_.ribbons[i];
            double d = (v - waveAt(u / aspect_, r.y, r.amplitude, r.waves, r.phase)) / r.thickness;
            colour = mix(colour, colours_.ribbons[i], r.strength * std::exp(-d * d));
        }
        return colour;
    }

    OkLab withSheets(OkLab colour, double u, double v) const {
        for (std::size_t i = 0; i < design_.sheets.size(); ++i) {
            const Sheet& s = design_.sheets[i];
            double edge = waveAt(u / aspect_, s.y, s.amplitude, s.waves, s.phase);
            double below = smoothstep(-s.softness, s.softness, v - edge);
            colour = mix(colour, colours_.sheets[i], s.strength * below);
        }
        return colour;
    }

    OkLab withDiscs(OkLab colour, double u, double v) const {
        for (std::size_t i = 0; i < design_.discs.size(); ++i) {
            const Disc& disc = design_.discs[i];
            double d = std::hypot(u - disc.x * aspect_, v - disc.y);
            double inside = 1 - smoothstep(disc.radius - disc.softness, disc.radius + disc.softness, d);
            colour = mix(colour, colours_.discs[i], disc.strength * inside);
        }
        return colour;
    }

    OkLab withVignette(OkLab colour, double u, double v) const {
        double dx = u / aspect_ - 0.5, dy = v - 0.5;
        colour.L *= 1 - design_.vignette * (dx * dx + dy * dy) * 2;
        return colour;
    }

    const BackgroundDesign& design_;
    Prepared colours_;
    double aspect_;
};

int toByte(double linear, double noise) {
    return std::clamp(int(std::lround(linearToSrgb(linear) * 255 + noise)), 0, 255);
}

} // namespace

QImage BackgroundDesign::render(int width, int height) const {
    QImage image(width, height, QImage::Format_RGB32);
    Field field(*this, double(width) / height);
    for (int y = 0; y < height; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        double v = (y + 0.5) / height;
        for (int x = 0; x < width; ++x) {
            LinearRGB c = toLinearRGB(field.at((x + 0.5) / height, v));
            // One noise value for all three channels: grain in brightness
            // only, which the JPEG's subsampled colour planes don't smear.
            double noise = triangularNoise(seed, std::uint64_t(y) * width + x);
            line[x] = qRgb(toByte(c.r, noise), toByte(c.g, noise), toByte(c.b, noise));
        }
    }
    return image;
}
