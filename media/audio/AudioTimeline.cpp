#include "audio/AudioTimeline.h"

#include "audio/AudioFileReader.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace recorder {

namespace {

// Soft-knee clipper: samples up to the knee pass untouched, so ordinary
// levels stay bit-exact; above it tanh bends the excess smoothly towards
// full scale instead of cutting it flat. Stateless, so seeking can't leave
// a gain envelope behind.
constexpr float knee = 0.9f;

float softLimit(float x) {
    float magnitude = std::fabs(x);
    if (magnitude <= knee) return x;
    return std::copysign(knee + (1 - knee) * std::tanh((magnitude - knee) / (1 - knee)), x);
}

double speedOf(const TrackSpan& span) { return span.outputDuration > 0 ? span.fileDuration / span.outputDuration : 1; }

// The volume at `time` on a curve of linear ramps, flat beyond its ends.
double volumeAt(const std::vector<VolumePoint>& points, double time, std::size_t& hint) {
    if (points.empty()) return 1;
    if (time <= points.front().time) return points.front().volume;
    if (hint >= points.size()) hint = 0;
    if (points[hint].time > time) hint = 0;
    while (hint + 1 < points.size() && points[hint + 1].time <= time) ++hint;
    if (hint + 1 == points.size()) return points.back().volume;
    const VolumePoint& a = points[hint];
    const VolumePoint& b = points[hint + 1];
    return a.volume + (b.volume - a.volume) * (time - a.time) / (b.time - a.time);
}

} // namespace

struct AudioTimeline::Playhead {
    std::unique_ptr<AudioFileReader> reader;
    bool failed = false;
    std::size_t span = 0;
    std::int64_t nextFrame = -1; // the output frame the reader delivers next; -1 unplaced
    bool fileEnded = false;
};

AudioTimeline::AudioTimeline(std::vector<AudioTrack> tracks, AudioLog log)
    : tracks_(std::move(tracks)), playheads_(tracks_.size()), log_(std::move(log)) {}

AudioTimeline::~AudioTimeline() = default;

std::int64_t AudioTimeline::frameAt(double seconds) { return std::llround(seconds * sampleRate); }

void AudioTimeline::render(std::int64_t startFrame, float* out, int frames) {
    std::memset(out, 0, std::size_t(frames) * channels * sizeof(float));
    for (std::size_t i = 0; i < tracks_.size(); ++i) renderTrack(i, startFrame, out, frames);
    for (std::size_t i = 0; i < std::size_t(frames) * channels; ++i) out[i] = softLimit(out[i]);
}

void AudioTimeline::renderTrack(std::size_t index, std::int64_t startFrame, float* out, int frames) {
    const AudioTrack& track = tracks_[index];
    Playhead& playhead = playheads_[index];
    std::int64_t endFrame = startFrame + frames;
    for (std::size_t s = 0; s < track.spans.size(); ++s) {
        const TrackSpan& span = track.spans[s];
        std::int64_t spanStart = frameAt(span.outputLead);
        std::int64_t from = std::max(startFrame, spanStart);
        std::int64_t to = std::min(endFrame, frameAt(span.outputLead + span.outputDuration));
        if (from >= to) continue;
        if (!ensureReader(index)) return;
        if (playhead.span != s || playhead.nextFrame != from) moveTo(playhead, s, from, track);
        int wanted = int(to - from);
        if (scratch_.size() < std::size_t(wanted) * channels) scratch_.resize(std::size_t(wanted) * channels);
        int got = playhead.fileEnded ? 0 : playhead.reader->read(scratch_.data(), wanted);
        // A file shorter than it claims goes silent; the rest of the span is kept.
        if (got < wanted) playhead.fileEnded = true;
        addWithGain(track, from, got, out + (from - startFrame) * channels);
        playhead.nextFrame = to;
    }
}

bool AudioTimeline::ensureReader(std::size_t index) {
    Playhead& playhead = playheads_[index];
    if (playhead.reader) return true;
    if (playhead.failed) return false;
    try {
        playhead.reader = std::make_unique<AudioFileReader>(tracks_[index].file, AudioFormat{sampleRate, channels});
    } catch (const AudioReadError& error) {
        playhead.failed = true;
        if (log_) log_("audio: left " + tracks_[index].name + " out of the mix: " +
                       tracks_[index].file.filename().string() + " can't be read (" + error.what() + ")");
        return false;
    }
    return true;
}

void AudioTimeline::moveTo(Playhead& playhead, std::size_t span, std::int64_t frame, const AudioTrack& track) {
    const TrackSpan& next = track.spans[span];
    double speed = speedOf(next);
    // A seam between spans that continue the same stretch of the file at the
    // same speed (a split clip) plays straight through, without a seek.
    if (playhead.nextFrame == frame && playhead.span + 1 == span && !playhead.fileEnded) {
        const TrackSpan& previous = track.spans[playhead.span];
        bool continuous = std::fabs(previous.fileStart + previous.fileDuration - next.fileStart) < 0.5 / sampleRate;
        if (continuous && std::fabs(speedOf(previous) - speed) < 1e-9 && frame == frameAt(next.outputLead)) {
            playhead.span = span;
            return;
        }
    }
    double into = double(frame - frameAt(next.outputLead)) / sampleRate;
    playhead.reader->seek(next.fileStart + into * speed, speed);
    playhead.span = span;
    playhead.fileEnded = false;
}

void AudioTimeline::addWithGain(const AudioTrack& track, std::int64_t firstFrame, int frames, float* out) {
    std::size_t hint = 0;
    bool constant = track.volume.size() <= 1;
    double gain = constant ? volumeAt(track.volume, 0, hint) : 0;
    for (int i = 0; i < frames; ++i) {
        if (!constant) gain = volumeAt(track.volume, double(firstFrame + i) / sampleRate, hint);
        auto g = float(gain);
        out[2 * i] += g * scratch_[std::size_t(2 * i)];
        out[2 * i + 1] += g * scratch_[std::size_t(2 * i + 1)];
    }
}

} // namespace recorder
