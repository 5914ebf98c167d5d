#pragma once

#include "model/Date.h"

#include <QSettings>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace recorder {

// Every setting of the application, each key with its default. Values live
// in an INI file, where everything reads back as text: a value that doesn't
// read as its key's type counts as absent and gives the default.
class Settings {
public:
    // The user's settings file.
    Settings();
    // A settings file of the caller's, for tests and tools.
    explicit Settings(const std::filesystem::path& file);
    ~Settings();

    bool onboardingDone() const;
    std::string projectsDirectorySetting() const;
    std::string exportDirectorySetting() const;
    std::optional<std::string> lastProjectPath() const;
    int countdownSeconds() const;
    int captureFrameRate() const;
    bool systemAudioEnabled() const;
    std::optional<std::string> lastCameraID() const;
    std::optional<std::string> lastMicID() const;
    bool focusModeDND() const;
    bool focusModeHideDesktop() const;
    int hotkeyKeyCode() const;
    int hotkeyModifiers() const;
    // Read once: the key is removed as it is read.
    std::optional<std::string> takeReopenRecorderOnPhone();
    std::optional<Date> crashReportsLastSeen() const;
    bool agentAllowControl() const;
    bool agentAllowLocalHTTP() const;
    bool agentAskBeforeRecording() const;
    int agentHTTPPort() const;

    // The chosen camera, or none: an absent key and "none" mean the same.
    std::optional<std::string> cameraChoice() const;

    // The folder new packages go to and the listing reads; created when needed.
    std::filesystem::path projectsDirectory() const;
    std::filesystem::path exportDirectory() const;

    void setBool(const char* key, bool value);
    void setInt(const char* key, int value);
    void setString(const char* key, const std::string& value);
    void setDate(const char* key, Date value);
    void remove(const char* key);
    void sync();

    static constexpr int defaultHTTPPort = 4519;

private:
    std::optional<bool> readBool(const char* key) const;
    std::optional<int> readInt(const char* key) const;
    std::optional<std::string> readString(const char* key) const;

    std::unique_ptr<QSettings> store_;
};

} // namespace recorder
