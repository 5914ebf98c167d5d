#pragma once

#include "decode/VideoDecoder.h"
#include "sources/FrameSource.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <utility>

namespace recorder {

// Random access into a video file, for the paused preview and for short
// media: the frame shown at a time, from the key frame before it, decoding
// forward. Asking again near the same time costs nothing, and asking a
// little later goes on from where decoding stopped.
class VideoFrameSource : public FrameSource {
public:
    // Throws MediaError when the file can't be opened.
    explicit VideoFrameSource(const std::filesystem::path& file, bool skipsBlackFrames = false);

    std::optional<FrameImage> frame(double at) override;

    double duration = 0;
    int naturalWidth = 0;
    int naturalHeight = 0;
    bool hasAudio = false;
    bool skipsBlackFrames = false;

private:
    // The frame shown at u, or none when the file gives nothing there.
    std::optional<FrameImage> imageAt(double u);
    bool canStepForwardTo(double u) const;
    std::optional<FrameImage> earlierFrameThatIsNotBlack(double u, FrameImage black);

    std::unique_ptr<VideoDecoder> generator_;
    std::optional<std::pair<double, FrameImage>> cache_;
    // Where decoding stands: the last frame at or before the last time asked,
    // and the first one after it, already decoded.
    std::optional<DecodedFrame> held_;
    std::optional<DecodedFrame> ahead_;
    bool atEnd_ = false;
};

} // namespace recorder
