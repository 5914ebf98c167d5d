#include "package/ProjectPackage.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

using namespace recorder;
using recorder::test::readText;
using recorder::test::TempDir;
using recorder::test::writeText;
namespace fs = std::filesystem;

namespace {

struct CliRun {
    int status = -1;
    std::string out;
    std::string err;
};

// The real recorder-cli, with its support folder inside the test's folder.
struct StyleCommand : ::testing::Test {
    TempDir dir;
    fs::path support = dir / "data" / "Tidereel";

    CliRun cli(const std::string& arguments) {
        auto outFile = dir / "stdout", errFile = dir / "stderr";
        std::string command = "HOME='" + dir.path().string() + "' XDG_DATA_HOME='" + (dir / "data").string() +
                              "' '" RECORDER_CLI_PATH "' " + arguments + " </dev/null >'" + outFile.string() +
                              "' 2>'" + errFile.string() + "'";
        int raw = std::system(command.c_str());
        return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, readText(outFile), readText(errFile)};
    }

    // A package whose project has a picture for a background.
    fs::path makePackage(const std::string& name, double padding) {
        fs::path package = dir / (name + ".tidereel");
        Project project(name, {1920, 1080, 60}, "1.0");
        Asset picture;
        picture.id = Uuid::random();
        picture.kind = AssetKind::image;
        picture.relativePath = "sky.png";
        writeText(ProjectPackage::assetsURL(package) / "sky.png", "sky");
        project.assets.push_back(picture);
        project.style.background = {BackgroundStyle::Image{picture.id}};
        project.style.padding = padding;
        ProjectPackage::save(project, package);
        return package;
    }
};

std::string quoted(const fs::path& path) {
    return "'" + path.string() + "'";
}

} // namespace

TEST_F(StyleCommand, SavesListsAndAppliesAStyleAcrossPackages) {
    auto source = makePackage("Source", 0.2), target = makePackage("Target", 0.05);
    CliRun saved = cli("style save ' Clean ' " + quoted(source));
    ASSERT_EQ(saved.status, 0) << saved.err;
    EXPECT_EQ(ProjectPackage::load(source).styleName, "Clean");
    ASSERT_EQ(cli("style save 'Style 10' " + quoted(source)).status, 0);
    ASSERT_EQ(cli("style save 'style 9' " + quoted(source)).status, 0);

    CliRun listed = cli("style list");
    ASSERT_EQ(listed.status, 0) << listed.err;
    std::istringstream lines(listed.out);
    std::vector<std::string> names;
    for (std::string line; std::getline(lines, line);) names.push_back(line.substr(0, line.find('\t')));
    EXPECT_EQ(names, (std::vector<std::string>{"Clean", "style 9", "Style 10"}));

    CliRun applied = cli("style apply clean " + quoted(target));
    ASSERT_EQ(applied.status, 0) << applied.err;
    Project project = ProjectPackage::load(target);
    EXPECT_EQ(project.style.padding, 0.2);
    EXPECT_EQ(project.styleName, "Clean");
    ASSERT_EQ(project.assets.size(), 2u);
    EXPECT_EQ(project.style.background, (BackgroundStyle{BackgroundStyle::Image{project.assets[1].id}}));
    EXPECT_EQ(readText(ProjectPackage::assetURL(project.assets[1], target)), "sky");
}

TEST_F(StyleCommand, RemembersTheLookForNewRecordings) {
    auto package = makePackage("Take", 0.15);
    CliRun run = cli("style remember " + quoted(package));
    ASSERT_EQ(run.status, 0) << run.err;
    std::string last = readText(support / "Styles" / "last" / "preset.json");
    EXPECT_NE(last.find("\"name\" : \"Last used\""), std::string::npos);
    EXPECT_NE(last.find("\"padding\" : 0.15"), std::string::npos);
    EXPECT_EQ(cli("style list").out, "") << "the last look is not a saved style";
}

TEST_F(StyleCommand, ResetPutsTheFirstBuiltInPictureBehindTheRecording) {
    auto package = makePackage("Take", 0.25);
    CliRun run = cli("style reset " + quoted(package));
    ASSERT_EQ(run.status, 0) << run.err;
    Project project = ProjectPackage::load(package);
    const Asset& picture = project.assets.back();
    EXPECT_EQ(picture.originalFilename, "tide.jpg");
    EXPECT_EQ(project.style.background, (BackgroundStyle{BackgroundStyle::Image{picture.id}}));
    EXPECT_EQ(project.style.padding, 0.08);
    EXPECT_EQ(fs::file_size(ProjectPackage::assetURL(picture, package)),
              fs::file_size(fs::path(RECORDER_SOURCE_DIR) / "resources" / "backgrounds" / "tide.jpg"));
}

TEST_F(StyleCommand, TellsWhatToDoAboutBadInput) {
    auto package = makePackage("Take", 0.1);
    CliRun unknown = cli("style apply Nope " + quoted(package));
    EXPECT_EQ(unknown.status, 1);
    EXPECT_EQ(unknown.err, "There is no style called \"Nope\". Run recorder-cli style list to see the saved ones.\n");

    CliRun missing = cli("style save Clean " + quoted(dir / "Gone.tidereel"));
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.err.find("There is no project package at"), std::string::npos) << missing.err;

    CliRun blank = cli("style save '  ' " + quoted(package));
    EXPECT_EQ(blank.status, 2);
    EXPECT_NE(blank.err.find("A style needs a name"), std::string::npos);

    CliRun wrong = cli("style apply Clean");
    EXPECT_EQ(wrong.status, 2);
    EXPECT_EQ(wrong.err.rfind("Usage: recorder-cli style", 0), 0u) << wrong.err;
}

TEST_F(StyleCommand, ALibraryThatCantBeWrittenFailsSaveButNotRemember) {
    auto package = makePackage("Take", 0.1);
    writeText(support / "Styles", "a file where the folder should be");
    CliRun save = cli("style save Clean " + quoted(package));
    EXPECT_EQ(save.status, 1);
    EXPECT_EQ(save.err.rfind("Couldn't save the style \"Clean\".", 0), 0u) << save.err;
    EXPECT_FALSE(ProjectPackage::load(package).styleName) << "the package is left as it was";

    CliRun remember = cli("style remember " + quoted(package));
    EXPECT_EQ(remember.status, 0);
    EXPECT_NE(remember.err.find("remember style:"), std::string::npos) << remember.err;
}
