#include "audio/PulseRecordStream.h"

#include "clock/HostClock.h"
#include "log/Log.h"

#include <pulse/pulseaudio.h>

#include <algorithm>
#include <cstdlib>

namespace recorder {

namespace {

// The sample count is the true clock of a sound stream. Arrival times only
// bound it: a run can't arrive before it was taken, so the earliest arrival
// seen fixes the clock, and later arrivals that are late by less than this
// are the server's scheduling, not lost sound. The server's own latency
// figure swings by 100 ms when a monitor wakes up, so it isn't used.
constexpr std::int64_t lateTolerance = 150'000'000;
// About the buffer a capture device hands over, so the meter stays lively.
constexpr int fragmentMilliseconds = 20;

} // namespace

PulseRecordStream::PulseRecordStream(std::shared_ptr<PulseContext> context, std::string sourceName, int channels)
    : context_(std::move(context)), sourceName_(std::move(sourceName)), channels_(std::clamp(channels, 1, 2)) {}

PulseRecordStream::~PulseRecordStream() { stop(); }

bool PulseRecordStream::start(SampleHandler onSamples, EndHandler onEnd) {
    stop();
    onSamples_ = std::move(onSamples);
    onEnd_ = std::move(onEnd);
    nextTime_.reset();
    pa_sample_spec spec{PA_SAMPLE_FLOAT32NE, std::uint32_t(sampleRate), std::uint8_t(channels_)};
    pa_channel_map map;
    pa_channel_map_init_auto(&map, std::uint8_t(channels_), PA_CHANNEL_MAP_DEFAULT);
    pa_buffer_attr attributes{};
    attributes.maxlength = std::uint32_t(-1);
    attributes.fragsize = std::uint32_t(pa_usec_to_bytes(fragmentMilliseconds * 1000, &spec));

    PulseContext::Lock lock(context_->mainloop());
    stream_ = pa_stream_new(context_->context(), "recording", &spec, &map);
    if (!stream_) return false;
    pa_stream_set_read_callback(stream_, onRead, this);
    pa_stream_set_state_callback(stream_, onState, this);
    auto flags = pa_stream_flags_t(PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_MOVE);
    if (pa_stream_connect_record(stream_, sourceName_.c_str(), &attributes, flags) != 0) {
        pa_stream_unref(stream_);
        stream_ = nullptr;
        return false;
    }
    for (;;) {
        pa_stream_state_t state = pa_stream_get_state(stream_);
        if (state == PA_STREAM_READY) return true;
        if (!PA_STREAM_IS_GOOD(state)) break;
        pa_threaded_mainloop_wait(context_->mainloop());
    }
    Log::error("capture", "Could not record from " + sourceName_ + ": " +
                              pa_strerror(pa_context_errno(context_->context())));
    pa_stream_set_read_callback(stream_, nullptr, nullptr);
    pa_stream_set_state_callback(stream_, nullptr, nullptr);
    pa_stream_unref(stream_);
    stream_ = nullptr;
    return false;
}

void PulseRecordStream::stop() {
    if (!stream_) return;
    // Callbacks run under the loop's lock, so once it is ours and they are
    // unset, none is running and none will.
    PulseContext::Lock lock(context_->mainloop());
    pa_stream_set_read_callback(stream_, nullptr, nullptr);
    pa_stream_set_state_callback(stream_, nullptr, nullptr);
    pa_stream_disconnect(stream_);
    pa_stream_unref(stream_);
    stream_ = nullptr;
}

void PulseRecordStream::onRead(pa_stream*, std::size_t, void* self) { static_cast<PulseRecordStream*>(self)->read(); }

void PulseRecordStream::onState(pa_stream* stream, void* self) {
    auto* me = static_cast<PulseRecordStream*>(self);
    pa_stream_state_t state = pa_stream_get_state(stream);
    pa_threaded_mainloop_signal(me->context_->mainloop(), 0);
    if ((state == PA_STREAM_FAILED || state == PA_STREAM_TERMINATED) && me->onEnd_) me->onEnd_();
}

void PulseRecordStream::read() {
    const int frameBytes = int(sizeof(float)) * channels_;
    while (pa_stream_readable_size(stream_) > 0) {
        const void* data = nullptr;
        std::size_t bytes = 0;
        if (pa_stream_peek(stream_, &data, &bytes) != 0 || bytes == 0) return;
        int frames = int(bytes / std::size_t(frameBytes));
        std::int64_t first = firstSampleTime(frames);
        if (data && frames > 0 && onSamples_) onSamples_(static_cast<const float*>(data), frames, channels_, first);
        pa_stream_drop(stream_);
    }
}

std::int64_t PulseRecordStream::firstSampleTime(int frames) {
    const std::int64_t length = std::int64_t(frames) * HostClock::nanosecondsPerSecond / sampleRate;
    // The run's last sample was taken at the latest now.
    std::int64_t bound = HostClock::nanoseconds() - length;
    std::int64_t first = bound;
    if (nextTime_) {
        first = *nextTime_;
        if (bound < first || bound - first > lateTolerance) first = bound;
    }
    nextTime_ = first + length;
    return first;
}

} // namespace recorder
