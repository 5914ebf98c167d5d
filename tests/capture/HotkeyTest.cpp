#include "support/XTestInput.h"
#include "support/XvfbDisplay.h"
#include "x11/Hotkey.h"

#include <gtest/gtest.h>

#include <xcb/xcb.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <thread>

namespace recorder {
namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t controlL = 0xffe3, superL = 0xffeb, altL = 0xffe9, numLock = 0xff7f, capsLock = 0xffe5;

// Presses counted across the hotkey's thread.
class Presses {
public:
    std::function<void()> handler() {
        return [this] {
            std::lock_guard guard(lock_);
            ++count_;
            changed_.notify_all();
        };
    }
    bool waitFor(int count, std::chrono::seconds timeout = 10s) {
        std::unique_lock guard(lock_);
        return changed_.wait_for(guard, timeout, [&] { return count_ >= count; });
    }
    int count() {
        std::lock_guard guard(lock_);
        return count_;
    }

private:
    std::mutex lock_;
    std::condition_variable changed_;
    int count_ = 0;
};

class HotkeyTest : public ::testing::Test {
protected:
    test::XvfbDisplay display{640, 480};
    test::XTestInput input{display.name()};
    Presses presses;
};

TEST_F(HotkeyTest, ControlSuperRFiresTheDefaultCombination) {
    Hotkey hotkey(presses.handler(), display.name());
    ASSERT_TRUE(hotkey.registerCombo(Hotkey::storedCombo(std::nullopt, std::nullopt)));
    EXPECT_TRUE(hotkey.isRegistered());

    input.chord({controlL, superL, 'r'});
    EXPECT_TRUE(presses.waitFor(1));

    // Other modifiers make another combination; R alone is only a letter.
    input.chord({controlL, altL, 'r'});
    input.chord({'r'});
    input.chord({controlL, superL, 'r'});
    EXPECT_TRUE(presses.waitFor(2));
    std::this_thread::sleep_for(200ms);
    EXPECT_EQ(presses.count(), 2);
}

TEST_F(HotkeyTest, WorksWithNumLockAndCapsLockOn) {
    Hotkey hotkey(presses.handler(), display.name());
    ASSERT_TRUE(hotkey.registerKey(15, Hotkey::controlFlag | Hotkey::commandFlag));
    input.chord({numLock});
    input.chord({capsLock});
    input.chord({controlL, superL, 'r'});
    EXPECT_TRUE(presses.waitFor(1));
}

TEST_F(HotkeyTest, UnregisteringAndReplacingLetGoOfTheKey) {
    Hotkey hotkey(presses.handler(), display.name());
    ASSERT_TRUE(hotkey.registerKey(15, 0x1100));
    // F5 with ⌥⇧: the old combination is let go.
    ASSERT_TRUE(hotkey.registerKey(0x60, Hotkey::optionFlag | Hotkey::shiftFlag));
    input.chord({controlL, superL, 'r'});
    input.chord({altL, 0xffe1, 0xffc2});
    EXPECT_TRUE(presses.waitFor(1));
    hotkey.unregister();
    EXPECT_FALSE(hotkey.isRegistered());
    input.chord({altL, 0xffe1, 0xffc2});
    std::this_thread::sleep_for(200ms);
    EXPECT_EQ(presses.count(), 1);

    // Another program may now have it.
    Presses others;
    Hotkey other(others.handler(), display.name());
    EXPECT_TRUE(other.registerKey(15, 0x1100));
}

TEST_F(HotkeyTest, ACombinationTakenByAnotherProgramFailsQuietly) {
    // Another client holds ⌃⌘R on the root window.
    xcb_connection_t* c = xcb_connect(display.name().c_str(), nullptr);
    xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
    auto* error = xcb_request_check(c, xcb_grab_key_checked(c, 1, root, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_4,
                                                            input.keycode('r'), XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    ASSERT_EQ(error, nullptr);

    Hotkey hotkey(presses.handler(), display.name());
    EXPECT_FALSE(hotkey.registerKey(15, 0x1100));
    EXPECT_FALSE(hotkey.isRegistered());
    EXPECT_FALSE(hotkey.registerKey(15, 0x1100)) << "asking again changes nothing";
    // A free combination still works.
    EXPECT_TRUE(hotkey.registerKey(15, 0x1100 | Hotkey::shiftFlag));
    xcb_disconnect(c);
}

TEST(Hotkey, WithoutAnXServerNothingIsRegistered) {
    Presses presses;
    Hotkey hotkey(presses.handler(), ":97531");
    EXPECT_FALSE(hotkey.registerKey(15, 0x1100));
    // A key code with no X11 equivalent.
    EXPECT_FALSE(hotkey.registerKey(0x3f, 0x1100));
}

TEST(Hotkey, StoredCombinationNeedsAKeyCode) {
    EXPECT_EQ(Hotkey::storedCombo(std::nullopt, std::nullopt), (Hotkey::Combo{15, 0x1100}));
    EXPECT_EQ(Hotkey::storedCombo(std::nullopt, 0x200), (Hotkey::Combo{15, 0x1100})) << "modifiers alone don't count";
    EXPECT_EQ(Hotkey::storedCombo(0x00, 0x800), (Hotkey::Combo{0x00, 0x800}));
}

TEST(Hotkey, DisplayStringListsModifiersInOrderThenTheKey) {
    EXPECT_EQ(Hotkey::displayString({15, 0x1100}), "⌃⌘R");
    EXPECT_EQ(Hotkey::displayString({0x12, 0x1000 | 0x800 | 0x200 | 0x100}), "⌃⌥⇧⌘1");
    EXPECT_EQ(Hotkey::displayString({0x31, 0x800}), "⌥Space");
    EXPECT_EQ(Hotkey::displayString({0x7a, 0}), "F1");
    EXPECT_EQ(Hotkey::displayString({0x3f, 0x100}), "⌘?");
}

} // namespace
} // namespace recorder
