#include "export/ExportViewModel.h"

#include "export/ExportError.h"
#include "export/FilenamePattern.h"

#include <cmath>

namespace recorder {

ExportSettings ExportViewModel::settings(const Project& project, Date now, const std::string& brandDisplay) const {
    ExportSettings s;
    s.format = format;
    s.decision = ExportDecision::forProject(project, preset, brandDisplay);
    s.width = s.decision.width;
    s.height = s.decision.height;
    s.fps = fps;
    s.gifFPS = 15;
    s.outputURL = freeFileURL(destination, FilenamePattern::name(project.name, now, fileExtension(format)));
    return s;
}

void ExportViewModel::started() {
    exporting = true;
    cancelling = false;
    progress = 0;
    error.reset();
    resultURL.reset();
}

void ExportViewModel::succeeded(const std::filesystem::path& file) {
    resultURL = file;
    exporting = false;
    cancelling = false;
}

void ExportViewModel::failed(const std::exception& failure) {
    auto exportError = dynamic_cast<const ExportError*>(&failure);
    if (!exportError || exportError->kind() != ExportError::Kind::cancelled) error = failure.what();
    exporting = false;
    cancelling = false;
}

void ExportViewModel::cancel() {
    if (!exporting) return;
    cancelling = true;
    if (cancelExporter) cancelExporter();
}

void ExportViewModel::close() {
    resultURL.reset();
    if (dismiss) dismiss();
}

ExportViewModel::Face ExportViewModel::face() const {
    if (exporting) return cancelling ? Face::cancelling : Face::running;
    return resultURL ? Face::done : Face::form;
}

std::string ExportViewModel::statusTitle() const { return cancelling ? "Cancelling" : "Rendering"; }

std::string ExportViewModel::statusDetail() const {
    if (cancelling) return "Stopping\u2026";
    int percent = static_cast<int>(std::trunc(progress * 100));
    return std::to_string(percent) + "% \u00b7 " + (progress >= 1 ? "finishing the file" : "please wait");
}

std::filesystem::path ExportViewModel::freeFileURL(const std::filesystem::path& folder, const std::string& fileName) {
    std::filesystem::path candidate = folder / fileName;
    std::error_code ignored;
    if (!std::filesystem::exists(candidate, ignored)) return candidate;
    std::filesystem::path name(fileName);
    std::string stem = name.stem().string();
    std::string extension = name.extension().string();
    for (int n = 2;; ++n) {
        candidate = folder / (stem + " " + std::to_string(n) + extension);
        if (!std::filesystem::exists(candidate, ignored)) return candidate;
    }
}

} // namespace recorder
