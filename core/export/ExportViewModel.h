#pragma once

#include "export/ExportFormat.h"
#include "export/ExportPreset.h"
#include "export/ExportSettings.h"
#include "model/Date.h"
#include "model/Project.h"

#include <exception>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace recorder {

// The export sheet's state, which the window binds to. The caller runs the
// exporter and reports back through started, progressed, succeeded and
// failed, on the main thread.
class ExportViewModel {
public:
    enum class Face { form, running, cancelling, done };

    ExportFormat format = ExportFormat::mp4H264;
    ExportPreset preset = ExportPreset::source();
    int fps = 30;
    // The folder the file goes to.
    std::filesystem::path destination;
    bool exporting = false;
    double progress = 0;
    std::optional<std::string> error;
    std::optional<std::filesystem::path> resultURL;
    std::function<void()> dismiss;
    // Stops the running exporter; set by whoever runs it.
    std::function<void()> cancelExporter;
    bool cancelling = false;

    // The settings of an export of `project` made at `now`: the preset's size,
    // the sheet's frame rate (a GIF is always 15), a name that is free in
    // the destination folder.
    ExportSettings settings(const Project& project, Date now, const std::string& brandDisplay) const;

    void started();
    void progressed(double value) { progress = value; }
    void succeeded(const std::filesystem::path& file);
    // A cancelled export goes back to the form with no message.
    void failed(const std::exception& failure);
    void cancel();
    void close();

    Face face() const;
    // "Rendering" or "Cancelling".
    std::string statusTitle() const;
    // "42% · please wait", "100% · finishing the file", or "Stopping…".
    std::string statusDetail() const;

    static std::filesystem::path freeFileURL(const std::filesystem::path& folder, const std::string& fileName);
};

} // namespace recorder
