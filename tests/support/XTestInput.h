#pragma once

#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace recorder::test {

// Mouse and keyboard input on a test X server through the XTEST extension,
// as if a person pressed real buttons and keys: it makes the same raw events.
class XTestInput {
public:
    explicit XTestInput(const std::string& display) {
        c_ = xcb_connect(display.c_str(), nullptr);
        root_ = xcb_setup_roots_iterator(xcb_get_setup(c_)).data->root;
        loadKeyboardMapping();
    }
    ~XTestInput() { xcb_disconnect(c_); }
    XTestInput(const XTestInput&) = delete;
    XTestInput& operator=(const XTestInput&) = delete;

    void moveTo(int x, int y) { fake(XCB_MOTION_NOTIFY, 0, x, y); }
    void button(int number, bool down) { fake(down ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE, std::uint8_t(number)); }
    void click(int number) {
        button(number, true);
        button(number, false);
    }
    void key(std::uint32_t keysym, bool down) { fake(down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, keycode(keysym)); }
    // Presses the keys in order and lets go in reverse, as a chord is typed.
    void chord(const std::vector<std::uint32_t>& keysyms) {
        for (auto keysym : keysyms) key(keysym, true);
        for (auto it = keysyms.rbegin(); it != keysyms.rend(); ++it) key(*it, false);
    }
    std::uint8_t keycode(std::uint32_t keysym) const {
        for (std::size_t i = 0; i < keysyms_.size(); ++i)
            if (keysyms_[i] == keysym) return std::uint8_t(minKeycode_ + i / std::size_t(perKeycode_));
        return 0;
    }

private:
    void fake(std::uint8_t type, std::uint8_t detail, int x = 0, int y = 0) {
        xcb_test_fake_input(c_, type, detail, XCB_CURRENT_TIME, type == XCB_MOTION_NOTIFY ? root_ : XCB_NONE,
                            std::int16_t(x), std::int16_t(y), 0);
        // A round trip, so the event has happened when this returns.
        free(xcb_get_input_focus_reply(c_, xcb_get_input_focus(c_), nullptr));
    }

    void loadKeyboardMapping() {
        const xcb_setup_t* setup = xcb_get_setup(c_);
        minKeycode_ = setup->min_keycode;
        auto* reply = xcb_get_keyboard_mapping_reply(
            c_, xcb_get_keyboard_mapping(c_, setup->min_keycode, std::uint8_t(setup->max_keycode - setup->min_keycode + 1)),
            nullptr);
        perKeycode_ = reply->keysyms_per_keycode;
        xcb_keysym_t* keysyms = xcb_get_keyboard_mapping_keysyms(reply);
        keysyms_.assign(keysyms, keysyms + xcb_get_keyboard_mapping_keysyms_length(reply));
        free(reply);
    }

    xcb_connection_t* c_;
    xcb_window_t root_;
    std::uint32_t minKeycode_ = 0;
    int perKeycode_ = 1;
    std::vector<std::uint32_t> keysyms_;
};

} // namespace recorder::test
