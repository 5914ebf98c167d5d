#include "export/ExportDecision.h"
#include "export/ExportError.h"
#include "export/ExportPreset.h"
#include "export/ExportSettings.h"
#include "export/ExportViewModel.h"
#include "export/FilenamePattern.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <fstream>

namespace recorder {
namespace {

// 2026-03-05 14:07:59 UTC.
constexpr Date march5{1772719679};

class UtcZone : public ::testing::Test {
protected:
    void SetUp() override {
        const char* old = std::getenv("TZ");
        if (old) saved_ = old;
        hadZone_ = old != nullptr;
        setenv("TZ", "UTC", 1);
        tzset();
    }
    void TearDown() override {
        if (hadZone_) setenv("TZ", saved_.c_str(), 1);
        else unsetenv("TZ");
        tzset();
    }

private:
    std::string saved_;
    bool hadZone_ = false;
};

Project projectOf(double seconds, int width = 1920, int height = 1080) {
    Project project("Demo", CanvasSettings{width, height, 60}, "1.0");
    Clip clip;
    clip.sourceEnd = seconds;
    project.clips.push_back(clip);
    return project;
}

ExportSettings settingsOf(ExportFormat format, int width, int height, int fps) {
    ExportSettings s;
    s.format = format;
    s.width = width;
    s.height = height;
    s.fps = fps;
    return s;
}

using FilenamePatternTest = UtcZone;

TEST_F(FilenamePatternTest, Name_AppendsDateInPosixFormatAndExtension) {
    EXPECT_EQ(FilenamePattern::name("Demo", march5, "mp4"), "Demo 2026-03-05 at 14.07.mp4");
    EXPECT_EQ(FilenamePattern::name("Demo", march5, "gif"), "Demo 2026-03-05 at 14.07.gif");
}

TEST_F(FilenamePatternTest, Name_ReplacesSlashesAndColonsByHyphens) {
    EXPECT_EQ(FilenamePattern::name("a/b:c//d", march5, "mp4"), "a-b-c--d 2026-03-05 at 14.07.mp4");
}

TEST_F(FilenamePatternTest, Name_OfEmptyProjectBeginsWithRecording) {
    EXPECT_EQ(FilenamePattern::name("", march5, "mp4"), "Recording 2026-03-05 at 14.07.mp4");
}

TEST_F(FilenamePatternTest, Name_ShowsLocalTime) {
    setenv("TZ", "Asia/Kolkata", 1);
    tzset();
    EXPECT_EQ(FilenamePattern::name("Demo", march5, "mp4"), "Demo 2026-03-05 at 19.37.mp4");
}

TEST(ExportPresetTest, Table_HoldsTheSevenSizesInOrder) {
    auto all = ExportPreset::all();
    ASSERT_EQ(all.size(), 7u);
    EXPECT_EQ(all[0], (ExportPreset{"source", "Same as project", 0, 0, "Uses the project canvas size"}));
    EXPECT_EQ(all[1], (ExportPreset{"1080p", "1080p", 1920, 1080, ""}));
    EXPECT_EQ(all[2], (ExportPreset{"1440p", "1440p", 2560, 1440, ""}));
    EXPECT_EQ(all[3], (ExportPreset{"4k", "4K", 3840, 2160, ""}));
    EXPECT_EQ(all[4], (ExportPreset{"vertical", "Vertical 9:16", 1080, 1920, "Reels, TikTok, Shorts"}));
    EXPECT_EQ(all[5], (ExportPreset{"square", "Square 1:1", 1080, 1080, "Feed posts"}));
    EXPECT_EQ(all[6], (ExportPreset{"portrait45", "Portrait 4:5", 1080, 1350, "Instagram feed"}));
    EXPECT_EQ(ExportPreset::withID("4k")->width, 3840);
    EXPECT_FALSE(ExportPreset::withID("8k"));
}

TEST(ExportDecisionTest, Source_UsesTheCanvas) {
    auto decision = ExportDecision::forProject(projectOf(4, 1000, 700), ExportPreset::source(), "Product");
    EXPECT_EQ(decision.width, 1000);
    EXPECT_EQ(decision.height, 700);
    EXPECT_DOUBLE_EQ(decision.durationSeconds, 4);
}

TEST(ExportDecisionTest, Preset_OverridesTheCanvas) {
    auto decision = ExportDecision::forProject(projectOf(4, 1000, 700), *ExportPreset::withID("vertical"), "P");
    EXPECT_EQ(decision.width, 1080);
    EXPECT_EQ(decision.height, 1920);
}

TEST(ExportDecisionTest, OddCanvas_IsMadeEven) {
    auto decision = ExportDecision::forProject(projectOf(4, 1001, 701), ExportPreset::source(), "P");
    EXPECT_EQ(decision.width, 1000);
    EXPECT_EQ(decision.height, 700);
}

TEST(ExportDecisionTest, Marks_FollowShowBrandAndEnabled) {
    Project project = projectOf(4);
    EXPECT_FALSE(ExportDecision::forProject(project, ExportPreset::source(), "P").watermark);

    WatermarkSettings mark;
    mark.enabled = false;
    mark.showBrand = true;
    mark.brandPlacement = WatermarkPlacement::topLeft;
    mark.brandPosition = Point{0.2, 0.3};
    project.watermark = mark;
    auto decision = ExportDecision::forProject(project, ExportPreset::source(), "Studio");
    ASSERT_TRUE(decision.watermark);
    EXPECT_EQ(decision.watermark->text, "Made with Studio");
    EXPECT_EQ(decision.watermark->placement, WatermarkPlacement::topLeft);
    EXPECT_EQ(decision.watermark->center, (Point{0.2, 0.3}));
    EXPECT_FALSE(decision.customWatermark);

    project.watermark->enabled = true;
    project.watermark->showBrand = false;
    decision = ExportDecision::forProject(project, ExportPreset::source(), "Studio");
    EXPECT_FALSE(decision.watermark);
    EXPECT_EQ(decision.customWatermark, project.watermark);
}

TEST(ExportSettingsTest, AverageBitRate_FollowsTheFormula) {
    EXPECT_EQ(settingsOf(ExportFormat::mp4H264, 1920, 1080, 30).averageBitRate(), 9000000);
    EXPECT_EQ(settingsOf(ExportFormat::mp4H264, 1920, 1080, 59).averageBitRate(), 9000000);
    EXPECT_EQ(settingsOf(ExportFormat::mp4H264, 1920, 1080, 60).averageBitRate(), 14000000);
    EXPECT_EQ(settingsOf(ExportFormat::mp4HEVC, 1920, 1080, 30).averageBitRate(), 6300000);
    EXPECT_NEAR(double(settingsOf(ExportFormat::mp4HEVC, 3840, 2160, 60).averageBitRate()), 39200000, 1);
    EXPECT_EQ(settingsOf(ExportFormat::mp4H264, 1280, 720, 30).averageBitRate(), 4000000);
}

TEST(ExportSettingsTest, FrameCount_DropsThePartialLastFrame) {
    ExportSettings s = settingsOf(ExportFormat::mp4H264, 640, 360, 30);
    s.decision.durationSeconds = 10.99;
    EXPECT_EQ(s.frameCount(), 329);
    s.decision.durationSeconds = 0.02;
    EXPECT_EQ(s.frameCount(), 0);
    s.decision.durationSeconds = 10.2;
    EXPECT_EQ(s.frameCount(), 306);
}

TEST(ExportSettingsTest, Gif_UsesItsOwnFrameRate) {
    ExportSettings s = settingsOf(ExportFormat::gif, 640, 360, 60);
    s.decision.durationSeconds = 30;
    EXPECT_EQ(s.framesPerSecond(), 15);
    EXPECT_EQ(s.frameCount(), 450);
    EXPECT_EQ(settingsOf(ExportFormat::mp4H264, 640, 360, 60).maxKeyFrameInterval(), 120);
}

TEST(ExportErrorTest, Messages_AreTheSentencesThePersonReads) {
    EXPECT_STREQ(ExportError(ExportError::Kind::empty).what(), "There is nothing to export.");
    EXPECT_STREQ(ExportError(ExportError::Kind::writer).what(), "The video encoder failed.");
    EXPECT_STREQ(ExportError(ExportError::Kind::cancelled).what(), "Export cancelled.");
    EXPECT_STREQ(ExportError(ExportError::Kind::stalled).what(),
                 "The encoder stopped responding. Please try again (and email us the log if it happens twice).");
}

using ExportViewModelTest = UtcZone;

TEST_F(ExportViewModelTest, Settings_GifIsAlwaysFifteenFramesASecond) {
    ExportViewModel sheet;
    sheet.format = ExportFormat::gif;
    sheet.fps = 60;
    auto s = sheet.settings(projectOf(3), march5, "P");
    EXPECT_EQ(s.gifFPS, 15);
    EXPECT_EQ(s.framesPerSecond(), 15);
    EXPECT_EQ(s.outputURL.filename(), "Demo 2026-03-05 at 14.07.gif");
}

TEST_F(ExportViewModelTest, Settings_PicksAFreeNameInTheDestination) {
    test::TempDir folder;
    ExportViewModel sheet;
    sheet.destination = folder.path();
    sheet.preset = *ExportPreset::withID("square");
    auto first = sheet.settings(projectOf(3), march5, "P");
    EXPECT_EQ(first.outputURL, folder / "Demo 2026-03-05 at 14.07.mp4");
    EXPECT_EQ(first.width, 1080);
    EXPECT_EQ(first.height, 1080);
    std::ofstream(first.outputURL) << "x";
    EXPECT_EQ(sheet.settings(projectOf(3), march5, "P").outputURL, folder / "Demo 2026-03-05 at 14.07 2.mp4");
}

TEST_F(ExportViewModelTest, Faces_RunFromFormThroughRunningToDone) {
    ExportViewModel sheet;
    EXPECT_EQ(sheet.face(), ExportViewModel::Face::form);
    sheet.started();
    EXPECT_EQ(sheet.face(), ExportViewModel::Face::running);
    sheet.progressed(0.427);
    EXPECT_EQ(sheet.statusTitle(), "Rendering");
    EXPECT_EQ(sheet.statusDetail(), "42% \u00b7 please wait");
    sheet.progressed(1);
    EXPECT_EQ(sheet.statusDetail(), "100% \u00b7 finishing the file");
    sheet.succeeded("/tmp/out.mp4");
    EXPECT_EQ(sheet.face(), ExportViewModel::Face::done);
    bool dismissed = false;
    sheet.dismiss = [&] { dismissed = true; };
    sheet.close();
    EXPECT_TRUE(dismissed);
}

TEST_F(ExportViewModelTest, Cancel_StopsTheExporterAndReturnsToTheFormWithoutMessage) {
    ExportViewModel sheet;
    int stops = 0;
    sheet.cancelExporter = [&] { ++stops; };
    sheet.started();
    sheet.cancel();
    EXPECT_EQ(stops, 1);
    EXPECT_EQ(sheet.face(), ExportViewModel::Face::cancelling);
    EXPECT_EQ(sheet.statusTitle(), "Cancelling");
    EXPECT_EQ(sheet.statusDetail(), "Stopping\u2026");
    sheet.failed(ExportError(ExportError::Kind::cancelled));
    EXPECT_EQ(sheet.face(), ExportViewModel::Face::form);
    EXPECT_FALSE(sheet.error);
}

TEST_F(ExportViewModelTest, Failure_ShowsTheWritersMessageInFullUnderTheForm) {
    ExportViewModel sheet;
    sheet.started();
    sheet.failed(std::runtime_error("Could not open /nope/out.mp4: No such file or directory"));
    EXPECT_EQ(sheet.face(), ExportViewModel::Face::form);
    EXPECT_EQ(sheet.error, "Could not open /nope/out.mp4: No such file or directory");
    sheet.started();
    EXPECT_FALSE(sheet.error);
}

} // namespace
} // namespace recorder
