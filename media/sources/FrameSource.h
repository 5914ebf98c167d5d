#pragma once

#include "frames/FrameImage.h"

#include <optional>

namespace recorder {

// Which picture an asset shows at a time of its own, in seconds. None when
// it has nothing to show; the frame is then drawn without that layer.
class FrameSource {
public:
    virtual ~FrameSource() = default;
    virtual std::optional<FrameImage> frame(double at) = 0;
};

} // namespace recorder
