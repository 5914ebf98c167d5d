#pragma once

#include "model/Clip.h"

namespace recorder {

// Where an output time lands: the clip that plays then, and the source
// time inside that clip's file.
struct ClipTime {
    Clip clip;
    double time = 0;

    bool operator==(const ClipTime&) const = default;
};

} // namespace recorder
