#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace recorder {

enum class Permission { screenRecording, camera, microphone, accessibility, inputMonitoring };

enum class PermissionState { notDetermined = 0, granted = 1, denied = 2 };

// What Linux has of the privacy permissions: the display server reachable,
// the camera device files readable, the sound server reachable. There is no
// prompt to show: a denied permission comes with the remedy in words.
class PermissionsManager {
public:
    // Device files are looked for under deviceFolder.
    explicit PermissionsManager(std::filesystem::path deviceFolder = "/dev");

    void refresh();
    const std::map<Permission, PermissionState>& status() const { return status_; }
    PermissionState state(Permission permission) const;
    PermissionState screen() const { return state(Permission::screenRecording); }
    PermissionState camera() const { return state(Permission::camera); }
    PermissionState microphone() const { return state(Permission::microphone); }
    // What the person can do about a permission that isn't granted; empty
    // when it is.
    std::string remedy(Permission permission) const;

private:
    PermissionState readScreen() const;
    PermissionState readCamera() const;
    PermissionState readMicrophone() const;

    std::filesystem::path deviceFolder_;
    std::map<Permission, PermissionState> status_;
};

} // namespace recorder
