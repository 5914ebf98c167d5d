#pragma once

#include "model/Rect.h"

#include <cstdint>
#include <string>
#include <vector>

namespace recorder {

class X11Connection;

// A RandR monitor: one display of the desktop, in root-window pixels.
struct X11Monitor {
    std::uint32_t id = 0;
    std::string name;
    Rect frame;
    bool primary = false;

    bool operator==(const X11Monitor&) const = default;

    // Primary first, then in the server's order. A server without RandR
    // monitors is one display the size of the screen.
    static std::vector<X11Monitor> list(X11Connection& x);
    // Ids are made from the monitor's name, so they stay the same across
    // restarts of the server and can be remembered.
    static std::uint32_t idForName(const std::string& name);
};

} // namespace recorder
