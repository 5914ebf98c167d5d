#include "audio/MicCapturer.h"

#include "audio/LevelMeter.h"
#include "clock/HostClock.h"
#include "log/Log.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace recorder {

MicCapturer::MicCapturer(std::shared_ptr<PulseContext> session)
    : session_(std::move(session)), queue_(std::make_unique<SerialQueue>("mic.samples")) {}

MicCapturer::~MicCapturer() {
    if (recording_) stopWriting();
    select(std::nullopt);
}

void MicCapturer::setOnSample(SampleHandler onSample) {
    queue_->sync([&] { onSample_ = std::move(onSample); });
}

std::optional<std::string> MicCapturer::selectedID() const {
    if (!input_) return std::nullopt;
    return input_->sourceName();
}

void MicCapturer::select(const std::optional<std::string>& deviceID) {
    if (selectedID() == deviceID) return;
    if (input_) {
        input_->stop();
        // Whatever the stream handed over before it stopped is delivered first.
        queue_->sync([] {});
        input_.reset();
    }
    if (deviceID && session_) {
        auto sources = session_->sources();
        auto found = std::find_if(sources.begin(), sources.end(),
                                  [&](const PulseContext::Source& source) { return source.name == *deviceID; });
        if (found != sources.end()) {
            sampleRate_ = PulseRecordStream::sampleRate;
            channels_ = found->channels > 0 ? std::min(found->channels, 2) : 1;
            auto stream = std::make_unique<PulseRecordStream>(session_, *deviceID, channels_);
            bool started = stream->start([this](const float* interleaved, int frames, int channels,
                                                std::int64_t hostTime) { take(interleaved, frames, channels, hostTime); },
                                         [id = *deviceID] { Log::info("capture", "The microphone " + id + " went away."); });
            if (started) input_ = std::move(stream);
        }
    }
    if (!input_) {
        std::lock_guard guard(levelLock_);
        level_ = 0;
    }
}

void MicCapturer::startWriting(const std::filesystem::path& url) {
    auto sink = std::make_unique<AssetWriterSink>(url, FileType::m4a,
                                                  std::vector<AssetWriterSink::Kind>{AssetWriterSink::Audio{sampleRate_, channels_}});
    queue_->sync([&] {
        sink_ = std::move(sink);
        writingPaused_ = false;
        resumedAt_ = 0;
        recording_ = true;
    });
}

std::optional<CapturedTrack> MicCapturer::stopWriting() {
    std::unique_ptr<AssetWriterSink> sink;
    queue_->sync([&] {
        flushToSink();
        recording_ = false;
        sink = std::move(sink_);
    });
    if (!sink) return std::nullopt;
    double duration = sink->finish();
    std::optional<double> first;
    if (auto pts = sink->firstPTS()) first = HostClock::toSeconds(*pts);
    return CapturedTrack{sink->url(), duration, first};
}

void MicCapturer::pauseWriting(std::int64_t at) {
    queue_->async([this, at] {
        // What was collected before the pause reaches the sink before it pauses.
        flushToSink();
        writingPaused_ = true;
        if (sink_) sink_->pause(at);
    });
}

void MicCapturer::resumeWriting(std::int64_t at) {
    queue_->async([this, at] {
        writingPaused_ = false;
        resumedAt_ = at;
        if (sink_) sink_->resume(at);
    });
}

void MicCapturer::cancelWriting() {
    std::unique_ptr<AssetWriterSink> sink;
    queue_->sync([&] {
        recording_ = false;
        unwritten_.clear();
        writingPaused_ = false;
        sink = std::move(sink_);
    });
    if (sink) sink->cancel();
}

float MicCapturer::level() const {
    std::lock_guard guard(levelLock_);
    return level_;
}

void MicCapturer::take(const float* interleaved, int frames, int channels, std::int64_t hostTime) {
    // The server's buffer is only ours until the callback returns.
    auto frame = MediaSample::makeAudioFrame(AV_SAMPLE_FMT_FLT, PulseRecordStream::sampleRate, channels, frames);
    std::memcpy(frame->data[0], interleaved, std::size_t(frames) * std::size_t(channels) * sizeof(float));
    MediaSample sample = MediaSample::audio(std::move(frame), hostTime);
    queue_->async([this, sample] { deliver(sample); });
}

void MicCapturer::deliver(const MediaSample& sample) {
    bool writes = recording_ && sink_ && !writingPaused_ && sample.presentationTime().value_or(0) >= resumedAt_;
    if (writes) collectForSink(sample);
    updateLevel(sample);
    if (onSample_) onSample_(sample);
}

void MicCapturer::collectForSink(const MediaSample& sample) {
    const AVFrame& frame = sample.frame();
    int channels = frame.ch_layout.nb_channels;
    std::int64_t start = *sample.presentationTime();
    // A run that doesn't follow on (the clock was set again) starts a new one.
    std::int64_t expected = unwrittenStart_ + std::int64_t(unwritten_.size() / std::size_t(unwrittenChannels_)) *
                                                  HostClock::nanosecondsPerSecond / PulseRecordStream::sampleRate;
    if (!unwritten_.empty() && (channels != unwrittenChannels_ || std::llabs(start - expected) > 1'000'000)) flushToSink();
    if (unwritten_.empty()) unwrittenStart_ = start, unwrittenChannels_ = channels;
    auto* data = reinterpret_cast<const float*>(frame.data[0]);
    unwritten_.insert(unwritten_.end(), data, data + std::size_t(frame.nb_samples) * std::size_t(channels));
    if (unwritten_.size() >= std::size_t(framesPerWrite) * std::size_t(channels)) flushToSink();
}

void MicCapturer::flushToSink() {
    if (unwritten_.empty() || !sink_) return;
    int frames = int(unwritten_.size() / std::size_t(unwrittenChannels_));
    auto run = MediaSample::makeAudioFrame(AV_SAMPLE_FMT_FLT, PulseRecordStream::sampleRate, unwrittenChannels_, frames);
    std::memcpy(run->data[0], unwritten_.data(), unwritten_.size() * sizeof(float));
    sink_->append(MediaSample::audio(std::move(run), unwrittenStart_), false);
    unwritten_.clear();
}

void MicCapturer::updateLevel(const MediaSample& sample) {
    const AVFrame& frame = sample.frame();
    std::size_t count = std::size_t(frame.nb_samples) * std::size_t(frame.ch_layout.nb_channels);
    double rms = 0;
    if (frame.format == AV_SAMPLE_FMT_FLT)
        rms = LevelMeter::rms(reinterpret_cast<const float*>(frame.data[0]), count);
    else if (frame.format == AV_SAMPLE_FMT_S16)
        rms = LevelMeter::rms(reinterpret_cast<const short*>(frame.data[0]), count);
    float reading = LevelMeter::reading(rms);
    std::lock_guard guard(levelLock_);
    level_ = LevelMeter::next(level_, reading);
}

} // namespace recorder
