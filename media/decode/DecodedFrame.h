#pragma once

#include <memory>

struct AVFrame;

namespace recorder {

// One frame as the decoder gave it, before conversion: holding it costs a
// reference, not a picture, so a decoder can step past frames cheaply.
struct DecodedFrame {
    std::shared_ptr<AVFrame> frame;
    // Presentation time and length in seconds of the file's own timeline.
    double time = 0;
    double duration = 0;
};

} // namespace recorder
