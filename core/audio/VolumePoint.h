#pragma once

namespace recorder {

// One knot of a volume curve; between knots the volume ramps linearly.
struct VolumePoint {
    double time = 0;
    double volume = 0;

    bool operator==(const VolumePoint&) const = default;
};

} // namespace recorder
