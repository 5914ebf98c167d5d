#pragma once

#include "sources/FrameSource.h"

#include <filesystem>
#include <vector>

namespace recorder {

// A GIF or animated PNG, every frame decoded up front, playing in a loop.
class AnimatedImageSource : public FrameSource {
public:
    // Throws MediaError when the file holds no readable frame.
    explicit AnimatedImageSource(const std::filesystem::path& file);
    // `delays` in seconds as the file gives them; 0 where it gives none.
    AnimatedImageSource(std::vector<FrameImage> frames, const std::vector<double>& delays);

    // A delay that is missing or shorter than 0.02 s plays for 0.1 s, as
    // browsers have always shown such files.
    static double effectiveDelay(double delay);

    std::optional<FrameImage> frame(double at) override;

    std::vector<FrameImage> frames;
    // The start time of each frame.
    std::vector<double> times;
    double duration = 0;

private:
    void timeFrames(const std::vector<double>& delays);
};

} // namespace recorder
