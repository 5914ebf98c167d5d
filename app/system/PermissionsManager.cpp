#include "system/PermissionsManager.h"

#include "audio/PulseContext.h"
#include "brand/Brand.h"
#include "camera/TestCameraDevice.h"
#include "x11/X11Connection.h"

#include <cstdlib>
#include <unistd.h>

namespace recorder {

namespace {

bool isSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value && *value;
}

bool displayAnswers() {
    if (!isSet("DISPLAY")) return false;
    try {
        X11Connection connection;
        return !connection.hasFailed();
    } catch (const std::exception&) {
        return false;
    }
}

std::string product() { return Brand::shared().display; }

} // namespace

PermissionsManager::PermissionsManager(std::filesystem::path deviceFolder) : deviceFolder_(std::move(deviceFolder)) {
    refresh();
}

void PermissionsManager::refresh() {
    PermissionState screen = readScreen();
    // Anyone on an X server sees every key and click; nothing else does.
    PermissionState input = screen == PermissionState::granted ? PermissionState::granted : PermissionState::denied;
    std::map<Permission, PermissionState> status = {
        {Permission::screenRecording, screen},        {Permission::camera, readCamera()},
        {Permission::microphone, readMicrophone()},   {Permission::accessibility, input},
        {Permission::inputMonitoring, input},
    };
    if (status != status_) status_ = std::move(status);
}

PermissionState PermissionsManager::state(Permission permission) const {
    auto found = status_.find(permission);
    return found == status_.end() ? PermissionState::notDetermined : found->second;
}

PermissionState PermissionsManager::readScreen() const {
    if (displayAnswers()) return PermissionState::granted;
    // On Wayland the desktop asks the person when capture starts.
    if (isSet("WAYLAND_DISPLAY")) return PermissionState::notDetermined;
    return PermissionState::denied;
}

PermissionState PermissionsManager::readCamera() const {
    if (TestCameraDevice::isListed()) return PermissionState::granted;
    bool anyNode = false;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(deviceFolder_, error)) {
        if (!entry.path().filename().string().starts_with("video")) continue;
        anyNode = true;
        if (access(entry.path().c_str(), R_OK | W_OK) == 0) return PermissionState::granted;
    }
    // With no camera plugged in there is nothing to grant or deny yet.
    return anyNode ? PermissionState::denied : PermissionState::notDetermined;
}

PermissionState PermissionsManager::readMicrophone() const {
    return PulseContext::connect(product()) ? PermissionState::granted : PermissionState::denied;
}

std::string PermissionsManager::remedy(Permission permission) const {
    PermissionState present = state(permission);
    if (present == PermissionState::granted) return {};
    switch (permission) {
    case Permission::screenRecording:
        if (present == PermissionState::notDetermined)
            return "Your desktop asks which screen to share when recording starts. Choose one and press Share.";
        return product() + " can't reach the display. Start it from your desktop session, where DISPLAY is set.";
    case Permission::camera:
        if (present == PermissionState::notDetermined) return "No camera is connected. Plug one in and it shows up here.";
        return product() + " can't open the camera. Add yourself to the “video” group (sudo usermod -aG video $USER), "
                           "then log out and back in.";
    case Permission::microphone:
        return product() + " can't reach the sound server, so it hears no microphone. Start it (systemctl --user start "
                           "pipewire-pulse, or pulseaudio --start) and try again.";
    case Permission::accessibility:
    case Permission::inputMonitoring:
        return "Clicks and keys can only be followed on an X11 session. Log in with “GNOME on Xorg” to have zooms made "
               "from your clicks.";
    }
    return {};
}

} // namespace recorder
