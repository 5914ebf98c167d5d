#include "frames/ProjectFrameSources.h"

#include "compose/BackgroundCache.h"
#include "decode/MediaError.h"
#include "log/Log.h"
#include "overlay/TextRaster.h"
#include "package/ProjectPackage.h"
#include "sources/AnimatedImageSource.h"

namespace recorder {

namespace {

std::unique_ptr<FrameSource> openMedia(AssetKind kind, const std::filesystem::path& file) {
    switch (kind) {
    case AssetKind::image: return std::make_unique<StillImageSource>(file);
    case AssetKind::gif: return std::make_unique<AnimatedImageSource>(file);
    case AssetKind::video: return std::make_unique<VideoFrameSource>(file);
    default: return nullptr;
    }
}

SourceImage shown(const std::optional<FrameImage>& image) {
    return image ? SourceImage(*image) : SourceImage();
}

// The raster's pixels, kept alive by the frame that wraps them.
FrameImage frameOf(const QImage& raster) {
    if (raster.isNull()) return {};
    auto owned = std::make_shared<QImage>(raster.convertToFormat(QImage::Format_ARGB32_Premultiplied));
    return FrameImage(owned->width(), owned->height(), int(owned->bytesPerLine()), owned->bits(), owned, false);
}

} // namespace

template <class Source>
Source* ProjectFrameSources::open(std::unique_ptr<Source>& slot, bool& tried, const Asset* asset,
                                  bool skipsBlackFrames) {
    if (tried || !asset) return slot.get();
    tried = true;
    try {
        if constexpr (std::is_same_v<Source, VideoFrameSource>)
            slot = std::make_unique<Source>(ProjectPackage::assetURL(*asset, package_), skipsBlackFrames);
        else
            slot = std::make_unique<Source>(ProjectPackage::assetURL(*asset, package_));
    } catch (const MediaError& error) {
        Log::error("render", error.what());
    }
    return slot.get();
}

FrameInputs ProjectFrameSources::inputs(const Project& project, double time) {
    FrameInputs in;
    in.time = time;
    if (auto clip = project.sourceTime(time)) {
        if (auto* screen = open(screen_, triedScreen_, project.asset(AssetKind::screen)))
            in.screen = shown(screen->frame(clip->time));
        const Asset* avatar = project.camera.showAvatar && project.camera.avatarAssetID
                                  ? project.asset(*project.camera.avatarAssetID)
                                  : nullptr;
        if (auto* still = open(avatar_, triedAvatar_, avatar)) {
            in.camera = shown(still->frame(0));
            in.cameraIsAvatar = true;
        } else if (const Asset* camera = project.asset(AssetKind::camera)) {
            if (auto* source = open(camera_, triedCamera_, camera, true))
                in.camera = shown(source->frame(clip->time - camera->startOffset));
        }
    }
    for (const MediaItem* item : project.visibleMedia(time)) {
        SourceImage image = mediaImage(project, *item, time);
        if (!image.isNull()) in.mediaImages[item->id] = image;
    }
    return in;
}

SourceImage ProjectFrameSources::mediaImage(const Project& project, const MediaItem& item, double time) {
    if (item.kind == AssetKind::text) return textImage(item);
    if (item.kind == AssetKind::shape || item.kind == AssetKind::blur) return {};
    auto found = media_.find(item.id);
    if (found == media_.end()) {
        std::unique_ptr<FrameSource> source;
        const Asset* asset = project.asset(item.assetID);
        try {
            if (asset) source = openMedia(item.kind, ProjectPackage::assetURL(*asset, package_));
        } catch (const MediaError& error) {
            Log::error("render", error.what());
        }
        found = media_.emplace(item.id, std::move(source)).first;
    }
    if (!found->second) return {};
    return shown(found->second->frame(item.sourceTime(time)));
}

SourceImage ProjectFrameSources::textImage(const MediaItem& item) {
    std::string text = item.text.value_or("");
    RGBAColor colour = item.textColor.value_or(RGBAColor{1, 1, 1, 1});
    std::string key = TextRaster::key(text, colour, item.textStyle);
    Text& entry = texts_[item.id];
    if (entry.source.key != key || entry.image.isNull()) {
        entry.source.image = frameOf(TextRaster::make(text, colour, item.textStyle));
        entry.source.key = std::move(key);
        entry.image = shown(entry.source.frame(0));
    }
    return entry.image;
}

void ProjectFrameSources::prepareBackground(FrameRenderer& renderer, const Project& project) {
    const BackgroundStyle& style = project.style.background;
    std::string key = BackgroundCache::description(style);
    if (key == backgroundKey_) return;
    backgroundKey_ = key;
    renderer.setBackgroundImage({});
    renderer.setWallpaperImage({});
    if (const auto* image = std::get_if<BackgroundStyle::Image>(&style.value))
        renderer.setBackgroundImage(picture(project, image->assetID));
    else if (const auto* wallpaper = std::get_if<BackgroundStyle::BlurredWallpaper>(&style.value))
        renderer.setWallpaperImage(picture(project, wallpaper->assetID));
    renderer.dropBackgroundCache();
}

SourceImage ProjectFrameSources::picture(const Project& project, const Uuid& assetID) const {
    const Asset* asset = project.asset(assetID);
    if (!asset) return {};
    try {
        return SourceImage(StillImageSource(ProjectPackage::assetURL(*asset, package_)).image);
    } catch (const MediaError& error) {
        Log::error("render", error.what());
        return {};
    }
}

} // namespace recorder
