#include "json/JsonText.h"
#include "look/BundledBackgrounds.h"
#include "look/LookLibrary.h"
#include "look/StyleError.h"
#include "package/ProjectPackage.h"
#include "support/TempDir.h"

#include <QString>
#include <gtest/gtest.h>

using namespace recorder;
using recorder::test::readText;
using recorder::test::TempDir;
using recorder::test::writeText;
namespace fs = std::filesystem;

namespace {

std::vector<std::string> loggedLines;

void keepLogLine(QtMsgType, const QMessageLogContext& context, const QString& message) {
    loggedLines.push_back(std::string(context.category) + ": " + message.toStdString());
}

struct StyleLibrary : ::testing::Test {
    TempDir dir;
    fs::path support = dir / "support";
    LookLibrary library{support};

    // A package on disk whose project uses an image background and an avatar.
    fs::path makePackage(const std::string& name, Project& project) {
        fs::path package = dir / (name + ".tidereel");
        project = Project(name, {1920, 1080, 60}, "1.0");
        project.assets = {addImage(package, "bg.png", "Beach.png"), addImage(package, "me.png", std::nullopt)};
        project.style.background = {BackgroundStyle::Image{project.assets[0].id}};
        project.camera.avatarAssetID = project.assets[1].id;
        project.camera.showAvatar = true;
        ProjectPackage::save(project, package);
        return package;
    }

    Asset addImage(const fs::path& package, const std::string& file, std::optional<std::string> originalName) {
        writeText(ProjectPackage::assetsURL(package) / file, "picture " + file);
        Asset asset;
        asset.id = Uuid::random();
        asset.kind = AssetKind::image;
        asset.relativePath = file;
        asset.originalFilename = std::move(originalName);
        return asset;
    }

    fs::path lastFile() const { return library.lastFolder() / "preset.json"; }
};

} // namespace

TEST_F(StyleLibrary, AMissingFolderIsAnEmptyLibraryWithNoLastLook) {
    EXPECT_TRUE(library.presets().empty());
    Project fresh("New", {1920, 1080, 60}, "1.0");
    Project before = fresh;
    EXPECT_FALSE(library.applyLast(fresh, dir / "New.tidereel", Look::Parts::all));
    EXPECT_EQ(fresh, before);
    EXPECT_FALSE(fs::exists(library.stylesFolder()));
}

TEST_F(StyleLibrary, SaveCopiesTheLooksFilesBesideThePreset) {
    Project project;
    auto package = makePackage("Take", project);
    LookPreset saved = library.save("Clean", project, package);
    fs::path folder = support / "Styles" / saved.id.string();
    EXPECT_EQ(saved.files.at(project.assets[0].id), "files/" + project.assets[0].id.string() + "/Beach.png");
    EXPECT_EQ(saved.files.at(project.assets[1].id), "files/" + project.assets[1].id.string() + "/me.png");
    EXPECT_EQ(readText(folder / saved.files.at(project.assets[0].id)), "picture bg.png");
    EXPECT_EQ(readText(folder / "preset.json"), JsonText::pretty(saved.toJson()));
    ASSERT_EQ(library.presets().size(), 1u);
    EXPECT_EQ(library.presets()[0], saved);
}

TEST_F(StyleLibrary, SavingUnderTheSameNameInAnotherCaseReplacesThePreset) {
    Project project;
    auto package = makePackage("Take", project);
    LookPreset first = library.save("Clean", project, package);
    project.style.padding = 0.2;
    LookPreset second = library.save("clean", project, package);
    EXPECT_EQ(second.id, first.id);
    ASSERT_EQ(library.presets().size(), 1u);
    EXPECT_EQ(library.presets()[0].name, "clean");
    EXPECT_EQ(library.presets()[0].look.style.padding, 0.2);
}

TEST_F(StyleLibrary, SortsNamesAsAFileManagerDoes) {
    Project project;
    auto package = makePackage("Take", project);
    for (const char* name : {"Style 10", "style 9", "Bright", "apple", "Style 2"}) library.save(name, project, package);
    std::vector<std::string> names;
    LookLibrary reopened(support);
    for (const auto& preset : reopened.presets()) names.push_back(preset.name);
    EXPECT_EQ(names, (std::vector<std::string>{"apple", "Bright", "Style 2", "style 9", "Style 10"}));
}

TEST_F(StyleLibrary, PassesOverForeignAndUnreadablePresetsAndLeavesThem) {
    Project project;
    auto package = makePackage("Take", project);
    LookPreset good = library.save("Good", project, package);
    fs::path broken = library.stylesFolder() / Uuid::random().string() / "preset.json";
    fs::path foreign = library.stylesFolder() / "Copy of Good" / "preset.json";
    writeText(broken, "{\"id\": 3");
    writeText(foreign, readText(library.folder(good) / "preset.json"));
    writeText(library.stylesFolder() / "notes.txt", "not a folder");
    library.reload();
    ASSERT_EQ(library.presets().size(), 1u);
    EXPECT_EQ(library.presets()[0].name, "Good");
    EXPECT_TRUE(fs::exists(broken));
    EXPECT_TRUE(fs::exists(foreign));
}

TEST_F(StyleLibrary, ALibraryThatCantBeWrittenFailsSaveWithASentence) {
    Project project;
    auto package = makePackage("Take", project);
    writeText(support / "Styles", "a file where the folder should be");
    try {
        library.save("Clean", project, package);
        FAIL() << "save should throw";
    } catch (const StyleError& error) {
        std::string text = error.what();
        EXPECT_EQ(text.rfind("Couldn't save the style \"Clean\".", 0), 0u) << text;
        EXPECT_NE(text.find("Check that the folder can be written"), std::string::npos) << text;
    }
}

TEST_F(StyleLibrary, RememberOnlyLogsWhenItCantWrite) {
    Project project;
    auto package = makePackage("Take", project);
    writeText(support / "Styles", "a file where the folder should be");
    loggedLines.clear();
    auto previous = qInstallMessageHandler(keepLogLine);
    EXPECT_NO_THROW(library.remember(project, package));
    qInstallMessageHandler(previous);
    ASSERT_EQ(loggedLines.size(), 1u);
    EXPECT_EQ(loggedLines[0].rfind("editor: remember style: Couldn't create", 0), 0u) << loggedLines[0];
}

TEST_F(StyleLibrary, RememberWritesLastOnceForTwoEqualLooks) {
    Project project;
    auto package = makePackage("Take", project);
    library.remember(project, package);
    std::string written = readText(lastFile());
    ASSERT_FALSE(written.empty());
    EXPECT_NE(written.find("\"name\" : \"Last used\""), std::string::npos);
    project.name = "Renamed";
    project.zooms.push_back({});
    library.remember(project, package);
    EXPECT_EQ(readText(lastFile()), written) << "a new id would show a second write";
    project.cursor.size = 2;
    library.remember(project, package);
    EXPECT_NE(readText(lastFile()), written);
    EXPECT_TRUE(library.presets().empty()) << "\"last\" is not a style of the list";
}

TEST_F(StyleLibrary, AnImportedVideoAddsCaptionsAndWatermarkButNotItsFrame) {
    Project video("Clip", {1280, 720, 30}, "1.0");
    video.fromVideo = true;
    video.style.padding = 0;
    fs::path videoPackage = dir / "Clip.tidereel";
    ProjectPackage::save(video, videoPackage);
    library.remember(video, videoPackage);
    EXPECT_FALSE(fs::exists(lastFile())) << "nothing to add to";

    Project recording;
    auto package = makePackage("Take", recording);
    library.remember(recording, package);
    CaptionStyle captions;
    captions.preset = "bold";
    video.captionStyle = captions;
    video.watermark = WatermarkSettings{};
    library.remember(video, videoPackage);

    auto last = library.lastPreset();
    ASSERT_TRUE(last);
    EXPECT_EQ(last->look.style, recording.style);
    EXPECT_EQ(last->look.captionStyle, captions);
    EXPECT_EQ(last->look.watermark, video.watermark);
    const auto& picture = last->files.at(recording.assets[0].id);
    EXPECT_TRUE(fs::exists(library.lastFolder() / picture)) << "the frame's picture stays through the re-save";
}

TEST_F(StyleLibrary, ApplyLastBringsInTheFilesAndAppliesTheLook) {
    Project recording;
    auto package = makePackage("Take", recording);
    recording.style.cornerRadius = 30;
    library.remember(recording, package);

    Project fresh("New", {1920, 1080, 60}, "1.0");
    fs::path freshPackage = dir / "New.tidereel";
    EXPECT_TRUE(library.applyLast(fresh, freshPackage, Look::Parts::all));
    ASSERT_EQ(fresh.assets.size(), 2u);
    EXPECT_EQ(fresh.assets[0].kind, AssetKind::image);
    EXPECT_EQ(fresh.assets[0].originalFilename, "Beach.png");
    EXPECT_EQ(readText(ProjectPackage::assetURL(fresh.assets[0], freshPackage)), "picture bg.png");
    EXPECT_EQ(fresh.style.background, (BackgroundStyle{BackgroundStyle::Image{fresh.assets[0].id}}));
    EXPECT_EQ(fresh.camera.avatarAssetID, fresh.assets[1].id);
    EXPECT_TRUE(fresh.camera.showAvatar);
    EXPECT_EQ(fresh.style.cornerRadius, 30);
}

TEST_F(StyleLibrary, AVideoImportTakesNoneOfTheLastFrameNorItsPicture) {
    Project recording;
    auto package = makePackage("Take", recording);
    recording.watermark = WatermarkSettings{};
    recording.watermark->text = "mine";
    library.remember(recording, package);

    Project video("Clip", {1280, 720, 30}, "1.0");
    video.fromVideo = true;
    Project before = video;
    fs::path videoPackage = dir / "Clip.tidereel";
    EXPECT_TRUE(library.applyLast(video, videoPackage, Look::Parts::captions | Look::Parts::watermark));
    EXPECT_EQ(video.style, before.style);
    EXPECT_EQ(video.camera, before.camera);
    EXPECT_EQ(video.watermark->text, "mine");
    EXPECT_TRUE(video.assets.empty());
}

TEST_F(StyleLibrary, AFileGoneFromAPresetLeavesWhatApplyLeaves) {
    Project recording;
    auto package = makePackage("Take", recording);
    LookPreset preset = library.save("Clean", recording, package);
    fs::remove_all(library.folder(preset) / "files");

    Project other("Other", {1920, 1080, 60}, "1.0");
    fs::path otherPackage = dir / "Other.tidereel";
    library.applyStyle(preset, other, otherPackage);
    EXPECT_TRUE(other.assets.empty());
    EXPECT_EQ(other.style.background, BackgroundStyle::defaultGradient());
    EXPECT_FALSE(other.camera.avatarAssetID);
    EXPECT_FALSE(other.camera.showAvatar);
    EXPECT_EQ(other.styleName, "Clean");
}

TEST_F(StyleLibrary, BringInFollowsNoPathOutOfThePresetsFolder) {
    Project recording;
    auto package = makePackage("Take", recording);
    writeText(dir / "secret.txt", "secret");
    LookPreset preset = library.save("Clean", recording, package);
    preset.files[recording.assets[0].id] = "../../../secret.txt";
    auto brought = library.bringIn(preset, library.folder(preset), Project(), dir / "Other.tidereel");
    EXPECT_EQ(brought.assets.size(), 1u) << "only the avatar";
    EXPECT_FALSE(brought.assetMap.count(recording.assets[0].id));
}

TEST_F(StyleLibrary, ApplyingAStyleToItsOwnProjectCopiesNothing) {
    Project recording;
    auto package = makePackage("Take", recording);
    LookPreset preset = library.save("Clean", recording, package);
    Project again = recording;
    library.applyStyle(preset, again, package);
    EXPECT_EQ(again.assets, recording.assets);
    EXPECT_EQ(again.style, recording.style);
}

TEST_F(StyleLibrary, ReSavingRemovesFileFoldersNoLongerInUse) {
    Project recording;
    auto package = makePackage("Take", recording);
    LookPreset preset = library.save("Clean", recording, package);
    fs::path files = library.folder(preset) / "files";
    writeText(files / "README", "left alone: not an id");
    recording.style.background = BackgroundStyle::defaultGradient();
    library.save("Clean", recording, package);
    EXPECT_FALSE(fs::exists(files / recording.assets[0].id.string()));
    EXPECT_TRUE(fs::exists(files / recording.assets[1].id.string()));
    EXPECT_TRUE(fs::exists(files / "README"));
}

TEST_F(StyleLibrary, DeleteRemovesTheFolderAndTheListEntry) {
    Project recording;
    auto package = makePackage("Take", recording);
    LookPreset keep = library.save("Keep", recording, package);
    LookPreset drop = library.save("Drop", recording, package);
    int changes = 0;
    library.onPresetsChanged = [&] { ++changes; };
    library.deletePreset(drop);
    EXPECT_FALSE(fs::exists(library.folder(drop)));
    ASSERT_EQ(library.presets().size(), 1u);
    EXPECT_EQ(library.presets()[0].id, keep.id);
    EXPECT_EQ(changes, 1);
}

TEST_F(StyleLibrary, ResetGivesTheFirstBundledPictureAndKeepsAHiddenCamera) {
    Project recording;
    auto package = makePackage("Take", recording);
    recording.camera.layout = CameraLayout::hidden;
    recording.styleName = "Clean";
    recording.style.padding = 0.3;
    LookLibrary::resetStyle(recording, package);
    const Asset& picture = recording.assets.back();
    EXPECT_EQ(picture.originalFilename, BundledBackgrounds::defaultBackground().fileName);
    EXPECT_TRUE(fs::is_regular_file(ProjectPackage::assetURL(picture, package)));
    EXPECT_EQ(recording.style.background, (BackgroundStyle{BackgroundStyle::Image{picture.id}}));
    EXPECT_EQ(recording.style.padding, StyleSettings{}.padding);
    EXPECT_EQ(recording.camera.layout, CameraLayout::hidden);
    EXPECT_FALSE(recording.camera.avatarAssetID);
    EXPECT_FALSE(recording.styleName);
}
