#pragma once

#include "cursor/InputMonitor.h"
#include "x11/X11Connection.h"

#include <set>
#include <vector>

namespace recorder {

// The desktop's pointer and input on an X server:
// - the pointer by QueryPointer, one round trip a read;
// - buttons, wheel and keys by XInput 2.2 raw events on the root window,
//   which every client may select and which arrive whichever window has the
//   focus;
// - whether another client holds a keyboard grab, from the focus changes a
//   grab causes (mode Grab, Ungrab) on the root and the top-level windows.
//   Raw key events go on arriving during a grab, so this is what keeps a
//   password prompt's keys out. A client that already had the focus when it
//   grabbed causes no focus change and is not seen; menus, which grab the
//   keyboard too, are.
// Input to this process's own windows is not the desktop's: clicks on its
// untitled ones (the HUD, the outline) and keys typed into any of them are
// left out.
class X11InputMonitor : public InputMonitor {
public:
    // $DISPLAY when no name is given; throws CaptureError without a server
    // or without XInput 2.2.
    explicit X11InputMonitor(const std::string& display = {});
    ~X11InputMonitor() override;

    std::optional<Point> pointerLocation() override;
    bool isSecureInputActive() const override { return keyboardGrabbed_; }
    void waitForEvents(std::chrono::nanoseconds timeout, const Handlers& handlers) override;
    void wake() override;

private:
    void selectRawEvents();
    void watchFocus();
    void watchFocusOf(xcb_window_t window);
    void loadKeyboardMapping();
    void handleQueued(const Handlers& handlers);
    void handle(const xcb_generic_event_t& event, const Handlers& handlers);
    void handleRaw(const xcb_generic_event_t& event, const Handlers& handlers);
    void handleButton(std::uint32_t button, bool isDown, const Handlers& handlers);
    void handleKey(std::uint32_t keycode, bool isDown, bool isRepeat, const Handlers& handlers);
    std::uint32_t keysym(std::uint32_t keycode, int level) const;
    bool pointerIsOverOwnPanel();
    bool focusIsOnOwnWindow();
    // The window or, inside a window manager's frame, the client in it.
    std::optional<bool> ownership(xcb_window_t window, bool untitledOnly);
    KeyModifiers modifiersHeld() const;

    X11Connection x_;
    int wakeFd_ = -1;
    std::uint8_t xinputOpcode_ = 0;
    std::vector<std::uint32_t> keysyms_;
    int keysymsPerKeycode_ = 0;
    std::uint32_t minKeycode_ = 0;
    std::set<std::uint32_t> keysDown_;
    bool keyboardGrabbed_ = false;
};

} // namespace recorder
