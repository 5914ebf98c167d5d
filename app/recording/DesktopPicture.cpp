#include "recording/DesktopPicture.h"

#include <QProcess>
#include <QUrl>

namespace recorder::DesktopPicture {

namespace {

std::optional<std::string> gsettings(const char* key) {
    QProcess process;
    process.start("gsettings", {"get", "org.gnome.desktop.background", key});
    if (!process.waitForFinished(2000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        process.kill();
        return std::nullopt;
    }
    return process.readAllStandardOutput().trimmed().toStdString();
}

} // namespace

std::optional<std::filesystem::path> pathFromSetting(const std::string& value) {
    QString text = QString::fromStdString(value).trimmed();
    if (text.size() >= 2 && text.startsWith('\'') && text.endsWith('\'')) text = text.mid(1, text.size() - 2);
    if (text.isEmpty()) return std::nullopt;
    QUrl url(text);
    QString path = url.isLocalFile() ? url.toLocalFile() : (text.startsWith('/') ? text : QString());
    if (path.isEmpty()) return std::nullopt;
    return std::filesystem::path(path.toStdString());
}

std::optional<std::filesystem::path> find() {
    for (const char* key : {"picture-uri", "picture-uri-dark"}) {
        auto value = gsettings(key);
        auto path = value ? pathFromSetting(*value) : std::nullopt;
        std::error_code error;
        if (path && std::filesystem::is_regular_file(*path, error)) return path;
    }
    return std::nullopt;
}

std::optional<std::string> copyInto(const std::filesystem::path& folder,
                                    const std::optional<std::filesystem::path>& picture) {
    if (!picture) return std::nullopt;
    std::string name = "wallpaper" + picture->extension().string();
    std::error_code error;
    std::filesystem::copy_file(*picture, folder / name, std::filesystem::copy_options::overwrite_existing, error);
    if (error) return std::nullopt;
    return name;
}

} // namespace recorder::DesktopPicture
