#include "sources/AnimatedImageSource.h"

#include "decode/MediaError.h"
#include "decode/VideoDecoder.h"

#include <algorithm>
#include <cmath>

namespace recorder {

namespace {

// The demuxers' own delay rules are switched off so the one rule here
// decides for both formats.
const std::map<std::string, std::string> rawDelays{{"min_delay", "0"}, {"default_fps", "0"}};

} // namespace

AnimatedImageSource::AnimatedImageSource(const std::filesystem::path& file) {
    VideoDecoder decoder(file, rawDelays);
    std::vector<double> delays;
    while (auto decoded = decoder.next()) {
        FrameImage image = decoder.image(*decoded);
        if (image.isNull()) continue;
        frames.push_back(std::move(image));
        delays.push_back(decoded->duration);
    }
    if (frames.empty()) throw MediaError("The animation " + file.filename().string() + " holds no frame that can be read.");
    timeFrames(delays);
}

AnimatedImageSource::AnimatedImageSource(std::vector<FrameImage> frames, const std::vector<double>& delays)
    : frames(std::move(frames)) {
    timeFrames(delays);
}

void AnimatedImageSource::timeFrames(const std::vector<double>& delays) {
    for (std::size_t i = 0; i < frames.size(); ++i) {
        times.push_back(duration);
        duration += effectiveDelay(i < delays.size() ? delays[i] : 0);
    }
}

double AnimatedImageSource::effectiveDelay(double delay) { return delay >= 0.02 ? delay : 0.1; }

std::optional<FrameImage> AnimatedImageSource::frame(double at) {
    if (frames.empty()) return std::nullopt;
    double t = std::isfinite(at) && duration > 0 ? std::fmod(at, duration) : 0;
    if (t < 0) t += duration;
    auto after = std::upper_bound(times.begin(), times.end(), t);
    std::size_t index = after == times.begin() ? 0 : std::size_t(after - times.begin()) - 1;
    return frames[index];
}

} // namespace recorder
