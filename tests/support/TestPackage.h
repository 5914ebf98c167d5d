#pragma once

#include "package/ProjectPackage.h"
#include "support/TestMedia.h"

#include <filesystem>
#include <string>

namespace recorder::test {

// A package on disk with real media files, built the way a recording ends:
// assets in "assets/", one clip over the screen file, the manifest saved.
class TestPackage {
public:
    TestPackage(const std::filesystem::path& folder, CanvasSettings canvas = {1920, 1080, 30})
        : path_(folder / "Test.tidereel"), project_("Test", canvas, "1.0") {
        ProjectPackage::createAssetsFolder(path_);
    }

    // A file made by ffmpeg in the assets folder, added as an asset.
    // A copy: a reference into the asset list would dangle at the next add.
    Asset add(AssetKind kind, const std::string& name, const std::string& ffmpegArguments, double duration,
               double startOffset = 0) {
        makeMedia(ProjectPackage::assetsURL(path_) / name, ffmpegArguments);
        return addExisting(kind, name, duration, startOffset);
    }

    Asset addExisting(AssetKind kind, const std::string& name, double duration, double startOffset = 0) {
        Asset asset;
        asset.id = Uuid::random();
        asset.kind = kind;
        asset.relativePath = name;
        asset.duration = duration;
        asset.startOffset = startOffset;
        project_.assets.push_back(asset);
        return project_.assets.back();
    }

    void clipOver(const Asset& screen, double sourceStart, double sourceEnd) {
        project_.clips.push_back({Uuid::random(), screen.id, sourceStart, sourceEnd, 1});
    }

    Project& project() { return project_; }
    const std::filesystem::path& path() const { return path_; }
    void save() { ProjectPackage::save(project_, path_); }

private:
    std::filesystem::path path_;
    Project project_;
};

} // namespace recorder::test
