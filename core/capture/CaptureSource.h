#pragma once

#include "capture/ShareableContent.h"
#include "model/Rect.h"

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace recorder {

// What a recording records. An area's rectangle is in points relative to its
// display's top-left corner. A device (a phone or tablet) is never recorded
// by the screen capturer.
struct CaptureSource {
    struct Display {
        std::uint32_t id = 0;
        bool operator==(const Display&) const = default;
    };
    struct Window {
        std::uint32_t id = 0;
        std::string title;
        std::string app;
        bool operator==(const Window&) const = default;
    };
    struct Area {
        std::uint32_t displayID = 0;
        Rect rect;
        bool operator==(const Area&) const = default;
    };
    struct Device {
        std::string id;
        std::string name;
        bool operator==(const Device&) const = default;
    };

    std::variant<Display, Window, Area, Device> value;

    static CaptureSource display(std::uint32_t id) { return {Display{id}}; }
    static CaptureSource window(std::uint32_t id, std::string title, std::string app) {
        return {Window{id, std::move(title), std::move(app)}};
    }
    static CaptureSource area(std::uint32_t displayID, Rect rect) { return {Area{displayID, rect}}; }
    static CaptureSource device(std::string id, std::string name) { return {Device{std::move(id), std::move(name)}}; }

    // The name panels and logs show; a display is named from the list given.
    std::string displayName(const std::vector<ShareableContent::Display>& displays = {}) const;

    bool operator==(const CaptureSource&) const = default;
};

} // namespace recorder
