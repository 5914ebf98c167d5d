#include "clock/HostClock.h"
#include "cursor/CursorTracker.h"
#include "support/TestWindow.h"
#include "support/XTestInput.h"
#include "support/XvfbDisplay.h"
#include "x11/X11InputMonitor.h"

#include <gtest/gtest.h>

using namespace recorder;
using namespace std::chrono_literals;
using recorder::test::TestWindow;
using recorder::test::XTestInput;
using recorder::test::XvfbDisplay;

namespace {

enum Keysym : std::uint32_t {
    shift = 0xffe1, control = 0xffe3, alt = 0xffe9, super = 0xffeb, returnKey = 0xff0d, backspace = 0xff08,
    forwardDelete = 0xffff, left = 0xff51, f5 = 0xffc2, keyA = 'a', keyC = 'c', keyX = 'x', keyY = 'y', keyS = 's',
};

// Where a recording's region is: 800 × 600 at (100, 100) on a display at
// the desktop's origin.
const Rect region{100, 100, 800, 600};
const Rect desktop{0, 0, 1920, 1080};

class CursorTrackerTest : public ::testing::Test {
protected:
    XvfbDisplay display;
    XTestInput input{display.name()};
    CursorTracker tracker{[this] { return std::make_unique<X11InputMonitor>(display.name()); }};
    double zero = 0;

    void startRecording() {
        zero = HostClock::seconds();
        tracker.setZeroHostSeconds(zero);
        tracker.start(region, desktop);
        // The tracker's connection is listening once its first sample is in.
        for (int i = 0; i < 200 && tracker.log().samples.empty(); ++i) std::this_thread::sleep_for(5ms);
    }

    // Runs an input action, returning the source times just before and after it.
    template <class F>
    std::pair<double, double> timed(F&& action) {
        double before = HostClock::seconds() - zero;
        action();
        return {before, HostClock::seconds() - zero};
    }

    std::vector<std::string> downKeys(const EventLog& log) {
        std::vector<std::string> out;
        for (const auto& key : log.keys)
            if (key.isDown) out.push_back(key.display);
        return out;
    }
};

} // namespace

TEST_F(CursorTrackerTest, ClicksLandAtTheirFractionsOfTheRegionAndTheirTimes) {
    startRecording();
    input.moveTo(300, 250);
    auto leftDown = timed([&] { input.button(1, true); });
    std::this_thread::sleep_for(100ms);
    input.button(1, false);
    // Raw button events carry no position, so the pointer is read when the
    // event is handled: a person's hand rests a moment on a click, and so
    // does this one, or a loaded machine would read the next position.
    std::this_thread::sleep_for(100ms);
    input.moveTo(900, 700);
    auto rightDown = timed([&] { input.button(3, true); });
    input.button(3, false);
    std::this_thread::sleep_for(100ms);
    input.moveTo(50, 1000);
    input.click(2);
    std::this_thread::sleep_for(50ms);
    EventLog log = tracker.stop();
    ASSERT_EQ(log.clicks.size(), 6u);
    const ClickEvent& first = log.clicks[0];
    EXPECT_EQ(first.button, ClickEvent::Button::left);
    EXPECT_TRUE(first.isDown);
    EXPECT_EQ(first.position, (Point{0.25, 0.25}));
    EXPECT_GE(first.time, leftDown.first - 0.002);
    EXPECT_LE(first.time, leftDown.second + 0.02);
    EXPECT_FALSE(log.clicks[1].isDown);
    EXPECT_NEAR(log.clicks[1].time - first.time, 0.1, 0.02);
    EXPECT_EQ(log.clicks[2].button, ClickEvent::Button::right);
    EXPECT_EQ(log.clicks[2].position, (Point{1, 1}));
    EXPECT_GE(log.clicks[2].time, rightDown.first - 0.002);
    EXPECT_LE(log.clicks[2].time, rightDown.second + 0.02);
    // The middle button is "other"; outside the region is kept, past 0…1.
    EXPECT_EQ(log.clicks[4].button, ClickEvent::Button::other);
    EXPECT_EQ(log.clicks[4].position, (Point{-0.0625, 1.5}));
}

TEST_F(CursorTrackerTest, WheelStepsAreScrollsWhereThePointerIs) {
    startRecording();
    input.moveTo(500, 400);
    input.click(4);
    input.click(5);
    input.click(6);
    std::this_thread::sleep_for(50ms);
    EventLog log = tracker.stop();
    ASSERT_EQ(log.scrolls.size(), 3u);
    EXPECT_EQ(log.scrolls[0].deltaY, 1);
    EXPECT_EQ(log.scrolls[1].deltaY, -1);
    EXPECT_EQ(log.scrolls[2].deltaX, 1);
    EXPECT_EQ(log.scrolls[0].position, (Point{0.5, 0.5}));
    EXPECT_TRUE(log.clicks.empty());
}

TEST_F(CursorTrackerTest, KeysShowWithTheirModifiersAndNames) {
    startRecording();
    input.chord({control, keyC});
    input.chord({returnKey});
    input.chord({shift, keyA});
    input.chord({keyA});
    input.chord({backspace});
    input.chord({forwardDelete});
    input.chord({left});
    input.chord({control, alt, f5});
    bool hasSuper = input.keycode(super) != 0;
    if (hasSuper) input.chord({super, keyS});
    std::this_thread::sleep_for(50ms);
    EventLog log = tracker.stop();
    std::vector<std::string> expected = {"⌃C", "Return", "⇧A", "a", "Delete", "⌦", "←", "⌃⌥F5"};
    if (hasSuper) expected.push_back("⌘S");
    EXPECT_EQ(downKeys(log), expected);
    // Each key also lets go; modifiers alone are never keys.
    EXPECT_EQ(log.keys.size(), expected.size() * 2);
}

TEST_F(CursorTrackerTest, AHeldKeyGivesOneDownAndOneUp) {
    startRecording();
    input.key(keyX, true);
    input.key(keyX, true);
    input.key(keyX, true);
    input.key(keyX, false);
    std::this_thread::sleep_for(50ms);
    EventLog log = tracker.stop();
    ASSERT_EQ(log.keys.size(), 2u);
    EXPECT_TRUE(log.keys[0].isDown);
    EXPECT_FALSE(log.keys[1].isDown);
}

TEST_F(CursorTrackerTest, LogsNoKeysWhileAnotherClientGrabsTheKeyboard) {
    startRecording();
    xcb_connection_t* prompt = xcb_connect(display.name().c_str(), nullptr);
    xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(prompt)).data->root;
    auto* grab = xcb_grab_keyboard_reply(
        prompt, xcb_grab_keyboard(prompt, 0, root, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC), nullptr);
    ASSERT_TRUE(grab && grab->status == XCB_GRAB_STATUS_SUCCESS);
    free(grab);
    std::this_thread::sleep_for(50ms);
    input.chord({keyX});
    input.moveTo(500, 400);
    input.click(1);
    std::this_thread::sleep_for(50ms);
    xcb_ungrab_keyboard(prompt, XCB_CURRENT_TIME);
    free(xcb_get_input_focus_reply(prompt, xcb_get_input_focus(prompt), nullptr));
    std::this_thread::sleep_for(50ms);
    input.chord({keyY});
    std::this_thread::sleep_for(50ms);
    EventLog log = tracker.stop();
    xcb_disconnect(prompt);
    EXPECT_EQ(downKeys(log), std::vector<std::string>{"y"});
    EXPECT_EQ(log.clicks.size(), 2u) << "clicks are still logged";
}

TEST_F(CursorTrackerTest, LeavesOutClicksOnThisApplicationsUntitledWindows) {
    TestWindow::Options ours;
    ours.claimsThisProcess = true;
    TestWindow hud(display.name(), 100, 100, 200, 100, "", ours);
    TestWindow editor(display.name(), 400, 100, 200, 100, "Editor", ours);
    startRecording();
    input.moveTo(150, 150);
    input.click(1);
    // Positions are read as events are handled: let these be handled first.
    std::this_thread::sleep_for(50ms);
    input.moveTo(450, 150);
    input.click(1);
    std::this_thread::sleep_for(50ms);
    EventLog log = tracker.stop();
    ASSERT_EQ(log.clicks.size(), 2u);
    EXPECT_EQ(log.clicks[0].position.x, (450.0 - 100) / 800);
}

TEST_F(CursorTrackerTest, LeavesOutKeysTypedIntoThisApplicationsWindows) {
    TestWindow::Options ours;
    ours.claimsThisProcess = true;
    TestWindow editor(display.name(), 400, 100, 200, 100, "Editor", ours);
    startRecording();
    xcb_connection_t* c = xcb_connect(display.name().c_str(), nullptr);
    xcb_set_input_focus(c, XCB_INPUT_FOCUS_POINTER_ROOT, editor.id(), XCB_CURRENT_TIME);
    free(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
    input.chord({keyX});
    std::this_thread::sleep_for(50ms);
    xcb_set_input_focus(c, XCB_INPUT_FOCUS_POINTER_ROOT, XCB_INPUT_FOCUS_POINTER_ROOT, XCB_CURRENT_TIME);
    free(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
    xcb_disconnect(c);
    input.chord({keyY});
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(downKeys(tracker.stop()), std::vector<std::string>{"y"});
}

TEST_F(CursorTrackerTest, SamplesAMovingPointerOften120TimesASecondAndARestingOneFour) {
    input.moveTo(500, 400);
    startRecording();
    std::this_thread::sleep_for(1s);
    std::size_t resting = tracker.log().samples.size();
    for (int i = 0; i < 100; ++i) {
        input.moveTo(500 + i, 400);
        std::this_thread::sleep_for(5ms);
    }
    std::this_thread::sleep_for(50ms);
    EventLog log = tracker.stop();
    EXPECT_GE(resting, 4u);
    EXPECT_LE(resting, 7u);
    std::size_t moving = log.samples.size() - resting;
    // About 0.5 s or more of moving (the moves take longer on a busy machine).
    EXPECT_GE(moving, 45u);
    for (std::size_t i = 1; i < log.samples.size(); ++i) EXPECT_GT(log.samples[i].time, log.samples[i - 1].time);
    EXPECT_EQ(log.samples.back().position, (Point{(599.0 - 100) / 800, 0.5}));
}

TEST_F(CursorTrackerTest, APauseRecordsNothingAndItsLengthCarriesIntoTheNextRecording) {
    startRecording();
    tracker.pause();
    std::this_thread::sleep_for(500ms);
    input.click(1);
    std::this_thread::sleep_for(50ms);
    tracker.resume();
    auto after = timed([&] { input.click(1); });
    std::this_thread::sleep_for(50ms);
    EventLog first = tracker.stop();
    ASSERT_EQ(first.clicks.size(), 2u);
    EXPECT_NEAR(first.clicks[0].time, after.first - tracker.pauseShift(), 0.02);
    EXPECT_NEAR(tracker.pauseShift(), 0.55, 0.05);

    // The next recording starts with the shift still in force: its first
    // half second of events would lie before zero and is dropped.
    zero = HostClock::seconds();
    tracker.setZeroHostSeconds(zero);
    tracker.start(region, desktop);
    std::this_thread::sleep_for(200ms);
    input.click(1);
    std::this_thread::sleep_for(700ms);
    auto later = timed([&] { input.click(1); });
    std::this_thread::sleep_for(50ms);
    EventLog second = tracker.stop();
    ASSERT_EQ(second.clicks.size(), 2u);
    EXPECT_GE(second.samples.front().time, 0);
    EXPECT_NEAR(second.clicks[0].time, later.first - tracker.pauseShift(), 0.02);
}

TEST_F(CursorTrackerTest, PositionsFollowTheRegionWhenItMoves) {
    startRecording();
    input.moveTo(500, 400);
    input.click(1);
    tracker.setCaptureRect({300, 200, 400, 400});
    input.click(1);
    std::this_thread::sleep_for(50ms);
    EventLog log = tracker.stop();
    ASSERT_EQ(log.clicks.size(), 4u);
    EXPECT_EQ(log.clicks[0].position, (Point{0.5, 0.5}));
    EXPECT_EQ(log.clicks[2].position, (Point{0.5, 0.5}));
    tracker.setCaptureRect({500, 400, 400, 400});
}

TEST_F(CursorTrackerTest, RecordsNothingBeforeItsZeroIsKnown) {
    tracker.start(region, desktop);
    std::this_thread::sleep_for(100ms);
    input.click(1);
    input.chord({keyX});
    std::this_thread::sleep_for(50ms);
    EventLog log = tracker.stop();
    EXPECT_TRUE(log.samples.empty());
    EXPECT_TRUE(log.clicks.empty());
    EXPECT_TRUE(log.keys.empty());
    EXPECT_EQ(log.version, 1);
}

TEST(CursorTrackerKeys, ShowModifiersInOrderAndUpperCaseWithControlOrCommand) {
    KeyModifiers all{true, true, true, true};
    EXPECT_EQ(CursorTracker::keyDisplay(all, "", "q"), "⌃⌥⇧⌘Q");
    EXPECT_EQ(CursorTracker::keyDisplay({false, true, false, false}, "", "q"), "⌥q");
    EXPECT_EQ(CursorTracker::keyDisplay({false, false, false, true}, "", "é"), "⌘É");
    EXPECT_EQ(CursorTracker::keyDisplay({true, false, false, false}, "", "ж"), "⌃Ж");
    EXPECT_EQ(CursorTracker::keyDisplay({false, false, false, true}, "Return", "\r"), "⌘Return");
    EXPECT_EQ(CursorTracker::keyDisplay({}, "", ""), "");
}

TEST(CursorTrackerPositions, AreFractionsOfTheRegionAndNoneForAnEmptyOne) {
    EXPECT_EQ(CursorTracker::position({1100, 300}, {100, 100, 400, 200}, {1000, 0, 1920, 1080}), (Point{0, 1}));
    EXPECT_FALSE(CursorTracker::position({10, 10}, {0, 0, 0, 100}, {}));
}
