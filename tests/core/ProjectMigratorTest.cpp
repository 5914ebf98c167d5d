#include "core/ProjectSamples.h"
#include "brand/Brand.h"
#include "json/JsonText.h"
#include "package/MigrationError.h"
#include "package/ProjectMigrator.h"

#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <string>

using namespace recorder;
using nlohmann::json;

namespace {

json upgraded(json tree, long long fromVersion) {
    ProjectMigrator::upgrade(tree, fromVersion);
    return tree;
}

const json oldRippleColour = {{"r", 1}, {"g", 0.75}, {"b", 0.1}, {"a", 1}};
const json newRippleColour = {{"r", 0.588}, {"g", 0.902}, {"b", 0.631}, {"a", 0.85}};

// The sample project as a version-0 file would hold it: without anything a
// later version added, and with the ripple colour of its day.
json versionZeroManifest() {
    json tree = samples::fullProject().toJson();
    tree.erase("tracks");
    tree.erase("screenStart");
    for (auto& item : tree["media"])
        for (const char* key : {"hidden", "locked", "muted", "speed"}) item.erase(key);
    tree["captions"]["style"].erase("showEmoji");
    tree["captions"]["style"].erase("emojiSize");
    tree["camera"].erase("showAvatar");
    for (const char* key : {"micNoiseRemoval", "micLeveling", "duckMusic", "duckLevel"}) tree["audio"].erase(key);
    tree["cursor"]["clickHighlightColor"] = oldRippleColour;
    tree["schemaVersion"] = 0;
    return tree;
}

// What migration must make of that file.
Project versionZeroMigrated() {
    Project expected = samples::fullProject();
    expected.tracks = {};
    expected.screenStart = 0;
    for (auto& item : expected.media) {
        item.hidden = item.locked = item.muted = false;
        item.speed = 1;
    }
    expected.captions->style.showEmoji = false;
    expected.captions->style.emojiSize = 0.11;
    expected.camera.showAvatar = false;
    expected.audio.micNoiseRemoval = expected.audio.micLeveling = expected.audio.duckMusic = false;
    expected.audio.duckLevel = 0.25;
    expected.cursor.clickHighlightColor = {0.588, 0.902, 0.631, 0.85};
    return expected;
}

MigrationError migrationErrorOf(const std::string& bytes) {
    try {
        ProjectMigrator::migrate(bytes);
    } catch (const MigrationError& error) {
        return error;
    }
    throw std::logic_error("no MigrationError for " + bytes);
}

} // namespace

TEST(ProjectMigrator, AVersionZeroFileGainsEveryLaterAdditionAndDecodes) {
    EXPECT_EQ(ProjectMigrator::migrate(JsonText::pretty(versionZeroManifest())), versionZeroMigrated());
}

TEST(ProjectMigrator, NegativeVersionsClimbLikeZeroAndAHugeOneDoesNotHang) {
    for (long long version : {-1LL, -5LL, LLONG_MIN}) {
        json tree = versionZeroManifest();
        tree["schemaVersion"] = version;
        auto started = std::chrono::steady_clock::now();
        EXPECT_EQ(ProjectMigrator::migrate(JsonText::pretty(tree)), versionZeroMigrated()) << version;
        EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(1)) << version;
    }
}

TEST(ProjectMigrator, AFileAtTheCurrentVersionPassesThroughUnchanged) {
    json tree = samples::fullProject().toJson();
    EXPECT_EQ(json::diff(upgraded(tree, 12), tree), json::array());
    EXPECT_EQ(ProjectMigrator::migrate(JsonText::pretty(tree)), samples::fullProject());
}

TEST(ProjectMigrator, EveryStepRaisesTheStoredVersionUpToTwelve) {
    for (long long from = -2; from <= 12; ++from)
        EXPECT_EQ(upgraded(json{{"schemaVersion", from}}, from)["schemaVersion"], 12) << from;
}

TEST(ProjectMigrator, Step1AddsTrackFlagsAndMediaFlagsWhereMissing) {
    json tree = {{"media", {{{"hidden", true}}, json::object(), "not an item"}}};
    json flags = {{"hidden", false}, {"locked", false}};
    json after = upgraded(tree, 1);
    EXPECT_EQ(after["tracks"], (json{{"screen", flags}, {"zooms", flags}, {"camera", flags}}));
    EXPECT_EQ(after["media"][0]["hidden"], true);
    EXPECT_EQ(after["media"][0]["locked"], false);
    EXPECT_EQ(after["media"][1]["hidden"], false);
    EXPECT_EQ(after["media"][2], "not an item");

    json ownTracks = {{"tracks", {{"screen", {{"hidden", true}, {"locked", true}}}}}};
    EXPECT_EQ(upgraded(ownTracks, 1)["tracks"], ownTracks["tracks"]);
}

TEST(ProjectMigrator, Step1WithoutMediaStillAddsTracksAndInventsNoMedia) {
    json after = upgraded({{"schemaVersion", 1}}, 1);
    EXPECT_TRUE(after.contains("tracks"));
    EXPECT_FALSE(after.contains("media"));
    EXPECT_EQ(upgraded({{"media", "odd"}}, 1)["media"], "odd");
}

TEST(ProjectMigrator, Step2ReplacesOnlyTheOldDefaultRippleColour) {
    auto rippleAfter = [](const json& colour, long long from) {
        return upgraded({{"cursor", {{"clickHighlightColor", colour}}}}, from)["cursor"]["clickHighlightColor"];
    };
    EXPECT_EQ(rippleAfter(oldRippleColour, 2), newRippleColour);
    json nearlyOld = {{"r", 0.991}, {"g", 0.759}, {"b", 0.109}, {"a", 0.5}};
    EXPECT_EQ(rippleAfter(nearlyOld, 0), newRippleColour);
    for (json other : {json{{"r", 0.98}, {"g", 0.75}, {"b", 0.1}, {"a", 1}},
                       json{{"r", 1}, {"g", 0.75}, {"b", 0.2}, {"a", 1}}, json{{"r", "1"}, {"g", 0.75}, {"b", 0.1}},
                       json{{"g", 0.75}, {"b", 0.1}}, json("#FFBF1A")})
        EXPECT_EQ(rippleAfter(other, 2), other) << other.dump();
    // From version 3 on, orange was the person's own choice.
    EXPECT_EQ(rippleAfter(oldRippleColour, 3), oldRippleColour);
    EXPECT_FALSE(upgraded(json::object(), 2).contains("cursor"));
    EXPECT_EQ(upgraded({{"cursor", 4}}, 2)["cursor"], 4);
}

TEST(ProjectMigrator, Step3AddsAZeroScreenStartOnlyWhenMissing) {
    EXPECT_EQ(upgraded(json::object(), 3)["screenStart"], 0);
    EXPECT_EQ(upgraded({{"screenStart", 2.5}}, 3)["screenStart"], 2.5);
    EXPECT_FALSE(upgraded(json::object(), 4).contains("screenStart"));
}

TEST(ProjectMigrator, Steps4And5AddMutedAndSpeedToMediaItemsThatLackThem) {
    json tree = {{"media", {json::object(), {{"muted", true}, {"speed", 2}}, 7}}};
    json after = upgraded(tree, 4);
    EXPECT_EQ(after["media"][0], (json{{"muted", false}, {"speed", 1}}));
    EXPECT_EQ(after["media"][1], (json{{"muted", true}, {"speed", 2}}));
    EXPECT_EQ(after["media"][2], 7);
    EXPECT_EQ(upgraded(tree, 5)["media"][0], (json{{"speed", 1}}));
    EXPECT_EQ(upgraded({{"media", json::object()}}, 4)["media"], json::object());
}

TEST(ProjectMigrator, Step7AddsEmojiSettingsToACaptionStyleThatLacksThem) {
    json after = upgraded({{"captions", {{"style", {{"showEmoji", true}}}}}}, 7);
    EXPECT_EQ(after["captions"]["style"], (json{{"showEmoji", true}, {"emojiSize", 0.11}}));
    EXPECT_FALSE(upgraded(json::object(), 7).contains("captions"));
    EXPECT_EQ(upgraded({{"captions", json::object()}}, 7)["captions"], json::object());
    EXPECT_EQ(upgraded({{"captions", {{"style", "clean"}}}}, 7)["captions"]["style"], "clean");
    EXPECT_FALSE(upgraded({{"captionStyle", json::object()}}, 7)["captionStyle"].contains("emojiSize"));
}

TEST(ProjectMigrator, Step9AddsShowAvatarToACameraObjectOnly) {
    EXPECT_EQ(upgraded({{"camera", json::object()}}, 9)["camera"], (json{{"showAvatar", false}}));
    EXPECT_EQ(upgraded({{"camera", {{"showAvatar", true}}}}, 9)["camera"]["showAvatar"], true);
    EXPECT_FALSE(upgraded(json::object(), 9).contains("camera"));
    EXPECT_EQ(upgraded({{"camera", json::array()}}, 9)["camera"], json::array());
}

TEST(ProjectMigrator, Step10CompletesTheAudioObjectAndMakesOneWhenThereIsNone) {
    json cleanup = {{"micNoiseRemoval", false}, {"micLeveling", false}, {"duckMusic", false}, {"duckLevel", 0.25}};
    EXPECT_EQ(upgraded(json::object(), 10)["audio"], cleanup);
    EXPECT_EQ(upgraded({{"audio", "loud"}}, 10)["audio"], cleanup);
    json own = {{"micVolume", 0.5}, {"duckMusic", true}, {"duckLevel", 0.1}};
    json expected = own;
    expected["micNoiseRemoval"] = false;
    expected["micLeveling"] = false;
    EXPECT_EQ(upgraded({{"audio", own}}, 10)["audio"], expected);
}

TEST(ProjectMigrator, Versions6And8And11HaveNoStepOfTheirOwn) {
    json tree = versionZeroManifest();
    tree["schemaVersion"] = 12; // what every climb ends at, also one that starts at 12
    for (long long version : {6, 8, 11})
        EXPECT_EQ(json::diff(upgraded(tree, version), upgraded(tree, version + 1)), json::array()) << version;
    EXPECT_NE(upgraded(tree, 9), upgraded(tree, 10));
}

TEST(ProjectMigrator, UnknownKeysSurviveTheStepsAndAreDroppedByTheDecode) {
    json tree = versionZeroManifest();
    tree["futureFeature"] = {{"on", true}};
    tree["media"][0]["sparkle"] = 3;
    json after = upgraded(tree, 0);
    EXPECT_EQ(after["futureFeature"], tree["futureFeature"]);
    EXPECT_EQ(after["media"][0]["sparkle"], 3);
    json rewritten = ProjectMigrator::migrate(JsonText::pretty(tree)).toJson();
    EXPECT_FALSE(rewritten.contains("futureFeature"));
    EXPECT_FALSE(rewritten["media"][0].contains("sparkle"));
}

TEST(MigrationError, AVersionThatIsNoIntegerMeansThisIsNoProjectFile) {
    const std::string sentence = "This isn't a " + Brand::shared().display + " project file, or it's damaged.";
    for (const char* bytes : {R"({"schemaVersion": "12"})", R"({"name": "x"})", R"({"schemaVersion": 11.5})",
                              R"({"schemaVersion": null})", R"({"schemaVersion": true})", "[12]", "12", "\"x\"",
                              "null", R"({"schemaVersion": 99999999999999999999999})"}) {
        MigrationError error = migrationErrorOf(bytes);
        EXPECT_EQ(error.kind(), MigrationError::Kind::missingVersion) << bytes;
        EXPECT_EQ(error.what(), sentence) << bytes;
    }
}

TEST(MigrationError, ANewerFileNamesTheVersionThatSavedIt) {
    const std::string display = Brand::shared().display;
    MigrationError error = migrationErrorOf(R"({"schemaVersion": 13, "appVersion": "2.0"})");
    EXPECT_EQ(error.kind(), MigrationError::Kind::newerThanApp);
    EXPECT_EQ(error.found(), 13);
    EXPECT_EQ(error.supported(), 12);
    EXPECT_EQ(error.savedWith(), "2.0");
    EXPECT_EQ(error.what(), "It was saved with " + display + " 2.0, which added things this version can't show. Update " +
                                display + " to open it.");
}

TEST(MigrationError, ANewerFileWithoutAnAppVersionTextSaysANewerVersion) {
    const std::string display = Brand::shared().display;
    const std::string sentence = "It was saved with a newer version of " + display +
                                 ", which added things this version can't show. Update " + display + " to open it.";
    for (const char* bytes : {R"({"schemaVersion": 40})", R"({"schemaVersion": 13, "appVersion": 2})"}) {
        MigrationError error = migrationErrorOf(bytes);
        EXPECT_FALSE(error.savedWith()) << bytes;
        EXPECT_EQ(error.what(), sentence) << bytes;
    }
}

TEST(MigrationError, DescriptionUsesTheBrandItIsGiven) {
    Brand other = Brand::fromProductFileText(R"({"ProductNameDisplay": "Other Name"})");
    EXPECT_EQ(MigrationError::missingVersion().description(other),
              "This isn't a Other Name project file, or it's damaged.");
}
