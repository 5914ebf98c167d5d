#include "package/ProjectPackage.h"

#include "support/SoundFiles.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

using namespace recorder;
using namespace recorder::test;
namespace fs = std::filesystem;

namespace {

struct CliRun {
    int status = -1;
    std::string out;
    std::string err;
};

// Runs the real recorder-cli with a home of its own, so the recordings folder
// is <home>/Videos/<product>.
CliRun cli(const std::string& arguments, const TempDir& dir) {
    auto outFile = dir / "stdout", errFile = dir / "stderr";
    std::string command = "HOME='" + dir.path().string() + "' XDG_CONFIG_HOME='" + (dir / "config").string() +
                          "' XDG_DATA_HOME='" + (dir / "data").string() + "' '" RECORDER_CLI_PATH "' " + arguments +
                          " </dev/null >'" + outFile.string() + "' 2>'" + errFile.string() + "'";
    int raw = std::system(command.c_str());
    return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, readText(outFile), readText(errFile)};
}

std::string quoted(const fs::path& path) { return "'" + path.string() + "'"; }

std::string trimmed(std::string text) {
    while (!text.empty() && text.back() == '\n') text.pop_back();
    return text;
}

// A movie with a 660 Hz tone, imported through the command line.
fs::path importedMovie(const TempDir& dir) {
    auto movie = dir / "Talk.mp4";
    std::string make = "ffmpeg -v error -y -f lavfi -i testsrc=size=320x180:rate=25:duration=3 -f lavfi -i "
                       "sine=frequency=660:sample_rate=48000:duration=3 -c:v libx264 -pix_fmt yuv420p -c:a aac "
                       "-shortest " + quoted(movie) + " >/dev/null 2>&1";
    EXPECT_EQ(std::system(make.c_str()), 0);
    CliRun run = cli("import " + quoted(movie), dir);
    EXPECT_EQ(run.status, 0) << run.err;
    return trimmed(run.out);
}

} // namespace

TEST(CliImport, PrintsTheNewPackageInTheRecordingsFolder) {
    TempDir dir;
    fs::path package = importedMovie(dir);
    EXPECT_EQ(package, dir / "Videos" / "Tidereel" / "Talk.tidereel");
    Project project = ProjectPackage::load(package);
    EXPECT_EQ(project.fromVideo, true);
    EXPECT_TRUE(project.asset(AssetKind::microphone));

    CliRun named = cli("import " + quoted(dir / "Talk.mp4") + " --name 'Final cut'", dir);
    EXPECT_EQ(trimmed(named.out), (dir / "Videos" / "Tidereel" / "Final cut.tidereel").string());
}

TEST(CliImport, RefusesASoundFileWithASentenceAndExitOne) {
    TempDir dir;
    writeWav(dir / "voice.wav", tone(440, 1, 0.3));
    CliRun run = cli("import " + quoted(dir / "voice.wav"), dir);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err.rfind("That file has no video track.", 0), 0u) << run.err;
    EXPECT_TRUE(run.out.empty());
}

TEST(CliCleanMic, WritesTheFileTheSwitchesNameAndTheMixPlaysIt) {
    TempDir dir;
    fs::path package = importedMovie(dir);
    CliRun off = cli("clean-mic " + quoted(package), dir);
    EXPECT_EQ(off.status, 1);
    EXPECT_NE(off.err.find("Turn on noise removal or levelling"), std::string::npos) << off.err;

    // Levelling alone: noise removal would take a steady tone for noise.
    Project project = ProjectPackage::load(package);
    project.audio.micLeveling = true;
    ProjectPackage::save(project, package);
    CliRun run = cli("clean-mic " + quoted(package), dir);
    ASSERT_EQ(run.status, 0) << run.err;
    fs::path cleaned = trimmed(run.out);
    EXPECT_EQ(cleaned, ProjectPackage::assetsURL(package) / "mic.clean-l.m4a");
    auto original = ProjectPackage::assetURL(*project.asset(AssetKind::microphone), package);
    EXPECT_EQ(readAll(cleaned).size(), readAll(original).size());
    // FFmpeg's sine (RMS 0.088) is on its way up to the leveller's 0.1, and
    // the mix plays the cleaned file, not the original.
    double before = rms(slice(readAll(original), 2, 2.9)), after = rms(slice(readAll(cleaned), 2, 2.9));
    EXPECT_GT(after, before * 1.05);
    EXPECT_LT(after, 0.1);
    ASSERT_EQ(cli("mix " + quoted(package) + " --out " + quoted(dir / "mix.wav"), dir).status, 0);
    EXPECT_NEAR(rms(slice(channel(readAll(dir / "mix.wav"), 2, 0), 2, 2.9)), after, 0.001);
}

TEST(CliMix, WritesTheWholeSoundAsLongAsTheVideo) {
    TempDir dir;
    fs::path package = importedMovie(dir);
    CliRun run = cli("mix " + quoted(package) + " --out " + quoted(dir / "mix.wav"), dir);
    ASSERT_EQ(run.status, 0) << run.err;
    Samples mix = readAll(dir / "mix.wav");
    AudioFileReader reader(dir / "mix.wav");
    EXPECT_EQ(reader.fileSampleRate(), 48000);
    EXPECT_EQ(reader.fileChannels(), 2);
    EXPECT_NEAR(double(mix.size()) / 2 / 48000, 3, 0.05);
    EXPECT_NEAR(toneFrequency(slice(channel(mix, 2, 1), 0.5, 2.5)), 660, 1);

    Project project = ProjectPackage::load(package);
    project.audio.micMuted = true;
    ProjectPackage::save(project, package);
    ASSERT_EQ(cli("mix " + quoted(package) + " --out " + quoted(dir / "muted.wav"), dir).status, 0);
    EXPECT_LT(rms(readAll(dir / "muted.wav")), 0.0001);
}
