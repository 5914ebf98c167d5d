#include "Settings.h"

#include "AppPaths.h"
#include "brand/Brand.h"

namespace recorder {

namespace {

QString qKey(const char* key) { return QString::fromUtf8(key); }

std::optional<bool> boolFromText(const QString& text) {
    QString lower = text.trimmed().toLower();
    if (lower == "true" || lower == "yes" || lower == "1") return true;
    if (lower == "false" || lower == "no" || lower == "0") return false;
    return std::nullopt;
}

} // namespace

Settings::Settings() : Settings(AppPaths::settingsFile()) {}

Settings::Settings(const std::filesystem::path& file)
    : store_(std::make_unique<QSettings>(QString::fromStdString(file.string()), QSettings::IniFormat)) {}

Settings::~Settings() = default;

std::optional<bool> Settings::readBool(const char* key) const {
    QVariant value = store_->value(qKey(key));
    if (!value.isValid()) return std::nullopt;
    if (value.typeId() == QMetaType::Bool) return value.toBool();
    return boolFromText(value.toString());
}

std::optional<int> Settings::readInt(const char* key) const {
    QVariant value = store_->value(qKey(key));
    if (!value.isValid()) return std::nullopt;
    bool ok = false;
    int number = value.toString().trimmed().toInt(&ok, 0);
    return ok ? std::optional<int>(number) : std::nullopt;
}

std::optional<std::string> Settings::readString(const char* key) const {
    QVariant value = store_->value(qKey(key));
    if (!value.isValid() || value.typeId() == QMetaType::QStringList) return std::nullopt;
    return value.toString().toStdString();
}

bool Settings::onboardingDone() const { return readBool("onboardingDone").value_or(false); }
std::string Settings::projectsDirectorySetting() const { return readString("projectsDirectory").value_or(""); }
std::string Settings::exportDirectorySetting() const { return readString("exportDirectory").value_or(""); }
std::optional<std::string> Settings::lastProjectPath() const { return readString("lastProjectPath"); }
int Settings::countdownSeconds() const { return readInt("countdownSeconds").value_or(3); }
int Settings::captureFrameRate() const { return readInt("captureFrameRate").value_or(60); }
bool Settings::systemAudioEnabled() const { return readBool("systemAudioEnabled").value_or(true); }
std::optional<std::string> Settings::lastCameraID() const { return readString("lastCameraID"); }
std::optional<std::string> Settings::lastMicID() const { return readString("lastMicID"); }
bool Settings::focusModeDND() const { return readBool("focusModeDND").value_or(false); }
bool Settings::focusModeHideDesktop() const { return readBool("focusModeHideDesktop").value_or(false); }
int Settings::hotkeyKeyCode() const { return readInt("hotkeyKeyCode").value_or(15); }
int Settings::hotkeyModifiers() const { return readInt("hotkeyModifiers").value_or(0x1100); }
bool Settings::agentAllowControl() const { return readBool("agentAllowControl").value_or(false); }
bool Settings::agentAllowLocalHTTP() const { return readBool("agentAllowLocalHTTP").value_or(false); }
bool Settings::agentAskBeforeRecording() const { return readBool("agentAskBeforeRecording").value_or(true); }

std::optional<std::string> Settings::takeReopenRecorderOnPhone() {
    auto value = readString("reopenRecorderOnPhone");
    remove("reopenRecorderOnPhone");
    return value;
}

std::optional<Date> Settings::crashReportsLastSeen() const {
    auto text = readString("crashReports.lastSeen");
    return text ? Date::fromIso8601(*text) : std::nullopt;
}

int Settings::agentHTTPPort() const {
    int port = readInt("agentHTTPPort").value_or(defaultHTTPPort);
    return port >= 1025 && port <= 65535 ? port : defaultHTTPPort;
}

std::optional<std::string> Settings::cameraChoice() const {
    auto id = lastCameraID();
    if (!id || *id == "none") return std::nullopt;
    return id;
}

std::filesystem::path Settings::projectsDirectory() const {
    std::string configured = projectsDirectorySetting();
    std::filesystem::path directory =
        configured.empty() ? AppPaths::videosFolder() / Brand::shared().compact : std::filesystem::path(configured);
    std::error_code ignored; // a folder that can't be made is reported when a package can't be
    std::filesystem::create_directories(directory, ignored);
    return directory;
}

std::filesystem::path Settings::exportDirectory() const {
    std::string configured = exportDirectorySetting();
    return configured.empty() ? projectsDirectory() : std::filesystem::path(configured);
}

void Settings::setBool(const char* key, bool value) { store_->setValue(qKey(key), value); }
void Settings::setInt(const char* key, int value) { store_->setValue(qKey(key), value); }
void Settings::setString(const char* key, const std::string& value) {
    store_->setValue(qKey(key), QString::fromStdString(value));
}
void Settings::setDate(const char* key, Date value) { setString(key, value.iso8601()); }
void Settings::remove(const char* key) { store_->remove(qKey(key)); }
void Settings::sync() { store_->sync(); }

} // namespace recorder
