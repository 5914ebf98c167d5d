#include "sources/VideoFrameSource.h"

#include "frames/BlackFrame.h"

#include <algorithm>
#include <cmath>

namespace recorder {

namespace {

// Frame times and asked times come through different roundings.
constexpr double timeSlack = 1e-6;
// Without an index, decoding forward beats a seek over this distance.
constexpr double forwardReach = 1.0;

} // namespace

VideoFrameSource::VideoFrameSource(const std::filesystem::path& file, bool skipsBlackFrames)
    : skipsBlackFrames(skipsBlackFrames), generator_(std::make_unique<VideoDecoder>(file)) {
    duration = generator_->duration();
    naturalWidth = generator_->width();
    naturalHeight = generator_->height();
    hasAudio = generator_->hasAudio();
}

std::optional<FrameImage> VideoFrameSource::frame(double at) {
    if (!std::isfinite(at)) return cache_ ? std::optional(cache_->second) : std::nullopt;
    if (cache_ && std::fabs(cache_->first - at) < 1.0 / 120) return cache_->second;
    double u = std::clamp(at, 0.0, std::max(duration - 0.001, 0.0));
    auto image = imageAt(u);
    if (!image) return cache_ ? std::optional(cache_->second) : std::nullopt;
    if (skipsBlackFrames && u >= 1.0 / 30 && BlackFrame::imageIsBlack(*image))
        image = earlierFrameThatIsNotBlack(u, std::move(*image));
    cache_ = {at, *image};
    return image;
}

// Up to 15 frames back at 1/30 s steps; the last one fetched stands if all are black.
std::optional<FrameImage> VideoFrameSource::earlierFrameThatIsNotBlack(double u, FrameImage black) {
    FrameImage fetched = std::move(black);
    for (int k = 1; k <= 15; ++k) {
        double earlier = u - k / 30.0;
        if (earlier < 0) break;
        auto image = imageAt(earlier);
        if (!image) break;
        fetched = std::move(*image);
        if (!BlackFrame::imageIsBlack(fetched)) break;
    }
    return fetched;
}

bool VideoFrameSource::canStepForwardTo(double u) const {
    if (!held_ || u + timeSlack < held_->time) return false;
    auto key = generator_->keyFrameAtOrBefore(u);
    if (key) return *key <= held_->time + timeSlack;
    return u - held_->time <= forwardReach;
}

std::optional<FrameImage> VideoFrameSource::imageAt(double u) {
    if (!canStepForwardTo(u)) {
        generator_->seek(u);
        held_.reset();
        ahead_.reset();
        atEnd_ = false;
    }
    for (;;) {
        if (!ahead_ && !atEnd_) {
            ahead_ = generator_->next();
            atEnd_ = !ahead_;
        }
        if (!ahead_ || ahead_->time > u + timeSlack) break;
        held_ = std::move(ahead_);
        ahead_.reset();
    }
    // Before the first frame's time the first frame is what shows.
    const auto& shown = held_ ? held_ : ahead_;
    if (!shown) return std::nullopt;
    FrameImage image = generator_->image(*shown);
    if (image.isNull()) return std::nullopt;
    return image;
}

} // namespace recorder
