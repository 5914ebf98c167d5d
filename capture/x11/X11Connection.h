#pragma once

#include <xcb/xcb.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace recorder {

// One connection to the X server, with the few property reads every X11
// part of capture needs. Not shared between threads: each thread that talks
// to the server opens its own.
class X11Connection {
public:
    // $DISPLAY when no name is given. Throws CaptureError::noContent when no
    // server answers: there is nothing to capture then.
    explicit X11Connection(const std::string& display = {});
    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    xcb_connection_t* get() const { return connection_; }
    xcb_screen_t* screen() const { return screen_; }
    xcb_window_t root() const { return screen_->root; }
    bool hasFailed() const { return xcb_connection_has_error(connection_) != 0; }

    xcb_atom_t atom(const std::string& name);
    // Text of a UTF8_STRING or STRING property; none when it isn't set.
    std::optional<std::string> text(xcb_window_t window, const std::string& property);
    // The 32-bit items of a CARDINAL, ATOM or WINDOW property.
    std::vector<std::uint32_t> cardinals(xcb_window_t window, const std::string& property);
    // The raw bytes of any property.
    std::vector<std::uint8_t> bytes(xcb_window_t window, xcb_atom_t property);

private:
    xcb_connection_t* connection_ = nullptr;
    xcb_screen_t* screen_ = nullptr;
    std::map<std::string, xcb_atom_t> atoms_;
};

} // namespace recorder
