#include "core/ProjectSamples.h"

#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace recorder::samples {

namespace fs = std::filesystem;

Uuid fixedID(int n) {
    char text[40];
    std::snprintf(text, sizeof text, "00000000-0000-4000-8000-%012d", n);
    return *Uuid::parse(text);
}

namespace {

MediaItem mediaItem(int n, AssetKind kind, MediaAnimation in, MediaAnimation out) {
    return {.id = fixedID(100 + n), .assetID = fixedID(n < 4 ? 10 + n : 200 + n), .kind = kind,
            .name = "Item " + std::to_string(n), .start = 1.0 / 3 + n, .end = 4.25 + n,
            .frame = {0.1, 0.2, 0.5, 0.30000000000000004}, .rotation = -12.5, .opacity = 0.8, .inAnimation = in,
            .outAnimation = out, .animationDuration = 0.45, .shadow = n % 2 == 0, .borderWidth = 2,
            .borderColor = {0.1, 0.2, 0.3, 0.4}, .cornerRadius = 12, .volume = 0.7, .fadeIn = 0.5, .fadeOut = 1e-7,
            .sourceOffset = 3.75, .zIndex = n - 3, .loops = n % 3 == 0, .hidden = n == 5, .locked = n == 6,
            .muted = n == 3, .speed = 1.5, .text = {}, .textColor = {}, .textStyle = {}, .shape = {},
            .blurStyle = {}, .blurAmount = {}};
}

CaptionStyle captionStyle(const std::string& preset) {
    return {.preset = preset, .fontName = "DejaVu Sans", .size = 0.05, .uppercase = true,
            .textColor = {1, 0.9, 0.8, 1}, .strokeWidth = 0.08, .strokeColor = {0, 0, 0, 0.5},
            .boxColor = RGBAColor{0.2, 0.2, 0.2, 0.6}, .shadow = false, .highlightCurrentWord = true,
            .highlightColor = {1, 0.8, 0, 1}, .highlightAsBox = true, .positionY = 0.9, .maxWordsPerLine = 5,
            .showEmoji = true, .emojiSize = 0.12};
}

} // namespace

Project fullProject() {
    Project p("Demo / Take 2", CanvasSettings{1080, 1920, 30}, "0.0.9");
    p.id = fixedID(1);
    p.createdAt = *Date::fromIso8601("2026-11-15T16:14:47Z");
    p.modifiedAt = *Date::fromIso8601("2026-11-16T08:00:00Z");

    const AssetKind recordingAndFileKinds[] = {AssetKind::screen, AssetKind::camera, AssetKind::microphone,
                                               AssetKind::systemAudio, AssetKind::events, AssetKind::image,
                                               AssetKind::gif, AssetKind::video, AssetKind::audio};
    int n = 0;
    for (AssetKind kind : recordingAndFileKinds) {
        p.assets.push_back({.id = fixedID(10 + n), .kind = kind, .relativePath = "file-" + std::to_string(n) + ".bin",
                            .duration = {}, .pixelSize = {}, .startOffset = 0.125 * n, .captureRect = {},
                            .scaleFactor = {}, .originalFilename = {}});
        ++n;
    }
    p.assets[0] = {.id = fixedID(10), .kind = AssetKind::screen, .relativePath = "screen.mov", .duration = 12.5,
                   .pixelSize = Size{3840, 2160}, .startOffset = 0, .captureRect = Rect{0, 25, 1920, 1055},
                   .scaleFactor = 2, .originalFilename = "Screen/Recording.mov"};

    p.clips = {{fixedID(20), fixedID(10), 0, 4.5, 1}, {fixedID(21), fixedID(10), 6.1, 12.5, 1.5}};
    p.screenStart = 2.5;

    const Easing easings[] = {Easing::linear, Easing::easeInOut, Easing::easeOut, Easing::spring};
    for (int i = 0; i < 4; ++i)
        p.zooms.push_back({.id = fixedID(30 + i), .start = 1.0 + 2 * i, .end = 2.5 + 2 * i, .rect = {0.25, 0.1, 0.5, 0.5},
                           .inDuration = 0.4, .outDuration = 0.6, .easing = easings[i], .isAuto = i % 2 == 1, .keyframes = {}});
    p.zooms[0].keyframes = {{fixedID(40), 1.5, {0.1, 0.1, 0.4, 0.4}}, {fixedID(41), 2.25, {0.5, 0.5, 0.4, 0.4}}};

    p.style.background = BackgroundStyle{BackgroundStyle::Solid{{0.2, 0.4, 0.6, 1}}};
    p.style.padding = 0.1;
    p.style.deviceFrame = DeviceFrame::browser;
    p.style.motionBlur = 0;

    p.cursor = {.visible = false, .size = 2.25, .style = CursorStyle::ring, .hideWhenIdleAfter = 3,
                .tint = RGBAColor{1, 0, 0.5, 0.75}};

    p.camera.layout = CameraLayout::hidden;
    const CameraLayout later[] = {CameraLayout::bubbleBottomRight, CameraLayout::bubbleBottomLeft,
                                  CameraLayout::bubbleTopRight,    CameraLayout::bubbleTopLeft,
                                  CameraLayout::sideBySide,        CameraLayout::fullScreen};
    for (int i = 0; i < 6; ++i) p.camera.keyframes.push_back({fixedID(50 + i), 1.0 + i, later[i]});
    p.camera.bubbleSize = 0.3;
    p.camera.bubbleShape = BubbleShape::roundedRect;
    p.camera.mirrored = p.camera.shadow = false;
    p.camera.borderWidth = 4;
    p.camera.avatarAssetID = fixedID(15);
    p.camera.showAvatar = true;
    p.camera.transition = CameraTransition::twirl;
    p.camera.transitionDuration = 1.2;

    using A = MediaAnimation;
    p.media = {mediaItem(0, AssetKind::image, A::none, A::fade),
               mediaItem(1, AssetKind::gif, A::pop, A::slideUp),
               mediaItem(2, AssetKind::video, A::slideDown, A::slideLeft),
               mediaItem(3, AssetKind::audio, A::slideRight, A::shake),
               mediaItem(4, AssetKind::text, A::bounce, A::draw),
               mediaItem(5, AssetKind::blur, A::fade, A::none),
               mediaItem(6, AssetKind::shape, A::draw, A::pop)};
    p.media[4].text = "Hello, \"world\" / ünïcödé";
    p.media[4].textColor = RGBAColor{1, 1, 0, 1};
    p.media[4].textStyle = TextStyle{.fontName = "DejaVu Serif", .italic = true, .boxEnabled = true};
    p.media[5].blurStyle = "pixelate";
    p.media[5].blurAmount = 0.35;
    p.media[6].shape = ShapeSpec{.kind = ShapeKind::ellipse, .direction = ShapeDirection::upLeft, .filled = true};

    p.audio = {0.5, 0.75, true, false, true, true, true, 0.3};
    p.tracks.screen.hidden = true;
    p.tracks.zooms.locked = true;
    p.tracks.camera = {true, true};

    p.captions = CaptionTrack{
        {{fixedID(60), "Hello", 0.5, 0.9, true}, {fixedID(61), "there.", 0.95, 1.4, std::nullopt}},
        captionStyle("bold"), true, "en"};
    p.watermark = WatermarkSettings{.text = "example.org/me", .imageAssetID = fixedID(14),
                                    .fontName = "DejaVu Sans Mono", .placement = WatermarkPlacement::middleLeft,
                                    .showBrand = true, .brandPlacement = WatermarkPlacement::topCenter,
                                    .position = Point{0.25, 0.75}, .brandPosition = Point{0.9, 0.1}};
    p.packageFileName = "Demo : Take 2";
    p.fromVideo = true;
    p.captionStyle = captionStyle("karaoke");
    p.styleName = "Sunset";
    return p;
}

Project withEnumerationCases(Project p, int k) {
    auto pick = [k](auto& field, int count) { field = static_cast<std::remove_reference_t<decltype(field)>>(k % count); };
    const BackgroundStyle backgrounds[] = {BackgroundStyle{BackgroundStyle::Solid{{0.5, 0.5, 0.5, 1}}},
                                           BackgroundStyle::defaultGradient(),
                                           BackgroundStyle{BackgroundStyle::Image{fixedID(13)}},
                                           BackgroundStyle{BackgroundStyle::BlurredWallpaper{fixedID(13), 24}}};
    p.style.background = backgrounds[k % 4];
    pick(p.style.deviceFrame, 3);
    pick(p.cursor.style, 3);
    pick(p.camera.layout, 7);
    pick(p.camera.bubbleShape, 2);
    pick(*p.camera.transition, 7);
    for (auto& asset : p.assets) pick(asset.kind, 12);
    for (auto& zoom : p.zooms) pick(zoom.easing, 4);
    for (auto& item : p.media) {
        pick(item.kind, 12);
        pick(item.inAnimation, 10);
        pick(item.outAnimation, 10);
    }
    pick(p.media[6].shape->kind, 4);
    pick(p.media[6].shape->direction, 8);
    pick(p.watermark->placement, 9);
    pick(*p.watermark->brandPlacement, 9);
    return p;
}

std::string readBytes(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) throw std::runtime_error("can't read " + file.string());
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

void writeBytes(const fs::path& file, const std::string& bytes) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << bytes;
    if (!out) throw std::runtime_error("can't write " + file.string());
}

std::map<std::string, std::string> snapshot(const fs::path& root) {
    std::map<std::string, std::string> entries;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        std::string name = fs::relative(entry.path(), root).string();
        entries[name] = entry.is_directory() ? "<dir>" : readBytes(entry.path());
    }
    return entries;
}

TemporaryFolder::TemporaryFolder() {
    path_ = fs::temp_directory_path() / ("core-tests-" + Uuid::random().string());
    fs::create_directories(path_);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

} // namespace recorder::samples
