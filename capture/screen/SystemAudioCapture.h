#pragma once

#include "sink/MediaSample.h"

#include <functional>
#include <memory>

namespace recorder {

// The sound the computer plays, as the screen capturer records it beside the
// picture into "system.m4a". Made by whoever knows the sound server (the
// PulseAudio monitor of the default output); without one, a recording asked
// for system sound goes on without it.
class SystemAudioCapture {
public:
    using SampleHandler = std::function<void(const MediaSample& sample)>;
    using Factory = std::function<std::unique_ptr<SystemAudioCapture>()>;

    virtual ~SystemAudioCapture() = default;
    // Samples may arrive on any thread; throws CaptureError.
    virtual void start(SampleHandler onSample) = 0;
    // Waits until no more samples can arrive.
    virtual void stop() = 0;
};

} // namespace recorder
