#pragma once

#include "audio/PulseContext.h"
#include "audio/PulseRecordStream.h"
#include "screen/SystemAudioCapture.h"

#include <memory>
#include <string>

namespace recorder {

// The computer's own sound: the monitor of the sound server's default output,
// in stereo at 48 kHz, with host-clock times like the microphone's.
class SystemAudioCapturer : public SystemAudioCapture {
public:
    // None without a sound server or a default output; the screen capturer
    // then records without system sound.
    static std::unique_ptr<SystemAudioCapture> make(std::shared_ptr<PulseContext> session);
    // A factory for the screen capturer that connects on first use.
    static SystemAudioCapture::Factory factory();

    SystemAudioCapturer(std::shared_ptr<PulseContext> session, std::string monitorName);
    ~SystemAudioCapturer() override;

    void start(SampleHandler onSample) override;
    void stop() override;

    const std::string& monitorName() const { return stream_.sourceName(); }

private:
    PulseRecordStream stream_;
};

} // namespace recorder
