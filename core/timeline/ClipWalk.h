#pragma once

#include "model/Clip.h"

#include <cstddef>
#include <vector>

namespace recorder {

// Visits clips in playing order with the output time where each starts and
// where the next one starts. `visit(index, start, next)` returns true to stop.
template <class Visit>
void walkClips(const std::vector<Clip>& clips, double screenStart, Visit visit) {
    double start = screenStart;
    for (std::size_t i = 0; i < clips.size(); ++i) {
        double next = start + clips[i].outputDuration();
        if (visit(i, start, next)) return;
        start = next;
    }
}

} // namespace recorder
