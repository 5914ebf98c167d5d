#pragma once

#include "model/Rect.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace recorder {

// What can be recorded now: the displays and the windows a person may pick.
// Frames are in points, top-left coordinates of the whole desktop.
struct ShareableContent {
    struct Display {
        std::uint32_t id = 0;
        std::string name;
        Rect frame;
        int width = 0;
        int height = 0;

        bool operator==(const Display&) const = default;
        nlohmann::json toJson() const;
    };

    struct Window {
        std::uint32_t id = 0;
        std::string title;
        std::string app;
        std::string bundleID;
        Rect frame;

        bool operator==(const Window&) const = default;
        nlohmann::json toJson() const;
    };

    std::vector<Display> displays;
    std::vector<Window> windows;

    const Display* display(std::uint32_t id) const;
    const Window* window(std::uint32_t id) const;

    bool operator==(const ShareableContent&) const = default;
    nlohmann::json toJson() const;
};

} // namespace recorder
