#include "audio/AudioSpans.h"

#include "timeline/ClipWalk.h"

#include <algorithm>

namespace recorder::AudioSpans {

std::vector<TrackSpan> ofRecording(const Project& project, double startOffset, double fileDuration) {
    std::vector<TrackSpan> spans;
    walkClips(project.clips, project.screenStart, [&](std::size_t i, double clipStart, double) {
        const Clip& clip = project.clips[i];
        double from = std::max(clip.sourceStart - startOffset, 0.0);
        double to = std::min(clip.sourceEnd - startOffset, fileDuration);
        if (to > from && clip.speed > 0) {
            double lead = clipStart + (from - (clip.sourceStart - startOffset)) / clip.speed;
            spans.push_back({from, to - from, lead, (to - from) / clip.speed});
        }
        return false;
    });
    return spans;
}

std::optional<TrackSpan> ofMediaItem(const MediaItem& item, double fileDuration) {
    if (!(item.speed > 0)) return std::nullopt;
    double span = std::max(item.end - item.start, 0.0);
    double available = std::max(fileDuration - item.sourceOffset, 0.0);
    double sourceLength = std::min(item.speed * span, available);
    if (sourceLength <= 0) return std::nullopt;
    return TrackSpan{item.sourceOffset, sourceLength, item.start, sourceLength / item.speed};
}

} // namespace recorder::AudioSpans
