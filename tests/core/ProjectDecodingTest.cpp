#include "core/ProjectSamples.h"
#include "json/JsonText.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

using namespace recorder;
using nlohmann::json;

namespace {

// Keys that the file may leave out, from the tables of the project document;
// list positions are written "[]".
const std::set<std::string> optionalKeys = {
    "captions", "watermark", "packageFileName", "fromVideo", "captionStyle", "styleName",
    "assets[].duration", "assets[].pixelSize", "assets[].captureRect", "assets[].scaleFactor",
    "assets[].originalFilename",
    "cursor.tint",
    "camera.avatarAssetID", "camera.transition", "camera.transitionDuration",
    "media[].text", "media[].textColor", "media[].textStyle", "media[].shape", "media[].blurStyle",
    "media[].blurAmount", "media[].textStyle.fontName",
    "captions.language", "captions.words[].lineStart", "captions.style.fontName", "captions.style.boxColor",
    "captionStyle.fontName", "captionStyle.boxColor",
    "watermark.imageAssetID", "watermark.fontName", "watermark.brandPlacement", "watermark.position",
    "watermark.brandPosition",
};

// Text fields that take any words; every other text is an identifier, a date
// or an enumeration case and must be one the reader knows.
const std::set<std::string> freeTextKeys = {
    "name", "appVersion", "packageFileName", "styleName", "assets[].relativePath", "assets[].originalFilename",
    "media[].name", "media[].text", "media[].blurStyle", "media[].textStyle.fontName", "captions.words[].text",
    "captions.style.preset", "captions.style.fontName", "captions.language", "captionStyle.preset",
    "captionStyle.fontName", "watermark.text", "watermark.fontName",
};

struct Place {
    json::json_pointer pointer;
    std::string path;    // as the decoder names it: "media[4].textStyle.fontName"
    std::string pattern; // with list positions left out: "media[].textStyle.fontName"
    bool isKey;          // a member of an object, rather than an element of a list
};

void collect(const json& value, const Place& at, std::vector<Place>& out) {
    if (value.is_object()) {
        for (const auto& [key, member] : value.items()) {
            std::string dot = at.path.empty() ? "" : ".";
            Place place{at.pointer / key, at.path + dot + key, at.pattern + dot + key, true};
            out.push_back(place);
            collect(member, place, out);
        }
    } else if (value.is_array()) {
        for (std::size_t i = 0; i < value.size(); ++i) {
            Place place{at.pointer / i, at.path + "[" + std::to_string(i) + "]", at.pattern + "[]", false};
            out.push_back(place);
            collect(value[i], place, out);
        }
    }
}

std::vector<Place> everyPlace(const json& root) {
    std::vector<Place> places;
    collect(root, Place{json::json_pointer(), "", "", false}, places);
    return places;
}

std::vector<json> valuesOfAnotherType(const json& value) {
    std::vector<json> others;
    if (!value.is_string()) others.push_back("text");
    if (!value.is_number()) others.push_back(1);
    if (!value.is_boolean()) others.push_back(true);
    if (!value.is_array()) others.push_back(json::array());
    if (!value.is_object()) others.push_back(json::object());
    if (value.is_number_integer()) others.push_back(1.5);
    return others;
}

Project decode(const json& tree) { return decodeJson<Project>(tree, ""); }

} // namespace

TEST(ProjectDecoding, RemovingAKeyFailsExactlyWhenTheKeyIsRequired) {
    const json full = samples::fullProject().toJson();
    std::set<std::string> optionalSeen;
    for (const Place& place : everyPlace(full)) {
        if (!place.isKey) continue;
        json tree = full;
        tree[place.pointer.parent_pointer()].erase(place.pointer.back());
        if (optionalKeys.count(place.pattern)) {
            optionalSeen.insert(place.pattern);
            try {
                // Absent stays absent: nothing is invented and nothing else is lost.
                EXPECT_EQ(json::diff(decode(tree).toJson(), tree), json::array()) << place.path;
            } catch (const DecodingError& error) {
                ADD_FAILURE() << place.path << " is optional, yet: " << error.what();
            }
            continue;
        }
        try {
            decode(tree);
            ADD_FAILURE() << place.path << " is required, yet the project decoded without it";
        } catch (const DecodingError& error) {
            // A background object then has no key at all, which has its own sentence.
            if (place.pattern == "style.background.solid") {
                EXPECT_STREQ(error.what(), "Invalid number of keys found, expected one.");
            } else {
                EXPECT_EQ(error.path(), place.path);
                EXPECT_NE(std::string(error.what()).find(place.path), std::string::npos) << error.what();
            }
        }
    }
    EXPECT_EQ(optionalSeen, optionalKeys) << "the sample project should hold every optional key";
}

TEST(ProjectDecoding, AValueOfTheWrongTypeAnywhereFailsTheDecode) {
    const json full = samples::fullProject().toJson();
    int tried = 0;
    for (const Place& place : everyPlace(full)) {
        for (const json& wrong : valuesOfAnotherType(full[place.pointer])) {
            json tree = full;
            tree[place.pointer] = wrong;
            ++tried;
            try {
                decode(tree);
                ADD_FAILURE() << place.path << " accepted " << wrong.dump();
            } catch (const DecodingError& error) {
                EXPECT_STRNE(error.what(), "") << place.path;
            }
        }
    }
    EXPECT_GT(tried, 1000);
}

TEST(ProjectDecoding, WordsThatAreNoKnownIdentifierDateOrCaseFailTheDecode) {
    const json full = samples::fullProject().toJson();
    for (const Place& place : everyPlace(full)) {
        if (!full[place.pointer].is_string()) continue;
        json tree = full;
        tree[place.pointer] = "not-a-known-word";
        bool freeText = freeTextKeys.count(place.pattern) > 0;
        try {
            (void)decode(tree);
            EXPECT_TRUE(freeText) << place.path << " took an unknown word";
        } catch (const DecodingError& error) {
            EXPECT_FALSE(freeText) << place.path << ": " << error.what();
            EXPECT_EQ(error.path(), place.path);
        }
    }
}

TEST(ProjectDecoding, NullCountsAsAbsent) {
    json tree = samples::fullProject().toJson();
    tree["styleName"] = nullptr;
    EXPECT_FALSE(decode(tree).styleName);
    tree["name"] = nullptr;
    EXPECT_THROW(decode(tree), DecodingError);
}

TEST(ProjectDecoding, UnknownKeysAtAnyDepthAreIgnored) {
    Project project = samples::fullProject();
    json tree = project.toJson();
    tree["futureFeature"] = {{"x", 1}};
    tree["media"][2]["sparkles"] = true;
    tree["style"]["background"]["solid"]["_1"] = "extra";
    tree["captions"]["words"][0]["confidence"] = 0.9;
    EXPECT_EQ(decode(JsonText::parse(JsonText::pretty(tree))), project);
}

TEST(ProjectDecoding, IntegerFieldsTakeWholeNumbersInRangeOnly) {
    json tree = samples::fullProject().toJson();
    tree["canvas"]["width"] = 1920.0;
    EXPECT_EQ(decode(tree).canvas.width, 1920);
    for (const char* number : {"1920.5", "99999999999999999999999", "-3000000000", "4294967296"}) {
        tree["canvas"]["width"] = JsonText::parse(number);
        EXPECT_THROW(decode(tree), DecodingError) << number;
    }
}

TEST(BackgroundStyle, AnObjectWithOtherThanOneKnownKeyFails) {
    json tree = samples::fullProject().toJson();
    json twoKeys = {{"solid", {{"_0", RGBAColor{}.toJson()}}}, {"image", {{"assetID", samples::fixedID(3).string()}}}};
    json unknownCase = tree;
    unknownCase["style"]["background"] = {{"video", {{"assetID", samples::fixedID(3).string()}}}};
    EXPECT_THROW(decode(unknownCase), DecodingError);
    for (const json& background : {json::object(), twoKeys}) {
        tree["style"]["background"] = background;
        try {
            decode(tree);
            FAIL() << background.dump();
        } catch (const DecodingError& error) {
            EXPECT_STREQ(error.what(), "Invalid number of keys found, expected one.");
        }
    }
}

TEST(BackgroundStyle, EachCaseIsWrittenUnderItsNameWithItsPayload) {
    RGBAColor grey{0.5, 0.5, 0.5, 1};
    Uuid id = samples::fixedID(3);
    EXPECT_EQ(BackgroundStyle{BackgroundStyle::Solid{grey}}.toJson(), (json{{"solid", {{"_0", grey.toJson()}}}}));
    EXPECT_EQ(BackgroundStyle{BackgroundStyle::Image{id}}.toJson(), (json{{"image", {{"assetID", id.string()}}}}));
    EXPECT_EQ((BackgroundStyle{BackgroundStyle::BlurredWallpaper{id, 24}}.toJson()),
              (json{{"blurredWallpaper", {{"assetID", id.string()}, {"blurRadius", 24.0}}}}));
    EXPECT_EQ(BackgroundStyle::defaultGradient().toJson()["gradient"]["angle"], 135.0);
}
