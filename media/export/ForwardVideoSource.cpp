#include "export/ForwardVideoSource.h"

#include <algorithm>

namespace recorder {

namespace {

// Decoding forward beats a seek for gaps shorter than about a key-frame
// interval of a recording (two seconds).
constexpr double longestDecodedGap = 2.0;
// Frame times are exact multiples of the period; allow for rounding only.
constexpr double timeSlack = 1e-6;

} // namespace

ForwardVideoSource::ForwardVideoSource(std::filesystem::path file, bool skipsBlackFrames)
    : file_(std::move(file)), skipsBlackFrames_(skipsBlackFrames),
      reader_(std::make_unique<SequentialVideoReader>(file_, SequentialVideoReader::Options{0, false, skipsBlackFrames})) {}

std::optional<FrameImage> ForwardVideoSource::frame(double at) {
    at = std::max(at, 0.0);
    if (at < lastTime_ - timeSlack || at > lastTime_ + longestDecodedGap)
        reader_ = std::make_unique<SequentialVideoReader>(file_,
                                                          SequentialVideoReader::Options{at, false, skipsBlackFrames_});
    lastTime_ = at;
    return reader_->frame(at);
}

} // namespace recorder
