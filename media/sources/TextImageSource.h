#pragma once

#include "sources/FrameSource.h"

#include <string>

namespace recorder {

// The raster of a text item: made by the renderer, held here with the key it
// was made for, so the owner can tell when the text or its look changed.
class TextImageSource : public FrameSource {
public:
    std::optional<FrameImage> frame(double) override {
        if (image.isNull()) return std::nullopt;
        return image;
    }

    FrameImage image;
    std::string key;
};

} // namespace recorder
