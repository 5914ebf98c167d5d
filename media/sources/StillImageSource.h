#pragma once

#include "sources/FrameSource.h"

#include <filesystem>

namespace recorder {

// A picture file: the same image at every time.
class StillImageSource : public FrameSource {
public:
    explicit StillImageSource(FrameImage image) : image(std::move(image)) {}
    // Throws MediaError when the file holds no readable picture.
    explicit StillImageSource(const std::filesystem::path& file);

    std::optional<FrameImage> frame(double) override { return image; }

    FrameImage image;
};

} // namespace recorder
