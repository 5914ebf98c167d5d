#include "clock/HostClock.h"
#include "log/Log.h"
#include "sink/AssetWriterSink.h"
#include "sink/CaptureError.h"
#include "support/MovieFile.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <thread>

#include <cmath>
#include <csignal>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace recorder;
using recorder::test::MovieFile;
using recorder::test::TempDir;

namespace {

constexpr std::int64_t second = HostClock::nanosecondsPerSecond;
constexpr std::int64_t frameStep = second / 60;

MediaSample solid(int width, int height, std::uint8_t level, std::int64_t pts) {
    auto frame = MediaSample::makeVideoFrame(AV_PIX_FMT_BGRA, width, height);
    for (int y = 0; y < height; ++y) {
        std::uint8_t* row = frame->data[0] + y * frame->linesize[0];
        for (int x = 0; x < width; ++x) {
            row[x * 4] = level;
            row[x * 4 + 1] = std::uint8_t(255 - level);
            row[x * 4 + 2] = 128;
            row[x * 4 + 3] = 255;
        }
    }
    return MediaSample::video(frame, pts);
}

MediaSample noise(int width, int height, std::int64_t pts) {
    static std::uint32_t state = 1;
    auto frame = MediaSample::makeVideoFrame(AV_PIX_FMT_BGRA, width, height);
    for (int y = 0; y < height; ++y) {
        auto* row = reinterpret_cast<std::uint32_t*>(frame->data[0] + y * frame->linesize[0]);
        for (int x = 0; x < width; ++x) row[x] = (state = state * 1664525u + 1013904223u);
    }
    return MediaSample::video(frame, pts);
}

MediaSample tone(int count, std::int64_t pts) {
    auto frame = MediaSample::makeAudioFrame(AV_SAMPLE_FMT_FLT, 48000, 2, count);
    auto* samples = reinterpret_cast<float*>(frame->data[0]);
    for (int i = 0; i < count; ++i) samples[2 * i] = samples[2 * i + 1] = 0.5f * float(std::sin(i * 0.05));
    return MediaSample::audio(frame, pts);
}

// Capture hands samples over in real time, never all at once.
void appendPaced(AssetWriterSink& sink, const MediaSample& sample, bool isVideo = true) {
    sink.append(sample, isVideo);
    usleep(3000);
}

struct QuietFFmpeg {
    QuietFFmpeg() { av_log_set_level(AV_LOG_ERROR); }
} quietFFmpeg;

AssetWriterSink::Video video(int width = 320, int height = 240) { return {width, height, VideoCodec::h264, 60, 2}; }

std::unique_ptr<AssetWriterSink> videoSink(const std::filesystem::path& file, int width = 320, int height = 240) {
    return std::make_unique<AssetWriterSink>(file, FileType::quickTimeMovie, std::vector<AssetWriterSink::Kind>{video(width, height)});
}

} // namespace

TEST(AssetWriterSink, WritesPicturesAtTheirTimesFromTheFirstSample) {
    TempDir dir;
    auto sink = videoSink(dir / "screen.mov");
    std::int64_t base = HostClock::nanoseconds();
    for (int i = 0; i < 30; ++i) appendPaced(*sink, solid(320, 240, std::uint8_t(i * 8), base + i * frameStep));
    double duration = sink->finish(base + 30 * frameStep);
    EXPECT_EQ(sink->appended(), 30);
    EXPECT_EQ(sink->dropped(), 0);
    EXPECT_EQ(sink->firstPTS(), base);

    MovieFile file(dir / "screen.mov");
    EXPECT_EQ(file.videoCodec(), "h264");
    EXPECT_EQ(file.width(), 320);
    EXPECT_EQ(file.height(), 240);
    ASSERT_EQ(file.videoPackets().size(), 30u);
    EXPECT_NEAR(file.videoPackets()[10].time, 10.0 / 60, 1e-4);
    EXPECT_TRUE(file.videoPackets()[0].key);
    EXPECT_NEAR(file.videoDuration(), duration, 0.002);
    auto pictures = file.pictures();
    ASSERT_EQ(pictures.size(), 30u);
    EXPECT_NEAR(pictures[20].at(100, 100).b, 160, 4);
    EXPECT_NEAR(pictures[20].at(100, 100).g, 95, 4);
}

TEST(AssetWriterSink, HoldsTheLastPictureUntilTheStop) {
    TempDir dir;
    auto sink = videoSink(dir / "screen.mov");
    std::int64_t base = HostClock::nanoseconds();
    sink->append(solid(320, 240, 10, base), true);
    sink->append(solid(320, 240, 20, base + frameStep), true);
    // Five seconds of a still screen after the last picture arrived.
    double duration = sink->finish(HostClock::nanoseconds() + 5 * second);
    EXPECT_NEAR(duration, 5 + double(frameStep) / second, 0.05);
    MovieFile file(dir / "screen.mov");
    EXPECT_EQ(file.videoPackets().size(), 2u);
    EXPECT_NEAR(file.videoDuration(), duration, 0.002);
}

TEST(AssetWriterSink, PutsAStillPictureOnDiskWhileTheRecordingGoesOn) {
    TempDir dir;
    auto sink = videoSink(dir / "screen.mov");
    std::int64_t base = HostClock::nanoseconds();
    appendPaced(*sink, solid(320, 240, 10, base));
    appendPaced(*sink, solid(320, 240, 200, base + frameStep));
    std::this_thread::sleep_for(std::chrono::milliseconds(2500));
    // What a crash now would leave: both pictures, shown for seconds.
    std::filesystem::copy_file(dir / "screen.mov", dir / "copy.mov");
    MovieFile copy(dir / "copy.mov");
    auto pictures = copy.pictures();
    ASSERT_GE(pictures.size(), 2u);
    EXPECT_NEAR(pictures[1].at(10, 10).b, 200, 4);
    EXPECT_GT(copy.videoDuration(), 0.9);

    double duration = sink->finish(HostClock::nanoseconds());
    EXPECT_EQ(sink->appended(), 2);
    MovieFile file(dir / "screen.mov");
    EXPECT_NEAR(file.videoDuration(), duration, 0.01);
    EXPECT_GE(duration, 2.5);
    EXPECT_LE(file.videoPackets().size(), 4u);
}

TEST(AssetWriterSink, EndsAtTheLastSampleWhenGivenNoStopTime) {
    TempDir dir;
    auto sink = videoSink(dir / "camera.mov");
    std::int64_t base = HostClock::nanoseconds();
    for (int i = 0; i < 10; ++i) appendPaced(*sink, solid(320, 240, 50, base + i * frameStep));
    EXPECT_NEAR(sink->finish(), 9.0 / 60, 1e-6);
}

TEST(AssetWriterSink, DropsSamplesThatDoNotMoveForwardWithoutCountingThem) {
    TempDir dir;
    auto sink = videoSink(dir / "screen.mov");
    std::int64_t base = HostClock::nanoseconds();
    sink->append(solid(320, 240, 10, base + second), true);
    sink->append(solid(320, 240, 20, base + second), true);     // equal
    sink->append(solid(320, 240, 30, base + second / 2), true); // earlier
    sink->append(solid(320, 240, 40, base + second + frameStep), true);
    sink->append(MediaSample::video(MediaSample::makeVideoFrame(AV_PIX_FMT_BGRA, 320, 240), std::nullopt), true);
    sink->finish();
    EXPECT_EQ(sink->appended(), 2);
    EXPECT_EQ(sink->dropped(), 0);
    EXPECT_EQ(MovieFile(dir / "screen.mov").videoPackets().size(), 2u);
}

TEST(AssetWriterSink, CountsAndDropsWhatDoesNotFitTheLaneAndKeepsTimeRising) {
    TempDir dir;
    auto sink = videoSink(dir / "screen.mov", 1920, 1080);
    std::int64_t base = HostClock::nanoseconds();
    constexpr int count = 120;
    // Handed over far faster than 1080p encodes: the lane fills.
    for (int i = 0; i < count; ++i) sink->append(solid(1920, 1080, std::uint8_t(i), base + i * frameStep), true);
    sink->finish(base + count * frameStep);
    EXPECT_GT(sink->dropped(), 0);
    EXPECT_GE(sink->appended(), int(AssetWriterSink::laneCapacity));
    EXPECT_EQ(sink->appended() + sink->dropped(), count);
    MovieFile file(dir / "screen.mov");
    ASSERT_EQ(int(file.videoPackets().size()), sink->appended());
    for (std::size_t i = 1; i < file.videoPackets().size(); ++i)
        EXPECT_GT(file.videoPackets()[i].time, file.videoPackets()[i - 1].time);
}

TEST(AssetWriterSink, CutsAPauseOutOfTheFile) {
    TempDir dir;
    auto sink = videoSink(dir / "screen.mov");
    std::int64_t base = HostClock::nanoseconds();
    // A frame every tenth of a second.
    auto frameAt = [&](int tenth) { return solid(320, 240, 90, base + tenth * second / 10); };
    for (int t = 0; t < 50; ++t) appendPaced(*sink, frameAt(t));
    sink->pause(base + 5 * second);
    for (int t = 50; t < 150; ++t) sink->append(frameAt(t), true); // kept out
    sink->resume(base + 15 * second);
    for (int t = 150; t < 200; ++t) appendPaced(*sink, frameAt(t));
    sink->finish();
    MovieFile file(dir / "screen.mov");
    ASSERT_EQ(file.videoPackets().size(), 100u);
    // The frame that arrived at 15 s now stands at 5 s.
    EXPECT_NEAR(file.videoPackets()[50].time, 5.0, 1e-3);
    EXPECT_NEAR(file.videoPackets().back().time, 9.9, 1e-3);
}

TEST(AssetWriterSink, LeavesPausesAfterTheLastPictureOutOfTheHeldEnd) {
    TempDir dir;
    auto sink = videoSink(dir / "screen.mov");
    std::int64_t base = HostClock::nanoseconds();
    sink->append(solid(320, 240, 10, base), true);
    sink->append(solid(320, 240, 10, base + second), true);
    std::int64_t now = HostClock::nanoseconds();
    // The last picture, then a pause of 3 s, then a stop 5 s after that picture.
    sink->pause(now);
    sink->resume(now + 3 * second);
    double duration = sink->finish(now + 5 * second);
    EXPECT_NEAR(duration, 1 + 2, 0.05);
    EXPECT_NEAR(MovieFile(dir / "screen.mov").videoDuration(), duration, 0.002);
}

TEST(AssetWriterSink, KeepsThePauseShiftThatHeldWhenTheLastPictureWasWritten) {
    TempDir dir;
    auto sink = videoSink(dir / "screen.mov");
    std::int64_t base = HostClock::nanoseconds() - 30 * second;
    sink->append(solid(320, 240, 10, base), true);
    sink->pause(base + 1 * second);
    sink->resume(base + 3 * second); // 2 s before the last picture
    sink->append(solid(320, 240, 10, base + 4 * second), true);
    std::int64_t now = HostClock::nanoseconds();
    sink->pause(now);
    sink->resume(now + 1 * second); // 1 s after it
    double duration = sink->finish(now + 4 * second);
    // 4 - 2 s up to the last picture, then 4 s to the stop less the 1 s pause.
    EXPECT_NEAR(duration, 2 + 3, 0.05);
}

TEST(AssetWriterSink, FinishWithNothingWrittenReturnsZero) {
    TempDir dir;
    auto sink = videoSink(dir / "screen.mov");
    EXPECT_EQ(sink->finish(HostClock::nanoseconds()), 0);
    EXPECT_FALSE(sink->firstPTS());
}

TEST(AssetWriterSink, RefusesEverythingWhilePausedAndCountsNothing) {
    TempDir dir;
    auto sink = videoSink(dir / "screen.mov");
    std::int64_t base = HostClock::nanoseconds();
    sink->append(solid(320, 240, 10, base), true);
    sink->pause(base + second);
    sink->pause(base + 2 * second); // a second pause is ignored
    for (int i = 1; i <= 20; ++i) sink->append(solid(320, 240, 10, base + second + i * frameStep), true);
    sink->resume(base + 3 * second);
    sink->append(solid(320, 240, 10, base + 4 * second), true);
    sink->finish();
    EXPECT_EQ(sink->appended(), 2);
    EXPECT_EQ(sink->dropped(), 0);
    MovieFile file(dir / "screen.mov");
    ASSERT_EQ(file.videoPackets().size(), 2u);
    EXPECT_NEAR(file.videoPackets()[1].time, 2.0, 1e-3);
}

TEST(AssetWriterSink, WritesSoundAsOneUnbrokenTrack) {
    TempDir dir;
    AssetWriterSink sink(dir / "mic.m4a", FileType::m4a, {AssetWriterSink::Audio{48000, 2}});
    std::int64_t base = HostClock::nanoseconds();
    // 2 s in runs of 480 samples, with a 0.5 s hole in the middle.
    for (int i = 0; i < 200; ++i) {
        if (i >= 100 && i < 150) continue;
        appendPaced(sink, tone(480, base + i * second / 100), false);
    }
    double duration = sink.finish();
    EXPECT_NEAR(duration, 1.99, 1e-6);
    MovieFile file(dir / "mic.m4a");
    ASSERT_TRUE(file.hasAudio());
    EXPECT_FALSE(file.hasVideo());
    EXPECT_NEAR(file.audioDuration(), 2.0, 0.03);
}

TEST(AssetWriterSinkFailure, AFileThatCannotBeMadeIsAWriterError) {
    TempDir dir;
    try {
        videoSink(dir / "missing" / "screen.mov");
        FAIL() << "no error";
    } catch (const CaptureError& error) {
        EXPECT_EQ(error.kind(), CaptureError::Kind::writerFailed);
        EXPECT_EQ(std::string(error.what()), "Could not start the video writer (screen.mov: No such file or directory).");
    }
}

// Runs `body` in a child process and returns its exit status.
template <class F>
int inChild(F&& body) {
    pid_t child = fork();
    if (child == 0) {
        body();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

TEST(AssetWriterSinkFailure, AFullDiskKeepsWhatWasWrittenPlayableAndSaysWhy) {
    TempDir dir;
    auto file = dir / "screen.mov";
    int status = inChild([&] {
        // The file may grow to 1.2 MB, about 5 s of this picture: the disk
        // is "full" after that.
        signal(SIGXFSZ, SIG_IGN);
        rlimit limit{1200 * 1024, 1200 * 1024};
        setrlimit(RLIMIT_FSIZE, &limit);
        std::string reason;
        auto sink = videoSink(file, 640, 480);
        sink->setOnFailure([&](const std::string& why) { reason = why; });
        std::int64_t base = HostClock::nanoseconds();
        for (int i = 0; i < 600; ++i) {
            sink->append(noise(640, 480, base + i * frameStep), true);
            usleep(2000);
        }
        double duration = sink->finish(base + 600 * frameStep);
        std::fprintf(stderr, "reason '%s', %.2f s, %d written\n", reason.c_str(), duration, sink->appended());
        _exit(reason == "File too large" && duration > 2 && sink->appended() < 600 ? 0 : 1);
    });
    EXPECT_EQ(WEXITSTATUS(status), 0);
    MovieFile movie(file);
    EXPECT_GT(movie.videoDuration(), 2);
    EXPECT_GT(movie.pictures().size(), 120u);
}

TEST(AssetWriterSinkFailure, AKilledRecordingPlaysUpToItsLastSeconds) {
    TempDir dir;
    auto file = dir / "screen.mov";
    inChild([&] {
        auto sink = videoSink(file, 640, 480);
        std::int64_t base = HostClock::nanoseconds();
        for (int i = 0; i < 240; ++i) {
            sink->append(solid(640, 480, std::uint8_t(i), base + i * frameStep), true);
            usleep(frameStep / 1000);
        }
        raise(SIGKILL);
    });
    MovieFile movie(file);
    // Four seconds were recorded; at most the last fragment and what the
    // encoder held are lost.
    EXPECT_GT(movie.videoDuration(), 2.5);
    EXPECT_GE(movie.pictures().size(), movie.videoPackets().size());
}
