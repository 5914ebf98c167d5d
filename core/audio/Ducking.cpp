#include "audio/Ducking.h"

#include "timeline/ClipWalk.h"

#include <algorithm>

namespace recorder::Ducking {

double factor(double time, const std::vector<SpeechRange>& ranges, double amount) {
    double gain = 1;
    for (const auto& range : ranges) {
        double a = range.start - lead, e = range.end;
        if (!(a - attack < time && time < e + release)) continue;
        double g;
        if (time < a)
            g = 1 + (1 - amount) * (time - (a - attack)) / -attack;
        else if (time <= e)
            g = amount;
        else
            g = amount + (1 - amount) * (time - e) / release;
        gain = std::min(gain, g);
    }
    return gain;
}

namespace {

std::vector<double> knotTimes(const MediaItem& item, const std::vector<SpeechRange>& ranges) {
    double s = item.start, e = item.end;
    std::vector<double> times{s, e};
    if (item.fadeIn > 0) times.push_back(std::min(s + item.fadeIn, e));
    if (item.fadeOut > 0) times.push_back(std::max(e - item.fadeOut, s));
    for (const auto& range : ranges) {
        double a = range.start - lead;
        for (double t : {a - attack, a, range.end, range.end + release})
            if (s < t && t < e) times.push_back(t);
    }
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
    return times;
}

} // namespace

std::vector<VolumePoint> points(const MediaItem& item, const std::vector<SpeechRange>& ranges, double amount) {
    amount = std::clamp(amount, 0.0, 1.0);
    std::vector<VolumePoint> out;
    for (double t : knotTimes(item, ranges)) {
        double volume = item.muted ? 0 : item.volume;
        if (item.fadeIn > 0) volume *= std::clamp((t - item.start) / item.fadeIn, 0.0, 1.0);
        if (item.fadeOut > 0) volume *= std::clamp((item.end - t) / item.fadeOut, 0.0, 1.0);
        if (!item.muted) volume *= factor(t, ranges, amount);
        out.push_back({t, volume});
    }
    return out;
}

std::vector<SpeechRange> onOutputTimeline(const std::vector<SpeechRange>& fileRanges, const Project& project,
                                          double startOffset) {
    std::vector<SpeechRange> out;
    walkClips(project.clips, project.screenStart, [&](std::size_t i, double clipStart, double) {
        const Clip& clip = project.clips[i];
        for (const auto& range : fileRanges) {
            double from = std::max(range.start + startOffset, clip.sourceStart);
            double to = std::min(range.end + startOffset, clip.sourceEnd);
            if (to > from)
                out.push_back({clipStart + (from - clip.sourceStart) / clip.speed,
                               clipStart + (to - clip.sourceStart) / clip.speed});
        }
        return false;
    });
    std::sort(out.begin(), out.end(), [](const SpeechRange& a, const SpeechRange& b) { return a.start < b.start; });
    // Clips may replay a stretch: overlapping pieces become one range.
    std::vector<SpeechRange> merged;
    for (const auto& range : out) {
        if (!merged.empty() && range.start <= merged.back().end)
            merged.back().end = std::max(merged.back().end, range.end);
        else
            merged.push_back(range);
    }
    return merged;
}

} // namespace recorder::Ducking
