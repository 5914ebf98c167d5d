#pragma once

#include "audio/AudioLog.h"
#include "audio/AudioTrack.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace recorder {

class AudioFileReader;

// Mixes tracks into 48 kHz stereo float, block by block from any output
// time: export reads it from 0 in order, playback seeks. Reading on from
// where the last block ended keeps the decoders running; anything else
// repositions them. Not shared between threads.
class AudioTimeline {
public:
    static constexpr int sampleRate = 48000;
    static constexpr int channels = 2;

    explicit AudioTimeline(std::vector<AudioTrack> tracks, AudioLog log = logToStandardError);
    ~AudioTimeline();
    AudioTimeline(const AudioTimeline&) = delete;
    AudioTimeline& operator=(const AudioTimeline&) = delete;

    const std::vector<AudioTrack>& tracks() const { return tracks_; }

    // Writes `frames` interleaved stereo frames, starting at output frame
    // `startFrame`, into `out`. Silence where nothing plays.
    void render(std::int64_t startFrame, float* out, int frames);

    static std::int64_t frameAt(double seconds);

private:
    struct Playhead;

    void renderTrack(std::size_t index, std::int64_t startFrame, float* out, int frames);
    bool ensureReader(std::size_t index);
    void moveTo(Playhead& playhead, std::size_t span, std::int64_t frame, const AudioTrack& track);
    void addWithGain(const AudioTrack& track, std::int64_t firstFrame, int frames, float* out);

    std::vector<AudioTrack> tracks_;
    std::vector<Playhead> playheads_;
    AudioLog log_;
    std::vector<float> scratch_;
};

} // namespace recorder
