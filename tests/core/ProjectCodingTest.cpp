#include "core/ProjectSamples.h"
#include "json/JsonText.h"
#include "package/ProjectMigrator.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace recorder;
using nlohmann::json;

namespace {

Project decodeText(const std::string& text) { return decodeJson<Project>(JsonText::parse(text), ""); }

std::vector<std::string> topLevelKeys(const std::string& prettyText) {
    std::vector<std::string> keys;
    std::size_t at = 0;
    while ((at = prettyText.find("\n  \"", at)) != std::string::npos) {
        at += 4;
        keys.push_back(prettyText.substr(at, prettyText.find('"', at) - at));
    }
    return keys;
}

} // namespace

TEST(ProjectCoding, AFullProjectSurvivesEncodeWriteParseDecodeAndWritesTheSameBytesAgain) {
    Project original = samples::fullProject();
    std::string first = JsonText::pretty(original.toJson());
    Project decoded = decodeText(first);
    EXPECT_EQ(decoded, original);
    EXPECT_EQ(JsonText::pretty(decoded.toJson()), first);
}

TEST(ProjectCoding, EveryCaseOfEveryEnumerationAndBackgroundSurvivesTheRoundTrip) {
    for (int k = 0; k < 12; ++k) {
        Project original = samples::withEnumerationCases(samples::fullProject(), k);
        std::string text = JsonText::pretty(original.toJson());
        Project decoded = decodeText(text);
        EXPECT_EQ(decoded, original) << "case " << k;
        EXPECT_EQ(JsonText::pretty(decoded.toJson()), text) << "case " << k;
    }
}

TEST(ProjectCoding, EnumerationsAreWrittenAsTheFileFormatsCaseNames) {
    auto names = []<class E>(E, int count) {
        std::vector<std::string> out;
        for (int i = 0; i < count; ++i) out.push_back(encodeJson(static_cast<E>(i)).template get<std::string>());
        return out;
    };
    using V = std::vector<std::string>;
    EXPECT_EQ(names(AssetKind{}, 12), (V{"screen", "camera", "microphone", "systemAudio", "events", "image", "gif",
                                         "video", "audio", "text", "blur", "shape"}));
    EXPECT_EQ(names(MediaAnimation{}, 10), (V{"none", "fade", "pop", "slideUp", "slideDown", "slideLeft",
                                              "slideRight", "shake", "bounce", "draw"}));
    EXPECT_EQ(names(CameraLayout{}, 7), (V{"hidden", "bubbleBottomRight", "bubbleBottomLeft", "bubbleTopRight",
                                           "bubbleTopLeft", "sideBySide", "fullScreen"}));
    EXPECT_EQ(names(CameraTransition{}, 7), (V{"instant", "smooth", "pop", "flip", "spin", "twirl", "bounce"}));
    EXPECT_EQ(names(Easing{}, 4), (V{"linear", "easeInOut", "easeOut", "spring"}));
    EXPECT_EQ(names(DeviceFrame{}, 3), (V{"none", "macbook", "browser"}));
    EXPECT_EQ(names(CursorStyle{}, 3), (V{"arrow", "dot", "ring"}));
    EXPECT_EQ(names(BubbleShape{}, 2), (V{"circle", "roundedRect"}));
    EXPECT_EQ(names(ShapeKind{}, 4), (V{"arrow", "line", "rectangle", "ellipse"}));
    EXPECT_EQ(names(ShapeDirection{}, 8),
              (V{"right", "downRight", "down", "downLeft", "left", "upLeft", "up", "upRight"}));
    EXPECT_EQ(names(WatermarkPlacement{}, 9), (V{"bottomRight", "bottomLeft", "topRight", "topLeft", "middleLeft",
                                                 "middleRight", "topCenter", "bottomCenter", "center"}));
}

TEST(ProjectCoding, TopLevelKeysStandInAscendingOrder) {
    EXPECT_EQ(topLevelKeys(JsonText::pretty(samples::fullProject().toJson())),
              (std::vector<std::string>{"appVersion", "assets", "audio", "camera", "canvas", "captionStyle",
                                        "captions", "clips", "createdAt", "cursor", "fromVideo", "id", "media",
                                        "modifiedAt", "name", "packageFileName", "schemaVersion", "screenStart",
                                        "style", "styleName", "tracks", "watermark", "zooms"}));
}

TEST(ProjectCoding, ANewProjectWritesEveryDefaultAndNoneOfTheOptionalKeys) {
    Project fresh("Demo", CanvasSettings{1920, 1080, 60}, "1.0");
    json written = JsonText::parse(JsonText::pretty(fresh.toJson()));
    EXPECT_EQ(topLevelKeys(JsonText::pretty(written)),
              (std::vector<std::string>{"appVersion", "assets", "audio", "camera", "canvas", "clips", "createdAt",
                                        "cursor", "id", "media", "modifiedAt", "name", "schemaVersion",
                                        "screenStart", "style", "tracks", "zooms"}));
    EXPECT_EQ(written["schemaVersion"], 12);
    EXPECT_EQ(written["createdAt"], written["modifiedAt"]);
    EXPECT_EQ(JsonText::compact(written["style"]),
              "{\"background\":{\"gradient\":{\"angle\":135,"
              "\"from\":{\"a\":1,\"b\":0.4745098039215686,\"g\":0.9882352941176471,\"r\":0.8313725490196079},"
              "\"to\":{\"a\":1,\"b\":0.6313725490196078,\"g\":0.9019607843137255,\"r\":0.5882352941176471}}},"
              "\"cornerRadius\":16,\"deviceFrame\":\"none\",\"motionBlur\":0.5,\"padding\":0.08,"
              "\"shadowOffsetY\":20,\"shadowOpacity\":0.45,\"shadowRadius\":40}");
    EXPECT_EQ(JsonText::compact(written["cursor"]),
              "{\"clickHighlightColor\":{\"a\":0.85,\"b\":0.631,\"g\":0.902,\"r\":0.588},\"clickRipples\":true,"
              "\"hideWhenIdleAfter\":0,\"size\":3,\"smoothing\":0.6,\"style\":\"arrow\",\"visible\":true}");
    EXPECT_EQ(JsonText::compact(written["camera"]),
              "{\"borderWidth\":0,\"bubbleShape\":\"circle\",\"bubbleSize\":0.24,\"keyframes\":[],"
              "\"layout\":\"bubbleBottomRight\",\"mirrored\":true,\"shadow\":true,\"showAvatar\":false}");
    EXPECT_EQ(JsonText::compact(written["audio"]),
              "{\"duckLevel\":0.25,\"duckMusic\":false,\"micLeveling\":false,\"micMuted\":false,"
              "\"micNoiseRemoval\":false,\"micVolume\":1,\"systemMuted\":false,\"systemVolume\":1}");
    EXPECT_EQ(JsonText::compact(written["tracks"]),
              "{\"camera\":{\"hidden\":false,\"locked\":false},\"screen\":{\"hidden\":false,\"locked\":false},"
              "\"zooms\":{\"hidden\":false,\"locked\":false}}");
    EXPECT_EQ(decodeText(JsonText::pretty(written)), fresh);
}

TEST(ProjectCoding, AZoomWithAKeyframeIsWrittenExactlyInTheFileForm) {
    ZoomSegment zoom{samples::fixedID(7), 1, 2.5, {0.25, 0.1, 0.5, 0.5}, 0.4, 0.6, Easing::spring, true,
                     {{samples::fixedID(8), 1.75, {0, 0, 0.5, 0.5}}}};
    EXPECT_EQ(JsonText::pretty(zoom.toJson()),
              "{\n"
              "  \"easing\" : \"spring\",\n"
              "  \"end\" : 2.5,\n"
              "  \"id\" : \"00000000-0000-4000-8000-000000000007\",\n"
              "  \"inDuration\" : 0.4,\n"
              "  \"isAuto\" : true,\n"
              "  \"keyframes\" : [\n"
              "    {\n"
              "      \"id\" : \"00000000-0000-4000-8000-000000000008\",\n"
              "      \"rect\" : {\n"
              "        \"height\" : 0.5,\n"
              "        \"width\" : 0.5,\n"
              "        \"x\" : 0,\n"
              "        \"y\" : 0\n"
              "      },\n"
              "      \"time\" : 1.75\n"
              "    }\n"
              "  ],\n"
              "  \"outDuration\" : 0.6,\n"
              "  \"rect\" : {\n"
              "    \"height\" : 0.5,\n"
              "    \"width\" : 0.5,\n"
              "    \"x\" : 0.25,\n"
              "    \"y\" : 0.1\n"
              "  },\n"
              "  \"start\" : 1\n"
              "}");
}

TEST(ProjectCoding, IdentifiersAreWrittenUpperCaseAndReadInEitherCase) {
    Project project = samples::fullProject();
    project.id = *Uuid::parse("6ba7b810-9dad-41d1-80b4-00c04fd430c8");
    json written = project.toJson();
    EXPECT_EQ(written["id"], "6BA7B810-9DAD-41D1-80B4-00C04FD430C8");
    written["id"] = "6ba7b810-9dad-41d1-80b4-00c04fd430c8";
    EXPECT_EQ(decodeJson<Project>(written, "").id, project.id);
}

TEST(ProjectCoding, ALeftOutOptionalFieldIsNeitherWrittenNorInventedOnReading) {
    Project project = samples::fullProject();
    project.captions.reset();
    project.watermark.reset();
    project.packageFileName.reset();
    project.fromVideo.reset();
    project.captionStyle.reset();
    project.styleName.reset();
    std::string text = JsonText::pretty(project.toJson());
    for (const char* key : {"captions", "watermark", "packageFileName", "fromVideo", "captionStyle", "styleName"})
        EXPECT_EQ(text.find("\"" + std::string(key) + "\""), std::string::npos) << key;
    EXPECT_EQ(text.find("null"), std::string::npos);
    EXPECT_EQ(decodeText(text), project);
}

TEST(ProjectCoding, FromVideoKeepsItsThreeStatesAbsentFalseAndTrue) {
    for (std::optional<bool> state : {std::optional<bool>(), std::optional<bool>(false), std::optional<bool>(true)}) {
        Project project = samples::fullProject();
        project.fromVideo = state;
        json written = JsonText::parse(JsonText::pretty(project.toJson()));
        EXPECT_EQ(written.contains("fromVideo"), state.has_value());
        EXPECT_EQ(decodeJson<Project>(written, "").fromVideo, state);
    }
}

TEST(ProjectCoding, AnUnknownAssetKindFailsTheWholeLoadRatherThanDroppingTheAsset) {
    json written = samples::fullProject().toJson();
    written["assets"][3]["kind"] = "hologram";
    try {
        ProjectMigrator::migrate(JsonText::pretty(written));
        FAIL() << "decoded";
    } catch (const DecodingError& error) {
        EXPECT_EQ(error.path(), "assets[3].kind");
        EXPECT_NE(std::string(error.what()).find("hologram"), std::string::npos);
    }
}
