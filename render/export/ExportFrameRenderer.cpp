#include "export/ExportFrameRenderer.h"

#include "decode/MediaError.h"
#include "log/Log.h"
#include "package/ProjectPackage.h"
#include "sources/StillImageSource.h"

#include <algorithm>
#include <cstring>

namespace recorder {

namespace {

Project withoutRecordings(Project project) {
    std::erase_if(project.assets,
                  [](const Asset& asset) { return asset.kind == AssetKind::screen || asset.kind == AssetKind::camera; });
    project.camera.showAvatar = false;
    return project;
}

SourceImage shown(const std::optional<FrameImage>& image) { return image ? SourceImage(*image) : SourceImage(); }

} // namespace

ExportFrameRenderer::ExportFrameRenderer(Project project, std::filesystem::path package, int width, int height)
    : project_(std::move(project)), mediaOnly_(withoutRecordings(project_)), package_(std::move(package)),
      width_(width), height_(height), media_(package_) {}

void ExportFrameRenderer::open() {
    events_ = EventLog::load(project_, package_);
    screen_ = openRecording(AssetKind::screen, false);
    openAvatar();
    if (avatar_.isNull()) camera_ = openRecording(AssetKind::camera, true);
    media_.prepareBackground(renderer_, project_);
}

std::unique_ptr<ForwardVideoSource> ExportFrameRenderer::openRecording(AssetKind kind, bool skipsBlackFrames) const {
    const Asset* asset = project_.asset(kind);
    if (!asset) return nullptr;
    try {
        return std::make_unique<ForwardVideoSource>(ProjectPackage::assetURL(*asset, package_), skipsBlackFrames);
    } catch (const MediaError& error) {
        Log::error("export", error.what());
        return nullptr;
    }
}

void ExportFrameRenderer::openAvatar() {
    if (!project_.camera.showAvatar || !project_.camera.avatarAssetID) return;
    const Asset* asset = project_.asset(*project_.camera.avatarAssetID);
    if (!asset) return;
    try {
        avatar_ = SourceImage(StillImageSource(ProjectPackage::assetURL(*asset, package_)).image);
    } catch (const MediaError& error) {
        Log::error("export", error.what());
    }
}

FrameInputs ExportFrameRenderer::inputs(double time) {
    FrameInputs in = media_.inputs(mediaOnly_, time);
    in.time = time;
    auto clip = project_.sourceTime(time);
    if (!clip) return in;
    if (screen_) in.screen = shown(screen_->frame(clip->time));
    if (!avatar_.isNull()) {
        in.camera = avatar_;
        in.cameraIsAvatar = true;
    } else if (camera_) {
        in.camera = shown(camera_->frame(clip->time - project_.asset(AssetKind::camera)->startOffset));
    }
    return in;
}

void ExportFrameRenderer::draw(std::int64_t, double time, std::uint8_t* bgra, int stride) {
    QImage frame = renderer_.render(project_, inputs(time), events_ ? &*events_ : nullptr, width_, height_);
    int rowBytes = std::min(stride, width_ * 4);
    for (int y = 0; y < height_; ++y) {
        std::uint8_t* row = bgra + std::ptrdiff_t(y) * stride;
        if (frame.isNull() || y >= frame.height())
            std::memset(row, 0, std::size_t(rowBytes));
        else
            std::memcpy(row, frame.constScanLine(y), std::size_t(std::min<qsizetype>(rowBytes, frame.bytesPerLine())));
    }
}

} // namespace recorder
