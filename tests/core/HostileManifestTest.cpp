#include "core/ProjectSamples.h"
#include "json/JsonText.h"
#include "package/MigrationError.h"
#include "package/ProjectMigrator.h"
#include "package/ProjectPackage.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

using namespace recorder;
using nlohmann::json;

namespace {

// Loads a package whose manifest holds `bytes`. It must end in one of the
// three errors with a sentence, quickly, and leave every byte as it was.
void expectRefusedWithoutWriting(const std::string& bytes, const std::string& label) {
    samples::TemporaryFolder folder;
    auto package = folder / "Hostile.tidereel";
    std::filesystem::create_directories(package / "assets");
    samples::writeBytes(package / "manifest.json", bytes);
    samples::writeBytes(package / "assets" / "screen.mov", "movie");
    auto before = samples::snapshot(folder.path());

    auto started = std::chrono::steady_clock::now();
    std::string sentence;
    try {
        ProjectPackage::load(package);
        ADD_FAILURE() << label << ": loaded";
    } catch (const JsonParseError& error) {
        sentence = error.what();
    } catch (const DecodingError& error) {
        sentence = error.what();
    } catch (const MigrationError& error) {
        sentence = error.what();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(2)) << label;
    EXPECT_FALSE(sentence.empty()) << label;
    EXPECT_EQ(samples::snapshot(folder.path()), before) << label;
}

std::string validManifest() { return JsonText::pretty(samples::fullProject().toJson()); }

std::string withValue(const char* pointer, const json& value) {
    json tree = samples::fullProject().toJson();
    tree[json::json_pointer(pointer)] = value;
    return JsonText::pretty(tree);
}

} // namespace

TEST(HostileManifest, DeepNestingIsRefused) {
    expectRefusedWithoutWriting(std::string(100000, '['), "100000 [");
    expectRefusedWithoutWriting("{\"schemaVersion\":12,\"name\":" + std::string(100000, '{'), "100000 { in a value");
    std::string nested = "1";
    for (int i = 0; i < 1000; ++i) nested = "[" + nested + "]";
    expectRefusedWithoutWriting("{\"schemaVersion\":12,\"extra\":" + nested + "}", "closed nesting 1000 deep");
}

TEST(HostileManifest, HugeNumbersAreRefused) {
    std::string manifest = validManifest();
    auto replaced = [&](const std::string& from, const std::string& to) {
        std::string text = manifest;
        text.replace(text.find(from), from.size(), to);
        return text;
    };
    expectRefusedWithoutWriting(replaced("\"screenStart\" : 2.5", "\"screenStart\" : 1e400"), "1e400");
    expectRefusedWithoutWriting(replaced("\"frameRate\" : 30", "\"frameRate\" : 99999999999999999999999"),
                                "an int field of 23 digits");
    expectRefusedWithoutWriting(replaced("\"zIndex\" : -3", "\"zIndex\" : -99999999999"), "a negative int field");
    expectRefusedWithoutWriting(replaced("\"schemaVersion\" : 12", "\"schemaVersion\" : 1" + std::string(400, '0')),
                                "a 401-digit version");
}

TEST(HostileManifest, WrongTypesAtTheTopLevelAreRefused) {
    for (const char* bytes : {"[]", "\"manifest\"", "42", "true", "null", "{}"})
        expectRefusedWithoutWriting(bytes, bytes);
    expectRefusedWithoutWriting(withValue("/assets", "screen.mov"), "assets as text");
    expectRefusedWithoutWriting(withValue("/style", json::array()), "style as a list");
    expectRefusedWithoutWriting(withValue("/media", {{"0", 1}}), "media as an object");
}

TEST(HostileManifest, InvalidUtf8IsRefused) {
    std::string manifest = validManifest();
    for (const std::string& bad : {std::string("\xff"), std::string("\xc3"), std::string("\xed\xa0\x80"),
                                   std::string("\xf8\x88\x80\x80\x80"), std::string("\xc0\xaf")}) {
        std::string text = manifest;
        text.insert(text.find("Demo"), bad);
        expectRefusedWithoutWriting(text, "bytes in the name");
    }
    expectRefusedWithoutWriting("\xff\xfe{}", "bytes before the object");
}

TEST(HostileManifest, TruncatedAndEmptyFilesAreRefused) {
    std::string manifest = validManifest();
    expectRefusedWithoutWriting("", "empty");
    expectRefusedWithoutWriting(manifest.substr(0, manifest.size() / 2), "cut in half");
    expectRefusedWithoutWriting(manifest.substr(0, manifest.size() - 1), "without the last brace");
}

TEST(HostileManifest, EveryPrefixOfAManifestEndsInAnErrorAndNeverCrashes) {
    std::string manifest = validManifest();
    for (std::size_t length = 0; length < manifest.size(); ++length) {
        try {
            ProjectMigrator::migrate(std::string_view(manifest).substr(0, length));
            ADD_FAILURE() << "a prefix of " << length << " bytes decoded";
        } catch (const JsonParseError&) {
        } catch (const DecodingError&) {
        } catch (const MigrationError&) {
        }
    }
}

TEST(HostileManifest, ADecodingFailureAfterMigrationLeavesTheOldFileUntouched) {
    json tree = samples::fullProject().toJson();
    tree["schemaVersion"] = 3;
    tree.erase("clips");
    expectRefusedWithoutWriting(JsonText::pretty(tree), "version 3 without clips");
    expectRefusedWithoutWriting(R"({"schemaVersion": 13, "appVersion": "9.0"})", "a newer file");
}
