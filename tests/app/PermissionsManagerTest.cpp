#include "camera/TestCameraDevice.h"
#include "support/PulseAudioServer.h"
#include "support/TempDir.h"
#include "support/XvfbDisplay.h"
#include "system/PermissionsManager.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>

namespace recorder {
namespace {

// Sets environment variables for a scope, and puts back what was there.
class Environment {
public:
    void set(const std::string& name, const std::optional<std::string>& value) {
        const char* before = std::getenv(name.c_str());
        saved_.emplace_back(name, before ? std::optional<std::string>(before) : std::nullopt);
        value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
    }
    ~Environment() {
        for (auto it = saved_.rbegin(); it != saved_.rend(); ++it)
            it->second ? setenv(it->first.c_str(), it->second->c_str(), 1) : unsetenv(it->first.c_str());
    }

private:
    std::vector<std::pair<std::string, std::optional<std::string>>> saved_;
};

TEST(PermissionsManager, MicrophoneIsGrantedWhenTheSoundServerAnswers) {
    test::TempDir devices;
    {
        test::PulseAudioServer server;
        PermissionsManager permissions(devices.path());
        EXPECT_EQ(permissions.microphone(), PermissionState::granted);
        EXPECT_EQ(permissions.remedy(Permission::microphone), "");
    }
    Environment environment;
    environment.set("PULSE_SERVER", "unix:" + (devices / "no-server").string());
    PermissionsManager permissions(devices.path());
    EXPECT_EQ(permissions.microphone(), PermissionState::denied);
    EXPECT_NE(permissions.remedy(Permission::microphone).find("sound server"), std::string::npos);
}

TEST(PermissionsManager, ScreenIsGrantedWhenTheDisplayAnswers) {
    test::TempDir devices;
    test::XvfbDisplay display(320, 240);
    Environment environment;
    environment.set("DISPLAY", display.name());
    environment.set("WAYLAND_DISPLAY", std::nullopt);
    PermissionsManager permissions(devices.path());
    EXPECT_EQ(permissions.screen(), PermissionState::granted);
    EXPECT_EQ(permissions.state(Permission::inputMonitoring), PermissionState::granted);

    environment.set("DISPLAY", std::nullopt);
    permissions.refresh();
    EXPECT_EQ(permissions.screen(), PermissionState::denied);
    EXPECT_NE(permissions.remedy(Permission::screenRecording).find("display"), std::string::npos);

    // On Wayland the desktop asks the person when recording starts.
    environment.set("WAYLAND_DISPLAY", "wayland-0");
    permissions.refresh();
    EXPECT_EQ(permissions.screen(), PermissionState::notDetermined);
    EXPECT_NE(permissions.remedy(Permission::screenRecording).find("Share"), std::string::npos);
    EXPECT_EQ(permissions.state(Permission::accessibility), PermissionState::denied);
}

TEST(PermissionsManager, CameraFollowsTheDeviceFiles) {
    test::TempDir devices;
    Environment environment;
    environment.set(TestCameraDevice::environmentSwitch, std::nullopt);
    PermissionsManager permissions(devices.path());
    EXPECT_EQ(permissions.camera(), PermissionState::notDetermined) << "no camera, nothing to decide";

    std::ofstream(devices / "video0").put('\0');
    permissions.refresh();
    EXPECT_EQ(permissions.camera(), PermissionState::granted);

    std::filesystem::remove(devices / "video0");
    environment.set(TestCameraDevice::environmentSwitch, "1");
    permissions.refresh();
    EXPECT_EQ(permissions.camera(), PermissionState::granted);
}

TEST(PermissionsManager, DeniedCameraPointsAtTheVideoGroup) {
    if (geteuid() == 0) GTEST_SKIP() << "every device file is readable to root";
    test::TempDir devices;
    std::ofstream(devices / "video0").put('\0');
    std::filesystem::permissions(devices / "video0", std::filesystem::perms::none);
    PermissionsManager permissions(devices.path());
    EXPECT_EQ(permissions.camera(), PermissionState::denied);
    EXPECT_NE(permissions.remedy(Permission::camera).find("“video” group"), std::string::npos);
}

} // namespace
} // namespace recorder
