#pragma once

#include "compose/SourceImage.h"
#include "model/ShapeSpec.h"

#include <cstdint>
#include <map>
#include <string>

namespace recorder {

// Shape rasters by what they look like, so a still shape is drawn once and
// a draw animation at most 100 times. Emptied whole when it grows past its
// bound.
class ShapeCache {
public:
    // The raster of `spec` in a box of `width` by `height` pixels on a canvas
    // `canvasHeight` high, drawn `progress` of the way on. Null when the
    // shape is too large to draw.
    SourceImage shape(const ShapeSpec& spec, int width, int height, double canvasHeight, double progress);

    // The hash of the shape, "|", width "x" height, "|", canvas height, "|", progress.
    static std::string key(const ShapeSpec& spec, int width, int height, double canvasHeight, double progress);
    // Stable from run to run, unlike std::hash.
    static std::uint64_t hash(const ShapeSpec& spec);

    std::size_t size() const { return images_.size(); }

    static constexpr std::size_t bound = 240;

private:
    std::map<std::string, SourceImage> images_;
};

} // namespace recorder
