#include "system/FocusMode.h"

#include <QProcess>
#include <QStringList>

namespace recorder {

namespace {

constexpr const char* banners[] = {"org.gnome.desktop.notifications", "show-banners"};

// Where desktops keep their icons' switch: the file manager's desktop of
// older GNOME, and the icons extension of newer GNOME.
constexpr const char* iconSwitches[][2] = {
    {"org.gnome.desktop.background", "show-desktop-icons"},
    {"org.gnome.shell.extensions.ding", "show-home"},
    {"org.gnome.shell.extensions.ding", "show-trash"},
    {"org.gnome.shell.extensions.ding", "show-volumes"},
};

} // namespace

FocusMode::FocusMode(std::string settingsTool) : tool_(std::move(settingsTool)) {}

void FocusMode::enable(bool dnd, bool hideDesktop) {
    if (hideDesktop && !hidDesktop_) {
        hidDesktop_ = true;
        hideIcons();
    }
    if (dnd && !dndOn_) {
        dndOn_ = true;
        muteBanners();
    }
}

void FocusMode::hideIcons() {
    for (const auto& [schema, key] : iconSwitches) {
        Key place{schema, key};
        // Only a switch that is on is turned off, and later back on.
        if (read(place) == "true" && write(place, "false")) changed_.push_back({place, "true"});
    }
}

void FocusMode::muteBanners() {
    Key place{banners[0], banners[1]};
    auto before = read(place);
    if (before && *before != "false" && write(place, "false")) changed_.push_back({place, *before});
}

void FocusMode::restore() {
    for (auto it = changed_.rbegin(); it != changed_.rend(); ++it) write(it->key, it->before);
    changed_.clear();
    hidDesktop_ = false;
    dndOn_ = false;
}

std::optional<std::string> FocusMode::read(const Key& key) const {
    QProcess process;
    process.start(QString::fromStdString(tool_), {"get", key.schema, key.key});
    if (!process.waitForFinished(toolTimeoutMilliseconds)) {
        process.kill();
        process.waitForFinished(toolTimeoutMilliseconds);
        return std::nullopt;
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) return std::nullopt;
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed().toStdString();
}

bool FocusMode::write(const Key& key, const std::string& value) const {
    QProcess process;
    process.start(QString::fromStdString(tool_), {"set", key.schema, key.key, QString::fromStdString(value)});
    if (!process.waitForFinished(toolTimeoutMilliseconds)) {
        process.kill();
        process.waitForFinished(toolTimeoutMilliseconds);
        return false;
    }
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

} // namespace recorder
