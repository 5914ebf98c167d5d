#include "VideoImport.h"

#include "audio/AudioFileReader.h"
#include "brand/Brand.h"
#include "import/SoundExtractor.h"
#include "import/VideoFileInfo.h"
#include "look/LookLibrary.h"
#include "package/ProjectPackage.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace recorder::VideoImport {

namespace {

namespace fs = std::filesystem;

fs::path freePackagePath(const fs::path& folder, const std::string& name) {
    std::string stem = ProjectPackage::fileStem(name);
    std::string extension = "." + Brand::shared().documentExtension;
    auto path = folder / (stem + extension);
    for (int n = 2; fs::exists(path); ++n) path = folder / (stem + " " + std::to_string(n) + extension);
    return path;
}

fs::path freeAssetPath(const fs::path& package, const std::string& base, const std::string& extension) {
    auto assets = ProjectPackage::assetsURL(package);
    auto path = assets / (base + extension);
    for (int n = 2; fs::exists(path); ++n) path = assets / (base + "-" + std::to_string(n) + extension);
    return path;
}

// The canvas a recording of this shape gets: portrait is 1080 × 1920, near
// 16:9 stays 1920 × 1080, any other shape keeps its aspect at 1920 wide.
CanvasSettings canvasFor(const VideoFileInfo& info) {
    double aspect = info.pixelSize.height > 0 ? info.pixelSize.width / info.pixelSize.height : 1.0;
    int frameRate = info.frameRate >= 1 && info.frameRate <= 240 ? int(std::lround(info.frameRate)) : 30;
    if (aspect < 1) return {1080, 1920, frameRate};
    if (std::fabs(aspect - 1.7777777777777777) > 0.15) return {1920, int(std::lround(1920 / aspect)) & ~1, frameRate};
    return {1920, 1080, frameRate};
}

Asset videoAsset(const fs::path& video, const fs::path& package, const VideoFileInfo& info) {
    Asset asset;
    asset.id = Uuid::random();
    asset.kind = AssetKind::screen;
    asset.relativePath = ProjectPackage::importAsset(video, package, std::nullopt);
    asset.duration = info.duration;
    asset.pixelSize = info.pixelSize;
    asset.originalFilename = video.filename().string();
    return asset;
}

Asset soundAsset(const fs::path& video, const fs::path& package, const VideoFileInfo& info) {
    auto file = freeAssetPath(package, video.stem().string(), ".m4a");
    SoundExtractor::extract(video, file);
    Asset asset;
    asset.id = Uuid::random();
    asset.kind = AssetKind::microphone;
    asset.relativePath = file.filename().string();
    asset.duration = AudioFileReader(file).duration();
    asset.startOffset = info.soundStartOffset;
    return asset;
}

Project makeProject(const fs::path& video, const fs::path& package, const VideoFileInfo& info) {
    Project project(ProjectPackage::displayName(package.stem().string()), canvasFor(info), Brand::shared().version);
    Asset screen = videoAsset(video, package, info);
    project.assets.push_back(screen);
    if (info.hasSound) project.assets.push_back(soundAsset(video, package, info));
    project.clips.push_back({Uuid::random(), screen.id, 0, info.duration, 1});
    project.camera.layout = CameraLayout::hidden;
    project.fromVideo = true;
    return project;
}

std::string logLine(const fs::path& video, const VideoFileInfo& info) {
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.1f", info.duration);
    return "opened video " + video.filename().string() + ": " + seconds + " s, " +
           (info.hasSound ? "with sound" : "without sound");
}

} // namespace

Imported importVideo(const fs::path& video, const fs::path& recordingsFolder, const std::optional<std::string>& name,
                     const LookLibrary* looks, const Log& log) {
    // A file FFmpeg can't open has no video track either.
    auto info = VideoFileInfo::read(video);
    if (!info || !info->hasVideo) throw Failure::noVideo();

    fs::create_directories(recordingsFolder);
    auto package = freePackagePath(recordingsFolder, name.value_or(video.stem().string()));
    try {
        ProjectPackage::createAssetsFolder(package);
        Project project = makeProject(video, package, *info);
        if (looks) looks->applyLast(project, package, Look::Parts::captions | Look::Parts::watermark);
        ProjectPackage::save(project, package);
        if (log) log(logLine(video, *info));
        return {package, ProjectPackage::load(package)};
    } catch (...) {
        std::error_code ignored;
        fs::remove_all(package, ignored);
        throw;
    }
}

} // namespace recorder::VideoImport
