#include "clock/HostClock.h"
#include "screen/ScreenCapturer.h"
#include "support/MovieFile.h"
#include "support/TempDir.h"
#include "support/TestWindow.h"
#include "support/XvfbDisplay.h"
#include "x11/X11CaptureBackend.h"

#include <gtest/gtest.h>
#include <xcb/randr.h>
#include <xcb/xcbext.h>

#include <sys/uio.h>

#include <condition_variable>
#include <cstring>

using namespace recorder;
using namespace std::chrono_literals;
using recorder::test::MovieFile;
using recorder::test::Picture;
using recorder::test::TempDir;
using recorder::test::TestWindow;
using recorder::test::XvfbDisplay;

namespace {

constexpr std::uint32_t red = 0xff0000, green = 0x00ff00, blue = 0x0000ff, white = 0xffffff, black = 0;

struct QuietFFmpeg {
    QuietFFmpeg() { av_log_set_level(AV_LOG_ERROR); }
} quietFFmpeg;

bool near(const Picture::Pixel& p, std::uint32_t rgb, int tolerance = 24) {
    return std::abs(p.r - int(rgb >> 16)) <= tolerance && std::abs(p.g - int((rgb >> 8) & 0xff)) <= tolerance &&
           std::abs(p.b - int(rgb & 0xff)) <= tolerance;
}

// libxcb 1.15's xcb_randr_set_monitor sends one part more than it fills in,
// so the request is put together here.
void setMonitor(xcb_connection_t* c, xcb_window_t root, xcb_randr_monitor_info_t& monitor) {
    xcb_protocol_request_t request{3, &xcb_randr_id, XCB_RANDR_SET_MONITOR, 1};
    xcb_randr_set_monitor_request_t head{};
    head.window = root;
    iovec parts[5] = {};
    parts[2] = {&head, sizeof head};
    parts[4] = {&monitor, sizeof monitor};
    xcb_send_request(c, 0, parts + 2, &request);
}

class ScreenCapturerTest : public ::testing::Test {
protected:
    XvfbDisplay display;
    TempDir dir;
    std::shared_ptr<X11CaptureBackend> backend = std::make_shared<X11CaptureBackend>(display.name());

    std::uint32_t firstDisplay() { return backend->shareableContent().displays.at(0).id; }

    std::unique_ptr<ScreenCapturer> capturer(CaptureSource source, int fps = 30) {
        return std::make_unique<ScreenCapturer>(std::move(source), fps, false, dir.path(), backend);
    }

    // Waits for something to happen on another thread, at most `limit`.
    template <class F>
    static bool waitFor(F&& condition, std::chrono::milliseconds limit = 3000ms) {
        auto until = std::chrono::steady_clock::now() + limit;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > until) return false;
            std::this_thread::sleep_for(10ms);
        }
        return true;
    }
};

} // namespace

TEST_F(ScreenCapturerTest, RecordsAnAreaAtItsEvenSizeWithThePatternsDrawnInIt) {
    TestWindow painter(display.name(), 100, 100, 400, 300, "Painter");
    painter.paint(red, white);
    // 301 × 201 points at (101, 101): 300 × 200 pixels.
    auto recording = capturer(CaptureSource::area(firstDisplay(), {101, 101, 301, 201}));
    recording->start();
    EXPECT_EQ(recording->pixelSize(), (Size{300, 200}));
    EXPECT_EQ(recording->captureRect(), (Rect{101, 101, 301, 201}));
    std::this_thread::sleep_for(700ms);
    painter.paint(green, black);
    std::this_thread::sleep_for(700ms);
    painter.paint(blue, white);
    std::this_thread::sleep_for(700ms);
    auto result = recording->stop();
    ASSERT_TRUE(result);
    EXPECT_NEAR(result->duration, 2.1, 0.15);

    MovieFile file(result->videoURL);
    EXPECT_EQ(file.width(), 300);
    EXPECT_EQ(file.height(), 200);
    EXPECT_NEAR(file.videoDuration(), result->duration, 0.01);
    auto pictures = file.pictures();
    ASSERT_GE(pictures.size(), 3u);
    // The area begins 1 px inside the window, whose halves meet at x 300 on
    // screen, so at x 199 in the picture.
    EXPECT_TRUE(near(pictures.front().at(50, 100), red));
    EXPECT_TRUE(near(pictures.front().at(250, 100), white));
    bool sawGreen = false;
    for (const auto& picture : pictures) sawGreen |= near(picture.at(50, 100), green) && near(picture.at(250, 100), black);
    EXPECT_TRUE(sawGreen);
    EXPECT_TRUE(near(pictures.back().at(50, 100), blue));
    EXPECT_TRUE(near(pictures.back().at(250, 100), white));
}

TEST_F(ScreenCapturerTest, AStillScreenMakesFewFramesAndAFileAsLongAsTheRecording) {
    TestWindow still(display.name(), 0, 0, 640, 480, "Still");
    still.paint(green);
    auto recording = capturer(CaptureSource::display(firstDisplay()), 60);
    recording->start();
    std::this_thread::sleep_for(3s);
    auto result = recording->stop();
    ASSERT_TRUE(result);
    EXPECT_LE(recording->frameCount(), 2);
    EXPECT_EQ(result->pixelSize, (Size{1920, 1080}));
    EXPECT_NEAR(result->duration, 3.0, 0.1);
    MovieFile file(result->videoURL);
    EXPECT_NEAR(file.videoDuration(), result->duration, 0.01);
    // The first picture, and the same again once a second so it is on disk.
    EXPECT_LE(file.videoPackets().size(), 4u);
}

TEST_F(ScreenCapturerTest, MovingThePointerMakesNoFrames) {
    auto recording = capturer(CaptureSource::display(firstDisplay()), 60);
    recording->start();
    xcb_connection_t* c = xcb_connect(display.name().c_str(), nullptr);
    xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
    for (int i = 0; i < 50; ++i) {
        xcb_warp_pointer(c, XCB_NONE, root, 0, 0, 0, 0, std::int16_t(100 + i * 10), 300);
        xcb_flush(c);
        std::this_thread::sleep_for(10ms);
    }
    xcb_disconnect(c);
    recording->stop();
    EXPECT_EQ(recording->frameCount(), 1);
}

TEST_F(ScreenCapturerTest, RecordsACoveredWindowWithItsOwnContent) {
    TestWindow recorded(display.name(), 200, 200, 400, 300, "Recorded");
    recorded.paint(red, blue);
    TestWindow cover(display.name(), 300, 250, 500, 400, "Cover");
    cover.paint(green);
    auto content = backend->shareableContent();
    ASSERT_EQ(content.windows.size(), 2u);
    EXPECT_EQ(content.windows[0].title, "Cover") << "front first";
    auto recording = capturer(CaptureSource::window(recorded.id(), "Recorded", "TestApp"));
    recording->start();
    EXPECT_EQ(recording->captureRect(), (Rect{200, 200, 400, 300}));
    std::this_thread::sleep_for(500ms);
    recorded.paint(blue, red);
    std::this_thread::sleep_for(500ms);
    auto result = recording->stop();
    ASSERT_TRUE(result);
    MovieFile file(result->videoURL);
    EXPECT_EQ(file.width(), 400);
    auto pictures = file.pictures();
    ASSERT_GE(pictures.size(), 2u);
    // (350, 200) lies under the cover on screen.
    EXPECT_TRUE(near(pictures.front().at(50, 50), red));
    EXPECT_TRUE(near(pictures.front().at(350, 200), blue));
    EXPECT_TRUE(near(pictures.back().at(50, 50), blue));
    EXPECT_TRUE(near(pictures.back().at(350, 200), red));
}

TEST_F(ScreenCapturerTest, APauseIsCutOutOfTheFile) {
    TestWindow busy(display.name(), 0, 0, 320, 240, "Busy");
    auto recording = capturer(CaptureSource::area(firstDisplay(), {0, 0, 320, 240}));
    std::atomic<bool> running{true};
    std::thread animation([&] {
        for (std::uint32_t i = 0; running; ++i) {
            busy.paint(i * 0x010203u & 0xffffff);
            std::this_thread::sleep_for(30ms);
        }
    });
    recording->start();
    std::this_thread::sleep_for(2s);
    recording->pause(HostClock::nanoseconds());
    std::this_thread::sleep_for(2s);
    recording->resume(HostClock::nanoseconds());
    std::this_thread::sleep_for(2s);
    auto result = recording->stop();
    running = false;
    animation.join();
    ASSERT_TRUE(result);
    EXPECT_NEAR(result->duration, 4.0, 0.1);
    MovieFile file(result->videoURL);
    EXPECT_NEAR(file.videoDuration(), 4.0, 0.1);
    // No gap of the pause's length between two pictures.
    const auto& packets = file.videoPackets();
    for (std::size_t i = 1; i < packets.size(); ++i) EXPECT_LT(packets[i].time - packets[i - 1].time, 0.2);
}

TEST_F(ScreenCapturerTest, AWindowThatClosesEndsTheStreamAndKeepsWhatWasRecorded) {
    auto window = std::make_unique<TestWindow>(display.name(), 50, 50, 300, 200, "Closing");
    window->paint(red);
    auto recording = capturer(CaptureSource::window(window->id(), "Closing", "TestApp"));
    std::mutex lock;
    std::optional<std::string> stopped;
    recording->setOnStreamStopped([&](const CaptureError& error) {
        std::lock_guard guard(lock);
        stopped = error.what();
    });
    recording->start();
    std::this_thread::sleep_for(1s);
    window.reset();
    ASSERT_TRUE(waitFor([&] {
        std::lock_guard guard(lock);
        return stopped.has_value();
    }));
    EXPECT_EQ(*stopped, "The screen capture stopped: the window was closed.");
    auto result = recording->stop();
    ASSERT_TRUE(result);
    EXPECT_GT(result->duration, 0.9);
    EXPECT_GE(MovieFile(result->videoURL).pictures().size(), 1u);
}

TEST_F(ScreenCapturerTest, AMonitorThatDisappearsEndsTheStream) {
    xcb_connection_t* c = xcb_connect(display.name().c_str(), nullptr);
    xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
    const char* name = "TEST-2";
    auto* atom = xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, std::uint16_t(std::strlen(name)), name), nullptr);
    free(xcb_randr_query_version_reply(c, xcb_randr_query_version(c, 1, 5), nullptr));
    xcb_randr_monitor_info_t monitor{};
    monitor.name = atom->atom;
    monitor.x = 960;
    monitor.width = 960;
    monitor.height = 1080;
    monitor.width_in_millimeters = 250;
    monitor.height_in_millimeters = 280;
    setMonitor(c, root, monitor);
    free(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));

    auto content = backend->shareableContent();
    const ShareableContent::Display* added = nullptr;
    for (const auto& d : content.displays)
        if (d.name == name) added = &d;
    ASSERT_NE(added, nullptr) << content.toJson().dump();
    EXPECT_EQ(added->frame, (Rect{960, 0, 960, 1080}));
    auto recording = capturer(CaptureSource::display(added->id));
    std::atomic<bool> stopped{false};
    std::string sentence;
    recording->setOnStreamStopped([&](const CaptureError& error) {
        sentence = error.what();
        stopped = true;
    });
    recording->start();
    EXPECT_EQ(recording->displayFrame(), (Rect{960, 0, 960, 1080}));
    std::this_thread::sleep_for(500ms);
    xcb_randr_delete_monitor(c, root, atom->atom);
    xcb_flush(c);
    free(atom);
    ASSERT_TRUE(waitFor([&] { return bool(stopped); }));
    EXPECT_EQ(sentence, "The screen capture stopped: the display was disconnected.");
    auto result = recording->stop();
    ASSERT_TRUE(result);
    EXPECT_EQ(result->pixelSize, (Size{960, 1080}));
    xcb_disconnect(c);
}

TEST_F(ScreenCapturerTest, AnUnlistedDisplayRecordsTheFirstInstead) {
    auto recording = capturer(CaptureSource::display(42));
    recording->start();
    EXPECT_EQ(recording->displayFrame(), (Rect{0, 0, 1920, 1080}));
    EXPECT_TRUE(recording->stop());
}

TEST_F(ScreenCapturerTest, AnUnknownWindowIsNothingToCapture) {
    auto recording = capturer(CaptureSource::window(0x7fffff, "", ""));
    try {
        recording->start();
        FAIL() << "started";
    } catch (const CaptureError& error) {
        EXPECT_EQ(error.kind(), CaptureError::Kind::noContent);
        EXPECT_STREQ(error.what(), "Nothing to capture: no display or window was found.");
    }
    EXPECT_FALSE(recording->stop());
}

TEST(ScreenCapturerWithoutServer, NoXServerIsNothingToCapture) {
    X11CaptureBackend backend(":9999");
    EXPECT_THROW(backend.shareableContent(), CaptureError);
    TempDir dir;
    ScreenCapturer recording(CaptureSource::display(1), 60, false, dir.path(), std::make_shared<X11CaptureBackend>(":9999"));
    EXPECT_THROW(recording.start(), CaptureError);
}

TEST(ScreenCapturerSizes, AreEvenAndIntegralAndSetTheBitRate) {
    EXPECT_EQ(ScreenCapturer::evenPixels(301, 1), 300);
    EXPECT_EQ(ScreenCapturer::evenPixels(301, 2), 602);
    EXPECT_EQ(ScreenCapturer::evenPixels(200.7, 2), 400);
    EXPECT_EQ(ScreenCapturer::integral({10.5, 20.2, 100.2, 50.5}), (Rect{10, 20, 101, 51}));
    EXPECT_DOUBLE_EQ(ScreenCapturer::bitrateMbps(1920, 1080, 60), 16);
    EXPECT_DOUBLE_EQ(ScreenCapturer::bitrateMbps(1920, 1080, 30), 10);
    EXPECT_DOUBLE_EQ(ScreenCapturer::bitrateMbps(3840, 2160, 60), 64);
}

TEST(CaptureSourceName, NamesEachKindOfSource) {
    std::vector<ShareableContent::Display> displays = {{7, "DELL U2720Q", {}, 1920, 1080}};
    EXPECT_EQ(CaptureSource::display(7).displayName(displays), "DELL U2720Q");
    EXPECT_EQ(CaptureSource::display(8).displayName(displays), "Display");
    EXPECT_EQ(CaptureSource::window(1, "", "Files").displayName(), "Files");
    EXPECT_EQ(CaptureSource::window(1, "Notes.txt", "Editor").displayName(), "Editor — Notes.txt");
    EXPECT_EQ(CaptureSource::area(7, {0, 0, 640.9, 480.2}).displayName(), "Area 640×480");
}
