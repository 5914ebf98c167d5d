#include "audio/SystemAudioCapturer.h"

#include "log/Log.h"
#include "sink/CaptureError.h"

#include <cstring>

namespace recorder {

std::unique_ptr<SystemAudioCapture> SystemAudioCapturer::make(std::shared_ptr<PulseContext> session) {
    if (!session) return nullptr;
    auto info = session->serverInfo();
    if (!info || info->defaultSinkName.empty()) {
        Log::info("capture", "The sound server has no default output; recording without system sound.");
        return nullptr;
    }
    auto monitor = session->monitorOfSink(info->defaultSinkName);
    if (!monitor) {
        Log::info("capture", "The default output " + info->defaultSinkName + " has no monitor; recording without system sound.");
        return nullptr;
    }
    return std::make_unique<SystemAudioCapturer>(std::move(session), *monitor);
}

SystemAudioCapture::Factory SystemAudioCapturer::factory() {
    return [] { return make(PulseContext::connect("system sound")); };
}

SystemAudioCapturer::SystemAudioCapturer(std::shared_ptr<PulseContext> session, std::string monitorName)
    : stream_(std::move(session), std::move(monitorName), 2) {}

SystemAudioCapturer::~SystemAudioCapturer() { stop(); }

void SystemAudioCapturer::start(SampleHandler onSample) {
    auto deliver = [onSample = std::move(onSample)](const float* interleaved, int frames, int channels,
                                                    std::int64_t hostTime) {
        auto frame = MediaSample::makeAudioFrame(AV_SAMPLE_FMT_FLT, PulseRecordStream::sampleRate, channels, frames);
        std::memcpy(frame->data[0], interleaved, std::size_t(frames) * std::size_t(channels) * sizeof(float));
        onSample(MediaSample::audio(std::move(frame), hostTime));
    };
    auto ended = [name = stream_.sourceName()] { Log::info("capture", "System sound from " + name + " ended."); };
    if (!stream_.start(std::move(deliver), std::move(ended))) throw CaptureError::streamFailed("system sound");
}

void SystemAudioCapturer::stop() { stream_.stop(); }

} // namespace recorder
