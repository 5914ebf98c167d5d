#include "core/ProjectSamples.h"
#include "brand/Brand.h"
#include "json/JsonText.h"
#include "package/PackageError.h"
#include "package/ProjectPackage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <set>
#include <string>

namespace fs = std::filesystem;
namespace Package = recorder::ProjectPackage;
using recorder::AssetKind;
using recorder::Brand;
using recorder::CanvasSettings;
using recorder::Date;
using recorder::JsonEncodeError;
using recorder::JsonText::parse;
using recorder::MediaAnimation;
using recorder::MediaItem;
using recorder::PackageError;
using recorder::Project;
namespace samples = recorder::samples;

namespace {

class ProjectPackage : public ::testing::Test {
protected:
    std::set<std::string> entries(const fs::path& folder) const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename().string());
        return names;
    }
    int savedSchemaVersion() const {
        return parse(samples::readBytes(Package::manifestURL(package)))["schemaVersion"].get<int>();
    }
    fs::path packageNamed(const std::string& stem) const {
        fs::path path = folder / (stem + ".tidereel");
        fs::create_directories(path);
        return path;
    }

    samples::TemporaryFolder folder;
    fs::path package = folder / "Demo.tidereel";
};

} // namespace

TEST_F(ProjectPackage, Save_ThenLoadGivesTheProjectWithItsSaveBookkeeping) {
    Project project = samples::fullProject();
    Date before = Date::now();
    Package::save(project, package);
    Project loaded = Package::load(package);

    EXPECT_GE(loaded.modifiedAt, before);
    EXPECT_LE(loaded.modifiedAt, Date::now());
    EXPECT_EQ(loaded.appVersion, Brand::shared().version);
    EXPECT_EQ(loaded.packageFileName, "Demo");
    Project expected = project;
    expected.modifiedAt = loaded.modifiedAt;
    expected.appVersion = loaded.appVersion;
    expected.packageFileName = "Demo";
    EXPECT_EQ(loaded, expected);
    EXPECT_EQ(samples::readBytes(Package::manifestURL(package)), Package::encode(loaded));
}

TEST_F(ProjectPackage, Save_LeavesTheManifestAndAssetsAndNoTemporaryFile) {
    fs::create_directories(package / "assets");
    samples::writeBytes(package / "assets" / "screen.mov", "frames");
    Package::save(samples::fullProject(), package);
    Package::save(samples::fullProject(), package);
    EXPECT_EQ(entries(package), (std::set<std::string>{"assets", "manifest.json"}));
    EXPECT_EQ(samples::readBytes(package / "assets" / "screen.mov"), "frames");
}

TEST_F(ProjectPackage, Save_WritesTheLowestSchemaVersionThatCanHoldTheDocument) {
    Project project("Demo", CanvasSettings{1920, 1080, 60}, "1.0");
    Package::save(project, package);
    EXPECT_EQ(savedSchemaVersion(), 11);

    MediaItem title;
    title.kind = AssetKind::text;
    title.outAnimation = MediaAnimation::draw;
    project.media.push_back(title);
    Package::save(project, package);
    EXPECT_EQ(savedSchemaVersion(), 12);

    project.media[0].outAnimation = MediaAnimation::fade;
    Package::save(project, package);
    EXPECT_EQ(savedSchemaVersion(), 11);

    project.media[0].inAnimation = MediaAnimation::draw;
    Package::save(project, package);
    EXPECT_EQ(savedSchemaVersion(), 12);

    project.media[0].inAnimation = MediaAnimation::none;
    project.media[0].kind = AssetKind::shape;
    Package::save(project, package);
    EXPECT_EQ(savedSchemaVersion(), 12);
    EXPECT_EQ(Package::load(package).schemaVersion, 12);
}

TEST_F(ProjectPackage, Save_TakesTheStemAlsoFromAPathEndingInASlash) {
    Package::save(samples::fullProject(), package.string() + "/");
    EXPECT_EQ(Package::load(package).packageFileName, "Demo");
}

TEST_F(ProjectPackage, Save_ThatCannotMakeTheAssetsFolderLeavesTheOldManifest) {
    Package::save(samples::fullProject(), package);
    std::string old = samples::readBytes(Package::manifestURL(package));
    fs::remove_all(package / "assets");
    samples::writeBytes(package / "assets", "a file where the folder belongs");

    Project changed = samples::fullProject();
    changed.name = "Changed";
    EXPECT_THROW(Package::save(changed, package), PackageError);
    EXPECT_EQ(samples::readBytes(Package::manifestURL(package)), old);
    EXPECT_EQ(entries(package), (std::set<std::string>{"assets", "manifest.json"}));
}

TEST_F(ProjectPackage, Save_ThatCannotReplaceTheManifestLeavesNoTemporaryFile) {
    fs::create_directories(package / "manifest.json");
    samples::writeBytes(package / "manifest.json" / "inside", "kept");
    try {
        Package::save(samples::fullProject(), package);
        FAIL() << "saved over a folder";
    } catch (const PackageError& error) {
        EXPECT_NE(std::string(error.what()).find("manifest.json"), std::string::npos) << error.what();
    }
    EXPECT_EQ(entries(package), (std::set<std::string>{"assets", "manifest.json"}));
    EXPECT_EQ(samples::readBytes(package / "manifest.json" / "inside"), "kept");
}

TEST_F(ProjectPackage, Save_ThatCannotEncodeWritesNothing) {
    Package::save(samples::fullProject(), package);
    auto before = samples::snapshot(package);
    Project broken = samples::fullProject();
    broken.media[2].volume = std::nan("");
    EXPECT_THROW(Package::save(broken, package), JsonEncodeError);
    EXPECT_EQ(samples::snapshot(package), before);
}

TEST_F(ProjectPackage, Load_OfAMissingManifestThrowsAPackageErrorNamingThePath) {
    fs::create_directories(package);
    try {
        Package::load(package);
        FAIL() << "loaded nothing";
    } catch (const PackageError& error) {
        EXPECT_EQ(error.path(), Package::manifestURL(package));
        EXPECT_NE(std::string(error.what()).find(Package::manifestURL(package).string()), std::string::npos);
    }
    EXPECT_TRUE(entries(package).empty());
}

TEST_F(ProjectPackage, Load_OfAnOldManifestMigratesInMemoryOnly) {
    fs::create_directories(package);
    nlohmann::json tree = samples::fullProject().toJson();
    tree["schemaVersion"] = 9;
    tree["camera"].erase("showAvatar");
    samples::writeBytes(Package::manifestURL(package), recorder::JsonText::pretty(tree));
    auto before = samples::snapshot(package);
    EXPECT_FALSE(Package::load(package).camera.showAvatar);
    EXPECT_EQ(samples::snapshot(package), before);
}

TEST_F(ProjectPackage, Rename_ToAFreeNameMovesThePackageWithItsContents) {
    Package::save(samples::fullProject(), package);
    fs::path moved = Package::rename(package, "Talk: Take 1/2");
    EXPECT_EQ(moved, folder / "Talk- Take 1:2.tidereel");
    EXPECT_FALSE(fs::exists(package));
    EXPECT_EQ(Package::load(moved).name, "Demo / Take 2");
}

TEST_F(ProjectPackage, Rename_ToATakenNameCountsUpFromTwo) {
    packageNamed("Demo");
    packageNamed("Talk");
    samples::writeBytes(folder / "Talk 2.tidereel", "a file takes the name too");
    fs::path moved = Package::rename(package, "Talk");
    EXPECT_EQ(moved, folder / "Talk 3.tidereel");
    EXPECT_TRUE(fs::is_directory(folder / "Talk.tidereel"));
    EXPECT_EQ(Package::rename(moved, "Talk"), moved);
}

TEST_F(ProjectPackage, Rename_ToItsOwnNameReturnsThePackageUnchanged) {
    packageNamed("Demo");
    EXPECT_EQ(Package::rename(package, "Demo"), package);
    EXPECT_EQ(Package::rename(package, "  Demo\n"), package);
    EXPECT_EQ(entries(folder.path()), (std::set<std::string>{"Demo.tidereel"}));
}

TEST_F(ProjectPackage, Rename_ChangingOnlyLetterCaseMovesToTheNewCaseWithoutANumber) {
    Package::save(samples::fullProject(), package);
    fs::path moved = Package::rename(package, "demo");
    EXPECT_EQ(moved, folder / "demo.tidereel");
    EXPECT_EQ(entries(folder.path()), (std::set<std::string>{"demo.tidereel"}));
    EXPECT_NO_THROW(Package::load(moved));
}

TEST_F(ProjectPackage, Rename_AcceptsAPathEndingInASlash) {
    packageNamed("Demo");
    EXPECT_EQ(Package::rename(package.string() + "/", "Talk"), folder / "Talk.tidereel");
    EXPECT_EQ(entries(folder.path()), (std::set<std::string>{"Talk.tidereel"}));
}

TEST_F(ProjectPackage, Rename_OfAMissingPackageThrowsAndCreatesNothing) {
    EXPECT_THROW(Package::rename(package, "Talk"), PackageError);
    EXPECT_TRUE(entries(folder.path()).empty());
}

TEST_F(ProjectPackage, ImportAsset_KeepsTheNameAndNumbersTheNextOnesFromTwo) {
    samples::writeBytes(folder / "clip.mov", "first");
    EXPECT_EQ(Package::importAsset(folder / "clip.mov", package, std::nullopt), "clip.mov");
    samples::writeBytes(folder / "clip.mov", "second");
    EXPECT_EQ(Package::importAsset(folder / "clip.mov", package, std::nullopt), "clip-2.mov");
    EXPECT_EQ(Package::importAsset(folder / "clip.mov", package, std::nullopt), "clip-3.mov");
    EXPECT_EQ(samples::readBytes(package / "assets" / "clip.mov"), "first");
    EXPECT_EQ(samples::readBytes(package / "assets" / "clip-2.mov"), "second");
}

TEST_F(ProjectPackage, ImportAsset_WithoutAnExtensionNumbersTheWholeName) {
    samples::writeBytes(folder / "clip", "x");
    EXPECT_EQ(Package::importAsset(folder / "clip", package, std::nullopt), "clip");
    EXPECT_EQ(Package::importAsset(folder / "clip", package, std::nullopt), "clip-2");
}

TEST_F(ProjectPackage, ImportAsset_TurnsSlashesOfThePreferredNameIntoHyphens) {
    samples::writeBytes(folder / "source.png", "png");
    EXPECT_EQ(Package::importAsset(folder / "source.png", package, "shots/one.png"), "shots-one.png");
    EXPECT_EQ(Package::importAsset(folder / "source.png", package, "shots/one.png"), "shots-one-2.png");
    EXPECT_EQ(entries(package / "assets"), (std::set<std::string>{"shots-one.png", "shots-one-2.png"}));
}

TEST_F(ProjectPackage, ImportAsset_OfAMissingFileThrowsAPackageError) {
    EXPECT_THROW(Package::importAsset(folder / "nothing.mov", package, std::nullopt), PackageError);
    EXPECT_TRUE(entries(package / "assets").empty());
}

TEST_F(ProjectPackage, RemoveOrphanAssets_KeepsReferencedFilesAndRemovesTheRest) {
    Project project = samples::fullProject();
    fs::create_directories(package / "assets" / "leftover-folder");
    for (const auto& asset : project.assets) samples::writeBytes(Package::assetURL(asset, package), "kept");
    samples::writeBytes(package / "assets" / "deleted-clip.mov", "gone");
    samples::writeBytes(package / "assets" / "leftover-folder" / "x", "gone");

    Package::removeOrphanAssets(package, project);
    std::set<std::string> referenced;
    for (const auto& asset : project.assets) referenced.insert(asset.relativePath);
    EXPECT_EQ(entries(package / "assets"), referenced);
}

TEST_F(ProjectPackage, RemoveOrphanAssets_WithoutAnAssetsFolderDoesNothing) {
    fs::create_directories(package);
    EXPECT_NO_THROW(Package::removeOrphanAssets(package, samples::fullProject()));
    EXPECT_TRUE(entries(package).empty());
}

TEST(NameSync, TellsWhetherTheNameOrTheFileMoved) {
    using Kind = Package::NameSync::Kind;
    Project project("A/B", CanvasSettings{}, "1.0");
    EXPECT_EQ(Package::nameSync(project, "A:B").kind, Kind::inSync);
    EXPECT_EQ(Package::nameSync(project, "Old").kind, Kind::renameFile);
    project.packageFileName = "Old";
    EXPECT_EQ(Package::nameSync(project, "Old").kind, Kind::renameFile);
    auto adopt = Package::nameSync(project, "New:Cut");
    EXPECT_EQ(adopt.kind, Kind::adoptFileName);
    EXPECT_EQ(adopt.name, "New/Cut");
}
