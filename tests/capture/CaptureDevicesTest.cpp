#include "audio/PulseContext.h"
#include "devices/CaptureDevices.h"
#include "support/PulseAudioServer.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>

namespace recorder {
namespace {

using namespace std::chrono_literals;

bool contains(const std::vector<CaptureDevices::Device>& devices, const std::string& id) {
    return std::any_of(devices.begin(), devices.end(), [&](const auto& d) { return d.id == id; });
}

class CaptureDevicesTest : public ::testing::Test {
protected:
    test::PulseAudioServer server;
    test::TempDir noCameras;
    std::shared_ptr<PulseContext> session = PulseContext::connect("devices test");
};

TEST_F(CaptureDevicesTest, MicrophonesAreTheServersSourcesWithoutMonitors) {
    ASSERT_TRUE(session);
    CaptureDevices devices(session, noCameras.path());
    auto microphones = devices.microphones();
    ASSERT_TRUE(contains(microphones, "testmic"));
    EXPECT_FALSE(contains(microphones, "speakers.monitor"));
    EXPECT_FALSE(contains(microphones, "micwire.monitor"));
    auto testmic = *std::find_if(microphones.begin(), microphones.end(), [](const auto& d) { return d.id == "testmic"; });
    EXPECT_EQ(testmic.name, "Test_Microphone");
}

TEST_F(CaptureDevicesTest, TheRememberedMicrophoneIsTheDefaultWhenNoneWasChosenAndNothingForNone) {
    ASSERT_TRUE(session);
    CaptureDevices devices(session, noCameras.path());
    auto fresh = devices.rememberedMicrophone(std::nullopt);
    ASSERT_TRUE(fresh);
    EXPECT_EQ(fresh->id, "testmic");
    EXPECT_FALSE(devices.rememberedMicrophone(std::string("none")));
    EXPECT_FALSE(devices.rememberedMicrophone(std::string("unplugged.microphone")));
    EXPECT_EQ(devices.rememberedMicrophone(std::string("testmic"))->id, "testmic");
}

TEST_F(CaptureDevicesTest, AMicrophonePluggedInIsListedAndTheWatcherIsTold) {
    ASSERT_TRUE(session);
    CaptureDevices devices(session, noCameras.path());
    std::mutex lock;
    std::condition_variable told;
    bool changed = false;
    devices.setOnChange([&] {
        std::lock_guard guard(lock);
        changed = true;
        told.notify_all();
    });
    ASSERT_TRUE(server.pactl("load-module module-remap-source source_name=headset master=micwire.monitor"));
    std::unique_lock guard(lock);
    ASSERT_TRUE(told.wait_for(guard, 5s, [&] { return changed; }));
    EXPECT_TRUE(contains(devices.microphones(), "headset"));
}

TEST_F(CaptureDevicesTest, NoCameraIsRememberedWhenAbsentNoneOrUnplugged) {
    ASSERT_TRUE(session);
    CaptureDevices devices(session, noCameras.path());
    EXPECT_TRUE(devices.cameras().empty());
    EXPECT_FALSE(devices.rememberedCamera(std::nullopt));
    EXPECT_FALSE(devices.rememberedCamera(std::string("none")));
    EXPECT_FALSE(devices.rememberedCamera(std::string("/dev/video0")));
}

TEST(CaptureDevicesWithoutServer, ThereAreNoMicrophones) {
    test::TempDir noCameras;
    CaptureDevices devices(nullptr, noCameras.path());
    EXPECT_TRUE(devices.microphones().empty());
    EXPECT_FALSE(devices.rememberedMicrophone(std::nullopt));
}

} // namespace
} // namespace recorder
