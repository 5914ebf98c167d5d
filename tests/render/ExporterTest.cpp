#include "export/ExportError.h"
#include "export/ExportFrameRenderer.h"
#include "export/Exporter.h"
#include "support/MovieFile.h"
#include "support/TempDir.h"
#include "support/TestPackage.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace recorder;
using namespace recorder::test;

namespace {

// A small package whose screen recording moves, so every frame differs.
class ExporterTest : public ::testing::Test {
protected:
    ExporterTest() : package(dir.path(), {640, 360, 30}) {}

    Asset addScreen(double seconds, const std::string& size = "640x360", int rate = 30) {
        return package.add(AssetKind::screen, "screen.mov",
                           "-f lavfi -i testsrc2=s=" + size + ":r=" + std::to_string(rate) + ":d=" +
                               std::to_string(seconds) + " -c:v libx264 -preset ultrafast -pix_fmt yuv420p",
                           seconds);
    }

    void addMicrophone(double seconds) {
        package.add(AssetKind::microphone, "mic.m4a",
                    "-f lavfi -i sine=f=440:sample_rate=48000:d=" + std::to_string(seconds) + " -c:a aac", seconds);
    }

    ExportSettings settingsFor(ExportFormat format, double seconds, int width = 640, int height = 360) {
        ExportSettings s;
        s.format = format;
        s.width = s.decision.width = width;
        s.height = s.decision.height = height;
        s.decision.durationSeconds = seconds;
        s.fps = 30;
        s.gifFPS = 15;
        s.outputURL = dir / (format == ExportFormat::gif ? "out.gif" : "out.mp4");
        return s;
    }

    Exporter exporterFor(const ExportSettings& s) {
        package.save();
        return Exporter(package.project(), package.path(), s,
                        std::make_unique<ExportFrameRenderer>(package.project(), package.path(), s.width, s.height));
    }

    TempDir dir;
    TestPackage package;
};

ExportError::Kind failureOf(Exporter& exporter) {
    try {
        exporter.run();
    } catch (const ExportError& error) {
        return error.kind();
    }
    ADD_FAILURE() << "the export did not fail";
    return ExportError::Kind::writer;
}

} // namespace

TEST_F(ExporterTest, Mp4_HasFloorOfDurationTimesFpsFramesAndNoPartialLastOne) {
    package.clipOver(addScreen(11), 0, 10.99);
    auto s = settingsFor(ExportFormat::mp4H264, package.project().duration());
    auto exporter = exporterFor(s);
    std::vector<double> progress;
    exporter.setProgressHandler([&](double value) { progress.push_back(value); });
    exporter.run();

    MovieFile movie(s.outputURL);
    EXPECT_EQ(movie.videoPackets().size(), 329u);
    EXPECT_NEAR(movie.videoDuration(), 10.9667, 0.0005);
    EXPECT_FALSE(movie.hasAudio()) << "no sound in the project, no sound track";
    ASSERT_FALSE(progress.empty());
    EXPECT_EQ(progress.back(), 1);
    EXPECT_EQ(progress.size(), 329u / 5 + 1 + 1) << "every fifth frame and the end";
    EXPECT_DOUBLE_EQ(progress[1], 5.0 / 329);
}

TEST_F(ExporterTest, Mp4_ShowsTheScreenFrameInForceAtEachOutputTime) {
    // Frame N of the recording is a flat grey of luma 19 + 3·N.
    makeNumberedVideo(package.path() / "assets" / "screen.mov", 60, "0");
    package.clipOver(package.addExisting(AssetKind::screen, "screen.mov", 2), 0, 2);
    auto s = settingsFor(ExportFormat::mp4H264, 2);
    exporterFor(s).run();
    auto pictures = MovieFile(s.outputURL).pictures();
    ASSERT_EQ(pictures.size(), 60u);
    for (int i : {1, 2, 17, 30, 59}) {
        // Luma 19 + 3i read back as RGB: (Y − 16)·255/219.
        double grey = (3.0 * i + 3) * 255 / 219;
        EXPECT_NEAR(pictures[std::size_t(i)].at(320, 180).g, grey, 3) << "output frame " << i;
    }
}

TEST_F(ExporterTest, Empty_ProjectShorterThanAFrameFailsBeforeOpeningAnything) {
    package.clipOver(addScreen(1), 0, 0.02);
    auto s = settingsFor(ExportFormat::mp4H264, 0.02);
    auto exporter = exporterFor(s);
    try {
        exporter.run();
        FAIL() << "a 0.02 s project exported";
    } catch (const ExportError& error) {
        EXPECT_EQ(error.kind(), ExportError::Kind::empty);
        EXPECT_STREQ(error.what(), "There is nothing to export.");
    }
    EXPECT_FALSE(std::filesystem::exists(s.outputURL));
}

TEST_F(ExporterTest, Sound_IsAacStereoAt48kHzAndNeverOutlastsThePicture) {
    package.clipOver(addScreen(3, "160x90"), 0, 2.5);
    addMicrophone(3);
    auto s = settingsFor(ExportFormat::mp4H264, 2.5, 320, 180);
    exporterFor(s).run();
    MovieFile movie(s.outputURL);
    ASSERT_TRUE(movie.hasAudio());
    EXPECT_EQ(movie.videoPackets().size(), 75u);
    EXPECT_GT(movie.audioDuration(), 2.4);
    EXPECT_LE(movie.audioDuration(), movie.videoDuration() + 1e-3);
    AVFormatContext* format = nullptr;
    ASSERT_EQ(avformat_open_input(&format, s.outputURL.c_str(), nullptr, nullptr), 0);
    avformat_find_stream_info(format, nullptr);
    int audio = av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    EXPECT_EQ(format->streams[audio]->codecpar->codec_id, AV_CODEC_ID_AAC);
    EXPECT_EQ(format->streams[audio]->codecpar->sample_rate, 48000);
    EXPECT_EQ(format->streams[audio]->codecpar->ch_layout.nb_channels, 2);
    avformat_close_input(&format);
}

TEST_F(ExporterTest, MissingFiles_LeaveTheirLayerOrSoundOutAndTheExportGoesOn) {
    const Asset& screen = package.addExisting(AssetKind::screen, "gone.mov", 2);
    package.clipOver(screen, 0, 2);
    package.addExisting(AssetKind::microphone, "gone.m4a", 2);
    auto s = settingsFor(ExportFormat::mp4H264, 2, 320, 180);
    exporterFor(s).run();
    MovieFile movie(s.outputURL);
    EXPECT_EQ(movie.videoPackets().size(), 60u);
    EXPECT_FALSE(movie.hasAudio());
}

TEST_F(ExporterTest, Cancel_DuringARunStopsWithExportCancelledBeforeTheEnd) {
    package.clipOver(addScreen(10, "160x90", 10), 0, 10);
    auto s = settingsFor(ExportFormat::mp4H264, 10);
    auto exporter = exporterFor(s);
    std::atomic<double> lastProgress{0};
    exporter.setProgressHandler([&](double value) {
        lastProgress = value;
        if (value >= 0.1) exporter.cancel();
    });
    EXPECT_EQ(failureOf(exporter), ExportError::Kind::cancelled);
    EXPECT_LT(lastProgress.load(), 0.2) << "the loop looks at the flag before every frame";
    EXPECT_STREQ(ExportError(ExportError::Kind::cancelled).what(), "Export cancelled.");
}

TEST_F(ExporterTest, Cancel_FromAnotherThreadReturnsFromAWait) {
    package.clipOver(addScreen(10, "160x90", 10), 0, 10);
    auto s = settingsFor(ExportFormat::mp4HEVC, 10, 1280, 720);
    auto exporter = exporterFor(s);
    std::thread canceller([&] {
        while (exporter.progress() < 0.02) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        exporter.cancel();
    });
    EXPECT_EQ(failureOf(exporter), ExportError::Kind::cancelled);
    canceller.join();
    EXPECT_LT(exporter.progress(), 1);
}

TEST_F(ExporterTest, Gif_LoopsForEverWithFifteenFramesASecond) {
    package.clipOver(addScreen(30, "64x36", 5), 0, 30);
    auto s = settingsFor(ExportFormat::gif, 30, 320, 180);
    exporterFor(s).run();

    auto bytes = readBytes(s.outputURL);
    ASSERT_GT(bytes.size(), 40u);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 6), "GIF89a");
    // Right after the screen descriptor: NETSCAPE2.0 with a loop count of 0.
    std::string loop(bytes.begin() + 13, bytes.begin() + 13 + 19);
    EXPECT_EQ(loop, std::string("\x21\xff\x0bNETSCAPE2.0\x03\x01\x00\x00\x00", 19));

    MovieFile gif(s.outputURL);
    EXPECT_FALSE(gif.hasAudio());
    ASSERT_EQ(gif.videoPackets().size(), 450u);
    double total = 0;
    for (const auto& packet : gif.videoPackets()) {
        EXPECT_TRUE(std::abs(packet.duration - 0.06) < 1e-6 || std::abs(packet.duration - 0.07) < 1e-6)
            << packet.duration;
        total += packet.duration;
    }
    EXPECT_NEAR(total, 30, 1e-6) << "hundredths rounded on the running total keep 1/15 s a frame";
}

TEST_F(ExporterTest, Gif_FramesMatchTheRenderedPictures) {
    package.clipOver(addScreen(2, "320x180", 15), 0, 2);
    auto s = settingsFor(ExportFormat::gif, 2, 320, 180);
    exporterFor(s).run();
    MovieFile gif(s.outputURL);
    auto pictures = gif.pictures();
    ASSERT_EQ(pictures.size(), 30u);
    ExportFrameRenderer renderer(package.project(), package.path(), 320, 180);
    renderer.open();
    std::vector<std::uint8_t> expected(320 * 180 * 4);
    for (int i = 0; i < 30; ++i) {
        renderer.draw(i, i / 15.0, expected.data(), 320 * 4);
        if (i % 10 != 7) continue;
        double error = 0;
        for (std::size_t p = 0; p < expected.size(); p += 4)
            for (int c = 0; c < 3; ++c) {
                double d = double(expected[p + c]) - pictures[i].bgra[p + c];
                error += d * d;
            }
        double psnr = 10 * std::log10(255.0 * 255.0 / (error / (320 * 180 * 3)));
        EXPECT_GT(psnr, 30) << "frame " << i;
    }
}

TEST_F(ExporterTest, Cancel_LeavesNoFinishedGif) {
    package.clipOver(addScreen(10, "160x90", 10), 0, 10);
    auto s = settingsFor(ExportFormat::gif, 10, 320, 180);
    auto exporter = exporterFor(s);
    exporter.setProgressHandler([&](double value) {
        if (value >= 0.2) exporter.cancel();
    });
    EXPECT_EQ(failureOf(exporter), ExportError::Kind::cancelled);
    EXPECT_FALSE(std::filesystem::exists(s.outputURL));
}
