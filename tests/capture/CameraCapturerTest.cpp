#include "camera/CameraCapturer.h"
#include "camera/TestCameraDevice.h"
#include "clock/HostClock.h"
#include "devices/CaptureDevices.h"
#include "sink/CaptureError.h"
#include "support/MovieFile.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <thread>
#include <vector>

namespace recorder {
namespace {

using namespace std::chrono_literals;

// Waits, without asserting anything about speed, for something to happen.
template <class F>
bool eventually(F&& condition, std::chrono::seconds timeout = 20s) {
    auto until = std::chrono::steady_clock::now() + timeout;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > until) return false;
        std::this_thread::sleep_for(10ms);
    }
    return true;
}

// What the test camera handed over, and whether the capturer was recording
// as it did: that can't change while a frame is being taken, since both run
// on the camera's queue.
struct HandedOver {
    struct Frame {
        int index;
        std::int64_t hostTime;
        bool recording;
    };
    std::mutex lock;
    std::vector<Frame> frames;
    std::atomic<const CameraCapturer*> capturer{nullptr};
    std::atomic<int> opened{0};

    bool recording() const { return capturer && capturer.load()->isRecording(); }
    std::size_t count() {
        std::lock_guard guard(lock);
        return frames.size();
    }
    std::vector<Frame> recorded() {
        std::lock_guard guard(lock);
        std::vector<Frame> out;
        std::copy_if(frames.begin(), frames.end(), std::back_inserter(out), [](const Frame& f) { return f.recording; });
        return out;
    }
};

// The test pattern standing in for a camera under the id "cam".
class PatternOpener : public CameraDeviceOpener {
public:
    PatternOpener(std::shared_ptr<HandedOver> log, TestCameraDevice::Options options)
        : log_(std::move(log)), options_(std::move(options)) {
        options_.onFrame = [log = log_](int index, std::int64_t hostTime) {
            std::lock_guard guard(log->lock);
            log->frames.push_back({index, hostTime, log->recording()});
        };
    }
    std::unique_ptr<CameraDevice> open(const std::string& deviceID) override {
        if (deviceID != "cam") return nullptr;
        ++log_->opened;
        auto device = std::make_unique<TestCameraDevice>(options_);
        if (!device->open()) return nullptr;
        return device;
    }

private:
    std::shared_ptr<HandedOver> log_;
    TestCameraDevice::Options options_;
};

class CountingPreview : public FramePreview {
public:
    void show(const MediaSample& frame) override {
        if (frame.frame().format == AV_PIX_FMT_BGRA && frame.presentationTime()) ++shown;
    }
    std::atomic<int> shown{0};
};

// A small pattern: the encoder keeps up with it on a busy machine.
TestCameraDevice::Options small() {
    TestCameraDevice::Options options;
    options.width = 160;
    options.height = 120;
    return options;
}

// After decoding, black comes back near black, never exactly.
bool looksBlack(const test::Picture& picture) {
    for (int y = 0; y < picture.height; y += 8)
        for (int x = 0; x < picture.width; x += 8)
            if (auto p = picture.at(x, y); p.r + p.g + p.b > 3 * 24) return false;
    return true;
}

struct Rig {
    explicit Rig(TestCameraDevice::Options options = small(), std::shared_ptr<HandedOver> handedOver = nullptr)
        : log(handedOver ? std::move(handedOver) : std::make_shared<HandedOver>()) {
        capturer = std::make_unique<CameraCapturer>(std::make_unique<PatternOpener>(log, std::move(options)));
        log->capturer = capturer.get();
    }
    // Records until the camera has handed over `frames` frames while recording.
    std::optional<CapturedTrack> record(const std::filesystem::path& url, std::size_t frames, int fps = 30) {
        capturer->startWriting(url, fps);
        EXPECT_TRUE(eventually([&] { return log->recorded().size() >= frames; }));
        return capturer->stopWriting();
    }

    std::shared_ptr<HandedOver> log;
    std::unique_ptr<CameraCapturer> capturer;
};

double seconds(std::int64_t hostTime) { return HostClock::toSeconds(hostTime); }

TEST(CameraCapturer, AlwaysBlackCameraRecordsFromTheSixteenthFrameOn) {
    test::TempDir dir;
    auto options = small();
    options.black = [](int) { return true; };
    Rig rig(options);
    rig.capturer->select("cam");
    ASSERT_TRUE(rig.capturer->hasInput());

    auto track = rig.record(dir / "camera.mov", 30);
    ASSERT_TRUE(track);
    EXPECT_EQ(rig.capturer->blackSkipped(), CameraCapturer::maxBlackSkipped);
    auto recorded = rig.log->recorded();
    ASSERT_GT(recorded.size(), 16u);
    ASSERT_TRUE(track->firstSampleHostSeconds);
    EXPECT_DOUBLE_EQ(*track->firstSampleHostSeconds, seconds(recorded[15].hostTime));
    test::MovieFile movie(track->url);
    EXPECT_GE(movie.videoPackets().size(), 5u) << "black is better than no track";
}

TEST(CameraCapturer, OnlyFramesBeforeTheFirstPictureAreCheckedForBlack) {
    test::TempDir dir;
    // Three black frames, one picture, then black again.
    auto log = std::make_shared<HandedOver>();
    auto recordedSoFar = std::make_shared<int>(0);
    auto options = small();
    options.black = [log, recordedSoFar](int) {
        if (!log->recording()) return false;
        return ++*recordedSoFar != 4;
    };
    Rig rig(options, log);
    rig.capturer->select("cam");

    auto track = rig.record(dir / "camera.mov", 20);
    ASSERT_TRUE(track);
    EXPECT_EQ(rig.capturer->blackSkipped(), 3);
    auto recorded = log->recorded();
    ASSERT_TRUE(track->firstSampleHostSeconds);
    EXPECT_DOUBLE_EQ(*track->firstSampleHostSeconds, seconds(recorded[3].hostTime));

    test::MovieFile movie(track->url);
    auto pictures = movie.pictures();
    ASSERT_GE(pictures.size(), 5u);
    EXPECT_FALSE(looksBlack(pictures.front()));
    // The black after the picture was written, not skipped.
    EXPECT_TRUE(looksBlack(pictures.back()));
}

TEST(CameraCapturer, BlackIsJudgedOnAnEightByEightGridOfColourBytes) {
    auto picture = MediaSample::makeVideoFrame(AV_PIX_FMT_BGRA, 64, 32);
    for (int y = 0; y < 32; ++y) std::fill_n(picture->data[0] + std::ptrdiff_t(y) * picture->linesize[0], 64 * 4, 0);
    auto pixel = [&](int x, int y) { return picture->data[0] + std::ptrdiff_t(y) * picture->linesize[0] + x * 4; };
    pixel(0, 0)[3] = 255;
    pixel(4, 2)[3] = 255; // alpha doesn't count
    EXPECT_TRUE(CameraCapturer::isBlack(*picture));
    pixel(0, 0)[2] = 200; // off the grid
    pixel(5, 2)[1] = 200;
    EXPECT_TRUE(CameraCapturer::isBlack(*picture));
    pixel(64 * 15 / 16, 32 * 15 / 16)[0] = 1; // the last grid point
    EXPECT_FALSE(CameraCapturer::isBlack(*picture));

    auto planar = MediaSample::makeVideoFrame(AV_PIX_FMT_YUV420P, 64, 32);
    EXPECT_FALSE(CameraCapturer::isBlack(*planar)) << "only BGRA can be black";
}

TEST(CameraCapturer, RecordsTheTestCameraAtThirtyFramesWhenAskedForSixty) {
    setenv(TestCameraDevice::environmentSwitch, "1", 1);
    test::TempDir dir;
    CameraCapturer capturer;
    capturer.select(TestCameraDevice::deviceID);
    ASSERT_TRUE(capturer.hasInput());
    EXPECT_EQ(capturer.pixelSize(), (Size{640, 480}));

    double started = HostClock::seconds();
    capturer.startWriting(dir / "camera.mov", 60);
    EXPECT_TRUE(capturer.isRecording());
    std::this_thread::sleep_for(3s);
    auto track = capturer.stopWriting();
    double stopped = HostClock::seconds();
    unsetenv(TestCameraDevice::environmentSwitch);

    ASSERT_TRUE(track);
    EXPECT_FALSE(capturer.isRecording());
    EXPECT_EQ(track->url, dir / "camera.mov");
    ASSERT_TRUE(track->firstSampleHostSeconds);
    EXPECT_GE(*track->firstSampleHostSeconds, started);
    EXPECT_LE(*track->firstSampleHostSeconds, stopped);
    EXPECT_GT(track->duration, 2.0);

    test::MovieFile movie(track->url);
    EXPECT_EQ(movie.videoCodec(), "h264");
    EXPECT_EQ(movie.width(), 640);
    EXPECT_EQ(movie.height(), 480);
    // Written as a 30 fps stream: a key frame every two seconds, 60 frames.
    const auto& packets = movie.videoPackets();
    ASSERT_GT(packets.size(), 61u);
    EXPECT_TRUE(packets[0].key);
    EXPECT_TRUE(packets[60].key);
    std::vector<double> steps;
    for (std::size_t i = 1; i < packets.size(); ++i) steps.push_back(packets[i].time - packets[i - 1].time);
    std::sort(steps.begin(), steps.end());
    EXPECT_NEAR(steps[steps.size() / 2], 1.0 / 30, 0.004);

    auto pictures = movie.pictures();
    ASSERT_FALSE(pictures.empty());
    // testsrc2 is colourful: a recorded picture is far from grey.
    const auto& middle = pictures[pictures.size() / 2];
    int spread = 0;
    for (int x = 0; x < middle.width; x += 16) {
        auto p = middle.at(x, middle.height / 2);
        spread = std::max(spread, std::max({p.r, p.g, p.b}) - std::min({p.r, p.g, p.b}));
    }
    EXPECT_GT(spread, 100);
}

TEST(CameraCapturer, OddSizesAreWrittenEven) {
    test::TempDir dir;
    auto options = small();
    options.width = 321;
    options.height = 241;
    Rig rig(options);
    rig.capturer->select("cam");
    EXPECT_EQ(rig.capturer->pixelSize(), (Size{321, 241}));
    auto track = rig.record(dir / "camera.mov", 10);
    ASSERT_TRUE(track);
    test::MovieFile movie(track->url);
    EXPECT_EQ(movie.width(), 320);
    EXPECT_EQ(movie.height(), 240);
}

TEST(CameraCapturer, APauseIsCutOutOfTheTrack) {
    test::TempDir dir;
    Rig rig;
    rig.capturer->select("cam");
    rig.capturer->startWriting(dir / "camera.mov", 30);
    ASSERT_TRUE(eventually([&] { return rig.log->recorded().size() >= 15; }));
    rig.capturer->pauseWriting(HostClock::nanoseconds());
    std::this_thread::sleep_for(1500ms);
    rig.capturer->resumeWriting(HostClock::nanoseconds());
    std::size_t before = rig.log->recorded().size();
    ASSERT_TRUE(eventually([&] { return rig.log->recorded().size() >= before + 15; }));
    auto recorded = rig.log->recorded();
    double wall = seconds(recorded.back().hostTime - recorded.front().hostTime);
    auto track = rig.capturer->stopWriting();
    ASSERT_TRUE(track);
    EXPECT_LT(track->duration, wall - 1.0);
    test::MovieFile movie(track->url);
    EXPECT_LT(movie.videoDuration(), wall - 1.0);
}

TEST(CameraCapturer, CancellingLeavesTheFileAndStopsWriting) {
    test::TempDir dir;
    Rig rig;
    rig.capturer->select("cam");
    rig.capturer->startWriting(dir / "camera.mov", 30);
    ASSERT_TRUE(eventually([&] { return rig.log->recorded().size() >= 5; }));
    rig.capturer->cancelWriting();
    EXPECT_FALSE(rig.capturer->isRecording());
    EXPECT_FALSE(rig.capturer->stopWriting());
    EXPECT_TRUE(rig.capturer->hasInput()) << "the camera stays on for the panel";
}

TEST(CameraCapturer, PreviewsGetFramesWhileNothingIsRecorded) {
    test::TempDir dir;
    Rig rig;
    auto preview = std::make_shared<CountingPreview>();
    rig.capturer->frames().add(preview);
    rig.capturer->select("cam");
    EXPECT_TRUE(eventually([&] { return preview->shown >= 5; }));
    EXPECT_FALSE(rig.capturer->isRecording());
    EXPECT_FALSE(rig.capturer->stopWriting()) << "nothing was being written";
    EXPECT_TRUE(std::filesystem::is_empty(dir.path()));

    rig.capturer->select(std::nullopt);
    EXPECT_FALSE(rig.capturer->hasInput());
    int shown = preview->shown;
    std::this_thread::sleep_for(200ms);
    EXPECT_EQ(preview->shown, shown) << "no camera, no frames";
}

TEST(CameraCapturer, SelectingTheSameCameraKeepsItOpen) {
    Rig rig;
    rig.capturer->select("cam");
    rig.capturer->select("cam");
    EXPECT_EQ(rig.log->opened, 1);
    rig.capturer->select(std::nullopt);
    rig.capturer->select("cam");
    EXPECT_EQ(rig.log->opened, 2);
}

TEST(CameraCapturer, ACameraThatIsntThereLeavesNoInput) {
    test::TempDir dir;
    CameraCapturer capturer;
    capturer.select((dir / "video7").string());
    EXPECT_FALSE(capturer.hasInput());
    // Opens, but isn't a camera.
    capturer.select("/dev/null");
    EXPECT_FALSE(capturer.hasInput());
    EXPECT_EQ(capturer.pixelSize(), Size{});
    EXPECT_THROW(capturer.startWriting(dir / "camera.mov", 30), CaptureError);
    EXPECT_FALSE(capturer.isRecording());
    EXPECT_FALSE(capturer.stopWriting());

    Rig rig;
    rig.capturer->select("cam");
    ASSERT_TRUE(rig.capturer->hasInput());
    rig.capturer->select("gone");
    EXPECT_FALSE(rig.capturer->hasInput()) << "the old camera is let go even when the new one fails";
}

TEST(CameraCapturer, TestCameraIsListedOnlyWhenAskedFor) {
    test::TempDir dir;
    unsetenv(TestCameraDevice::environmentSwitch);
    EXPECT_TRUE(CaptureDevices(nullptr, dir.path()).cameras().empty());
    setenv(TestCameraDevice::environmentSwitch, "1", 1);
    auto cameras = CaptureDevices(nullptr, dir.path()).cameras();
    unsetenv(TestCameraDevice::environmentSwitch);
    ASSERT_EQ(cameras.size(), 1u);
    EXPECT_EQ(cameras[0].id, "test:testsrc2");
    EXPECT_EQ(cameras[0].name, "Test pattern");
}

} // namespace
} // namespace recorder
