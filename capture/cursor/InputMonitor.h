#pragma once

#include "cursor/KeyModifiers.h"
#include "events/ClickEvent.h"
#include "model/Point.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace recorder {

// Where the pointer is and what the mouse and keyboard do, desktop-wide,
// whichever application receives them. Used from one thread only, apart
// from wake().
class InputMonitor {
public:
    struct Click {
        ClickEvent::Button button = ClickEvent::Button::left;
        bool isDown = true;
    };
    struct Scroll {
        double deltaX = 0;
        double deltaY = 0;
    };
    // Modifier keys alone are not keys here: they only change `modifiers`.
    struct Key {
        bool isDown = true;
        bool isRepeat = false;
        KeyModifiers modifiers;
        // The key's name when it has one ("Return", "F5", "←"), else empty.
        std::string name;
        // What the key types with shift taken into account and nothing else.
        std::string characters;
    };
    struct Handlers {
        std::function<void(const Click&)> click;
        std::function<void(const Scroll&)> scroll;
        std::function<void(const Key&)> key;
    };

    virtual ~InputMonitor() = default;

    // In desktop points, top-left origin; none if it can't be read.
    virtual std::optional<Point> pointerLocation() = 0;
    // Another client holds the keyboard (a password prompt, a lock screen):
    // what is typed now must not be recorded.
    virtual bool isSecureInputActive() const = 0;
    // Hands each event that arrives within the timeout to the handlers.
    virtual void waitForEvents(std::chrono::nanoseconds timeout, const Handlers& handlers) = 0;
    // From any thread: makes a waitForEvents in progress return early.
    virtual void wake() = 0;

    // The monitor of the desktop session this process runs in; throws
    // CaptureError when there is none.
    static std::unique_ptr<InputMonitor> forThisSession();
};

} // namespace recorder
