#include "look/Look.h"

#include <algorithm>

namespace recorder {

namespace {

std::optional<Uuid> mapped(const std::optional<Uuid>& id, const AssetMap& assetMap) {
    if (!id) return std::nullopt;
    auto it = assetMap.find(*id);
    if (it == assetMap.end()) return std::nullopt;
    return it->second;
}

// Each recording keeps its desktop picture under this name.
const Asset* wallpaperAsset(const Project& project) {
    auto it = std::find_if(project.assets.begin(), project.assets.end(), [](const Asset& asset) {
        return asset.kind == AssetKind::image && asset.originalFilename == "wallpaper";
    });
    return it == project.assets.end() ? nullptr : &*it;
}

} // namespace

Look::Look(const Project& project)
    : style(project.style), cursor(project.cursor), camera(project.camera), audio(project.audio),
      captionStyle(project.captions ? std::optional(project.captions->style) : project.captionStyle),
      watermark(project.watermark) {}

std::vector<Uuid> Look::assetIDs() const {
    std::vector<Uuid> ids;
    if (auto* image = std::get_if<BackgroundStyle::Image>(&style.background.value)) ids.push_back(image->assetID);
    if (watermark && watermark->imageAssetID) ids.push_back(*watermark->imageAssetID);
    if (camera.avatarAssetID) ids.push_back(*camera.avatarAssetID);
    return ids;
}

void Look::apply(Project& project, Parts parts, const AssetMap& assetMap) const {
    if (parts.contains(Parts::frame)) applyFrame(project, assetMap);
    if (parts.contains(Parts::captions)) applyCaptions(project);
    if (parts.contains(Parts::watermark)) applyWatermark(project, assetMap);
}

void Look::applyFrame(Project& project, const AssetMap& assetMap) const {
    BackgroundStyle background = backgroundFor(project, assetMap);
    project.style = style;
    project.style.background = std::move(background);
    project.cursor = cursor;
    applyCamera(project.camera, assetMap);
    project.audio = audio;
}

BackgroundStyle Look::backgroundFor(const Project& project, const AssetMap& assetMap) const {
    if (auto* wallpaper = std::get_if<BackgroundStyle::BlurredWallpaper>(&style.background.value)) {
        // The project shows its own desktop, or keeps what it has.
        const Asset* own = wallpaperAsset(project);
        if (!own) return project.style.background;
        return {BackgroundStyle::BlurredWallpaper{own->id, wallpaper->blurRadius}};
    }
    if (auto* image = std::get_if<BackgroundStyle::Image>(&style.background.value)) {
        auto id = mapped(image->assetID, assetMap);
        return id ? BackgroundStyle{BackgroundStyle::Image{*id}} : BackgroundStyle::defaultGradient();
    }
    return style.background;
}

void Look::applyCamera(CameraSettings& target, const AssetMap& assetMap) const {
    // A hidden camera stays hidden, and a look saved hidden doesn't hide one.
    if (target.layout != CameraLayout::hidden && camera.layout != CameraLayout::hidden) target.layout = camera.layout;
    target.bubbleSize = camera.bubbleSize;
    target.bubbleShape = camera.bubbleShape;
    target.mirrored = camera.mirrored;
    target.borderWidth = camera.borderWidth;
    target.shadow = camera.shadow;
    target.avatarAssetID = mapped(camera.avatarAssetID, assetMap);
    target.showAvatar = camera.showAvatar && target.avatarAssetID.has_value();
}

void Look::applyCaptions(Project& project) const {
    if (!captionStyle) return;
    project.captionStyle = captionStyle;
    if (project.captions) project.captions->style = *captionStyle;
}

void Look::applyWatermark(Project& project, const AssetMap& assetMap) const {
    project.watermark = watermark;
    if (project.watermark) project.watermark->imageAssetID = mapped(watermark->imageAssetID, assetMap);
}

Look Look::fromJson(const JsonReader& r) {
    Look look;
    look.style = r.get<StyleSettings>("style");
    look.cursor = r.get<CursorSettings>("cursor");
    look.camera = r.get<CameraLook>("camera");
    look.audio = r.get<AudioSettings>("audio");
    look.captionStyle = r.getOptional<CaptionStyle>("captionStyle");
    look.watermark = r.getOptional<WatermarkSettings>("watermark");
    return look;
}

nlohmann::json Look::toJson() const {
    nlohmann::json j{
        {"style", style.toJson()}, {"cursor", cursor.toJson()}, {"camera", camera.toJson()}, {"audio", audio.toJson()}};
    putOptional(j, "captionStyle", captionStyle);
    putOptional(j, "watermark", watermark);
    return j;
}

} // namespace recorder
