#include "Settings.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace recorder;
using recorder::test::TempDir;
using recorder::test::writeText;

namespace {

struct SettingsFile : ::testing::Test {
    TempDir dir;
    std::filesystem::path file = dir / "settings.conf";

    Settings withText(const std::string& ini) {
        writeText(file, ini);
        return Settings(file);
    }
};

} // namespace

TEST_F(SettingsFile, AbsentKeysGiveTheirDefaults) {
    Settings settings(file);
    EXPECT_FALSE(settings.onboardingDone());
    EXPECT_EQ(settings.countdownSeconds(), 3);
    EXPECT_EQ(settings.captureFrameRate(), 60);
    EXPECT_TRUE(settings.systemAudioEnabled());
    EXPECT_FALSE(settings.lastCameraID());
    EXPECT_FALSE(settings.lastMicID());
    EXPECT_FALSE(settings.focusModeDND());
    EXPECT_FALSE(settings.focusModeHideDesktop());
    EXPECT_EQ(settings.hotkeyKeyCode(), 15);
    EXPECT_EQ(settings.hotkeyModifiers(), 0x1100);
    EXPECT_FALSE(settings.agentAllowControl());
    EXPECT_FALSE(settings.agentAllowLocalHTTP());
    EXPECT_TRUE(settings.agentAskBeforeRecording());
    EXPECT_EQ(settings.agentHTTPPort(), 4519);
    EXPECT_FALSE(settings.crashReportsLastSeen());
}

TEST_F(SettingsFile, ValuesOfAnotherTypeGiveTheDefault) {
    auto settings = withText("[General]\ncountdownSeconds=soon\ncaptureFrameRate=\nsystemAudioEnabled=maybe\n"
                             "agentAskBeforeRecording=42x\n");
    EXPECT_EQ(settings.countdownSeconds(), 3);
    EXPECT_EQ(settings.captureFrameRate(), 60);
    EXPECT_TRUE(settings.systemAudioEnabled());
    EXPECT_TRUE(settings.agentAskBeforeRecording());
}

TEST_F(SettingsFile, WrittenValuesReadBackAfterReopening) {
    {
        Settings settings(file);
        settings.setInt("countdownSeconds", 0);
        settings.setBool("systemAudioEnabled", false);
        settings.setString("lastMicID", "none");
        settings.setDate("crashReports.lastSeen", Date(1'763'000'000));
        settings.sync();
    }
    Settings reopened(file);
    EXPECT_EQ(reopened.countdownSeconds(), 0);
    EXPECT_FALSE(reopened.systemAudioEnabled());
    EXPECT_EQ(reopened.lastMicID(), "none");
    EXPECT_EQ(reopened.crashReportsLastSeen(), Date(1'763'000'000));
}

TEST_F(SettingsFile, HttpPortOutsideTheUserRangeCountsAsTheDefault) {
    for (const char* port : {"0", "80", "1024", "70000", "-1"})
        EXPECT_EQ(withText(std::string("[General]\nagentHTTPPort=") + port + "\n").agentHTTPPort(), 4519) << port;
    EXPECT_EQ(withText("[General]\nagentHTTPPort=1025\n").agentHTTPPort(), 1025);
    EXPECT_EQ(withText("[General]\nagentHTTPPort=65535\n").agentHTTPPort(), 65535);
}

TEST_F(SettingsFile, NoneAndAbsentMeanNoCameraButDifferForTheMicrophone) {
    auto none = withText("[General]\nlastCameraID=none\nlastMicID=none\n");
    EXPECT_FALSE(none.cameraChoice());
    EXPECT_EQ(none.lastMicID(), "none");
    Settings absent(dir / "other.conf");
    EXPECT_FALSE(absent.cameraChoice());
    EXPECT_FALSE(absent.lastMicID());
}

TEST_F(SettingsFile, ReopenOnPhoneSurvivesExactlyOneRead) {
    {
        Settings settings(file);
        settings.setString("reopenRecorderOnPhone", "device-1");
        settings.sync();
    }
    Settings first(file);
    EXPECT_EQ(first.takeReopenRecorderOnPhone(), "device-1");
    first.sync();
    Settings second(file);
    EXPECT_FALSE(second.takeReopenRecorderOnPhone());
}

TEST_F(SettingsFile, AConfiguredProjectsFolderIsCreatedWithItsParents) {
    auto target = dir / "a" / "b" / "Recordings";
    auto settings = withText("[General]\nprojectsDirectory=" + target.string() + "\n");
    EXPECT_EQ(settings.projectsDirectory(), target);
    EXPECT_TRUE(std::filesystem::is_directory(target));
    EXPECT_EQ(settings.exportDirectory(), target);
}

TEST_F(SettingsFile, AnEmptyProjectsFolderFallsBackToTheVideosFolder) {
    ::setenv("HOME", dir.path().c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (dir / "config").c_str(), 1);
    writeText(dir / "config" / "user-dirs.dirs", "# written by xdg-user-dirs-update\nXDG_VIDEOS_DIR=\"$HOME/Filme\"\n");
    auto settings = withText("[General]\nprojectsDirectory=\nexportDirectory=/nowhere/exports\n");
    EXPECT_EQ(settings.projectsDirectory(), dir / "Filme" / "Tidereel");
    EXPECT_TRUE(std::filesystem::is_directory(dir / "Filme" / "Tidereel"));
    EXPECT_EQ(settings.exportDirectory(), "/nowhere/exports");
    EXPECT_FALSE(std::filesystem::exists("/nowhere/exports"));
}
