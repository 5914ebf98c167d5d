#include "recording/RecordingProjectBuilder.h"

#include "brand/Brand.h"
#include "log/Log.h"
#include "look/BundledBackgrounds.h"
#include "look/LookLibrary.h"
#include "motion/AutoZoomGenerator.h"
#include "package/ProjectPackage.h"
#include "recording/RecordingCanvas.h"

#include <fstream>
#include <stdexcept>

namespace recorder::RecordingProjectBuilder {

namespace {

using Path = std::filesystem::path;

void writeAtomically(const Path& file, const std::string& bytes) {
    Path temporary = file;
    temporary += ".tmp";
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        out << bytes;
        if (!out.flush()) throw std::runtime_error("could not write " + temporary.string());
    }
    std::filesystem::rename(temporary, file);
}

Asset asset(AssetKind kind, std::string relativePath) {
    Asset a;
    a.id = Uuid::random();
    a.kind = kind;
    a.relativePath = std::move(relativePath);
    return a;
}

// A track's offset from the screen's first sample; 0 when either is unknown.
double startOffset(const CapturedTrack& track, double screenFirst) {
    return track.firstSampleHostSeconds ? *track.firstSampleHostSeconds - screenFirst : 0;
}

void addScreen(Project& project, const ScreenCaptureResult& screen) {
    Asset a = asset(AssetKind::screen, "screen.mov");
    a.duration = screen.duration;
    a.pixelSize = screen.pixelSize;
    a.captureRect = screen.captureRect;
    a.scaleFactor = screen.scaleFactor;
    project.assets.push_back(a);
}

void addSystemAudio(Project& project, const ScreenCaptureResult& screen, double screenFirst) {
    std::error_code error;
    if (!screen.systemAudioURL || !std::filesystem::exists(*screen.systemAudioURL, error)) return;
    Asset a = asset(AssetKind::systemAudio, screen.systemAudioURL->filename().string());
    a.duration = screen.duration;
    if (screen.systemAudioFirstSampleHostSeconds) a.startOffset = *screen.systemAudioFirstSampleHostSeconds - screenFirst;
    project.assets.push_back(a);
}

void addTrack(Project& project, AssetKind kind, const std::optional<CapturedTrack>& track, double screenFirst,
              std::optional<Size> pixelSize) {
    if (!track || track->duration <= 0) return;
    Asset a = asset(kind, track->url.filename().string());
    a.duration = track->duration;
    a.pixelSize = pixelSize;
    a.startOffset = startOffset(*track, screenFirst);
    project.assets.push_back(a);
}

void addEvents(Project& project, const EventLog& events, const Path& assets) {
    try {
        writeAtomically(assets / "events.json", events.encoded());
        project.assets.push_back(asset(AssetKind::events, "events.json"));
    } catch (const std::exception& error) {
        Log::info("capture", std::string("events.json: ") + error.what());
    }
}

void addWallpaper(Project& project, const Path& assets) {
    std::error_code error;
    std::filesystem::directory_iterator entries(assets, error);
    if (error) return;
    for (const auto& entry : entries) {
        std::string name = entry.path().filename().string();
        if (name.rfind("wallpaper.", 0) != 0) continue;
        Asset a = asset(AssetKind::image, name);
        a.originalFilename = "wallpaper";
        project.assets.push_back(a);
        return;
    }
}

void applyLook(Project& project, const Path& package, const LookLibrary* looks) {
    if (looks && looks->applyLast(project, package, Look::Parts::all)) return;
    try {
        Asset picture = BundledBackgrounds::importInto(BundledBackgrounds::defaultBackground(), package);
        project.assets.push_back(picture);
        project.style.background = {BackgroundStyle::Image{picture.id}};
    } catch (const std::exception& error) {
        Log::error("capture", std::string("default background: ") + error.what());
    }
}

} // namespace

Project build(const Results& results, const LookLibrary* looks) {
    const ScreenCaptureResult& screen = results.screen;
    Path assets = ProjectPackage::assetsURL(results.package);
    Project project(results.package.stem().string(), RecordingCanvas::forPixelSize(screen.pixelSize, results.fps),
                    Brand::shared().version);
    double screenFirst = screen.firstSampleHostSeconds.value_or(0);

    addScreen(project, screen);
    addSystemAudio(project, screen, screenFirst);
    addTrack(project, AssetKind::camera, results.camera, screenFirst, results.cameraPixelSize);
    addTrack(project, AssetKind::microphone, results.microphone, screenFirst, std::nullopt);
    addEvents(project, results.events, assets);
    addWallpaper(project, assets);
    if (!project.asset(AssetKind::camera)) project.camera.layout = CameraLayout::hidden;

    Clip clip;
    clip.id = Uuid::random();
    clip.assetID = project.assets.front().id;
    clip.sourceEnd = screen.duration;
    project.clips.push_back(clip);

    applyLook(project, results.package, looks);
    project.zooms = AutoZoomGenerator().generate(results.events, project);
    return project;
}

} // namespace recorder::RecordingProjectBuilder
