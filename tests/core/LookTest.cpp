#include "json/JsonText.h"
#include "look/Look.h"
#include "look/LookPreset.h"
#include "undo/UndoStack.h"

#include <gtest/gtest.h>

using namespace recorder;

namespace {

Asset imageAsset(const std::string& path, std::optional<std::string> originalFilename = std::nullopt) {
    Asset asset;
    asset.id = Uuid::random();
    asset.kind = AssetKind::image;
    asset.relativePath = path;
    asset.originalFilename = std::move(originalFilename);
    return asset;
}

Project projectWithCamera(CameraLayout layout) {
    Project project("Take", {1920, 1080, 60}, "1.0");
    project.camera.layout = layout;
    return project;
}

// A look unlike a new project's in every part.
Look styledLook() {
    Project source = projectWithCamera(CameraLayout::bubbleTopLeft);
    source.style.padding = 0.12;
    source.style.background = {BackgroundStyle::Solid{*RGBAColor::fromHex("#1C1C1E")}};
    source.cursor.size = 1.5;
    source.camera.bubbleSize = 0.3;
    source.camera.bubbleShape = BubbleShape::roundedRect;
    source.audio.micVolume = 0.7;
    CaptionStyle captions;
    captions.preset = "bold";
    source.captionStyle = captions;
    WatermarkSettings watermark;
    watermark.text = "example.org";
    source.watermark = watermark;
    return Look(source);
}

} // namespace

TEST(Look, TakesTheCaptionStyleFromTheTrackWhenThereIsOne) {
    Project project = projectWithCamera(CameraLayout::bubbleBottomRight);
    CaptionStyle kept, onTrack;
    kept.preset = "kept";
    onTrack.preset = "track";
    project.captionStyle = kept;
    EXPECT_EQ(Look(project).captionStyle, kept);
    project.captions = CaptionTrack{{}, onTrack, false, std::nullopt};
    EXPECT_EQ(Look(project).captionStyle, onTrack);
}

TEST(Look, ListsBackgroundThenWatermarkThenAvatar) {
    Uuid background = Uuid::random(), mark = Uuid::random(), avatar = Uuid::random();
    Look look;
    look.style.background = {BackgroundStyle::Image{background}};
    look.watermark = WatermarkSettings{};
    look.watermark->imageAssetID = mark;
    look.camera.avatarAssetID = avatar;
    EXPECT_EQ(look.assetIDs(), (std::vector<Uuid>{background, mark, avatar}));
    look.style.background = {BackgroundStyle::BlurredWallpaper{background, 30}};
    EXPECT_EQ(look.assetIDs(), (std::vector<Uuid>{mark, avatar})) << "a wallpaper is the project's own";
}

TEST(LookApply, TakesFrameCursorCameraAndSoundWithTheFrame) {
    Look look = styledLook();
    Project project = projectWithCamera(CameraLayout::bubbleBottomRight);
    project.camera.keyframes.push_back({Uuid::random(), 2, CameraLayout::fullScreen});
    project.camera.transition = CameraTransition::pop;
    auto keyframes = project.camera.keyframes;
    look.apply(project, Look::Parts::frame, {});
    EXPECT_EQ(project.style, look.style);
    EXPECT_EQ(project.cursor, look.cursor);
    EXPECT_EQ(project.audio, look.audio);
    EXPECT_EQ(project.camera.layout, CameraLayout::bubbleTopLeft);
    EXPECT_EQ(project.camera.bubbleShape, BubbleShape::roundedRect);
    EXPECT_EQ(project.camera.keyframes, keyframes);
    EXPECT_EQ(project.camera.transition, CameraTransition::pop);
    EXPECT_FALSE(project.captionStyle) << "captions weren't asked for";
    EXPECT_FALSE(project.watermark) << "the watermark wasn't asked for";
}

TEST(LookApply, MapsAnImageBackgroundOrFallsBackToTheDefaultGradient) {
    Uuid saved = Uuid::random(), brought = Uuid::random();
    Look look;
    look.style.background = {BackgroundStyle::Image{saved}};
    Project mapped = projectWithCamera(CameraLayout::hidden), unmapped = mapped;
    look.apply(mapped, Look::Parts::frame, {{saved, brought}});
    EXPECT_EQ(mapped.style.background, (BackgroundStyle{BackgroundStyle::Image{brought}}));
    unmapped.style.background = {BackgroundStyle::Solid{}};
    look.apply(unmapped, Look::Parts::frame, {});
    EXPECT_EQ(unmapped.style.background, BackgroundStyle::defaultGradient());
}

TEST(LookApply, ShowsTheProjectsOwnWallpaperOrKeepsItsBackground) {
    Look look;
    look.style.background = {BackgroundStyle::BlurredWallpaper{Uuid::random(), 42}};
    look.style.padding = 0.2;

    Project withWallpaper = projectWithCamera(CameraLayout::hidden);
    withWallpaper.assets = {imageAsset("photo.png", "photo.png"), imageAsset("wallpaper.jpg", "wallpaper")};
    look.apply(withWallpaper, Look::Parts::frame, {});
    EXPECT_EQ(withWallpaper.style.background,
              (BackgroundStyle{BackgroundStyle::BlurredWallpaper{withWallpaper.assets[1].id, 42}}));

    Project without = projectWithCamera(CameraLayout::hidden);
    BackgroundStyle own{BackgroundStyle::Solid{*RGBAColor::fromHex("#F4F1EA")}};
    without.style.background = own;
    look.apply(without, Look::Parts::frame, {});
    EXPECT_EQ(without.style.background, own);
    EXPECT_EQ(without.style.padding, 0.2) << "the rest of the style is still taken";
}

TEST(LookApply, LeavesAHiddenCameraHiddenAndNeverHidesOne) {
    Look shown = styledLook();
    Project hidden = projectWithCamera(CameraLayout::hidden);
    shown.apply(hidden, Look::Parts::all, {});
    EXPECT_EQ(hidden.camera.layout, CameraLayout::hidden);
    EXPECT_EQ(hidden.camera.bubbleSize, 0.3) << "the bubble's look is still taken";

    Look hiding = shown;
    hiding.camera.layout = CameraLayout::hidden;
    Project visible = projectWithCamera(CameraLayout::sideBySide);
    hiding.apply(visible, Look::Parts::all, {});
    EXPECT_EQ(visible.camera.layout, CameraLayout::sideBySide);
}

TEST(LookApply, MapsTheAvatarAndShowsItOnlyWhenOneIsLeft) {
    Uuid saved = Uuid::random(), brought = Uuid::random();
    Look look;
    look.camera.avatarAssetID = saved;
    look.camera.showAvatar = true;
    Project mapped = projectWithCamera(CameraLayout::bubbleBottomRight), unmapped = mapped;
    look.apply(mapped, Look::Parts::frame, {{saved, brought}});
    EXPECT_EQ(mapped.camera.avatarAssetID, brought);
    EXPECT_TRUE(mapped.camera.showAvatar);
    unmapped.camera.avatarAssetID = Uuid::random();
    look.apply(unmapped, Look::Parts::frame, {});
    EXPECT_FALSE(unmapped.camera.avatarAssetID);
    EXPECT_FALSE(unmapped.camera.showAvatar);
}

TEST(LookApply, MapsTheWatermarkImageAndClearsAWatermarkTheLookLacks) {
    Uuid saved = Uuid::random(), brought = Uuid::random();
    Look look;
    look.watermark = WatermarkSettings{};
    look.watermark->imageAssetID = saved;
    Project mapped = projectWithCamera(CameraLayout::hidden), unmapped = mapped;
    look.apply(mapped, Look::Parts::watermark, {{saved, brought}});
    EXPECT_EQ(mapped.watermark->imageAssetID, brought);
    look.apply(unmapped, Look::Parts::watermark, {});
    ASSERT_TRUE(unmapped.watermark);
    EXPECT_FALSE(unmapped.watermark->imageAssetID);

    Look plain;
    plain.apply(mapped, Look::Parts::watermark, {});
    EXPECT_FALSE(mapped.watermark);
}

TEST(LookApply, SetsTheCaptionStyleOnTheTrackAndTheProject) {
    Look look = styledLook();
    Project withTrack = projectWithCamera(CameraLayout::hidden), withoutTrack = withTrack;
    withTrack.captions = CaptionTrack{};
    look.apply(withTrack, Look::Parts::captions, {});
    EXPECT_EQ(withTrack.captions->style, *look.captionStyle);
    EXPECT_EQ(withTrack.captionStyle, look.captionStyle);
    look.apply(withoutTrack, Look::Parts::captions, {});
    EXPECT_EQ(withoutTrack.captionStyle, look.captionStyle);
    EXPECT_FALSE(withoutTrack.captions);
}

TEST(LookApply, ALookWithoutCaptionStyleLeavesTheProjects) {
    CaptionStyle own;
    own.preset = "own";
    Project project = projectWithCamera(CameraLayout::hidden);
    project.captionStyle = own;
    project.captions = CaptionTrack{{}, own, false, std::nullopt};
    Look{}.apply(project, Look::Parts::all, {});
    EXPECT_EQ(project.captionStyle, own);
    EXPECT_EQ(project.captions->style, own);
}

TEST(LookApply, CaptionsWithWatermarkLeavesTheFrameAlone) {
    EXPECT_EQ(Look::Parts{6}, Look::Parts::captions | Look::Parts::watermark);
    Look look = styledLook();
    Project project = projectWithCamera(CameraLayout::bubbleBottomRight);
    Project before = project;
    look.apply(project, Look::Parts{6}, {});
    EXPECT_EQ(project.style, before.style);
    EXPECT_EQ(project.camera, before.camera);
    EXPECT_EQ(project.watermark, look.watermark);
    EXPECT_EQ(project.captionStyle, look.captionStyle);
}

TEST(LookApply, UndoingAnAppliedLookRestoresTheProject) {
    Project original = projectWithCamera(CameraLayout::bubbleBottomRight);
    UndoStack<Project> history(original);
    Project styled = original;
    styledLook().apply(styled, Look::Parts::all, {});
    history.push(styled, "Apply style");
    ASSERT_TRUE(history.undo());
    EXPECT_EQ(history.current(), original);
}

TEST(LookPreset, WritesEveryKeyAndReadsItsOwnFileBack) {
    Look look = styledLook();
    Uuid asset = Uuid::random();
    look.camera.avatarAssetID = asset;
    LookPreset preset{Uuid::random(), "Clean", Date(1'800'000'000), look, {{asset, "files/" + asset.string() + "/me.png"}}};
    std::string text = JsonText::pretty(preset.toJson());
    EXPECT_NE(text.find("\"files\" : {\n    \"" + asset.string() + "\" : \"files\\/"), std::string::npos) << text;
    EXPECT_NE(text.find("\"savedAt\" : \"2027-01-15T08:00:00Z\""), std::string::npos);
    EXPECT_EQ(LookPreset::fromJson(JsonReader(JsonText::parse(text), "")), preset);
}

TEST(LookPreset, ReadsFilesWrittenAsAlternatingIdsAndPaths) {
    Uuid asset = Uuid::random();
    auto json = LookPreset{Uuid::random(), "A", Date(0), Look{}, {}}.toJson();
    json["files"] = nlohmann::json::array({asset.string(), "files/x/a.png"});
    auto preset = LookPreset::fromJson(JsonReader(json, ""));
    EXPECT_EQ(preset.files.at(asset), "files/x/a.png");
}

TEST(LookPreset, RefusesAFileWithoutFilesOrWithAForeignShape) {
    auto json = LookPreset{Uuid::random(), "A", Date(0), Look{}, {}}.toJson();
    auto withoutFiles = json;
    withoutFiles.erase("files");
    EXPECT_THROW(LookPreset::fromJson(JsonReader(withoutFiles, "")), DecodingError);
    json["files"] = {{"not an id", "a.png"}};
    EXPECT_THROW(LookPreset::fromJson(JsonReader(json, "")), DecodingError);
    json["files"] = nlohmann::json::object();
    json["look"].erase("camera");
    EXPECT_THROW(LookPreset::fromJson(JsonReader(json, "")), DecodingError);
}

TEST(CameraLook, LeavesOutAnAbsentAvatar) {
    auto json = CameraLook(CameraSettings{}).toJson();
    EXPECT_FALSE(json.contains("avatarAssetID"));
    EXPECT_FALSE(json.contains("keyframes"));
    EXPECT_EQ(CameraLook::fromJson(JsonReader(json, "")), CameraLook(CameraSettings{}));
}
