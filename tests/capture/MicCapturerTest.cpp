#include "audio/MicCapturer.h"
#include "audio/PulseContext.h"
#include "audio/SystemAudioCapturer.h"
#include "clock/HostClock.h"
#include "support/PulseAudioServer.h"
#include "support/SoundFiles.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <cstring>
#include <mutex>

namespace recorder {
namespace {

using namespace std::chrono_literals;

// What a capturer delivered, gathered across threads.
class Collected {
public:
    void add(const MediaSample& sample) {
        const AVFrame& frame = sample.frame();
        std::lock_guard guard(lock_);
        if (!firstHostTime_) firstHostTime_ = *sample.presentationTime();
        channels_ = frame.ch_layout.nb_channels;
        auto* data = reinterpret_cast<const float*>(frame.data[0]);
        samples_.insert(samples_.end(), data, data + std::size_t(frame.nb_samples) * std::size_t(channels_));
        arrived_.notify_all();
    }
    // An idle monitor starts late: sound played before this would be lost.
    bool waitForFirst(std::chrono::seconds timeout = 10s) {
        std::unique_lock guard(lock_);
        return arrived_.wait_for(guard, timeout, [&] { return !samples_.empty(); });
    }
    test::Samples firstChannel() {
        std::lock_guard guard(lock_);
        return test::channel(samples_, channels_, 0);
    }
    int channels() {
        std::lock_guard guard(lock_);
        return channels_;
    }
    std::int64_t firstHostTime() {
        std::lock_guard guard(lock_);
        return firstHostTime_.value_or(0);
    }

private:
    std::mutex lock_;
    std::condition_variable arrived_;
    test::Samples samples_;
    int channels_ = 1;
    std::optional<std::int64_t> firstHostTime_;
};

// The middle of a played tone, a quarter second in from either end: near
// silence crosses zero at random, so the edges would spoil the frequency.
test::Samples steadyPart(const test::Samples& samples) {
    auto loud = [](float x) { return std::abs(x) > 0.1f; };
    auto first = std::find_if(samples.begin(), samples.end(), loud);
    auto last = std::find_if(samples.rbegin(), samples.rend(), loud).base();
    const std::ptrdiff_t margin = 48000 / 4;
    if (last - first < 3 * margin) return {};
    return test::Samples(first + margin, last - margin);
}

class MicCapturerTest : public ::testing::Test {
protected:
    test::PulseAudioServer server;
    test::TempDir folder;
    std::shared_ptr<PulseContext> session = PulseContext::connect("mic test");
};

TEST_F(MicCapturerTest, ATonePlayedIntoTheMicrophoneIsCapturedAndWrittenWithItsLevelAndFrequency) {
    ASSERT_TRUE(session);
    MicCapturer mic(session);
    Collected collected;
    std::mutex levelLock;
    float highestLevel = 0;
    mic.setOnSample([&](const MediaSample& sample) {
        collected.add(sample);
        std::lock_guard guard(levelLock);
        highestLevel = std::max(highestLevel, mic.level());
    });
    mic.select(test::PulseAudioServer::microphone);
    ASSERT_TRUE(mic.hasInput());
    EXPECT_EQ(mic.sampleRate(), 48000);
    EXPECT_EQ(mic.channels(), 1);
    ASSERT_TRUE(collected.waitForFirst());

    // An amplitude of 0.5 is an rms of −9 dB: the meter reads (−9 + 50) / 50.
    test::writeWav(folder / "tone.wav", test::joined({test::tone(440, 1.5, 0.5), test::silence(0.3)}));
    mic.startWriting(folder / "mic.m4a");
    EXPECT_TRUE(mic.isRecording());
    server.play(folder / "tone.wav", test::PulseAudioServer::microphoneWire);
    auto track = mic.stopWriting();

    ASSERT_TRUE(track);
    EXPECT_EQ(track->url, folder / "mic.m4a");
    EXPECT_GT(track->duration, 1.5);
    ASSERT_TRUE(track->firstSampleHostSeconds);
    EXPECT_NEAR(*track->firstSampleHostSeconds, HostClock::seconds() - track->duration, 0.5);
    {
        std::lock_guard guard(levelLock);
        EXPECT_NEAR(highestLevel, (20 * std::log10(0.5 / std::sqrt(2.0)) + 50) / 50, 0.04);
    }
    test::Samples live = steadyPart(collected.firstChannel());
    EXPECT_NEAR(test::toneFrequency(live), 440, 3);
    EXPECT_NEAR(test::decibels(test::rms(live)), test::decibels(0.5 / std::sqrt(2.0)), 1.0);

    test::Samples whole = test::readAll(folder / "mic.m4a", {48000, 1});
    EXPECT_NEAR(test::soundingLength(whole), 1.5, 0.05);
    test::Samples written = steadyPart(whole);
    EXPECT_NEAR(test::toneFrequency(written), 440, 3);
    EXPECT_NEAR(test::decibels(test::rms(written)), test::decibels(0.5 / std::sqrt(2.0)), 1.0);
}

TEST_F(MicCapturerTest, TheLevelFallsBackSlowlyAfterTheSoundStops) {
    ASSERT_TRUE(session);
    MicCapturer mic(session);
    Collected collected;
    mic.setOnSample([&](const MediaSample& sample) { collected.add(sample); });
    mic.select(test::PulseAudioServer::microphone);
    ASSERT_TRUE(collected.waitForFirst());
    test::writeWav(folder / "tone.wav", test::tone(440, 0.5, 0.5));
    server.play(folder / "tone.wav", test::PulseAudioServer::microphoneWire);
    // paplay returns once the server has played it; the meter is still up.
    float justAfter = mic.level();
    std::this_thread::sleep_for(1s);
    EXPECT_GT(justAfter, 0.3f);
    EXPECT_LT(mic.level(), 0.05f);
}

TEST_F(MicCapturerTest, NoDeviceMeansNoCaptureAndALevelOfZero) {
    ASSERT_TRUE(session);
    MicCapturer mic(session);
    Collected collected;
    mic.setOnSample([&](const MediaSample& sample) { collected.add(sample); });
    mic.select(std::nullopt);
    EXPECT_FALSE(mic.hasInput());
    EXPECT_FALSE(collected.waitForFirst(1s));
    EXPECT_EQ(mic.level(), 0.0f);
    EXPECT_FALSE(mic.stopWriting());
}

TEST_F(MicCapturerTest, AnUnknownDeviceLeavesNoInputWithoutAnError) {
    ASSERT_TRUE(session);
    MicCapturer mic(session);
    mic.select(std::string("unplugged.microphone"));
    EXPECT_FALSE(mic.hasInput());
}

TEST_F(MicCapturerTest, SelectingAnotherDeviceStopsTheFirstAndStartsTheSecond) {
    ASSERT_TRUE(session);
    MicCapturer mic(session);
    mic.select(test::PulseAudioServer::microphone);
    ASSERT_TRUE(mic.hasInput());
    mic.select(std::string("speakers.monitor"));
    EXPECT_EQ(mic.selectedID(), "speakers.monitor");
    EXPECT_EQ(mic.channels(), 2);
    mic.select(std::nullopt);
    EXPECT_FALSE(mic.hasInput());
}

TEST(MicCapturerWithoutServer, NoSoundServerMeansNoMicrophoneAndNoCrash) {
    test::TempDir folder;
    setenv("PULSE_SERVER", ("unix:" + (folder / "nothing-here").string()).c_str(), 1);
    auto session = PulseContext::connect("mic test");
    unsetenv("PULSE_SERVER");
    EXPECT_FALSE(session);
    MicCapturer mic(session);
    mic.select(std::string("testmic"));
    EXPECT_FALSE(mic.hasInput());
    EXPECT_FALSE(SystemAudioCapturer::make(session));
}

TEST_F(MicCapturerTest, SystemSoundIsTheMonitorOfTheDefaultOutput) {
    ASSERT_TRUE(session);
    auto capture = SystemAudioCapturer::make(session);
    ASSERT_TRUE(capture);
    EXPECT_EQ(static_cast<SystemAudioCapturer&>(*capture).monitorName(), "speakers.monitor");
    Collected collected;
    std::int64_t startedAt = HostClock::nanoseconds();
    capture->start([&](const MediaSample& sample) { collected.add(sample); });
    ASSERT_TRUE(collected.waitForFirst());
    EXPECT_EQ(collected.channels(), 2);
    EXPECT_NEAR(HostClock::toSeconds(collected.firstHostTime() - startedAt), 0.5, 1.5);

    test::writeWav(folder / "tone.wav", test::tone(660, 1.2, 0.25));
    server.play(folder / "tone.wav", test::PulseAudioServer::outputSink);
    capture->stop();
    test::Samples heard = steadyPart(collected.firstChannel());
    EXPECT_NEAR(test::toneFrequency(heard), 660, 3);
    EXPECT_NEAR(test::decibels(test::rms(heard)), test::decibels(0.25 / std::sqrt(2.0)), 1.0);
}

} // namespace
} // namespace recorder
