#include "clock/HostClock.h"
#include "events/EventLog.h"
#include "package/ProjectPackage.h"
#include "recording/RecordingSession.h"
#include "support/MovieFile.h"
#include "support/PulseAudioServer.h"
#include "support/SoundFiles.h"
#include "support/TempDir.h"
#include "support/TestWindow.h"
#include "support/XTestInput.h"
#include "support/XvfbDisplay.h"
#include "x11/X11CaptureBackend.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using namespace recorder;
using namespace std::chrono_literals;
using recorder::test::MovieFile;
using recorder::test::PulseAudioServer;
using recorder::test::TempDir;
using recorder::test::TestWindow;
using recorder::test::XTestInput;
using recorder::test::XvfbDisplay;
using Kind = RecordingSession::State::Kind;

namespace {

struct QuietFFmpeg {
    QuietFFmpeg() { av_log_set_level(AV_LOG_ERROR); }
} quietFFmpeg;

constexpr std::uint32_t red = 0xff0000, green = 0x00ff00, blue = 0x0000ff, white = 0xffffff;

// A private X server and sound server, and a session recording into a
// temporary folder, driven by a real Qt event loop.
class RecordingSessionTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        static int argc = 1;
        static char name[] = "app_tests";
        static char* argv[] = {name, nullptr};
        if (!QCoreApplication::instance()) new QCoreApplication(argc, argv);
    }

    void SetUp() override {
        setenv("DISPLAY", display.name().c_str(), 1);
        RecordingSession::Environment environment;
        environment.backend = backend;
        environment.sound = PulseContext::connect("app_tests");
        environment.recordingsFolder = dir / "Recordings";
        environment.supportFolder = dir / "support";
        session = std::make_unique<RecordingSession>(std::move(environment));
        session->addObserver([this](RecordingSession::Change change) {
            if (change == RecordingSession::Change::state) states.push_back(session->state());
        });
        session->onFailure = [this] { ++failures; };
    }

    void TearDown() override { session.reset(); }

    // Runs the event loop until the condition holds or the time is up.
    template <class F>
    bool runUntil(F&& condition, std::chrono::milliseconds limit = 10s) {
        auto until = std::chrono::steady_clock::now() + limit;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > until) return false;
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
            std::this_thread::sleep_for(2ms);
        }
        return true;
    }
    void runFor(std::chrono::milliseconds time) {
        auto until = std::chrono::steady_clock::now() + time;
        runUntil([&] { return std::chrono::steady_clock::now() >= until; }, time + 1s);
    }
    bool isIn(Kind kind) const { return session->state().kind == kind; }

    RecordingSession::Options areaOptions(Rect area) {
        RecordingSession::Options options;
        options.source = CaptureSource::area(backend->shareableContent().displays.at(0).id, area);
        options.fps = 30;
        options.countdown = 0;
        options.systemAudio = false;
        return options;
    }

    // As in the application, the microphone runs before Record is pressed;
    // an idle test microphone only delivers its first sound after a second.
    void withMicrophone(RecordingSession::Options& options) {
        options.microphoneID = PulseAudioServer::microphone;
        auto heard = std::make_shared<std::atomic<bool>>(false);
        session->microphone().setOnSample([heard](const MediaSample&) { *heard = true; });
        session->microphone().select(options.microphoneID);
        ASSERT_TRUE(runUntil([&] { return heard->load(); }, 5s)) << "the test microphone sent nothing";
    }

    void startAndWaitForRecording(const RecordingSession::Options& options) {
        session->start(options);
        ASSERT_TRUE(runUntil([&] { return isIn(Kind::recording); })) << session->lastError().value_or("");
    }

    void stopAndWait() {
        bool done = false;
        session->stop([&] { done = true; });
        ASSERT_TRUE(runUntil([&] { return done; }, 20s));
    }

    Project finishedProject() {
        EXPECT_TRUE(session->finishedProjectURL()) << session->lastError().value_or("");
        return ProjectPackage::load(*session->finishedProjectURL());
    }

    std::filesystem::path assetPath(const Project& project, AssetKind kind) {
        const Asset* asset = project.asset(kind);
        EXPECT_TRUE(asset) << "no asset of that kind";
        return asset ? ProjectPackage::assetURL(*asset, *session->finishedProjectURL()) : std::filesystem::path();
    }

    bool recordingsFolderIsEmpty() {
        std::error_code error;
        return std::filesystem::is_empty(dir / "Recordings", error) || !std::filesystem::exists(dir / "Recordings");
    }

    XvfbDisplay display{1280, 720};
    PulseAudioServer sound;
    TempDir dir;
    std::shared_ptr<X11CaptureBackend> backend = std::make_shared<X11CaptureBackend>(display.name());
    std::unique_ptr<RecordingSession> session;
    std::vector<RecordingSession::State> states;
    int failures = 0;
};

// Feeds the test microphone in real time through pacat: silence until
// beep(), then a loud tone. The way from pacat through the server's null
// sink to its monitor is itself a third of a second long here, so a listener
// of our own (parec on the same monitor, timing arrivals) says when the
// sound really reached the microphone.
class LiveMicrophone {
public:
    explicit LiveMicrophone(const PulseAudioServer& server) {
        std::string format = " --raw --format=float32le --rate=48000 --channels=1 --latency-msec=10";
        player_ = popen(("pacat --server=" + server.server() + " --device=" + PulseAudioServer::microphoneWire + format).c_str(), "w");
        listener_ = popen(("parec --server=" + server.server() + " --device=" + PulseAudioServer::microphoneWire +
                           ".monitor" + format).c_str(), "r");
        feeder_ = std::thread([this] { feed(); });
        ear_ = std::thread([this] { listen(); });
    }
    ~LiveMicrophone() {
        running_ = false;
        feeder_.join();
        pclose(player_);
        ear_.join();
        pclose(listener_);
    }

    // Host seconds at which the tone went to the server.
    double beep() {
        beepRequested_ = true;
        while (beganAt_ == 0) std::this_thread::sleep_for(100us);
        return beganAt_;
    }
    // Seconds from beep() until the listener heard it; negative if it didn't.
    double heardAfter() {
        auto until = std::chrono::steady_clock::now() + 3s;
        while (heardAt_ == 0 && std::chrono::steady_clock::now() < until) std::this_thread::sleep_for(1ms);
        return heardAt_ == 0 ? -1 : heardAt_ - beganAt_;
    }

private:
    static constexpr int chunk = 240; // 5 ms

    void feed() {
        std::vector<float> samples(chunk);
        auto next = std::chrono::steady_clock::now();
        std::int64_t written = 0;
        while (running_) {
            bool loud = beepRequested_;
            for (int i = 0; i < chunk; ++i)
                samples[std::size_t(i)] = loud ? float(0.5 * std::sin(2 * M_PI * 1000 * double(written + i) / 48000)) : 0;
            fwrite(samples.data(), sizeof(float), samples.size(), player_);
            fflush(player_);
            if (loud && beganAt_ == 0) beganAt_ = HostClock::seconds();
            written += chunk;
            next += 5ms;
            std::this_thread::sleep_until(next);
        }
    }

    void listen() {
        std::vector<float> block(chunk);
        while (running_ && fread(block.data(), sizeof(float), block.size(), listener_) == block.size()) {
            bool loud = std::any_of(block.begin(), block.end(), [](float x) { return std::fabs(x) > 0.1f; });
            if (loud && beganAt_ != 0 && heardAt_ == 0) heardAt_ = HostClock::seconds();
        }
    }

    FILE* player_ = nullptr;
    FILE* listener_ = nullptr;
    std::thread feeder_;
    std::thread ear_;
    std::atomic<bool> running_{true};
    std::atomic<bool> beepRequested_{false};
    std::atomic<double> beganAt_{0};
    std::atomic<double> heardAt_{0};
};

// Seconds into the samples where the sound first rises above `threshold`.
double onset(const test::Samples& samples, float threshold = 0.1f, int rate = 48000) {
    for (std::size_t i = 0; i < samples.size(); ++i)
        if (std::fabs(samples[i]) > threshold) return double(i) / rate;
    return -1;
}

} // namespace

TEST_F(RecordingSessionTest, AnAreaWithClicksBecomesAProjectWithItsCanvasAssetsAndZooms) {
    TestWindow painter(display.name(), 100, 100, 400, 300, "Painter");
    painter.paint(red, white);
    auto options = areaOptions({100, 100, 400, 300});
    options.systemAudio = true;
    withMicrophone(options);
    startAndWaitForRecording(options);
    XTestInput input(display.name());
    input.moveTo(200, 150);
    runFor(1000ms);
    input.click(1);
    runFor(2500ms);
    stopAndWait();

    Project project = finishedProject();
    EXPECT_EQ(project.canvas, (CanvasSettings{1920, 1440, 30})); // 400 × 300 is 4:3
    EXPECT_EQ(project.name, session->finishedProjectURL()->stem().string());
    EXPECT_EQ(project.name.substr(0, 10), "Recording ");
    std::vector<AssetKind> kinds;
    for (const auto& asset : project.assets) kinds.push_back(asset.kind);
    EXPECT_EQ(kinds, (std::vector<AssetKind>{AssetKind::screen, AssetKind::systemAudio, AssetKind::microphone,
                                            AssetKind::events, AssetKind::image}));
    const Asset& screen = project.assets.at(0);
    EXPECT_EQ(screen.relativePath, "screen.mov");
    EXPECT_EQ(screen.pixelSize, (Size{400, 300}));
    EXPECT_EQ(screen.captureRect, (Rect{100, 100, 400, 300}));
    EXPECT_NEAR(*screen.duration, 3.5, 0.4);
    EXPECT_EQ(screen.startOffset, 0);
    EXPECT_EQ(project.assets.at(1).relativePath, "system.m4a");
    const Asset& mic = project.assets.at(2);
    EXPECT_EQ(mic.relativePath, "mic.m4a");
    // The microphone begins writing once the screen has started: a little after it.
    EXPECT_GE(mic.startOffset, -0.05);
    EXPECT_LT(mic.startOffset, 0.5);
    EXPECT_NEAR(*mic.duration + mic.startOffset, *screen.duration, 0.3);
    EXPECT_EQ(project.camera.layout, CameraLayout::hidden);
    // No last look yet: the first built-in background.
    ASSERT_TRUE(std::holds_alternative<BackgroundStyle::Image>(project.style.background.value));
    EXPECT_EQ(std::get<BackgroundStyle::Image>(project.style.background.value).assetID, project.assets.at(4).id);
    ASSERT_EQ(project.clips.size(), 1u);
    EXPECT_EQ(project.clips[0].assetID, screen.id);
    EXPECT_EQ(project.clips[0].sourceEnd, *screen.duration);

    auto log = EventLog::read(assetPath(project, AssetKind::events));
    ASSERT_TRUE(log);
    ASSERT_EQ(log->clicks.size(), 2u);
    const ClickEvent& click = log->clicks[0];
    EXPECT_NEAR(click.position.x, 0.25, 0.01);
    EXPECT_NEAR(click.position.y, 50.0 / 300, 0.01);
    EXPECT_NEAR(click.time, 1.0, 0.3);
    ASSERT_EQ(project.zooms.size(), 1u);
    const ZoomSegment& zoom = project.zooms[0];
    EXPECT_TRUE(zoom.isAuto);
    EXPECT_NEAR(zoom.start, std::max(0.0, click.time - 0.72), 1e-9);
    EXPECT_NEAR(zoom.rect.x, 0.0, 1e-9); // 0.25 − 0.25
    EXPECT_NEAR(zoom.rect.width, 0.5, 1e-9);
    EXPECT_EQ(session->state().kind, Kind::idle);
    EXPECT_FALSE(session->packageURL());
    EXPECT_FALSE(session->lastError());
    EXPECT_EQ(failures, 0);
}

TEST_F(RecordingSessionTest, APauseIsCutFromEveryTrackAndTheEventLog) {
    TestWindow painter(display.name(), 0, 0, 320, 240, "Painter");
    painter.paint(red);
    auto options = areaOptions({0, 0, 320, 240});
    options.systemAudio = true;
    withMicrophone(options);
    // Something playing, so the output's monitor sends sound from the start.
    test::writeWav(dir / "music.wav", test::tone(440, 6.5, 0.2));
    std::thread music = sound.playInBackground(dir / "music.wav", PulseAudioServer::outputSink);
    runFor(500ms);
    startAndWaitForRecording(options);
    XTestInput input(display.name());
    runFor(1500ms);
    session->togglePause();
    EXPECT_EQ(session->state().kind, Kind::paused);
    double elapsedAtPause = session->elapsed();
    painter.paint(blue); // never seen in the file
    input.moveTo(50, 50);
    input.click(1);
    runFor(2000ms);
    EXPECT_EQ(session->elapsed(), elapsedAtPause);
    painter.paint(green);
    session->togglePause();
    runFor(100ms);
    painter.paint(green, white);
    runFor(1400ms);
    stopAndWait();

    Project project = finishedProject();
    double duration = *project.assets.at(0).duration;
    EXPECT_NEAR(duration, 3.0, 0.3);
    const Asset* system = project.asset(AssetKind::systemAudio);
    ASSERT_TRUE(system);
    double systemLength = MovieFile(assetPath(project, AssetKind::systemAudio)).audioDuration();
    EXPECT_GT(systemLength, 0.5);
    EXPECT_NEAR(system->startOffset + systemLength, duration, 0.3);
    const Asset* mic = project.asset(AssetKind::microphone);
    ASSERT_TRUE(mic);
    EXPECT_NEAR(*mic->duration + mic->startOffset, duration, 0.3);

    MovieFile movie(assetPath(project, AssetKind::screen));
    auto pictures = movie.pictures();
    ASSERT_GE(pictures.size(), 2u);
    for (const auto& picture : pictures) {
        auto pixel = picture.at(10, 10);
        EXPECT_FALSE(pixel.b > 200 && pixel.r < 50 && pixel.g < 50) << "a picture of the pause was written";
    }
    auto log = EventLog::read(assetPath(project, AssetKind::events));
    ASSERT_TRUE(log);
    EXPECT_TRUE(log->clicks.empty()) << "a click during the pause was logged";
    ASSERT_FALSE(log->samples.empty());
    EXPECT_LE(log->samples.back().time, duration + 0.1);
    music.join();
}

TEST_F(RecordingSessionTest, AWindowClosedMidwayEndsTheRecordingAndKeepsIt) {
    auto window = std::make_unique<TestWindow>(display.name(), 20, 20, 320, 240, "Short-lived");
    window->paint(red);
    RecordingSession::Options options;
    options.source = CaptureSource::window(window->id(), "Short-lived", "TestApp");
    options.fps = 30;
    options.countdown = 0;
    options.systemAudio = false;
    startAndWaitForRecording(options);
    runFor(1000ms);
    window.reset();
    ASSERT_TRUE(runUntil([&] { return isIn(Kind::idle); }, 20s));
    EXPECT_EQ(session->lastError(), "The display or window went away; the recording was saved up to that point.");
    Project project = finishedProject();
    EXPECT_NEAR(*project.assets.at(0).duration, 1.0, 0.4);
    EXPECT_EQ(project.canvas, (CanvasSettings{1920, 1440, 30}));
    EXPECT_EQ(failures, 0);
}

TEST_F(RecordingSessionTest, ATenthOfASecondIsTooShortAndLeavesNoPackage) {
    startAndWaitForRecording(areaOptions({0, 0, 200, 200}));
    runFor(100ms);
    stopAndWait();
    EXPECT_EQ(session->lastError(), "The recording was too short to save.");
    EXPECT_FALSE(session->finishedProjectURL());
    EXPECT_FALSE(session->packageURL());
    EXPECT_TRUE(recordingsFolderIsEmpty());
    EXPECT_EQ(failures, 1);
    EXPECT_EQ(session->state().kind, Kind::idle);
}

TEST_F(RecordingSessionTest, ACountdownOfZeroSkipsTheCountdownState) {
    startAndWaitForRecording(areaOptions({0, 0, 200, 200}));
    EXPECT_EQ(states, (std::vector<RecordingSession::State>{RecordingSession::State::of(Kind::preparing),
                                                            RecordingSession::State::of(Kind::recording)}));
    bool discarded = false;
    session->discard([&] { discarded = true; });
    ASSERT_TRUE(runUntil([&] { return discarded; }));
    EXPECT_TRUE(recordingsFolderIsEmpty());
}

TEST_F(RecordingSessionTest, ACountdownShowsEachSecondThenRecordsAndDiscardLeavesNothing) {
    auto options = areaOptions({0, 0, 200, 200});
    options.countdown = 2;
    session->start(options);
    EXPECT_EQ(session->state(), RecordingSession::State::countdown(2));
    session->togglePause(); // nothing to pause yet
    session->start(options); // already busy: ignored
    ASSERT_TRUE(runUntil([&] { return isIn(Kind::recording); }));
    EXPECT_EQ(states, (std::vector<RecordingSession::State>{
                          RecordingSession::State::countdown(2), RecordingSession::State::countdown(1),
                          RecordingSession::State::of(Kind::preparing), RecordingSession::State::of(Kind::recording)}));
    bool discarded = false;
    session->discard([&] { discarded = true; });
    ASSERT_TRUE(runUntil([&] { return discarded; }));
    EXPECT_EQ(session->state().kind, Kind::idle);
    EXPECT_FALSE(session->finishedProjectURL());
    EXPECT_TRUE(recordingsFolderIsEmpty());
    EXPECT_EQ(failures, 0);
}

TEST_F(RecordingSessionTest, CancellingTheCountdownGoesBackToIdleWithoutAPackage) {
    auto options = areaOptions({0, 0, 200, 200});
    options.countdown = 3;
    session->start(options);
    runFor(300ms);
    session->cancelCountdown();
    EXPECT_EQ(session->state().kind, Kind::idle);
    runFor(1500ms);
    EXPECT_EQ(session->state().kind, Kind::idle);
    EXPECT_TRUE(recordingsFolderIsEmpty());
}

TEST_F(RecordingSessionTest, AnUnknownWindowFailsToStartWithTheCapturersSentence) {
    RecordingSession::Options options;
    options.source = CaptureSource::window(0x7ffffff, "", "");
    options.countdown = 0;
    session->start(options);
    ASSERT_TRUE(runUntil([&] { return isIn(Kind::idle); }));
    EXPECT_EQ(session->lastError(),
              "Could not start screen capture: Nothing to capture: no display or window was found.");
    EXPECT_EQ(failures, 1);
    EXPECT_TRUE(recordingsFolderIsEmpty());
}

TEST_F(RecordingSessionTest, AFolderThatCantBeMadeFailsWithTheReason) {
    test::writeText(dir / "Recordings", "a file where the folder should be");
    session->start(areaOptions({0, 0, 200, 200}));
    ASSERT_TRUE(runUntil([&] { return isIn(Kind::idle); }));
    ASSERT_TRUE(session->lastError());
    EXPECT_EQ(*session->lastError(), "Could not create the project folder: Not a directory");
}

TEST_F(RecordingSessionTest, AClickAndABeepMadeAtOneInstantLineUpWithTheScreenChange) {
    TestWindow painter(display.name(), 0, 0, 320, 240, "Painter");
    painter.paint(red);
    LiveMicrophone live(sound);
    auto options = areaOptions({0, 0, 320, 240});
    options.fps = 60;
    withMicrophone(options);
    startAndWaitForRecording(options);
    XTestInput input(display.name());
    input.moveTo(100, 100);
    runFor(1500ms);
    live.beep();
    painter.paint(green);
    input.click(1);
    runFor(1500ms);
    stopAndWait();

    Project project = finishedProject();
    MovieFile movie(assetPath(project, AssetKind::screen));
    auto pictures = movie.pictures();
    const auto& packets = movie.videoPackets();
    ASSERT_EQ(pictures.size(), packets.size());
    double screenChange = -1;
    for (std::size_t i = 0; i < pictures.size() && screenChange < 0; ++i)
        if (pictures[i].at(160, 120).g > 200) screenChange = packets[i].time;
    ASSERT_GT(screenChange, 1.0);

    const Asset* mic = project.asset(AssetKind::microphone);
    ASSERT_TRUE(mic);
    double beep = onset(test::readAll(assetPath(project, AssetKind::microphone), {48000, 1}));
    ASSERT_GT(beep, 0) << "the beep isn't in the microphone's file";
    double soundDelay = live.heardAfter();
    ASSERT_GE(soundDelay, 0) << "the listener never heard the beep";
    // The sound reached the microphone `soundDelay` after the picture
    // changed, and that is where the project places it.
    EXPECT_NEAR(beep + mic->startOffset - screenChange, soundDelay, 0.05);
    RecordProperty("microphoneErrorMs", int(std::lround((beep + mic->startOffset - screenChange - soundDelay) * 1000)));

    auto log = EventLog::read(assetPath(project, AssetKind::events));
    ASSERT_TRUE(log);
    ASSERT_FALSE(log->clicks.empty());
    EXPECT_NEAR(log->clicks[0].time, screenChange, 0.05);
    RecordProperty("clickErrorMs", int(std::lround((log->clicks[0].time - screenChange) * 1000)));
}

TEST_F(RecordingSessionTest, ClicksInAWindowThatMovedAreRelativeToItsNewPlace) {
    TestWindow window(display.name(), 20, 20, 320, 240, "Wanderer");
    window.paint(red);
    RecordingSession::Options options;
    options.source = CaptureSource::window(window.id(), "Wanderer", "TestApp");
    options.fps = 30;
    options.countdown = 0;
    options.systemAudio = false;
    startAndWaitForRecording(options);
    runFor(500ms);
    std::string move = "xdotool windowmove " + std::to_string(window.id()) + " 400 300";
    ASSERT_EQ(std::system(move.c_str()), 0);
    runFor(1500ms); // the follower looks once a second
    XTestInput input(display.name());
    input.moveTo(400 + 80, 300 + 60);
    input.click(1);
    runFor(300ms);
    stopAndWait();

    Project project = finishedProject();
    auto log = EventLog::read(assetPath(project, AssetKind::events));
    ASSERT_TRUE(log);
    ASSERT_FALSE(log->clicks.empty());
    EXPECT_NEAR(log->clicks[0].position.x, 0.25, 0.01);
    EXPECT_NEAR(log->clicks[0].position.y, 0.25, 0.01);
}

TEST_F(RecordingSessionTest, WithoutADisplayToReachTheStartFailsAndSaysWhatToDo) {
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
    session->start(areaOptions({0, 0, 200, 200}));
    EXPECT_EQ(session->state().kind, Kind::idle);
    ASSERT_TRUE(session->lastError());
    EXPECT_EQ(session->lastError()->substr(0, 41), "Screen Recording permission is required. ");
    EXPECT_NE(session->lastError()->find("can't reach the display"), std::string::npos) << *session->lastError();
    EXPECT_EQ(failures, 1);
    EXPECT_TRUE(states.empty());
    EXPECT_TRUE(recordingsFolderIsEmpty());
}

TEST_F(RecordingSessionTest, RestartThrowsTheRecordingAwayAndStartsAgainWithTheSameOptions) {
    auto options = areaOptions({0, 0, 200, 200});
    startAndWaitForRecording(options);
    runFor(500ms);
    std::size_t before = states.size();
    session->restart();
    ASSERT_TRUE(runUntil([&] { return states.size() > before + 1 && isIn(Kind::recording); }));
    EXPECT_EQ(states.at(before), RecordingSession::State::of(Kind::idle));
    EXPECT_EQ(states.at(before + 1), RecordingSession::State::of(Kind::preparing));
    EXPECT_EQ(session->options(), options);
    runFor(1200ms);
    stopAndWait();
    Project project = finishedProject();
    // Only what came after the restart.
    EXPECT_NEAR(*project.assets.at(0).duration, 1.2, 0.3);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir / "Recordings"), {}), 1);
    EXPECT_EQ(failures, 0);
}
